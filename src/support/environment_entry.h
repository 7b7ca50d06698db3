#ifndef KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_
#define KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kwinst {

/// A text KEY=VALUE for the environment, and the buffer that it goes into. The environment keeps a
/// pointer to that, so the buffer lives as long as the process.
struct EnvironmentEntry {
  template <size_t Size>
  EnvironmentEntry(char (&place)[Size], std::string entry)
      : buffer(place), size(Size), text(std::move(entry)) {}

  /// A constant entry: it is published where it is, and not written.
  explicit EnvironmentEntry(char* constant) : buffer(constant), size(0) {}

  bool fits() const { return size == 0 || text.size() < size; }

  char* buffer;
  size_t size;       ///< of the buffer; 0 for a constant
  std::string text;  ///< not of a constant; when it is empty, nothing is published
};

/// Writes the entries into their buffers and puts them into the environment, in that order. False,
/// with buffers and environment as they were, when one of them does not fit. False too when the
/// environment has no memory for one: those before it are published then.
bool Publish(const std::vector<EnvironmentEntry>& entries);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_
