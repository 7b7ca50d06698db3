#include "usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "nearest.h"
#include "option_table.h"
#include "options.h"
#include "refusal.h"
#include "texts.h"

namespace {

UsageError NoCommand(const std::string& word, const std::vector<std::string>& known) {
  return UsageError(DidYouMean(Text("NoCommand", "no command \"{1}\"", {word}), "", word, known));
}

/// Throws a UsageError for an option that is not there, or not for this command.
void RejectOption(const std::string& name, const CLI::App* command) {
  const std::string no_option =
      command == nullptr
          ? Text("NoOption", "there is no option --{1}", {name})
          : Text("CommandHasNoOption", "{1} has no option --{2}", {command->get_name(), name});
  std::vector<std::string> known;
  std::string takers;
  for (const OptionGroup& group : OptionGroups()) {
    const bool taken = command != nullptr && group.IsFor(command->get_name());
    for (const OptionSpec& option : group.options) {
      if (taken || command == nullptr) known.emplace_back(option.name.text);
      if (option.name.text != name) continue;
      if (taken) {
        throw UsageError(
            Text("OptionBefore", "--{1} must come after {2}", {name, command->get_name()}));
      }
      for (const CommandName taker : group.commands) {
        takers += (takers.empty() ? "" : " ") + std::string(taker.text);
      }
    }
  }
  if (takers.empty()) throw UsageError(DidYouMean(no_option, "--", name, known));
  throw UsageError(Text("OptionOfOthers", "{1}; these have it: {2}", {no_option, takers}));
}

}  // namespace

std::string NeedsValue(const std::string& option) {
  return Text("OptionNeedsValue", "{1} needs a value", {option});
}

void RejectUnknown(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  const CLI::App* command = chosen.empty() ? nullptr : chosen.front();
  std::string word;
  for (const std::string& text : app.remaining(true)) {
    if (text == "--") continue;
    if (text.rfind("--", 0) == 0) RejectOption(text.substr(2, text.find('=') - 2), command);
    if (word.empty()) word = text;
  }
  if (word.empty()) return;
  if (command != nullptr) {
    throw UsageError(Text("NoUse", "{1} has no use for \"{2}\"", {command->get_name(), word}));
  }
  std::vector<std::string> known;
  for (const CLI::App* sub : app.get_subcommands({})) known.push_back(sub->get_name());
  throw NoCommand(word, known);
}

std::vector<std::string> WithoutHelpWord(std::vector<std::string> arguments,
                                         const std::vector<Command>& commands) {
  if (arguments.empty() || arguments.front() != "help") return arguments;
  arguments.erase(arguments.begin());
  std::vector<std::string> known;
  known.reserve(commands.size());
  for (const Command& command : commands) known.emplace_back(command.name.text);
  for (const std::string& word : arguments) {
    const bool is_option = word.rfind('-', 0) == 0;
    if (!is_option && std::count(known.begin(), known.end(), word) == 0) {
      throw NoCommand(word, known);
    }
  }
  arguments.emplace_back("--help");
  return arguments;
}

void RejectEmptyValues(const std::vector<std::string>& arguments) {
  for (const std::string& text : arguments) {
    if (text.rfind("--", 0) == 0 && text.find('=') == text.size() - 1) {
      throw UsageError(NeedsValue(text.substr(0, text.size() - 1)));
    }
  }
}
