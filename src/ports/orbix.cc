#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVProcess.h>

#include <memory>
#include <new>
#include <string>

#include "kwinstutil/ports.h"
#include "ports/free_port.h"
#include "report/message.h"
#include "support/environment_entry.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::JoinPath;
using kwinst::kLowestPort;
using kwinst::MessageFrame;

char varOrbixPort[128];
char varOrbixBase[128];
char varOrbixRange[128];
char varOrbixBoot[128];

namespace {

constexpr int kHighestDaemonPort = 49151;
constexpr int kHighestBase = 65485;
constexpr int kSmallestRange = 50;
constexpr int kEnd = kwinst::kHighestPort + 1;

/// The two entries of a restart, as long as they need to be; see PublishAtAnyLength.
char* config_entry = nullptr;
char* library_entry = nullptr;

/// Puts `entry` into the environment in a buffer of its own. The earlier buffer, `held`, is freed
/// only when the environment no longer points to it.
void PublishAtAnyLength(const std::string& entry, char*& held) {
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[entry.size() + 1]);
  if (buffer == nullptr || !kwinst::CopyWhole(entry, buffer.get(), entry.size() + 1)) return;
  if (TEVPutEnv(buffer.get()) != 0) return;
  delete[] held;
  held = buffer.release();
}

}  // namespace

int TEVInsCheckOrbixValue(int port, int base, int range, int boot,
                          TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  const auto refuse = [message](const TEVUnicodeString& text) {
    *message = text;
    return 0;
  };
  // The limits in the messages are the nearest values that are refused.
  if (port < kLowestPort) {
    return refuse(frame.Build("ErrBadOrbixPort1", {port, kLowestPort - 1}));
  }
  if (port > kHighestDaemonPort) {
    return refuse(frame.Build("ErrBadOrbixPort2", {port, kHighestDaemonPort + 1}));
  }
  if (base < kLowestPort) {
    return refuse(frame.Build("ErrBadServerBase1", {base, kLowestPort - 1}));
  }
  if (base > kHighestBase) {
    return refuse(frame.Build("ErrBadServerBase2", {base, kHighestBase + 1}));
  }
  if (range < kSmallestRange) {
    return refuse(frame.Build("ErrBadServerRange1", {range, kSmallestRange - 1}));
  }
  if (range >= kEnd - base) {
    return refuse(frame.Build("ErrBadServerRange2", {range, kEnd - base}));
  }
  const auto taken = [&](int next) { return frame.Build("ErrWndOrbixPortNotFree", {port, next}); };
  if (!kwinst::IsPortFree(port, kHighestDaemonPort, message, taken)) return 0;
  if (port >= base) {
    return refuse(frame.Build("ErrWndOrbixServerBase", {base, port}));
  }
  const bool exported =
      kwinst::Publish({{varOrbixPort, Format("ORBIX_ItDaemonPort=%d", port)},
                       {varOrbixBase, Format("ORBIX_ItDaemonServerBase=%d", base)},
                       {varOrbixRange, Format("ORBIX_ItDaemonServerRange=%d", range)},
                       {varOrbixBoot, boot == 1 ? "ORBIX_BootInit=1" : "ORBIX_BootInit=0"}});
  return exported ? 1 : 0;
}

int IsOrbixRunning(char* installDir) noexcept {
  std::string path = kwinst::ProgramFile(installDir, kwinst::kOrbQuery);
  char* const arguments[] = {path.data(), nullptr};
  int process = 0;
  int status = 0;
  const int started = TEVStartProcess(path.c_str(), arguments, 1, &process, &status);
  return started != -1 && status == 0 ? 1 : 0;
}

int TEVInsRestartOrbix(char* installDir) noexcept {
  PublishAtAnyLength("IT_CONFIG_PATH=" + JoinPath(installDir, kwinst::kOrbConfigDir), config_entry);
  const std::string daemon = kwinst::ProgramFile(installDir, kwinst::kOrbDaemon);
  const std::string command =
      Format("DISPLAY=`uname -n`:0 ; export DISPLAY ;cd %s;%s -u -s -t > /dev/null &", installDir,
             daemon.c_str());

  std::string libraries = "LD_LIBRARYN32_PATH=" + JoinPath(installDir, kwinst::kOrbLibraryDir);
  // Set but empty, the variable still gets its colon.
  const char* before = TEVGetEnv("LD_LIBRARYN32_PATH");
  if (before != nullptr) libraries.append(":").append(before);
  PublishAtAnyLength(libraries, library_entry);

  kwinst::RunShell(command);
  return 0;
}
