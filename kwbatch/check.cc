#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "console.h"
#include "deep_check.h"
#include "files.h"
#include "genuine.h"
#include "journal.h"
#include "lock.h"
#include "medium.h"
#include "options.h"
#include "pack.h"
#include "plan.h"
#include "ports.h"
#include "refusal.h"
#include "request.h"
#include "running_tasks.h"
#include "settings.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace {

/// Says that an interrupted run of the medium may be taken up again.
void TellInterrupted(const Medium& medium, const std::string& target) {
  Say(Text("MayBeTakenUp",
           "The installation of {1} in {2} was interrupted, and may be taken up again.",
           {medium.dir, SystemDir(medium, target)}));
}

void TellInstallable(const Medium& medium, const std::string& target) {
  Say(Text("MayBeInstalled", "{1} may be installed in {2}.",
           {medium.dir, SystemDir(medium, target)}));
}

/// For the media of a service pack or a hot fix.
void CheckUpdate(const Request& request, std::vector<Medium> media) {
  const std::string& target = request.target;
  const bool hot_fix = media.front().kind == MediumKind::kHotFix;
  const std::string system_dir = SystemDir(media.front(), target);
  if (media.size() == 1 && Journal::Read(system_dir) && HasFragment(system_dir)) {
    return TellInterrupted(media.front(), target);
  }
  const Medium medium = InstallableUpdate(std::move(media), request, hot_fix);
  RequireSpace(medium, target, PackToInstall(medium, target));
  TellInstallable(medium, target);
}

/// For all other media.
void CheckInstallation(const Options& options, const Request& request, std::vector<Medium> media) {
  for (const Medium& medium : media) {
    if (Unfinished::Read(SystemDir(medium, request.target)) &&
        HasFragment(SystemDir(medium, request.target))) {
      return TellInterrupted(medium, request.target);
    }
  }
  const Plan plan = MakePlan(request, std::move(media));
  // The library checks a setting where it exports it. Nothing is started here that would read it.
  ExportSettings(options);
  for (const Medium& medium : plan.media) TellInstallable(medium, request.target);
  TellRegistration(plan.registration);
}

/// Reads the archives of all media that would be used.
void CheckArchives(const Request& request) {
  for (const std::string& medium : {request.medium, request.with_pack, request.satellite}) {
    if (!medium.empty()) RequireNoFaults(medium);
  }
}

/// Warns of programs that run from the tree.
void WarnOfTasks(const std::string& target) {
  if (!Exists(target)) return;
  try {
    const size_t count = RunningTasks(target).commands().size();
    if (count == 0) return;
    Complain(Text("ProgramsRun",
                  "Warning: programs run from {1}: {2}. They are listed by: kwbatch tasks {1}",
                  {target, count}));
  } catch (const Refusal& refusal) {
    Complain(Text("Warning", "Warning: {1}", {refusal.what()}));
  }
}

}  // namespace

void Check(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kReading, request);
  if (!request.verified) TellUnverified(request.medium);
  if (options.Has(option::kDeep)) CheckArchives(request);
  std::vector<Medium> media = OpenMedium(request.medium, request.os);
  if (IsUpdate(media.front().kind)) {
    CheckUpdate(request, std::move(media));
  } else {
    CheckInstallation(options, request, std::move(media));
  }
  WarnOfTasks(request.target);
}
