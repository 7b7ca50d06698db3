#ifndef BENCH_PROCESS_H_
#define BENCH_PROCESS_H_

#include <sys/types.h>

#include <string>
#include <vector>

/// Runs a program to its end, without a shell. What it prints goes to the file `output`. Throws
/// when it cannot be started or fails.
void RunProgram(const std::vector<std::string>& words, const std::string& output = "/dev/null");

/// Processes that do nothing, as long as the object lives.
class Sleepers {
 public:
  explicit Sleepers(int count);
  ~Sleepers();
  Sleepers(const Sleepers&) = delete;
  Sleepers& operator=(const Sleepers&) = delete;

 private:
  std::vector<pid_t> pids_;
};

/// How many processes the machine has.
int CountProcesses();

#endif  // BENCH_PROCESS_H_
