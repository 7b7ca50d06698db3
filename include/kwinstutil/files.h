#ifndef KWINSTUTIL_FILES_H_
#define KWINSTUTIL_FILES_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSType.h>

#include "kwinstutil/export.h"
#include "kwinstutil/report.h"

/// Transfers a component's archive into the tree `installDir`.
///
/// Unpacks SOURCEDIR/COMPONENT.Z with compress and tar, or SOURCEDIR/COMPONENT with tar when there
/// is no compressed one. Then, with an `osDir`, removes the languages whose bits are clear in
/// `languages` (see lang.h), and appends the component's table control/COMPONENT.toc to
/// control/PRESENT; both lie below INSTALLDIR/OSDIR, or below INSTALLDIR when `osDir` is null.
/// The paths and the name go to the shell unquoted: do not call it with any from an untrusted
/// source.
///
/// On disk: tar's output goes to INSTALLDIR/ErrorTar.log, which a successful unpacking deletes and
/// a failed one leaves. A failure with status -100 leaves the archive's checksum and the
/// file-system usage in INSTALLDIR/TEVInsErrorTransfer.log, where that can be written. Files that
/// were unpacked before a failure stay.
///
/// `message`
///   - is assigned when unpacking failed ("ErrCommandInterrupted": the command line);
///   - is appended with what tar printed, without newlines, when unpacking went well all the same;
///   - is appended with the message of TEVInsUpdate when the table could not be added;
///   - is untouched otherwise.
///
/// Returns
///      0  transferred;
///     -1  one of the first three arguments is null: nothing was done;
///   -100  failed.
KWINSTUTIL_EXPORT int TEVInsTransferCAF(char* componentName, char* sourceDir, char* installDir,
                                        const char* osDir, int languages,
                                        TEVUnicodeString& message) noexcept;

/// Appends the checksum of `archive` (unless that is null) and the file-system usage to the side
/// log TEVInsErrorTransfer.log in `dir`. Writes nothing when the log cannot be opened.
KWINSTUTIL_EXPORT void WriteLogErrorTransfer(char* dir, char* archive) noexcept;

/// Copies a side log into `log`, under a heading, and deletes it, also when it cannot be read or
/// `log` cannot take it. The side log is DIR/TEVInsErrorTransfer.log for the type `zeb2` or a null
/// `componentName`, and DIR/COMPONENT/TEVInsErrorTransfer.log for every other one; without it
/// nothing is done. With a null `log` it is only deleted. `dir` must not be null.
KWINSTUTIL_EXPORT void TEVInsTransferLogInfo(char* dir, const char* componentName, TEVINSType type,
                                             TEVInstallLog* log) noexcept;

// Line editing. `message` is never touched, and may be null.

/// Removes the lines of `file` that begin with `text` (`atStart` non-zero) or contain it anywhere
/// (zero). What a line holds beyond 2047 characters counts as the next line. The file is replaced
/// by a new one of the same mode, and of the same owner where that may be given, which is written
/// beside it as FILE.tmpPID.
///
/// Returns
///    1  done. When no line would be left, or FILE.tmpPID cannot be looked at, `file` stays as it
///       was, and FILE.tmpPID stays beside it;
///   -1  an argument is null, or one of the files cannot be opened, read, written or renamed. FILE
///       stays as it was; FILE.tmpPID stays when it was made.
KWINSTUTIL_EXPORT int TEVInsSuppressLine(char* file, char* text, TEVUnicodeString* message,
                                         int atStart) noexcept;

/// Adds `line` and a newline to the end of `file`; a last line without a newline is continued.
/// `line` is a printf format without arguments: "%%" gives '%', and other conversions are written
/// as they stand.
///
/// Returns
///    1  done;
///   -1  an argument is null, or `file` does not exist or cannot be written; it keeps its former
///       length.
KWINSTUTIL_EXPORT int TEVInsAddLine(char* file, char* line, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_FILES_H_
