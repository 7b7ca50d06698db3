#ifndef KB0CORE_TEVSTRING_H_
#define KB0CORE_TEVSTRING_H_

#include <string>

#include "kb0core/export.h"

/// A plain string for names that programs use among themselves: catalog names and message keys.
class KB0CORE_EXPORT TEVString {
 public:
  /// A null pointer gives an empty string.
  // Converts on purpose: names are written as literals where a TEVString is asked for.
  TEVString(const char* text);  // NOLINT(google-explicit-constructor)

  const char* ConvertToChar() const;

 private:
  std::string text_;
};

#endif  // KB0CORE_TEVSTRING_H_
