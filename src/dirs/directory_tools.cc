#include <dirent.h>
#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "dirs/paths.h"
#include "kwinstutil/dirs.h"
#include "support/tree_paths.h"

namespace {

/// Deletes the entry `name` of `dir`, which is open as `directory`, and everything in it. What
/// cannot be deleted stays. Returns false if the entry cannot be examined.
bool DeleteEntry(const char* dir, DIR* directory, const char* name, int removeDirectories) {
  // An entry that is deleted here need not be examined.
  if (unlinkat(dirfd(directory), name, 0) == 0) return true;

  const size_t size = std::strlen(dir) + std::strlen(name) + 2;
  const std::unique_ptr<char[]> path(new (std::nothrow) char[size]);
  if (path == nullptr) return false;
  std::snprintf(path.get(), size, "%s/%s", dir, name);
  TEVFileInfo info;
  if (TEVGetFileInfo(path.get(), &info) != 0) return false;
  if (S_ISDIR(info.mode)) TEVInsDeleteDir(path.get(), removeDirectories);
  return true;
}

}  // namespace

int TEVInsCreateDirectory(char* path) noexcept {
  if (path == nullptr) return -10;
  kwinst::ShortenBySlash(path);
  if (std::strlen(path) >= kwinst::kPathSize) return -1;
  TEVUnicodeString unwanted;
  if (TEVInsCheckExistDir(path, &unwanted) == 1) return 0;

  std::string parent = path;
  const size_t slash = parent.rfind('/');
  if (slash != std::string::npos && slash > 0) {
    parent.resize(slash);
    if (TEVInsCreateDirectory(parent.data()) != 0) return -1;
  }
  return mkdir(path, 0755) == 0 ? 0 : -1;
}

int TEVInsDeleteDir(char* dir, int removeDirectories) noexcept {
  DIR* directory = dir == nullptr ? nullptr : opendir(dir);
  if (directory == nullptr) return -1;

  errno = 0;  // readdir returns null at the end and on an error; only an error sets errno
  while (const dirent* entry = readdir(directory)) {
    const char* name = entry->d_name;
    const bool is_dot = std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
    if (!is_dot && !DeleteEntry(dir, directory, name, removeDirectories)) {
      closedir(directory);
      return -1;
    }
    errno = 0;
  }
  // Deliberate: the header promises that it stays open.
  if (errno != 0) return -1;

  closedir(directory);
  if (removeDirectories != 0) rmdir(dir);
  return 0;
}

void TEVInsSuppressSlashDir(TEVUnicodeString* path) noexcept {
  if (path == nullptr) return;
  for (int at = 0; (at = path->SearchSubString("//", at)) != -1;) path->Remove(at, 1);
}
