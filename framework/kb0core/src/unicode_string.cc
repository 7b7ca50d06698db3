#include <algorithm>
#include <cstdio>

#include "kb0core/TEVUnicodeString.h"

TEVUnicodeString::TEVUnicodeString(const char* text) : text_(text == nullptr ? "" : text) {}

TEVUnicodeString& TEVUnicodeString::operator=(const char* text) {
  text_ = std::string(text == nullptr ? "" : text);
  return *this;
}

void TEVUnicodeString::Append(const TEVUnicodeString& text) { text_ += text.text_; }

const char* TEVUnicodeString::ConvertToChar() const { return text_.c_str(); }

TEVUnicodeString TEVUnicodeString::SubString(int position, int length) const {
  TEVUnicodeString part;
  if (position < 0 || length < 0 || static_cast<size_t>(position) >= text_.size()) return part;
  part.text_ = text_.substr(static_cast<size_t>(position), static_cast<size_t>(length));
  return part;
}

int TEVUnicodeString::SearchSubString(const TEVUnicodeString& text, int from) const {
  const size_t found = text_.find(text.text_, static_cast<size_t>(std::max(from, 0)));
  return found == std::string::npos ? -1 : static_cast<int>(found);
}

void TEVUnicodeString::Remove(int position, int length) {
  if (position < 0 || length < 0 || static_cast<size_t>(position) >= text_.size()) return;
  text_.erase(static_cast<size_t>(position), static_cast<size_t>(length));
}

void TEVUnicodeString::Strip(TEVUnicodeChar character) {
  text_.erase(text_.find_last_not_of(character.ConvertToChar()) + 1);
}

void TEVUnicodeString::BuildFromNum(int number, const char* format) {
  const int printed = format == nullptr ? 0 : std::snprintf(nullptr, 0, format, number);
  const auto length = static_cast<size_t>(std::max(printed, 0));
  std::string text(length + 1, '\0');
  if (length > 0) static_cast<void>(std::snprintf(text.data(), text.size(), format, number));
  text.resize(length);  // without the NUL that snprintf ends with
  text_ = text;         // only now, since `format` may be a part of it
}
