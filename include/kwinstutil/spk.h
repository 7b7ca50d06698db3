#ifndef KWINSTUTIL_SPK_H_
#define KWINSTUTIL_SPK_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSType.h>

#include <fstream>

// The interface has always had std::strstream; its header warns that it is deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#pragma push_macro("__DEPRECATED")
#undef __DEPRECATED
#include <strstream>
#pragma pop_macro("__DEPRECATED")

#include "kwinstutil/export.h"

/// Takes the lines of a service pack out of a control file (control/PRESENT), into a new file:
/// construct, InitSource, InitDest, Remove, IsLineRemoved. Moving the new file into the place of
/// the old one is the caller's business. An object serves once.
///
/// A line is TYPE:KIND:NAME, then anything. Of each of the three fields 47 characters count, and of
/// those what is before a zero byte; in a line with all three, the 48th character of a first or
/// second field that is longer is taken for the ':' and written as one. The last line needs no
/// newline, and an empty file has no lines. No argument may be null.
class KWINSTUTIL_EXPORT TEVInsResetPresent {
 public:
  TEVInsResetPresent() noexcept;

  /// Closes what is still open.
  ~TEVInsResetPresent() noexcept;

  TEVInsResetPresent(const TEVInsResetPresent&) = delete;
  TEVInsResetPresent& operator=(const TEVInsResetPresent&) = delete;

  /// Opens the control file, which is never created. Returns 0, or -1 on failure.
  int InitSource(char* path) noexcept;

  /// Opens the new file, in the place of what it held. Returns 0, or -1 on failure, also when it is
  /// the control file that InitSource has opened, be it through a link: that stays as it is.
  int InitDest(char* path) noexcept;

  /// Copies every line but those of kind SPK with this type and `name`. Each line copied ends with
  /// a newline and is flushed.
  ///
  /// Returns
  ///    0  all done; both files are closed;
  ///   -1  a write failed, or the control file cannot be read to its end. The new file is
  ///       incomplete, and the files stay open (unless it is the closing that failed).
  int Remove(char* name, TEVINSType type) noexcept;

  /// Copies a text file, and gives its last line a newline when it has none. Returns 0, or -1 when
  /// a file cannot be opened, read or written; `to` may then be incomplete. When `from` and `to` are
  /// one file, also through links, the result is -1 and it stays as it is.
  static int FileCopy(char* from, char* to) noexcept;

  /// 1 once any object of this process has dropped a line, 0 until then.
  static int IsLineRemoved() noexcept;

  /// Decides one line, which comes without its newline, and writes its first three fields, as many
  /// as there are, when it is kept: what Remove does with each line.
  ///
  /// Returns 0 when the line is to be dropped, else the length of the three fields plus 2; what is
  /// behind them is left in `line`.
  int IsLineToRemove(char* name, std::strstream& line, TEVINSType type) noexcept;

 private:
  std::ifstream source_;
  std::ofstream dest_;
};

// Files around a service pack. `spkName` is the pack. For the type `zeb2` its control file is
// control/SPKNAME in its archive, for every other type OSDIR/control/SPKNAME; once unpacked it lies
// below TEVInsGetTempDir(). It has a path relative to `installDir` in each line. Paths and names go
// to the shell unquoted.
//
// Both functions below delete the unpacked control file once they have read it or failed to open it
// (its directories stay), and take lines of more than 1023 characters as several. A line that starts
// with a zero byte ends the list. They assign `message` on failure:
//   "ErrWndOpenControlFile.Text"  the unpacked control file, the system's error number; one that
//                                 cannot be read to its end counts as ending there;
//   "ErrWndRenameFile.Text"       the file, and the name that it could not be given.
// What was renamed before a failure stays renamed: each file is there under one of its two names.

/// Sets the files aside that the service pack will replace: FILE becomes FILE.beforeSPK, in the
/// place of an earlier one. The control file comes from MEDIADIR/SPKNAME.Z (compress and tar) or,
/// when there is none, from MEDIADIR/SPKNAME (tar).
///
/// To repeat the call after a failure completes it. A line names its first word, up to a blank.
/// Lines that begin with a number other than zero or are "0" name nothing, nor do empty ones. A
/// file that does not exist is passed over; one that cannot be looked at is a failure. `spkName`
/// must not be null, nor `osDir` unless the type is `code` or `zeb2`.
///
/// Returns
///    0  done;
///   -1  failed: one of the two messages above; or "ErrWndExtractTar.Text" (the control file's path
///       in the archive, MEDIADIR/SPKNAME) with "CheckTmpDir" (the temporary directory) appended;
///       or, without a message, `mediaDir` or `installDir` is null, or `osDir` for the type `code`.
KWINSTUTIL_EXPORT int TEVInsSaveFilesBeforeInstall(char* spkName, char* mediaDir, char* installDir,
                                                   const char* osDir, TEVINSType type,
                                                   TEVUnicodeString& message) noexcept;

/// Puts back what was set aside: FILE.beforeSPK becomes FILE, in the place of the service pack's.
/// The control file must lie unpacked in the temporary directory; after a failure it must be
/// unpacked there again before the call is repeated.
///
/// A line names a file as it stands, blanks and numbers included; an empty line names none. A file
/// that was not set aside is passed over. No argument may be null, but for `osDir` with `zeb2`.
///
/// Returns
///    0  done, or there is no unpacked control file, and so nothing to put back;
///   -1  failed: one of the two messages above.
KWINSTUTIL_EXPORT int TEVInsRestoreFiles(char* installDir, char* spkName, const char* osDir,
                                         TEVINSType type, TEVUnicodeString& message) noexcept;

/// Runs the programs INSTALLDIR/code/bin/WORD_SUFFIX, for each word of
/// INSTALLDIR/control/CAFPost.list (a word of more than 255 characters is split there). One that
/// does not exist is passed over, and one that fails stops nothing. What they print is appended to
/// `logFile`. Without a list nothing is done; with one, LD_LIBRARYN32_PATH (to
/// INSTALLDIR/code/bin) and TEVInstallPath (to INSTALLDIR) are set, and stay so. Paths and words go
/// to the shell unquoted.
///
/// Returns
///    n  the exit status that the shell tells of the last program that was run; a shell that cannot
///       be started, or that a signal ended, counts as 0;
///    0  none was run, or the list cannot be read;
///   -1  an argument is null, or the environment cannot take `installDir` (at most 995 characters)
///       or has no memory for an entry: nothing was run.
KWINSTUTIL_EXPORT int TEVInsSPK(char* suffix, char* installDir, char* logFile) noexcept;

#pragma GCC diagnostic pop

#endif  // KWINSTUTIL_SPK_H_
