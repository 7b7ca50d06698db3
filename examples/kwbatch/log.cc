#include "log.h"

#include <filesystem>

#include "console.h"

namespace fs = std::filesystem;

Log::Log(const Options& options, const std::string& header)
    : name_(fs::path(options.Text("log")).filename()),
      log_(options.Has("log") ? name_.data() : nullptr) {
  if (options.Has("log")) {
    OpenFile(options.Text("log"), header);
  } else {
    OpenUsual(header);
  }
}

void Log::OpenUsual(const std::string& header) {
  TEVUnicodeString text = header.c_str();
  TEVUnicodeString message;
  if (log_.OpenLogFile(text, message) != 0) throw Refused(message);
  RequirePlainPath("log", log_.GetLogFileName());
}

void Log::OpenFile(const std::string& path, const std::string& header) {
  RequirePlainPath("log", path);
  std::string directory = fs::absolute(path).parent_path();
  TEVUnicodeString message;
  if (log_.OpenLogFile(directory.data(), message) != 1) throw Refused(message);
  // Only the usual log gets its banner from the library.
  Write(std::string(58, '=') + "\n[" + log_.TheTime() + "]" + header);
}

Log::~Log() { log_.CloseLogFile(trailer_); }

void Log::Write(const std::string& text) {
  TEVUnicodeString entry = text.c_str();
  log_.WriteLogFile(entry);
}

void Log::Succeeded() { trailer_ = " done"; }
