#include "inventory.h"

#include <kwinstutil/kwinstutil.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "files.h"
#include "formats.h"
#include "journal.h"
#include "medium.h"
#include "pointers.h"
#include "removal.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

/// The bytes that the files below a directory take on the disk.
int64_t SizeOnDisk(const std::string& dir) {
  int64_t blocks = 0;
  std::error_code failed;
  for (fs::recursive_directory_iterator
           entry(dir, fs::directory_options::skip_permission_denied, failed),
       end;
       !failed && entry != end; entry.increment(failed)) {
    struct stat info {};
    if (lstat(entry->path().c_str(), &info) == 0) blocks += info.st_blocks;
  }
  return blocks * 512;
}

/// The state of a pack that is not committed, as its journal says.
std::string StateOf(const Journal& journal) {
  switch (journal.phase) {
    case Journal::Phase::kPending:
      return "pending";
    case Journal::Phase::kUndoing:
      return "being undone";
    case Journal::Phase::kCommitting:
      return "being committed";
    case Journal::Phase::kInstalling:
    case Journal::Phase::kRepairing:
      break;
  }
  return "interrupted";
}

/// Marks the packs of a tree that are not committed. One that is not wholly installed may be
/// missing in the table.
void MarkUncommitted(SystemInventory& system) {
  const auto journal = Journal::Read(system.dir);
  const bool hot_fix = journal && journal->IsOfHotFix();
  std::vector<UpdateState>& packs = hot_fix ? system.hot_fixes : system.service_packs;
  if (!journal) {
    // An installer without kwbatch's journal has installed it.
    const bool interrupted = Exists(system.dir + "/" + kInterruptedPack);
    const bool pending = Exists(system.dir + "/" + kPendingPacks);
    if (!packs.empty() && (interrupted || pending)) {
      packs.back().state = interrupted ? "interrupted" : "pending";
    }
    return;
  }
  const auto is_it = [&journal](const UpdateState& pack) { return pack.name == journal->pack; };
  auto found = std::find_if(packs.begin(), packs.end(), is_it);
  if (found == packs.end()) found = packs.insert(packs.end(), UpdateState{journal->pack, 0, ""});
  found->state = StateOf(*journal);
}

/// Takes a line of a table.
void TakeLine(const TableLine& line, const std::string& update_state, SystemInventory& system) {
  if (line.name.empty() || line.kind == "FSP") return;
  if (line.kind == "SPK") {
    system.service_packs.push_back({line.name, line.level, update_state});
  } else if (line.IsHotFix()) {
    system.hot_fixes.push_back({line.name, line.level, update_state});
  } else {
    PackageLists& lists = system.packages;
    const bool is_code = line.type == kTEVINSNames[code];
    std::vector<std::string>& list = line.type == kTEVINSNames[zeb2]      ? lists.sdk
                                     : line.type == kTEVINSNames[samples] ? lists.samples
                                     : !is_code                           ? lists.others
                                     : line.kind == "SLT"                 ? lists.solutions
                                                                          : lists.products;
    list.push_back(line.name);
  }
}

void TakeTable(const std::string& path, const std::string& update_state, SystemInventory& system) {
  for (const std::string& text : LinesOf(path)) {
    if (text.empty() || text.front() == '#') continue;
    const TableLine line(text);
    TakeLine(line, update_state, system);
    if (!line.level_of_all.empty()) system.level = line.level_of_all;
  }
}

void TakeLanguages(const std::string& tree, SystemInventory& system) {
  // A development kit has none.
  if (system.dir == tree) return;
  std::string dir = tree;
  const int mask = TEVInsInitChosenLang(dir.data(), system.name.c_str());
  for (const Language& language : kLanguages) {
    if ((mask & language.bit) != 0) system.languages.emplace_back(language.name);
  }
  system.fonts = (mask & kIndexedFonts) != 0;
}

SystemInventory InstalledSystemIn(const std::string& tree, const std::string& dir) {
  SystemInventory system;
  system.dir = dir;
  const auto toc = OpenInstalled(dir);
  const char* os = toc == nullptr ? nullptr : toc->GetOS();
  system.name = dir != tree ? fs::path(dir).filename().string() : os != nullptr ? os : "";
  system.state = IsBeingRemoved(tree)                       ? "uninstalling"
                 : Unfinished::Forbidding(dir, dir == tree) ? "unfinished"
                                                            : "complete";
  TakeTable(dir + "/" + kPresent, "committed", system);
  for (UpdateState& fix : system.hot_fixes) fix.state = "installed";
  MarkUncommitted(system);
  TakeLanguages(tree, system);
  system.size = SizeOnDisk(dir);
  system.registered = Registered::Read(dir);
  return system;
}

SystemInventory MediumSystem(const Medium& medium) {
  SystemInventory system;
  system.name = medium.os;
  system.dir = medium.dir;
  system.state = "medium";
  TakeTable(medium.dir + "/" + kMediumTable, "on the medium", system);
  // A hot fix names the pack that it is for.
  if (medium.kind == MediumKind::kHotFix) system.service_packs.front().state = "required";
  system.size = SizeOnDisk(medium.dir);
  return system;
}

/// Has the directory, or one for a system that it lists, the table of a medium?
bool IsMedium(const std::string& dir) {
  if (Exists(dir + "/" + kMediumTable)) return true;
  const std::vector<std::string> systems = SystemsOf(dir);
  return std::any_of(systems.begin(), systems.end(), [&dir](const std::string& system) {
    return Exists(dir + "/" + system + "/" + kMediumTable);
  });
}

}  // namespace

Inventory InventoryOf(const std::string& dir, const std::string& os) {
  Inventory inventory;
  if (IsMedium(dir)) {
    inventory.kind = "medium";
    for (const Medium& medium : OpenMedium(dir, os)) {
      inventory.systems.push_back(MediumSystem(medium));
    }
    return inventory;
  }
  std::vector<std::string> dirs = SystemDirsIfAny(dir, os);
  // The list of systems is written when all of them have their tables.
  const std::string begun = dirs.empty() ? InstalledSystem(dir) : "";
  if (!begun.empty() && (os.empty() || begun == os)) dirs.push_back(dir + "/" + begun);
  for (const std::string& system_dir : dirs) {
    inventory.systems.push_back(InstalledSystemIn(dir, system_dir));
    inventory.kind = system_dir == dir ? "sdk" : "tree";
  }
  inventory.sdk_tree = PointedTree(dir, kSdkPointer);
  inventory.code_tree = PointedTree(dir, kCodePointer);
  return inventory;
}
