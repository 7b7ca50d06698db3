#include "commands.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "pack.h"
#include "request.h"
#include "service_pack.h"
#include "texts.h"

void Commit(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  for (Pack& pack : UncommittedPacks(request)) {
    if (pack.journal.phase != Journal::Phase::kPending &&
        pack.journal.phase != Journal::Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    Log log(request.log, Text("LogCommit", "commit of service pack {1} in {2}",
                              {pack.journal.pack, pack.system_dir}));
    CommitPack(pack, log);
    log.Succeeded();
    SayDone(
        Text("PackCommitted", "{1} in {2} is committed.", {pack.journal.Name(), pack.system_dir}));
  }
}
