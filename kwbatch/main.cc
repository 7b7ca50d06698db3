// kwbatch: installs media without questions, through the public interface of libKWINSTUTIL.

#include <kwinstutil/dirs.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "interruption.h"
#include "json.h"
#include "log.h"
#include "options.h"
#include "refusal.h"
#include "removal.h"
#include "system_files.h"
#include "texts.h"

namespace {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {command::kInstall,
       {word::kMedium, word::kTarget, word::kMore},
       Install,
       Text("CommandInstall",
            "put every package of MEDIUM that TARGET does not have yet into TARGET"),
       "  kwbatch install /cdrom/ga /opt/suite --languages French,Japanese\n"
       "  kwbatch install /cdrom/ga /opt/suite --answers site.ini --log /var/log/suite.log\n"
       "  kwbatch install /cdrom/ga /cdrom/sp1 /cdrom/hf1 /opt/suite --commit\n"},
      {command::kCheck,
       {word::kMedium, word::kTarget},
       Check,
       Text("CommandCheck",
            "say whether MEDIUM may be installed on TARGET, or why not; writes nothing"),
       "  kwbatch check /cdrom/ga /opt/suite\n"
       "  kwbatch check /cdrom/ga /opt/suite --bb-port 20100 --save-answers site.ini\n"},
      {command::kVerify,
       {word::kTarget},
       Verify,
       Text("CommandVerify", "report each installed file that is missing or damaged"),
       "  kwbatch verify /opt/suite --os aix_a\n"},
      {command::kRepair,
       {word::kMedium, word::kTarget},
       Repair,
       Text("CommandRepair", "put back what is missing or damaged and should be as MEDIUM has it"),
       "  kwbatch repair /cdrom/ga /opt/suite\n"},
      {command::kServicePack,
       {word::kMedium, word::kTarget},
       ServicePack,
       Text("CommandServicePack",
            "set aside what the service pack replaces, and install it; it is pending then"),
       "  kwbatch service-pack /cdrom/sp1 /opt/suite\n"},
      {command::kCommit,
       {word::kTarget},
       Commit,
       Text("CommandCommit", "end the pending state; the service pack cannot be undone then"),
       "  kwbatch commit /opt/suite\n"},
      {command::kUndoServicePack,
       {word::kTarget},
       UndoServicePack,
       Text("CommandUndoServicePack",
            "take the latest service pack out again; TARGET is then as it was before"),
       "  kwbatch undo-service-pack /opt/suite\n"},
      {command::kHotFix,
       {word::kMedium, word::kTarget},
       HotFix,
       Text("CommandHotFix", "install a hot fix"),
       "  kwbatch hot-fix /cdrom/hotfix /opt/suite\n"},
      {command::kUndoHotFix,
       {word::kTarget},
       UndoHotFix,
       Text("CommandUndoHotFix", "take the latest hot fix out again"),
       "  kwbatch undo-hot-fix /opt/suite\n"},
      {command::kTasks,
       {word::kTarget},
       Tasks,
       Text("CommandTasks", "list the programs whose command line names TARGET"),
       "  kwbatch tasks /opt/suite --stop\n"},
      {command::kStatus,
       {word::kTarget},
       Status,
       Text("CommandStatus",
            "show what a tree or a medium holds, and whether the system's files still name it"),
       "  kwbatch status /opt/suite\n"
       "  kwbatch status /opt/suite --json\n"},
      {command::kRegister,
       {word::kTarget},
       RegisterTree,
       Text("CommandRegister", "register the ports and daemons of TARGET, also after it was moved"),
       "  kwbatch register /opt/suite\n"},
      {command::kLanguages,
       {word::kTarget, word::kMedium},
       Languages,
       Text("CommandLanguages", "add languages to what is installed"),
       "  kwbatch languages /opt/suite /cdrom/ga --add German\n"},
      {command::kOwner,
       {word::kTarget, word::kFiles},
       Owner,
       Text("CommandOwner",
            "show which packages bring a file; the last one is that whose content it should have"),
       "  kwbatch owner /opt/suite /opt/suite/aix_a/code/bin/TEVSession\n"},
      {command::kFiles,
       {word::kTarget, word::kPackage},
       Files,
       Text("CommandFiles", "list the files of a package"),
       "  kwbatch files /opt/suite Modeler\n"},
      {command::kUninstall,
       {word::kTarget},
       Uninstall,
       Text("CommandUninstall",
            "take the product out of TARGET, and its lines out of the system's files"),
       "  kwbatch uninstall /opt/suite --dry-run\n"
       "  kwbatch uninstall /opt/suite --stop\n"},
      {command::kEnvironment,
       {word::kSystem, word::kConfig},
       Environment,
       Text("CommandEnvironment",
            "print the path of the environment file that a configuration uses"),
       "  kwbatch environment /opt/suite/aix_a Suite.R12\n"},
  };
  return commands;
}

/// Runs the command in a directory of its own: the library and the programs of the product leave
/// files in the current directory, which may be anybody's.
void Run(const Options& options) {
  const bool json = options.Takes(option::kJson) && options.Has(option::kJson);
  if (json || options.Has(option::kQuiet)) BeQuiet();
  if (json) BeginReport(options.command().name.text);
  for (const WordName name : {word::kMedium, word::kTarget}) {
    if (options.Has(name)) SetField(name.field, options.Word(name));
  }
  if (options.Has(option::kScratch)) UseScratch(options.Text(option::kScratch));
  // A catalog's path may be relative to the user's directory. Any check reads the catalog.
  std::string here = ".";
  TEVUnicodeString unused;
  TEVInsCheckExistDir(here.data(), &unused);
  // The modes in a tree do not depend on the user.
  umask(S_IWGRP | S_IWOTH);
  TemporaryDirectory::DeleteLeftovers();
  const TemporaryDirectory own;
  const auto run = options.command().run;
  if (options.Has(word::kTarget) && run != Uninstall && run != Status && run != Tasks) {
    RequireNoRemoval(options.Word(word::kTarget));
  }
  if (chdir(own.path().c_str()) != 0) {
    throw Refusal(Text("TemporaryDirectoryNotEntered", "No temporary directory can be entered.\n"));
  }
  try {
    run(options);
  } catch (const NothingToDo& reason) {
    if (!options.Takes(option::kIfNeeded) || !options.Has(option::kIfNeeded)) throw;
    Say(reason.what());
  }
}

/// What to do after an interruption.
std::string HowToGoOn(const Options& options) {
  if (options.command().run != ServicePack) {
    return Text("RepeatCommand", "kwbatch was interrupted. Repeat the command to go on.");
  }
  return Text("RepeatOrUndo",
              "kwbatch was interrupted. Repeat the command to go on, or undo it with: kwbatch "
              "undo-service-pack {1}",
              {options.Word(word::kTarget)});
}

/// Says why kwbatch ends, and where more can be read. Returns the exit status.
int Report(const std::optional<Options>& options, const Refusal& refusal) {
  const bool interrupted = options && refusal.status == kRefused && IsInterrupted();
  const std::string reason = interrupted ? HowToGoOn(*options) : refusal.what();
  SetField("/error", reason.substr(0, reason.find_last_not_of('\n') + 1));
  Complain(reason);
  if (!LogPath().empty()) Complain(WhereLogIs());
  return refusal.status;
}

/// Returns the exit status.
int Try(int argc, char** argv) {
  std::optional<Options> options;
  try {
    options = Options::Parse(argc, argv, Commands());
    if (options) Run(*options);
    // Whoever reads the output or the log must not take a part of it for the whole.
    return AllIsPrinted() && AllIsLogged() ? kDone : kRefused;
  } catch (const UsageError& error) {
    SetField("/error", std::string(error.what()));
    Complain(Text("WrongUsage", "kwbatch: {1}\nSee kwbatch --help.", {error.what()}));
    return kWrongUsage;
  } catch (const Refusal& refusal) {
    return Report(options, refusal);
  } catch (const std::exception& error) {
    return Report(options, Refusal(error.what()));
  }
}

/// Does the work, and ends the report for a machine where one is wanted.
int Work(int argc, char** argv) {
  const int status = Try(argc, argv);
  if (!IsReporting()) return status;
  if (!LogPath().empty()) SetField("/log", LogPath());
  Show(FinishReport(status));
  return AllIsPrinted() ? status : kRefused;
}

}  // namespace

int main(int argc, char** argv) {
  UseCatalog("kwbatch");
  return RunInterruptibly([&] { return Work(argc, argv); });
}
