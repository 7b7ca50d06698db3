// The catalog's texts must fit the keys that the sources raise: else one sees it only with them.

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <vector>

#include "fixture.h"

namespace {

using Problems = std::vector<std::string>;

/// For each key its parameters: an `x`, or a `-` for one that is always empty or not used.
using Keys = std::map<std::string, std::string>;

/// Adds the keys of the calls .Build("KEY", {parameters}) in `code`. No parameter has a comma.
void Scan(const std::string& code, Keys* keys, Problems* problems) {
  static const std::regex kCall(R"re((?:\.|->)Build\(\s*("?)([\w.]*)"?(?:,\s*\{([^{}]*)\})?)re");
  const std::string calls = std::regex_replace(code, std::regex("//[^\n]*"), "");
  for (std::sregex_iterator it(calls.begin(), calls.end(), kCall), end; it != end; ++it) {
    std::string passed;
    std::istringstream parameters((*it)[3]);
    for (std::string one; std::getline(parameters >> std::ws, one, ',');)
      passed += one == "\"\"" ? '-' : 'x';
    std::string& known = keys->emplace((*it)[2], passed).first->second;
    if ((*it)[1] == "" || known.size() != passed.size())
      problems->push_back(it->str(2) + ": no literal, or it varies");
    // What one call passes empty, another may fill.
    for (size_t i = 0; i < std::min(known.size(), passed.size()); ++i)
      known[i] = std::max(known[i], passed[i]);
  }
}

/// The text of each key of a catalog.
Keys ReadLines(const std::string& content, Problems* problems) {
  static const std::regex line_format(R"re(([\w.]+) = "((?:[^"\\]|\\[nt"\\])*)")re");
  Keys keys;
  std::istringstream lines(content);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (line.empty() || line[0] == '#') continue;
    if (!std::regex_match(line, match, line_format) || !keys.emplace(match[1], match[2]).second)
      problems->push_back(line + ": malformed, or stands twice");
  }
  return keys;
}

/// Checks a catalog that should have just these keys, each with a text that uses what is passed.
void CheckCatalog(const std::string& catalog, const Keys& keys, Problems* problems) {
  static const std::regex kPlaceholder(R"(\{([1-9])\})");
  EXPECT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  if (std::mbstowcs(nullptr, catalog.c_str(), 0) > catalog.size()) problems->push_back("not UTF-8");
  const Keys texts = ReadLines(catalog, problems);
  for (const auto& [key, text] : texts) {
    const auto known = keys.find(key);
    std::string used(known == keys.end() ? 0 : known->second.size(), '-');
    for (std::sregex_iterator it(text.begin(), text.end(), kPlaceholder), end; it != end; ++it) {
      const size_t n = std::stoul(it->str(1));
      used.resize(std::max(used.size(), n), '-');
      used[n - 1] = 'x';
    }
    if (known == keys.end() || known->second != used) problems->push_back(key + ": uses others");
  }
  for (const auto& key : keys)
    if (texts.count(key.first) == 0) problems->push_back(key.first + ": has no text");
}

/// How many values stand in the list that begins at `start`, up to its brace.
size_t CountValues(const std::string& code, size_t start) {
  size_t count = 1;
  int depth = 0;
  bool quoted = false;
  for (size_t i = start; i < code.size(); ++i) {
    if (quoted && code[i] == '\\') ++i;
    if (code[i] == '"') quoted = !quoted;
    if (quoted) continue;
    if (code[i] == ',' && depth == 0) ++count;
    if (std::string("([{").find(code[i]) != std::string::npos) ++depth;
    if (std::string(")]}").find(code[i]) != std::string::npos && depth-- == 0) break;
  }
  return count;
}

/// Adds the texts of the calls Text("KEY", "ENGLISH", {values}) in `code`: the English ones, and
/// how many values they are given. Reports texts that people would get in English only.
void ScanTexts(const std::string& code, Keys* english, Keys* keys, Problems* problems) {
  static const std::regex kLiteral(R"re("((?:[^"\\]|\\.)*)")re");
  static const std::regex kCall(
      R"re((?:^|[^.\w])Text\(\s*"(\w+)",\s*((?:"(?:[^"\\]|\\.)*"\s*)+)(,\s*\{)?)re");
  static const std::regex kUntranslated(
      R"re(\b(?:(?:Say|Show|Complain|SayDone|NoteDone|Tell|tell|show|Fault|Warn|Refusal|NothingToDo|)re"
      R"re(UsageError)\((?:\w+, )?|option::\w+, [^,()]+, )(?:std::string\()?"[^"]*[A-Za-z]{2} [^"]*[A-Za-z]{2}")re");
  for (std::sregex_iterator it(code.begin(), code.end(), kCall), end; it != end; ++it) {
    const std::string literals = (*it)[2];
    std::string text;
    for (std::sregex_iterator one(literals.begin(), literals.end(), kLiteral); one != end; ++one)
      text += one->str(1);
    const auto behind = static_cast<size_t>(it->position() + it->length());
    keys->emplace(it->str(1), std::string((*it)[3].matched ? CountValues(code, behind) : 0, 'x'));
    // One word may mean two things.
    const bool twice = text.find(' ') != std::string::npos &&
                       std::any_of(english->begin(), english->end(),
                                   [&text](const auto& known) { return known.second == text; });
    if (twice || !english->emplace(it->str(1), text).second)
      problems->push_back(it->str(1) + ": the key or the sentence stands at two places");
  }
  for (std::sregex_iterator it(code.begin(), code.end(), kUntranslated), end; it != end; ++it)
    problems->push_back(it->str() + ": is no Text");
}

/// The blanks and the newline at the ends of a text, which all languages must have.
std::string Ends(const std::string& text) {
  static const std::regex kEnds(R"re(^( *).*?((?:\\n)?)$)re");
  return std::regex_replace(text, kEnds, "$1|$2");
}

TEST(Catalog, OfKwbatchFitsItsSourcesInEachLanguage) {
  Problems problems;
  Keys english;
  Keys keys;
  for (const auto& file : std::filesystem::directory_iterator(SOURCE_DIR "/kwbatch")) {
    if (file.path().extension() == ".cc") ScanTexts(Read(file.path()), &english, &keys, &problems);
  }
  EXPECT_GE(keys.size(), 200U);
  for (const std::string language :
       {"", "French/", "German/", "Italian/", "Japanese/", "Korean/", "Simplified_Chinese/"}) {
    const std::string path = SOURCE_DIR "/resources/msgcatalog/" + language + "kwbatch.msg";
    const std::string catalog = Read(path);
    CheckCatalog(catalog, keys, &problems);
    for (const auto& [key, text] : ReadLines(catalog, &problems)) {
      // A word may be the same in two languages.
      const bool same = text == english[key];
      const bool sentence = text.find(' ') != std::string::npos;
      if (language.empty() ? !same : same && sentence)
        problems.push_back(key + ": is not English, or still");
      if (Ends(text) != Ends(english[key])) problems.push_back(key + ": begins or ends otherwise");
    }
    EXPECT_EQ(problems, Problems{}) << language;
    problems.clear();
  }
}

TEST(Catalog, FitsTheSourcesInEachLanguage) {
  Problems problems;
  Keys keys;
  for (const auto& file : std::filesystem::recursive_directory_iterator(SOURCE_DIR "/src"))
    if (file.is_regular_file()) Scan(Read(file.path()), &keys, &problems);
  EXPECT_GE(keys.size(), 20U);
  EXPECT_EQ(problems, Problems{});

  const std::string folder = SOURCE_DIR "/resources/msgcatalog/";
  Keys english = ReadLines(Read(folder + "TEVInstUtil.msg"), &problems);
  for (const std::string language :
       {"", "French/", "German/", "Italian/", "Japanese/", "Korean/", "Simplified_Chinese/"}) {
    problems.clear();
    const std::string catalog = Read(folder + language + "TEVInstUtil.msg");
    CheckCatalog(catalog, keys, &problems);
    for (const auto& [key, text] : ReadLines(catalog, &problems)) {
      if (!language.empty() && text == english[key]) problems.push_back(key + ": still English");
    }
    EXPECT_EQ(problems, Problems{}) << language;
  }
}

}  // namespace
