#ifndef KWINSTUTIL_DIRS_PATHS_H_
#define KWINSTUTIL_DIRS_PATHS_H_

#include <cstring>

namespace kwinst {

/// Removes one '/' from the end of the caller's path. "/" becomes the empty path.
inline void ShortenBySlash(char* path) {
  const size_t length = std::strlen(path);
  if (length > 0 && path[length - 1] == '/') path[length - 1] = '\0';
}

}  // namespace kwinst

#endif  // KWINSTUTIL_DIRS_PATHS_H_
