#include "removal.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <utility>

#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPurge = "purge\n";  ///< the text of the record of a removal with --purge

std::string RemovalRecord(const std::string& target) { return target + "/" + kUninstalling; }

/// Keeps the directory of the latest file open: mostly the next file is there, too.
class LatestDirectory {
 public:
  explicit LatestDirectory(std::string dir) : dir_(std::move(dir)) {}
  LatestDirectory(const LatestDirectory&) = delete;
  LatestDirectory& operator=(const LatestDirectory&) = delete;
  ~LatestDirectory() { Close(); }

  /// The directory of a file below `dir`, as OpenDirectoryOf gives it.
  int Of(const std::string& file) {
    const std::string name = file.substr(0, file.rfind('/') + 1);
    if (at_ < 0 || name != name_) {
      Close();
      at_ = OpenDirectoryOf(dir_, file);
      name_ = name;
    }
    return at_;
  }

  const std::string& dir() const { return dir_; }

 private:
  void Close() {
    if (at_ >= 0) close(std::exchange(at_, -1));
  }

  std::string dir_;
  std::string name_;
  int at_ = -1;
};

/// Deletes a file, or with AT_REMOVEDIR a directory if it is empty.
void DeleteIn(LatestDirectory& latest, const std::string& file, int flags) {
  const int at = latest.Of(file);
  if (at < 0) return;
  const bool gone = unlinkat(at, file.c_str() + file.rfind('/') + 1, flags) == 0;
  const int error = errno;
  // A directory may hold what is kept, or be a mount.
  if (gone || error == ENOENT || flags == AT_REMOVEDIR) return;
  throw Refusal(Text("FileNotDeletedFor", "The file {1} cannot be deleted: {2}.\n",
                     {latest.dir() + "/" + file, std::strerror(error)}));
}

/// Renames a file to another name in its directory.
void RenameIn(const std::string& dir, const std::string& file, const std::string& name) {
  const int at = OpenDirectoryOf(dir, file);
  if (at < 0) return;
  const bool renamed =
      renameat(at, fs::path(file).filename().c_str(), at, fs::path(name).filename().c_str()) == 0;
  const int error = errno;
  close(at);
  if (renamed || error == ENOENT) return;
  throw Refusal(Text("FileNotRenamedFor", "The file {1} cannot be renamed: {2}.\n",
                     {dir + "/" + file, std::strerror(error)}));
}

/// Deletes all that is in the directory `at`, which it closes, except the entries `but`, and what
/// lies on another device.
void Purge(int at, const std::set<std::string>& but) {
  DIR* const dir = at < 0 ? nullptr : fdopendir(at);
  if (dir == nullptr) return;
  struct stat here {};
  fstat(at, &here);
  while (const dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    struct stat info {};
    if (name == "." || name == ".." || but.count(name) != 0) continue;
    if (fstatat(at, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (info.st_dev != here.st_dev) continue;
    const bool is_directory = S_ISDIR(info.st_mode);
    if (is_directory) {
      Purge(openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), {});
    }
    unlinkat(at, name.c_str(), is_directory ? AT_REMOVEDIR : 0);
  }
  closedir(dir);
}

/// With `purge` all that is in its directory goes, too, but not the entries `but`.
void RemoveFrom(const RemovalFrom& part, bool purge, const std::set<std::string>& but = {}) {
  for (const auto& [file, name] : part.site_files) RenameIn(part.dir, file, name);
  LatestDirectory latest(part.dir);
  for (const std::string& file : part.files) {
    SafePoint();
    DeleteIn(latest, file, 0);
  }
  for (const std::string& dir : part.Directories()) DeleteIn(latest, dir, AT_REMOVEDIR);
  if (purge) {
    Purge(OpenDirectoryOf(part.dir, "."), but);
    // The table goes last, as without --purge.
    Purge(OpenDirectoryOf(part.dir, std::string(kControl) + "/."), {fs::path(kPresent).filename()});
  }
  for (const std::string& file : part.records) DeleteIn(latest, file, 0);
  DeleteIn(latest, kControl, AT_REMOVEDIR);
}

}  // namespace

void Remove(const Removal& removal, bool purge) {
  for (const RemovalFrom& part : removal.systems) {
    // The record of the removal stays to the end, also in the directory of a development kit.
    const bool is_target = part.dir == removal.tree.dir;
    RemoveFrom(part, purge, {kControl, is_target ? kUninstalling : kControl});
    if (!is_target) rmdir(part.dir.c_str());
  }
  RemoveFrom(removal.tree, false);
  SyncFileSystem(removal.tree.dir);
  Delete(RemovalRecord(removal.tree.dir));
  rmdir(removal.tree.dir.c_str());
}

void BeginRemoval(const std::string& target, bool purge) {
  WriteDurably(RemovalRecord(target), purge ? kPurge : "keep\n");
}

bool IsBeingPurged(const std::string& target) { return TextOf(RemovalRecord(target)) == kPurge; }

bool IsBeingRemoved(const std::string& target) { return !TextOf(RemovalRecord(target)).empty(); }

void RequireNoRemoval(const std::string& target) {
  if (!IsBeingRemoved(target)) return;
  throw Refusal(Text("BeingUninstalled",
                     "The tree in {1} is being uninstalled. Repeat uninstall first.\n", {target}));
}
