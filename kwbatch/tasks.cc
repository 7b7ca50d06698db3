#include <kwinstutil/kwinstutil.h>

#include "commands.h"
#include "console.h"
#include "options.h"
#include "request.h"
#include "tree.h"

void Tasks(const Options& options) {
  const std::string target = RequestOf(options).target;
  RequireTree(target);
  TEVInsTaskList tasks;
  tasks.TEVInsCheckOrbixReboot(target.c_str());
  tasks.TEVInsCheckTask(target.c_str(), nullptr);
  char** commands = nullptr;
  int count = 0;
  tasks.TEVInsGetListTask(&commands, &count);
  for (int i = 0; i < count; ++i) Show(commands[i]);
  Say("Tasks that run from " + target + ": " + std::to_string(count));
  if (options.Has(option::kStop) && count > 0) {
    tasks.TEVInsKillTask();
    Say("They were sent the termination signal.");
  }
}
