#include "plan.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

#include "archive.h"
#include "formats.h"
#include "installable.h"
#include "integrity.h"
#include "journal.h"
#include "languages.h"
#include "nearest.h"
#include "pack.h"
#include "refusal.h"
#include "satellite.h"
#include "space.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace {

/// The packages of the medium that the target does not have, in the order of installation.
void AddMissing(const Medium& medium, const std::string& target, const std::string& code_tree,
                std::vector<Component>& components) {
  const auto installed = OpenInstalled(SystemDir(medium, target));
  const auto code_table = IsSdk(medium) ? OpenInstalled(code_tree + "/" + medium.os) : nullptr;
  const Content content = ContentOf(medium.kind);
  std::set<std::string> seen;
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& name : PackagesOf(*medium.toc, content.type, kind)) {
      if (installed != nullptr && installed->IsInstalled(name.c_str(), content.type) == 0) continue;
      if (IsSdk(medium) && !HasCode(code_table.get(), name)) continue;
      if (!seen.insert(name).second) continue;
      components.push_back({&medium, name, RequireArchive(medium, name)});
    }
  }
}

/// Leaves out the packages that are not asked for. The frameworks stay, since all others need them,
/// and so does what an interrupted run was asked for. Throws a UsageError for an unknown name, and
/// a NothingToDo when nothing is left.
void KeepOnly(Plan& plan) {
  if (plan.request.only.empty()) return;
  std::set<std::string> kept;
  std::vector<std::string> known;
  bool finished = true;
  for (const Medium& medium : plan.media) {
    const Content content = ContentOf(medium.kind);
    for (const TEVINSPkg kind : content.kinds) {
      for (const std::string& name : PackagesOf(*medium.toc, content.type, kind)) {
        known.push_back(name);
        if (kind == FWK) kept.insert(name);
      }
    }
    const auto unfinished = Unfinished::Read(SystemDir(medium, plan.request.target));
    if (!unfinished) continue;
    finished = false;
    kept.insert(unfinished->packages.begin(), unfinished->packages.end());
  }
  std::istringstream names(plan.request.only);
  for (std::string name; std::getline(names, name, ',');) {
    if (std::count(known.begin(), known.end(), name) == 0) {
      throw UsageError(DidYouMean(Text("NoPackage", "the medium has no package \"{1}\"", {name}),
                                  "", name, known));
    }
    kept.insert(name);
  }
  std::vector<Component>& all = plan.components;
  const auto is_left_out = [&kept](const Component& c) { return kept.count(c.name) == 0; };
  all.erase(std::remove_if(all.begin(), all.end(), is_left_out), all.end());
  if (all.empty() && finished) {
    throw NothingToDo(Text("PackagesInstalled", "The packages {1} are installed already.\n",
                           {plan.request.only}));
  }
}

/// Refuses a medium that does not hold all that an unfinished installation was asked for: nobody
/// would bring that one to its end.
void RequireSameMedium(const Unfinished& unfinished, const Medium& medium,
                       const std::string& system_dir) {
  std::set<std::string> held;
  const Content content = ContentOf(medium.kind);
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& name : PackagesOf(*medium.toc, content.type, kind)) held.insert(name);
  }
  for (const std::string& name : unfinished.packages) {
    if (held.count(name) != 0) continue;
    throw unfinished.NotFinished(system_dir);
  }
}

/// The media of which something can be installed. Throws a Refusal when there is none.
std::vector<Medium> Installable(std::vector<Medium> media, const Request& request) {
  std::vector<Medium> installable;
  std::string reason;
  for (Medium& medium : media) {
    const std::string system_dir = SystemDir(medium, request.target);
    const auto unfinished = Unfinished::Read(system_dir);
    const auto journal = Journal::Read(system_dir);
    // A pack that goes on again above what is added is part of the installation.
    const bool repairing = unfinished && journal && journal->phase == Journal::Phase::kRepairing;
    if (journal && !repairing) throw journal->NotFinished(system_dir);
    if (unfinished) RequireSameMedium(*unfinished, medium, system_dir);
    try {
      RequireInstallable(medium, request.target, request.code_tree);
      installable.push_back(std::move(medium));
    } catch (const NothingToDo& refusal) {
      reason = refusal.what();
      // Everything is there, but the last steps are missing.
      if (unfinished || LacksLastSteps(medium, request.target, request.ports, request.satellite)) {
        installable.push_back(std::move(medium));
      }
    }
  }
  if (installable.empty()) throw NothingToDo(reason);
  return installable;
}

/// The service pack that must go on again above what is added to a system directory, if there is
/// one: the older files replace those of the pack. Throws a Refusal without its medium.
void AddPackAbove(const Medium& medium, Plan& plan) {
  const std::string system_dir = SystemDir(medium, plan.request.target);
  const auto installed = OpenInstalled(system_dir);
  const int level = installed == nullptr ? 0 : installed->GetSPKLevel(1);
  const bool adds = std::any_of(plan.components.begin(), plan.components.end(),
                                [&medium](const Component& c) { return c.medium == &medium; });
  const bool repairing = Journal::Read(system_dir).has_value();
  const bool in_place = !adds && !repairing && PacksAreInPlace(system_dir, IsSdk(medium));
  if ((level <= 0 && !repairing) || medium.kind == MediumKind::kSamples || in_place) return;
  const std::string& with_pack = plan.request.with_pack;
  if (with_pack.empty()) {
    throw Refusal(Text("PackNeeded",
                       "A service pack is installed in {1}, whose files would be replaced by older "
                       "ones: give its medium with --with-pack.\n",
                       {system_dir}));
  }
  Medium pack = std::move(OpenMedium(with_pack, medium.os).front());
  const bool is_pack = IsUpdate(pack.kind) && pack.kind != MediumKind::kHotFix;
  if (!is_pack || IsSdk(pack) != IsSdk(medium) ||
      (!repairing && pack.toc->GetSPKLevel(1) != level)) {
    throw Refusal(Text("OtherPack", "The medium {1} is not that of the service pack in {2}.\n",
                       {with_pack, system_dir}));
  }
  RequireRealDirectories(MembersOf(ArchiveOf(pack.dir, UpdateName(pack))), plan.request.target);
  plan.packs.push_back(std::move(pack));
}

}  // namespace

std::vector<std::string> AllSystems(const std::vector<Medium>& media, const std::string& target) {
  std::vector<std::string> systems = SystemsOf(target);
  for (const Medium& medium : media) {
    if (std::find(systems.begin(), systems.end(), medium.os) == systems.end()) {
      systems.push_back(medium.os);
    }
  }
  if (systems.size() > kMostSystems) {
    throw Refusal(Text("TooManySystems",
                       "The directory {1} would hold more than four operating systems.\n",
                       {target}));
  }
  return systems;
}

bool LacksLastSteps(const Medium& medium, const std::string& target, const PortWishes& ports,
                    const std::string& satellite) {
  if (medium.kind != MediumKind::kProducts) return false;
  return LacksRegistration(ports, SystemDir(medium, target)) ||
         (!satellite.empty() && !HasSatellite(target));
}

Plan MakePlan(const Request& request, std::vector<Medium> media) {
  Plan plan;
  plan.request = request;
  plan.languages = ChosenLanguages(request);
  const std::string& target = request.target;
  plan.request.code_tree = CodeTreeFor(media.front(), target, request.code_tree);
  plan.media = Installable(std::move(media), plan.request);
  AllSystems(plan.media, target);
  for (const Medium& medium : plan.media) {
    AddMissing(medium, target, plan.request.code_tree, plan.components);
  }
  KeepOnly(plan);
  for (const Medium& medium : plan.media) AddPackAbove(medium, plan);
  Demand demand(target);
  for (const Component& component : plan.components) {
    const std::vector<Member>& members = MembersOf(component.archive);
    RequireRealDirectories(members, target);
    demand.Add(members);
  }
  for (const Medium& pack : plan.packs) {
    demand.Add(MembersOf(ArchiveOf(pack.dir, UpdateName(pack))));
  }
  if (!request.satellite.empty()) {
    RequireSatellite(request.satellite, target, request.ports.registered);
    const std::vector<Member> members = SatelliteMembers(request.satellite);
    RequireRealDirectories(members, target);
    demand.Add(members);
  }
  demand.Require();
  if (plan.media.front().kind == MediumKind::kProducts) {
    plan.registration = PlanRegistration(request.ports, SystemDir(plan.media.front(), target));
  }
  return plan;
}
