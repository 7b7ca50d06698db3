// fault_at CALL EFFECT COMMAND...: runs a command, and lets one system call of it or of its
// programs go wrong: the CALLth that counts, from 1. Prints how many counted, and ends with the
// status of the command, or with 99 when these were fewer. The calls of its first thread do not
// count, which in kwbatch and kwmedium only waits for signals.
//   kill   all processes are killed before it; only those count that may change a file
//   error  it fails, with an input/output error
//   full   half of what it writes is written, and the disk is full from then on; only those count
//          that need room on the disk

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "faulty_run.h"

namespace {

int EffectOf(const std::string& name) {
  if (name == "kill") return FaultyRun::kKilledBeforeChange;
  return name == "error" ? EIO : FaultyRun::kFull;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int call = static_cast<int>(std::strtol(argv[1], nullptr, 10));
  const FaultyRun run(call, EffectOf(argv[2]), true, [argv] {
    // What it prints is on no disk that can be full.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    execvp(argv[3], argv + 3);
    return std::string();
  });
  std::printf("%d\n", run.calls);
  return run.reached ? run.status : 99;
}
