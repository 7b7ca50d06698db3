#include <string>

#include "checks/installed_systems.h"
#include "checks/service_pack_state.h"
#include "kwinstutil/checks.h"
#include "kwinstutil/dirs.h"
#include "report/message.h"
#include "support/format.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::MessageFrame;
using kwinst::SameText;

namespace {

/// Do the two tables have the same operating system and the same general-availability level?
bool SameSystemAndLevel(TEVINSInstToc* installed, TEVINSMediaToc* media, const MessageFrame& frame,
                        TEVUnicodeString* message) {
  if (!SameText(media->GetOS(), installed->GetOS())) {
    *message = frame.Build("ErrWndOS", {media->GetOS(), installed->GetOS()});
    return false;
  }
  if (!SameText(media->GetGALevel(), installed->GetGALevel())) {
    *message = frame.Build("ErrWndGALevel", {media->GetGALevel(), installed->GetGALevel()});
    return false;
  }
  return true;
}

}  // namespace

int TEVInsCheckPrereq(TEVINSInstToc* installed, TEVINSMediaToc* media,
                      TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  // Deliberate: only this check accepts a missing table.
  if (installed == nullptr || media == nullptr) return 1;
  return SameSystemAndLevel(installed, media, frame, message) ? 1 : 0;
}

int TEVInsCheckPrereqGA(TEVINSInstToc* installed, TEVINSMediaToc* media,
                        TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  if (installed == nullptr || media == nullptr) return 0;
  return SameSystemAndLevel(installed, media, frame, message) ? 1 : 0;
}

int TEVInsCheckPrereqGASP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                          TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  if (installed == nullptr || media == nullptr) return 0;
  if (!SameSystemAndLevel(installed, media, frame, message)) return 0;

  const int media_level = media->GetSPKLevel(1);
  const int installed_level = installed->GetSPKLevel(1);
  if (installed_level >= media_level) return 1;

  const char* ga = media->GetGALevel() == nullptr ? "" : media->GetGALevel();
  if (installed_level == 0) {
    const std::string text = Format(
        "It is forbidden to install GA %s Service Pack %d data on GA %s with no Service Pack\n", ga,
        media_level, ga);
    *message = frame.Build("ErrWndGASPLevel2", {ga, media_level, ga}, text);
  } else {
    const std::string text =
        Format("It is forbidden to install GA %s Service Pack %d data on GA %s Service Pack %d\n",
               ga, media_level, ga, installed_level);
    *message = frame.Build("ErrWndGASPLevel1", {ga, media_level, ga, installed_level}, text);
  }
  return 0;
}

int TEVInsCheckSPKLevel(int mediaLevel, int installedLevel, char* installDir, int mode,
                        TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  const bool pending = kwinst::ServicePackIsPending(installDir);
  if (installedLevel < mediaLevel) {
    if (!pending) return 1;
    const std::string commit =
        kwinst::JoinPath(installDir, kwinst::kStarter) + " -run TEVSoftwareMgt";
    *message = frame.Build("ErrWndNoCommit", {installedLevel, mediaLevel, commit});
    return -1;
  }
  if (mediaLevel < installedLevel) {
    *message = frame.Build("ErrWndErrorCD", {installedLevel, installDir, mediaLevel});
    return -1;
  }
  if (pending) return mode == 1 ? 3 : 1;
  return mode != 0 ? 1 : 2;
}

int TEVInsCheckCodeLevel(TEVINSMediaToc* media, char* installDir,
                         TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  char code_dir[kwinst::kPathSize] = "";
  TEVInsGetCodeDir(installDir, code_dir);
  const std::string list = kwinst::JoinPath(code_dir, kwinst::kSystemList);
  if (!kwinst::Exists(list)) {
    if (message != nullptr) *message = frame.Build("ErrorNoFile", {list});
    return 0;
  }
  const int media_level = media == nullptr ? 0 : media->GetSPKLevel(1);
  int level = 0;  // stays that of the system before if there is no memory for a table
  const auto check = [&](const char* system, TEVINSInstToc* table) {
    if (table != nullptr) level = table->GetSPKLevel(1);
    const char* os = table != nullptr ? table->GetOS() : nullptr;
    if (level < media_level) {
      if (message != nullptr) {
        *message = frame.Build("ErrorBadMedia_1", {media_level, os, media_level});
      }
      return false;
    }
    // Deliberate: `message` is not tested for null from here on. The header says when it may be.
    if (level > media_level) {
      *message = frame.Build("ErrorBadMedia_2", {level, os});
      return false;
    }
    if (!kwinst::ServicePackIsDamaged(table, kwinst::JoinPath(code_dir, system))) return true;
    const std::string text = Format("You must re-install Code Service Pack level %d for OS %s\n",
                                    level, os == nullptr ? "" : os);
    *message = frame.Build("ErrorMustReinstallSPKCode", {level, os}, text);
    return false;
  };
  return kwinst::ForEachInstalledSystem(code_dir, frame, message, check) ? 1 : 0;
}
