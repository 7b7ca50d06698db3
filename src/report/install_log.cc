#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVFile.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "kwinstutil/report.h"
#include "report/message.h"
#include "support/format.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

namespace {

constexpr const char* kDefaultName = "kwinst.log";
constexpr const char* kRule = "==========================================================\n";

/// Set by every constructor: the last constructed log decides for all.
bool development_environment = false;

/// Prints to `stream` and writes the text to the file at once, so that the log is complete even if
/// the installer dies. Returns false if that fails.
bool Print(std::FILE* stream, const char* text) {
  const bool printed = std::fprintf(stream, "%s", text) >= 0;
  return std::fflush(stream) == 0 && printed;
}

bool SameFile(std::FILE* one, std::FILE* other) {
  struct stat first {};
  struct stat second {};
  return fstat(fileno(one), &first) == 0 && fstat(fileno(other), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

TEVInstallLog::TEVInstallLog(char* name) noexcept
    : path_(static_cast<char*>(std::calloc(kwinst::kPathSize, 1))),
      name_(strdup(name == nullptr ? kDefaultName : name)),
      stream_(nullptr) {
  development_environment =
      TEVGetEnv("VRK_ODT_IN") != nullptr && TEVGetEnv("VRK_ODT_OUT") != nullptr;
}

TEVInstallLog::~TEVInstallLog() noexcept {
  std::free(name_);
  std::free(path_);
}

int TEVInstallLog::OpenLogFile(TEVUnicodeString& message) noexcept { return OpenInHome(message); }

int TEVInstallLog::OpenLogFile(TEVUnicodeString& header, TEVUnicodeString& message) noexcept {
  if (OpenInHome(message) == -1) return -1;
  Write(kRule);
  Write("[");
  Write(TheTime());
  Write("]");
  WriteLogFile(header);
  // 0 here and 1 from the other overloads: callers test each against its own value.
  return 0;
}

int TEVInstallLog::OpenLogFile(char* directory, TEVUnicodeString& message) noexcept {
  if (directory == nullptr || path_ == nullptr || name_ == nullptr) {
    return OpenStream(path_, true, message);
  }
  return Open(kwinst::JoinPath(directory, name_), message);
}

int TEVInstallLog::OpenPathLogFile(TEVUnicodeString& message) noexcept {
  return OpenStream(name_, true, message);
}

void TEVInstallLog::WriteLogFile(char* text) noexcept { Write(text); }

void TEVInstallLog::WriteLogFile(TEVUnicodeString& text) noexcept {
  const kwinst::MessageFrame frame;
  if (stream_ == nullptr) {
    Print(stdout, text.ConvertToChar());
    return;
  }
  if (Print(stream_, text.ConvertToChar())) return;

  const TEVUnicodeString failure = frame.Build("ErrWndErrorWriteLog", {path_});
  std::fprintf(stderr, "%s\n", failure.ConvertToChar());
  std::fflush(stderr);
  std::fprintf(stdout, "%s\n", text.ConvertToChar());
  std::fflush(stdout);
  // The stream stays open: only this object has done with it.
  stream_ = nullptr;
}

void TEVInstallLog::CloseLogFile() noexcept {
  if (stream_ != nullptr) TEVFClose(stream_);
  stream_ = nullptr;
}

void TEVInstallLog::CloseLogFile(TEVUnicodeString& trailer) noexcept {
  Write("\n\n[");
  Write(TheTime());
  Write("]");
  WriteLogFile(trailer);
  Write("\n");
  Write(kRule);
  CloseLogFile();
}

void TEVInstallLog::CopyFile(char* source) noexcept {
  if (stream_ == nullptr || !kwinst::Exists(source)) return;
  const kwinst::InputFile file = kwinst::OpenForReading(source);
  // A copy of the log into itself would never end.
  if (file == nullptr || SameFile(file.get(), stream_)) return;
  kwinst::ForEachLine<1024>(file.get(), [this](const char* line) {
    if (line[0] == '\0') return false;
    std::fprintf(stream_, "%s", line);
    return true;
  });
}

void TEVInstallLog::DeleteLogFile() noexcept {
  if (kwinst::Exists(path_)) TEVDeleteFile(path_);
}

char* TEVInstallLog::GetLogFileName() noexcept { return path_; }

char* TEVInstallLog::TheTime() noexcept {
  const std::time_t now = std::time(nullptr);
  char* text = std::ctime(&now);
  kwinst::CutNewline(text);
  return text;
}

int TEVInstallLog::OpenInHome(TEVUnicodeString& message) {
  const kwinst::MessageFrame frame;
  const char* home = TEVGetEnv("HOME");
  if (home == nullptr || home[0] == '\0') {
    message = frame.Build("ErrHOME", {}, "$HOME is not set");
    return -1;
  }
  if (path_ == nullptr || name_ == nullptr) return OpenStream(path_, true, message);
  std::string file = home;
  if (file.back() != '/') file += '/';
  file += name_;

  const char* scratch = TEVGetEnv("VRK_ODT_TMP");
  if (development_environment && scratch != nullptr) {
    file = kwinst::JoinPath(scratch, kDefaultName);
  }
  return Open(file, message);
}

/// Opens `file` and makes it the log's path, if it fits there.
int TEVInstallLog::Open(const std::string& file, TEVUnicodeString& message) {
  return OpenStream(file.c_str(), kwinst::CopyWhole(file, path_, kwinst::kPathSize), message);
}

/// Opens `file`, if it `fits` the log's path. A log that is open already is left open: callers open
/// once.
int TEVInstallLog::OpenStream(const char* file, bool fits, TEVUnicodeString& message) {
  const kwinst::MessageFrame frame;
  stream_ = nullptr;
  if (fits && TEVFOpen(file, "a+", &stream_) == 0) return 1;
  message = frame.Build("ErrorOpenLog", {file});
  return -1;
}

void TEVInstallLog::Write(const char* text) { Print(stream_ == nullptr ? stdout : stream_, text); }
