#ifndef KWINSTUTIL_SUPPORT_SHELL_H_
#define KWINSTUTIL_SUPPORT_SHELL_H_

#include <cstdio>
#include <memory>
#include <string>

namespace kwinst {

/// Runs `command` through the system shell and returns what system(3) does.
int RunShell(const std::string& command);

struct PipeCloser {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

/// The output of a running shell command. Closing it waits until the command has ended.
using ShellOutput = std::unique_ptr<std::FILE, PipeCloser>;

/// Starts `command` through the system shell. Returns null if that fails.
ShellOutput OpenShell(const std::string& command);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_SHELL_H_
