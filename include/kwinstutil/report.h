#ifndef KWINSTUTIL_REPORT_H_
#define KWINSTUTIL_REPORT_H_

#include <kb0core/TEVUnicodeString.h>

#include <cstdio>
#include <string>

#include "kwinstutil/export.h"

/// The installation log: a text file to which one installation after another is appended.
///
/// An installer makes one object, opens it once, writes, and closes it. While no file is open, what
/// would be written goes to standard output. In the development mode (VRK_ODT_IN and VRK_ODT_OUT
/// were both set when a log was last constructed, and VRK_ODT_TMP is set) the log under the home
/// directory is VRK_ODT_TMP/kwinst.log instead.
///
/// Where an opening fails, `message` is assigned "ErrorOpenLog" with the path tried, or "ErrHOME"
/// (no parameter) when HOME is unset or empty; it is untouched on success. A path in a directory of
/// more than 1023 characters counts as one that cannot be opened.
class KWINSTUTIL_EXPORT TEVInstallLog {
 public:
  /// `name` is a file name, or a path for OpenPathLogFile; null means "kwinst.log".
  explicit TEVInstallLog(char* name) noexcept;

  /// Does not close the file: see CloseLogFile.
  ~TEVInstallLog() noexcept;

  TEVInstallLog(const TEVInstallLog&) = delete;
  TEVInstallLog& operator=(const TEVInstallLog&) = delete;

  /// Opens the log in the home directory for appending. Returns 1, or -1 on failure.
  int OpenLogFile(TEVUnicodeString& message) noexcept;

  /// Opens the log in the home directory and writes the opening banner: a rule, the time and
  /// `header`. Returns 0, unlike the others, or -1 when the log cannot be opened; a banner that it
  /// cannot take is told as WriteLogFile does.
  int OpenLogFile(TEVUnicodeString& header, TEVUnicodeString& message) noexcept;

  /// Opens the log in `directory`, whatever the mode; with a null `directory`, the file
  /// GetLogFileName(). Returns 1, or -1 on failure.
  int OpenLogFile(char* directory, TEVUnicodeString& message) noexcept;

  /// Opens the constructor's `name` as a path; GetLogFileName does not change. Returns 1, or -1 on
  /// failure.
  int OpenPathLogFile(TEVUnicodeString& message) noexcept;

  /// Writes `text`, which must not be null, and nothing else; a failed write goes unnoticed.
  void WriteLogFile(char* text) noexcept;

  /// Writes `text`. When the file cannot take it, prints "ErrWndErrorWriteLog" (GetLogFileName())
  /// on standard error and `text` on standard output, where everything goes from then on.
  void WriteLogFile(TEVUnicodeString& text) noexcept;

  /// Closes the file, if one is open.
  void CloseLogFile() noexcept;

  /// Writes the time, `trailer` and a rule, and closes the file.
  void CloseLogFile(TEVUnicodeString& trailer) noexcept;

  /// Appends the text file `source`, up to its first line that begins with a zero byte; a zero byte
  /// further in ends its line. Does nothing when no log is open, or `source` cannot be read or is
  /// the log itself.
  void CopyFile(char* source) noexcept;

  /// Deletes the file GetLogFileName(), if it exists; an open file stays open.
  void DeleteLogFile() noexcept;

  /// The path that was last tried in a directory, of those that fit into 1023 characters; empty
  /// before. It lives as long as the log.
  char* GetLogFileName() noexcept;

  /// The local time as "Sun Nov 15 22:32:20 2026", valid until the next call.
  char* TheTime() noexcept;

 private:
  int OpenInHome(TEVUnicodeString& message);
  int Open(const std::string& file, TEVUnicodeString& message);
  int OpenStream(const std::string& file, bool fits, TEVUnicodeString& message);
  void Write(const char* text);

  char path_[1024] = "";         ///< what GetLogFileName tells
  std::string name_;             ///< the constructor's name
  std::FILE* stream_ = nullptr;  ///< null while no file is open
};

#endif  // KWINSTUTIL_REPORT_H_
