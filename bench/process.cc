#include "process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <csignal>
#include <filesystem>
#include <stdexcept>

void RunProgram(const std::vector<std::string>& words, const std::string& output) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t child = 0;
  int status = 1;
  const int error =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0 || wait4(child, &status, 0, nullptr) != child || status != 0) {
    throw std::runtime_error("failed: " + words[0] + ' ' + (words.size() > 1 ? words[1] : ""));
  }
}

Sleepers::Sleepers(int count) {
  for (int i = 0; i < count; ++i) {
    const pid_t child = fork();
    if (child == -1) throw std::runtime_error("too few processes may be started");
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      while (true) pause();
    }
    pids_.push_back(child);
  }
}

Sleepers::~Sleepers() {
  for (const pid_t pid : pids_) kill(pid, SIGKILL);
  for (const pid_t pid : pids_) waitpid(pid, nullptr, 0);
}

int CountProcesses() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (std::isdigit(static_cast<unsigned char>(name[0])) != 0) ++count;
  }
  return count;
}
