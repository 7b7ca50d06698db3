#ifndef KWBATCH_PACKAGE_LINE_H_
#define KWBATCH_PACKAGE_LINE_H_

#include <qtoclib/TEVINSType.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A line of a table of contents or of a list, taken apart.
struct PackageLine {
  TEVINSType type;
  TEVINSPkg kind;
  std::string name;
  std::vector<std::pair<std::string, std::string>> keys;  ///< in the order of the line

  /// The value of a key, empty when the line does not have it. The last one counts.
  std::string Value(const std::string& key) const;

  bool Has(const std::string& key) const;

  /// The line as a table has it, with a newline: without the keys that only a list has.
  std::string Text() const;
};

/// Takes a line apart, also one that ends in CR. Nothing for a blank line or a comment. Throws a
/// Refusal that says what an installation would not take.
std::optional<PackageLine> ParsePackageLine(const std::string& line);

/// The level of a service pack or a hot fix: 1 when the line has none. Throws a Refusal.
int LevelOf(const PackageLine& line);

/// Is it UTF-8, without control characters?
bool IsText(const std::string& text);

/// The text with a question mark for each byte that a terminal would not show.
std::string Printable(std::string text);

#endif  // KWBATCH_PACKAGE_LINE_H_
