#ifndef KWBATCH_LOG_H_
#define KWBATCH_LOG_H_

#include <kwinstutil/report.h>

#include <functional>
#include <string>

/// The open installation log. The destructor writes its trailer and closes it. If the file cannot
/// take a text, the library reports that on standard error, and the text is passed to Show.
class Log {
 public:
  /// Opens the file at `path`, or the usual one when that is empty. Throws a Refusal when it cannot
  /// be opened.
  Log(const std::string& path, const std::string& header);
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  void Write(const std::string& text);

  /// Without this, the trailer says "failed" or "interrupted".
  void Succeeded();

  /// Moves the output of tar and the side log of a failed transfer from `target` to the log.
  void TakeErrors(std::string target);

  /// For code that appends to the file itself.
  char* FileName() { return log_.GetLogFileName(); }

 private:
  void OpenUsual(const std::string& header);
  void OpenFile(const std::string& path, const std::string& header);
  void Keep(const std::function<void()>& write);

  std::string name_;  ///< of the file in its directory; empty for the usual log
  TEVInstallLog log_;
  bool succeeded_ = false;
};

/// Says and logs what the command has done.
void Tell(const std::string& text, Log& log);

/// The path of the log that was opened last; empty without one.
const std::string& LogPath();

/// Says where the log is that was opened last.
std::string WhereLogIs();

/// False when something was shown instead of being logged.
bool AllIsLogged();

#endif  // KWBATCH_LOG_H_
