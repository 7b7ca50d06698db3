#include "ports/system_file.h"

#include <fcntl.h>
#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVFile.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/tree_paths.h"

namespace kwinst {

namespace {

/// The last character of a file that is not empty: 0 if the file is only open for writing, EOF if
/// reading fails.
int LastCharacter(std::FILE* file) {
  if ((fcntl(fileno(file), F_GETFL) & O_ACCMODE) == O_WRONLY) return 0;
  return std::fseek(file, -1, SEEK_END) == 0 ? std::getc(file) : EOF;
}

}  // namespace

std::optional<std::string> SystemFile(const std::string& name) {
  if (TEVGetEnv("VRK_ODT_IN") == nullptr || TEVGetEnv("VRK_ODT_OUT") == nullptr) {
    return JoinPath("/etc", name);
  }
  const char* scratch = TEVGetEnv("VRK_ODT_TMP");
  if (scratch == nullptr) return std::nullopt;
  return JoinPath(scratch, name);
}

InputFile OpenSystemFile(const std::string& path, const char* mode, std::string* error) {
  std::FILE* file = nullptr;
  const int number = IsPipeOrDevice(path.c_str()) ? ENOTSUP : TEVFOpen(path.c_str(), mode, &file);
  if (number != 0) *error = std::strerror(number);
  return InputFile(file);
}

std::optional<std::string> RealFile(const std::string& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) {
    return errno == ENOENT ? std::optional(path) : std::nullopt;
  }
  if (!S_ISLNK(info.st_mode)) return path;
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real == nullptr ? std::nullopt : std::optional<std::string>(real.get());
}

void DropLink(const std::string& copy, const std::string& path) {
  struct stat other {};
  struct stat file {};
  if (lstat(copy.c_str(), &other) != 0 || stat(path.c_str(), &file) != 0) return;
  const bool same = other.st_dev == file.st_dev && other.st_ino == file.st_ino;
  if (same || S_ISLNK(other.st_mode)) TEVDeleteFile(copy.c_str());
}

bool AppendAndClose(InputFile file, const std::string& path, const std::string& lines) {
  struct stat before {};
  if (fstat(fileno(file.get()), &before) != 0) return false;
  std::FILE* stream = file.release();
  bool stored = true;
  if (!lines.empty()) {
    const int last = before.st_size == 0 ? '\n' : LastCharacter(stream);
    const std::string text = (last == '\n' ? "" : "\n") + lines;
    stored = last != EOF && std::fseek(stream, 0, SEEK_END) == 0 &&
             std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  }
  stored = TEVFClose(stream) == 0 && stored;
  if (!stored) CutBack(path.c_str(), before.st_size);
  return stored;
}

}  // namespace kwinst
