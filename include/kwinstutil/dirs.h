#ifndef KWINSTUTIL_DIRS_H_
#define KWINSTUTIL_DIRS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Target directories, free space and the pointer files of a tree.
///
/// Paths have at most 1023 characters. Where a function says that it shortens a path, it removes
/// one trailing '/' from the caller's string; "/" then becomes the empty path.

// Validation. `message` must not be null: it is assigned with each failure that names a key, and
// untouched otherwise. Nothing is written to disk.

/// Is `dir` an existing, writable path? Shortens `dir`.
///
/// Returns
///   1  yes (a plain file passes too);
///   0  `dir` is null (no message), does not exist ("DirNotExist": dir), or may not be written
///      ("DirNoWrite": dir).
KWINSTUTIL_EXPORT int TEVInsCheckExistDir(char* dir, TEVUnicodeString* message) noexcept;

/// May `dir`, or its nearest existing ancestor, be written? Shortens `dir`.
///
/// `examined`, of at least 1024 bytes, receives the directory that was tested. The root counts as
/// writable when it is the nearest ancestor of a missing path.
///
/// Returns
///    0  yes;
///   -1  no; or an argument is null, `dir` is "/", a missing path below "//", or a relative path of
///       which nothing exists, or the tested directory does not fit (`examined` stays as it was in
///       these cases).
KWINSTUTIL_EXPORT int TEVInsCheckAccessDir(char* dir, char* examined) noexcept;

/// Is `dir` written in an accepted form: absolute, and without blanks and tabs?
///
/// Returns
///    0  yes;
///   -1  no ("ErrWndSyntaxDir": dir), or `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckSyntaxDir(TEVUnicodeString* dir,
                                           TEVUnicodeString* message) noexcept;

/// Is `dir` fit to be the target of an installation? `productSubDir` is the subdirectory that holds
/// control/PRESENT when something is installed; it may be null. Each call for an existing directory
/// leaves that open.
///
/// Returns
///     1  an empty directory that may be written;
///     3  does not exist, and may be created;
///     4  holds an installation;
///    -1  may not be written or created ("ErrWndNoWriteDir": the directory tested);
///    -2  is no directory that can be read ("ErrWndFileAlreadyExist": dir), is not empty and holds
///        no installation ("ErrWndEmptyDir": dir), or is not empty and `productSubDir` is null (no
///        message);
///   -10  `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckEmptyDir(const char* dir, const char* productSubDir,
                                          TEVUnicodeString* message) noexcept;

/// Does `dir` exist, or may it be created? `dir` must not be null.
///
/// Returns
///    0  it exists, whatever it is and holds;
///    3  does not exist, and may be created;
///   -1  may not be created ("ErrWndNoWriteDir": the directory tested).
KWINSTUTIL_EXPORT int TEVInsCheckEmptyDir(const char* dir, TEVUnicodeString* message) noexcept;

/// Is `dir` fit to hold the environment files? It needs 8 kilobytes of free space.
///
/// Returns
///     1  does not exist, may be created, and there is space;
///     2  exists, and there is space;
///    -1  may not be created ("ErrWndNoWriteDir": the directory tested);
///    -2  too little space ("ErrWndNoSpaceEnvDir": the directory measured);
///    -3  the space cannot be measured ("ErrWndAvailSpace", see TEVInsComputeAvailSpace);
///   -10  `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckEnvDir(const char* dir, TEVUnicodeString* message) noexcept;

// Free space, and making and removing directories.

/// Measures the space that an ordinary user has on the file system of `path`, or of its nearest
/// existing ancestor, in kilobytes of 1024 bytes, into `*availableKB` (the low 32 bits of the
/// number). No argument may be null.
///
/// Returns
///    0  measured; `*message` is untouched;
///   -1  not measured ("ErrWndAvailSpace": the directory, the system's error text; assigned).
KWINSTUTIL_EXPORT int TEVInsComputeAvailSpace(const char* path, unsigned int* availableKB,
                                              TEVUnicodeString* message) noexcept;

/// Creates the directory `path` and those above it, with mode 0755 less the umask. Shortens `path`,
/// by two '/' if it ends with so many. What was created before a failure stays.
///
/// Returns
///     0  created, or there already and writable (a plain file too);
///    -1  a level cannot be created, the path exists and may not be written, or is too long;
///   -10  `path` is null.
KWINSTUTIL_EXPORT int TEVInsCreateDirectory(char* path) noexcept;

/// Deletes the files below `dir`, which must not be null; with `removeDirectories` non-zero the
/// directories too, `dir` included, else they stay, empty. A symbolic link is deleted itself and
/// never followed, unless `dir` is one. What cannot be deleted stays, without a failure.
///
/// Returns
///    0  done;
///   -1  `dir` cannot be opened, its reading fails (it then stays open), or an entry cannot be
///       examined; what was deleted until then stays deleted.
KWINSTUTIL_EXPORT int TEVInsDeleteDir(char* dir, int removeDirectories) noexcept;

/// Makes a single '/' of every run of them in `path`. A null `path` is left alone.
KWINSTUTIL_EXPORT void TEVInsSuppressSlashDir(TEVUnicodeString* path) noexcept;

// What the tree and the system say.

/// Reads the first line of DIR/CodeDir.txt, without its newline and at most 1023 characters of it,
/// into `result`, of at least 1024 bytes. An empty file gives an empty line.
///
/// Returns
///     1  read;
///    -1  the file is missing or cannot be read (`result` is then the empty string);
///   -10  an argument is null.
KWINSTUTIL_EXPORT int TEVInsGetCodeDir(char* dir, char* result) noexcept;

/// As TEVInsGetCodeDir, for DIR/ZEBDir.txt.
KWINSTUTIL_EXPORT int TEVInsGetZEBDir(char* dir, char* result) noexcept;

/// Copies word number `index` (1 to 4) of DIR/OSUNIX into `result`, of at least 16 bytes: an empty
/// string when the file has fewer words. A word of more than 15 characters is split there. Leaves
/// `result` as it was when an argument is null, `index` is another number, or the file cannot be
/// opened or read.
KWINSTUTIL_EXPORT void TEVInsReadOSFile(const char* dir, int index, char* result) noexcept;

/// Copies the scratch directory, "/tmp", into `result`, of at least 5 bytes, unless that is null.
/// The environment has no say.
KWINSTUTIL_EXPORT void TEVInsGetTempDir(char* result) noexcept;

/// 1 when the home directory (HOME) is that of the account "root", else 0. The user id has no say.
KWINSTUTIL_EXPORT int TEVInsIsRoot() noexcept;

/// Runs `command`, which must not be null, through the shell and captures the first `size` bytes
/// that it prints into `output`, zero-filled beforehand; there is no terminator when all `size`
/// bytes are used. Takes at least a second. `output` may be null: then nothing is captured. The
/// command's exit status is not told.
///
/// Returns
///    0  the command was started;
///   -1  it was not.
KWINSTUTIL_EXPORT int executeCmd(char* command, char* output, int size) noexcept;

#endif  // KWINSTUTIL_DIRS_H_
