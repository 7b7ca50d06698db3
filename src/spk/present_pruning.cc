#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "kwinstutil/spk.h"

// std::strstream is deprecated, but part of the interface.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

int line_removed = 0;  ///< 1 after a line was removed; never reset

constexpr size_t kFieldSize = 47;

/// Is `field` equal to `text`? The field ends at its first zero byte.
bool Names(std::string_view field, std::string_view text) {
  return field.substr(0, field.find('\0')) == text;
}

/// The beginning of a line: up to three fields of up to 47 characters.
struct Head {
  std::string_view fields[3];
  size_t length = 0;      ///< in the line, separators included
  bool complete = false;  ///< all three fields are there

  bool IsOf(const char* service_pack, TEVINSType type) const {
    return complete && Names(fields[0], kTEVINSNames[type]) && Names(fields[1], "SPK") &&
           Names(fields[2], service_pack);
  }
};

/// Finds the head of a line. The character behind a field is its separator, even if the field is
/// too long and goes on with it. If all three fields are there, the two separators become ':'.
Head FindHead(std::string& line) {
  const std::string_view text = line;
  Head head;
  size_t partings[3] = {};
  for (size_t i = 0; i < 3; ++i) {
    if (i > 0 && head.length == text.size()) return head;
    if (i > 0) partings[i] = head.length++;
    const std::string_view rest = text.substr(head.length);
    head.fields[i] = rest.substr(0, std::min(rest.find(':'), kFieldSize));
    head.length += head.fields[i].size();
  }
  head.complete = true;
  line[partings[1]] = line[partings[2]] = ':';
  return head;
}

// A stream keeps the identity of its file here: the class has no other members than its streams.
const int kDevice = std::ios_base::xalloc();
const int kNumber = std::ios_base::xalloc();

/// Stores the identity of the file `path`, which `stream` was opened on, in the stream.
void StoreIdentity(std::ios_base& stream, const char* path) {
  struct stat info {};
  if (stat(path, &info) != 0) return;
  stream.iword(kDevice) = static_cast<long>(info.st_dev);  // NOLINT(google-runtime-int)
  stream.iword(kNumber) = static_cast<long>(info.st_ino);  // NOLINT(google-runtime-int)
}

/// Is `path` the file whose identity `stream` has? Links are followed.
bool IsFileOf(std::ios_base& stream, const char* path) {
  struct stat info {};
  return stat(path, &info) == 0 && static_cast<dev_t>(stream.iword(kDevice)) == info.st_dev &&
         static_cast<ino_t>(stream.iword(kNumber)) == info.st_ino;
}

}  // namespace

TEVInsResetPresent::TEVInsResetPresent() noexcept = default;

TEVInsResetPresent::~TEVInsResetPresent() noexcept = default;

int TEVInsResetPresent::InitSource(char* path) noexcept {
  source_.open(path);
  if (!source_.good()) return -1;
  StoreIdentity(source_, path);
  return 0;
}

int TEVInsResetPresent::InitDest(char* path) noexcept {
  // Opening the control file itself for writing would empty it.
  if (source_.is_open() && IsFileOf(source_, path)) return -1;
  dest_.open(path);
  return dest_.good() ? 0 : -1;
}

int TEVInsResetPresent::Remove(char* name, TEVINSType type) noexcept {
  if (!source_.is_open()) return -1;
  for (std::string line; std::getline(source_, line);) {
    if (FindHead(line).IsOf(name, type)) {
      line_removed = 1;
      continue;
    }
    dest_ << (line += '\n') << std::flush;
    if (dest_.fail()) return -1;
  }
  if (source_.bad()) return -1;
  source_.close();
  dest_.close();
  return dest_.fail() ? -1 : 0;
}

int TEVInsResetPresent::IsLineToRemove(char* name, std::strstream& line, TEVINSType type) noexcept {
  std::string text(3 * kFieldSize + 2, '\0');
  std::streambuf& buffer = *line.rdbuf();
  const std::streamsize read = buffer.sgetn(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(read));
  const Head head = FindHead(text);
  const auto length = static_cast<std::streamsize>(head.length);
  if (length < read) buffer.pubseekoff(length - read, std::ios::cur, std::ios::in);
  if (head.IsOf(name, type)) return 0;

  dest_.write(text.data(), length);
  const auto& [first, second, third] = head.fields;
  return static_cast<int>(first.size() + second.size() + third.size()) + 2;
}

int TEVInsResetPresent::FileCopy(char* from, char* to) noexcept {
  std::ifstream source(from);
  if (!source.good()) return -1;
  StoreIdentity(source, from);
  if (IsFileOf(source, to)) return -1;
  std::ofstream dest(to);
  if (!dest.good()) return -1;
  char block[1 << 16];
  char last = '\n';
  while (source.read(block, sizeof(block)), source.gcount() > 0) {
    dest.write(block, source.gcount());
    if (dest.fail()) return -1;
    last = block[source.gcount() - 1];
  }
  if (last != '\n') dest.put('\n');
  dest.close();
  return source.bad() || dest.fail() ? -1 : 0;
}

int TEVInsResetPresent::IsLineRemoved() noexcept { return line_removed; }
