#include <new>

#include "kwinstutil/toc.h"
#include "report/message.h"
#include "support/tree_paths.h"

namespace {

/// The problems that a table has reported while it was opened, or null if there are none.
const char* OpeningProblem() {
  char* text = nullptr;
  TEVINSToc::sGetInfoMsg(text);
  return text == nullptr || text[0] == '\0' ? nullptr : text;
}

}  // namespace

int InitMediaToc(char* mediaPath, TEVINSMediaToc** toc, TEVUnicodeString* message) noexcept {
  const kwinst::MessageFrame frame;
  *toc = nullptr;
  if (!kwinst::Exists(mediaPath)) {
    *message = frame.Build("ErrorInitNoToc", {mediaPath});
    return -1;
  }
  TEVINSToc::sResetInfoMsg();
  *toc = new (std::nothrow) TEVINSMediaToc(mediaPath);

  int status = 0;
  if (const char* problem = OpeningProblem(); problem != nullptr) {
    *message = frame.Build("ErrorInitMediaToc", {mediaPath, problem});
    status = -1;
  }
  TEVINSToc::sClearInfoMsg();
  return status;
}

int InitInstallToc(char* installPath, TEVINSInstToc** toc, TEVUnicodeString* message) noexcept {
  const kwinst::MessageFrame frame;
  // The path is not tested here: a new tree has no table yet.
  TEVINSToc::sResetInfoMsg();
  *toc = new (std::nothrow) TEVINSInstToc(installPath);

  int status = 0;
  if (const char* problem = OpeningProblem(); problem != nullptr) {
    *message = frame.Build("ErrorInitToc", {installPath, problem});
    status = -2;
  }
  TEVINSToc::sClearInfoMsg();
  return status;
}
