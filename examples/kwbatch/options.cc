#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iterator>

#include "answers.h"
#include "nearest.h"
#include "option_table.h"

namespace {

constexpr const char* kExitStatus = "Exit status: 0 done, 1 refused or failed, 2 wrong usage.";

/// Gives `app` the options of a group.
void AddGroup(CLI::App* app, const OptionGroup& group, OptionValues& values) {
  for (const OptionSpec& option : group.options) {
    const std::string name = option.name;
    if (option.value == nullptr) {
      app->add_flag_callback(
             "--" + name, [&values, name] { values[name] = ""; }, option.help)
          ->group(group.title);
      continue;
    }
    const auto store = [&values, name](const std::string& text) {
      if (text.empty()) throw CLI::ValidationError("--" + name, "needs a value");
      values[name] = text;
    };
    app->add_option_function<std::string>("--" + name, store, option.help)
        ->type_name(option.value)
        ->group(group.title)
        ->take_last();
  }
}

/// Options about files of answers, which such a file cannot give.
struct AnswerFiles {
  std::string read;
  std::string save;

  void AddTo(CLI::App* app) {
    app->add_option("--answers", read, "take the options that are not given from this ini file")
        ->type_name("FILE")
        ->take_last();
    app->add_option("--save-answers", save, "write the options to this ini file before all else")
        ->type_name("FILE")
        ->take_last();
  }
};

void SetWording(CLI::App& app) {
  app.set_help_flag("-h,--help", "print this help");
  CLI::FormatterBase& help = *app.get_formatter();
  help.column_width(34);
  help.label("SUBCOMMAND", "COMMAND");
  help.label("Positionals", "Words");
  help.label("REQUIRED", "");
}

const char* HelpForWord(const std::string& word) {
  if (word == "MEDIUM") return "directory with the table of contents and the archives";
  if (word == "TARGET") return "directory of the installation";
  return "name of a configuration";
}

void AddCommand(CLI::App& app, const Command& command, std::vector<std::string>& words,
                OptionValues& values, AnswerFiles& answer_files) {
  CLI::App* sub = app.add_subcommand(command.name, command.help)->group("Commands");
  for (const char* word : command.words) {
    const auto store = [&words](const std::string& text) { words.push_back(text); };
    sub->add_option_function<std::string>(word, store, HelpForWord(word))
        ->required()
        ->type_name("");
  }
  for (const OptionGroup& group : OptionGroups()) {
    if (group.IsFor(command.name)) AddGroup(sub, group, values);
  }
  answer_files.AddTo(sub);
  sub->footer(std::string("Examples:\n") + command.examples + "\n" + kExitStatus);
}

/// The names of all options and commands that are known where `app` stands.
std::vector<std::string> KnownTo(const CLI::App& app, bool options) {
  std::vector<std::string> known;
  if (!options) {
    for (const CLI::App* sub : app.get_subcommands({})) known.push_back(sub->get_name());
    return known;
  }
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_lnames().empty()) known.push_back("--" + option->get_lnames().front());
  }
  return known;
}

/// Throws a UsageError for the first option, or else the first word, that CLI11 had no use for.
void RejectUnknown(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  const CLI::App& where = chosen.empty() ? app : *chosen.front();
  const std::vector<std::string> unknown = app.remaining(true);
  if (unknown.empty()) return;
  const auto option = std::find_if(unknown.begin(), unknown.end(), [](const std::string& text) {
    return text.size() > 1 && text[0] == '-';
  });
  if (option != unknown.end()) {
    const std::string name = option->substr(0, option->find('='));
    const std::string of = chosen.empty() ? "" : where.get_name() + " has ";
    throw UsageError(of + "no option " + name + DidYouMean(name, KnownTo(where, true)));
  }
  if (!chosen.empty())
    throw UsageError(where.get_name() + " has no use for \"" + unknown[0] + "\"");
  throw UsageError("no command \"" + unknown[0] + "\"" +
                   DidYouMean(unknown[0], KnownTo(where, false)));
}

}  // namespace

std::optional<Options> Options::Parse(int count, char** arguments,
                                      const std::vector<Command>& commands) {
  CLI::App app("Installs media of the suite without questions.", "kwbatch");
  SetWording(app);
  app.allow_extras()->require_subcommand(1);
  app.set_version_flag("--version", "kwbatch " KWBATCH_VERSION, "print the version");
  app.footer(std::string("kwbatch COMMAND --help shows what a command takes.\n") + kExitStatus);
  std::vector<std::string> words;
  OptionValues values;
  AnswerFiles answer_files;
  AddGroup(&app, OptionGroups().front(), values);
  answer_files.AddTo(&app);
  for (const Command& command : commands) AddCommand(app, command, words, values, answer_files);
  try {
    app.parse(count, arguments);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    RejectUnknown(app);
    throw UsageError(app.get_subcommands().empty() ? "which command?" : error.what());
  }
  RejectUnknown(app);

  const std::string name = app.get_subcommands().front()->get_name();
  Options options(&*std::find_if(commands.begin(), commands.end(),
                                 [&name](const Command& command) { return command.name == name; }));
  options.words_.insert(options.words_.end(), words.begin(), words.end());
  options.values_ = std::move(values);
  if (!answer_files.read.empty()) options.values_.merge(ReadAnswers(answer_files.read, name));
  if (!answer_files.save.empty()) SaveAnswers(answer_files.save, options.values_);
  return options;
}

std::string Options::Text(const std::string& name) const {
  const auto value = values_.find(name);
  return value == values_.end() ? "" : value->second;
}

int Options::Number(const std::string& name, int otherwise) const {
  if (!Has(name)) return otherwise;
  const std::string text = Text(name);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw UsageError("--" + name + " needs a number, not \"" + text + "\"");
  }
  return number;
}

void Options::RequireWith(const std::string& lead, const std::vector<std::string>& others) const {
  for (const std::string& other : others) {
    if (Has(other) && !Has(lead)) throw UsageError("--" + other + " needs --" + lead);
  }
}
