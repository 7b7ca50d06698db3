#include "support/text_file.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace kwinst {

namespace {

/// Not isspace(): the words must not depend on the caller's locale.
bool IsBlank(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

bool IsPipeOrDevice(const char* path) {
  struct stat info {};
  return stat(path, &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

InputFile OpenForReading(const char* path) {
  if (IsPipeOrDevice(path)) {
    errno = ENOTSUP;
    return nullptr;
  }
  std::FILE* file = nullptr;
  const int error = TEVFOpen(path, "r", &file);
  if (file == nullptr) errno = error;
  return InputFile(file);
}

bool CopyOwnerAndMode(const struct stat& origin, std::FILE* file) {
  struct stat now {};
  if (fstat(fileno(file), &now) != 0 || !S_ISREG(now.st_mode)) return false;
  const bool owned = (now.st_uid == origin.st_uid && now.st_gid == origin.st_gid) ||
                     fchown(fileno(file), origin.st_uid, origin.st_gid) == 0;
  return fchmod(fileno(file), origin.st_mode & 07777) == 0 && owned;
}

void CutBack(const char* path, off_t length) {
  struct stat now {};
  if (stat(path, &now) != 0 || !S_ISREG(now.st_mode) || now.st_size <= length) return;
  // If the file cannot be cut back, nothing more can be done.
  [[maybe_unused]] const int cut = truncate(path, length);
}

std::string_view PieceReader::Next() {
  size_t length = unread_.substr(0, size_).find('\n') + 1;
  if (length == 0 && unread_.size() < size_) {
    std::string_view::traits_type::move(buffer_, unread_.data(), unread_.size());
    const size_t room = sizeof(buffer_) - unread_.size();
    const size_t more = std::fread(buffer_ + unread_.size(), 1, room, file_);
    unread_ = std::string_view(buffer_, unread_.size() + more);
    length = unread_.substr(0, size_).find('\n') + 1;
  }
  if (length == 0) length = std::min(size_, unread_.size());
  const std::string_view piece = unread_.substr(0, length);
  unread_.remove_prefix(length);
  return piece;
}

bool BeginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

void CutNewline(char* line) { line[std::strcspn(line, "\n")] = '\0'; }

bool ReadWord(std::FILE* file, char* word, size_t size) {
  int c = getc_unlocked(file);
  while (IsBlank(c)) c = getc_unlocked(file);
  size_t length = 0;
  for (; c != EOF && !IsBlank(c); c = getc_unlocked(file)) {
    if (length + 1 == size) {
      static_cast<void>(std::ungetc(c, file));
      break;
    }
    word[length++] = static_cast<char>(c);
  }
  word[length] = '\0';
  return length > 0 && std::ferror(file) == 0;
}

bool ReadFirstLine(const char* path, char* line, int size) {
  line[0] = '\0';
  const InputFile file = OpenForReading(path);
  if (file == nullptr) return false;
  if (TEVFGets(line, size, file.get()) != 0) line[0] = '\0';
  CutNewline(line);
  return std::ferror(file.get()) == 0;
}

bool ReadFirstWord(const std::string& path, char* word, size_t size) {
  word[0] = '\0';
  const InputFile file = OpenForReading(path.c_str());
  if (file == nullptr) return false;
  if (!ReadWord(file.get(), word, size)) word[0] = '\0';
  return std::ferror(file.get()) == 0;
}

}  // namespace kwinst
