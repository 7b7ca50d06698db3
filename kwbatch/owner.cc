#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "json.h"
#include "lock.h"
#include "manifests.h"
#include "options.h"
#include "refusal.h"
#include "request.h"
#include "texts.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

/// The files of all packages of a system directory, each with the packages that bring it. Those
/// that no manifest lists count when they exist.
std::map<std::string, std::vector<std::string>> OwnersIn(const std::string& system_dir) {
  std::map<std::string, std::vector<std::string>> owners;
  for (const std::string& package : PackagesIn(system_dir)) {
    const std::vector<std::string> listed = ListedFiles(system_dir, package);
    for (const auto& files : {listed, UnlistedFiles(package, listed), ControlFiles(package)}) {
      for (const std::string& file : files) owners[file].push_back(package);
    }
  }
  return owners;
}

/// The path below the directory, or an empty text. Links to the directory of the file are followed.
std::string PathBelow(const std::string& dir, const fs::path& file) {
  std::error_code failed;
  const fs::path real = fs::weakly_canonical(file.parent_path(), failed) / file.filename();
  for (const auto& [root, path] : {std::pair(fs::path(dir), file.lexically_normal()),
                                   std::pair(fs::weakly_canonical(dir, failed), real)}) {
    std::string below = path.lexically_relative(root);
    if (!below.empty() && below != "." && below.rfind("..", 0) != 0) return below;
  }
  return "";
}

}  // namespace

void Owner(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kReading, request);
  std::map<std::string, std::map<std::string, std::vector<std::string>>> owners;
  for (const std::string& dir : SystemDirs(request.target, "")) owners[dir] = OwnersIn(dir);
  std::string without;
  int number = 0;
  for (const std::string& word : options.Files()) {
    // A relative path that is not there for the user is one below the target.
    const std::string file = fs::path(request.target) / word;
    std::vector<std::string> packages;
    for (const auto& [dir, files] : owners) {
      const auto found = files.find(PathBelow(dir, file));
      if (found != files.end()) packages = found->second;
    }
    const std::string field = "/files/" + std::to_string(number++);
    if (number == 1) SetField("/files", std::vector<std::string>());
    SetField(field + "/path", file);
    SetField(field + "/packages", packages);
    if (packages.empty()) {
      without += Text("NoOwner", "The file {1} belongs to no package.\n", {file});
    }
    if (!packages.empty()) Show(file + ": " + CommaList(packages));
  }
  if (!without.empty()) throw Refusal(without);
}

void Files(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kReading, request);
  const std::string& package = options.Word(word::kPackage);
  std::vector<std::string> paths;
  bool found = false;
  for (const std::string& dir : SystemDirs(request.target, request.os)) {
    const std::vector<std::string> packages = PackagesIn(dir);
    if (std::count(packages.begin(), packages.end(), package) == 0) continue;
    found = true;
    const std::vector<std::string> listed = ListedFiles(dir, package);
    for (const std::string& file : listed) paths.push_back(dir + "/" + file);
    for (const auto& files : {UnlistedFiles(package, listed), ControlFiles(package)}) {
      for (const std::string& file : files) {
        if (IsThere(dir + "/" + file)) paths.push_back(dir + "/" + file);
      }
    }
  }
  if (!found) {
    throw Refusal(Text("PackageNotInstalled", "The package {1} is not installed in {2}.\n",
                       {package, request.target}));
  }
  std::sort(paths.begin(), paths.end());
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  SetField("/paths", paths);
  for (const std::string& path : paths) Show(path);
}
