#include "support/text_file.h"

#include <sys/stat.h>

#include <cstring>

namespace kwinst {

namespace {

/// Not isspace(): what parts the words must not depend on the caller's locale.
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

size_t ReadPiece(std::FILE* file, char* piece, size_t size) {
  size_t length = 0;
  while (length < size) {
    const int c = getc_unlocked(file);
    if (c == EOF) break;
    piece[length++] = static_cast<char>(c);
    if (c == '\n') break;
  }
  return length;
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

}  // namespace kwinst
