#include "commands.h"
#include "console.h"
#include "hot_fix_undo.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "request.h"
#include "service_pack.h"

void UndoServicePack(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  for (Pack& pack : UncommittedPacks(request)) {
    if (pack.journal.phase == Journal::Phase::kRepairing ||
        pack.journal.phase == Journal::Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    Log log(request.log,
            " undo of service pack " + pack.journal.pack + " in " + pack.system_dir + "\n");
    SetAsideAgain(pack);
    TakeBack(pack);
    log.Succeeded();
    SayDone(pack.journal.Name() + " is taken out of " + pack.system_dir + ".");
  }
}
