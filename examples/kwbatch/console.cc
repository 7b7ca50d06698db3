#include "console.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace {

void Print(const std::string& text, std::FILE* stream) {
  std::fputs(text.c_str(), stream);
  if (text.empty() || text.back() != '\n') std::fputc('\n', stream);
  std::fflush(stream);
}

}  // namespace

void RequirePlainPath(const std::string& what, const std::string& path) {
  const auto plain = [](unsigned char c) {
    return c >= 0x80 || std::isalnum(c) != 0 || std::strchr("/._-+,=@%:", c) != nullptr;
  };
  if (!path.empty() && path[0] != '-' && std::all_of(path.begin(), path.end(), plain)) return;
  throw Refusal("The " + what + " \"" + path +
                "\" cannot be used: it is empty, starts with \"-\", or holds blanks or characters "
                "that mean something to the shell.\n");
}

void RequirePlainName(const std::string& what, const std::string& name) {
  RequirePlainPath(what, name);
  if (name != "." && name != ".." && name.find('/') == std::string::npos) return;
  throw Refusal("The " + what + " \"" + name + "\" cannot be used: it is no file name.\n");
}

bool AppendToFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::app);
  file << text;
  return static_cast<bool>(file.flush());
}

void Say(const std::string& text) { Print(text, stdout); }

void Complain(const std::string& text) { Print(text, stderr); }

Progress::Progress(size_t steps) : steps_(steps), terminal_(isatty(STDOUT_FILENO) != 0) {}

Progress::~Progress() {
  if (terminal_ && begun_ > 0) Say("");
}

void Progress::Begin(const std::string& step) {
  constexpr size_t kWidth = 30;
  ++begun_;
  if (!terminal_) {
    std::printf("  %zu of %zu: %s\n", begun_, steps_, step.c_str());
  } else {
    const std::string bar(kWidth * begun_ / steps_, '#');
    // Clears what a longer name left behind.
    std::printf("\r  [%-*s] %zu of %zu: %s\x1b[K", static_cast<int>(kWidth), bar.c_str(), begun_,
                steps_, step.c_str());
  }
  std::fflush(stdout);
}
