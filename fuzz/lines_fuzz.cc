// TEVInsSuppressLine and TEVInsAddLine. An input: how lines match, the text to suppress, the line
// to add, the file.

#include <kwinstutil/files.h>

#include <cstdint>

#include "fuzz.h"

namespace {

using fuzz::Require;

const std::string kFile = fuzz::Path("file");
const std::string kNewFile = kFile + ".tmp" + std::to_string(getpid());

void Suppress(std::string text, bool at_start) {
  std::string file = kFile;
  Require(TEVInsSuppressLine(file.data(), text.data(), nullptr, at_start ? 1 : 0) == 1,
          "lines of a file can be suppressed");
}

/// Suppresses lines of a file, and requires that exactly they are gone.
void CheckSuppress(const std::string& content, const std::string& text, bool at_start) {
  std::string rest;
  for (const std::string_view line : fuzz::Lines(content, 2047)) {
    const size_t place = line.find(text);
    if (at_start ? place != 0 : place == std::string::npos) rest += line;
  }
  fuzz::Write(kFile, content);
  Suppress(text, at_start);
  const std::string result = fuzz::Read(kFile);
  const bool nothing_left = rest.empty();
  Require(result == (nothing_left ? content : rest), "the other lines stay, in their order");
  if (content.find(text) == std::string::npos) {
    Require(result == content, "a file without the text stays byte for byte");
  }
  Require(fuzz::Exists(kNewFile) == nothing_left, "only an empty new file stays");
  unlink(kNewFile.c_str());
}

/// Adds a line to a file, and takes it out again.
void CheckAdd(const std::string& content, std::string line) {
  fuzz::Write(kFile, content);
  std::string file = kFile;
  Require(TEVInsAddLine(file.data(), line.data(), nullptr) == 1, "a line can be added to a file");
  std::string printed = line;
  for (size_t at = 0; (at = printed.find("%%", at)) != std::string::npos; ++at) {
    printed.erase(at, 1);
  }
  Require(fuzz::Read(kFile) == content + printed + '\n', "the line is behind what was there");

  const bool alone = !content.empty() && content.back() == '\n';
  if (!alone || printed.empty() || printed.size() > 2000) return;
  if (content.find(printed) != std::string::npos) return;
  Suppress(printed, true);
  Require(fuzz::Read(kFile) == content, "what was added can be taken out again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const bool at_start = (input.Byte() & 1) != 0;
  const std::string text = input.NextArgument();
  const std::string line = input.NextArgument();
  const std::string content = input.Rest();
  CheckSuppress(content, text, at_start);
  CheckAdd(content, line);
  return 0;
}
