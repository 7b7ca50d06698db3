#include "tree.h"

#include <cstring>
#include <filesystem>
#include <utility>

#include "files.h"
#include "formats.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

std::string SystemDir(const Medium& medium, const std::string& target) {
  return IsSdk(medium) ? target : target + "/" + medium.os;
}

std::vector<std::string> SystemDirsIfAny(const std::string& target, const std::string& os) {
  std::vector<std::string> dirs;
  const std::vector<std::string> systems = SystemsOf(target);
  for (const std::string& system : systems) {
    if (os.empty() || os == system) dirs.push_back(target + "/" + system);
  }
  const bool sdk = systems.empty() && Exists(target + "/" + kPresent);
  if (sdk && os.empty()) dirs.push_back(target);
  return dirs;
}

std::vector<std::string> SystemDirs(const std::string& target, const std::string& os) {
  std::vector<std::string> dirs = SystemDirsIfAny(target, os);
  if (!dirs.empty()) return dirs;
  if (os.empty()) throw Refusal(NothingInstalled(target));
  throw Refusal(
      Text("NothingInstalledFor", "Nothing for {1} is installed in {2}.\n", {os, target}));
}

/// A development kit that lies in a directory of the target is nothing that the target holds.
std::string InstalledSystem(const std::string& target) {
  const std::vector<std::string> systems = SystemsOf(target);
  if (!systems.empty()) return systems.front();
  // The list is written when all systems have their tables.
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(target, ignored)) {
    const bool sdk = Exists(entry.path() / kCodePointer);
    if (!sdk && Exists(entry.path() / kPresent)) return entry.path().filename();
  }
  return "";
}

std::string NothingInstalled(const std::string& dir) {
  return Text("NothingInstalled", "Nothing is installed in {1}.\n", {dir});
}

void RequireTree(const std::string& dir) {
  if (Exists(dir + "/" + kPresent) || !InstalledSystem(dir).empty()) return;
  throw Refusal(NothingInstalled(dir));
}

std::unique_ptr<TEVINSInstToc> OpenInstalled(const std::string& system_dir) {
  if (!Exists(system_dir)) return nullptr;
  std::string path = system_dir;
  TEVINSInstToc* toc = nullptr;
  TEVUnicodeString message;
  const int status = InitInstallToc(path.data(), &toc, &message);
  std::unique_ptr<TEVINSInstToc> owned(toc);
  if (status != 0) throw Refused(message);
  // An installation that failed at its first component has left an empty table.
  return owned->GetNbToc() > 0 ? std::move(owned) : nullptr;
}

bool HasFragment(const std::string& system_dir) {
  const std::string text = TextOf(system_dir + "/" + kPresent);
  return !text.empty() && text.back() != '\n';
}

void CutFragment(const std::string& system_dir, int64_t before) {
  if (!HasFragment(system_dir)) return;
  const std::string present = system_dir + "/" + kPresent;
  const std::string text = TextOf(system_dir + "/" + kPresent);
  const size_t whole = text.rfind('\n') == std::string::npos ? 0 : text.rfind('\n') + 1;
  // The table may have had no newline at its end before.
  const auto size = static_cast<size_t>(before);
  fs::resize_file(present, size > whole && size <= text.size() ? size : whole);
}

void RequireSameLevel(const Medium& medium, const std::string& system_dir) {
  const auto installed = OpenInstalled(system_dir);
  const char* tree = installed == nullptr ? nullptr : installed->GetGALevel();
  const char* level = medium.toc->GetGALevel();
  if (tree == nullptr || level == nullptr || std::strcmp(tree, level) == 0) return;
  throw Refusal(Text("OtherLevel", "The medium {1} is for level {2}, and {3} has level {4}.\n",
                     {medium.dir, level, system_dir, tree}));
}

std::string CodeTreeFor(const Medium& medium, const std::string& target, const std::string& given) {
  if (!IsSdk(medium)) return "";
  // A service pack goes where the SDK is, which knows its code.
  if (!given.empty() && !IsUpdate(medium.kind)) return TargetPath(given);
  std::string dir = target;
  char code_tree[kPathSize] = "";
  if (TEVInsGetCodeDir(dir.data(), code_tree) != 1 || code_tree[0] == '\0') {
    throw Refusal(IsUpdate(medium.kind)
                      ? Text("SdkWithoutCode", "The SDK in {1} names no code.\n", {target})
                      : Text("SdkNeedsCode",
                             "The SDK in {1} names no code: give its tree with --code.\n",
                             {target}));
  }
  return TargetPath(code_tree);
}
