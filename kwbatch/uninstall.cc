#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "journal.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "options.h"
#include "pointers.h"
#include "refusal.h"
#include "registration.h"
#include "removal.h"
#include "request.h"
#include "running_tasks.h"
#include "system_files.h"
#include "systemd.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"
#include "units.h"

namespace fs = std::filesystem;

namespace {

/// A refusal that only --purge comes round.
Refusal OnlyPurge(const std::string& reason) {
  return Refusal(Text("PurgeDeletesAll",
                      "{1}With --purge the directory is deleted with all that is in it.\n",
                      {reason}));
}

/// The first of the files that say what is the product's, and that is missing or empty; an empty
/// text when all are there. A pack that is being installed or undone need not have its own.
std::string LackingRecord(const std::string& system_dir) {
  std::vector<std::string> records = {kPresent};
  const auto journal = Journal::Read(system_dir);
  for (const std::string& text : LinesOf(system_dir + "/" + kPresent)) {
    const TableLine line(text);
    // Fix packages are parts of a pack, which has the manifest.
    if (line.name.empty() || text.front() == '#' || line.kind == "FSP") continue;
    if (journal && journal->pack == line.name) continue;
    records.push_back(std::string(kControl) + "/" + line.name);
  }
  for (const std::string& record : records) {
    std::error_code missing;
    const auto size = fs::file_size(system_dir + "/" + record, missing);
    if (missing || size == 0) return system_dir + "/" + record;
  }
  return "";
}

/// Nobody but the medium knows what an installation that was interrupted has unpacked, or what was
/// the product's when that is not recorded.
void RequireFinished(const std::string& target) {
  for (const std::string& dir : SystemDirsIfAny(target, "")) {
    const auto unfinished = Unfinished::Forbidding(dir, dir == target);
    if (unfinished) throw OnlyPurge(unfinished->NotFinished(dir).what());
    const std::string lacking = LackingRecord(dir);
    if (lacking.empty()) continue;
    throw OnlyPurge(Text("FilesUnknown",
                         "The file {1} is missing or empty, so nobody can tell which files are the "
                         "product's. Repair the tree, or install it again.\n",
                         {lacking}));
  }
}

/// Throws a Refusal when a development kit needs the code that is in the target.
void RequireNoSdk(const std::string& target) {
  const std::string sdk = PointedTree(target, kSdkPointer);
  if (sdk == target || !Exists(sdk + "/" + kPresent)) return;
  if (PointedTree(sdk, kCodePointer) != target) return;
  throw Refusal(Text("SdkNeedsTree",
                     "The development kit in {1} needs the code in {2}. Uninstall it first.\n",
                     {sdk, target}));
}

/// Names the programs that run from the target. Throws a Refusal when there are some, unless they
/// are to be stopped, and then when they do not end.
void EndTasks(const std::string& target, bool stop, bool dry) {
  RunningTasks tasks(target);
  if (tasks.commands().empty()) return;
  Complain(Text("TheseRun", "These programs run from {1}:", {target}));
  for (const std::string& command : tasks.commands()) Complain("  " + command);
  if (dry) return;
  if (!stop) {
    throw Refusal(Text("EndPrograms", "End the programs of {1}, or use --stop.\n", {target}));
  }
  NoteChange();
  tasks.Stop();
  constexpr int kSeconds = 20;
  for (int tries = 0; tries < kSeconds * 5; ++tries) {
    SafePoint();
    if (RunningTasks(target).commands().empty()) {
      return SayDone(Text("ProgramsEnded", "The programs of {1} have ended.", {target}));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  throw Refusal(Text("ProgramsDoNotEnd",
                     "The programs of {1} do not end after the termination signal.\n", {target}));
}

/// The tree's lines in the system's files; none with --no-services. Throws a Refusal when such a
/// file cannot be written.
SystemLines LinesToTakeOut(const Request& request) {
  SystemLines lines;
  if (!request.ports.registered) return lines;
  lines = LinesOfTree(request.target, SystemDirsIfAny(request.target, ""));
  if (!lines.services.empty()) RequireWritable(SystemFile(kServices));
  if (!lines.inetd.empty()) RequireWritable(SystemFile(kInetd));
  return lines;
}

void ShowPlan(const SystemLines& lines, const Removal& removal, bool purge) {
  const auto show = [](const std::string& what, const std::string& field,
                       const std::vector<std::string>& list) {
    SetField("/would_" + field, list);
    if (!list.empty()) Show(what);
    for (const std::string& text : list) Show("  " + text);
  };
  const auto lines_of = [](const char* file) {
    return Text("WouldTakeOut", "These lines would be taken out of {1}:", {SystemFile(file)});
  };
  show(lines_of(kServices), "remove_services", lines.services);
  show(lines_of(kInetd), "remove_inetd", lines.inetd);
  show(Text("WouldDeleteUnits",
            "These units of systemd would be deleted from {1}:", {UnitDirectory()}),
       "remove_units", lines.units);
  show(Text("WouldKeepUnits", "These units are not as they were written, and would be kept:"),
       "keep_units", lines.changed_units);
  show(Text("WouldDelete", "These files would be deleted:"), "delete", FilesToRemove(removal));
  show(Text("WouldRename", "These files were changed here, and would be kept under these names:"),
       "rename", removal.renamed);
  show(purge ? Text("WouldPurge",
                    "These files would be deleted too, or kept beside the system directories:")
             : Text("WouldKeep", "These files would be kept:"),
       "keep", removal.kept);
}

void TakeOut(const SystemLines& lines, Log& log) {
  for (const auto& [name, list] :
       {std::pair(kServices, &lines.services), std::pair(kInetd, &lines.inetd)}) {
    if (list->empty()) continue;
    SafePoint();
    const std::string path = SystemFile(name);
    RemoveLines(path, *list);
    Tell(LinesTakenOut(path), log);
  }
  if (!lines.inetd.empty()) TellHowInetdReads();
  TakeOutUnits(lines.units, log);
}

/// The code tree of a development kit no longer names it.
void ForgetSdk(const std::string& target) {
  const std::string code_tree = PointedTree(target, kCodePointer);
  if (PointedTree(code_tree, kSdkPointer) == target) Delete(code_tree + "/" + kSdkPointer);
}

/// Names what is still there.
void TellKept(const Removal& removal, const SystemLines& lines, Log& log) {
  std::vector<std::string> kept;
  const auto tell = [&](const std::string& path, const std::string& text) {
    kept.push_back(path);
    Say(text);
    log.Write(text + "\n");
  };
  for (const std::string& path : removal.kept) {
    if (!IsThere(path)) continue;
    tell(path, Text("FileKept", "It is not the product's, and is kept: {1}", {path}));
  }
  for (const std::string& path : removal.renamed) {
    tell(path, Text("ChangedFileKept", "It was changed here, and is kept as {1}", {path}));
  }
  for (const std::string& name : lines.changed_units) {
    const std::string path = UnitDirectory() + "/" + name;
    tell(path, Text("UnitKept", "It is not as it was written, and is kept: {1}", {path}));
  }
  SetField("/kept", kept);
}

}  // namespace

void Uninstall(const Options& options) {
  const Request request = RequestOf(options);
  const std::string& target = request.target;
  // One that was begun is brought to its end as it was begun.
  const bool purge = options.Has(option::kPurge) || IsBeingPurged(target);
  const bool dry = options.Has(option::kDryRun);
  const Lock tree(target, Lock::Kind::kWriting, request);
  const Lock code(PointedTree(target, kCodePointer), Lock::Kind::kWriting, request);
  std::optional<Lock> system;
  if (request.ports.registered) {
    const std::string dir = fs::path(SystemFile(kServices)).parent_path();
    system.emplace(dir, Lock::Kind::kWritingAlone, request);
  }
  const bool repeated = IsBeingRemoved(target);
  if (!repeated && SystemDirsIfAny(target, "").empty() && InstalledSystem(target).empty()) {
    throw NothingToDo(NothingInstalled(target));
  }
  if (!repeated && !purge) RequireFinished(target);
  RequireNoSdk(target);
  const Removal removal = PlanRemoval(target, purge);
  if (request.ports.registered && !dry) RestoreSystemFiles();
  const SystemLines lines = LinesToTakeOut(request);
  EndTasks(target, options.Has(option::kStop), dry);
  if (dry) return ShowPlan(lines, removal, purge);

  Log log(request.log, Text("LogRemoval", "removal of {1}", {target}));
  SafePoint();
  NoteChange();
  BeginRemoval(target, purge);
  TakeOut(lines, log);
  ForgetSdk(target);
  const size_t count = FilesToRemove(removal).size();
  Remove(removal, purge);
  TellKept(removal, lines, log);
  SayDone(Text("TreeUninstalled", "The tree in {1} is uninstalled: {2} files are deleted.",
               {target, count}));
  log.Succeeded();
}
