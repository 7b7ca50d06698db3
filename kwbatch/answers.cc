#include "answers.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "files.h"
#include "nearest.h"
#include "option_table.h"
#include "refusal.h"

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
      if (option.name.text == name) return {&option, group.IsFor(command)};
      known.emplace_back(option.name.text);
    }
  }
  throw UsageError(file + ": there is no option \"" + name + "\"" + DidYouMean("", name, known));
}

/// What an option without a value is set to.
std::string YesOrNo(const std::string& file, const std::string& name, const std::string& text) {
  try {
    return CLI::detail::to_flag_value(text) > 0 ? "yes" : "no";
  } catch (const std::invalid_argument&) {
    throw UsageError(file + ": " + name + " is yes or no, not \"" + text + "\"");
  }
}

/// Reads `name = value` lines; of all characters in a value, only quotes around the whole of it are
/// taken off.
class WholeLines : public CLI::ConfigBase {
 public:
  WholeLines() {
    commentChar = arrayStart = arraySeparator = parentSeparatorChar = '\1';
    arrayEnd = '\2';
  }
};

/// Some editors begin a file with this mark.
void SkipByteOrderMark(std::ifstream& file) {
  constexpr char kMark[] = "\xEF\xBB\xBF";
  char start[sizeof(kMark)] = "";
  file.read(start, sizeof(kMark) - 1);
  if (std::string(start) == kMark) return;
  file.clear(file.rdstate() & std::ios::badbit);
  file.seekg(0);
}

/// Blanks and quotes at an end would be taken off a value that stands in no quotes.
std::string Quoted(const std::string& value) {
  const std::string taken_off = " \t'\"`";
  const bool plain = value.empty() || (taken_off.find(value.front()) == std::string::npos &&
                                       taken_off.find(value.back()) == std::string::npos);
  return plain ? value : '"' + value + '"';
}

std::string AnswersText(const OptionValues& values) {
  std::string text =
      "; Answers for kwbatch COMMAND ... --answers FILE. The command line comes first.\n";
  std::string section;
  for (const OptionGroup& group : OptionGroups()) {
    if (section != group.title) text += std::string("\n[") + (section = group.title) + "]\n";
    for (const OptionSpec& option : group.options) {
      const auto given = values.find(option.name.text);
      text += std::string("; ") + option.help + "\n";
      text += given == values.end() ? std::string(";") + option.name.text + " =\n"
                                    : option.name.text + (" = " + Quoted(given->second)) + "\n";
    }
  }
  return text;
}

/// The file to write: not a link but what it leads to, and never a device.
fs::path FileBehind(const std::string& path) {
  if (fs::is_regular_file(path)) return fs::canonical(path);
  if (!IsThere(path)) return path;
  throw Refusal("The answers cannot be written to " + path + ": it is no file.\n");
}

}  // namespace

OptionValues ReadAnswers(const std::string& path, const std::string& command) {
  std::ifstream file(path);
  SkipByteOrderMark(file);
  const std::vector<CLI::ConfigItem> items = WholeLines().from_config(file);
  if (!file.is_open() || file.bad() || fs::is_directory(path)) {
    throw UsageError("the answers in " + path + " cannot be read");
  }
  OptionValues values;
  for (const CLI::ConfigItem& item : items) {
    // The begin or the end of a section.
    if (item.inputs.empty()) continue;
    const std::string& value = item.inputs.back();
    const auto [option, taken] = FindOption(path, item.name, command);
    if (!taken) continue;
    if (value.empty()) {
      values.erase(item.name);
    } else {
      values[item.name] = option->value != nullptr ? value : YesOrNo(path, item.name, value);
    }
  }
  return values;
}

void SaveAnswers(const std::string& path, const std::string& command, const OptionValues& values) {
  const fs::path target = FileBehind(path);
  std::string written = target.string() + ".XXXXXX";
  const int created = mkstemp(written.data());
  const bool stored =
      created != -1 && close(created) == 0 && AppendToFile(written, AnswersText(values));
  const bool same = stored && ReadAnswers(written, command) == values;
  std::error_code failed;
  if (same) fs::rename(written, target, failed);
  if (same && !failed) return;
  fs::remove(written, failed);
  throw Refusal("The answers cannot be written to " + path +
                (stored && !same ? ": a value cannot stand in a line.\n" : ".\n"));
}
