#ifndef KWINSTUTIL_SUPPORT_TEXT_FILE_H_
#define KWINSTUTIL_SUPPORT_TEXT_FILE_H_

#include <kb0core/TEVFile.h>

#include <cstdio>
#include <memory>

namespace kwinst {

struct FileCloser {
  void operator()(std::FILE* file) const { TEVFClose(file); }
};

/// A file that is read and closed on every way out. What was written is closed by hand instead,
/// because that may fail.
using InputFile = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading. Null when that fails.
InputFile OpenForReading(const char* path);

/// Calls `use(line)` with each line of a text, its newline included, as a C string in a buffer of
/// `Size` bytes: a longer line comes in pieces. Stops at the end, at a read failure, or when `use`
/// returns false.
template <int Size, typename Use>
void ForEachLine(std::FILE* file, Use use) {
  char line[Size];
  while (TEVFEof(file) == 0 && TEVFGets(line, Size, file) == 0) {
    if (!use(line)) return;
  }
}

/// Cuts a line at its newline.
void CutNewline(char* line);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_TEXT_FILE_H_
