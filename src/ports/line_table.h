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

/// The line that replaces each line that begins with `name`.
struct Replacement {
  std::string name;
  std::string line;
};

/// The content of a file that will be rewritten. It has memory for the file's lines and three
/// more, each of kSlotSize bytes. Lines lie one behind the other, so that most of that memory is
/// never touched.
class LineTable {
 public:
  explicit LineTable(size_t lines);
  ~LineTable();
  LineTable(const LineTable&) = delete;
  LineTable& operator=(const LineTable&) = delete;

  /// Was there no memory for the table?
  bool absent() const { return text_ == nullptr; }

  /// The bytes that were asked for.
  size_t size() const { return size_; }

  /// Reads `file` from its beginning, with replacements. Returns false if it cannot be read, or if
  /// a line does not fit.
  bool Read(std::FILE* file, const std::vector<Replacement>& replacements);

  /// Adds a whole line, after a newline if the last line lacks one. Returns false if it does not
  /// fit.
  bool AddLine(std::string_view line);

  /// Writes the lines to the new, empty `file`, with the mode and the owner of the file that was
  /// read, and closes it. Returns false if any of that fails.
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
