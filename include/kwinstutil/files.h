#ifndef KWINSTUTIL_FILES_H_
#define KWINSTUTIL_FILES_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSType.h>

#include "kwinstutil/export.h"
#include "kwinstutil/report.h"

/// \file
/// Archives of components, and lines of text files.

// Archives. Paths and names go to the shell unquoted: do not take them from an untrusted source.

/// Transfers a component's archive into the tree `installDir`.
///
/// SOURCEDIR/COMPONENT.Z is unpacked with compress and tar. If it does not exist,
/// SOURCEDIR/COMPONENT is unpacked with tar. With an `osDir`, the languages whose bits are clear in
/// `languages` are then removed (see lang.h). Last, the component's table control/COMPONENT.toc is
/// appended to control/PRESENT. Both are in INSTALLDIR/OSDIR, or in INSTALLDIR if `osDir` is null.
///
/// INSTALLDIR/ErrorTar.log receives what tar prints. It is deleted when tar was successful, and
/// stays when tar failed. Files that were unpacked before a failure stay. With status -100,
/// INSTALLDIR/TEVInsErrorTransfer.log receives the archive's checksum and the file-system usage, if
/// it can be written.
///
/// `message` is assigned when unpacking failed ("ErrCommandInterrupted": the command run).
/// Otherwise what tar printed is appended to it, without newlines. If the table could not be
/// appended, the message of TEVInsUpdate follows.
///
/// Returns
///      0  transferred;
///     -1  one of the first three arguments is null, and nothing was done (`message` is untouched);
///   -100  failed.
///
/// Writes: unpacks into INSTALLDIR; deletes catalogs and stroke fonts there; appends to
/// control/PRESENT; INSTALLDIR/ErrorTar.log; INSTALLDIR/TEVInsErrorTransfer.log.
/// System: runs compress, tar, rm, cat, sum and df.
KWINSTUTIL_EXPORT int TEVInsTransferCAF(char* componentName, char* sourceDir, char* installDir,
                                        const char* osDir, int languages,
                                        TEVUnicodeString& message) noexcept;

/// Appends the checksum of `archive` and the file-system usage to the side log
/// DIR/TEVInsErrorTransfer.log. With a null `archive`, only the usage. Does nothing when the log
/// cannot be opened.
///
/// Writes: appends to DIR/TEVInsErrorTransfer.log, or creates it.
/// System: runs sum and df.
KWINSTUTIL_EXPORT void WriteLogErrorTransfer(char* dir, char* archive) noexcept;

/// Copies a side log into `log`, under a heading, and deletes it. It is deleted even if it cannot
/// be read or `log` cannot be written. With a null `log` it is only deleted. If it does not exist,
/// nothing is done. `dir` must not be null.
///
/// The side log is DIR/TEVInsErrorTransfer.log for the type `zeb2` or a null `componentName`, and
/// DIR/COMPONENT/TEVInsErrorTransfer.log otherwise.
///
/// Writes: appends to the log; deletes the side log.
KWINSTUTIL_EXPORT void TEVInsTransferLogInfo(char* dir, const char* componentName, TEVINSType type,
                                             TEVInstallLog* log) noexcept;

// Lines of text files. `message` is ignored and may be null.

/// Removes lines from `file`: those that begin with `text`, or, if `atStart` is zero, those that
/// contain `text` anywhere. A line of more than 2047 characters is read in pieces of 2047, and each
/// piece is treated as a line.
///
/// The other lines are written to FILE.tmpPID, which then replaces FILE. The new file has the mode
/// of the old one, and its owner if the process may set it. If `file` is a symbolic link, the new
/// file replaces the link; the file that it leads to stays as it was.
///
/// Returns
///    1  done. If no line would be left, or FILE.tmpPID cannot be examined, FILE stays as it was,
///       and FILE.tmpPID stays beside it;
///   -1  an argument is null, or one of the files cannot be opened, read, written or renamed. FILE
///       stays as it was; FILE.tmpPID stays if it was created.
///
/// Writes: replaces FILE; FILE.tmpPID.
KWINSTUTIL_EXPORT int TEVInsSuppressLine(char* file, char* text, TEVUnicodeString* message,
                                         int atStart) noexcept;

/// Adds `line` and a newline to the end of `file`. `line` continues a last line that has no
/// newline. `line` is a printf format without arguments: "%%" gives '%', and any other conversion
/// is written as it is.
///
/// Returns
///    1  done;
///   -1  an argument is null, or `file` does not exist or cannot be written. It keeps its former
///       length.
///
/// Writes: appends to FILE.
KWINSTUTIL_EXPORT int TEVInsAddLine(char* file, char* line, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_FILES_H_
