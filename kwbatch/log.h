#ifndef KWBATCH_LOG_H_
#define KWBATCH_LOG_H_

#include <kwinstutil/report.h>

#include <functional>
#include <string>

/// The installation log, opened, and closed with its trailer on every way out. What is written and
/// the file does not take is shown instead, quiet or not, once the library has told of it on
/// standard error.
class Log {
 public:
  /// Opens the file at `path`, or the usual one when that is empty. Throws a Refusal when it cannot
  /// be opened.
  Log(const std::string& path, const std::string& header);
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  void Write(const std::string& text);

  /// Without this, the trailer tells a failure.
  void Succeeded();

  /// Takes in what a failed transfer has left in `target`: the output of tar, and the side log.
  void TakeErrors(std::string target);

  /// For those that append to the file themselves.
  char* FileName() { return log_.GetLogFileName(); }

 private:
  void OpenUsual(const std::string& header);
  void OpenFile(const std::string& path, const std::string& header);
  void Keep(const std::function<void()>& write);

  std::string name_;  ///< of the file in its directory, when the user names one
  TEVInstallLog log_;
  TEVUnicodeString trailer_ = " failed";
};

/// False when something was shown instead of being logged.
bool AllIsLogged();

#endif  // KWBATCH_LOG_H_
