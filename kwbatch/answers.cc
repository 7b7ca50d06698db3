#include "answers.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "files.h"
#include "nearest.h"
#include "option_table.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

constexpr char kBlanks[] = " \t\r\v\f";

std::string Trimmed(const std::string& text) {
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool IsQuoted(const std::string& value) {
  const bool quotes = value.front() == '"' || value.front() == '\'';
  return quotes && value.size() > 1 && value.front() == value.back();
}

std::string Unquoted(const std::string& value) {
  return !value.empty() && IsQuoted(value) ? value.substr(1, value.size() - 2) : value;
}

/// What is written for a value: it stands in quotes when something would be taken off.
std::string Quoted(const std::string& value) {
  const bool plain = value.empty() || (Trimmed(value) == value && !IsQuoted(value));
  return plain ? value : '"' + value + '"';
}

/// The option of this name. `line` begins the message when there is none.
const OptionSpec& FindOption(const std::string& line, const std::string& name) {
  std::vector<std::string> known;
  for (const OptionGroup& group : OptionGroups()) {
    for (const OptionSpec& option : group.options) {
      if (option.name.text == name) return option;
      known.emplace_back(option.name.text);
    }
  }
  throw UsageError(line + DidYouMean(Text("NoSuchAnswer", "there is no option \"{1}\"", {name}), "",
                                     name, known));
}

/// What an option without a value is set to.
std::string YesOrNo(const std::string& line, const std::string& name, const std::string& text) {
  const auto is = [&text](const char* word) { return strcasecmp(text.c_str(), word) == 0; };
  if (is("yes") || is("true") || is("on") || is("1")) return "yes";
  if (is("no") || is("false") || is("off") || is("0")) return "no";
  throw UsageError(line + Text("YesOrNo", "{1} is yes or no, not \"{2}\"", {name, text}));
}

/// The answers of a file, line by line.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {}

  void Take(std::string text) {
    constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";  // some editors begin a file with it
    if (++number_ == 1 && text.rfind(kByteOrderMark, 0) == 0) text.erase(0, 3);
    text = Trimmed(text);
    const bool is_section = !text.empty() && text.front() == '[' && text.back() == ']';
    if (text.empty() || text.front() == '#' || text.front() == ';' || is_section) return;
    const size_t equals = text.find('=');
    const std::string line = path_ + ":" + std::to_string(number_) + ": ";
    if (equals == std::string::npos) {
      throw UsageError(line + Text("NoEqualsSign", "there is no \"=\" in this line"));
    }
    TakeAnswer(line, Trimmed(text.substr(0, equals)), Unquoted(Trimmed(text.substr(equals + 1))));
  }

  const OptionValues& values() const { return values_; }

 private:
  void TakeAnswer(const std::string& line, const std::string& name, const std::string& value) {
    const OptionSpec& option = FindOption(line, name);
    const auto [first, is_new] = lines_.emplace(name, number_);
    if (!is_new) {
      throw UsageError(line + Text("AnswerTwice", "{1} is in line {2} too", {name, first->second}));
    }
    if (value.empty()) return;
    values_[name] = option.value != nullptr ? value : YesOrNo(line, name, value);
  }

  const std::string path_;
  int number_ = 0;
  std::map<std::string, int> lines_;
  OptionValues values_;
};

std::string AnswersText(const OptionValues& values) {
  std::string text =
      "; " +
      Text("AnswersHeading",
           "Answers for kwbatch COMMAND ... --answers FILE. The command line comes first.\n");
  std::string section;
  for (const OptionGroup& group : OptionGroups()) {
    if (section != group.title) text += "\n[" + (section = group.title) + "]\n";
    for (const OptionSpec& option : group.options) {
      const auto given = values.find(option.name.text);
      text += "; " + option.help + "\n";
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
  throw Refusal(
      Text("AnswersInNoFile", "The answers cannot be written to {1}: it is no file.\n", {path}));
}

}  // namespace

OptionValues ReadAnswers(const std::string& path) {
  std::ifstream file(path);
  Reader reader(path);
  for (std::string line; std::getline(file, line);) reader.Take(line);
  if (!file.is_open() || file.bad() || fs::is_directory(path)) {
    throw UsageError(Text("AnswersNotRead", "the answers in {1} cannot be read", {path}));
  }
  return reader.values();
}

void SaveAnswers(const std::string& path, const OptionValues& values) {
  const bool fit = std::none_of(values.begin(), values.end(), [](const auto& answer) {
    return answer.second.find('\n') != std::string::npos;
  });
  if (!fit) {
    throw Refusal(Text("AnswerTooLong",
                       "The answers cannot be written to {1}: a value does not fit in a line.\n",
                       {path}));
  }
  const fs::path target = FileBehind(path);
  std::string written = target.string() + ".XXXXXX";
  const int created = mkstemp(written.data());
  const bool stored =
      created != -1 && close(created) == 0 && AppendToFile(written, AnswersText(values));
  std::error_code failed;
  if (stored) fs::rename(written, target, failed);
  if (stored && !failed) return;
  if (created != -1) fs::remove(written, failed);
  throw Refusal(Text("AnswersNotWritten", "The answers cannot be written to {1}.\n", {path}));
}
