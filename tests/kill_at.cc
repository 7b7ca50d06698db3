// kill_at N COMMAND...: runs a command, and kills it with all its programs before the Nth call that
// may change a file. The calls of its first thread do not count. Prints how many such calls there
// were, and ends with 3 when these were fewer.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "faulty_run.h"

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const int call = static_cast<int>(std::strtol(argv[1], nullptr, 10));
  const FaultyRun run(call, FaultyRun::kKilledBeforeChange, true, [argv] {
    execvp(argv[2], argv + 2);
    return std::string();
  });
  std::printf("%d\n", run.calls);
  return run.reached ? 0 : 3;
}
