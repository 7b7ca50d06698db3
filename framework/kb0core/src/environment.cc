#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "kb0core/TEVEnvironment.h"

namespace {

bool IsProgram(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

}  // namespace

const char* TEVGetEnv(const char* name) { return name == nullptr ? nullptr : std::getenv(name); }

int TEVPutEnv(char* entry) {
  // Without "=", putenv would remove the variable.
  if (entry == nullptr || entry[0] == '=' || std::strchr(entry, '=') == nullptr) return -1;
  // The entry stays the caller's, as promised.
  return putenv(entry) == 0 ? 0 : -1;  // NOLINT(cert-pos34-c)
}

TEVUnicodeString TEVFindPath(const char* file, const char* searchPath) {
  if (file == nullptr || searchPath == nullptr) return {};
  const std::string_view path = searchPath;
  for (size_t begin = 0; begin <= path.size();) {
    const size_t end = std::min(path.find(':', begin), path.size());
    std::string candidate(end == begin ? "." : path.substr(begin, end - begin));
    if (candidate.back() != '/') candidate += '/';
    candidate += file;
    if (IsProgram(candidate)) return candidate.c_str();
    begin = end + 1;
  }
  return {};
}
