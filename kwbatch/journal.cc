#include "journal.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "files.h"
#include "formats.h"
#include "manifests.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPhases[] = {"installing", "pending", "repairing", "undoing", "committing"};

constexpr const char* kEnd = "end";
constexpr const char* kUndoSuffix = ".undo";  ///< of the journal from the beginning of an undo

/// Has a service pack begun to change the system directory? It marks the directory before that.
bool HasBegun(const std::string& system_dir) {
  if (IsThere(system_dir + "/" + kInterruptedPack) || IsThere(system_dir + "/" + kPendingPacks)) {
    return true;
  }
  for (const auto& entry : fs::recursive_directory_iterator(system_dir)) {
    if (entry.path().extension() == kSavedSuffix) return true;
  }
  return false;
}

/// The list that a line's first word stands for, or null.
std::vector<std::string>* ListOf(Journal& journal, const std::string& word) {
  if (word == "saved") return &journal.saved_files;
  if (word == "site") return &journal.site_files;
  if (word == "new") return &journal.new_files;
  if (word == "directory") return &journal.new_directories;
  if (word == "line") return &journal.table_lines;
  return nullptr;
}

/// Takes the line "WORD REST" into the journal. False when it cannot be understood.
bool Take(const std::string& line, Journal& journal) {
  const size_t blank = line.find(' ');
  if (blank == std::string::npos) return false;
  const std::string word = line.substr(0, blank);
  const std::string rest = line.substr(blank + 1);
  if (word == "size") {
    journal.table_size = std::strtoll(rest.c_str(), nullptr, 10);
    return true;
  }
  if (std::vector<std::string>* list = ListOf(journal, word)) {
    list->push_back(rest);
    return true;
  }
  for (int phase = 0; phase < 5; ++phase) {
    if (word != kPhases[phase]) continue;
    journal.phase = static_cast<Journal::Phase>(phase);
    journal.pack = rest;
    return true;
  }
  return false;
}

}  // namespace

std::string JournalPath(const std::string& system_dir) { return system_dir + "/" + kPackJournal; }

std::optional<Journal> Journal::Read(const std::string& system_dir) {
  const bool undoing = IsThere(JournalPath(system_dir) + kUndoSuffix);
  const std::string path = JournalPath(system_dir) + (undoing ? kUndoSuffix : "");
  if (!IsThere(path)) return std::nullopt;
  std::ifstream file(path);
  if (!file) throw CannotRead(path);
  Journal journal;
  bool whole = false;
  for (std::string line; !whole && std::getline(file, line);) {
    whole = line == kEnd;
    if (whole || Take(line, journal)) continue;
    break;
  }
  if (!whole && !HasBegun(system_dir)) return std::nullopt;
  if (!whole) {
    throw Refusal(
        Text("JournalDamaged",
             "The file {1} is damaged, so nobody can tell what the service pack has changed.\n",
             {path}));
  }
  RequirePlainName(Text("NounServicePack", "service pack"), journal.pack);
  for (const auto* paths :
       {&journal.saved_files, &journal.site_files, &journal.new_files, &journal.new_directories}) {
    for (const std::string& name : *paths) RequireInside(name, path);
  }
  if (undoing) journal.phase = Phase::kUndoing;
  return journal;
}

bool Journal::IsOfHotFix() const {
  const auto is_hot_fix = [](const std::string& line) { return TableLine(line).IsHotFix(); };
  const auto is_pack = [](const std::string& line) { return TableLine(line).kind == "SPK"; };
  return std::any_of(table_lines.begin(), table_lines.end(), is_hot_fix) &&
         std::none_of(table_lines.begin(), table_lines.end(), is_pack);
}

std::string Journal::Name() const {
  return IsOfHotFix() ? Text("HotFixNamed", "Hot fix {1}", {pack})
                      : Text("ServicePackNamed", "Service pack {1}", {pack});
}

Refusal Journal::NotFinished(const std::string& system_dir) const {
  const std::string name = Name();
  switch (phase) {
    case Phase::kUndoing:
      return Refusal(Text("PackUndoing", "{1} in {2} is not finished. Repeat undo-service-pack.\n",
                          {name, system_dir}));
    case Phase::kCommitting:
      return Refusal(Text("PackCommitting", "{1} in {2} is not finished. Repeat commit.\n",
                          {name, system_dir}));
    case Phase::kPending:
      return Refusal(Text("PackPending",
                          "{1} in {2} is not finished. Use commit or undo-service-pack.\n",
                          {name, system_dir}));
    case Phase::kRepairing:
      return Refusal(Text("PackRepairing", "{1} in {2} is not finished. Repeat its installation.\n",
                          {name, system_dir}));
    case Phase::kInstalling:
      break;
  }
  return Refusal(
      Text("PackInstalling",
           "{1} in {2} is not finished. Repeat its installation, or undo-service-pack.\n",
           {name, system_dir}));
}

void Journal::BeginUndo(const std::string& system_dir) {
  const std::string path = JournalPath(system_dir);
  if (phase != Phase::kUndoing) Rename(path, path + kUndoSuffix);
  phase = Phase::kUndoing;
  SyncFileSystem(system_dir);
}

void Journal::Delete(const std::string& system_dir) {
  for (const char* suffix : {".new", "", kUndoSuffix}) {
    ::Delete(JournalPath(system_dir) + suffix);
  }
}

void Journal::Write(const std::string& system_dir) const {
  std::ostringstream file;
  file << kPhases[static_cast<int>(phase)] << ' ' << pack << "\nsize " << table_size << '\n';
  for (const std::string& name : saved_files) file << "saved " << name << '\n';
  for (const std::string& name : site_files) file << "site " << name << '\n';
  for (const std::string& name : new_files) file << "new " << name << '\n';
  for (const std::string& name : new_directories) file << "directory " << name << '\n';
  for (const std::string& line : table_lines) file << "line " << line << '\n';
  file << kEnd << '\n';
  WriteDurably(JournalPath(system_dir), file.str());
}
