#ifndef KWINSTUTIL_SUPPORT_FORMAT_H_
#define KWINSTUTIL_SUPPORT_FORMAT_H_

#include <cstddef>
#include <string>

namespace kwinst {

/// The text that printf would print, of any length.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Copies `text` into `buffer` of `size` bytes. Returns false, and leaves the buffer as it was, if
/// `text` and its terminator do not fit.
bool CopyWhole(const std::string& text, char* buffer, size_t size);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_FORMAT_H_
