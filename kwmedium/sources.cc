#include "sources.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "kwbatch/package_line.h"
#include "kwbatch/refusal.h"

namespace fs = std::filesystem;

namespace {

struct stat InfoOf(const std::string& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) == 0) return info;
  throw Refusal(Printable(path) + ": " + std::strerror(errno) + ".\n");
}

}  // namespace

std::vector<Source> SourcesBelow(const std::string& dir) {
  std::error_code error;
  fs::recursive_directory_iterator entry(dir, error);
  std::vector<Source> sources;
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    const std::string origin = entry->path();
    Source source{origin.substr(dir.size() + 1), origin, InfoOf(origin)};
    if (!IsText(source.path)) {
      throw Refusal("The name " + Printable(origin) +
                    " is not UTF-8, or has control characters.\n");
    }
    const mode_t mode = source.info.st_mode;
    if (S_ISDIR(mode) && !fs::is_empty(origin, error)) continue;
    if (!S_ISREG(mode) && !S_ISLNK(mode) && !S_ISDIR(mode)) {
      throw Refusal(origin + " is no file, directory or link.\n");
    }
    sources.push_back(std::move(source));
  }
  if (error) throw Refusal(dir + ": " + error.message() + ".\n");
  std::sort(sources.begin(), sources.end(),
            [](const Source& a, const Source& b) { return a.path < b.path; });
  return sources;
}

Source SourceOf(const std::string& path, const std::string& origin) {
  Source source{path, origin, InfoOf(origin)};
  if (!IsText(path)) throw Refusal("The name " + Printable(path) + " is not UTF-8.\n");
  if (!S_ISREG(source.info.st_mode)) throw Refusal(origin + " is no regular file.\n");
  return source;
}
