#include <string>

#include "checks/installed_systems.h"
#include "checks/service_pack_state.h"
#include "kwinstutil/checks.h"
#include "report/message.h"
#include "support/format.h"

using kwinst::Format;
using kwinst::MessageFrame;

namespace {

/// Reports that the hot fix `wanted` is refused because `present` is installed. If one of the names
/// is missing, no message is made.
void ReportInstalledHotFix(const char* present, const char* wanted, const MessageFrame& frame,
                           TEVUnicodeString* message) {
  if (present == nullptr || wanted == nullptr) return;
  if (kwinst::SameText(present, wanted)) {
    *message = frame.Build("ErrHFXAlreadyInstalled", {wanted},
                           Format("Hot fix %s is already installed\n", wanted));
  } else {
    *message = frame.Build(
        "ErrHFXLevelold", {present, wanted},
        Format("You need to remove hot fix %s before installing %s\n", present, wanted));
  }
}

}  // namespace

int TEVInsCheckHFXLevel(TEVINSInstToc* installed, TEVINSMediaToc* media, char* installDir,
                        TEVUnicodeString* message) noexcept {
  if (message == nullptr || installed == nullptr || media == nullptr || installDir == nullptr) {
    return -1;
  }
  const MessageFrame frame;
  if (TEVInsCheckPrereq(installed, media, message) == 0) return -1;

  const int level = installed->GetSPKLevel(1);
  const char* ga = installed->GetGALevel();
  const char* name = media->GetHFXName();
  if (level != media->GetSPKLevel(1)) {
    if (ga == nullptr || name == nullptr) return -1;
    const std::string text =
        Format("It is impossible to install hot fix %s on %s with Service Pack level %d\n", name,
               ga, level);
    *message = frame.Build("ErrHFXLevelSPK", {name, ga, level}, text);
    return -1;
  }
  if (kwinst::ServicePackIsPending(installDir)) {
    if (name == nullptr) return -1;
    // Deliberate: the text says "ifx".
    const std::string text = Format(
        "You need to commit Service Pack level %d before installing hot ifx %s\n", level, name);
    *message = frame.Build("ErrHFXCommitSPK", {level, name}, text);
    return -1;
  }
  if (installed->GetHFXLevel() != 0) {
    ReportInstalledHotFix(installed->GetHFXName(), name, frame, message);
    return -1;
  }
  if (level == 0 || !kwinst::ServicePackIsDamaged(installed, installDir)) return 1;

  if (name != nullptr) {
    const std::string text =
        Format("You need to reinstall Service Pack %d before installing %s\n", level, name);
    *message = frame.Build("ErrHFXneedreinstallSPK", {level, name}, text);
  }
  return -1;
}
