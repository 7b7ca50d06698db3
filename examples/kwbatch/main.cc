// kwbatch: installs media without questions, through the public interface of libKWINSTUTIL.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>

#include "check.h"
#include "console.h"
#include "install.h"
#include "options.h"
#include "service_pack.h"
#include "settings.h"
#include "tasks.h"

namespace fs = std::filesystem;

namespace {

struct Command {
  const char* name;
  const char* words;  ///< what must follow the name
  void (*run)(const Options& options);
  const char* help;
};

constexpr Command kCommands[] = {
    {"install", "MEDIUM TARGET", Install,
     "put every package of MEDIUM that TARGET does not have yet into TARGET"},
    {"check", "MEDIUM TARGET", Check,
     "say whether MEDIUM may be installed on TARGET, or why not; writes nothing"},
    {"verify", "TARGET", Verify, "report each installed file that is missing or damaged"},
    {"service-pack", "MEDIUM TARGET", InstallServicePack,
     "set aside what the service pack replaces, and install it; it is pending then"},
    {"commit", "TARGET", Commit, "end the pending state; the service pack cannot be undone then"},
    {"undo-service-pack", "TARGET", UndoServicePack,
     "take the latest service pack out again; TARGET is then as it was before"},
    {"hot-fix", "MEDIUM TARGET", InstallHotFix, "install a hot fix"},
    {"tasks", "TARGET", ListTasks, "list the programs that run from TARGET"},
    {"environment", "TARGET CONFIG", PrintEnvironment,
     "print the path of the environment file that a configuration uses"},
};

void PrintHelp() {
  std::printf("Usage: kwbatch COMMAND WORDS... [OPTIONS]\n\n");
  for (const Command& command : kCommands) {
    std::printf("  %s %s\n      %s\n", command.name, command.words, command.help);
  }
  std::printf("%s\nExit status: 0 done, 1 refused or failed, 2 wrong usage.\n",
              Options::Help().c_str());
}

/// Puts the library into its development mode: system files and log come from `dir`.
/// Missing files of the system are made there as copies.
void UseScratch(const std::string& dir) {
  if (!fs::is_directory(dir)) throw Refusal("The directory " + dir + " does not exist.\n");
  for (const std::string name : {"services", "inetd.conf"}) {
    std::error_code ignored;
    if (!fs::exists(dir + "/" + name)) fs::copy_file("/etc/" + name, dir + "/" + name, ignored);
    AppendToFile(dir + "/" + name, "");
  }
  setenv("VRK_ODT_IN", "1", 1);
  setenv("VRK_ODT_OUT", "1", 1);
  setenv("VRK_ODT_TMP", dir.c_str(), 1);
}

size_t CountWords(const std::string& text) {
  return 1 + static_cast<size_t>(std::count(text.begin(), text.end(), ' '));
}

void Run(const Options& options) {
  if (options.Has("help")) return PrintHelp();
  if (options.Has("scratch")) UseScratch(options.Text("scratch"));
  const std::string name = options.words().empty() ? "" : options.words()[0];
  for (const Command& command : kCommands) {
    if (name != command.name) continue;
    if (options.words().size() - 1 != CountWords(command.words)) {
      throw UsageError(name + " needs " + command.words);
    }
    return command.run(options);
  }
  throw UsageError("no command \"" + name + "\"");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(Options(argc, argv));
    // Whoever reads the output must not take a part of it for the whole.
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "kwbatch: %s; see kwbatch --help\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
}
