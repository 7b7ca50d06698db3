#include "commands.h"
#include "hot_fix_undo.h"
#include "integrity.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "refusal.h"
#include "request.h"
#include "service_pack.h"
#include "texts.h"

namespace {

/// A hot fix with damaged files is taken back: nothing else could follow it.
void RequireWhole(Pack& pack, Log& log) {
  try {
    RequireWritten(pack.system_dir, false, {pack.journal.pack}, log);
  } catch (const Refusal&) {
    TakeBack(pack, log);
    throw;
  }
}

}  // namespace

void HotFix(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const Medium medium = InstallableUpdate(OpenMedium(request.medium, request.os), request, true);
  Pack pack = PackToInstall(medium, request.target);
  RequireSpace(medium, request.target, pack);
  Log log(request.log,
          Text("LogHotFix", "hot fix {1} in {2}", {pack.journal.pack, pack.system_dir}));
  if (pack.journal.phase != Journal::Phase::kCommitting) {
    pack.Enter(pack.journal.phase);
    ReplaceFiles(medium, request.target, pack, log);
    RequireWhole(pack, log);
  }
  KeepForUndo(pack);
  CommitPack(pack, log);
  log.Succeeded();
  SayDone(
      Text("HotFixInstalled", "{1} is installed in {2}.", {pack.journal.Name(), pack.system_dir}));
}
