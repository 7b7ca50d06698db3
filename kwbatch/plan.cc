#include "plan.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <set>
#include <utility>

#include "archive.h"
#include "formats.h"
#include "installable.h"
#include "journal.h"
#include "languages.h"
#include "paths.h"
#include "refusal.h"
#include "satellite.h"
#include "space.h"
#include "tree.h"
#include "unfinished.h"

namespace {

/// Can the SDK package be installed: is the code there that it extends?
bool HasCode(const TEVINSInstToc* code_table, const std::string& name) {
  const std::string base = name.substr(0, name.find(kSdkSuffix));
  return code_table != nullptr && code_table->IsInstalled(base.c_str(), code) == 0;
}

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
      RequirePlainName("package name", name);
      const std::string archive = ArchiveOf(medium.dir, name);
      if (archive.empty()) {
        throw Refusal("The archive " + medium.dir + "/" + name + " is missing on the medium.\n");
      }
      components.push_back({&medium, name, archive});
    }
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
    throw Refusal("The installation of " + unfinished.medium + " in " + system_dir +
                  " is not finished. Repeat it first.\n");
  }
}

/// The media of which something can be installed. Throws a Refusal when there is none.
std::vector<Medium> Installable(std::vector<Medium> media, const Request& request) {
  std::vector<Medium> installable;
  std::string reason;
  for (Medium& medium : media) {
    const std::string system_dir = SystemDir(medium, request.target);
    if (const auto journal = Journal::Read(system_dir)) throw journal->NotFinished(system_dir);
    const auto unfinished = Unfinished::Read(system_dir);
    if (unfinished) RequireSameMedium(*unfinished, medium, system_dir);
    try {
      RequireInstallable(medium, request.target, request.code_tree);
      installable.push_back(std::move(medium));
    } catch (const NothingToInstall& refusal) {
      reason = refusal.what();
      // Everything is there, but the last steps are missing.
      if (unfinished) installable.push_back(std::move(medium));
    }
  }
  if (installable.empty()) throw Refusal(reason);
  return installable;
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
    throw Refusal("The directory " + target + " would hold more than four operating systems.\n");
  }
  return systems;
}

Plan MakePlan(const Request& request, std::vector<Medium> media) {
  Plan plan;
  plan.request = request;
  plan.languages = ChosenLanguages(request);
  const std::string& target = request.target;
  plan.request.code_tree = CodeTreeFor(media.front(), target, request.code_tree);
  plan.media = Installable(std::move(media), plan.request);
  AllSystems(plan.media, target);
  std::vector<std::string> archives;
  for (const Medium& medium : plan.media) {
    AddMissing(medium, target, plan.request.code_tree, plan.components);
  }
  for (const Component& component : plan.components) {
    RequireRealDirectories(MembersOf(component.archive), target);
    archives.push_back(component.archive);
  }
  RequireSpace(archives, target);
  if (plan.media.front().kind == MediumKind::kProducts) plan.ports = ChoosePorts(request.ports);
  if (!request.satellite.empty()) RequireSatellite(request.satellite, target);
  return plan;
}
