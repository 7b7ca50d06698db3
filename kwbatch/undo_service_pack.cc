#include "commands.h"
#include "console.h"
#include "files.h"
#include "interruption.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "pack_files.h"
#include "request.h"
#include "tree.h"

namespace {

void Undo(Pack& pack) {
  pack.journal.BeginUndo(pack.system_dir);
  CutFragment(pack.system_dir, pack.journal.table_size);
  SafePoint();
  Restore(pack);
  SafePoint();
  PruneTable(pack);
  DeleteLeftovers(pack);
  SyncFileSystem(pack.system_dir);
  DeleteRecords(pack);
  SyncFileSystem(pack.system_dir);
}

}  // namespace

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
    Undo(pack);
    log.Succeeded();
    Say("Service pack " + pack.journal.pack + " is taken out of " + pack.system_dir + ".");
  }
}
