#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "dirs/paths.h"
#include "kwinstutil/dirs.h"
#include "support/tree_paths.h"

namespace {

bool IsDirectory(unsigned int mode) { return (mode & 0xF000) == 0x4000; }

/// Deletes an entry that its directory tells to be a file. False when it is none, or could not be
/// deleted.
bool DeleteKnownFile(TEVDirectory directory, const TEVDirectoryEntry& entry) {
  return entry.type != 0 && !IsDirectory(entry.type) && TEVDeleteEntry(directory, entry.name) == 0;
}

/// Deletes the entry `name` of `dir`, with what is in it. False when it cannot be examined; what
/// cannot be deleted stays.
bool DeleteEntry(const char* dir, const char* name, int removeDirectories) {
  const size_t size = std::strlen(dir) + std::strlen(name) + 2;
  const std::unique_ptr<char[]> path(new (std::nothrow) char[size]);
  if (path == nullptr) return false;
  std::snprintf(path.get(), size, "%s/%s", dir, name);

  TEVFileInfo info;
  if (TEVGetFileInfo(path.get(), &info) != 0) return false;
  if (IsDirectory(info.mode)) {
    TEVInsDeleteDir(path.get(), removeDirectories);
  } else {
    TEVDeleteFile(path.get());
  }
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
  TEVDirectory directory = nullptr;
  if (TEVOpenDirectory(dir, &directory) != 0) return -1;

  TEVDirectoryEntry entry;
  int end = 0;
  while (TEVReadDirectory(directory, &entry, &end) == 0) {
    if (std::strcmp(entry.name, ".") == 0 || std::strcmp(entry.name, "..") == 0) continue;
    if (DeleteKnownFile(directory, entry)) continue;
    if (!DeleteEntry(dir, entry.name, removeDirectories)) {
      TEVCloseDirectory(directory);
      return -1;
    }
  }
  // A directory that fails in the middle of its reading stays open: callers have always seen it so.
  if (end == 0) return -1;

  TEVCloseDirectory(directory);
  if (removeDirectories != 0) rmdir(dir);
  return 0;
}

void TEVInsSuppressSlashDir(TEVUnicodeString* path) noexcept {
  if (path == nullptr) return;
  for (int at = 0; (at = path->SearchSubString("//", at)) != -1;) path->Remove(at, 1);
}
