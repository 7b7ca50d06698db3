#include <kb0core/TEVFile.h>

#include <cstring>
#include <string>

#include "dirs/paths.h"
#include "kwinstutil/dirs.h"
#include "report/message.h"
#include "support/format.h"
#include "support/tree_paths.h"

int TEVInsCheckExistDir(char* dir, TEVUnicodeString* message) noexcept {
  if (dir == nullptr) return 0;
  const kwinst::MessageFrame frame;
  kwinst::ShortenBySlash(dir);
  if (!kwinst::Exists(dir)) {
    *message = frame.Build("DirNotExist", {dir});
    return 0;
  }
  if (TEVFileAccess(dir, 2) != 0) {
    *message = frame.Build("DirNoWrite", {dir});
    return 0;
  }
  return 1;
}

int TEVInsCheckAccessDir(char* dir, char* examined) noexcept {
  if (dir == nullptr || examined == nullptr) return -1;
  kwinst::ShortenBySlash(dir);

  std::string nearest = dir;
  while (!kwinst::Exists(nearest)) {
    const size_t slash = nearest.rfind('/');
    if (slash == std::string::npos) return -1;
    if (slash == 0) {
      // The root is accepted without a test.
      std::strcpy(examined, "/");
      return 0;
    }
    nearest.resize(slash);
    if (nearest.back() == '/') nearest.pop_back();
  }
  if (!kwinst::CopyWhole(nearest, examined, kwinst::kPathSize)) return -1;
  return TEVFileAccess(nearest.c_str(), 2) == 0 ? 0 : -1;
}
