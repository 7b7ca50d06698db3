#ifndef KB0CORE_TEVPROCESS_H_
#define KB0CORE_TEVPROCESS_H_

#include "kb0core/export.h"

/// Runs the program `path` without a shell, with this process's environment and the null-ended
/// `arguments`, the first of which is the program's name. Stores its process id in `*processId`
/// unless that is null. With `wait` non-zero, waits for its end and stores the exit status in
/// `*exitStatus` unless that is null: 0 to 255, or -1 when a signal ended the program. Without,
/// `*exitStatus` is left as it is. Returns 0, or -1 when the program could not be started.
KB0CORE_EXPORT int TEVStartProcess(const char* path, char* const arguments[], int wait,
                                   int* processId, int* exitStatus);

#endif  // KB0CORE_TEVPROCESS_H_
