#include <kb0core/TEVEnvironment.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "kwinstutil/dirs.h"
#include "kwinstutil/env.h"
#include "report/message.h"
#include "support/format.h"
#include "support/tree_paths.h"

namespace {

constexpr int kOutputSize = 1024;

/// Copies a candidate into `result` and checks it. One that does not fit is not accepted.
bool IsHome(const std::string& candidate, char* result) {
  if (!kwinst::CopyWhole(candidate, result, kwinst::kPathSize)) return false;
  TEVUnicodeString version;
  TEVUnicodeString message;
  return TEVInsCheckJavaHome(result, version, message) == 1;
}

bool IsAccepted(const TEVUnicodeString& version) {
  for (const char* accepted : {"1.3.1", "1.4.", "1.5.0"}) {
    if (version.SearchSubString(accepted) != -1) return true;
  }
  return false;
}

}  // namespace

int TEVInsGetJavaHome(char* result) noexcept {
  if (result == nullptr) return -1;
  for (const char* variable : {"JAVA_HOME", "J_HOME", "JREPATH"}) {
    const char* home = TEVGetEnv(variable);
    if (home != nullptr && home[0] != '\0' && IsHome(home, result)) return 1;
  }
  const std::string java = TEVFindPath("java", TEVGetEnv("PATH")).ConvertToChar();
  const size_t end = java.find("/bin/java");
  if (end != std::string::npos && IsHome(java.substr(0, end), result)) return 1;
  kwinst::CopyWhole("/usr", result, kwinst::kPathSize);
  return -1;
}

int TEVInsCheckJavaHome(char* javaHome, TEVUnicodeString& versionText,
                        TEVUnicodeString& message) noexcept {
  if (javaHome == nullptr) return -1;
  const kwinst::MessageFrame frame;
  const std::string bin = kwinst::JoinPath(javaHome, "bin");
  const std::string java = TEVFindPath("java", bin.c_str()).ConvertToChar();
  if (java.empty()) {
    const std::string text = kwinst::Format("java was not found in path %s\n", bin.c_str());
    message = frame.Build("ErrWndjreNotFound", {bin}, text);
    return -1;
  }

  const size_t size = java.size() + 20;
  const std::unique_ptr<char[]> command(new (std::nothrow) char[size]);
  char output[kOutputSize + 1] = "";
  if (command != nullptr) {
    static_cast<void>(std::snprintf(command.get(), size, "%s -version 2>&1", java.c_str()));
    if (executeCmd(command.get(), output, kOutputSize) != 0) {
      message = frame.Build("ErrGetJavaVersion", {command.get()});
      return -1;
    }
  }
  versionText = output;
  // Assigned before the test, so it stands there after a success too.
  message =
      frame.Build("ErrBadJavaVersionUNIX32_32", {}, "Java version 1.3.1 or higher is required");
  return IsAccepted(versionText) ? 1 : -3;
}
