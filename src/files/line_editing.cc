#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "kwinstutil/files.h"
#include "support/format.h"
#include "support/text_file.h"

using std::string_view;

namespace {

bool Matches(string_view line, string_view text, bool atStart) {
  return atStart ? kwinst::BeginsWith(line, text) : line.find(text) != string_view::npos;
}

/// Copies the lines without `text`. Returns false if a read or a write fails.
bool CopyOtherLines(std::FILE* from, std::FILE* to, string_view text, bool atStart) {
  bool written = true;
  const bool read = kwinst::ForEachPiece<2048>(from, [&](string_view line) {
    written =
        Matches(line, text, atStart) || std::fwrite(line.data(), 1, line.size(), to) == line.size();
    return written;
  });
  return read && written;
}

/// Writes the lines of `file` without `text` to a new file. Returns false if that fails.
bool WriteOtherLines(const char* file, const std::string& newFile, string_view text, bool atStart) {
  const kwinst::InputFile from = kwinst::OpenForReading(file);
  std::FILE* to = nullptr;
  if (from == nullptr || TEVFOpen(newFile.c_str(), "w", &to) != 0) return false;
  const bool copied = CopyOtherLines(from.get(), to, text, atStart);
  struct stat origin {};
  // The owner is kept where that is allowed.
  if (copied && fstat(fileno(from.get()), &origin) == 0) kwinst::CopyOwnerAndMode(origin, to);
  return TEVFClose(to) == 0 && copied;
}

/// The text that printf would print for `format` without arguments: "%%" becomes "%", and other
/// conversions stay as they are.
std::string WithoutArguments(const char* format) {
  std::string text;
  for (const char* at = format; *at != '\0'; ++at) {
    if (at[0] == '%' && at[1] == '%') ++at;
    text += *at;
  }
  return text;
}

}  // namespace

int TEVInsSuppressLine(char* file, char* text, TEVUnicodeString* /*message*/,
                       int atStart) noexcept {
  if (file == nullptr || text == nullptr) return -1;
  const std::string new_file = kwinst::Format("%s.tmp%d", file, static_cast<int>(getpid()));
  if (!WriteOtherLines(file, new_file, text, atStart != 0)) return -1;

  // If no line would be left, the file stays as it was, and the new file stays beside it. The same
  // happens if the new file cannot be examined.
  TEVFileInfo info;
  if (TEVGetFileInfo(new_file.c_str(), &info) != 0 || info.size == 0) return 1;
  return TEVRenameFile(new_file.c_str(), file) == 0 ? 1 : -1;
}

int TEVInsAddLine(char* file, char* line, TEVUnicodeString* /*message*/) noexcept {
  std::FILE* stream = nullptr;
  if (file == nullptr || line == nullptr || TEVFOpen(file, "r+", &stream) != 0) return -1;
  const std::string text = WithoutArguments(line) + '\n';
  const off_t length = fseeko(stream, 0, SEEK_END) == 0 ? ftello(stream) : -1;
  const bool written =
      length >= 0 && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  if (TEVFClose(stream) == 0 && written) return 1;

  if (length >= 0) kwinst::CutBack(file, length);
  return -1;
}
