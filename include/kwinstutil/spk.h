#ifndef KWINSTUTIL_SPK_H_
#define KWINSTUTIL_SPK_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSType.h>

#include <fstream>

// std::strstream is a part of the interface; its header warns that it is deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#pragma push_macro("__DEPRECATED")
#undef __DEPRECATED
#include <strstream>
#pragma pop_macro("__DEPRECATED")

#include "kwinstutil/export.h"

/// \file
/// Service packs: their lines in the table, the files that they replace, their programs.

/// Removes the lines of a service pack from a control file (control/PRESENT) and writes the other
/// lines to a new file. Construct, then call InitSource, InitDest, Remove and IsLineRemoved. The
/// caller moves the new file into the place of the old one. Use an object once. No argument may
/// be null.
///
/// A line is TYPE:KIND:NAME, then anything. For the comparison, each field is cut at 47 characters
/// and at its first zero byte. If the first or second field was cut at 47, the next character is
/// replaced by ':'; that is done only in a line with all three fields. The last line needs no
/// newline. An empty file has no lines.
class KWINSTUTIL_EXPORT TEVInsResetPresent {
 public:
  TEVInsResetPresent() noexcept;

  /// Closes the files that are still open.
  ~TEVInsResetPresent() noexcept;

  TEVInsResetPresent(const TEVInsResetPresent&) = delete;
  TEVInsResetPresent& operator=(const TEVInsResetPresent&) = delete;

  /// Opens the control file, which must exist.
  ///
  /// Returns 0, or -1 on failure.
  int InitSource(char* path) noexcept;

  /// Opens the new file. If it exists, it is emptied.
  ///
  /// Returns
  ///    0  done;
  ///   -1  failed, or it is the control file that InitSource has opened, also through a link. The
  ///       control file stays as it is.
  ///
  /// Writes: empties or creates PATH.
  int InitDest(char* path) noexcept;

  /// Copies every line except those of kind SPK with this `name` and type. Each copied line gets a
  /// newline and is flushed.
  ///
  /// Returns
  ///    0  done; both files are closed;
  ///   -1  a write failed, or the control file cannot be read to its end. The new file is
  ///       incomplete. The files stay open, unless closing them failed.
  ///
  /// Writes: the new file.
  int Remove(char* name, TEVINSType type) noexcept;

  /// Copies a text file. If its last line has no newline, the copy gets one.
  ///
  /// Returns
  ///    0  done;
  ///   -1  a file cannot be opened, read or written: `to` may be incomplete; or `from` and `to` are
  ///       the same file, also through links: it stays as it is.
  ///
  /// Writes: TO.
  static int FileCopy(char* from, char* to) noexcept;

  /// Has any object of this process removed a line?
  ///
  /// Returns
  ///   1  yes;
  ///   0  no.
  static int IsLineRemoved() noexcept;

  /// Must this line be removed? `line` has no newline. If it is to be kept, its first three fields
  /// are written to the new file, or as many as there are. What follows them is left in `line`.
  ///
  /// Returns
  ///   0  yes;
  ///   n  no: the length of the fields, plus 2.
  ///
  /// Writes: the new file.
  ///
  /// Not declared where the standard library has no std::strstream: libc++ since C++26.
#if !defined(_LIBCPP_VERSION) || __cplusplus <= 202302L
  int IsLineToRemove(char* name, std::strstream& line, TEVINSType type) noexcept;
#endif

 private:
  std::ifstream source_;
  std::ofstream dest_;
};

// Files around a service pack. `spkName` is the pack. Its control file is control/SPKNAME in the
// archive for the type `zeb2`, and OSDIR/control/SPKNAME for every other type. It is unpacked into
// the directory TEVInsGetTempDir(). Each line has a path relative to `installDir`; a line of more
// than 1023 characters is read in pieces of 1023, and each piece is treated as a line. A line that
// starts with a zero byte ends the list. Paths and names go to the shell unquoted.
//
// Both functions delete the unpacked control file once they have read it, and also if they cannot
// open it. Its directories stay. If a call fails earlier, the file stays.
//
// On failure `message` is assigned. Both functions have these messages:
//   "ErrWndOpenControlFile.Text": the path of the unpacked control file, the system's error number;
//   "ErrWndRenameFile.Text": the path of a file, the new name that it did not get.
// If reading the control file fails after it was opened, this is treated as its end. What was
// renamed before a failure stays renamed: each file exists under one of its two names.

/// Sets aside the files that the service pack will replace: FILE becomes FILE.beforeSPK, which
/// replaces an earlier one. The control file is unpacked from MEDIADIR/SPKNAME.Z with compress and
/// tar, or, if that does not exist, from MEDIADIR/SPKNAME with tar. After a failure, the call can
/// be repeated and does what is left.
///
/// The path in a line is its first word, which ends at a blank. Ignored are empty lines, lines that
/// begin with a number other than zero, and "0". A file that does not exist is skipped. A file that
/// cannot be examined is a failure. `spkName` must not be null, and `osDir` may be null only for
/// the types `code` and `zeb2`.
///
/// Returns
///    0  done;
///   -1  failed: one of the two messages above; or the control file could not be unpacked
///       ("ErrWndExtractTar.Text": its path in the archive, MEDIADIR/SPKNAME; followed in the same
///       text by "CheckTmpDir": the temporary directory; what was unpacked stays); or `mediaDir` or
///       `installDir` is null, or `osDir` for the type `code` (no message).
///
/// Writes: renames FILE to FILE.beforeSPK; unpacks the control file below /tmp and deletes it.
/// System: runs compress and tar.
KWINSTUTIL_EXPORT int TEVInsSaveFilesBeforeInstall(char* spkName, char* mediaDir, char* installDir,
                                                   const char* osDir, TEVINSType type,
                                                   TEVUnicodeString& message) noexcept;

/// Puts back the files that were set aside: FILE.beforeSPK becomes FILE and replaces the service
/// pack's. The control file must already be unpacked in the temporary directory. After a failure it
/// must be unpacked there again before the call is repeated.
///
/// Deliberate: the path in a line is the whole line, with blanks and numbers. Empty lines are
/// ignored. A file that was not set aside is skipped. No argument may be null, except `osDir` for
/// the type `zeb2`.
///
/// Returns
///    0  done, or the unpacked control file does not exist, so that there is nothing to put back;
///   -1  failed: one of the two messages above.
///
/// Writes: renames FILE.beforeSPK to FILE; deletes the control file below /tmp.
KWINSTUTIL_EXPORT int TEVInsRestoreFiles(char* installDir, char* spkName, const char* osDir,
                                         TEVINSType type, TEVUnicodeString& message) noexcept;

/// Runs the post-installation programs of a service pack: INSTALLDIR/code/bin/WORD_SUFFIX for each
/// word of INSTALLDIR/control/CAFPost.list. A word of more than 255 characters is split there. A
/// program that does not exist is skipped. If a program fails, the next one is run all the same.
/// What the programs print is appended to `logFile`. Paths and words go to the shell unquoted.
///
/// If the list exists, LD_LIBRARYN32_PATH is set to INSTALLDIR/code/bin and TEVInstallPath to
/// INSTALLDIR, and both stay set.
///
/// Returns
///    n  the exit status of the last program that was run. A shell that cannot be started or is
///       ended by a signal is treated as exit status 0;
///    0  no program was run: the list does not exist, cannot be read, or names no program that
///       exists;
///   -1  no program was run: an argument is null, `installDir` has more than 995 characters, or the
///       environment has no memory for an entry.
///
/// Writes: appends to LOGFILE; what the programs write.
/// System: exports LD_LIBRARYN32_PATH and TEVInstallPath; runs programs of the tree.
KWINSTUTIL_EXPORT int TEVInsSPK(char* suffix, char* installDir, char* logFile) noexcept;

#pragma GCC diagnostic pop

#endif  // KWINSTUTIL_SPK_H_
