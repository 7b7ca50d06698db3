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

/// Closes a file and keeps errno, which says why reading has failed.
struct FileCloser {
  void operator()(std::FILE* file) const {
    const int error = errno;
    TEVFClose(file);
    errno = error;
  }
};

/// A file that is read. It is closed when it goes out of scope. A file that is written is closed by
/// hand instead, because that may fail.
using InputFile = std::unique_ptr<std::FILE, FileCloser>;

/// Does `path` exist, and is it neither a regular file nor a directory? Opening a pipe may block,
/// and a device may never end.
bool IsPipeOrDevice(const char* path);

/// Opens a file for reading. Returns null, with errno set, if that fails, and if the file is a pipe
/// or a device.
InputFile OpenForReading(const char* path);

/// Gives the open file `file` the owner and the mode of `origin`. Returns false if `file` is not a
/// regular file, or if one of the two cannot be set. The mode is set even if the owner cannot be.
bool CopyOwnerAndMode(const struct stat& origin, std::FILE* file);

/// Cuts the regular file `path` back to `length` bytes after a failed append. A file that is not
/// longer, or that cannot be cut back, stays as it is.
void CutBack(const char* path, off_t length);

/// Calls `use(line)` with each line of a file, its newline included, as a C string of at most
/// `Size` - 1 characters. A longer line comes in pieces. Stops at the end, on a read error, or when
/// `use` returns false.
template <int Size, typename Use>
void ForEachLine(std::FILE* file, Use use) {
  char line[Size];
  while (TEVFEof(file) == 0 && TEVFGets(line, Size, file) == 0) {
    if (!use(line)) return;
  }
}

/// Reads a file line by line, newlines included. A line of more than `size` characters comes in
/// pieces. A zero byte is an ordinary character. The file is read ahead of the lines.
class PieceReader {
 public:
  /// `size` must not be larger than the buffer.
  PieceReader(std::FILE* file, size_t size) : file_(file), size_(size) {}

  /// The next line or piece, valid until the next call. Empty at the end and on a read error.
  std::string_view Next();

 private:
  std::FILE* file_;
  size_t size_;
  char buffer_[1 << 14];
  std::string_view unread_;  ///< the part of the buffer that Next has not returned
};

/// Calls `use(piece)` with each line of a file, its newline included, until `use` returns false. A
/// line of more than `Size` - 1 characters comes in pieces. Returns false, with errno set, if the
/// file cannot be read.
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

/// Reads the next word, which ends at white space. A word of more than `size` - 1 characters is
/// split there: its rest is the next word. Returns false at the end and on a read error.
bool ReadWord(std::FILE* file, char* word, size_t size);

/// Calls `use(word)` with each word of the file `path` as a C string of at most `Size` - 1
/// characters. A longer word comes in pieces. Stops at the end, or when `use` returns false.
/// Returns false, with errno set, if the file cannot be opened or read. A directory cannot be read.
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
/// of it, into `line`. An empty file gives an empty line. Returns false, with errno set and `line`
/// empty, if the file cannot be opened or read. A directory cannot be read.
bool ReadFirstLine(const char* path, char* line, int size);

/// Reads the first word of the file `path`, at most `size` - 1 characters of it, into `word`. If
/// the file has no words, `word` is empty. Fails as ReadFirstLine does, with `word` empty.
bool ReadFirstWord(const std::string& path, char* word, size_t size);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_TEXT_FILE_H_
