#ifndef KWINSTUTIL_FUZZ_FUZZ_H_
#define KWINSTUTIL_FUZZ_FUZZ_H_

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// \file
/// What the fuzz targets share. A target turns bytes into the texts that a reader of the library
/// may find, and requires what the headers promise of it. libFuzzer calls it with what it invents,
/// and the tests with what was kept in corpus/.

/// The entrance of a target.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

/// Ends the process, with a core for libFuzzer to keep the input of, when a promise is broken.
inline void Require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "Broken promise: %s\n", promise);
  std::abort();
}

/// The texts of an input, parted by record separators (byte 0x1E).
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  /// A choice among few: the next byte, or 0 when there is none.
  unsigned Byte() {
    if (rest_.empty()) return 0;
    const unsigned byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  /// The text up to the next separator.
  std::string Next() {
    const size_t end = std::min(rest_.find('\x1e'), rest_.size());
    std::string text(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return text;
  }

  /// The same as an argument of one line: it ends before a zero byte or a newline.
  std::string NextArgument() {
    std::string text = Next();
    return text.substr(0, std::min(text.find('\0'), text.find('\n')));
  }

  std::string Rest() { return std::string(rest_); }

 private:
  std::string_view rest_;
};

/// A directory of this process, in memory unless TMPDIR says otherwise, until the process exits.
class TempDir {
 public:
  TempDir() {
    umask(022);  // the targets know the modes of what they make
    const char* parent = std::getenv("TMPDIR");
    if (parent == nullptr) parent = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    path_ = std::string(parent) + "/kwinst-fuzz-XXXXXX";
    Require(mkdtemp(path_.data()) != nullptr, "a temporary directory can be made");
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// The path of `name` in the process's directory.
inline std::string Path(const std::string& name) {
  static const TempDir dir;
  return dir.path() + '/' + name;
}

inline bool Exists(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0;
}

/// Makes or overwrites a file; a new one gets the mode 0640.
inline void Write(const std::string& path, std::string_view content) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0640);
  const bool written =
      write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size());
  Require(written && close(file) == 0, "a file can be written");
}

inline std::string Read(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  std::string content;
  char buffer[1 << 13];
  ssize_t count = 0;
  while ((count = read(file, buffer, sizeof buffer)) > 0) {
    content.append(buffer, static_cast<size_t>(count));
  }
  Require(count == 0 && close(file) == 0, "a file can be read");
  return content;
}

/// The lines of a text with their newlines; one of more than `most` characters comes in pieces.
/// They lie in the text itself.
inline std::vector<std::string_view> Lines(std::string_view text, size_t most = SIZE_MAX) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t newline = std::min(text.find('\n'), text.size() - 1);
    const size_t length = std::min(newline + 1, most);
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

inline bool BeginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

}  // namespace fuzz

#endif  // KWINSTUTIL_FUZZ_FUZZ_H_
