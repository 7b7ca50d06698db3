#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "install_steps.h"
#include "integrity.h"
#include "interruption.h"
#include "json.h"
#include "languages.h"
#include "lock.h"
#include "log.h"
#include "medium.h"
#include "options.h"
#include "pack.h"
#include "plan.h"
#include "ports.h"
#include "refusal.h"
#include "registration.h"
#include "request.h"
#include "satellite.h"
#include "service_pack.h"
#include "settings.h"
#include "setup.h"
#include "system_files.h"
#include "texts.h"
#include "transfer.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

using LanguagesBySystem = std::map<const Medium*, int>;

bool IsUnfinished(const std::vector<Medium>& media, const std::string& target) {
  return std::any_of(media.begin(), media.end(), [&target](const Medium& medium) {
    return Unfinished::Read(SystemDir(medium, target)).has_value();
  });
}

/// Brings what an interrupted run has left into a state from which this one can go on.
void TakeUp(const std::vector<Medium>& media, const std::string& target) {
  for (const Medium& medium : media) {
    if (!Unfinished::Read(SystemDir(medium, target))) continue;
    CutFragment(SystemDir(medium, target), 0);
  }
}

/// Writes down what is asked for in a system directory, beside what was before.
void Begin(const Plan& plan, const Medium& medium, int languages) {
  const std::string system_dir = SystemDir(medium, plan.request.target);
  const auto before = Unfinished::Read(system_dir);
  Unfinished record{medium.dir, languages, before ? before->packages : std::vector<std::string>()};
  std::vector<std::string>& packages = record.packages;
  for (const Component& component : plan.components) {
    if (component.medium != &medium) continue;
    if (std::count(packages.begin(), packages.end(), component.name) > 0) continue;
    packages.push_back(component.name);
  }
  record.Write(system_dir);
}

/// Makes the system directories with a table each, at first an empty one: with that, an
/// installation that fails can be taken up again.
void MakeTree(const Plan& plan, const LanguagesBySystem& languages) {
  const Request& request = plan.request;
  for (const Medium& medium : plan.media) {
    const std::string system_dir = SystemDir(medium, request.target);
    MakeDirectories(system_dir + "/" + kControl);
    if (!AppendToFile(system_dir + "/" + kPresent, "")) {
      throw CannotWrite(system_dir + "/" + kPresent);
    }
    Begin(plan, medium, languages.at(&medium));
  }
  if (IsSdk(plan.media.front())) {
    WriteLine(request.target + "/" + kCodePointer, request.code_tree);
    WriteLine(request.code_tree + "/" + kSdkPointer, request.target);
    return;
  }
  std::string list;
  for (const std::string& system : AllSystems(plan.media, request.target)) {
    list += (list.empty() ? "" : "\n") + system;
  }
  WriteDurably(request.target + "/" + kSystemList, list + "\n");
}

void TransferAll(const Plan& plan, const LanguagesBySystem& languages, Log& log) {
  Progress progress(plan.components.size());
  for (const Component& component : plan.components) {
    SafePoint();
    const Medium& medium = *component.medium;
    progress.Begin(component.name + " (" + medium.os + ")");
    Transfer(medium, component.name, plan.request.target, languages.at(&medium), log);
    NoteDone(Text("ComponentInstalled", "{1} ({2}) is installed.", {component.name, medium.os}));
  }
}

/// Shows what the target holds now.
void Summarize(const std::vector<Medium>& media, const std::string& target) {
  for (const Medium& medium : media) {
    const std::string system_dir = SystemDir(medium, target);
    Say(Text("InstalledIn", "Installed in {1}:", {system_dir}));
    const auto installed = OpenInstalled(system_dir);
    if (installed == nullptr) continue;
    const Content content = ContentOf(medium.kind);
    for (const TEVINSPkg kind : content.kinds) {
      std::string line;
      for (const std::string& name : PackagesOf(*installed, content.type, kind)) line += " " + name;
      if (!line.empty()) Say(std::string("  ") + kTEVINSNames[kTEVINSFirstKind + kind] + line);
    }
  }
}

/// The steps behind the transfer. A second run does those that a first one did not come to. False
/// when a setup program has failed.
bool Finish(const Plan& plan, Log& log) {
  const std::string& target = plan.request.target;
  const bool products = plan.media.front().kind == MediumKind::kProducts;
  if (plan.registration.ports.run != 0) {
    RecordIntent(SystemDir(plan.media.front(), target), ByService(plan.registration.ports));
  }
  Register(plan.registration, log);
  SafePoint();
  const std::string& satellite = plan.request.satellite;
  if (!satellite.empty()) InstallSatellite(satellite, target, plan.request.ports.registered);
  if (products && plan.request.ports.registered) {
    RecordRegistration(SystemDir(plan.media.front(), target), plan.registration.ports.run != 0);
  }
  // What an earlier try may have left.
  for (const char* name : {kTarErrors, kTransferErrors}) {
    TEVDeleteFile((target + "/" + name).c_str());
  }
  bool set_up = true;
  for (const Medium& medium : plan.media) {
    SafePoint();
    if (products) set_up = RunSetup(SystemDir(medium, target), log) && set_up;
  }
  return set_up;
}

/// Does what the plan says. False when a program of the product has failed.
bool CarryOut(const Plan& plan, Lock& tree, Log& log) {
  const std::string& target = plan.request.target;
  LanguagesBySystem languages;
  for (const Medium& medium : plan.media) {
    languages[&medium] = LanguagesToInstall(medium, target, plan.languages);
  }
  SafePoint();
  NoteChange();
  tree.MakeDirectory();
  MakeTree(plan, languages);
  for (const auto& [medium, mask] : languages) RecordLanguages(*medium, target, mask);
  // What the site has changed is kept before older files replace those of a pack.
  std::vector<Pack> packs;
  for (const Medium& medium : plan.packs) {
    packs.push_back(PackToInstall(medium, target));
    BeginPack(packs.back(), log);
  }
  TransferAll(plan, languages, log);
  SafePoint();
  for (const auto& [medium, mask] : languages) {
    RemoveOtherLanguages(SystemDir(*medium, target), mask);
  }
  bool set_up = true;
  for (size_t i = 0; i < packs.size(); ++i) {
    set_up = InstallPack(plan.packs[i], target, packs[i], log) && set_up;
  }
  for (const Medium& medium : plan.media) {
    SafePoint();
    const std::string system_dir = SystemDir(medium, target);
    RequireWritten(system_dir, IsSdk(medium), Unfinished::Read(system_dir)->packages, log);
  }
  SafePoint();
  return Finish(plan, log) && set_up;
}

}  // namespace

void Install(const Options& options) {
  if (!options.Files().empty()) return InstallSteps(options);
  const Request request = RequestOf(options);
  std::vector<Medium> media = OpenMedium(request.medium, request.os);
  if (IsUpdate(media.front().kind)) {
    throw Refusal(Text("MediumIsUpdate", "The medium {1} is a service pack or a hot fix.\n",
                       {media.front().dir}));
  }
  Lock tree(request.target, Lock::Kind::kWriting, request);
  // A development kit is written into the tree of its code too; other media have none.
  const std::string code_tree = CodeTreeFor(media.front(), request.target, request.code_tree);
  const Lock code(code_tree, Lock::Kind::kWriting, request);
  std::optional<Lock> system;
  if (request.ports.registered || IsUnfinished(media, request.target)) {
    const std::string dir = fs::path(SystemFile(kServices)).parent_path();
    system.emplace(dir, Lock::Kind::kWritingAlone, request);
    RestoreSystemFiles();
  }
  TakeUp(media, request.target);
  const Plan plan = MakePlan(request, std::move(media));
  ExportSettings(options);
  Say(Text("InstallingMedium", "Medium {1}", {request.medium}));
  Log log(request.log,
          Text("LogInstallation", "installation of {1} in {2}", {request.medium, request.target}));
  const bool set_up = CarryOut(plan, tree, log);
  if (set_up) {
    for (const Medium& medium : plan.media) {
      Unfinished::Delete(SystemDir(medium, request.target));
    }
    log.Succeeded();
  }
  Summarize(plan.media, request.target);
  Say(WhereLogIs());
  if (!set_up) {
    throw Refusal(
        Text("SetupFailed",
             "A program of the product has failed: see the log. The same command runs it again.\n"),
        kProgramFailed);
  }
}
