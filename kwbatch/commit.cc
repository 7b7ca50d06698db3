#include "commands.h"
#include "console.h"
#include "files.h"
#include "pack.h"
#include "pack_files.h"
#include "request.h"

void Commit(const Options& options) {
  for (Pack& pack : UncommittedPacks(RequestOf(options))) {
    if (pack.journal.phase != Journal::Phase::kPending &&
        pack.journal.phase != Journal::Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    SyncFileSystem(pack.system_dir);
    pack.Enter(Journal::Phase::kCommitting);
    DeleteSaved(pack);
    DeleteRecords(pack);
    SyncFileSystem(pack.system_dir);
    Say("Service pack " + pack.journal.pack + " in " + pack.system_dir + " is committed.");
  }
}
