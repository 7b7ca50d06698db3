#include <cstring>
#include <string>

#include "checks/installed_systems.h"
#include "kwinstutil/checks.h"
#include "report/message.h"
#include "support/text_file.h"
#include "support/tree_paths.h"
#include "toc/name_list.h"

using kwinst::MessageFrame;
using kwinst::NameList;

namespace {

/// Does the tree report one of the packages as not installed (exactly -1)? Without a tree no
/// package is missing.
bool AnyMissing(const NameList& packages, TEVINSInstToc* installed, TEVINSType type) {
  if (installed == nullptr) return false;
  for (int i = 0; i < packages.size(); ++i) {
    if (installed->IsInstalled(packages[i], type) == -1) return true;
  }
  return false;
}

/// The number of installed packages of a kind and type.
int CountInstalled(const TEVINSInstToc* installed, TEVINSPkg pkg, TEVINSType type, int flag) {
  if (installed == nullptr || installed->GetNbToc() <= 0) return 0;
  TEVINSStockNameInst list(installed->GetNbToc());
  installed->GetPackageInst(pkg, type, &list, flag);
  return list.GetNbName();
}

/// How many SDK packages of a medium are installed, and how many can be installed.
struct SdkTally {
  int installed = 0;    ///< in the SDK tree already
  int installable = 0;  ///< not in the SDK tree, but the code tree has the code
};

SdkTally CountSdk(const NameList& packages, TEVINSInstToc* installed,
                  TEVINSInstToc* installedCode) {
  SdkTally tally;
  for (int i = 0; i < packages.size(); ++i) {
    const std::string name = packages[i];
    if (installed != nullptr && installed->IsInstalled(name.c_str(), zeb2) == 0) {
      ++tally.installed;
      continue;
    }
    const std::string base = name.substr(0, name.find(kwinst::kSdkPackage));
    if (installedCode != nullptr && installedCode->IsInstalled(base.c_str(), code) == 0) {
      ++tally.installable;
    }
  }
  return tally;
}

}  // namespace

int TEVInsCheckInstall(TEVINSType type, TEVINSInstToc* installed, TEVINSMediaToc* media,
                       TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList products(media, PRD, type, 1);
  const NameList solutions(media, SLT, type, 1);
  if (AnyMissing(products, installed, type) || AnyMissing(solutions, installed, type)) return 1;

  // Deliberate: `message` is not tested for null. The header says that it must not be null.
  *message = frame.Build("ErrWndProductAllInstalled");
  return 0;
}

int TEVInsCheckInstallSMP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                          TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList packages(media, SMP, samples, 1);
  if (AnyMissing(packages, installed, samples)) return 1;

  if (message != nullptr) {
    *message = frame.Build("ErrWndSamplesAllInstalled", {},
                           "All the samples on the media are already installed\n");
  }
  return 0;
}

int TEVInsCheckInstallZEB(TEVINSInstToc* installed, TEVINSMediaToc* media,
                          TEVINSInstToc* installedCode, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList products(media, PRD, zeb2, 1);
  const NameList solutions(media, SLT, zeb2, 1);
  const SdkTally solution_tally = CountSdk(solutions, installed, installedCode);
  const SdkTally product_tally = CountSdk(products, installed, installedCode);
  if (solution_tally.installable != 0 || product_tally.installable != 0) return 1;

  if (message == nullptr) return 0;
  const bool all_installed =
      solution_tally.installed == solutions.size() && product_tally.installed == products.size();
  *message = all_installed ? frame.Build("ErrWndProductAllInstalled")
                           : frame.Build("ErrWndProductCodeNotInstalled");
  return 0;
}

int TEVInsCheckInstallSPK(TEVINSType type, TEVINSInstToc* installed, TEVINSMediaToc* media,
                          TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList packages(media, FSP, type, 0);
  // Deliberate: the installed fix packages of the code are counted, whatever `type` is.
  const int installed_count = CountInstalled(installed, FSP, code, 0);
  const bool missing = AnyMissing(packages, installed, type);
  if (missing || packages.size() != installed_count) return 1;

  if (message != nullptr) *message = frame.Build("ErrWndProductAllInstalled");
  return 0;
}

int TEVInsCheckInstallCode(char* installDir, const char* gaLevel,
                           TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const std::string list = kwinst::JoinPath(installDir, kwinst::kSystemList);
  // Deliberate: the directory is tested, but the list is reported as missing.
  if (!kwinst::Exists(installDir)) {
    if (message == nullptr) return 0;
    *message = frame.Build("ErrorNoFile", {list});
    message->Append(frame.Build("ErrNoPRESENTForAnyOS", {gaLevel, installDir}));
    return 0;
  }
  bool found = false;
  const auto has_level = [&](const char*, TEVINSInstToc* table) {
    found = true;
    const char* level = table == nullptr ? nullptr : table->GetGALevel();
    const char* os = table == nullptr ? nullptr : table->GetOS();
    if (kwinst::SameText(level, gaLevel)) return true;
    if (message != nullptr) {
      *message = frame.Build("ErrWndGALevelCode", {gaLevel, installDir, level, os});
    }
    return false;
  };
  // If the walk ends early, the message has been made already.
  if (!kwinst::ForEachInstalledSystem(installDir, frame, message, has_level)) return 0;
  if (found) return 1;

  if (message != nullptr) *message = frame.Build("ErrNoPRESENTForAnyOS", {gaLevel, installDir});
  return 0;
}

int TEVInsCheckZEBDir(char* treeDir, char* zebDir) noexcept {
  if (treeDir == nullptr || zebDir == nullptr) return 0;
  const std::string path = kwinst::JoinPath(treeDir, kwinst::kSdkPointer);
  if (!kwinst::Exists(path)) return 0;
  char line[kwinst::kPathSize];
  if (kwinst::ReadFirstLine(path.c_str(), line, sizeof(line))) std::strcpy(zebDir, line);
  // Deliberate: the answer is 1 even if the file cannot be read.
  return 1;
}
