#include "support/text_file.h"

#include <cstring>

namespace kwinst {

InputFile OpenForReading(const char* path) {
  std::FILE* file = nullptr;
  TEVFOpen(path, "r", &file);
  return InputFile(file);
}

void CutNewline(char* line) { line[std::strcspn(line, "\n")] = '\0'; }

}  // namespace kwinst
