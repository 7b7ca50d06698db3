#include <kwinstutil/kwinstutil.h>

#include "commands.h"
#include "console.h"
#include "integrity.h"
#include "refusal.h"
#include "request.h"
#include "tree.h"

namespace {

/// Reports the damages of one system directory. True when there is none.
bool VerifySystem(const std::string& system_dir, bool sdk) {
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr) {
    Show("Nothing is installed in " + system_dir + ".");
    return false;
  }
  const Integrity integrity = CheckIntegrity(installed.get(), system_dir, sdk);
  const auto tell = integrity.status == 0 ? Say : Show;
  tell(system_dir + ":");
  if (!integrity.report.empty()) tell(integrity.report);
  tell(integrity.verdict);
  return integrity.status == 0;
}

}  // namespace

void Verify(const Options& options) {
  const Request request = RequestOf(options);
  bool intact = true;
  for (const std::string& dir : SystemDirs(request.target, request.os)) {
    intact = VerifySystem(dir, dir == request.target) && intact;
  }
  if (intact) return;
  throw Refusal("The installation in " + request.target +
                " is damaged. Put the files back with: kwbatch repair MEDIUM " + request.target +
                "\n");
}
