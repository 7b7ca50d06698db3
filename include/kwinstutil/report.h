#ifndef KWINSTUTIL_REPORT_H_
#define KWINSTUTIL_REPORT_H_

#include <kb0core/TEVUnicodeString.h>

#include <cstdio>
#include <string>

#include "kwinstutil/export.h"

/// \file
/// The installation log.

/// The installation log: a text file to which one installation after another is appended.
///
/// An installer constructs one object, opens it once, writes, and closes it. While no file is open,
/// everything goes to standard output.
///
/// The log in the home directory is HOME/NAME. In the development mode it is
/// VRK_ODT_TMP/kwinst.log. That mode is on if VRK_ODT_IN and VRK_ODT_OUT were both set when a log
/// was last constructed, and VRK_ODT_TMP is set. HOME must be set all the same.
///
/// If opening fails, `message` is assigned: "ErrHOME" (no parameter) if HOME is unset or empty,
/// "ErrorOpenLog" with the path otherwise. It is untouched on success. A path in the home directory
/// or in another directory has at most 1023 characters; a longer one cannot be opened.
class KWINSTUTIL_EXPORT TEVInstallLog {
 public:
  /// `name` is a file name, or a path for OpenPathLogFile. Null means "kwinst.log".
  ///
  /// System: reads VRK_ODT_IN and VRK_ODT_OUT.
  explicit TEVInstallLog(char* name) noexcept;

  /// Does not close the file: see CloseLogFile.
  ~TEVInstallLog() noexcept;

  TEVInstallLog(const TEVInstallLog&) = delete;
  TEVInstallLog& operator=(const TEVInstallLog&) = delete;

  /// Opens the log in the home directory for appending.
  ///
  /// Returns 1, or -1 on failure.
  ///
  /// Writes: creates the log.
  /// System: reads HOME and VRK_ODT_TMP.
  int OpenLogFile(TEVUnicodeString& message) noexcept;

  /// Opens the log in the home directory for appending, and writes the opening banner: a rule, the
  /// time and `header`. If the file cannot take the banner, this is handled as WriteLogFile does.
  ///
  /// Returns 0 (deliberate: the other overloads return 1), or -1 if the log cannot be opened.
  ///
  /// Writes: creates the log; appends the banner.
  /// System: reads HOME and VRK_ODT_TMP.
  int OpenLogFile(TEVUnicodeString& header, TEVUnicodeString& message) noexcept;

  /// Opens DIRECTORY/NAME for appending, in the development mode too. With a null `directory`,
  /// opens the file GetLogFileName().
  ///
  /// Returns 1, or -1 on failure.
  ///
  /// Writes: creates the log.
  int OpenLogFile(char* directory, TEVUnicodeString& message) noexcept;

  /// Opens the constructor's `name` as a path, of any length, for appending. GetLogFileName does
  /// not change.
  ///
  /// Returns 1, or -1 on failure.
  ///
  /// Writes: creates the log.
  int OpenPathLogFile(TEVUnicodeString& message) noexcept;

  /// Writes `text`, which must not be null. A failed write is not reported.
  ///
  /// Writes: appends to the log.
  void WriteLogFile(char* text) noexcept;

  /// Writes `text`. If the file cannot take it, "ErrWndErrorWriteLog" (GetLogFileName()) is printed
  /// on standard error and `text` on standard output. From then on everything goes to standard
  /// output.
  ///
  /// Writes: appends to the log.
  void WriteLogFile(TEVUnicodeString& text) noexcept;

  /// Closes the file, if one is open.
  void CloseLogFile() noexcept;

  /// Writes the time, `trailer` and a rule, and closes the file. If the file cannot take the
  /// trailer, this is handled as WriteLogFile does.
  ///
  /// Writes: appends the trailer to the log.
  void CloseLogFile(TEVUnicodeString& trailer) noexcept;

  /// Appends the text file `source`, up to its first line that begins with a zero byte. In other
  /// lines, what follows a zero byte is left out. Does nothing when no log is open, or `source`
  /// cannot be read or is the log itself.
  ///
  /// Writes: appends to the log.
  void CopyFile(char* source) noexcept;

  /// Deletes the file GetLogFileName(), if it exists. An open file stays open.
  ///
  /// Writes: deletes the log.
  void DeleteLogFile() noexcept;

  /// The path of the last OpenLogFile, even if it failed. Empty before the first one. A path of
  /// more than 1023 characters is not remembered. Valid as long as the log lives.
  char* GetLogFileName() noexcept;

  /// The local time as "Sun Nov 15 22:32:20 2026", valid until the next call.
  char* TheTime() noexcept;

 private:
  int OpenInHome(TEVUnicodeString& message);
  int Open(const std::string& file, TEVUnicodeString& message);
  int OpenStream(const char* file, bool fits, TEVUnicodeString& message);
  void Write(const char* text);

  // Installers may depend on the order and the types of these members: do not change them. The
  // first two are owned, and null if the constructor had no memory for them.
  char* path_;         ///< what GetLogFileName returns, in 1024 bytes
  char* name_;         ///< the constructor's name
  std::FILE* stream_;  ///< null while no file is open
};

#endif  // KWINSTUTIL_REPORT_H_
