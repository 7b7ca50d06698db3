#include "service_pack.h"

#include <string>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "hot_fix_undo.h"
#include "integrity.h"
#include "interruption.h"
#include "json.h"
#include "languages.h"
#include "lock.h"
#include "pack_files.h"
#include "refusal.h"
#include "request.h"
#include "setup.h"
#include "texts.h"
#include "transfer.h"
#include "tree.h"

namespace {

void TellKept(const std::vector<std::string>& paths, Log& log) {
  for (const std::string& path : paths) {
    const std::string text =
        Text("SiteFileKept", "A file that was changed here is kept as {1}.\n", {path});
    Say(text);
    log.Write(text);
  }
}

}  // namespace

void ReplaceFiles(const Medium& medium, const std::string& target, Pack& pack, Log& log) {
  NoteChange();
  if (pack.journal.phase != Journal::Phase::kRepairing) Save(pack);
  PruneTable(pack);
  SafePoint();
  const int languages = InstalledLanguages(medium, target);
  {
    const DirectoryModes kept(pack);
    Transfer(medium, pack.journal.pack, target, languages, log);
  }
  SafePoint();
}

void BeginPack(Pack& pack, Log& log) {
  pack.Enter(pack.journal.phase);
  if (pack.journal.phase == Journal::Phase::kRepairing) {
    TellKept(KeepSiteFiles(pack, ""), log);
    // What has their names from now on is not the site's.
    pack.journal.site_files.clear();
    pack.Enter(pack.journal.phase);
  }
  for (const std::string& file : pack.journal.site_files) {
    const std::string text =
        Text("SiteFileChanged", "Changed here: {1}; a commit keeps it as FILE{2}.\n",
             {pack.In(file), kSiteSuffix});
    Say(text);
    log.Write(text);
  }
}

bool InstallPack(const Medium& medium, const std::string& target, Pack& pack, Log& log) {
  const bool repair = pack.journal.phase == Journal::Phase::kRepairing;
  BeginPack(pack, log);
  MarkInterrupted(pack);
  if (!repair) RecordPending(pack);
  for (const std::string& line : pack.journal.table_lines) {
    if (TableLine(line).IsHotFix()) {
      Say(Text("HotFixReplaced", "To be installed again afterwards: {1}", {line}));
    }
  }
  ReplaceFiles(medium, target, pack, log);
  RequireWritten(pack.system_dir, IsSdk(medium), {pack.journal.pack}, log);
  // While its programs fail, the pack is not installed: the same command installs it again.
  if (!RunPostInstall(pack.system_dir, pack.journal.pack, log)) return false;
  Delete(pack.In(kPackPrograms));
  DeleteLeftovers(pack);
  Delete(pack.In(kInterruptedPack));
  SyncFileSystem(pack.system_dir);
  if (repair) {
    Delete(JournalPath(pack.system_dir));
    SyncFileSystem(pack.system_dir);
  } else {
    pack.Enter(Journal::Phase::kPending);
  }
  SayDone(repair ? Text("PackInstalled", "Service pack {1} is installed in {2}.",
                        {pack.journal.pack, pack.system_dir})
                 : Text("PackInstalledPending",
                        "Service pack {1} is installed in {2}, and waits for a commit.",
                        {pack.journal.pack, pack.system_dir}));
  return true;
}

void CommitPack(Pack& pack, Log& log) {
  RequireRealParents(pack);
  SyncFileSystem(pack.system_dir);
  pack.Enter(Journal::Phase::kCommitting);
  TellKept(KeepSiteFiles(pack, kSavedSuffix), log);
  DeleteSaved(pack);
  DeleteLeftovers(pack);
  DeleteRecords(pack);
  SyncFileSystem(pack.system_dir);
}

void TakeBack(Pack& pack, Log& log) {
  RequireRealParents(pack);
  if (pack.journal.phase == Journal::Phase::kPending) TellKept(KeepLaterChanges(pack), log);
  pack.journal.BeginUndo(pack.system_dir);
  NoteChange();
  CutFragment(pack.system_dir, pack.journal.table_size);
  SafePoint();
  Restore(pack);
  SafePoint();
  PruneTable(pack);
  DeleteLeftovers(pack);
  ForgetUndo(pack);
  SyncFileSystem(pack.system_dir);
  DeleteRecords(pack);
  SyncFileSystem(pack.system_dir);
}

void ServicePack(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const Medium medium = InstallableUpdate(OpenMedium(request.medium, request.os), request, false);
  Pack pack = PackToInstall(medium, request.target);
  RequireSpace(medium, request.target, pack);
  Log log(request.log,
          Text("LogServicePack", "service pack {1} in {2}", {pack.journal.pack, pack.system_dir}));
  if (!InstallPack(medium, request.target, pack, log)) {
    throw Refusal(Text("PostInstallFailed",
                       "A post-install program has failed: see the log {1}. The same command runs "
                       "it again; undo-service-pack takes the pack out.\n",
                       {log.FileName()}),
                  kProgramFailed);
  }
  log.Succeeded();
}
