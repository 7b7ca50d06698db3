#include "answers.h"

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <vector>

#include "console.h"
#include "nearest.h"
#include "option_table.h"
#include "options.h"

namespace fs = std::filesystem;

namespace {

/// An option and whether the command takes it.
struct Found {
  const OptionSpec* option;
  bool taken;
};

Found FindOption(const std::string& file, const std::string& name, const std::string& command) {
  std::vector<std::string> known;
  for (const OptionGroup& group : OptionGroups()) {
    for (const OptionSpec& option : group.options) {
      if (option.name == name) return {&option, group.IsFor(command)};
      known.emplace_back(option.name);
    }
  }
  throw UsageError(file + ": there is no option \"" + name + "\"" + DidYouMean(name, known));
}

/// What an option without a value is set to.
bool IsYes(const std::string& file, const std::string& name, const std::string& text) {
  if (text == "yes" || text == "true" || text == "on" || text == "1") return true;
  if (text == "no" || text == "false" || text == "off" || text == "0" || text.empty()) return false;
  throw UsageError(file + ": " + name + " is yes or no, not \"" + text + "\"");
}

/// Reads `name = value` lines as they stand: no character in a value means anything.
class WholeLines : public CLI::ConfigBase {
 public:
  WholeLines() {
    commentChar = arrayStart = arraySeparator = parentSeparatorChar = '\1';
    arrayEnd = '\2';
  }
};

}  // namespace

OptionValues ReadAnswers(const std::string& path, const std::string& command) {
  std::ifstream file(path);
  if (!file || fs::is_directory(path)) {
    throw UsageError("the answers in " + path + " cannot be read");
  }
  OptionValues values;
  for (const CLI::ConfigItem& item : WholeLines().from_config(file)) {
    // The begin or the end of a section.
    if (item.inputs.empty()) continue;
    const std::string& value = item.inputs.back();
    const auto [option, taken] = FindOption(path, item.name, command);
    const bool given = option->value != nullptr ? !value.empty() : IsYes(path, item.name, value);
    if (taken && given) values[item.name] = value;
  }
  return values;
}

void SaveAnswers(const std::string& path, const OptionValues& values) {
  const std::string written = path + ".new";
  const mode_t mask = umask(077);
  std::ofstream file(written, std::ios::binary);
  umask(mask);
  file << "; Answers for kwbatch COMMAND ... --answers FILE. The command line comes first.\n";
  std::string section;
  for (const OptionGroup& group : OptionGroups()) {
    if (section != group.title) file << "\n[" << (section = group.title) << "]\n";
    for (const OptionSpec& option : group.options) {
      const auto given = values.find(option.name);
      const bool flag = option.value == nullptr;
      file << "; " << option.help << "\n"
           << (given == values.end() ? ";" : "") << option.name << " = ";
      if (given != values.end()) file << (flag ? "yes" : given->second);
      file << "\n";
    }
  }
  file.close();
  std::error_code failed;
  if (file) fs::rename(written, path, failed);
  if (!file || failed) {
    fs::remove(written, failed);
    throw Refusal("The answers cannot be written to " + path + ".\n");
  }
}
