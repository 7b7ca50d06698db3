#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "options.h"
#include "refusal.h"
#include "registration.h"
#include "removal.h"
#include "request.h"
#include "running_tasks.h"
#include "system_files.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

/// Nobody but the medium knows what an installation that was interrupted has unpacked.
void RequireFinished(const std::string& target) {
  for (const std::string& dir : SystemDirsIfAny(target, "")) {
    const auto unfinished = Unfinished::Forbidding(dir, dir == target);
    if (!unfinished) continue;
    throw Refusal(unfinished->NotFinished(dir).what() +
                  std::string("With --purge the directory is deleted with all that is in it.\n"));
  }
}

/// Throws a Refusal when a development kit needs the code that is in the target.
void RequireNoSdk(const std::string& target) {
  const std::vector<std::string> sdk = LinesOf(target + "/" + kSdkPointer);
  if (sdk.empty() || sdk.front() == target || !Exists(sdk.front() + "/" + kPresent)) return;
  const std::vector<std::string> code_tree = LinesOf(sdk.front() + "/" + kCodePointer);
  if (code_tree.empty() || code_tree.front() != target) return;
  throw Refusal("The development kit in " + sdk.front() + " needs the code in " + target +
                ". Uninstall it first.\n");
}

/// Names the programs that run from the target. Throws a Refusal when there are some, unless they
/// are to be stopped, and then when they do not end.
void EndTasks(const std::string& target, bool stop, bool dry) {
  RunningTasks tasks(target);
  if (tasks.commands().empty()) return;
  Complain("These programs run from " + target + ":");
  for (const std::string& command : tasks.commands()) Complain("  " + command);
  if (dry) return;
  if (!stop) throw Refusal("End the programs of " + target + ", or use --stop.\n");
  NoteChange();
  tasks.Stop();
  constexpr int kSeconds = 20;
  for (int tries = 0; tries < kSeconds * 5; ++tries) {
    SafePoint();
    if (RunningTasks(target).commands().empty()) {
      return SayDone("The programs of " + target + " have ended.");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  throw Refusal("The programs of " + target + " do not end after the termination signal.\n");
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
  show("These lines would be taken out of " + SystemFile(kServices) + ":", "remove_services",
       lines.services);
  show("These lines would be taken out of " + SystemFile(kInetd) + ":", "remove_inetd",
       lines.inetd);
  show("These files would be deleted:", "delete", FilesToRemove(removal));
  show("These files were changed here, and would be kept under these names:", "rename",
       removal.renamed);
  show(purge ? "These files would be deleted too, or kept beside the system directories:"
             : "These files would be kept:",
       "keep", removal.kept);
}

void TakeOut(const SystemLines& lines, Log& log) {
  for (const auto& [name, list] :
       {std::pair(kServices, &lines.services), std::pair(kInetd, &lines.inetd)}) {
    if (list->empty()) continue;
    SafePoint();
    const std::string path = SystemFile(name);
    RemoveLines(path, *list);
    const std::string text = "The lines of the tree are taken out of " + path + ".";
    SayDone(text);
    log.Write(text + "\n");
  }
  if (!lines.inetd.empty()) TellHowInetdReads();
}

/// The code tree of a development kit; an empty text for other trees.
std::string CodeTreeOf(const std::string& target) {
  const std::vector<std::string> code_tree = LinesOf(target + "/" + kCodePointer);
  return code_tree.empty() ? "" : code_tree.front();
}

/// The code tree of a development kit no longer names it.
void ForgetSdk(const std::string& target) {
  const std::string code_tree = CodeTreeOf(target);
  if (code_tree.empty()) return;
  const std::string pointer = code_tree + "/" + kSdkPointer;
  const std::vector<std::string> sdk = LinesOf(pointer);
  if (!sdk.empty() && sdk.front() == target) Delete(pointer);
}

/// Names what is still there.
void TellKept(const Removal& removal, Log& log) {
  std::vector<std::string> kept;
  const auto tell = [&](const std::string& text, const std::string& path) {
    kept.push_back(path);
    Say(text + path);
    log.Write(text + path + "\n");
  };
  for (const std::string& path : removal.kept) {
    if (IsThere(path)) tell("It is not the product's, and is kept: ", path);
  }
  for (const std::string& path : removal.renamed)
    tell("It was changed here, and is kept as ", path);
  SetField("/kept", kept);
}

}  // namespace

void Uninstall(const Options& options) {
  const Request request = RequestOf(options);
  const std::string& target = request.target;
  const bool purge = options.Has(option::kPurge);
  const bool dry = options.Has(option::kDryRun);
  const Lock tree(target, Lock::Kind::kWriting, request);
  const Lock code(CodeTreeOf(target), Lock::Kind::kWriting, request);
  std::optional<Lock> system;
  if (request.ports.registered) {
    const std::string dir = fs::path(SystemFile(kServices)).parent_path();
    system.emplace(dir, Lock::Kind::kWritingAlone, request);
  }
  const bool repeated = Exists(RemovalRecord(target));
  if (!repeated && SystemDirsIfAny(target, "").empty() && InstalledSystem(target).empty()) {
    throw NothingToDo("Nothing is installed in " + target + ".\n");
  }
  if (!repeated && !purge) RequireFinished(target);
  RequireNoSdk(target);
  const Removal removal = PlanRemoval(target, purge);
  const SystemLines lines = LinesToTakeOut(request);
  EndTasks(target, options.Has(option::kStop), dry);
  if (dry) return ShowPlan(lines, removal, purge);

  Log log(request.log, " removal of " + target + "\n");
  SafePoint();
  NoteChange();
  WriteDurably(RemovalRecord(target), std::string(purge ? "purge" : "keep") + "\n");
  TakeOut(lines, log);
  ForgetSdk(target);
  const size_t count = FilesToRemove(removal).size();
  Remove(removal, purge);
  TellKept(removal, log);
  SayDone("The tree in " + target + " is uninstalled: " + std::to_string(count) +
          " files are deleted.");
  log.Succeeded();
}
