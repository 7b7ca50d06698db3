#include <string>

#include "commands.h"
#include "console.h"
#include "json.h"
#include "options.h"
#include "request.h"
#include "running_tasks.h"
#include "tree.h"

void Tasks(const Options& options) {
  const std::string target = RequestOf(options).target;
  RequireTree(target);
  RunningTasks tasks(target);
  for (const std::string& command : tasks.commands()) Show(command);
  Say("Tasks that run from " + target + ": " + std::to_string(tasks.commands().size()));
  if (options.Has(option::kStop) && !tasks.commands().empty()) {
    tasks.Stop();
    SayDone("They were sent the termination signal.");
  }
}
