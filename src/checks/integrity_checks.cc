#include <fstream>

#include "kwinstutil/checks.h"
#include "report/message.h"

using kwinst::MessageFrame;

int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path, std::ostream& report,
                           TEVUnicodeString* message, int zebMedia) noexcept {
  return TEVInsCheckResult(installed, path, report, message, zebMedia);
}

int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path, char* reportFile,
                           TEVUnicodeString* message, int zebMedia) noexcept {
  const MessageFrame frame;
  // Deliberate: if the file cannot be opened, there is no report, and the status is the same.
  std::ofstream report(reportFile, std::ios::app);
  return TEVInsCheckResult(installed, path, report, message, zebMedia);
}

int TEVInsCheckResult(TEVINSInstToc* installed, char* path, std::ostream& report,
                      TEVUnicodeString* message, int zebMedia) noexcept {
  const MessageFrame frame;
  const int verdict = installed == nullptr ? 0 : installed->CheckIntegrity(report, path, 0, 0);
  if (verdict == 1) {
    *message = frame.Build("CheckIntegrityOK");
    return 0;
  }
  if (verdict == 2) {
    const int level = installed->GetSPKLevel(1);
    *message = zebMedia == 0 ? frame.Build("ErrIntegrityServicePack", {level})
                             : frame.Build("ErrIntegrityServicePackZEB", {level});
    return -3;
  }
  *message = frame.Build("ErrCheckMORVELIntegrity");
  return -2;
}
