#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "files.h"
#include "formats.h"
#include "journal.h"
#include "manifests.h"
#include "refusal.h"
#include "removal.h"
#include "site_files.h"
#include "texts.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

/// What kwbatch and the library write into `control` beside the packages' own files. The table goes
/// last: it says what is there.
std::vector<std::string> OwnRecords() {
  std::vector<std::string> records = {kPackPrograms, kPendingPacks, kInterruptedPack,
                                      std::string(kPackJournal) + ".undo"};
  for (const std::string record : {kLanguageRecord, kRegistered, kUnfinished, kPackJournal}) {
    records.insert(records.end(), {record, record + ".new"});
  }
  records.emplace_back(kPresent);
  return records;
}

/// Takes what the site has changed out of the files of a system directory that are deleted, also
/// what a pending service pack has set aside.
void KeepSiteFiles(RemovalFrom& part, bool sdk) {
  const auto journal = Journal::Read(part.dir);
  std::set<std::string> kept;
  const auto keep = [&](const std::string& file, const std::string& suffix) {
    if (!IsThere(part.dir + "/" + file + suffix)) return;
    const std::string path = SitePath(part.dir + "/" + file, kept);
    kept.insert(path);
    part.site_files[file + suffix] = fs::path(path).lexically_relative(part.dir);
  };
  if (journal) {
    for (const std::string& file : journal->site_files) keep(file, kSavedSuffix);
  }
  const std::set<std::string> files(part.files.begin(), part.files.end());
  for (const std::string& file : ChangedFiles(part.dir, sdk, files)) keep(file, "");
  const auto is_kept = [&](const std::string& file) { return part.site_files.count(file) != 0; };
  part.files.erase(std::remove_if(part.files.begin(), part.files.end(), is_kept), part.files.end());
}

RemovalFrom FromSystem(const std::string& dir) {
  RemovalFrom part{dir, {}, {}, {}};
  for (const std::string& package : PackagesIn(dir)) {
    const std::vector<std::string> listed = ListedFiles(dir, package);
    const std::vector<std::string> unlisted = UnlistedFiles(package, listed);
    const std::vector<std::string> control = ControlFiles(package);
    part.files.insert(part.files.end(), listed.begin(), listed.end());
    part.files.insert(part.files.end(), unlisted.begin(), unlisted.end());
    part.records.insert(part.records.end(), control.begin(), control.end());
  }
  if (const auto journal = Journal::Read(dir)) {
    for (const auto* files : {&journal->saved_files, &journal->new_files}) {
      part.files.insert(part.files.end(), files->begin(), files->end());
    }
    for (const std::string& file : journal->saved_files) part.files.push_back(file + kSavedSuffix);
  }
  std::error_code failed;
  for (const auto& entry : fs::recursive_directory_iterator(dir + "/" + kUndoFiles, failed)) {
    const bool is_directory = entry.is_directory() && !entry.is_symlink();
    if (!is_directory) part.files.push_back(entry.path().lexically_relative(dir));
  }
  const std::vector<std::string> own = OwnRecords();
  part.records.insert(part.records.end(), own.begin(), own.end());
  // A pack lists its own control files as saved or new: they go with the records.
  const std::set<std::string> records(part.records.begin(), part.records.end());
  const auto is_record = [&records](const std::string& file) { return records.count(file) != 0; };
  part.files.erase(std::remove_if(part.files.begin(), part.files.end(), is_record),
                   part.files.end());
  return part;
}

/// The satellite has no manifest but the list that its installation wrote.
RemovalFrom FromSatellite(const std::string& dir) {
  RemovalFrom part{dir, {}, {kSatelliteList}, {}};
  for (const std::string& line : LinesOf(dir + "/" + kSatelliteList)) {
    if (line.empty() || line.back() == '/') continue;
    RequireInside(line, dir + "/" + kSatelliteList);
    part.files.push_back(fs::path(line).lexically_normal());
  }
  return part;
}

/// Adds what is in a system directory and does not go. Of an empty directory its name.
void AddKept(const RemovalFrom& part, std::vector<std::string>& kept) {
  std::set<std::string> going(part.files.begin(), part.files.end());
  going.insert(part.records.begin(), part.records.end());
  for (const auto& [file, name] : part.site_files) going.insert(file);
  for (const std::string& dir : part.Directories()) going.insert(dir);
  std::error_code failed;
  for (fs::recursive_directory_iterator entry(part.dir, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    const bool is_directory = entry->is_directory() && !entry->is_symlink();
    if (is_directory && !fs::is_empty(entry->path(), failed)) continue;
    const std::string path = entry->path().lexically_relative(part.dir);
    if (is_directory && path == kControl) continue;
    if (going.count(path) == 0) kept.push_back(entry->path());
  }
  if (failed && Exists(part.dir)) {
    throw Refusal(Text("DirectoryNotRead", "The directory {1} cannot be read: {2}.\n",
                       {part.dir, failed.message()}));
  }
}

}  // namespace

std::vector<std::string> RemovalFrom::Directories() const {
  std::set<std::string> dirs;
  for (const std::string& file : files) {
    for (fs::path parent = fs::path(file).parent_path(); !parent.empty();
         parent = parent.parent_path()) {
      dirs.insert(parent);
    }
  }
  return {dirs.rbegin(), dirs.rend()};
}

Removal PlanRemoval(const std::string& target, bool purge) {
  Removal removal;
  std::vector<std::string> dirs = SystemDirsIfAny(target, "");
  const std::string begun = dirs.empty() ? InstalledSystem(target) : "";
  if (!begun.empty()) dirs.push_back(target + "/" + begun);
  for (const std::string& dir : dirs) {
    RemovalFrom part = FromSystem(dir);
    RequireNoLinks(dir, part.files);
    RequireNoLinks(dir, part.records);
    if (!purge) KeepSiteFiles(part, dir == target);
    for (const auto& [file, name] : part.site_files) {
      removal.renamed.push_back(dir + "/" + name);
    }
    removal.systems.push_back(std::move(part));
  }
  const std::string satellite = target + "/" + kSatelliteDirectory;
  if (Exists(satellite + "/" + kSatelliteList)) {
    removal.systems.push_back(FromSatellite(satellite));
    RequireNoLinks(satellite, removal.systems.back().files);
  }
  removal.tree = {
      target, {kTarErrors, kTransferErrors}, {kCodePointer, kSdkPointer, kSystemList}, {}};
  std::set<std::string> known = {kUninstalling, kTarErrors,  kTransferErrors,
                                 kCodePointer,  kSdkPointer, kSystemList};
  for (const RemovalFrom& part : removal.systems) {
    AddKept(part, removal.kept);
    known.insert(fs::path(part.dir).filename());
  }
  std::error_code failed;
  const bool sdk = dirs == std::vector<std::string>{target};
  for (const auto& entry : fs::directory_iterator(target, failed)) {
    if (!sdk && known.count(entry.path().filename()) == 0) removal.kept.push_back(entry.path());
  }
  const auto is_own = [&](const std::string& path) {
    return fs::path(path).parent_path() == target && known.count(fs::path(path).filename()) != 0;
  };
  removal.kept.erase(std::remove_if(removal.kept.begin(), removal.kept.end(), is_own),
                     removal.kept.end());
  return removal;
}

std::vector<std::string> FilesToRemove(const Removal& removal) {
  std::set<std::string> files;
  std::vector<RemovalFrom> parts = removal.systems;
  parts.push_back(removal.tree);
  for (const RemovalFrom& part : parts) {
    for (const auto* list : {&part.files, &part.records}) {
      for (const std::string& file : *list) {
        if (IsThere(part.dir + "/" + file)) files.insert(part.dir + "/" + file);
      }
    }
  }
  return {files.begin(), files.end()};
}
