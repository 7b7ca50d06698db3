#ifndef KB0CORE_TEVPROCESS_H_
#define KB0CORE_TEVPROCESS_H_

#include "kb0core/export.h"

/// Runs the program `path` without a shell, in the environment of this process. The first of the
/// `arguments` is the program's name, and a null pointer follows the last.
///
/// If `processId` is not null, `*processId` receives the process id. If `wait` is not 0, the call
/// waits for the end of the program, and `*exitStatus` receives its exit status, unless
/// `exitStatus` is null: 0 to 255, or -1 if a signal ended the program. If `wait` is 0,
/// `*exitStatus` is untouched.
///
/// Returns 0, or -1 if the program could not be started.
KB0CORE_EXPORT int TEVStartProcess(const char* path, char* const arguments[], int wait,
                                   int* processId, int* exitStatus);

#endif  // KB0CORE_TEVPROCESS_H_
