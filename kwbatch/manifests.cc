#include "manifests.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "files.h"
#include "formats.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// Is this the second line of a file in a manifest: mode, size and checksum?
bool IsFileNumbers(const std::string& line) {
  std::istringstream words(line);
  int count = 0;
  for (std::string word; words >> word; ++count) {
    if (word.find_first_not_of("0123456789") != std::string::npos) return false;
  }
  return count == 3;
}

}  // namespace

void RequireInside(const std::string& path, const std::string& source) {
  const fs::path parts(path);
  const bool leads_out = path.empty() || parts.is_absolute() || !parts.has_filename() ||
                         std::count(parts.begin(), parts.end(), "..") > 0;
  if (!leads_out) return;
  throw Refusal(Text("PathLeadsOut",
                     "The file {1} names the path \"{2}\", which leads out of the tree.\n",
                     {source, path}));
}

void RequireNoLinks(const std::string& dir, const std::vector<std::string>& files) {
  std::set<std::string> known;
  for (const std::string& file : files) {
    for (fs::path way = fs::path(file).parent_path(); !way.empty(); way = way.parent_path()) {
      if (!known.insert(way).second) break;
      if (!fs::is_symlink(dir / way)) continue;
      throw Refusal(Text("LinkLeadsOut",
                         "The directory {1} is a symbolic link, and may lead out of the tree. "
                         "Put a directory in its place, or delete it.\n",
                         {(dir / way).string()}));
    }
  }
}

std::vector<std::string> PackagesIn(const std::string& system_dir) {
  std::vector<std::string> packages;
  for (const std::string& line : LinesOf(system_dir + "/" + kPresent)) {
    if (line.empty() || line.front() == '#') continue;
    const std::string name = TableLine(line).name;
    if (name.empty() || std::count(packages.begin(), packages.end(), name) > 0) continue;
    RequirePackageName(name);
    packages.push_back(name);
  }
  return packages;
}

std::vector<std::string> ListedFiles(const std::string& system_dir, const std::string& package) {
  const std::string manifest = system_dir + "/" + kControl + "/" + package;
  const std::vector<std::string> lines = LinesOf(manifest);
  std::vector<std::string> files;
  for (size_t i = 0; i < lines.size(); i += 2) {
    if (i + 1 == lines.size() || !IsFileNumbers(lines[i + 1])) {
      throw Refusal(
          Text("ManifestDamaged", "The manifest {1} is damaged after line {2}.\n", {manifest, i}));
    }
    RequireInside(lines[i], manifest);
    files.push_back(fs::path(lines[i]).lexically_normal());
  }
  return files;
}

std::vector<std::string> UnlistedFiles(const std::string& package,
                                       const std::vector<std::string>& listed) {
  std::vector<std::string> files;
  for (const std::string& file : listed) {
    const fs::path path(file);
    if (path.parent_path() != kCatalogs) continue;
    for (const Language& language : kLanguages) {
      files.push_back(path.parent_path() / language.name / path.filename());
    }
  }
  if (package == kFontPackage) {
    for (const char* font : kIndexedFontFiles) files.emplace_back(font);
  }
  return files;
}

std::vector<std::string> ControlFiles(const std::string& package) {
  const std::string manifest = std::string(kControl) + "/" + package;
  return {manifest, manifest + kPackTableSuffix};
}
