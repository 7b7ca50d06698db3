#include <kb0core/TEVEnvironment.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

#include "kwinstutil/dirs.h"
#include "report/message.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::kPathSize;

namespace {

/// Reads the first line of the pointer file `name` in `dir` into `result` of kPathSize bytes.
int ReadPointerFile(const char* dir, const char* name, char* result) {
  if (dir == nullptr || result == nullptr) return -10;
  return kwinst::ReadFirstLine(kwinst::JoinPath(dir, name).c_str(), result, kPathSize) ? 1 : -1;
}

/// Blocks of `size` bytes in kilobytes, computed in the order that avoids an overflow.
uint64_t Kilobytes(uint64_t size, uint64_t blocks) {
  if (size >= 1024) return size / 1024 * blocks;
  if (blocks >= 1024) return blocks / 1024 * size;
  return size * blocks / 1024;
}

}  // namespace

int TEVInsComputeAvailSpace(const char* path, unsigned int* availableKB,
                            TEVUnicodeString* message) noexcept {
  const kwinst::MessageFrame frame;
  const char* measured = path;
  char examined[kPathSize] = "";
  if (!kwinst::Exists(path)) {
    std::string copy = path;
    TEVInsCheckAccessDir(copy.data(), examined);
    measured = examined;
  }
  struct statvfs info {};
  if (statvfs(measured, &info) != 0) {
    const char* reason = std::strerror(errno);
    *message = frame.Build("ErrWndAvailSpace", {measured, reason});
    return -1;
  }
  *availableKB = static_cast<unsigned int>(Kilobytes(info.f_frsize, info.f_bavail));
  return 0;
}

int TEVInsGetCodeDir(char* dir, char* result) noexcept {
  return ReadPointerFile(dir, kwinst::kCodePointer, result);
}

int TEVInsGetZEBDir(char* dir, char* result) noexcept {
  return ReadPointerFile(dir, kwinst::kSdkPointer, result);
}

void TEVInsReadOSFile(const char* dir, int index, char* result) noexcept {
  if (dir == nullptr || result == nullptr || index < 1 || index > 4) return;
  if (!kwinst::Exists(dir)) return;
  std::string found;
  int number = 0;
  const auto find = [&found, &number, index](const char* word) {
    if (++number == index) found = word;
    return number < index;
  };
  const std::string path = kwinst::JoinPath(dir, kwinst::kSystemList);
  // A word of more than 15 characters is split.
  if (kwinst::ForEachWord<16>(path.c_str(), find)) std::strcpy(result, found.c_str());
}

void TEVInsGetTempDir(char* result) noexcept {
  if (result != nullptr) std::strcpy(result, "/tmp");
}

int TEVInsIsRoot() noexcept {
  const char* home = TEVGetEnv("HOME");
  const passwd* root = getpwnam("root");
  return root != nullptr && home != nullptr && std::strcmp(home, root->pw_dir) == 0 ? 1 : 0;
}

int executeCmd(char* command, char* output, int size) noexcept {
  const size_t room = size > 0 ? static_cast<size_t>(size) : 0;
  if (output != nullptr) std::memset(output, 0, room);
  const kwinst::ShellOutput pipe = kwinst::OpenShell(command);
  if (pipe == nullptr) return -1;
  sleep(1);
  // The result is not needed: the rest of the buffer holds zeros.
  if (output != nullptr) std::ignore = std::fread(output, 1, room, pipe.get());
  return 0;
}
