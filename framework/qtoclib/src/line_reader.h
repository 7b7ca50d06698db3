#ifndef QTOCLIB_LINE_READER_H_
#define QTOCLIB_LINE_READER_H_

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kwinst {

/// Reads a text file line by line. A line may have any length and any bytes.
class LineReader {
 public:
  explicit LineReader(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) == 0) {
      // A pipe might have to be waited for, and a device might never end.
      if (!S_ISREG(info.st_mode)) {
        error_ = S_ISDIR(info.st_mode) ? EISDIR : ENOTSUP;
        return;
      }
      file_ = std::fopen(path.c_str(), "rbe");
    }
    if (file_ == nullptr) error_ = errno;
  }

  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  ~LineReader() {
    if (file_ != nullptr) static_cast<void>(std::fclose(file_));
    std::free(buffer_);
  }

  /// Points `line` to the next line, without its LF or CR LF and valid until the next call. False
  /// at the end of the file and when it cannot be read.
  bool Next(std::string_view& line) {
    if (file_ == nullptr) return false;
    const ssize_t length = getline(&buffer_, &capacity_, file_);
    if (length < 0 || std::ferror(file_) != 0) {
      if (std::feof(file_) == 0) error_ = errno;
      return false;
    }
    ++number_;
    line = std::string_view(buffer_, static_cast<size_t>(length));
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return true;
  }

  /// The number of the line that Next gave, from 1.
  size_t number() const { return number_; }

  /// The number of the error that kept the file from being read to its end, or 0.
  int error() const { return error_; }

 private:
  std::FILE* file_ = nullptr;
  char* buffer_ = nullptr;
  size_t capacity_ = 0;
  size_t number_ = 0;
  int error_ = 0;
};

/// True for a line of nothing but blanks and tabs.
inline bool IsBlank(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace kwinst

#endif  // QTOCLIB_LINE_READER_H_
