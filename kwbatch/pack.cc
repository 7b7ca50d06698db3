#include "pack.h"

#include <filesystem>
#include <optional>
#include <set>
#include <utility>

#include "archive.h"
#include "files.h"
#include "formats.h"
#include "installable.h"
#include "json.h"
#include "pack_archive.h"
#include "refusal.h"
#include "space.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace {

using Phase = Journal::Phase;

/// The lines of hot fixes that were installed above the pack. They go with it when it goes on
/// again, since its files replace theirs.
std::vector<std::string> HotFixesAbove(const Pack& pack) {
  std::vector<std::string> lines;
  bool above = false;
  for (const std::string& line : LinesOf(pack.In(kPresent))) {
    const TableLine component(line);
    above = above || (component.kind == "SPK" && component.name == pack.journal.pack);
    if (above && component.IsHotFix()) lines.push_back(line);
  }
  return lines;
}

}  // namespace

void Pack::Enter(Phase phase) {
  NoteChange();
  journal.phase = phase;
  journal.Write(system_dir);
}

Medium InstallableUpdate(std::vector<Medium> media, const Request& request, bool hot_fix) {
  Medium& medium = media.front();
  if (!IsUpdate(medium.kind) || (medium.kind == MediumKind::kHotFix) != hot_fix) {
    throw Refusal(
        hot_fix ? Text("NoHotFix", "The medium {1} is no hot fix.\n", {medium.dir})
                : Text("NoServicePack", "The medium {1} is no service pack.\n", {medium.dir}));
  }
  if (media.size() > 1) {
    throw Refusal(
        Text("SeveralSystems", "The medium is for several systems: choose one with --os.\n"));
  }
  const std::string system_dir = SystemDir(medium, request.target);
  const auto unfinished = Unfinished::Forbidding(system_dir, IsSdk(medium));
  if (unfinished) throw unfinished->NotFinished(system_dir);
  if (const auto journal = Journal::Read(system_dir)) CutFragment(system_dir, journal->table_size);
  RequireInstallable(medium, request.target,
                     CodeTreeFor(medium, request.target, request.code_tree));
  return std::move(medium);
}

std::string UpdateName(const Medium& medium) {
  const Content content = ContentOf(medium.kind);
  const std::vector<std::string> names =
      PackagesOf(*medium.toc, content.type, content.kinds.front());
  RequireArchive(medium, names.front());
  return names.front();
}

Pack PackToInstall(const Medium& medium, const std::string& target) {
  Pack pack{SystemDir(medium, target), medium.os, ContentOf(medium.kind).type, {}};
  const std::string name = UpdateName(medium);
  const bool hot_fix = medium.kind == MediumKind::kHotFix;
  const std::optional<Journal> journal = Journal::Read(pack.system_dir);
  if (journal && (journal->pack != name || journal->phase == Phase::kUndoing ||
                  (journal->phase == Phase::kCommitting && !hot_fix))) {
    throw journal->NotFinished(pack.system_dir);
  }
  if (journal) RequireFilesOf(*journal, medium, pack.system_dir);
  pack.journal = journal ? *journal : JournalOf(medium, name, pack.system_dir);
  const bool installed =
      OpenInstalled(pack.system_dir)->GetSPKLevel(1) == medium.toc->GetSPKLevel(1);
  // A committed pack stays committed: there is nothing to go back to.
  if (!journal && installed && !hot_fix) {
    pack.journal.phase = Phase::kRepairing;
    for (const std::string& line : HotFixesAbove(pack)) pack.journal.table_lines.push_back(line);
  }
  if (journal && journal->phase == Phase::kPending) pack.journal.phase = Phase::kInstalling;
  return pack;
}

void RequireSpace(const Medium& medium, const std::string& target, const Pack& pack) {
  std::set<std::string> kept;
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  for (const std::string& file : pack.journal.saved_files) {
    const bool saved = IsThere(pack.In(file) + kSavedSuffix);
    if (pack.journal.phase != Phase::kRepairing && !saved) kept.insert(root + file);
  }
  Demand demand(target);
  demand.Add(MembersOf(ArchiveOf(medium.dir, pack.journal.pack)), kept);
  demand.Require();
}

std::vector<Pack> UncommittedPacks(const Request& request) {
  const std::string& target = request.target;
  RequireReadWrite(target);
  std::vector<Pack> packs;
  for (const std::string& dir : SystemDirs(target, request.os)) {
    const TEVINSType type = dir == target ? zeb2 : code;
    if (const auto journal = Journal::Read(dir)) {
      packs.push_back({dir, std::filesystem::path(dir).filename(), type, *journal});
    } else {
      DeleteUnwritten(JournalPath(dir));
    }
  }
  if (packs.empty()) {
    throw NothingToDo(
        Text("NoneUncommitted", "No service pack in {1} is waiting for a commit.\n", {target}));
  }
  return packs;
}
