#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kb0core/TEVMsgCatalog.h"

namespace {

using Catalog = std::unordered_map<std::string, std::string>;  // the text of each key

constexpr std::string_view kBlanks = " \t\r";  // the \r of a file with CRLF line ends

std::string_view Trimmed(std::string_view text) {
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// The character that a backslash and `code` stand for, if that is an escape.
std::optional<char> Escape(char code) {
  switch (code) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case '"':
    case '\\':
      return code;
    default:
      return std::nullopt;
  }
}

/// Reads the text behind an opening quote, up to the closing one. No value if the line is not
/// valid.
std::optional<std::string> ParseText(std::string_view rest) {
  std::string text;
  for (size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] == '"') {
      if (!Trimmed(rest.substr(i + 1)).empty()) return std::nullopt;
      return text;
    }
    if (rest[i] != '\\') {
      text += rest[i];
      continue;
    }
    if (++i == rest.size()) return std::nullopt;
    const std::optional<char> character = Escape(rest[i]);
    if (!character) return std::nullopt;
    text += *character;
  }
  return std::nullopt;
}

/// Stores the text of a line KEY = "TEXT". Any other line is ignored.
void ParseLine(std::string_view line, Catalog* catalog) {
  const size_t quote = line.find('"');
  if (quote == std::string_view::npos) return;
  std::string_view key = Trimmed(line.substr(0, quote));
  if (key.empty() || key.front() == '#' || key.back() != '=') return;
  key = Trimmed(key.substr(0, key.size() - 1));
  if (key.empty() || key.find_first_of(" \t\r=") != std::string_view::npos) return;
  if (std::optional<std::string> text = ParseText(line.substr(quote + 1))) {
    catalog->insert_or_assign(std::string(key), std::move(*text));
  }
}

/// Reads a catalog. No value if `path` is not a regular file or cannot be read.
std::optional<Catalog> ReadCatalog(const std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  Catalog catalog;
  for (std::string line; std::getline(file, line);) ParseLine(line, &catalog);
  if (file.bad()) return std::nullopt;
  return catalog;
}

/// The catalog in the file `path`, or null. A catalog is read once and kept until the process has
/// ended, so that messages can be made while it ends.
const Catalog* FindCatalog(const std::string& path) {
  static auto& catalogs = *new std::unordered_map<std::string, Catalog>;
  const auto known = catalogs.find(path);
  if (known != catalogs.end()) return &known->second;
  std::optional<Catalog> catalog = ReadCatalog(path);
  if (!catalog) return nullptr;
  return &catalogs.emplace(path, std::move(*catalog)).first->second;
}

/// The folder of the user's language, its slash included, or an empty text for English.
std::string_view LanguageFolder() {
  std::string_view locale;
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    locale = value;
    break;
  }
  locale = locale.substr(0, locale.find_first_of(".@"));
  if (locale == "zh_CN") return "Simplified_Chinese/";
  constexpr std::pair<std::string_view, std::string_view> kFolders[] = {
      {"de", "German/"},   {"fr", "French/"}, {"it", "Italian/"},
      {"ja", "Japanese/"}, {"ko", "Korean/"},
  };
  const std::string_view language = locale.substr(0, locale.find('_'));
  for (const auto& [code, folder] : kFolders) {
    if (language == code) return folder;
  }
  return {};
}

/// The text of `key` in `catalog`, or null if either is missing.
const std::string* FindText(const Catalog* catalog, const std::string& key) {
  if (catalog == nullptr) return nullptr;
  const auto entry = catalog->find(key);
  return entry == catalog->end() ? nullptr : &entry->second;
}

/// The file of this library, or of the program that it is a part of; or null.
const char* FileOfThisCopy() noexcept {
#ifdef KB0CORE_IS_ARCHIVE
  return "/proc/self/exe";
#else
  static const char here = 0;
  Dl_info library;
  return dladdr(&here, &library) == 0 ? nullptr : library.dli_fname;
#endif
}

/// The directory of the catalogs in the installed copy that this library is a part of.
std::string DirectoryOfThisCopy() noexcept {
  const char* file = FileOfThisCopy();
  if (file == nullptr) return {};
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(file, nullptr), &std::free);
  if (path == nullptr) return {};
  *std::strrchr(path.get(), '/') = '\0';
  return path.get() + std::string("/") + KB0CORE_CATALOG_FROM_LIBRARY;
}

const std::string& BesideLibrary() noexcept {
  static const auto& dir = *new std::string(DirectoryOfThisCopy());
  return dir;
}

/// Found when the library is loaded: its path may be relative to the directory of that moment.
const std::string& beside = BesideLibrary();

/// The directories that may have catalogs, in the order of the search. Only ':' in the variable
/// separates two of them: the path of an installation may contain one.
std::vector<std::string> CatalogDirectories() {
  const char* variable = std::getenv("TEVMsgCatalogPath");
  std::istringstream entries(variable == nullptr ? "" : variable);
  std::vector<std::string> directories;
  for (std::string entry; std::getline(entries, entry, ':');) directories.push_back(entry);
  directories.emplace_back(KB0CORE_CATALOG_DIR);
  directories.push_back(beside);
  return directories;
}

/// The text of `key` from the file `name` of the user's language or of English, or null.
const std::string* FindMessage(const std::string& name, const std::string& key) {
  for (std::string& directory : CatalogDirectories()) {
    if (directory.empty()) continue;
    directory += '/';
    const Catalog* english = FindCatalog(directory + name);
    if (english == nullptr) continue;
    directory += LanguageFolder();
    const std::string* text = FindText(FindCatalog(directory + name), key);
    return text != nullptr ? text : FindText(english, key);
  }
  return nullptr;
}

/// `text` with parameters for its placeholders, in one pass: a parameter is not read again.
std::string Substituted(std::string_view text, const TEVUnicodeString* parameters, int count) {
  std::string message;
  while (!text.empty()) {
    if (text.size() < 3 || text[0] != '{' || text[1] < '1' || text[1] > '9' || text[2] != '}') {
      message += text[0];
      text.remove_prefix(1);
      continue;
    }
    const int index = text[1] - '1';
    if (index < count) message += parameters[index].ConvertToChar();
    text.remove_prefix(3);
  }
  return message;
}

}  // namespace

TEVMsgCatalog::TEVMsgCatalog() = default;
TEVMsgCatalog::~TEVMsgCatalog() = default;

TEVUnicodeString TEVMsgCatalog::BuildMessage(const TEVString& catalogName, const TEVString& key,
                                             TEVUnicodeString* parameters, int parameterCount,
                                             const TEVUnicodeString& defaultText) {
  const std::string name = std::string(catalogName.ConvertToChar()) + ".msg";
  const std::string* text = FindMessage(name, key.ConvertToChar());
  if (text == nullptr) return defaultText;
  const int count = parameters == nullptr ? 0 : parameterCount;
  return Substituted(*text, parameters, count).c_str();
}
