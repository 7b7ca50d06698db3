#include <kb0core/TEVFile.h>

#include <string>

#include "kwinstutil/actions.h"
#include "kwinstutil/files.h"
#include "kwinstutil/lang.h"
#include "report/message.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::Archive;
using kwinst::Format;
using kwinst::JoinPath;

namespace {

/// The command that unpacks `archive` in the tree and collects what tar prints.
std::string UnpackingCommand(const Archive& archive, const char* installDir,
                             const std::string& errorFile) {
  const char* format = archive.compressed ? "cd %s; compress -d -c %s |  tar -xf - >%s   2>&1"
                                          : "cd %s; tar -xf %s  >%s 2>&1";
  return Format(format, installDir, archive.path.c_str(), errorFile.c_str());
}

/// Appends what a successful tar has printed to `message`, and deletes the file with it.
void TakeWarnings(const std::string& errorFile, TEVUnicodeString& message) {
  TEVFileInfo info;
  if (TEVGetFileInfo(errorFile.c_str(), &info) == 0 && info.size > 0) {
    const kwinst::InputFile file = kwinst::OpenForReading(errorFile.c_str());
    if (file != nullptr) {
      kwinst::ForEachLine<1024>(file.get(), [&message](char* line) {
        kwinst::CutNewline(line);
        message.Append(line);
        return true;
      });
    }
  }
  TEVDeleteFile(errorFile.c_str());
}

/// Appends the component's table of contents to that of the tree. A failure is reported at the end
/// of `message`.
bool AddToPresent(const char* componentName, const std::string& systemDir,
                  TEVUnicodeString& message) {
  std::string toc =
      kwinst::ControlFile(systemDir, std::string(componentName) + kwinst::kComponentTable);
  std::string present = kwinst::ControlFile(systemDir, kwinst::kPresent);
  TEVUnicodeString outcome;
  if (TEVInsUpdate(toc.data(), present.data(), &outcome) != -1) return true;
  message.Append(outcome);
  return false;
}

/// Writes what `command` prints to `log`.
void LogOutput(const std::string& command, TEVInstallLog& log) {
  const kwinst::ShellOutput output = kwinst::OpenShell(command);
  if (output == nullptr) return;
  kwinst::ForEachLine<1024>(output.get(), [&log](char* line) {
    log.WriteLogFile(line);
    return true;
  });
}

}  // namespace

int TEVInsTransferCAF(char* componentName, char* sourceDir, char* installDir, const char* osDir,
                      int languages, TEVUnicodeString& message) noexcept {
  if (componentName == nullptr || sourceDir == nullptr || installDir == nullptr) return -1;
  const kwinst::MessageFrame frame;
  const std::string errorFile = JoinPath(installDir, kwinst::kTarLog);
  Archive archive = kwinst::FindArchive(JoinPath(sourceDir, componentName));
  const std::string command = UnpackingCommand(archive, installDir, errorFile);

  int status = 0;
  if (kwinst::RunShell(command) != 0) {
    message = frame.Build("ErrCommandInterrupted", {command});
    status = -100;
  } else {
    TakeWarnings(errorFile, message);
    if (osDir != nullptr) TEVInsRemoveLang(installDir, osDir, componentName, languages);
    if (!AddToPresent(componentName, kwinst::SystemDir(installDir, osDir), message)) status = -100;
  }
  if (status != 0) WriteLogErrorTransfer(installDir, archive.path.data());
  return status;
}

void WriteLogErrorTransfer(char* dir, char* archive) noexcept {
  TEVInstallLog log(std::string(kwinst::kTransferLog).data());
  TEVUnicodeString unwanted;
  if (log.OpenLogFile(dir, unwanted) == -1) return;
  if (archive != nullptr) LogOutput(Format("sum -r %s", archive), log);
  LogOutput("df -k -i", log);
  log.CloseLogFile();
}

void TEVInsTransferLogInfo(char* dir, const char* componentName, TEVINSType type,
                           TEVInstallLog* log) noexcept {
  const std::string path = JoinPath(kwinst::SystemDir(dir, type == zeb2 ? nullptr : componentName),
                                    kwinst::kTransferLog);
  if (!kwinst::Exists(path)) return;
  if (log != nullptr) log->WriteLogFile(std::string("Filesystem information:\n").data());
  if (const kwinst::InputFile file = kwinst::OpenForReading(path.c_str()); file != nullptr) {
    kwinst::ForEachLine<2048>(file.get(), [log](char* line) {
      if (log != nullptr) log->WriteLogFile(line);
      return true;
    });
  }
  TEVDeleteFile(path.c_str());
}
