#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "answers.h"
#include "option_table.h"
#include "refusal.h"
#include "texts.h"
#include "usage.h"

namespace {

std::string ExitStatusHelp() {
  return Text(
      "HelpExitStatus",
      "Exit status: 0 done, 1 refused, failed or not wholly logged, 2 wrong usage, 3 nothing to "
      "do,\n"
      "4 done, but a program of the product has failed, 5 another kwbatch works on the target.");
}

/// What a command line gives, as CLI11 stores it.
struct CommandLine {
  std::map<std::string, std::string> words;  ///< behind the command, by name
  std::vector<std::string> files;            ///< behind them
  OptionValues values;
  std::string answers;       ///< the file of answers to read
  std::string save_answers;  ///< the one to write
};

template <typename Store>
CLI::Option* AddText(CLI::App* app, const std::string& name, const char* value,
                     const std::string& help, Store store) {
  const auto checked = [name, store](const std::string& text) {
    if (text.empty() || text.rfind("--", 0) == 0) throw CLI::ValidationError(NeedsValue(name));
    store(text);
  };
  return app->add_option_function<std::string>(name, checked, help)->type_name(value)->take_last();
}

void AddGroup(CLI::App* app, const OptionGroup& group, CommandLine& line) {
  for (const OptionSpec& option : group.options) {
    const std::string name = option.name.text;
    const auto store = [&line, name](const std::string& text) { line.values[name] = text; };
    CLI::Option* added =
        option.value != nullptr
            ? AddText(app, "--" + name, option.value, option.help, store)
            : app->add_flag_function(
                  "--" + name, [store](int64_t times) { store(times > 0 ? "yes" : "no"); },
                  option.help);
    added->group(group.title);
  }
}

/// The options that a file of answers cannot give.
void AddAnswerFiles(CLI::App* app, CommandLine& line) {
  AddText(app, "--answers", "FILE",
          Text("HelpAnswers", "take the options that are not given from this ini file"),
          [&line](const std::string& text) { line.answers = text; });
  AddText(app, "--save-answers", "FILE",
          Text("HelpSaveAnswers", "write the options to this ini file before all else"),
          [&line](const std::string& text) { line.save_answers = text; });
}

void SetWording(CLI::App& app) {
  // Also those of CLI11 and the files of answers, which no table has.
  app.option_defaults()->group(OptionGroups().front().title);
  app.set_help_flag("-h,--help", Text("HelpHelp", "print this help"));
  CLI::FormatterBase& help = *app.get_formatter();
  help.column_width(34);
  help.label("Usage", Text("HelpUsage", "Usage"));
  help.label("SUBCOMMAND", "COMMAND");
  help.label("Positionals", Text("HelpWords", "Words"));
  help.label("REQUIRED", "");
}

void AddCommand(CLI::App& app, const Command& command, CommandLine& line) {
  CLI::App* sub =
      app.add_subcommand(command.name.text, command.help)->group(Text("HelpCommands", "Commands"));
  // It does not take the group from the defaults.
  sub->get_help_ptr()->group(OptionGroups().front().title);
  for (const WordName word : command.words) {
    const auto store = [&line, word](const std::string& text) { line.words[word.text] = text; };
    const auto store_all = [&line](const std::vector<std::string>& all) { line.files = all; };
    CLI::Option* added =
        word.repeated
            ? sub->add_option_function<std::vector<std::string>>(word.text, store_all, HelpOf(word))
            : sub->add_option_function<std::string>(word.text, store, HelpOf(word));
    added->required(word.required)->type_name("");
  }
  for (const OptionGroup& group : OptionGroups()) {
    if (group.IsFor(command.name.text)) AddGroup(sub, group, line);
  }
  AddAnswerFiles(sub, line);
  sub->footer(Text("HelpExamples", "Examples:\n{1}\n{2}", {command.examples, ExitStatusHelp()}));
}

/// Throws a logic_error when the table of options names a command that does not exist.
void RequireTakers(const std::vector<Command>& commands) {
  for (const OptionGroup& group : OptionGroups()) {
    for (const CommandName taker : group.commands) {
      if (std::any_of(commands.begin(), commands.end(), [taker](const Command& command) {
            return std::strcmp(command.name.text, taker.text) == 0;
          })) {
        continue;
      }
      throw std::logic_error(std::string("there is no command ") + taker.text);
    }
  }
}

void AddCommands(CLI::App& app, const std::vector<Command>& commands, CommandLine& line) {
  SetWording(app);
  app.allow_extras()->require_subcommand(1);
  app.set_version_flag("--version", "kwbatch " KWBATCH_VERSION,
                       Text("HelpVersion", "print the version"));
  app.footer(Text("HelpMore", "kwbatch help COMMAND shows what a command takes.\n{1}",
                  {ExitStatusHelp()}));
  AddGroup(&app, OptionGroups().front(), line);
  AddAnswerFiles(&app, line);
  for (const Command& command : commands) AddCommand(app, command, line);
}

}  // namespace

std::optional<Options> Options::Parse(int count, char** arguments,
                                      const std::vector<Command>& commands) {
  CommandLine line;
  CLI::App app(::Text("HelpKwbatch", "Installs media of the suite without questions."), "kwbatch");
  RequireTakers(commands);
  AddCommands(app, commands, line);
  std::vector<std::string> words =
      WithoutHelpWord(std::vector<std::string>(arguments + 1, arguments + count), commands);
  RejectEmptyValues(words);
  // CLI11 takes them from the end.
  std::reverse(words.begin(), words.end());
  try {
    app.parse(words);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    RejectUnknown(app);
    throw UsageError(app.get_subcommands().empty() ? ::Text("WhichCommand", "which command?")
                                                   : error.what());
  }
  RejectUnknown(app);

  const std::string name = app.get_subcommands().front()->get_name();
  Options options(&*std::find_if(commands.begin(), commands.end(), [&name](const Command& command) {
    return command.name.text == name;
  }));
  options.words_ = line.words;
  options.files_ = line.files;
  if (!line.answers.empty()) line.values.merge(ReadAnswers(line.answers));
  options.Take(line.values);
  if (!line.save_answers.empty()) SaveAnswers(line.save_answers, line.values);
  options.MakePathsAbsolute();
  return options;
}

Options Options::ForMedium(const std::string& medium, const std::string& target) const {
  Options one = *this;
  one.words_ = {{word::kMedium.text, medium}, {word::kTarget.text, target}};
  one.files_.clear();
  return one;
}

bool Options::Takes(OptionName name) const {
  for (const OptionGroup& group : OptionGroups()) {
    if (!group.IsFor(command_->name.text)) continue;
    for (const OptionSpec& option : group.options) {
      if (std::strcmp(option.name.text, name.text) == 0) return true;
    }
  }
  return false;
}

bool Options::Has(OptionName name) const {
  if (Takes(name)) return values_.count(name.text) != 0;
  throw std::logic_error(std::string(command_->name.text) + " does not take --" + name.text);
}

void Options::MakePathsAbsolute() {
  std::vector<std::string*> paths;
  for (const OptionName name :
       {option::kScratch, option::kLog, option::kSatellite, option::kWithPack, option::kKeyring,
        option::kJavaHome, option::kK6, option::kDrx, option::kInformationPath,
        option::kInformationEnvPath}) {
    const auto value = values_.find(name.text);
    if (value != values_.end()) paths.push_back(&value->second);
  }
  if (Has(word::kMedium)) paths.push_back(&words_.at(word::kMedium.text));
  // With several media this is one of them.
  if (Has(word::kMedium) && !files_.empty()) paths.push_back(&words_.at(word::kTarget.text));
  for (std::string& file : files_) {
    if (std::filesystem::exists(file)) file = std::filesystem::absolute(file);
  }
  for (std::string* path : paths) {
    // What is no path at all is refused later, and "auto" looks for a Java home.
    if (path->empty() || path->front() == '-' || *path == kAuto) continue;
    *path = std::filesystem::absolute(*path);
  }
}

void Options::Take(const std::map<std::string, std::string>& values) {
  for (const OptionGroup& group : OptionGroups()) {
    if (!group.IsFor(command_->name.text)) continue;
    for (const OptionSpec& option : group.options) {
      const auto value = values.find(option.name.text);
      if (value == values.end()) continue;
      const bool is_no = option.value == nullptr && value->second == "no";
      if (!is_no) values_.insert(*value);
    }
  }
  for (const OptionGroup& group : OptionGroups()) {
    for (const OptionSpec& option : group.options) {
      if (values_.count(option.name.text) == 0) continue;
      if (option.value != nullptr && std::string(option.value) == "N") Number(option.name, 0);
      if (option.needs.text == nullptr || Has(option.needs)) continue;
      throw UsageError(
          ::Text("OptionNeedsOther", "--{1} needs --{2}", {option.name.text, option.needs.text}));
    }
  }
}

std::string Options::Text(OptionName name) const { return Has(name) ? values_.at(name.text) : ""; }

int Options::Number(OptionName name, int otherwise) const {
  if (!Has(name)) return otherwise;
  const std::string text = Text(name);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw UsageError(
        ::Text("OptionNeedsNumber", "--{1} needs a number, not \"{2}\"", {name.text, text}));
  }
  return number;
}
