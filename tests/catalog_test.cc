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
