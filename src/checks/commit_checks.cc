#include <cstring>
#include <fstream>
#include <iomanip>
#include <memory>
#include <string>

#include "checks/service_pack_state.h"
#include "kwinstutil/checks.h"
#include "kwinstutil/toc.h"
#include "report/message.h"
#include "support/format.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::ControlFile;
using kwinst::Format;
using kwinst::MessageFrame;

int TEVInsCheckUnloadCAF(char names[][48], int count, char* name) noexcept {
  for (int i = 0; i < count; ++i) {
    if (std::strcmp(names[i], name) == 0) return 1;
  }
  return 0;
}

int TEVInsCheckInterruptSPK(char* installDir, int* interruptedValue,
                            int* automaticCommit) noexcept {
  if (interruptedValue == nullptr || automaticCommit == nullptr) return 0;
  const std::string path =
      installDir == nullptr ? "" : ControlFile(installDir, kwinst::kInterruption);
  if (!kwinst::Exists(path) || kwinst::IsPipeOrDevice(path.c_str())) return 0;
  std::ifstream record(path);
  if (!record.is_open()) return 0;

  int value = 0;
  char word[128] = "";
  record >> value >> std::setw(sizeof(word)) >> word;
  if (record.bad()) return 0;
  *interruptedValue = value;
  *automaticCommit = std::strcmp(word, "AUTOMATIC_COMMIT") == 0 ? 1 : 0;
  return 1;
}

int TEVInsCheckInstallSPKCommitted(char* installDir, int spLevel, char* osName,
                                   TEVUnicodeString* message) noexcept {
  if (installDir == nullptr || message == nullptr) return -1;
  const MessageFrame frame;
  const std::string system_dir = kwinst::SystemDir(installDir, osName);
  TEVINSInstToc* opened = nullptr;
  std::string present = ControlFile(system_dir, kwinst::kPresent);
  const int status = InitInstallToc(present.data(), &opened, message);
  const std::unique_ptr<TEVINSInstToc> table(opened);
  if (status == -2) return 0;

  const int installed_level = table == nullptr ? 0 : table->GetSPKLevel(1);
  const char* ga = table == nullptr ? nullptr : table->GetGALevel();
  if (spLevel == installed_level) {
    if (!kwinst::ServicePackIsPending(system_dir)) return 1;
    if (ga == nullptr) return 0;
    const std::string text = Format(
        "%s is not a valid installation path to install  %s SP%d ZEB CDROM because code SP is not "
        "committed\n",
        installDir, ga, spLevel);
    *message = frame.Build("MsgCheckInstallSPKNotCommitted", {installDir, ga, spLevel}, text);
    return 0;
  }
  if (ga == nullptr) return 0;
  const std::string text = Format(
      "%s is not a valid installation path to install  %s SP%d ZEB CDROM because installed SPK "
      "level is %d\n",
      installDir, ga, spLevel, installed_level);
  *message =
      frame.Build("MsgCheckBadInstalledSPK", {installDir, ga, spLevel, installed_level}, text);
  return 0;
}
