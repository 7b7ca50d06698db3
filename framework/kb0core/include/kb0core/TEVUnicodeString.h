#ifndef KB0CORE_TEVUNICODESTRING_H_
#define KB0CORE_TEVUNICODESTRING_H_

#include <string>

#include "kb0core/export.h"

/// A character of a TEVUnicodeString that has one byte.
class KB0CORE_EXPORT TEVUnicodeChar {
 public:
  explicit TEVUnicodeChar(char value) : value_(value) {}
  char ConvertToChar() const { return value_; }

 private:
  char value_;
};

/// A text that people read: a message, a path, a number.
///
/// The text is UTF-8, but this is not checked. UNIX paths may have any bytes, and ConvertToChar()
/// returns them unchanged. Positions and lengths count bytes, and positions begin at 0.
class KB0CORE_EXPORT TEVUnicodeString {
 public:
  TEVUnicodeString() = default;
  /// A null pointer gives an empty string.
  // Deliberate: not explicit, so that callers can pass paths and literals.
  TEVUnicodeString(const char* text);  // NOLINT(google-explicit-constructor)

  TEVUnicodeString(const TEVUnicodeString&) = default;
  TEVUnicodeString(TEVUnicodeString&&) = default;
  TEVUnicodeString& operator=(const TEVUnicodeString&) = default;
  TEVUnicodeString& operator=(TEVUnicodeString&&) = default;
  /// A null pointer empties the string. `text` may point into this string.
  TEVUnicodeString& operator=(const char* text);
  ~TEVUnicodeString() = default;

  void Append(const TEVUnicodeString& text);

  /// The text as a C string, valid until this string is changed or destroyed. Never null.
  const char* ConvertToChar() const;

  /// At most `length` bytes of the text from `position` on. Empty if `position` is outside the
  /// text.
  TEVUnicodeString SubString(int position, int length) const;

  /// The position of the first `text` at or after `from`, or -1.
  int SearchSubString(const TEVUnicodeString& text, int from = 0) const;

  /// Removes `length` bytes from `position` on, or all that are there if there are fewer.
  void Remove(int position, int length);

  /// Removes `character` from the end as often as it is there.
  void Strip(TEVUnicodeChar character);

  /// Replaces the text by `number`, printed with `format`. The format has one conversion for an
  /// int, such as "%d".
  void BuildFromNum(int number, const char* format);

 private:
  std::string text_;
};

#endif  // KB0CORE_TEVUNICODESTRING_H_
