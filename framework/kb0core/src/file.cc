#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "kb0core/TEVFile.h"

int TEVFileAccess(const char* path, int mode) {
  return path != nullptr && access(path, mode) == 0 ? 0 : -1;
}

int TEVGetFileInfo(const char* path, TEVFileInfo* info) {
  struct stat found;
  if (path == nullptr || info == nullptr || lstat(path, &found) != 0) return -1;
  info->mode = found.st_mode;
  info->size = found.st_size;
  return 0;
}

int TEVDeleteFile(const char* path) { return path != nullptr && unlink(path) == 0 ? 0 : -1; }

int TEVRenameFile(const char* from, const char* to) {
  return from != nullptr && to != nullptr && std::rename(from, to) == 0 ? 0 : -1;
}

int TEVFOpen(const char* path, const char* mode, std::FILE** file) {
  if (file == nullptr) return EINVAL;
  *file = nullptr;
  if (path == nullptr || mode == nullptr) return EINVAL;
  *file = std::fopen(path, mode);
  return *file == nullptr ? errno : 0;
}

int TEVFGets(char* buffer, int size, std::FILE* file) {
  // With room for no character, fgets may succeed and read nothing: a caller would loop for ever.
  if (buffer == nullptr || size < 2 || file == nullptr) return -1;
  return std::fgets(buffer, size, file) == nullptr ? -1 : 0;
}

int TEVFEof(std::FILE* file) { return file != nullptr && std::feof(file) != 0 ? 1 : 0; }

int TEVFClose(std::FILE* file) {
  if (file == nullptr) return -1;
  const bool failed = std::ferror(file) != 0;  // fclose does not tell of earlier failures
  return std::fclose(file) == 0 && !failed ? 0 : -1;
}
