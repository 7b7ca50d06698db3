#include "install.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "check.h"
#include "console.h"
#include "files.h"
#include "journal.h"
#include "log.h"
#include "medium.h"
#include "paths.h"
#include "ports.h"
#include "refusal.h"
#include "service_pack.h"
#include "settings.h"
#include "transfer.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

/// What the user wants.
struct Request {
  explicit Request(const Options& options);

  std::string medium;
  std::string target;
  std::string code_tree;         ///< the code that an SDK belongs to
  std::string os;                ///< the only system to install; empty for all of the medium
  std::optional<int> languages;  ///< language mask; without one, what the target has, or all
};

/// The languages that are not always there, and their bits in a language mask.
struct Language {
  const char* name;
  int bit;
};

constexpr Language kLanguages[] = {
    {"French", 2}, {"German", 4}, {"Italian", 8}, {"Japanese", 16}, {"Simplified_Chinese", 32},
    {"Korean", 64}};

/// The bits of a comma-separated list of languages.
int LanguageMask(const std::string& list) {
  if (list == "all") return 127;
  if (list == "none") return 0;
  int mask = 0;
  std::istringstream names(list + ",");
  for (std::string name; std::getline(names, name, ',');) {
    const auto* known = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                     [&name](const Language& l) { return name == l.name; });
    if (known == std::end(kLanguages)) throw UsageError("unknown language \"" + name + "\"");
    mask |= known->bit;
  }
  return mask;
}

Request::Request(const Options& options) : code_tree(options.Text("code")), os(options.Text("os")) {
  if (options.Has("languages")) languages = LanguageMask(options.Text("languages"));
  if (options.Has("fonts")) languages = languages.value_or(126) | 1;
  medium = MediumPath(options.words()[1]);
  target = TargetPath(options.words()[2]);
}

/// A package that is to be installed.
struct Component {
  const Medium* medium;
  std::string name;
  std::string archive;
};

/// What is to be done.
struct Plan {
  explicit Plan(const Options& options) : request(options) {}

  Request request;
  std::vector<Medium> media;          ///< of which something is to be installed
  std::vector<Component> components;  ///< of all of them, in the order of installation
  Ports ports;
};

constexpr size_t kMostSystems = 4;  ///< that a tree can have

/// A path as the library takes it: some functions shorten it in place.
std::string Copy(const std::string& path) { return path; }

/// Can the SDK package be installed: is the code there that it extends?
bool HasCode(const TEVINSInstToc* code_table, const std::string& name) {
  const std::string base = name.substr(0, name.find(".zeb2"));
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
      const std::string archive = ArchiveOf(medium, name);
      if (archive.empty()) {
        throw Refusal("The archive " + medium.dir + "/" + name + " is missing on the medium.\n");
      }
      components.push_back({&medium, name, archive});
    }
  }
}

/// The file that tells that an installation has not come to its end.
std::string Unfinished(const Medium& medium, const std::string& target) {
  return SystemDir(medium, target) + "/control/Install.unfinished";
}

/// The media of which something can be installed. Throws a Refusal when there is none.
std::vector<Medium> Installable(std::vector<Medium> media, const Request& request) {
  std::vector<Medium> installable;
  std::string reason;
  for (Medium& medium : media) {
    const std::string system_dir = SystemDir(medium, request.target);
    if (const auto journal = Journal::Read(system_dir)) throw journal->NotFinished(system_dir);
    try {
      RequireInstallable(medium, request.target, request.code_tree);
      installable.push_back(std::move(medium));
    } catch (const NothingToInstall& refusal) {
      reason = refusal.what();
      // Everything is there, but the last steps are missing.
      const bool unfinished = TEVFileAccess(Unfinished(medium, request.target).c_str(), 0) == 0;
      if (unfinished) installable.push_back(std::move(medium));
    }
  }
  if (installable.empty()) throw Refusal(reason);
  return installable;
}

/// Refuses a target without room. A compressed archive is taken to grow fourfold.
void CheckSpace(const std::vector<Component>& components, const std::string& target) {
  uintmax_t required = 0;
  for (const Component& component : components) {
    const bool compressed = fs::path(component.archive).extension() == ".Z";
    required += fs::file_size(component.archive) / 1024 * (compressed ? 4 : 1);
  }
  unsigned int available = 0;
  TEVUnicodeString message;
  if (TEVInsComputeAvailSpace(target.c_str(), &available, &message) != 0) throw Refused(message);
  Say("About " + std::to_string(required) + " KB are needed, " + std::to_string(available) +
      " KB are free.");
  if (required > available) throw Refusal("There is not enough space in " + target + ".\n");
}

/// The systems that the target has, and those of the media. Throws a Refusal when they are too
/// many.
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

/// Writes a file with this text and a newline.
void WriteFile(const std::string& path, const std::string& text) {
  TEVUnicodeString message;
  if (TEVInsCreateFile(Copy(path).data(), Copy(text).data(), &message) != 1) {
    throw Refused(message);
  }
}

/// Makes the system directories with a table each, at first an empty one: with that, an
/// installation that fails can be taken up again.
void MakeTree(const Plan& plan) {
  const Request& request = plan.request;
  for (const Medium& medium : plan.media) {
    const std::string control = SystemDir(medium, request.target) + "/control";
    if (TEVInsCreateDirectory(Copy(control).data()) != 0 ||
        !AppendToFile(control + "/PRESENT", "")) {
      throw Refusal("The directory " + control + " cannot be made.\n");
    }
    WriteFile(Unfinished(medium, request.target), request.medium);
  }
  if (IsSdk(plan.media.front())) {
    WriteFile(request.target + "/CodeDir.txt", request.code_tree);
    WriteFile(request.code_tree + "/ZEBDir.txt", request.target);
    return;
  }
  std::string list;
  for (const std::string& system : AllSystems(plan.media, request.target)) {
    list += (list.empty() ? "" : "\n") + system;
  }
  WriteFile(request.target + "/OSUNIX", list);
}

/// The languages for a system: those that it has are kept, since its other languages are gone.
int LanguagesFor(const Medium& medium, const Request& request) {
  const std::string record = SystemDir(medium, request.target) + "/NLS.txt";
  if (TEVFileAccess(record.c_str(), 0) != 0) return request.languages.value_or(127);
  const int kept = TEVInsInitChosenLang(Copy(request.target).data(), medium.os.c_str());
  if (request.languages && *request.languages != kept) {
    Say("The languages that were chosen before are kept: see " + record);
  }
  return kept;
}

void TransferAll(const Plan& plan, const std::map<const Medium*, int>& languages, Log& log) {
  Progress progress(plan.components.size());
  for (const Component& component : plan.components) {
    const Medium& medium = *component.medium;
    progress.Begin(component.name + " (" + medium.os + ")");
    Transfer(medium, component.name, plan.request.target, languages.at(&medium), log);
  }
}

void RecordLanguages(const Medium& medium, std::string target, int languages, Log& log) {
  TEVUnicodeString message;
  TEVInsCreateNLSFile(target.data(), medium.os.c_str(), languages, message);
  log.Write(message.ConvertToChar());
  // The status tells nothing here; what can be read back does.
  if (!fs::is_regular_file(target + "/" + medium.os + "/NLS.txt") ||
      TEVInsInitChosenLang(target.data(), medium.os.c_str()) != languages) {
    throw Refused(message);
  }
}

/// Refuses to end while a language that was not chosen is there: its removal tells no failures.
void RequireRemoved(const Plan& plan, const std::map<const Medium*, int>& languages) {
  for (const auto& [medium, mask] : languages) {
    for (const auto& [name, bit] : kLanguages) {
      const std::string dir =
          SystemDir(*medium, plan.request.target) + "/resources/msgcatalog/" + name;
      if ((mask & bit) != 0 || TEVFileAccess(dir.c_str(), 0) != 0) continue;
      std::error_code failed;
      fs::remove_all(dir, failed);
      if (failed) throw Refusal("The directory " + dir + " cannot be removed.\n");
    }
  }
}

/// The languages of each system, recorded before anything is left out.
std::map<const Medium*, int> RecordLanguages(const Plan& plan, Log& log) {
  std::map<const Medium*, int> languages;
  for (const Medium& medium : plan.media) {
    languages[&medium] = IsSdk(medium) ? 127 : LanguagesFor(medium, plan.request);
    if (!IsSdk(medium)) {
      RecordLanguages(medium, plan.request.target, languages[&medium], log);
    }
  }
  return languages;
}

/// Runs the product's setup programs, which are told when they fail but undo nothing.
void RunSetup(std::string system_dir, Log& log) {
  TEVUnicodeString message;
  std::string program = "TEVSoftwareMgt";
  std::string arguments = "-setup";
  const bool has_start = TEVFileAccess((system_dir + "/code/command/tevstart").c_str(), 1) == 0;
  if (!has_start) return;
  int status =
      TEVInsLaunchExe(system_dir.data(), "Setup", program.data(), arguments.data(), &message);
  log.Write(message.ConvertToChar());
  if (status != 1) Complain(message.ConvertToChar());
  if (TEVInsNeedQDNUpdate(system_dir.data()) == 0) return;
  status = TEVInsQDNUpdate(system_dir.data(), &message, nullptr);
  log.Write(message.ConvertToChar());
  if (status != 1) Complain(message.ConvertToChar());
}

/// Shows what the target holds now.
void Summarize(const std::vector<Medium>& media, const std::string& target) {
  for (const Medium& medium : media) {
    const std::string system_dir = SystemDir(medium, target);
    Say("Installed in " + system_dir + ":");
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

/// Asks the library about everything that could keep the installation from its end. Writes nothing.
Plan MakePlan(const Options& options, std::vector<Medium> opened) {
  Plan plan(options);
  Request& request = plan.request;
  request.code_tree = CodeTreeFor(opened.front(), request.target, request.code_tree);
  plan.media = Installable(std::move(opened), request);
  AllSystems(plan.media, request.target);
  for (const Medium& medium : plan.media) {
    AddMissing(medium, request.target, request.code_tree, plan.components);
  }
  CheckSpace(plan.components, request.target);
  if (plan.media.front().kind == MediumKind::kProducts) plan.ports = ChoosePorts(options);
  if (options.Has("satellite")) RequireSatellite(options.Text("satellite"), request.target);
  ExportPortSettings(options);
  ExportSettings(options);
  return plan;
}

/// The steps behind the transfer. A second run does those that a first one did not come to.
void Finish(const Plan& plan, const Options& options, Log& log) {
  const std::string& target = plan.request.target;
  const bool products = plan.media.front().kind == MediumKind::kProducts;
  if (products) RegisterPorts(plan.ports, SystemDir(plan.media.front(), target), log);
  if (options.Has("satellite")) InstallSatellite(options.Text("satellite"), target);
  // What an earlier try may have left.
  for (const char* name : {"/ErrorTar.log", "/TEVInsErrorTransfer.log"}) {
    TEVDeleteFile((target + name).c_str());
  }
  for (const Medium& medium : plan.media) {
    if (products) RunSetup(SystemDir(medium, target), log);
    if (TEVDeleteFile(Unfinished(medium, target).c_str()) != 0) {
      throw Refusal("The file " + Unfinished(medium, target) + " cannot be deleted.\n");
    }
  }
}

}  // namespace

void Install(const Options& options) {
  std::vector<Medium> media = OpenMedium(options);
  if (IsUpdate(media.front().kind)) {
    throw Refusal("The medium " + media.front().dir + " is a service pack or a hot fix.\n");
  }
  const std::string target = TargetPath(options.words()[2]);
  for (const Medium& medium : media) {
    if (TEVFileAccess(Unfinished(medium, target).c_str(), 0) != 0) continue;
    CutFragment(SystemDir(medium, target), 0);
    RestoreSystemFiles();
  }
  const Plan plan = MakePlan(options, std::move(media));
  Say("Medium " + plan.request.medium);
  Log log(options, " installation of " + plan.request.medium + " in " + plan.request.target + "\n");
  MakeTree(plan);
  const std::map<const Medium*, int> languages = RecordLanguages(plan, log);
  TransferAll(plan, languages, log);
  RequireRemoved(plan, languages);
  Finish(plan, options, log);
  log.Succeeded();
  Summarize(plan.media, plan.request.target);
  Say(std::string("The log is ") + log.FileName());
}

void Check(const Options& options) {
  const std::string target = TargetPath(options.words()[2]);
  std::vector<Medium> media = OpenMedium(options);
  if (IsUpdate(media.front().kind)) return CheckUpdate(options, std::move(media));
  for (const Medium& medium : media) {
    const bool unfinished = TEVFileAccess(Unfinished(medium, target).c_str(), 0) == 0;
    if (unfinished && HasFragment(SystemDir(medium, target))) {
      return TellInterrupted(medium, target);
    }
  }
  const Plan plan = MakePlan(options, std::move(media));
  for (const Medium& medium : plan.media) {
    Say(medium.dir + " may be installed in " + SystemDir(medium, target) + ".");
  }
  TellRegistration(plan.ports, SystemDir(plan.media.front(), target));
}
