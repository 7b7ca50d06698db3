#include "install.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "console.h"
#include "medium.h"

namespace fs = std::filesystem;

namespace {

/// A package that is to be installed.
struct Component {
  const Medium* medium;
  std::string name;
  std::string archive;
};

constexpr size_t kMostSystems = 4;  ///< that a tree can have

/// A path as the library takes it: some functions shorten it in place.
std::string Copy(const std::string& path) { return path; }

/// Brings the target into a form that the library accepts, and asks it whether it may be used.
void CheckTarget(std::string& target, const std::string& os) {
  TEVUnicodeString path = target.c_str();
  TEVUnicodeString message;
  TEVInsSuppressSlashDir(&path);
  if (TEVInsCheckSyntaxDir(&path, &message) != 0) throw Refused(message);
  target = path.ConvertToChar();
  if (target.size() > 1 && target.back() == '/') target.pop_back();
  RequirePlainPath("target directory", target);

  // An installation in the target is known by the systems that it lists.
  const std::vector<std::string> installed = SystemsOf(target);
  const std::string& system = installed.empty() ? os : installed.front();
  if (TEVInsCheckEmptyDir(target.c_str(), system.c_str(), &message) < 0) throw Refused(message);
}

std::unique_ptr<TEVINSInstToc> OpenInstalled(const std::string& target, const std::string& os) {
  std::string path = target + "/" + os;
  // Nothing is installed for a system that the tree does not have.
  if (TEVFileAccess(path.c_str(), 0) != 0) return nullptr;
  TEVINSInstToc* toc = nullptr;
  TEVUnicodeString message;
  const int status = InitInstallToc(path.data(), &toc, &message);
  std::unique_ptr<TEVINSInstToc> owned(toc);
  if (status != 0) throw Refused(message);
  return owned;
}

/// The packages of the media that the target does not have, in the order of installation.
std::vector<Component> Missing(const std::vector<Medium>& media, const std::string& target) {
  std::vector<Component> components;
  for (const Medium& medium : media) {
    const auto installed = OpenInstalled(target, medium.os);
    std::set<std::string> seen;
    for (const TEVINSPkg kind : kProductKinds) {
      for (const std::string& name : PackagesOf(*medium.toc, kind)) {
        if (installed != nullptr && installed->IsInstalled(name.c_str(), code) == 0) continue;
        if (!seen.insert(name).second) continue;
        RequirePlainName("package name", name);
        const std::string archive = ArchiveOf(medium, name);
        if (archive.empty())
          throw Refusal("The archive " + medium.dir + "/" + name + " is missing on the medium.\n");
        components.push_back({&medium, name, archive});
      }
    }
  }
  return components;
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

/// The installation log, opened, and closed with its trailer on every way out.
class Log {
 public:
  explicit Log(const std::string& header) : log_(nullptr) {
    TEVUnicodeString text = header.c_str();
    TEVUnicodeString message;
    if (log_.OpenLogFile(text, message) != 0) throw Refused(message);
  }
  ~Log() { log_.CloseLogFile(trailer_); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  void Write(const std::string& text) {
    TEVUnicodeString entry = text.c_str();
    log_.WriteLogFile(entry);
  }
  void Succeeded() { trailer_ = " end of installation"; }
  TEVInstallLog* get() { return &log_; }

 private:
  TEVInstallLog log_;
  TEVUnicodeString trailer_ = " installation failed";
};

/// Adds the systems of the media to those that TARGET/OSUNIX lists.
void RecordSystems(const std::vector<Medium>& media, const std::string& target) {
  std::vector<std::string> systems = SystemsOf(target);
  const size_t before = systems.size();
  for (const Medium& medium : media) {
    if (std::find(systems.begin(), systems.end(), medium.os) == systems.end()) {
      systems.push_back(medium.os);
    }
  }
  if (systems.size() == before) return;
  if (systems.size() > kMostSystems) {
    throw Refusal("The directory " + target + " would hold more than four operating systems.\n");
  }
  std::string text;
  for (const std::string& system : systems) text += (text.empty() ? "" : "\n") + system;
  TEVUnicodeString message;
  if (TEVInsCreateFile(Copy(target + "/OSUNIX").data(), text.data(), &message) != 1) {
    throw Refused(message);
  }
}

/// Makes the directories of the systems with a table each, at first an empty one: with that, an
/// installation that fails can be taken up again.
void MakeTree(const std::vector<Medium>& media, const std::string& target) {
  for (const Medium& medium : media) {
    const std::string control = target + "/" + medium.os + "/control";
    if (TEVInsCreateDirectory(Copy(control).data()) != 0) {
      throw Refusal("The directory " + control + " cannot be created.\n");
    }
    std::ofstream(control + "/PRESENT", std::ios::app);
  }
  RecordSystems(media, target);
}

/// The languages for a system: those that it has are kept, since its other languages are gone.
int LanguagesFor(const Medium& medium, const InstallOptions& options) {
  const std::string record = options.target + "/" + medium.os + "/NLS.txt";
  if (TEVFileAccess(record.c_str(), 0) != 0) return options.languages.value_or(127);
  const int kept = TEVInsInitChosenLang(Copy(options.target).data(), medium.os.c_str());
  if (options.languages && *options.languages != kept) {
    Say("The languages that were chosen before are kept: see " + record);
  }
  return kept;
}

void Transfer(const Component& component, std::string target, int languages, Log& log) {
  std::string name = component.name;
  std::string source = component.medium->dir;
  TEVUnicodeString message;
  const int status = TEVInsTransferCAF(name.data(), source.data(), target.data(),
                                       component.medium->os.c_str(), languages, message);
  log.Write(name + " (" + component.medium->os + "): " + (status == 0 ? "installed" : "failed") +
            "\n" + message.ConvertToChar());
  if (status == 0) {
    // What tar had to say all the same.
    if (message.ConvertToChar()[0] != '\0') Say(message.ConvertToChar());
    return;
  }
  // The side log lies in the target itself, which is where it is looked for with this type.
  TEVInsTransferLogInfo(target.data(), name.c_str(), zeb2, log.get());
  throw Refused(message);
}

void TransferAll(const std::vector<Component>& components, const InstallOptions& options,
                 const std::map<const Medium*, int>& languages, Log& log) {
  Progress progress(components.size());
  for (const Component& component : components) {
    progress.Begin(component.name + " (" + component.medium->os + ")");
    Transfer(component, options.target, languages.at(component.medium), log);
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

/// Shows what the target holds now.
void Summarize(const std::vector<Medium>& media, const std::string& target) {
  for (const Medium& medium : media) {
    Say("Installed in " + target + "/" + medium.os + ":");
    const auto installed = OpenInstalled(target, medium.os);
    if (installed == nullptr) continue;
    for (const TEVINSPkg kind : kProductKinds) {
      std::string line;
      for (const std::string& name : PackagesOf(*installed, kind)) line += " " + name;
      if (!line.empty()) Say(std::string("  ") + kTEVINSNames[6 + kind] + line);
    }
  }
}

}  // namespace

void Install(InstallOptions options) {
  RequirePlainPath("medium", options.medium);
  options.medium = fs::absolute(options.medium).lexically_normal();
  if (options.medium.back() == '/') options.medium.pop_back();
  RequirePlainPath("medium", options.medium);
  Say("Medium " + options.medium);
  const std::vector<Medium> media = OpenMedium(options.medium, options.os);
  CheckTarget(options.target, media.front().os);
  const std::vector<Component> components = Missing(media, options.target);
  CheckSpace(components, options.target);

  Log log(" installation of " + options.medium + " in " + options.target + "\n");
  MakeTree(media, options.target);
  std::map<const Medium*, int> languages;
  for (const Medium& medium : media) languages[&medium] = LanguagesFor(medium, options);
  TransferAll(components, options, languages, log);
  for (const auto& [medium, mask] : languages) RecordLanguages(*medium, options.target, mask, log);
  log.Succeeded();
  Summarize(media, options.target);
  Say(std::string("The log is ") + log.get()->GetLogFileName());
}
