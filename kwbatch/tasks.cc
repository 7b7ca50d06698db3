#include <string>

#include "commands.h"
#include "console.h"
#include "json.h"
#include "options.h"
#include "request.h"
#include "running_tasks.h"
#include "texts.h"
#include "tree.h"

void Tasks(const Options& options) {
  const std::string target = RequestOf(options).target;
  RequireTree(target);
  RunningTasks tasks(target);
  for (const std::string& command : tasks.commands()) Show(command);
  Say(Text("TasksCounted", "Tasks that run from {1}: {2}", {target, tasks.commands().size()}));
  if (options.Has(option::kStop) && !tasks.commands().empty()) {
    tasks.Stop();
    SayDone(Text("TasksSignalled", "They were sent the termination signal."));
  }
}
