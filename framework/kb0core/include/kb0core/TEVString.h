#ifndef KB0CORE_TEVSTRING_H_
#define KB0CORE_TEVSTRING_H_

#include <string>

#include "kb0core/export.h"

/// A plain string for names that only programs use: names of catalogs and keys of messages.
class KB0CORE_EXPORT TEVString {
 public:
  /// A null pointer gives an empty string.
  // Deliberate: not explicit, so that callers can pass literals.
  TEVString(const char* text);  // NOLINT(google-explicit-constructor)

  const char* ConvertToChar() const;

 private:
  std::string text_;
};

#endif  // KB0CORE_TEVSTRING_H_
