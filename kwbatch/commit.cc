#include "commands.h"
#include "console.h"
#include "files.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "pack_files.h"
#include "request.h"

void Commit(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  for (Pack& pack : UncommittedPacks(request)) {
    if (pack.journal.phase != Journal::Phase::kPending &&
        pack.journal.phase != Journal::Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    Log log(request.log,
            " commit of service pack " + pack.journal.pack + " in " + pack.system_dir + "\n");
    SyncFileSystem(pack.system_dir);
    pack.Enter(Journal::Phase::kCommitting);
    for (const std::string& path : KeepSiteFiles(pack)) {
      const std::string text = "A file that was changed here is kept as " + path + ".\n";
      Say(text);
      log.Write(text);
    }
    DeleteSaved(pack);
    DeleteRecords(pack);
    SyncFileSystem(pack.system_dir);
    log.Succeeded();
    Say("Service pack " + pack.journal.pack + " in " + pack.system_dir + " is committed.");
  }
}
