// TEVInsTaskList. An input: a text that excludes a task, and what ps prints. In it, '@' stands for
// the id of this process and '^' for that of its parent.

#include <kwinstutil/processes.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <optional>

#include "fuzz.h"

namespace {

using fuzz::Require;

std::string ps_output;
std::vector<int> signalled;

}  // namespace

// In the place of the C library's: no process is started for an input, and none is stopped.
extern "C" {
__attribute__((visibility("default"))) FILE* popen(const char* command, const char* mode) {
  Require(std::strcmp(command, "ps -ef") == 0, "only ps is run");
  return fmemopen(ps_output.data(), ps_output.size(), mode);
}
__attribute__((visibility("default"))) int pclose(FILE* file) { return std::fclose(file); }
// With noexcept only where the C library's has it.
__attribute__((visibility("default"))) int kill(pid_t pid,
                                                int signal) noexcept(noexcept(kill(pid, signal))) {
  Require(signal == SIGTERM, "tasks are asked to end");
  signalled.push_back(pid);
  return 0;
}
}

namespace {

constexpr size_t kMost = 100;

struct Process {
  int pid;
  int ppid;
  std::string command;
};

/// What is known of a line that ps printed: surely this process, surely none, or nothing.
struct Reading {
  bool sure;
  std::optional<Process> process;
};

/// A number of at most nine digits, or none.
std::optional<int> Number(const std::string& word) {
  const size_t sign = word[0] == '-' || word[0] == '+' ? 1 : 0;
  const bool digits = word.find_first_not_of("0123456789", sign) == std::string::npos;
  if (!digits || word.size() == sign || word.size() > 9) return std::nullopt;
  return std::stoi(word);
}

/// Reads USER PID PPID USE START TERMINAL TIME COMMAND.
Reading ReadLine(std::string line) {
  if (line.find('\0') != std::string::npos) return {false, {}};
  if (line.back() == '\n') line.pop_back();
  constexpr const char* kBlanks = " \t\v\f\r\n";
  std::vector<std::string> words;
  size_t begin = line.find_first_not_of(kBlanks);
  for (; begin != std::string::npos && words.size() < 7;
       begin = line.find_first_not_of(kBlanks, begin)) {
    const size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    words.push_back(line.substr(begin, end - begin));
    begin = end;
  }
  std::optional<int> numbers[3];  // pid, parent, use
  for (size_t i = 0; i < 3 && i + 1 < words.size(); ++i) {
    numbers[i] = Number(words[i + 1]);
    if (!numbers[i]) return {false, {}};
  }
  if (begin == std::string::npos || words.size() < 7) return {true, {}};
  if (*numbers[0] < 0) return {true, {}};
  return {true, Process{*numbers[0], *numbers[1], line.substr(begin)}};
}

/// The processes in a table, or none when a line of it may be read in more than one way.
std::optional<std::vector<Process>> ReadTable(const std::string& table) {
  std::vector<Process> processes;
  for (const std::string_view line : fuzz::Lines(table, 1023)) {
    const Reading reading = ReadLine(std::string(line));
    if (!reading.sure) return std::nullopt;
    if (reading.process) processes.push_back(*reading.process);
  }
  return processes;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool IsOther(const Process& process) { return process.pid != getpid() && process.pid != getppid(); }

/// Adds the descendants of `pid`, each child before its own.
void AddDescendants(const std::vector<Process>& processes, int pid, std::vector<Process>* tasks) {
  for (const Process& process : processes) {
    if (process.ppid != pid || !IsOther(process) || tasks->size() >= kMost) continue;
    tasks->push_back(process);
    AddDescendants(processes, process.pid, tasks);
  }
}

std::vector<Process> ExpectedTasks(const std::vector<Process>& processes,
                                   const std::string& exclude) {
  std::vector<Process> tasks;
  for (const Process& process : processes) {
    const bool runs = Contains(process.command, "/t/") && !Contains(process.command, exclude);
    if (!runs || !IsOther(process) || tasks.size() >= kMost) continue;
    tasks.push_back(process);
    AddDescendants(processes, process.pid, &tasks);
  }
  return tasks;
}

/// Whatever ps printed: no more tasks than there may be, and each is stopped once, the last first.
void CheckTasks(TEVInsTaskList* tasks, const std::string& exclude,
                const std::optional<std::vector<Process>>& processes) {
  const int count = tasks->TEVInsCheckTask("/t", std::string(exclude).data());
  char** list = nullptr;
  int number = -1;
  tasks->TEVInsGetListTask(&list, &number);
  Require(number == count && count >= 0 && count <= 100, "the list has at most 100 tasks");
  Require((list != nullptr) == (count > 0), "only a list with tasks is handed out");
  signalled.clear();
  tasks->TEVInsKillTask();
  Require(signalled.size() <= static_cast<size_t>(count), "only tasks are stopped");
  for (const int pid : signalled) {
    Require(pid > 0 && pid != getpid() && pid != getppid(), "only other processes are stopped");
  }
  if (!processes) return;
  const std::vector<Process> expected = ExpectedTasks(*processes, exclude);
  Require(expected.size() == static_cast<size_t>(count), "the tasks of the tree are found");
  auto stopped = signalled.rbegin();
  for (size_t i = 0; i < expected.size(); ++i) {
    Require(expected[i].command == list[i], "each task has its command");
    if (expected[i].pid == 0) continue;
    Require(stopped != signalled.rend() && expected[i].pid == *stopped++,
            "the last task is stopped first");
  }
  Require(stopped == signalled.rend(), "each task is stopped once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const std::string exclude = input.NextArgument();
  std::string table;
  for (const char c : input.Rest()) {
    if (c == '@' || c == '^') {
      table += std::to_string(c == '@' ? getpid() : getppid());
    } else {
      table += c;
    }
  }
  ps_output = "UID PID PPID C STIME TTY TIME CMD /t/x\n" + table;

  const std::optional<std::vector<Process>> processes = ReadTable(table);
  TEVInsTaskList tasks;
  const int count = tasks.TEVInsGetAllProcess();
  if (processes) Require(count == static_cast<int>(processes->size()), "each process is read");
  CheckTasks(&tasks, exclude, processes);
  return 0;
}
