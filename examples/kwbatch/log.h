#ifndef KWBATCH_LOG_H_
#define KWBATCH_LOG_H_

#include <kwinstutil/report.h>

#include <string>

/// The installation log, opened, and closed with its trailer on every way out.
class Log {
 public:
  /// Throws a Refusal when the log cannot be opened.
  explicit Log(const std::string& header);
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  void Write(const std::string& text);

  /// Without this, the trailer tells a failure.
  void Succeeded();

  TEVInstallLog* get() { return &log_; }

 private:
  TEVInstallLog log_;
  TEVUnicodeString trailer_ = " failed";
};

#endif  // KWBATCH_LOG_H_
