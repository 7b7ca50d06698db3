#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVFile.h>

#include <cstring>
#include <string>

#include "kwinstutil/dirs.h"
#include "kwinstutil/env.h"
#include "kwinstutil/ports.h"
#include "ports/free_port.h"
#include "report/message.h"
#include "support/environment_entry.h"
#include "support/format.h"
#include "support/tree_paths.h"

using kwinst::EnvironmentEntry;
using kwinst::Format;
using kwinst::MessageFrame;
using kwinst::Publish;

namespace {

constexpr int kShortestTimeout = 2;
constexpr int kLongestTimeout = 35700;

char k6_panel_entry[] = "PORTAL_K6PANEL=1";

}  // namespace

char EnvMSPath[1024];
char EnvShWBPath[1024];
char EnvPublishPath[1024];
char EnvJavaHome[1024];
char tev_to_install[20];
char tev_cust[1024];
char tev_versionlib[1024];
char drx_to_install[20];
char drx_cust[1024];
char varTCKMode[128];
char varTCKServerName[128];
char varTCKServerPort[128];
char varTCKBoot[128];
char EnvMorvelInfo[32];
char EnvMorvelEnvName[256];
char EnvMorvelInfoPath[1024];
char EnvMorvelInfoEnvPath[1024];
char TimeoutEnv[128];
char* portal_k6panel = k6_panel_entry;
int EnvJava;
int TCKBootInit;

namespace {

/// The entry of a setting. If the value is null, it is empty, and nothing is exported.
std::string Entry(const char* key, const char* value) {
  return value == nullptr ? "" : std::string(key) + '=' + value;
}

void AppendTo(TEVUnicodeString* message, const TEVUnicodeString& text) {
  if (message != nullptr) message->Append(text);
}

/// Exports a data directory as it is given, unless it is null. Returns false if it is refused.
template <size_t Size>
bool ExportDirectory(char (&buffer)[Size], const char* key, const char* path,
                     const MessageFrame& frame, TEVUnicodeString* message) {
  if (path == nullptr) return true;
  TEVUnicodeString dir = path;
  TEVUnicodeString syntax_message;
  if (TEVInsCheckSyntaxDir(&dir, &syntax_message) != 0) {
    AppendTo(message, syntax_message);
    return false;
  }
  const EnvironmentEntry entry(buffer, Entry(key, path));
  if (!entry.fits()) return false;
  std::string copy = path;
  char examined[kwinst::kPathSize] = "";
  if (TEVInsCheckAccessDir(copy.data(), examined) != 0) {
    AppendTo(message, frame.Build("ErrWndNoWriteDir", {examined}));
    return false;
  }
  return Publish({entry});
}

/// Are the directories of the trees that are installed directories? Reports each that is not.
bool CheckTrees(bool k6, char* k6CustDir, bool drx, char* drxCustDir, TEVUnicodeString* message) {
  const MessageFrame frame;
  const bool k6_refused = k6 && CheckDir(k6CustDir) == -1;
  if (k6_refused) *message = frame.Build("ErrWndK6IsNotaDir", {k6CustDir});
  const bool drx_refused = drx && CheckDir(drxCustDir) == -1;
  if (drx_refused) {
    const TEVUnicodeString text = frame.Build("ErrWndK6IsNotaDir", {drxCustDir});
    if (k6_refused) {
      message->Append(text);
    } else {
      *message = text;
    }
  }
  return !k6_refused && !drx_refused;
}

/// May the TCK server be reached by that name and on that port? Reports a failure.
bool CheckServer(const char* name, int port, bool port_checked, TEVUnicodeString* message) {
  const MessageFrame frame;
  if (name[0] == '\0') {
    *message = frame.Build("ErrWndTCKServerName");
    return false;
  }
  if (port_checked) return true;
  return kwinst::IsPortFree(port, kwinst::kHighestPort, message, [&](int next) {
    return frame.Build("ErrWndTCKPortNotFree", {port, next});
  });
}

}  // namespace

int ExportDataDirectories(char* metasearchPath, char* sharedWorkbookPath, char* publishPath,
                          TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const bool exported[] = {
      ExportDirectory(EnvMSPath, "TEVMetasearchPath", metasearchPath, frame, message),
      ExportDirectory(EnvShWBPath, "TEVSharedWorkbookPath", sharedWorkbookPath, frame, message),
      ExportDirectory(EnvPublishPath, "TEVW3PublishPath", publishPath, frame, message)};
  return exported[0] && exported[1] && exported[2] ? 1 : -1;
}

int ExportJavaHome(char* javaHome, TEVUnicodeString* /*message*/) noexcept {
  return Publish({{EnvJavaHome, Entry("JAVA_HOME", javaHome == nullptr ? "" : javaHome)}}) ? 1 : -1;
}

int ExportK6(int installK6, char* k6CustDir, int k6LibraryChoice, int installDrx, char* drxCustDir,
             TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const bool k6 = installK6 == 1;
  const bool drx = installDrx == 1;
  if (!CheckTrees(k6, k6CustDir, drx, drxCustDir, message)) return -1;

  const char* library = k6LibraryChoice == 1 ? "libK623" : "libK6243";
  const bool exported = Publish({EnvironmentEntry(portal_k6panel),
                                 {tev_cust, Entry("TEV_CUST", k6 ? k6CustDir : nullptr)},
                                 {tev_versionlib, Entry("PORTAL_LIBK6", k6 ? library : nullptr)},
                                 {tev_to_install, Entry("TEV_TO_INSTALL", k6 ? "YES" : "NO")},
                                 {drx_cust, Entry("DRX_CUST", drx ? drxCustDir : nullptr)},
                                 {drx_to_install, Entry("DRX_TO_INSTALL", drx ? "YES" : "NO")}});
  return exported ? 1 : -1;
}

int ExportTCK(char* mode, char* serverName, int port, int bootInit, TEVUnicodeString* message,
              int portAlreadyChecked) noexcept {
  if (message == nullptr || mode == nullptr || serverName == nullptr) return -1;
  if (std::strcmp(mode, "NoServer") != 0 &&
      !CheckServer(serverName, port, portAlreadyChecked != 0, message)) {
    return -1;
  }
  const bool exported = Publish({{varTCKMode, Entry("TCK_Mode", mode)},
                                 {varTCKServerName, Entry("TCK_ServerName", serverName)},
                                 {varTCKServerPort, Format("TCK_ServerPort=%d", port)},
                                 {varTCKBoot, Entry("TCK_BootInit", bootInit == 1 ? "1" : "0")}});
  return exported ? 1 : -1;
}

int ExportMorvelInfo(int information, char* unloadPath, char* envPath, char* envName,
                     TEVUnicodeString* /*message*/) noexcept {
  if (information == 0) return Publish({{EnvMorvelInfo, "MORVEL_INFORMATION=NO"}}) ? 1 : -1;
  const bool exported = Publish({{EnvMorvelInfo, "MORVEL_INFORMATION=YES"},
                                 {EnvMorvelEnvName, Entry("K7_ENV_NAME", envName)},
                                 {EnvMorvelInfoPath, Entry("K7_UNLOAD_PATH", unloadPath)},
                                 {EnvMorvelInfoEnvPath, Entry("K7_ENV_PATH", envPath)}});
  return exported ? 1 : -1;
}

int ExportServersTimeout(int minutes, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  if (minutes >= kShortestTimeout && minutes <= kLongestTimeout) {
    return Publish({{TimeoutEnv, Format("SERVERS_TIMEOUT=%d", minutes)}}) ? 1 : -1;
  }
  if (message != nullptr) {
    const std::string text = Format(
        "Incorrect timeout value : %d. Timeout value can range from 2 to 35700 minutes\n", minutes);
    *message = frame.Build("ErrWndTimeout", {minutes}, text);
  }
  return -1;
}

int CheckDir(char* path) noexcept {
  if (!kwinst::Exists(path)) return -1;
  // Deliberate: the directory stays open.
  TEVDirectory directory = nullptr;
  return TEVOpenDirectory(path, &directory) == 0 ? 1 : -1;
}
