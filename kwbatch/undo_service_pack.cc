#include "commands.h"
#include "hot_fix_undo.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "request.h"
#include "service_pack.h"
#include "texts.h"

void UndoServicePack(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  for (Pack& pack : UncommittedPacks(request)) {
    if (pack.journal.phase == Journal::Phase::kRepairing ||
        pack.journal.phase == Journal::Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    Log log(request.log, Text("LogUndoServicePack", "undo of service pack {1} in {2}",
                              {pack.journal.pack, pack.system_dir}));
    SetAsideAgain(pack);
    TakeBack(pack, log);
    log.Succeeded();
    SayDone(
        Text("PackTakenOut", "{1} is taken out of {2}.", {pack.journal.Name(), pack.system_dir}));
  }
}
