// kwmedium: makes, checks and signs media of the suite.

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "builder.h"
#include "kwbatch/console.h"
#include "kwbatch/deep_check.h"
#include "kwbatch/files.h"
#include "kwbatch/formats.h"
#include "kwbatch/interruption.h"
#include "kwbatch/refusal.h"
#include "product_list.h"
#include "sign.h"
#include "staging.h"
#include "update.h"

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 done, 1 refused, failed or faults found, 2 wrong usage.";

/// What a command line gives.
struct CommandLine {
  bool quiet = false;
  bool gzip = false;
  bool zstd = false;
  std::string list;
  std::string key;
  UpdateRequest update;

  Packing packing() const {
    return gzip ? Packing::kGzip : zstd ? Packing::kZstd : Packing::kCompress;
  }
};

void Product(const CommandLine& line) {
  const std::string& medium = line.update.medium;
  const Staging staging(medium);
  BuildMedium(ReadProductList(line.list, line.packing()), staging);
  Say(medium + " is made.");
}

template <void (*make)(const UpdateRequest&)>
void Update(const CommandLine& line) {
  UpdateRequest request = line.update;
  request.packing = line.packing();
  make(request);
  Say(request.medium + " is made.");
}

void Sign(const CommandLine& line) {
  SignMedium(line.update.medium, line.key);
  Say(line.update.medium + " is signed.");
}

void Check(const CommandLine& line) {
  const std::string& medium = line.update.medium;
  if (Exists(medium) && !Exists(medium + "/" + kSignature)) Say(medium + " is not signed.");
  RequireNoFaults(medium);
}

CLI::App* AddCommand(CLI::App& app, CommandLine& line, const char* name, const char* help,
                     const std::string& examples) {
  CLI::App* command = app.add_subcommand(name, help)->group("Commands");
  command->add_flag("--quiet", line.quiet, "print nothing but what was asked for and failures");
  command->footer("Examples:\n" + examples + "\n" + kExitStatus);
  return command;
}

void OnRun(CLI::App* command, const CommandLine& line, void (*run)(const CommandLine&)) {
  command->callback([&line, run] {
    if (line.quiet) BeQuiet();
    run(line);
  });
}

void AddText(CLI::App* command, const char* name, std::string& text, const char* value,
             const char* help, bool required = false) {
  command->add_option(name, text, help)->type_name(value)->required(required);
}

void AddMedium(CLI::App* command, CommandLine& line, const char* name, const char* help) {
  command->add_option(name, line.update.medium, help)->required()->type_name("");
}

void AddPacking(CLI::App* command, CommandLine& line) {
  CLI::Option* gzip =
      command->add_flag("--gzip", line.gzip, "archives for targets that have GNU tar, by gzip");
  command->add_flag("--zstd", line.zstd, "the same, by zstd")->excludes(gzip);
}

void AddSystem(CLI::App* command, CommandLine& line) {
  AddText(command, "--os", line.update.os, "NAME",
          "one operating system only; that of a directory without a table");
  AddText(command, "--ga", line.update.ga, "LEVEL",
          "general-availability level of a directory without a table");
}

void AddProduct(CLI::App& app, CommandLine& line) {
  CLI::App* command = AddCommand(app, line, "product", "make a medium from a list of directories",
                                 "  kwmedium product suite.list /release/ga\n");
  command->add_option("LIST", line.list, "lines of a table, each with the key from=DIR")
      ->required()
      ->type_name("");
  AddMedium(command, line, "OUTDIR", "directory of the medium; must not exist, or be empty");
  AddPacking(command, line);
  OnRun(command, line, Product);
}

void AddServicePack(CLI::App& app, CommandLine& line) {
  UpdateRequest& update = line.update;
  CLI::App* command = AddCommand(
      app, line, "service-pack", "pack what is new or has changed between two media or trees",
      "  kwmedium service-pack --from /release/ga --to /release/ga+2 --name SP2 --level 2 "
      "/release/sp2\n");
  AddMedium(command, line, "OUTDIR", "directory of the medium; must not exist, or be empty");
  AddText(command, "--from", update.from, "DIR", "the former state", true);
  AddText(command, "--to", update.to, "DIR", "the new state", true);
  AddText(command, "--name", update.name, "NAME", "name of the pack", true);
  AddText(command, "--level", update.level, "N", "level of the pack", true);
  command->add_option("--post", update.post_programs, "post-installation program; may be repeated")
      ->type_name("FILE")
      ->allow_extra_args(false);
  AddSystem(command, line);
  command->add_flag("--leave-removed", update.leave_removed,
                    "leave files that the new state does not have");
  command->add_flag("--leave-languages", update.leave_languages,
                    "leave changed files of a language");
  AddPacking(command, line);
  OnRun(command, line, Update<MakeServicePack>);
}

void AddHotFix(CLI::App& app, CommandLine& line) {
  UpdateRequest& update = line.update;
  CLI::App* command = AddCommand(
      app, line, "hot-fix", "pack files of a medium or a tree for one service pack",
      "  kwmedium hot-fix --from /build/suite --name HF1 --pack SP1 --pack-level 1 /release/hf1 "
      "code/bin/TEVModeler\n");
  AddMedium(command, line, "OUTDIR", "directory of the medium; must not exist, or be empty");
  command->add_option("FILE", update.files, "paths below the system directory")
      ->required()
      ->type_name("");
  AddText(command, "--from", update.from, "DIR", "where the files are", true);
  AddText(command, "--name", update.name, "NAME", "name of the hot fix", true);
  AddText(command, "--level", update.level, "N", "level of the hot fix, 1 if not given");
  AddText(command, "--pack", update.pack, "NAME", "the service pack that it is for", true);
  AddText(command, "--pack-level", update.pack_level, "N", "level of that pack", true);
  AddSystem(command, line);
  AddPacking(command, line);
  OnRun(command, line, Update<MakeHotFix>);
}

void AddCommands(CLI::App& app, CommandLine& line) {
  app.set_help_flag("-h,--help", "print this help");
  CLI::FormatterBase& help = *app.get_formatter();
  help.column_width(34);
  help.label("SUBCOMMAND", "COMMAND");
  help.label("Positionals", "Words");
  help.label("REQUIRED", "");
  app.require_subcommand(1);
  app.set_version_flag("--version", "kwmedium " KWMEDIUM_VERSION, "print the version");
  app.footer(std::string("kwmedium COMMAND --help shows what a command takes.\n") + kExitStatus);
  AddProduct(app, line);
  AddServicePack(app, line);
  AddHotFix(app, line);
  CLI::App* check = AddCommand(app, line, "check", "find faults of a medium; writes nothing",
                               "  kwmedium check /release/ga\n");
  AddMedium(check, line, "MEDIUM", "directory of the medium");
  OnRun(check, line, Check);
  CLI::App* sign = AddCommand(app, line, "sign", "write the checksums of a medium, and sign them",
                              "  kwmedium sign /release/ga --key releases@example.com\n");
  AddMedium(sign, line, "MEDIUM", "directory of the medium");
  AddText(sign, "--key", line.key, "ID", "gpg's name of the key", true);
  OnRun(sign, line, Sign);
}

int Run(int argc, char** argv) {
  CommandLine line;
  CLI::App app("Makes, checks and signs media of the suite.", "kwmedium");
  try {
    AddCommands(app, line);
    app.parse(argc, argv);
    return AllIsPrinted() ? kDone : kRefused;
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    Complain(std::string("kwmedium: ") + error.what() + "\nSee kwmedium --help.");
    return kWrongUsage;
  } catch (const std::exception& error) {
    Complain(error.what());
    return kRefused;
  }
}

}  // namespace

int main(int argc, char** argv) {
  // What others may read on the medium does not depend on who makes it.
  umask(S_IWGRP | S_IWOTH);
  return RunInterruptibly([=] { return Run(argc, argv); });
}
