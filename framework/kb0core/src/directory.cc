#include <dirent.h>

#include <cerrno>
#include <cstring>

#include "kb0core/TEVDirectory.h"

struct TEVDirectoryHandle {
  DIR* stream;
};

int TEVOpenDirectory(const char* path, TEVDirectory* directory) {
  if (path == nullptr || directory == nullptr) return -1;
  DIR* stream = opendir(path);
  if (stream == nullptr) return -1;
  *directory = new TEVDirectoryHandle{stream};
  return 0;
}

int TEVReadDirectory(TEVDirectory directory, TEVDirectoryEntry* entry, int* end) {
  if (directory == nullptr || entry == nullptr || end == nullptr) return -1;
  errno = 0;  // readdir gives null at the end too, and only then leaves errno alone
  const dirent* found = readdir(directory->stream);
  if (found == nullptr) {
    if (errno == 0) *end = 1;
    return -1;
  }
  // Some file systems have longer names than dirent says.
  const size_t bytes = std::strlen(found->d_name) + 1;
  if (bytes > sizeof entry->name) return -1;  // a shortened name would be that of another file
  std::memcpy(entry->name, found->d_name, bytes);
  return 0;
}

int TEVCloseDirectory(TEVDirectory directory) {
  if (directory == nullptr) return -1;
  const int status = closedir(directory->stream);
  delete directory;
  return status;
}
