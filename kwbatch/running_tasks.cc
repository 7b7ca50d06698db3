#include "running_tasks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "files.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// What "ps -ef" prints; empty when it cannot be run.
std::string Processes() {
  std::string text;
  std::FILE* const pipe = popen("ps -ef 2>&1", "r");
  if (pipe == nullptr) return text;
  char piece[4096];
  while (const size_t size = std::fread(piece, 1, sizeof piece, pipe)) text.append(piece, size);
  return pclose(pipe) == 0 ? text : "";
}

/// The process of a line, and its parent; 0 when there are none.
std::pair<pid_t, pid_t> IdsOf(const std::string& line) {
  std::istringstream words(line);
  std::string user;
  pid_t process = 0;
  pid_t parent = 0;
  words >> user >> process >> parent;
  return {process, parent};
}

/// The lines of "ps -ef" without kwbatch and what started it: sudo, a shell, ssh. Throws a Refusal
/// when the list lacks kwbatch itself, as that of a smaller ps does, or cannot be made.
std::string OtherProcesses() {
  const std::string all = Processes();
  std::map<pid_t, pid_t> parents;
  std::istringstream lines(all);
  for (std::string line; std::getline(lines, line);) parents.insert(IdsOf(line));
  if (parents.count(getpid()) == 0) {
    throw Refusal(Text("PsFails",
                       "The running programs cannot be listed: \"ps -ef\" fails, or does not show "
                       "each program with its parent. The ps of the package procps does.\n"));
  }
  std::set<pid_t> ours;
  // 0 is what the ids of the heading are taken for.
  for (pid_t process = getpid(); process != 0 && parents.count(process) != 0;) {
    if (!ours.insert(process).second) break;
    process = parents.at(process);
  }
  std::string others;
  lines = std::istringstream(all);
  for (std::string line; std::getline(lines, line);) {
    if (ours.count(IdsOf(line).first) == 0) others += line + "\n";
  }
  return others;
}

/// Makes the library, which runs "ps -ef" by itself, see this list instead. Throws a Refusal.
void ShowToLibrary(const std::string& processes, const std::string& dir) {
  const std::string program = dir + "/ps";
  Write(dir + "/processes", processes);
  Write(program, "#!/bin/sh\nexec cat " + dir + "/processes\n");
  chmod(program.c_str(), 0700);
  const char* path = std::getenv("PATH");
  const std::string search = dir + ":" + (path == nullptr ? "/usr/bin:/bin" : path);
  if (access(program.c_str(), X_OK) != 0 || setenv("PATH", search.c_str(), 1) != 0) {
    throw Refusal(Text("PsNotShown",
                       "The running programs cannot be listed: no program can be run in /tmp.\n"));
  }
}

}  // namespace

RunningTasks::RunningTasks(const std::string& target) {
  const TemporaryDirectory temp;
  ShowToLibrary(OtherProcesses(), temp.path());
  tasks_.TEVInsCheckOrbixReboot(target.c_str());
  tasks_.TEVInsCheckTask(target.c_str(), nullptr);
  char** commands = nullptr;
  int count = 0;
  tasks_.TEVInsGetListTask(&commands, &count);
  commands_.assign(commands, commands + count);
}
