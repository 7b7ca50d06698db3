#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "kb0core/TEVProcess.h"

namespace {

/// The exit status of a child once it has ended, or -1 when it has none.
int WaitFor(pid_t child) {
  int status = 0;
  pid_t ended = -1;
  do {
    ended = waitpid(child, &status, 0);
  } while (ended == -1 && errno == EINTR);
  return ended == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

int TEVStartProcess(const char* path, char* const arguments[], int wait, int* processId,
                    int* exitStatus) {
  if (path == nullptr || arguments == nullptr) return -1;
  pid_t child = 0;
  if (posix_spawn(&child, path, nullptr, nullptr, arguments, environ) != 0) return -1;
  if (processId != nullptr) *processId = child;
  if (wait == 0) return 0;
  const int status = WaitFor(child);
  if (exitStatus != nullptr) *exitStatus = status;
  return 0;
}
