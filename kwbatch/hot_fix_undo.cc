#include "hot_fix_undo.h"

#include <filesystem>
#include <system_error>

#include "files.h"
#include "formats.h"
#include "pack_files.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

std::string UndoDirectory(const std::string& system_dir, const std::string& name) {
  return system_dir + "/" + kUndoFiles + "/" + name;
}

/// Gives a file a second name. Where the file system has none, it is copied.
void LinkFile(const std::string& from, const std::string& to) {
  std::error_code failed;
  MakeDirectories(fs::path(to).parent_path());
  Delete(to);
  if (fs::is_symlink(from)) {
    fs::copy_symlink(from, to, failed);
  } else {
    fs::create_hard_link(from, to, failed);
    if (failed) fs::copy_file(from, to, failed);
  }
  if (failed) throw Refusal(Text("FileNotMade", "The file {1} cannot be made.\n", {to}));
}

}  // namespace

void KeepForUndo(const Pack& pack) {
  RequireRealParents(pack);
  const std::string dir = UndoDirectory(pack.system_dir, pack.journal.pack);
  for (const std::string& file : pack.journal.saved_files) {
    const std::string saved = pack.In(file) + kSavedSuffix;
    if (IsThere(saved)) LinkFile(saved, dir + "/" + file);
  }
  MakeDirectories(dir + "/" + kControl);
  Journal journal = pack.journal;
  journal.phase = Journal::Phase::kPending;
  journal.Write(dir);
}

bool CanBeUndone(const std::string& system_dir, const std::string& name) {
  return Exists(JournalPath(UndoDirectory(system_dir, name)));
}

void SetAsideAgain(Pack& pack) {
  const std::string name = pack.journal.pack;
  if (!CanBeUndone(pack.system_dir, name)) return;
  // In these phases the files that are set aside are those of this hot fix, all of them.
  if (pack.journal.phase == Journal::Phase::kInstalling ||
      pack.journal.phase == Journal::Phase::kUndoing) {
    return;
  }
  const std::string dir = UndoDirectory(pack.system_dir, name);
  const auto journal = Journal::Read(dir);
  if (!journal || journal->pack != name) {
    throw Refusal(Text("RecordDamaged", "The record {1} is damaged.\n", {JournalPath(dir)}));
  }
  pack.journal = *journal;
  RequireRealParents(pack);
  for (const std::string& file : pack.journal.saved_files) {
    const std::string kept = dir + "/" + file;
    if (IsThere(kept) || IsThere(pack.In(file) + kSavedSuffix)) continue;
    throw Refusal(Text("KeptFileMissing",
                       "The file {1} is missing, so hot fix {2} cannot be undone.\n",
                       {kept, name}));
  }
  pack.Enter(Journal::Phase::kPending);
  for (const std::string& file : pack.journal.saved_files) {
    const std::string saved = pack.In(file) + kSavedSuffix;
    if (!IsThere(saved)) LinkFile(dir + "/" + file, saved);
  }
  SyncFileSystem(pack.system_dir);
}

void ForgetUndo(const Pack& pack) {
  DeleteTree(UndoDirectory(pack.system_dir, pack.journal.pack));
  // Others may be kept there.
  std::error_code failed;
  fs::remove(pack.In(kUndoFiles), failed);
}
