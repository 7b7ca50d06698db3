#ifndef KB0CORE_TEVUNICODESTRING_H_
#define KB0CORE_TEVUNICODESTRING_H_

#include <string>

#include "kb0core/export.h"

/// One character of a TEVUnicodeString that takes a single byte.
class KB0CORE_EXPORT TEVUnicodeChar {
 public:
  explicit TEVUnicodeChar(char value) : value_(value) {}
  char ConvertToChar() const { return value_; }

 private:
  char value_;
};

/// A text that people read: a message, a path, a number.
///
/// The text is UTF-8, but nothing checks it: UNIX paths are bytes, so any bytes that go in come out
/// of ConvertToChar() unchanged. Positions and lengths count bytes, from 0.
class KB0CORE_EXPORT TEVUnicodeString {
 public:
  TEVUnicodeString() = default;
  /// A null pointer gives an empty string.
  // Converts on purpose: callers pass paths and literals where a text is asked for.
  TEVUnicodeString(const char* text);  // NOLINT(google-explicit-constructor)

  TEVUnicodeString(const TEVUnicodeString&) = default;
  TEVUnicodeString(TEVUnicodeString&&) = default;
  TEVUnicodeString& operator=(const TEVUnicodeString&) = default;
  TEVUnicodeString& operator=(TEVUnicodeString&&) = default;
  /// A null pointer empties the string. `text` may point into this string.
  TEVUnicodeString& operator=(const char* text);
  ~TEVUnicodeString() = default;

  void Append(const TEVUnicodeString& text);

  /// The text as a C string, valid until the string changes or dies. Never null.
  const char* ConvertToChar() const;

  /// The text from `position` on, at most `length` bytes of it; empty when `position` lies outside.
  TEVUnicodeString SubString(int position, int length) const;

  /// The position of the first `text` at or after `from`, or -1.
  int SearchSubString(const TEVUnicodeString& text, int from = 0) const;

  /// Removes `length` bytes from `position` on, or as many as there are.
  void Remove(int position, int length);

  /// Removes every `character` from the end.
  void Strip(TEVUnicodeChar character);

  /// Becomes `number`, printed with `format`, which has one conversion for an int, such as "%d".
  void BuildFromNum(int number, const char* format);

 private:
  std::string text_;
};

#endif  // KB0CORE_TEVUNICODESTRING_H_
