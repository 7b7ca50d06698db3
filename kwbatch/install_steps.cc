#include "install_steps.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "formats.h"
#include "interruption.h"
#include "journal.h"
#include "json.h"
#include "medium.h"
#include "options.h"
#include "paths.h"
#include "plan.h"
#include "ports.h"
#include "refusal.h"
#include "removal.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace {

/// The packages that a step would install: all of the medium, or the frameworks and those of
/// --only, also one that the medium does not have.
std::set<std::string> WantedPackages(const Medium& medium, const Options& step) {
  std::set<std::string> wanted;
  const std::string only = IsUpdate(medium.kind) ? "" : step.Text(option::kOnly);
  const Content content = ContentOf(medium.kind);
  for (const TEVINSPkg kind : content.kinds) {
    if (!only.empty() && kind != FWK) continue;
    for (const std::string& name : PackagesOf(*medium.toc, content.type, kind)) wanted.insert(name);
  }
  std::istringstream names(only);
  for (std::string name; std::getline(names, name, ',');) wanted.insert(name);
  return wanted;
}

/// Does the target have all packages that the step would install, and is nothing of them
/// unfinished? Throws a Refusal for a medium of another level.
bool HasMedium(const Medium& medium, const std::string& target, const Options& step) {
  const std::string system_dir = SystemDir(medium, target);
  RequireSameLevel(medium, system_dir);
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr || Unfinished::Forbidding(system_dir, IsSdk(medium))) return false;
  // A pack or hot fix of a higher level may have the name of an earlier one.
  if (IsUpdate(medium.kind) && medium.toc->GetSPKLevel(1) > installed->GetSPKLevel(1)) return false;
  const TEVINSType type = ContentOf(medium.kind).type;
  const auto journal = Journal::Read(system_dir);
  for (const std::string& name : WantedPackages(medium, step)) {
    if (installed->IsInstalled(name.c_str(), type) != 0) return false;
    if (journal && journal->pack == name && journal->phase != Journal::Phase::kPending) {
      return false;
    }
  }
  // While a pack is pending, nothing else is done.
  return journal ||
         !LacksLastSteps(medium, target, PortWishesOf(step), step.Text(option::kSatellite));
}

/// Is a service pack of one of the media pending or being committed?
bool IsUncommitted(const std::vector<Medium>& media, const std::string& target) {
  return std::any_of(media.begin(), media.end(), [&target](const Medium& medium) {
    const auto journal = Journal::Read(SystemDir(medium, target));
    return journal && journal->phase != Journal::Phase::kUndoing;
  });
}

void CommitIfWanted(const Options& step, const std::vector<Medium>& media,
                    const std::string& target) {
  if (step.Has(option::kCommit) && IsUncommitted(media, target)) Commit(step);
}

/// Installs one medium. False when there is nothing to do.
bool InstallStep(const Options& step) {
  const std::string target = TargetPath(step.Word(word::kTarget));
  const std::string path = MediumPath(step.Word(word::kMedium));
  const std::vector<Medium> media = OpenMedium(path, step.Text(option::kOs));
  const MediumKind kind = media.front().kind;
  const bool is_pack = IsUpdate(kind) && kind != MediumKind::kHotFix;
  const bool has_all = std::all_of(media.begin(), media.end(), [&](const Medium& medium) {
    return HasMedium(medium, target, step);
  });
  if (has_all) {
    Say(Text("MediumInstalled", "The medium {1} is installed already.", {path}));
    const bool commits = is_pack && step.Has(option::kCommit) && IsUncommitted(media, target);
    if (commits) CommitIfWanted(step, media, target);
    return commits;
  }
  try {
    if (!IsUpdate(kind)) {
      Install(step);
    } else if (is_pack) {
      ServicePack(step);
    } else {
      HotFix(step);
    }
  } catch (const NothingToDo& reason) {
    Say(reason.what());
    return false;
  }
  if (is_pack) CommitIfWanted(step, media, target);
  return true;
}

}  // namespace

void InstallSteps(const Options& options) {
  std::vector<std::string> words = {options.Word(word::kMedium), options.Word(word::kTarget)};
  words.insert(words.end(), options.Files().begin(), options.Files().end());
  const std::string target = TargetPath(words.back());
  words.pop_back();
  SetField("/target", target);
  SetField("/medium", words.back());
  RequireNoRemoval(target);
  bool changed = false;
  for (const std::string& medium : words) {
    SafePoint();
    Say(Text("Step", "Step: {1}", {medium}));
    changed = InstallStep(options.ForMedium(medium, target)) || changed;
  }
  if (!changed) {
    throw NothingToDo(
        Text("AllMediaInstalled", "All media are installed in {1} already.\n", {target}));
  }
}
