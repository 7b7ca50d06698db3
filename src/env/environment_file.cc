#include <kb0core/TEVEnvironment.h>

#include <cstring>
#include <string>

#include "kwinstutil/env.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::JoinPath;

namespace {

constexpr size_t kNameSize = 512;

}  // namespace

int TEVInsEnvname(char* installDir, char* configName, char* result) noexcept {
  if (installDir == nullptr || configName == nullptr || result == nullptr) return 0;
  const char* old_mode = TEVGetEnv("OLD_ENVIRONMENT_MODE");
  const bool old = old_mode != nullptr && old_mode[0] != '\0';

  char name[kNameSize];
  kwinst::ReadFirstWord(JoinPath(installDir, configName) + kwinst::kEnvironmentName, name,
                        kNameSize);
  if (name[0] == '\0') return 0;
  char dir[kwinst::kPathSize];
  kwinst::ReadFirstWord(JoinPath(installDir, kwinst::kEnvironmentPointer), dir, kwinst::kPathSize);
  if (dir[0] == '\0') return 0;

  const std::string path = JoinPath(dir, name) + (old ? ".sh" : ".txt");
  std::memcpy(result, path.c_str(), path.size() + 1);
  return 1;
}
