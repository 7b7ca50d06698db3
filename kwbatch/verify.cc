#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "integrity.h"
#include "interruption.h"
#include "lock.h"
#include "log.h"
#include "refusal.h"
#include "request.h"
#include "texts.h"
#include "tree.h"

namespace {

/// Reports and logs the damages of one system directory. True when it is intact.
bool VerifySystem(const std::string& system_dir, bool sdk, Log* log) {
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr) {
    Show(NothingInstalled(system_dir));
    return false;
  }
  const Integrity integrity = CheckIntegrity(installed.get(), system_dir, sdk);
  const auto tell = integrity.status == 0 ? Say : Show;
  tell(system_dir + ":");
  if (!integrity.report.empty()) tell(integrity.report);
  tell(integrity.verdict);
  if (log != nullptr) log->Write(system_dir + ":\n" + integrity.report + integrity.verdict);
  return integrity.status == 0;
}

/// Null when there can be no log: a tree may be verified that this user may only read.
std::unique_ptr<Log> OpenLog(const Request& request) {
  try {
    return std::make_unique<Log>(request.log,
                                 Text("LogVerification", "verification of {1}", {request.target}));
  } catch (const Refusal& reason) {
    Complain(Text("NotLogged", "Warning: this is not logged. {1}", {reason.what()}));
    return nullptr;
  }
}

}  // namespace

void Verify(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kReading, request);
  const std::vector<std::string> dirs = SystemDirs(request.target, request.os);
  const auto log = OpenLog(request);
  bool intact = true;
  for (const std::string& dir : dirs) {
    SafePoint();
    intact = VerifySystem(dir, dir == request.target, log.get()) && intact;
  }
  SafePoint();
  if (intact && log != nullptr) log->Succeeded();
  if (intact) return;
  throw Refusal(Text(
      "InstallationDamaged",
      "The installation in {1} is damaged. Put the files back with: kwbatch repair MEDIUM {1}\n",
      {request.target}));
}
