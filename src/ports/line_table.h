#ifndef KWINSTUTIL_PORTS_LINE_TABLE_H_
#define KWINSTUTIL_PORTS_LINE_TABLE_H_

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/text_file.h"

namespace kwinst {

/// The system file /etc/NAME, or its copy VRK_ODT_TMP/NAME when VRK_ODT_IN and VRK_ODT_OUT are both
/// set. None when there should be a copy and VRK_ODT_TMP is unset.
std::optional<std::string> SystemFile(const std::string& name);

/// Opens a stream. Null when that fails, or for a pipe or a device, with the system's text for the
/// reason in `*error`.
InputFile OpenSystemFile(const std::string& path, const char* mode, std::string* error);

/// Removes `copy` when it is a link to something else, or `path` itself under another name: to
/// write a copy there would overwrite what it leads to.
void DropLink(const std::string& copy, const std::string& path);

/// Size of a line in a table: a longer line is split into pieces of one character less.
constexpr size_t kSlotSize = 1024;

/// Calls `use(piece)` with each line or piece of the file, until it returns false. False when the
/// file cannot be read; errno then tells why.
template <typename Use>
bool ForEachPiece(std::FILE* file, Use use) {
  PieceReader reader(file, kSlotSize - 1);
  for (std::string_view piece = reader.Next(); !piece.empty(); piece = reader.Next()) {
    if (!use(piece)) break;
  }
  return std::ferror(file) == 0;
}

bool BeginsWith(std::string_view text, std::string_view prefix);

/// Adds whole lines at the end of a file that is open for reading and writing, after a newline if
/// its last line lacks one, and closes it. Adds nothing when `lines` is empty. False when not all
/// could be stored; the file at `path` then is as long as it was.
bool AppendAndClose(InputFile file, const std::string& path, const std::string& lines);

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
