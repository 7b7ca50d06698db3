#include <string>

#include "kwinstutil/spk.h"

// std::strstream is deprecated, but part of the interface.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

int line_removed = 0;  ///< never goes back

/// Reads a line, without its newline, and looks whether another follows: `from` stays good only
/// then. Returns the line's length.
std::streamsize ReadLine(std::istream& from, std::strstream& line) {
  from.get(*line.rdbuf(), '\n');
  const std::streamsize length = from.gcount();
  // To get() an empty line is a failure.
  if (length == 0 && !from.bad()) from.clear();
  from.ignore();
  from.peek();
  return length;
}

/// Reads up to 47 characters, and not the ':' behind them.
std::string ReadField(std::istream& line) {
  char field[48];
  line.get(field, sizeof field, ':');
  line.clear();  // to get() an empty field is a failure
  return std::string(field, static_cast<size_t>(line.gcount()));
}

}  // namespace

TEVInsResetPresent::TEVInsResetPresent() noexcept = default;

TEVInsResetPresent::~TEVInsResetPresent() noexcept = default;

int TEVInsResetPresent::InitSource(char* path) noexcept {
  source_.open(path);
  return source_.good() ? 0 : -1;
}

int TEVInsResetPresent::InitDest(char* path) noexcept {
  dest_.open(path);
  return dest_.good() ? 0 : -1;
}

int TEVInsResetPresent::Remove(char* name, TEVINSType type) noexcept {
  if (!source_.is_open()) return -1;
  for (source_.peek(); source_.good();) {
    std::strstream line;
    const std::streamsize length = ReadLine(source_, line);
    const int taken = IsLineToRemove(name, line, type);
    if (taken == 0) {
      line_removed = 1;
      continue;
    }
    if (length > taken) dest_ << line.rdbuf();
    dest_.put('\n').flush();
    if (dest_.fail()) return -1;
  }
  if (source_.bad()) return -1;
  source_.close();
  dest_.close();
  return dest_.fail() ? -1 : 0;
}

int TEVInsResetPresent::IsLineToRemove(char* name, std::strstream& line, TEVINSType type) noexcept {
  std::string fields[3];
  std::string parting;  // the characters between them: ':', or one of a field that is too long
  fields[0] = ReadField(line);
  for (int i = 1, c = 0; i < 3 && (c = line.get()) != std::strstream::traits_type::eof(); ++i) {
    parting += static_cast<char>(c);
    fields[i] = ReadField(line);
  }

  if (fields[0] == kTEVINSNames[type] && fields[1] == "SPK" && fields[2] == name) return 0;

  // A line with fewer than three fields is written as it was; the separators of another are ':'.
  if (parting.size() == 2) parting = "::";
  dest_ << fields[0];
  for (size_t i = 0; i < parting.size(); ++i) dest_ << parting[i] << fields[i + 1];
  return static_cast<int>(fields[0].size() + fields[1].size() + fields[2].size()) + 2;
}

int TEVInsResetPresent::FileCopy(char* from, char* to) noexcept {
  std::ifstream source(from);
  if (!source.good()) return -1;
  std::ofstream dest(to);
  if (!dest.good()) return -1;
  for (source.peek(); source.good();) {
    std::strstream line;
    if (ReadLine(source, line) > 0) dest << line.rdbuf();
    dest.put('\n');
    if (dest.fail()) return -1;
  }
  dest.close();
  return source.bad() || dest.fail() ? -1 : 0;
}

int TEVInsResetPresent::IsLineRemoved() noexcept { return line_removed; }
