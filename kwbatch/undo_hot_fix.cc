#include <kwinstutil/kwinstutil.h>

#include <filesystem>
#include <string>

#include "commands.h"
#include "files.h"
#include "formats.h"
#include "hot_fix_undo.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "refusal.h"
#include "request.h"
#include "service_pack.h"
#include "texts.h"
#include "tree.h"

namespace {

/// The hot fix that was installed last in a system directory, if nothing has updated it since; an
/// empty text otherwise.
std::string LastHotFix(const std::string& system_dir) {
  std::string name;
  for (const std::string& text : LinesOf(system_dir + "/" + kPresent)) {
    const TableLine line(text);
    if (line.IsUpdate()) name = line.IsHotFix() ? line.name : "";
  }
  return name;
}

/// Undoes the last hot fix of a system directory. False when there is none.
bool UndoIn(const std::string& system_dir, const Request& request) {
  Pack pack{system_dir, std::filesystem::path(system_dir).filename(), code, {}};
  pack.journal.phase = Journal::Phase::kPending;
  pack.journal.pack = LastHotFix(system_dir);
  const auto journal = Journal::Read(system_dir);
  if (journal && !journal->IsOfHotFix()) throw journal->NotFinished(system_dir);
  // One that was interrupted, or the undo of one.
  if (journal) pack.journal = *journal;
  const std::string name = pack.journal.pack;
  if (name.empty()) return false;
  if (!journal && !CanBeUndone(system_dir, name)) {
    throw Refusal(Text(
        "HotFixNotKept",
        "The files that hot fix {1} has replaced in {2} were not kept, so it cannot be undone.\n",
        {name, system_dir}));
  }
  Log log(request.log, Text("LogUndoHotFix", "undo of hot fix {1} in {2}", {name, system_dir}));
  SetAsideAgain(pack);
  TakeBack(pack, log);
  log.Succeeded();
  SayDone(Text("HotFixTakenOut", "Hot fix {1} is taken out of {2}.", {name, system_dir}));
  return true;
}

}  // namespace

void UndoHotFix(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  bool undone = false;
  for (const std::string& dir : SystemDirs(request.target, request.os)) {
    undone = UndoIn(dir, request) || undone;
  }
  if (undone) return;
  throw NothingToDo(
      Text("NoHotFixToUndo",
           "No hot fix in {1} can be undone: none is installed above the latest service pack.\n",
           {request.target}));
}
