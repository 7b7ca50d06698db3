#include "support/format.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kwinst {

std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);

  std::string text(length < 0 ? 0 : static_cast<size_t>(length), '\0');
  // A string has room for its terminator behind its characters.
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

bool CopyWhole(const std::string& text, char* buffer, size_t size) {
  if (text.size() >= size) return false;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

}  // namespace kwinst
