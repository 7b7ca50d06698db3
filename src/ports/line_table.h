#ifndef KWINSTUTIL_PORTS_LINE_TABLE_H_
#define KWINSTUTIL_PORTS_LINE_TABLE_H_

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "support/text_file.h"

namespace kwinst {

/// Size of a line in a table: a longer line is split into pieces of one character less.
constexpr size_t kSlotSize = 1024;

/// What takes the place of each line that begins with `name`.
struct Replacement {
  std::string name;
  std::string line;
};

/// The content of a file that is about to be rewritten: a slot of 1024 bytes for each line, and
/// three to spare. The lines lie one behind the other, so memory that they do not need stays
/// untouched.
class LineTable {
 public:
  explicit LineTable(size_t lines);
  ~LineTable();
  LineTable(const LineTable&) = delete;
  LineTable& operator=(const LineTable&) = delete;

  /// True when there was no memory for it.
  bool absent() const { return text_ == nullptr; }

  /// What was asked for, in bytes.
  size_t size() const { return size_; }

  /// Reads `file` from its beginning, with replacements. False when it cannot be read, or a line
  /// does not fit.
  bool Read(std::FILE* file, const std::vector<Replacement>& replacements);

  /// Adds a whole line, after a newline if the last one lacks it. False when it does not fit.
  bool AddLine(std::string_view line);

  /// Writes the lines to the new, empty `file`, with the mode and the owner of the file that was
  /// read, and closes it. False when any of that fails.
  bool WriteAndClose(InputFile file) const;

 private:
  bool Add(std::string_view text);

  size_t size_;
  char* text_;
  size_t used_ = 0;
  struct stat origin_ {};  ///< of the file that was read
};

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_LINE_TABLE_H_
