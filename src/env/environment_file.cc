#include <kb0core/TEVEnvironment.h>

#include <cstring>
#include <string>

#include "kwinstutil/env.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

namespace {

/// The first word of a file, at most `Size` - 1 characters of it; empty when there is none.
template <size_t Size>
std::string FirstWord(const std::string& path) {
  std::string first;
  kwinst::ForEachWord<Size>(path.c_str(), [&first](const char* word) {
    first = word;
    return false;
  });
  return first;
}

}  // namespace

int TEVInsEnvname(char* installDir, char* configName, char* result) noexcept {
  if (installDir == nullptr || configName == nullptr || result == nullptr) return 0;
  const char* old_mode = TEVGetEnv("OLD_ENVIRONMENT_MODE");
  const bool old = old_mode != nullptr && old_mode[0] != '\0';

  const std::string name = FirstWord<512>(kwinst::JoinPath(installDir, configName) + ".lp");
  if (name.empty()) return 0;
  const std::string dir = FirstWord<1024>(kwinst::JoinPath(installDir, "EnvDir.txt"));
  if (dir.empty()) return 0;

  const std::string path = kwinst::JoinPath(dir, name) + (old ? ".sh" : ".txt");
  std::memcpy(result, path.c_str(), path.size() + 1);
  return 1;
}
