// kwbatch: installs media without questions, through the public interface of libKWINSTUTIL.

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "check.h"
#include "console.h"
#include "files.h"
#include "install.h"
#include "log.h"
#include "options.h"
#include "paths.h"
#include "refusal.h"
#include "service_pack.h"
#include "settings.h"
#include "tasks.h"

namespace fs = std::filesystem;

namespace {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"install",
       {"MEDIUM", "TARGET"},
       Install,
       "put every package of MEDIUM that TARGET does not have yet into TARGET",
       "  kwbatch install /cdrom/ga /opt/suite --languages French,Japanese\n"
       "  kwbatch install /cdrom/ga /opt/suite --answers site.ini --log /var/log/suite.log\n"},
      {"check",
       {"MEDIUM", "TARGET"},
       Check,
       "say whether MEDIUM may be installed on TARGET, or why not; writes nothing",
       "  kwbatch check /cdrom/ga /opt/suite\n"
       "  kwbatch check /cdrom/ga /opt/suite --bb-port 20100 --save-answers site.ini\n"},
      {"verify",
       {"TARGET"},
       Verify,
       "report each installed file that is missing or damaged",
       "  kwbatch verify /opt/suite --os aix_a\n"},
      {"service-pack",
       {"MEDIUM", "TARGET"},
       InstallServicePack,
       "set aside what the service pack replaces, and install it; it is pending then",
       "  kwbatch service-pack /cdrom/sp1 /opt/suite\n"},
      {"commit",
       {"TARGET"},
       Commit,
       "end the pending state; the service pack cannot be undone then",
       "  kwbatch commit /opt/suite\n"},
      {"undo-service-pack",
       {"TARGET"},
       UndoServicePack,
       "take the latest service pack out again; TARGET is then as it was before",
       "  kwbatch undo-service-pack /opt/suite\n"},
      {"hot-fix",
       {"MEDIUM", "TARGET"},
       InstallHotFix,
       "install a hot fix",
       "  kwbatch hot-fix /cdrom/hotfix /opt/suite\n"},
      {"tasks",
       {"TARGET"},
       ListTasks,
       "list the programs whose command line names TARGET",
       "  kwbatch tasks /opt/suite --stop\n"},
      {"environment",
       {"SYSTEM", "CONFIG"},
       PrintEnvironment,
       "print the path of the environment file that a configuration uses",
       "  kwbatch environment /opt/suite/aix_a Suite.R12\n"},
  };
  return commands;
}

/// Puts the library into its development mode: system files and log come from `dir`.
/// Missing files of the system are made there as copies.
void UseScratch(const std::string& dir) {
  RequirePlainPath("directory", dir);
  if (!fs::is_directory(dir)) throw Refusal("The directory " + dir + " does not exist.\n");
  for (const std::string name : {"services", "inetd.conf"}) {
    // An interrupted run has left the file under this name.
    if (!fs::exists(dir + "/" + name) && fs::exists(dir + "/" + name + ".tmp")) continue;
    std::error_code ignored;
    if (!fs::exists(dir + "/" + name)) fs::copy_file("/etc/" + name, dir + "/" + name, ignored);
    AppendToFile(dir + "/" + name, "");
  }
  setenv("VRK_ODT_IN", "1", 1);
  setenv("VRK_ODT_OUT", "1", 1);
  setenv("VRK_ODT_TMP", dir.c_str(), 1);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (const auto options = Options::Parse(argc, argv, Commands())) {
      if (options->Has("quiet")) BeQuiet();
      if (options->Has("scratch")) UseScratch(options->Text("scratch"));
      options->RunCommand();
    }
    // Whoever reads the output or the log must not take a part of it for the whole.
    return AllIsPrinted() && AllIsLogged() ? 0 : 1;
  } catch (const UsageError& error) {
    Complain(std::string("kwbatch: ") + error.what() + "\nSee kwbatch --help.");
    return 2;
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
}
