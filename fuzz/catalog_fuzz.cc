// The message catalog. An input: a locale for LC_ALL and one for LANG, a parameter, the catalog.

#include <cstdint>

// The library keeps every catalog that it has read. A target that reads millions calls what is
// below that.
#include "../framework/kb0core/src/message_catalog.cc"  // NOLINT(bugprone-suspicious-include)
#include "fuzz.h"

namespace {

using fuzz::Require;

const std::string kFile = fuzz::Path("Fuzzed.msg");

/// What is left of a text without the blanks around it.
std::string Stripped(std::string text) {
  const std::string blanks = " \t\r";
  while (!text.empty() && blanks.find(text.back()) != std::string::npos) text.pop_back();
  while (!text.empty() && blanks.find(text.front()) != std::string::npos) text.erase(0, 1);
  return text;
}

/// What a text between quotes stands for. No value if it is not valid.
std::optional<std::string> Unquoted(const std::string& quoted) {
  std::string text;
  bool escaped = false;
  for (const char c : quoted) {
    if (!escaped && c == '"') return std::nullopt;
    if (!escaped && c == '\\') {
      escaped = true;
      continue;
    }
    if (escaped && c != 'n' && c != 't' && c != '"' && c != '\\') return std::nullopt;
    text += escaped && c == 'n' ? '\n' : escaped && c == 't' ? '\t' : c;
    escaped = false;
  }
  if (escaped) return std::nullopt;
  return text;
}

/// Reads a catalog from the ends of its lines, as the library does not.
Catalog Expected(const std::string& content) {
  Catalog catalog;
  for (const std::string_view whole : fuzz::Lines(content)) {
    const bool ended = whole.back() == '\n';
    const std::string line = Stripped(std::string(whole.substr(0, whole.size() - (ended ? 1 : 0))));
    const size_t open = line.find('"');
    if (open == std::string::npos || open + 1 == line.size() || line.back() != '"') continue;
    std::string key = Stripped(line.substr(0, open));
    if (key.empty() || key.back() != '=') continue;
    key.pop_back();
    key = Stripped(key);
    if (key.empty() || key.front() == '#' || key.find_first_of("= \t\r") != std::string::npos) {
      continue;
    }
    const auto text = Unquoted(line.substr(open + 1, line.size() - open - 2));
    if (text) catalog[key] = *text;
  }
  return catalog;
}

std::string Written(const Catalog& catalog) {
  std::string content;
  for (const auto& [key, text] : catalog) {
    content += key + "=\"";
    for (const char c : text) {
      if (c == '"' || c == '\\' || c == '\n') content += '\\';
      content += c == '\n' ? 'n' : c;
    }
    content += "\"\n";
  }
  return content;
}

/// `text` with `parameter` for {1} and {3}, put together from its end.
std::string ExpectedMessage(const std::string& text, const std::string& parameter) {
  std::string message;
  for (size_t end = text.size(); end > 0;) {
    const bool placeholder = end > 2 && text[end - 3] == '{' && text[end - 1] == '}' &&
                             text[end - 2] >= '1' && text[end - 2] <= '9';
    if (!placeholder) {
      message.insert(0, 1, text[--end]);
      continue;
    }
    const char digit = text[end - 2];
    if (digit == '1' || digit == '3') message.insert(0, parameter);
    end -= 3;
  }
  return message;
}

/// The language that a locale asks for: its folder.
std::string ExpectedLanguage(const std::string& locale) {
  const std::string words[][2] = {{"fr", "French"},  {"de", "German"},
                                  {"it", "Italian"}, {"ja", "Japanese"},
                                  {"ko", "Korean"},  {"zh_CN", "Simplified_Chinese"}};
  for (const auto& [code, folder] : words) {
    if (!fuzz::BeginsWith(locale, code)) continue;
    const char next = locale.c_str()[code.size()];
    if (next == '\0' || next == '.' || next == '@' || (next == '_' && code.size() == 2)) {
      return folder;
    }
  }
  return "English";
}

/// The catalogs of two languages, once for all inputs.
void MakeCatalogs() {
  static bool made = false;
  if (made) return;
  made = true;
  fuzz::Write(fuzz::Path("Fixed.msg"), "All = \"English\"\nSome = \"English\"\n");
  for (const char* folder :
       {"French", "German", "Italian", "Japanese", "Korean", "Simplified_Chinese"}) {
    mkdir(fuzz::Path(folder).c_str(), 0755);
    fuzz::Write(fuzz::Path(folder) + "/Fixed.msg", std::string("All = \"") + folder + "\"\n");
  }
  setenv("TEVMsgCatalogPath", fuzz::Path("").c_str(), 1);
  unsetenv("LC_MESSAGES");
}

/// Puts a value into the environment; setenv() would keep every value that it ever got.
void SetLocale(char (&entry)[64], const std::string& name, const std::string& value) {
  std::snprintf(entry, sizeof entry, "%s=%s", name.c_str(), value.c_str());
  putenv(entry);
}

void CheckLanguage(const std::string& all, const std::string& lang) {
  static char entries[2][64];
  MakeCatalogs();
  SetLocale(entries[0], "LC_ALL", all);
  SetLocale(entries[1], "LANG", lang);
  const auto message = [](const char* key) {
    return std::string(TEVMsgCatalog::BuildMessage("Fixed", key, nullptr, 0, "").ConvertToChar());
  };
  Require(message("All") == ExpectedLanguage(all.empty() ? lang : all), "the locale is obeyed");
  Require(message("Some") == "English", "English stands in");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const std::string all = input.NextArgument().substr(0, 40);
  const std::string lang = input.NextArgument().substr(0, 40);
  CheckLanguage(all, lang);

  const std::string parameter = input.NextArgument();
  const std::string content = input.Rest();
  fuzz::Write(kFile, content);
  const std::optional<Catalog> catalog = ReadCatalog(kFile);
  Require(catalog == Expected(content), "each key has its text");
  fuzz::Write(kFile, Written(*catalog));
  Require(ReadCatalog(kFile) == catalog, "what is written can be read again");
  const TEVUnicodeString parameters[] = {parameter.c_str(), "", parameter.c_str()};
  for (const auto& [key, text] : *catalog) {
    Require(Substituted(text, parameters, 3) == ExpectedMessage(text, parameter),
            "each parameter is put in once");
  }
  return 0;
}
