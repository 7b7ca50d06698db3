#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVFile.h>

#include <cstring>
#include <string>

#include "dirs/paths.h"
#include "kwinstutil/dirs.h"
#include "report/message.h"
#include "support/format.h"
#include "support/tree_paths.h"

using kwinst::kPathSize;
using kwinst::MessageFrame;

namespace {

constexpr unsigned int kEnvironmentKilobytes = 8;

/// May `dir`, or its nearest existing ancestor, be written? Puts the one that decides into
/// `examined`, and tells a refusal.
bool MayWrite(const char* dir, char (&examined)[kPathSize], const MessageFrame& frame,
              TEVUnicodeString* message) {
  std::string copy = dir;
  examined[0] = '\0';
  if (TEVInsCheckAccessDir(copy.data(), examined) >= 0) return true;
  *message = frame.Build("ErrWndNoWriteDir", {examined});
  return false;
}

/// Is there nothing but "." and ".." in the open directory? The names are not looked at.
bool IsEmpty(TEVDirectory directory) {
  TEVDirectoryEntry entry;
  int end = 0;
  int count = 0;
  while (count < 4 && TEVReadDirectory(directory, &entry, &end) == 0) ++count;
  return count < 3;
}

}  // namespace

int TEVInsCheckExistDir(char* dir, TEVUnicodeString* message) noexcept {
  if (dir == nullptr) return 0;
  const MessageFrame frame;
  kwinst::ShortenBySlash(dir);
  if (TEVFileAccess(dir, 0) != 0) {
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
  while (TEVFileAccess(nearest.c_str(), 0) != 0) {
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
  if (!kwinst::CopyWhole(nearest, examined, kPathSize)) return -1;
  return TEVFileAccess(nearest.c_str(), 2) == 0 ? 0 : -1;
}

int TEVInsCheckSyntaxDir(TEVUnicodeString* dir, TEVUnicodeString* message) noexcept {
  if (dir == nullptr) return -1;
  const MessageFrame frame;
  const char* path = dir->ConvertToChar();
  if (path[0] == '/' && std::strpbrk(path, " \t") == nullptr) return 0;
  *message = frame.Build("ErrWndSyntaxDir", {*dir});
  return -1;
}

int TEVInsCheckEmptyDir(const char* dir, const char* productSubDir,
                        TEVUnicodeString* message) noexcept {
  if (dir == nullptr) return -10;
  const MessageFrame frame;
  char examined[kPathSize];
  if (TEVFileAccess(dir, 0) != 0) return MayWrite(dir, examined, frame, message) ? 3 : -1;

  TEVDirectory directory = nullptr;
  if (TEVOpenDirectory(dir, &directory) != 0) {
    *message = frame.Build("ErrWndFileAlreadyExist", {dir});
    return -2;
  }
  // The directory stays open from here on: callers have always seen it so.
  if (IsEmpty(directory)) return MayWrite(dir, examined, frame, message) ? 1 : -1;

  if (productSubDir == nullptr) return -2;
  const std::string present = kwinst::ControlFile(kwinst::SystemDir(dir, productSubDir), "PRESENT");
  if (TEVFileAccess(present.c_str(), 0) == 0) return 4;
  *message = frame.Build("ErrWndEmptyDir", {dir});
  return -2;
}

int TEVInsCheckEmptyDir(const char* dir, TEVUnicodeString* message) noexcept {
  if (TEVFileAccess(dir, 0) == 0) return 0;
  const MessageFrame frame;
  char examined[kPathSize];
  return MayWrite(dir, examined, frame, message) ? 3 : -1;
}

int TEVInsCheckEnvDir(const char* dir, TEVUnicodeString* message) noexcept {
  if (dir == nullptr) return -10;
  const MessageFrame frame;
  char examined[kPathSize];
  const char* measured = dir;
  int status = 2;
  if (TEVFileAccess(dir, 0) != 0) {
    if (!MayWrite(dir, examined, frame, message)) return -1;
    measured = examined;
    status = 1;
  }
  unsigned int available = 0;
  if (TEVInsComputeAvailSpace(measured, &available, message) != 0) return -3;
  if (available >= kEnvironmentKilobytes) return status;
  *message = frame.Build("ErrWndNoSpaceEnvDir", {measured});
  return -2;
}
