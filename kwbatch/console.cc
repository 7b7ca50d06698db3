#include "console.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "refusal.h"

namespace {

/// Where Show prints: standard output, also when all others have lost it.
std::FILE* shown = stdout;

bool IsPrinted(std::FILE* stream) { return std::fflush(stream) == 0 && std::ferror(stream) == 0; }

std::string FromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// Is the stream a terminal that can do more than print lines?
bool IsTerminal(std::FILE* stream) {
  const std::string type = FromEnvironment("TERM");
  return isatty(fileno(stream)) != 0 && !type.empty() && type != "dumb";
}

/// The text in the colour of this number, where colours are wanted.
std::string Coloured(const std::string& text, int colour, std::FILE* stream) {
  if (!IsTerminal(stream) || !FromEnvironment("NO_COLOR").empty()) return text;
  return "\x1b[" + std::to_string(colour) + "m" + text + "\x1b[0m";
}

std::string WithoutNewline(const std::string& text) {
  return text.empty() || text.back() != '\n' ? text : text.substr(0, text.size() - 1);
}

void Print(const std::string& text, std::FILE* stream) {
  std::fprintf(stream, "%s\n", text.c_str());
  std::fflush(stream);
}

}  // namespace

void BeQuiet() {
  std::FILE* copy = fdopen(dup(STDOUT_FILENO), "w");
  if (copy == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
    throw Refusal("Standard output cannot be redirected.\n");
  }
  shown = copy;
}

void Say(const std::string& text) { Print(WithoutNewline(text), stdout); }

void Show(const std::string& text) { Print(WithoutNewline(text), shown); }

bool AllIsPrinted() { return IsPrinted(stdout) && IsPrinted(shown); }

void Complain(const std::string& text) {
  constexpr int kRed = 31;
  Print(Coloured(WithoutNewline(text), kRed, stderr), stderr);
}

Progress::Progress(size_t steps) : steps_(steps), terminal_(IsTerminal(stdout)) {}

Progress::~Progress() {
  if (terminal_ && begun_ > 0) Say("");
}

void Progress::Begin(const std::string& step) {
  constexpr size_t kWidth = 30;
  constexpr int kGreen = 32;
  ++begun_;
  if (!terminal_) {
    std::printf("  %zu of %zu: %s\n", begun_, steps_, step.c_str());
  } else {
    const size_t done = kWidth * begun_ / steps_;
    // Clears what a longer name left behind.
    std::printf("\r  [%s%s] %zu of %zu: %s\x1b[K",
                Coloured(std::string(done, '#'), kGreen, stdout).c_str(),
                std::string(kWidth - done, ' ').c_str(), begun_, steps_, step.c_str());
  }
  std::fflush(stdout);
}
