#include <kb0core/TEVDirectory.h>

#include <cstring>
#include <string>

#include "kwinstutil/dirs.h"
#include "report/message.h"
#include "support/tree_paths.h"

using kwinst::kPathSize;
using kwinst::MessageFrame;

namespace {

constexpr unsigned int kEnvironmentKilobytes = 8;

/// May `dir` be written, or its nearest existing ancestor if `dir` does not exist? Copies the path
/// that was tested into `examined`. A refusal is reported in `message`.
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
  if (!kwinst::Exists(dir)) return MayWrite(dir, examined, frame, message) ? 3 : -1;

  TEVDirectory directory = nullptr;
  if (TEVOpenDirectory(dir, &directory) != 0) {
    *message = frame.Build("ErrWndFileAlreadyExist", {dir});
    return -2;
  }
  // Deliberate: the header promises that it stays open.
  if (IsEmpty(directory)) return MayWrite(dir, examined, frame, message) ? 1 : -1;

  if (productSubDir == nullptr) return -2;
  const std::string system_dir = kwinst::SystemDir(dir, productSubDir);
  if (kwinst::Exists(kwinst::ControlFile(system_dir, kwinst::kPresent))) return 4;
  *message = frame.Build("ErrWndEmptyDir", {dir});
  return -2;
}

int TEVInsCheckEmptyDir(const char* dir, TEVUnicodeString* message) noexcept {
  if (kwinst::Exists(dir)) return 0;
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
  if (!kwinst::Exists(dir)) {
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
