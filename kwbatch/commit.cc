#include "commands.h"
#include "console.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "request.h"
#include "service_pack.h"

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
    CommitPack(pack, log);
    log.Succeeded();
    SayDone(pack.journal.Name() + " in " + pack.system_dir + " is committed.");
  }
}
