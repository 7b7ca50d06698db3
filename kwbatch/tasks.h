#ifndef KWBATCH_TASKS_H_
#define KWBATCH_TASKS_H_

#include "options.h"

/// The command "tasks": lists the programs that run from the target, and stops them with --stop.
void ListTasks(const Options& options);

#endif  // KWBATCH_TASKS_H_
