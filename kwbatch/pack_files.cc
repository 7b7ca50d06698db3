#include "pack_files.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "manifests.h"
#include "refusal.h"
#include "site_files.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// The list of a pack's saved files, for the library to read. It looks for the list in the
/// directory of an operating system below its temporary one. Here that is a directory of this run
/// alone.
class SavedList {
 public:
  explicit SavedList(const Journal& journal) {
    TEVInsGetTempDir(library_dir_);
    system_ = fs::path(dir()).lexically_relative(library_dir_);
    member_ = system_ + "/" + kControl + "/" + journal.pack;
    fs::create_directory(dir() + "/" + kControl);
    std::string text;
    for (const std::string& file : journal.saved_files) text += file + "\n";
    Write(dir() + "/" + kControl + "/" + journal.pack, text);
  }

  /// Puts the list into an archive beside it.
  void Pack(const std::string& pack) const {
    std::string command =
        std::string("cd ") + library_dir_ + " && tar -cf " + dir() + "/" + pack + " " + member_;
    TEVUnicodeString message;
    if (TEVInsCommande(command.data(), &message) != 1) throw Refused(message);
  }

  const std::string& dir() const { return own_.path(); }
  /// What the library takes for the name of the operating system.
  const char* system() const { return system_.c_str(); }

 private:
  const TemporaryDirectory own_;
  char library_dir_[kPathSize] = "";
  std::string system_;
  std::string member_;
};

/// The refusal for a table that cannot be rewritten.
Refusal CannotRewrite(const std::string& path) {
  return Refusal(Text("FileNotRewritten", "The file {1} cannot be rewritten.\n", {path}));
}

}  // namespace

void RequireRealParents(const Pack& pack) {
  const Journal& journal = pack.journal;
  const std::string undo = std::string(kUndoFiles) + "/" + journal.pack + "/";
  std::vector<std::string> files = {undo + kPackJournal};
  for (const auto* list :
       {&journal.saved_files, &journal.site_files, &journal.new_files, &journal.new_directories}) {
    files.insert(files.end(), list->begin(), list->end());
  }
  for (const std::string& file : journal.saved_files) files.push_back(undo + file);
  RequireNoLinks(pack.system_dir, files);
}

/// What an earlier try has put in the place of a saved file is removed first: to save that would
/// lose the saved one.
void Save(const Pack& pack) {
  RequireRealParents(pack);
  for (const std::string& file : pack.journal.new_files) Delete(pack.In(file));
  for (const std::string& file : pack.journal.saved_files) {
    if (IsThere(pack.In(file) + kSavedSuffix)) Delete(pack.In(file));
  }
  const SavedList list(pack.journal);
  list.Pack(pack.journal.pack);
  std::string name = pack.journal.pack;
  std::string source = list.dir();
  std::string system_dir = pack.system_dir;
  TEVUnicodeString message;
  if (TEVInsSaveFilesBeforeInstall(name.data(), source.data(), system_dir.data(), list.system(),
                                   code, message) != 0) {
    throw Refused(message);
  }
  // The library takes no file whose name begins with a number or holds a blank.
  for (const std::string& file : pack.journal.saved_files) {
    SafePoint();
    const std::string path = pack.In(file);
    if (IsThere(path) && TEVRenameFile(path.c_str(), (path + kSavedSuffix).c_str()) != 0) {
      throw Refusal(Text("FileNotSetAside", "The file {1} cannot be set aside.\n", {path}));
    }
  }
}

/// What can be deleted goes first, since all else may need the room.
void Restore(const Pack& pack) {
  for (const std::string& file : pack.journal.new_files) Delete(pack.In(file));
  const SavedList list(pack.journal);
  std::string system_dir = pack.system_dir;
  std::string name = pack.journal.pack;
  TEVUnicodeString message;
  if (TEVInsRestoreFiles(system_dir.data(), name.data(), list.system(), code, message) != 0) {
    throw Refused(message);
  }
  const std::vector<std::string>& dirs = pack.journal.new_directories;
  for (auto dir = dirs.rbegin(); dir != dirs.rend(); ++dir) rmdir(pack.In(*dir).c_str());
}

std::vector<std::string> KeepSiteFiles(const Pack& pack, const std::string& suffix) {
  std::vector<std::string> kept;
  for (const std::string& file : pack.journal.site_files) {
    const std::string saved = pack.In(file) + suffix;
    if (!IsThere(saved)) continue;
    kept.push_back(SitePath(pack.In(file)));
    Rename(saved, kept.back());
  }
  return kept;
}

std::vector<std::string> KeepLaterChanges(const Pack& pack) {
  std::set<std::string> files(pack.journal.saved_files.begin(), pack.journal.saved_files.end());
  files.insert(pack.journal.new_files.begin(), pack.journal.new_files.end());
  std::vector<std::string> kept;
  const bool sdk = pack.type == zeb2;
  const std::vector<std::string> changed = ChangedFiles(pack.system_dir, sdk, files);
  // One that could not be read looks changed, so these are compared once more.
  for (const std::string& file :
       ChangedFiles(pack.system_dir, sdk, {changed.begin(), changed.end()})) {
    if (fs::is_directory(fs::symlink_status(pack.In(file)))) continue;
    kept.push_back(SitePath(pack.In(file)));
    Rename(pack.In(file), kept.back());
  }
  return kept;
}

void DeleteSaved(const Pack& pack) {
  for (const std::string& file : pack.journal.saved_files) {
    SafePoint();
    Delete(pack.In(file) + kSavedSuffix);
  }
}

void PruneTable(const Pack& pack) {
  std::string present = pack.In(kPresent);
  std::string pruned = present + ".new";
  std::string name = pack.journal.pack;
  struct stat info {};
  TEVInsResetPresent reset;
  if (stat(present.c_str(), &info) != 0 || reset.InitSource(present.data()) != 0 ||
      reset.InitDest(pruned.data()) != 0 || reset.Remove(name.data(), pack.type) != 0 ||
      chmod(pruned.c_str(), info.st_mode & 07777) != 0 ||
      (geteuid() == 0 && chown(pruned.c_str(), info.st_uid, info.st_gid) != 0) ||
      TEVRenameFile(pruned.c_str(), present.c_str()) != 0) {
    throw CannotRewrite(present);
  }
  TEVUnicodeString unused;
  for (const std::string& line : pack.journal.table_lines) {
    // With its newline the text is a whole line.
    if (TEVInsSuppressLine(present.data(), (line + "\n").data(), &unused, 1) != 1) {
      throw CannotRewrite(present);
    }
  }
}

void MarkInterrupted(const Pack& pack) {
  WriteDurably(pack.In(kInterruptedPack), "1 MANUAL_COMMIT\n");
}

void RecordPending(const Pack& pack) {
  WriteDurably(pack.In(kPendingPacks), pack.journal.pack + "\n");
}

void DeleteRecords(const Pack& pack) {
  for (const char* file : {kInterruptedPack, kPendingPacks}) Delete(pack.In(file));
  Journal::Delete(pack.system_dir);
}

void DeleteLeftovers(const Pack& pack) {
  for (const auto& entry : fs::directory_iterator(pack.In(kControl))) {
    const std::string name = entry.path().filename();
    if (name.rfind(kPresentCopy, 0) == 0) Delete(entry.path());
  }
  const fs::path system_dir = pack.system_dir;
  const fs::path tree = pack.type == zeb2 ? system_dir : system_dir.parent_path();
  for (const char* name : {kTarErrors, kTransferErrors}) Delete(tree / name);
}

DirectoryModes::DirectoryModes(const Pack& pack) {
  std::set<std::string> dirs;
  for (const auto* files : {&pack.journal.saved_files, &pack.journal.new_files}) {
    for (const std::string& file : *files) {
      for (fs::path dir = fs::path(file).parent_path();; dir = dir.parent_path()) {
        dirs.insert(pack.In(dir.string()));
        if (dir.empty()) break;
      }
    }
  }
  for (const std::string& dir : dirs) {
    struct stat info {};
    if (lstat(dir.c_str(), &info) == 0) before_.emplace_back(dir, info);
  }
}

DirectoryModes::~DirectoryModes() {
  for (const auto& [dir, info] : before_) {
    if (geteuid() == 0 && lchown(dir.c_str(), info.st_uid, info.st_gid) != 0) continue;
    chmod(dir.c_str(), info.st_mode & 07777);
  }
}
