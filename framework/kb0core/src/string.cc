#include "kb0core/TEVString.h"

TEVString::TEVString(const char* text) : text_(text == nullptr ? "" : text) {}

const char* TEVString::ConvertToChar() const { return text_.c_str(); }
