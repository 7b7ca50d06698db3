#include "tasks.h"

#include <kwinstutil/kwinstutil.h>

#include "console.h"
#include "paths.h"
#include "tree.h"

void ListTasks(const Options& options) {
  const std::string target = TargetPath(options.words()[1]);
  RequireTree(target);
  TEVInsTaskList tasks;
  tasks.TEVInsCheckOrbixReboot(target.c_str());
  tasks.TEVInsCheckTask(target.c_str(), nullptr);
  char** commands = nullptr;
  int count = 0;
  tasks.TEVInsGetListTask(&commands, &count);
  for (int i = 0; i < count; ++i) Show(commands[i]);
  Say("Tasks that run from " + target + ": " + std::to_string(count));
  if (options.Has("stop") && count > 0) {
    tasks.TEVInsKillTask();
    Say("They were sent the termination signal.");
  }
}
