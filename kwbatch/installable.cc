#include "installable.h"

#include <algorithm>
#include <filesystem>

#include "formats.h"
#include "integrity.h"
#include "journal.h"
#include "refusal.h"
#include "space.h"
#include "texts.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

/// Throws the message unless the check passed.
void Require(bool passed, const TEVUnicodeString& message) {
  if (!passed) throw Refused(message);
}

/// Has the target, whose table this is, all that would be installed from the medium? Of development
/// kits, only those whose code is installed.
bool HasAll(const TEVINSInstToc* installed, const Medium& medium,
            const TEVINSInstToc* code_table = nullptr) {
  if (installed == nullptr) return false;
  const Content content = ContentOf(medium.kind);
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& name : PackagesOf(*medium.toc, content.type, kind)) {
      if (code_table != nullptr && !HasCode(code_table, name)) continue;
      if (installed->IsInstalled(name.c_str(), content.type) != 0) return false;
    }
  }
  return true;
}

/// Throws the message of a check that also fails when everything is installed, unless it passed.
void RequireNew(bool passed, const TEVUnicodeString& message, const TEVINSInstToc* installed,
                const Medium& medium) {
  if (!passed && HasAll(installed, medium)) throw NothingToDo(message.ConvertToChar());
  Require(passed, message);
}

bool HasOnlyDirectories(const std::string& target) {
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(target, error)) {
    if (entry.is_symlink() || !entry.is_directory()) return false;
  }
  return !error;
}

void RequireTarget(const Medium& medium, const std::string& target) {
  RequireReadWrite(target);
  TEVUnicodeString message;
  const std::string installed = InstalledSystem(target);
  const std::string system = installed.empty() ? medium.os : installed;
  const char* sub_dir = medium.kind == MediumKind::kSdk ? "." : system.c_str();
  const int status = TEVInsCheckEmptyDir(target.c_str(), sub_dir, &message);
  // An installation that has made nothing but directories yet may be taken up again.
  Require(status > 0 || (status == -2 && HasOnlyDirectories(target)), message);
}

void RequireProducts(const Medium& medium, const std::string& target) {
  RequireTarget(medium, target);
  const std::vector<std::string> systems = SystemsOf(target);
  const bool has_system = std::count(systems.begin(), systems.end(), medium.os) > 0;
  // A medium for one system only is for a tree of that system.
  const bool adds_system = !has_system && medium.of_several;
  if (systems.empty()) return;
  const std::string system = has_system ? medium.os : systems.front();
  const auto installed = OpenInstalled(target + "/" + system);
  if (installed == nullptr) return;
  TEVUnicodeString message;
  if (adds_system) {
    std::string tree = target;
    const char* level = medium.toc->GetGALevel();
    Require(TEVInsCheckInstallCode(tree.data(), level, &message) == 1, message);
    return;
  }
  Require(TEVInsCheckPrereq(installed.get(), medium.toc.get(), &message) == 1, message);
  if (TEVInsCheckInstall(code, installed.get(), medium.toc.get(), &message) == 0) {
    throw NothingToDo(message.ConvertToChar());
  }
}

void RequireSdk(const Medium& medium, const std::string& target, std::string code_tree) {
  RequireTarget(medium, target);
  TEVUnicodeString message;
  const char* level = medium.toc->GetGALevel();
  Require(TEVInsCheckInstallCode(code_tree.data(), level, &message) == 1, message);
  const auto installed = OpenInstalled(target);
  const auto installed_code = OpenInstalled(code_tree + "/" + medium.os);
  if (installed != nullptr) {
    Require(TEVInsCheckPrereqGA(installed.get(), medium.toc.get(), &message) == 1, message);
  }
  const bool passed =
      TEVInsCheckInstallZEB(installed.get(), medium.toc.get(), installed_code.get(), &message) == 1;
  if (!passed && HasAll(installed.get(), medium, installed_code.get())) {
    throw NothingToDo(message.ConvertToChar());
  }
  Require(passed, message);
}

/// The table of the system that the medium is for, which must be there.
std::unique_ptr<TEVINSInstToc> RequireInstalled(const Medium& medium, const std::string& target) {
  const std::vector<std::string> systems = SystemsOf(target);
  const bool has_system = std::count(systems.begin(), systems.end(), medium.os) > 0;
  if (systems.empty()) throw Refusal(NothingInstalled(target));
  auto installed = OpenInstalled(target + "/" + (has_system ? medium.os : systems.front()));
  if (installed == nullptr) throw Refusal(NothingInstalled(target));
  return installed;
}

void RequireSamples(const Medium& medium, std::string target) {
  TEVUnicodeString message;
  const char* level = medium.toc->GetGALevel();
  Require(TEVInsCheckInstallCode(target.data(), level, &message) == 1, message);
  const auto installed = RequireInstalled(medium, target);
  Require(TEVInsCheckPrereqGASP(installed.get(), medium.toc.get(), &message) == 1, message);
  if (TEVInsCheckInstallSMP(installed.get(), medium.toc.get(), &message) == 0) {
    throw NothingToDo(message.ConvertToChar());
  }
}

/// Was a pack or a hot fix begun? That may be brought to its end, and nothing else.
bool IsBegun(const std::string& system_dir) {
  const auto journal = Journal::Read(system_dir);
  return journal && journal->phase != Journal::Phase::kPending;
}

/// Asks whether a pack may follow what is installed: a higher level, or the same over damaged
/// files.
void RequirePackLevel(const Medium& medium, TEVINSInstToc* installed, std::string system_dir) {
  if (IsBegun(system_dir)) return;
  TEVUnicodeString message;
  const int level = medium.toc->GetSPKLevel(1);
  const int installed_level = installed->GetSPKLevel(1);
  const int allowed = TEVInsCheckSPKLevel(level, installed_level, system_dir.data(), 0, &message);
  Require(allowed > 0, message);
  if (level > installed_level) return;

  if (!PacksAreInPlace(system_dir, IsSdk(medium))) return;
  const TEVINSType type = IsSdk(medium) ? zeb2 : code;
  message =
      Text("PackLevelInstalled", "Service pack level {1} is already installed.\n", {level}).c_str();
  TEVInsCheckInstallSPK(type, installed, medium.toc.get(), &message);
  throw NothingToDo(message.ConvertToChar());
}

void RequireServicePack(const Medium& medium, const std::string& target) {
  TEVUnicodeString message;
  const auto installed = RequireInstalled(medium, target);
  Require(TEVInsCheckPrereq(installed.get(), medium.toc.get(), &message) == 1, message);
  RequirePackLevel(medium, installed.get(), SystemDir(medium, target));
}

void RequireSdkServicePack(const Medium& medium, std::string target, std::string code_tree) {
  TEVUnicodeString message;
  const auto installed = OpenInstalled(target);
  if (installed == nullptr) {
    throw Refusal(Text("NoSdkInstalled", "No SDK is installed in {1}.\n", {target}));
  }
  Require(TEVInsCheckPrereqGA(installed.get(), medium.toc.get(), &message) == 1, message);
  Require(TEVInsCheckCodeLevel(medium.toc.get(), target.data(), &message) == 1, message);
  std::string os = medium.os;
  const int level = medium.toc->GetSPKLevel(1);
  Require(TEVInsCheckInstallSPKCommitted(code_tree.data(), level, os.data(), &message) == 1,
          message);
  RequirePackLevel(medium, installed.get(), target);
}

void RequireHotFix(const Medium& medium, const std::string& target) {
  TEVUnicodeString message;
  const auto installed = RequireInstalled(medium, target);
  std::string system_dir = SystemDir(medium, target);
  if (IsBegun(system_dir)) return;
  const bool passed =
      TEVInsCheckHFXLevel(installed.get(), medium.toc.get(), system_dir.data(), &message) == 1;
  // One that lies below a later service pack is there, but its files need not be.
  const bool same_level = installed->GetSPKLevel(1) == medium.toc->GetSPKLevel(1);
  if (!same_level) return Require(passed, message);
  RequireNew(passed, message, installed.get(), medium);
}

}  // namespace

bool HasCode(const TEVINSInstToc* code_table, const std::string& name) {
  const std::string base = name.substr(0, name.find(kSdkSuffix));
  return code_table != nullptr && code_table->IsInstalled(base.c_str(), code) == 0;
}

void RequireInstallable(const Medium& medium, const std::string& target,
                        const std::string& code_tree) {
  switch (medium.kind) {
    case MediumKind::kProducts:
      return RequireProducts(medium, target);
    case MediumKind::kSdk:
      return RequireSdk(medium, target, code_tree);
    case MediumKind::kSamples:
      return RequireSamples(medium, target);
    case MediumKind::kServicePack:
      return RequireServicePack(medium, target);
    case MediumKind::kSdkServicePack:
      return RequireSdkServicePack(medium, target, code_tree);
    case MediumKind::kHotFix:
      return RequireHotFix(medium, target);
  }
}
