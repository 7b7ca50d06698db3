#include "service_pack.h"

#include <kwinstutil/kwinstutil.h>

#include <string>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "integrity.h"
#include "interruption.h"
#include "languages.h"
#include "lock.h"
#include "pack_files.h"
#include "request.h"
#include "transfer.h"

namespace {

using Phase = Journal::Phase;

/// Runs the pack's post-install programs, whose output goes to the log. False when one has failed.
bool RunPostInstall(const Pack& pack, Log& log) {
  std::string suffix = pack.journal.pack;
  std::string system_dir = pack.system_dir;
  const bool done = TEVInsSPK(suffix.data(), system_dir.data(), log.FileName()) == 0;
  SafePointAfterProgram();
  // The list has served its purpose.
  Delete(pack.In(kPackPrograms));
  return done;
}

}  // namespace

bool InstallPack(const Medium& medium, const std::string& target, Pack& pack, Log& log) {
  const bool repair = pack.journal.phase == Phase::kRepairing;
  pack.Enter(pack.journal.phase);
  MarkInterrupted(pack);
  if (!repair) {
    RecordPending(pack);
    Save(medium, pack);
  }
  for (const std::string& line : pack.journal.table_lines) {
    if (TableLine(line).IsHotFix()) Say("To be installed again afterwards: " + line);
  }
  PruneTable(pack);
  SafePoint();
  const int languages = InstalledLanguages(medium, target);
  {
    const DirectoryModes kept(pack);
    Transfer(medium, pack.journal.pack, target, languages, log);
  }
  SafePoint();
  RequireWritten(pack.system_dir, IsSdk(medium), {pack.journal.pack}, log);
  const bool set_up = RunPostInstall(pack, log);
  DeleteLeftovers(pack);
  Delete(pack.In(kInterruptedPack));
  SyncFileSystem(pack.system_dir);
  if (repair) {
    Delete(JournalPath(pack.system_dir));
    SyncFileSystem(pack.system_dir);
  } else {
    pack.Enter(Phase::kPending);
  }
  Say("Service pack " + pack.journal.pack + " is installed in " + pack.system_dir +
      (repair ? "." : ", and waits for a commit."));
  return set_up;
}

void ServicePack(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const Medium medium = InstallableUpdate(OpenMedium(request.medium, request.os), request, false);
  Pack pack = PackToInstall(medium, request.target);
  Log log(request.log, " service pack " + pack.journal.pack + " in " + pack.system_dir + "\n");
  const bool set_up = InstallPack(medium, request.target, pack, log);
  log.Succeeded();
  if (!set_up) throw Refusal("A post-install program has failed: see the log.\n", kProgramFailed);
}
