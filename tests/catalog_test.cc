// The texts of the message catalog and the keys that the sources raise must fit one another: a
// fault there shows only when the message does.

#include <gtest/gtest.h>
#include <iconv.h>

#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "fixture.h"

namespace {

namespace fs = std::filesystem;

using Problems = std::vector<std::string>;
using Texts = std::map<std::string, std::string>;

/// For each key what is passed to its text: for each parameter an `x`, or a `-` when the parameter
/// is empty wherever the key is raised.
using Keys = std::map<std::string, std::string>;

/// Literals, words and single characters of C++ code, without blanks and comments.
std::vector<std::string> Tokens(const std::string& code) {
  static const std::regex kToken(
      R"(//[^\n]*|/\*[^]*?\*/|("(?:\\.|[^"\\])*"|'(?:\\.[^']*|[^'\\])'|\w+|\S))");
  std::vector<std::string> tokens;
  for (std::sregex_iterator it(code.begin(), code.end(), kToken), end; it != end; ++it) {
    if ((*it)[1].matched) tokens.push_back((*it)[1]);
  }
  return tokens;
}

/// What is passed by the list in braces that may follow a key; `at` is the token behind the key.
std::string Passed(const std::vector<std::string>& tokens, size_t at) {
  std::string passed;
  if (at + 1 >= tokens.size() || tokens[at] != "," || tokens[at + 1] != "{") return passed;
  std::string element;
  int depth = 0;
  for (at += 2; at < tokens.size() && depth >= 0; ++at) {
    const std::string& token = tokens[at];
    if (token == "(" || token == "{" || token == "[") ++depth;
    if (token == ")" || token == "}" || token == "]") --depth;
    if (depth > 0 || (depth == 0 && token != ",")) {
      element += token;
    } else if (!element.empty()) {
      passed += element == "\"\"" ? '-' : 'x';
      element.clear();
    }
  }
  return passed;
}

/// Adds the keys of the calls .Build("KEY", {parameters}) in `code` to `keys`.
void Scan(const std::string& code, Keys* keys, Problems* problems) {
  const std::vector<std::string> tokens = Tokens(code);
  for (size_t i = 0; i + 3 < tokens.size(); ++i) {
    if (tokens[i] != "." || tokens[i + 1] != "Build" || tokens[i + 2] != "(") continue;
    const std::string& literal = tokens[i + 3];
    if (literal[0] != '"') {
      problems->push_back(literal + ": not a literal key");
      continue;
    }
    const std::string key = literal.substr(1, literal.size() - 2);
    const std::string passed = Passed(tokens, i + 4);
    std::string& known = keys->emplace(key, passed).first->second;
    if (known.size() != passed.size()) {
      problems->push_back(key + ": not always raised with as many parameters");
      continue;
    }
    for (size_t n = 0; n < known.size(); ++n) {
      if (passed[n] == 'x') known[n] = 'x';
    }
  }
}

bool IsUtf8(std::string text) {
  std::wstring wide(text.size(), L'\0');
  char* in = text.data();
  char* out = reinterpret_cast<char*>(wide.data());
  size_t in_left = text.size();
  size_t out_left = wide.size() * sizeof(wchar_t);
  iconv_t converter = iconv_open("WCHAR_T", "UTF-8");
  const bool valid = iconv(converter, &in, &in_left, &out, &out_left) == 0;
  iconv_close(converter);
  return valid;
}

/// The lines of a text file that are neither blank nor comments: key and rest, the two groups of
/// `format`.
Texts ReadLines(const std::string& content, const std::string& format, Problems* problems) {
  const std::regex line_format(format);
  Texts texts;
  if (!IsUtf8(content)) problems->push_back("not UTF-8: " + content);
  std::istringstream lines(content);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (line.empty() || line[0] == '#') continue;
    if (!std::regex_match(line, match, line_format)) {
      problems->push_back(line + ": malformed");
    } else if (!texts.emplace(match[1], match[2]).second) {
      problems->push_back(match.str(1) + ": stands twice");
    }
  }
  return texts;
}

Texts ReadCatalog(const std::string& content, Problems* problems) {
  return ReadLines(content, R"re(([\w.]+) = "((?:[^"\\]|\\[nt"\\])*)")re", problems);
}

/// Reads lines KEY COUNT empty:POSITION; the last part may be missing or be repeated.
Keys ReadUnraised(const std::string& content, Problems* problems) {
  Keys keys;
  for (const auto& [key, rest] :
       ReadLines(content, R"(([\w.]+) (\d(?: empty:[1-9])*))", problems)) {
    std::string& passed = keys[key];
    passed.assign(static_cast<size_t>(rest[0] - '0'), 'x');
    for (size_t at = 8; at < rest.size(); at += 8) {  // the digit of each " empty:1"
      passed.at(static_cast<size_t>(rest[at] - '1')) = '-';
    }
  }
  return keys;
}

/// Checks the texts of one catalog file: each has a key that may be raised, and uses exactly what
/// is passed.
void CheckTexts(const Texts& texts, const Keys& keys, Problems* problems) {
  static const std::regex kPlaceholder(R"(\{([1-9])\})");
  for (const auto& [key, text] : texts) {
    const auto known = keys.find(key);
    if (known == keys.end()) {
      problems->push_back(key + ": neither raised nor in unraised_keys.txt");
      continue;
    }
    const std::string& passed = known->second;
    std::string used(passed.size(), '-');
    for (std::sregex_iterator it(text.begin(), text.end(), kPlaceholder), end; it != end; ++it) {
      const size_t n = std::stoul(it->str(1));
      if (n > used.size()) used.resize(n, '-');
      used[n - 1] = 'x';
    }
    if (used != passed) problems->push_back(key + ": does not use just what is passed");
  }
}

TEST(Catalog, FitsTheSources) {
  Problems problems;
  Keys raised;
  for (const auto& file : fs::recursive_directory_iterator(SOURCE_DIR "/src")) {
    const fs::path extension = file.path().extension();
    if (extension == ".cc" || extension == ".h") Scan(Read(file.path()), &raised, &problems);
  }
  EXPECT_GE(raised.size(), 20U);

  Keys keys = ReadUnraised(Read(SOURCE_DIR "/tests/unraised_keys.txt"), &problems);
  for (const auto& [key, passed] : raised) {
    if (!keys.emplace(key, passed).second) {
      problems.push_back(key + ": raised, but still in unraised_keys.txt");
    }
  }
  const std::string file = Read(SOURCE_DIR "/resources/msgcatalog/TEVInstUtil.msg");
  const Texts english = ReadCatalog(file, &problems);
  CheckTexts(english, keys, &problems);
  for (const auto& [key, passed] : keys) {
    if (english.count(key) == 0) problems.push_back(key + ": not in the catalog");
  }
  EXPECT_EQ(problems, Problems{});
}

TEST(Catalog, ScanFindsKeysAndParameters) {
  Problems problems;
  Keys keys;
  Scan(R"cc(
         // frame.Build("Comment", {a});
         *message = frame.Build("None"); /* frame.Build("Comment"); */
         frame.Build("None", {}, "default");
         message->Append(frame.Build("Nested",
                                     {f(a, "x,\"}y"), Level{1, b[2, 3]}, /*unused=*/"", '"', c},
                                     "{no, list}"));
         frame.Build("Partly", {"", a, ""}), frame.Build("Partly", {path, "", ""});
         frame.Build("Differs", {a}), frame.Build("Differs", {a, b}), frame.Build(key, {a});
       )cc",
       &keys, &problems);
  EXPECT_EQ(keys, (Keys{{"None", ""}, {"Nested", "xx-xx"}, {"Partly", "xx-"}, {"Differs", "x"}}));
  EXPECT_EQ(problems, (Problems{"Differs: not always raised with as many parameters",
                                "key: not a literal key"}));
}

TEST(Catalog, FaultsInTextsAreFound) {
  const Keys keys = ReadUnraised("Key 3 empty:2\n", nullptr);
  Problems problems;
  CheckTexts(ReadCatalog("# c\n\nKey = \"{3} {x} {1}\\n\\t\\\"\\\\ \xC3\xA9\"", &problems), keys,
             &problems);
  EXPECT_EQ(problems, Problems{});
  for (const char* bad :
       {"Key = \"{1}\"", "Key = \"{1}{2}{3}\"", "Key = \"{1}{3}{4}\"", "Other = \"{1}{3}\"",
        "Key=\"{1}{3}\"", "Key = \"{1}{3}\" ", "Key = \"{1}\"{3}\"", "Key = \"{1}{3}\\q\"",
        "Key = \"{1}{3}", "Key = \"{1}{3}\"\nKey = \"{1}{3}\"", "Key = \"{1}{3}\xE9\"",
        "Key = \"{1}{3}\xC0\x80\""}) {
    problems.clear();
    CheckTexts(ReadCatalog(bad, &problems), keys, &problems);
    EXPECT_EQ(problems.size(), 1U) << bad;
  }
}

}  // namespace
