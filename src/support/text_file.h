#ifndef KWINSTUTIL_SUPPORT_TEXT_FILE_H_
#define KWINSTUTIL_SUPPORT_TEXT_FILE_H_

#include <kb0core/TEVFile.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace kwinst {

/// Closes a file and leaves errno alone: it tells why the reading failed.
struct FileCloser {
  void operator()(std::FILE* file) const {
    const int error = errno;
    TEVFClose(file);
    errno = error;
  }
};

/// A file that is read and closed on every way out. What was written is closed by hand instead,
/// because that may fail.
using InputFile = std::unique_ptr<std::FILE, FileCloser>;

/// Is `path` something else than a file or a directory? A pipe might have to be waited for, and a
/// device might never end.
bool IsPipeOrDevice(const char* path);

/// Opens a file for reading. Null, with errno set, when that fails, or it is a pipe or a device.
InputFile OpenForReading(const char* path);

/// Gives `file`, which is open and regular, the owner and the mode of another one. False when one
/// of the two cannot be given; the mode is given all the same when the owner cannot.
bool CopyOwnerAndMode(const struct stat& origin, std::FILE* file);

/// Cuts the regular file `path` back to `length` bytes after a failed append. One that is not
/// longer stays as it is; so does one that cannot be cut back.
void CutBack(const char* path, off_t length);

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

/// Reads a file in lines, their newlines included, or in pieces of `size` characters of longer
/// ones. Zero bytes are characters like any others. The file itself is read ahead.
class PieceReader {
 public:
  /// `size` is at most that of the buffer.
  PieceReader(std::FILE* file, size_t size) : file_(file), size_(size) {}

  /// The next piece, valid until the next call; empty at the end of the file or when it cannot be
  /// read.
  std::string_view Next();

 private:
  std::FILE* file_;
  size_t size_;
  char buffer_[1 << 14];
  std::string_view unread_;  ///< in the buffer
};

/// Calls `use(piece)` with each line of a file, its newline included, until it returns false; a
/// line of more than `Size` - 1 characters comes in pieces. False when the file cannot be read;
/// errno then tells why.
template <size_t Size, typename Use>
bool ForEachPiece(std::FILE* file, Use use) {
  PieceReader reader(file, Size - 1);
  for (std::string_view piece = reader.Next(); !piece.empty(); piece = reader.Next()) {
    if (!use(piece)) break;
  }
  return std::ferror(file) == 0;
}

bool BeginsWith(std::string_view text, std::string_view prefix);

/// Cuts a line at its newline.
void CutNewline(char* line);

/// Reads the next word, which white space ends, or the first `size` - 1 characters of a longer one;
/// its rest is then the next word. False at the end, and when the file cannot be read.
bool ReadWord(std::FILE* file, char* word, size_t size);

/// Calls `use(word)` with each word of the file `path` as a C string of at most `Size` - 1
/// characters: a longer word comes in pieces. Stops at the end, or when `use` returns false. False,
/// with errno set, when the file cannot be opened or read, as a directory cannot.
template <size_t Size, typename Use>
bool ForEachWord(const char* path, Use use) {
  const InputFile file = OpenForReading(path);
  if (file == nullptr) return false;
  char word[Size];
  while (ReadWord(file.get(), word, Size)) {
    if (!use(word)) return true;
  }
  return std::ferror(file.get()) == 0;
}

/// Reads the first line of the file `path`, without its newline and at most `size` - 1 characters
/// of it, into `line`. An empty file has an empty line. False, with errno set and `line` empty,
/// when the file cannot be opened or read, as a directory cannot.
bool ReadFirstLine(const char* path, char* line, int size);

/// Reads the first word of the file `path`, at most `size` - 1 characters of it, into `word`, which
/// is empty when the file has none. False, with errno set and `word` empty, as for ReadFirstLine.
bool ReadFirstWord(const std::string& path, char* word, size_t size);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_TEXT_FILE_H_
