#ifndef KWINSTUTIL_DIRS_H_
#define KWINSTUTIL_DIRS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Target directories, free space and the pointer files of a tree.
///
/// Some functions shorten the caller's path: they remove one '/' from its end. "/" becomes the
/// empty path. Where a nearest existing ancestor is looked for, that ancestor may have at most 1023
/// characters.

// Validation. Nothing is written to disk. `message` must not be null. It is assigned for each
// failure that is listed with a message, and untouched otherwise.

/// Does `dir` exist, and may it be written? A plain file is accepted too. Shortens `dir`.
///
/// Returns
///   1  yes;
///   0  no: it does not exist ("DirNotExist": dir), may not be written ("DirNoWrite": dir), or is
///      null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckExistDir(char* dir, TEVUnicodeString* message) noexcept;

/// May `dir` be written? If it does not exist, its nearest existing ancestor is tested instead. If
/// that ancestor is the root, the answer is yes without a test. Shortens `dir`.
///
/// `examined`, of at least 1024 bytes, receives the directory that was tested.
///
/// Returns
///    0  yes;
///   -1  no. `examined` is untouched in these cases:
///       an argument is null;
///       `dir` is "/", a missing path below "//", or a relative path of which no part exists;
///       the tested directory has more than 1023 characters.
KWINSTUTIL_EXPORT int TEVInsCheckAccessDir(char* dir, char* examined) noexcept;

/// Is `dir` absolute and without blanks and tabs?
///
/// Returns
///    0  yes;
///   -1  no ("ErrWndSyntaxDir": dir), or `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckSyntaxDir(TEVUnicodeString* dir,
                                           TEVUnicodeString* message) noexcept;

/// Can `dir` be the target of an installation? An installation in it is recognised by
/// DIR/PRODUCTSUBDIR/control/PRESENT. `productSubDir` may be null.
///
/// Deliberate: a directory that could be opened stays open.
///
/// Returns
///     1  yes, an empty directory that may be written;
///     3  yes, it does not exist and may be created;
///     4  yes, it holds an installation;
///    -1  no, it may not be written or created ("ErrWndNoWriteDir": the directory tested);
///    -2  no: it is not a directory that can be read ("ErrWndFileAlreadyExist": dir); it is not
///        empty and holds no installation ("ErrWndEmptyDir": dir); or it is not empty and
///        `productSubDir` is null (no message);
///   -10  `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckEmptyDir(const char* dir, const char* productSubDir,
                                          TEVUnicodeString* message) noexcept;

/// Does `dir` exist, or may it be created? `dir` must not be null.
///
/// Returns
///    0  it exists, whatever it is;
///    3  it does not exist and may be created;
///   -1  it may not be created ("ErrWndNoWriteDir": the directory tested).
KWINSTUTIL_EXPORT int TEVInsCheckEmptyDir(const char* dir, TEVUnicodeString* message) noexcept;

/// Can `dir` hold the environment files? They need 8 kilobytes of free space.
///
/// Returns
///     1  yes, it does not exist and may be created;
///     2  yes, it exists;
///    -1  no, it may not be created ("ErrWndNoWriteDir": the directory tested);
///    -2  no, there is too little space ("ErrWndNoSpaceEnvDir": the directory measured);
///    -3  the space cannot be measured ("ErrWndAvailSpace", see TEVInsComputeAvailSpace);
///   -10  `dir` is null (no message).
KWINSTUTIL_EXPORT int TEVInsCheckEnvDir(const char* dir, TEVUnicodeString* message) noexcept;

// Free space, and making and removing directories.

/// Measures the free space that an ordinary user has on the file system of `path`, or of its
/// nearest existing ancestor if `path` does not exist. `*availableKB` receives it in kilobytes of
/// 1024 bytes: the low 32 bits of the number. No argument may be null.
///
/// Returns
///    0  measured (`*message` is untouched);
///   -1  not measured ("ErrWndAvailSpace": the directory, the system's error text; assigned).
KWINSTUTIL_EXPORT int TEVInsComputeAvailSpace(const char* path, unsigned int* availableKB,
                                              TEVUnicodeString* message) noexcept;

/// Creates the directory `path` and its missing ancestors, with mode 0755 less the umask. Shortens
/// `path`, by two '/' if it ends with two. Directories created before a failure stay.
///
/// Returns
///     0  created, or it exists and may be written (a plain file too);
///    -1  a directory cannot be created, the path exists and may not be written, or it has more
///        than 1023 characters;
///   -10  `path` is null.
///
/// Writes: creates directories.
KWINSTUTIL_EXPORT int TEVInsCreateDirectory(char* path) noexcept;

/// Deletes the files below `dir`. If `removeDirectories` is not zero, it deletes the directories
/// too, `dir` included; otherwise they stay, empty. `dir` must not be null.
///
/// A symbolic link is deleted and not followed, unless it is `dir` itself. What cannot be deleted
/// stays, and that is not reported. Nor is a failure inside a subdirectory.
///
/// Returns
///    0  done;
///   -1  `dir` cannot be opened; it cannot be read to its end (deliberate: it then stays open); an
///       entry of it cannot be examined; or there is no memory for the path of an entry. What was
///       deleted before stays deleted.
///
/// Writes: deletes a tree.
KWINSTUTIL_EXPORT int TEVInsDeleteDir(char* dir, int removeDirectories) noexcept;

/// Replaces every run of '/' in `path` by a single one. Does nothing when `path` is null.
KWINSTUTIL_EXPORT void TEVInsSuppressSlashDir(TEVUnicodeString* path) noexcept;

// What the tree and the system say.

/// Copies the first line of DIR/CodeDir.txt into `result`, of at least 1024 bytes: without its
/// newline, and at most 1023 characters of it. An empty file gives an empty line.
///
/// Returns
///     1  read;
///    -1  the file does not exist or cannot be read (`result` is then the empty string);
///   -10  an argument is null.
KWINSTUTIL_EXPORT int TEVInsGetCodeDir(char* dir, char* result) noexcept;

/// Does the same as TEVInsGetCodeDir with DIR/ZEBDir.txt.
///
/// Returns
///     1  read;
///    -1  the file does not exist or cannot be read (`result` is then the empty string);
///   -10  an argument is null.
KWINSTUTIL_EXPORT int TEVInsGetZEBDir(char* dir, char* result) noexcept;

/// Copies word number `index` (1 to 4) of DIR/OSUNIX into `result`, of at least 16 bytes. If the
/// file has fewer words, `result` becomes the empty string. A word of more than 15 characters is
/// split there. `result` is untouched if an argument is null, `index` is out of range, or the file
/// cannot be opened or read.
KWINSTUTIL_EXPORT void TEVInsReadOSFile(const char* dir, int index, char* result) noexcept;

/// Copies the name of the scratch directory, "/tmp", into `result`, of at least 5 bytes. Does
/// nothing when `result` is null. The environment is ignored, and the directory is not examined.
KWINSTUTIL_EXPORT void TEVInsGetTempDir(char* result) noexcept;

/// Is the home directory (HOME) that of the account "root"? The user id is ignored.
///
/// Returns
///   1  yes;
///   0  no.
///
/// System: reads HOME and the account "root".
KWINSTUTIL_EXPORT int TEVInsIsRoot() noexcept;

/// Runs `command` through the shell. `output` receives the first `size` bytes that it prints. The
/// rest of `output` is filled with zeros; if all `size` bytes are used, there is no terminator.
/// With a null `output` nothing is captured. Takes at least one second. The exit status of the
/// command is not reported. `command` must not be null.
///
/// Returns
///    0  the command was started;
///   -1  it was not.
///
/// Writes: what the command writes.
/// System: runs the command.
KWINSTUTIL_EXPORT int executeCmd(char* command, char* output, int size) noexcept;

#endif  // KWINSTUTIL_DIRS_H_
