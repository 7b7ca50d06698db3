#include "texts.h"

#include <kb0core/TEVMsgCatalog.h>

#include <iterator>

namespace {

/// The name of the catalog, or null.
const char* catalog = nullptr;

/// The text of the catalog as it is there: each placeholder is replaced by itself.
std::string TextInCatalog(const char* key, const char* english) {
  static TEVUnicodeString placeholders[] = {"{1}", "{2}", "{3}", "{4}", "{5}",
                                            "{6}", "{7}", "{8}", "{9}"};
  return TEVMsgCatalog::BuildMessage(catalog, key, placeholders,
                                     static_cast<int>(std::size(placeholders)), english)
      .ConvertToChar();
}

}  // namespace

void UseCatalog(const char* name) { catalog = name; }

std::string Text(const char* key, const char* english, std::initializer_list<TextValue> values) {
  const std::string text = catalog == nullptr ? english : TextInCatalog(key, english);
  std::string message;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool placeholder = text[i] == '{' && i + 2 < text.size() && text[i + 1] >= '1' &&
                             text[i + 1] <= '9' && text[i + 2] == '}';
    if (!placeholder) {
      message += text[i];
      continue;
    }
    const int index = text[i + 1] - '1';
    if (static_cast<size_t>(index) < values.size()) message += (values.begin() + index)->text();
    i += 2;
  }
  return message;
}

std::string CommaList(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}
