#ifndef KWBATCH_RUNNING_TASKS_H_
#define KWBATCH_RUNNING_TASKS_H_

#include <kwinstutil/processes.h>

#include <string>
#include <vector>

/// The programs whose command line names a tree, without kwbatch and what started it.
class RunningTasks {
 public:
  /// Throws a Refusal when the programs cannot be listed.
  explicit RunningTasks(const std::string& target);

  const std::vector<std::string>& commands() const { return commands_; }

  /// Sends them the termination signal.
  void Stop() { tasks_.TEVInsKillTask(); }

 private:
  TEVInsTaskList tasks_;
  std::vector<std::string> commands_;
};

#endif  // KWBATCH_RUNNING_TASKS_H_
