#ifndef KWINSTUTIL_ACTIONS_H_
#define KWINSTUTIL_ACTIONS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Shell commands, file operations and setup programs.
///
/// `message` must not be null. It is assigned on success and on failure, and untouched when another
/// argument is refused. Commands, paths and names go to the shell unquoted. What the shell prints
/// is not captured.

// Commands and file operations.

/// Runs `command` through the shell.
///
/// Returns
///     1  done ("CmdSuccessful": command);
///    -1  failed ("ErrCmdFailed": command);
///   -10  `command` is null.
///
/// Writes: what the command writes.
/// System: runs the command.
KWINSTUTIL_EXPORT int TEVInsCommande(char* command, TEVUnicodeString* message) noexcept;

/// Appends the file `from` to the file `to` with cat. If `to` does not exist, it is created. A
/// failure leaves `to` as it was: a new file is removed. Symbolic links are followed and stay.
///
/// Returns
///     1  done ("CmdSucessful", spelled so: the command run);
///    -1  `from` does not exist and nothing was run ("ErrFileNotExist": from), or the command
///        failed ("ErrCmdFailed": the command);
///   -10  `from` or `to` is null.
///
/// Writes: appends to TO, or creates it.
/// System: runs cat.
KWINSTUTIL_EXPORT int TEVInsUpdate(char* from, char* to, TEVUnicodeString* message) noexcept;

/// Copies `from` to `to` with cp.
///
/// Returns
///     1  done ("CmdSuccessful": the command run);
///    -1  failed ("ErrCmdFailed": the command run);
///   -10  `from` or `to` is null.
///
/// Writes: TO.
/// System: runs cp.
KWINSTUTIL_EXPORT int TEVInsCopyInstall(char* from, char* to, TEVUnicodeString* message) noexcept;

/// Replaces the content of the file `path` by `text` and a newline. After a failed write the file
/// may hold a part of the text.
///
/// Returns
///     1  done ("CreateFile_OK": path);
///    -1  failed ("CreateFile_KO": path);
///   -10  `path` or `text` is null.
///
/// Writes: PATH.
KWINSTUTIL_EXPORT int TEVInsCreateFile(char* path, char* text, TEVUnicodeString* message) noexcept;

// Setup programs of the product, run once after a transfer.

/// Runs `command` through the shell. A shell that cannot be started or is ended by a signal is
/// treated as exit status 0.
///
/// Returns
///     0  exit status 0 ("PalomirSetupRC_0", no parameter);
///     1  exit status 1 ("PalomirSetupRC_1": command);
///     2  exit status 2 ("PalomirSetupRC_2": command);
///     n  any other exit status ("PalomirSetupDefault": the status);
///   -10  `command` is null.
///
/// Writes: what the command writes.
/// System: runs the command.
KWINSTUTIL_EXPORT int TEVInsPalomirSetup(char* command, TEVUnicodeString* message) noexcept;

/// Must the people data of the tree `installDir` be updated? `installDir` must not be null.
///
/// Returns
///   1  yes: INSTALLDIR/control/Q8M.prd and INSTALLDIR/code/bin/DRXPeopleUpdate both exist;
///   0  no.
KWINSTUTIL_EXPORT int TEVInsNeedQDNUpdate(char* installDir) noexcept;

// Programs of the tree. INSTALLDIR/code/command/tevstart runs them in an environment. Its name is
// the first word of a ".lp" file in `installDir`, its directory the first line of EnvDir.txt there.
// At most 1023 characters of each are used. If one of the files cannot be read, the program runs
// without an environment. An empty file gives an empty name.

/// Updates the people data of the tree `installDir`, which must not be null, with DRXPeopleUpdate.
/// The ".lp" file is PALOMIR_QDN.lp. `extra` is ignored.
///
/// Returns
///    1  done ("CmdDRXPeopleUpdateSuccessful": the command run);
///   -1  failed ("ErrDRXPeopleUpdateFailed": the command run, the status that system(3) returned).
///
/// Writes: what the program writes.
/// System: runs INSTALLDIR/code/command/tevstart.
KWINSTUTIL_EXPORT int TEVInsQDNUpdate(char* installDir, TEVUnicodeString* message,
                                      char* extra) noexcept;

/// Runs `program` with `arguments`. The ".lp" file is LPNAME.lp.
///
/// Returns
///    1  done ("CmdSuccessful": the command run);
///   -1  failed ("ErrCmdFailed": the command run);
///    0  one of the first four arguments is null, and nothing was run.
///
/// Writes: what the program writes.
/// System: runs INSTALLDIR/code/command/tevstart.
KWINSTUTIL_EXPORT int TEVInsLaunchExe(char* installDir, const char* lpName, char* program,
                                      char* arguments, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_ACTIONS_H_
