#ifndef KWMEDIUM_SOURCES_H_
#define KWMEDIUM_SOURCES_H_

#include <sys/stat.h>

#include <string>
#include <vector>

/// A file, a symbolic link or an empty directory that an archive is to hold.
struct Source {
  std::string path;    ///< below the system directory
  std::string origin;  ///< where it is now
  struct stat info;    ///< when it was found
};

/// Everything below a directory, sorted by path. Throws a Refusal for what no archive can hold:
/// pipes, sockets and devices, names that are not UTF-8.
std::vector<Source> SourcesBelow(const std::string& dir);

/// One file of a directory; a Refusal when it is not there or is no file.
Source SourceOf(const std::string& path, const std::string& origin);

#endif  // KWMEDIUM_SOURCES_H_
