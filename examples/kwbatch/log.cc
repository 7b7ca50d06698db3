#include "log.h"

#include "console.h"

Log::Log(const std::string& header) : log_(nullptr) {
  TEVUnicodeString text = header.c_str();
  TEVUnicodeString message;
  if (log_.OpenLogFile(text, message) != 0) throw Refused(message);
}

Log::~Log() { log_.CloseLogFile(trailer_); }

void Log::Write(const std::string& text) {
  TEVUnicodeString entry = text.c_str();
  log_.WriteLogFile(entry);
}

void Log::Succeeded() { trailer_ = " done"; }
