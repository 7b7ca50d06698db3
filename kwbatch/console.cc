#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "refusal.h"
#include "texts.h"

namespace {

/// Where Show prints: standard output, also when all others have lost it.
std::FILE* shown = stdout;

/// Gets the texts in the place of standard output, if it is set.
std::function<void(const std::string&)> collect;

/// What is shown instead of a path.
std::map<std::string, std::string> given_paths;

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

/// The width of the terminal on standard output, at least that of a short line.
size_t Columns() {
  constexpr size_t kUsual = 80;
  constexpr size_t kFewest = 20;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsual;
  return std::max<size_t>(kFewest, size.ws_col);
}

/// As much of a UTF-8 text as fits into these columns. Characters of three bytes and more, those of
/// East Asia for example, take two columns.
std::string CutTo(size_t columns, const std::string& text) {
  size_t used = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) == 0x80) continue;
    used += byte >= 0xE0 ? 2 : 1;
    if (used > columns) return text.substr(0, i);
  }
  return text;
}

void Print(const std::string& text, std::FILE* stream) {
  std::fprintf(stream, "%s\n", AsShown(text).c_str());
  std::fflush(stream);
}

}  // namespace

void ShowAs(const std::string& path, const std::string& given) { given_paths[path] = given; }

std::string AsShown(std::string text) {
  for (const auto& [path, given] : given_paths) {
    for (size_t found = 0; (found = text.find(path, found)) != std::string::npos;) {
      text.replace(found, path.size(), given);
      found += given.size();
    }
  }
  return text;
}

void BeQuiet() {
  std::FILE* copy = fdopen(dup(STDOUT_FILENO), "w");
  if (copy == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
    throw Refusal(Text("OutputNotRedirected", "Standard output cannot be redirected.\n"));
  }
  shown = copy;
}

void CollectTexts(const std::function<void(const std::string&)>& take) { collect = take; }

void Say(const std::string& text) {
  if (collect) return collect(text);
  Print(WithoutNewline(text), stdout);
}

void Show(const std::string& text) {
  if (collect) return collect(text);
  Print(WithoutNewline(text), shown);
}

bool AllIsPrinted() { return IsPrinted(stdout) && IsPrinted(shown); }

void Complain(const std::string& text) {
  constexpr int kRed = 31;
  if (collect) collect(text);
  Print(Coloured(WithoutNewline(text), kRed, stderr), stderr);
}

Progress::Progress(size_t steps) : steps_(steps), terminal_(IsTerminal(stdout)) {}

Progress::~Progress() {
  if (terminal_ && begun_ > 0) Say("");
}

void Progress::Begin(const std::string& step) {
  constexpr int kGreen = 32;
  ++begun_;
  std::string text = Text("ProgressStep", "{1} of {2}: {3}", {begun_, steps_, step});
  if (!terminal_) {
    std::printf("  %s\n", text.c_str());
  } else {
    const size_t columns = Columns();
    const size_t width = std::min<size_t>(30, columns / 4);
    const size_t done = width * begun_ / steps_;
    text = CutTo(columns - width - 6, text);
    // Clears what a longer name left behind.
    std::printf("\r  [%s%s] %s\x1b[K", Coloured(std::string(done, '#'), kGreen, stdout).c_str(),
                std::string(width - done, ' ').c_str(), text.c_str());
  }
  std::fflush(stdout);
}
