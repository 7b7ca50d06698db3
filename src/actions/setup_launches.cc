#include <string>

#include "kwinstutil/actions.h"
#include "report/message.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::JoinPath;
using kwinst::MessageFrame;

namespace {

/// The options for the environment that `lpFile` and EnvDir.txt name. Empty if one of these files
/// cannot be read.
std::string EnvironmentOptions(const char* installDir, const std::string& lpFile) {
  char name[kwinst::kPathSize];
  char directory[kwinst::kPathSize];
  if (!kwinst::ReadFirstWord(JoinPath(installDir, lpFile), name, sizeof name) ||
      !kwinst::ReadFirstLine(JoinPath(installDir, kwinst::kEnvironmentPointer).c_str(), directory,
                             sizeof directory)) {
    return "";
  }
  return Format(" -env %s -direnv %s", name, directory);
}

/// The command that starts `program` with `arguments`.
std::string StartCommand(const char* installDir, const char* program, const char* arguments,
                         const std::string& lpFile) {
  return JoinPath(installDir, kwinst::kStarter) + Format(" -run \"%s %s\"", program, arguments) +
         EnvironmentOptions(installDir, lpFile);
}

}  // namespace

int TEVInsPalomirSetup(char* command, TEVUnicodeString* message) noexcept {
  if (command == nullptr) return -10;
  const MessageFrame frame;
  const int status = kwinst::RunShell(command) / 256;
  switch (status) {
    case 0:
      *message = frame.Build("PalomirSetupRC_0");
      break;
    case 1:
      *message = frame.Build("PalomirSetupRC_1", {command});
      break;
    case 2:
      *message = frame.Build("PalomirSetupRC_2", {command});
      break;
    default:
      *message = frame.Build("PalomirSetupDefault", {status});
  }
  return status;
}

int TEVInsNeedQDNUpdate(char* installDir) noexcept {
  return kwinst::Exists(kwinst::ControlFile(installDir, kwinst::kPeopleDataManifest)) &&
                 kwinst::Exists(kwinst::ProgramFile(installDir, kwinst::kPeopleDataUpdate))
             ? 1
             : 0;
}

int TEVInsQDNUpdate(char* installDir, TEVUnicodeString* message, char* /*extra*/) noexcept {
  const MessageFrame frame;
  const std::string command =
      StartCommand(installDir, kwinst::kPeopleDataUpdate, "-p -m", kwinst::kPeopleDataEnvironment) +
      ' ';
  const char* text = command.c_str();
  // Deliberate: this is the status of system(3) itself, not the exit status in it.
  const int status = kwinst::RunShell(command);
  if (status != 0) {
    *message = frame.Build("ErrDRXPeopleUpdateFailed", {text, status},
                           Format("Commande [%s] failed. rc= %d \n", text, status));
    return -1;
  }
  *message = frame.Build("CmdDRXPeopleUpdateSuccessful", {text},
                         Format("Commande [%s] was successful", text));
  return 1;
}

int TEVInsLaunchExe(char* installDir, const char* lpName, char* program, char* arguments,
                    TEVUnicodeString* message) noexcept {
  if (installDir == nullptr || lpName == nullptr || program == nullptr || arguments == nullptr) {
    return 0;
  }
  std::string command =
      StartCommand(installDir, program, arguments, std::string(lpName) + kwinst::kEnvironmentName);
  return TEVInsCommande(command.data(), message);
}
