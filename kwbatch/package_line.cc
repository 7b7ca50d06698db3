#include "package_line.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

#include "formats.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace {

constexpr size_t kNameLength = 47;
constexpr const char* kTableKeys[] = {"os", "ga", "level"};

/// The index of a word among those of the types or of the kinds; nothing for another word.
std::optional<int> IndexOf(const std::string& word, int first, int end) {
  for (int i = first; i < end; ++i) {
    if (word == kTEVINSNames[i]) return i - first;
  }
  return std::nullopt;
}

TEVINSType TypeOf(const std::string& word) {
  const auto index = IndexOf(word, 0, kTEVINSFirstKind);
  if (index) return static_cast<TEVINSType>(*index);
  throw Refusal(Text("NoType", "\"{1}\" is no type.\n", {Printable(word)}));
}

TEVINSPkg KindOf(const std::string& word) {
  const auto index = IndexOf(word, kTEVINSFirstKind, static_cast<int>(std::size(kTEVINSNames)));
  if (index) return static_cast<TEVINSPkg>(*index);
  throw Refusal(Text("NoKind", "\"{1}\" is no kind.\n", {Printable(word)}));
}

void RequireName(const PackageLine& line) {
  if (line.name.empty()) throw Refusal(Text("NameMissing", "The name is missing.\n"));
  if (line.name.size() > kNameLength) {
    throw Refusal(Text("NameTooLong", "The name \"{1}\" has more than {2} characters.\n",
                       {line.name, kNameLength}));
  }
  RequirePlainName(Text("NounName", "name"), line.name);
  const std::string suffix = kSdkSuffix;
  const bool sdk = line.name.size() > suffix.size() &&
                   line.name.compare(line.name.size() - suffix.size(), suffix.size(), suffix) == 0;
  if (line.type == zeb2 && !sdk) {
    throw Refusal(Text("NoSdkName", "The name \"{1}\" of a development kit does not end in {2}.\n",
                       {line.name, suffix}));
  }
}

/// The length of the UTF-8 sequence that begins here; 0 when it is none.
size_t SequenceLength(const std::string& text, size_t start) {
  const auto byte = [&text](size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const unsigned first = byte(start);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(start + i) & 0xC0) != 0x80) return 0;
  }
  const unsigned second = byte(start + 1);
  // Longer than need be, half of a pair, or beyond the last character.
  const bool wrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                     (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
  return wrong ? 0 : length;
}

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }

}  // namespace

std::string PackageLine::Value(const std::string& key) const {
  std::string value;
  for (const auto& [known, text] : keys) {
    if (known == key) value = text;
  }
  return value;
}

bool PackageLine::Has(const std::string& key) const {
  return std::any_of(keys.begin(), keys.end(), [&key](const auto& k) { return k.first == key; });
}

std::string PackageLine::Text() const {
  std::string text =
      std::string(kTEVINSNames[type]) + ":" + kTEVINSNames[kTEVINSFirstKind + kind] + ":" + name;
  for (const auto& [key, value] : keys) {
    if (std::count(std::begin(kTableKeys), std::end(kTableKeys), key) == 0) continue;
    text += ":" + key + "=" + value;
  }
  return text + "\n";
}

std::optional<PackageLine> ParsePackageLine(const std::string& text) {
  const std::string line =
      !text.empty() && text.back() == '\r' ? text.substr(0, text.size() - 1) : text;
  if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#') return std::nullopt;
  if (!IsText(line)) {
    throw Refusal(Text("LineNoText", "The line is not UTF-8, or has control characters.\n"));
  }
  std::istringstream fields(line);
  std::string type;
  std::string kind;
  PackageLine parsed{};
  std::getline(fields, type, ':');
  std::getline(fields, kind, ':');
  std::getline(fields, parsed.name, ':');
  parsed.type = TypeOf(type);
  parsed.kind = KindOf(kind);
  RequireName(parsed);
  for (std::string field; std::getline(fields, field, ':');) {
    const size_t equals = field.find('=');
    if (equals == std::string::npos) {
      throw Refusal(Text("FieldWithoutValue", "\"{1}\" has no \"=\".\n", {field}));
    }
    parsed.keys.emplace_back(field.substr(0, equals), field.substr(equals + 1));
  }
  if (parsed.Has("os")) RequireSystemName(parsed.Value("os"));
  LevelOf(parsed);
  return parsed;
}

int LevelOf(const PackageLine& line) {
  if (!line.Has("level")) return 1;
  const std::string text = line.Value("level");
  int level = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
  if (error == std::errc() && end == text.data() + text.size() && level > 0) return level;
  throw Refusal(Text("LevelNoNumber", "The level \"{1}\" is no number above 0.\n", {text}));
}

bool IsText(const std::string& text) {
  for (size_t i = 0; i < text.size();) {
    const size_t length = SequenceLength(text, i);
    if (length == 0 || IsControl(text[i])) return false;
    i += length;
  }
  return true;
}

std::string Printable(std::string text) {
  const bool valid = IsText(text);
  std::replace_if(
      text.begin(), text.end(),
      [valid](char c) { return IsControl(c) || (!valid && static_cast<unsigned char>(c) >= 0x80); },
      '?');
  return text;
}
