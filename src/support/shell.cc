#include "support/shell.h"

#include <cstdlib>

namespace kwinst {

int RunShell(const std::string& command) { return std::system(command.c_str()); }

ShellOutput OpenShell(const std::string& command) {
  return ShellOutput(popen(command.c_str(), "r"));
}

}  // namespace kwinst
