#ifndef KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_
#define KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kwinst {

/// A text KEY=VALUE for the environment, and the buffer for it. The environment keeps a pointer to
/// the buffer, so the buffer must live as long as the process.
struct EnvironmentEntry {
  template <size_t Size>
  EnvironmentEntry(char (&place)[Size], std::string entry)
      : buffer(place), size(Size), text(std::move(entry)) {}

  /// A constant entry: it is put into the environment as it is, and not written.
  explicit EnvironmentEntry(char* constant) : buffer(constant), size(0) {}

  bool fits() const { return size == 0 || text.size() < size; }

  char* buffer;
  size_t size;       ///< of the buffer; 0 for a constant
  std::string text;  ///< unused for a constant; if it is empty, nothing is published
};

/// Writes the entries into their buffers and puts them into the environment, in this order. Returns
/// false if one of them does not fit: buffers and environment are then as they were. Returns false
/// too if there is no memory for one: the entries before it are then in the environment.
bool Publish(const std::vector<EnvironmentEntry>& entries);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_
