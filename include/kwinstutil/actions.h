#ifndef KWINSTUTIL_ACTIONS_H_
#define KWINSTUTIL_ACTIONS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

// Commands and file operations after a copy. Each tells its outcome in `*message` on success and on
// failure, so `message` must not be null. Commands and paths go to the shell as they are, and what
// the shell prints is not captured.
//
// All return
//     1  done;
//    -1  failed;
//   -10  another argument is null (`*message` is untouched).

/// Runs `command` through the shell. "CmdSuccessful" or "ErrCmdFailed": the command.
KWINSTUTIL_EXPORT int TEVInsCommande(char* command, TEVUnicodeString* message) noexcept;

/// Appends the file `from` to the file `to`, which is created when missing. "CmdSucessful" (spelled
/// so) or "ErrCmdFailed": the command run; "ErrFileNotExist": `from`, when that is missing and
/// nothing was run. A failure leaves `to` as it was.
KWINSTUTIL_EXPORT int TEVInsUpdate(char* from, char* to, TEVUnicodeString* message) noexcept;

/// Copies `from` to `to` with cp. "CmdSuccessful" or "ErrCmdFailed": the command run.
KWINSTUTIL_EXPORT int TEVInsCopyInstall(char* from, char* to, TEVUnicodeString* message) noexcept;

/// Writes `text` and a newline to the file `path`, in the place of what it held. "CreateFile_OK" or
/// "CreateFile_KO": the path. After a failed write the file may hold a part of the text.
KWINSTUTIL_EXPORT int TEVInsCreateFile(char* path, char* text, TEVUnicodeString* message) noexcept;

// Setup programs of the product, run once after a copy. `message` must not be null. Commands, paths
// and the names read from files go to the shell as they are.

/// Runs `command` through the shell.
///
/// Returns its exit status: 0 ("PalomirSetupRC_0": no parameter), 1 ("PalomirSetupRC_1": the
/// command), 2 ("PalomirSetupRC_2": the command), another ("PalomirSetupDefault": the status).
/// A shell that cannot be started, or that a signal ended, counts as 0.
/// -10 when `command` is null (`*message` is untouched).
KWINSTUTIL_EXPORT int TEVInsPalomirSetup(char* command, TEVUnicodeString* message) noexcept;

/// 1 when the tree `installDir` has both control/Q8M.prd and code/bin/DRXPeopleUpdate, and so must
/// have its people data updated; else 0. `installDir` must not be null.
KWINSTUTIL_EXPORT int TEVInsNeedQDNUpdate(char* installDir) noexcept;

// The functions below run a program with the tree's code/command/tevstart: in the environment named
// by the first word of a ".lp" file and the first line of EnvDir.txt, both in `installDir` and cut
// after 1023 characters; in none when one of the files cannot be read. An empty file gives an empty
// name.

/// Updates the people data of the tree `installDir`, which must not be null. The ".lp" file is
/// PALOMIR_QDN.lp; `extra` is ignored.
///
/// Returns
///    1  done ("CmdDRXPeopleUpdateSuccessful": the command);
///   -1  failed ("ErrDRXPeopleUpdateFailed": the command, the status as system(3) gives it).
KWINSTUTIL_EXPORT int TEVInsQDNUpdate(char* installDir, TEVUnicodeString* message,
                                      char* extra) noexcept;

/// Runs `program` with `arguments`. The ".lp" file is LPNAME.lp.
///
/// Returns
///    1  done ("CmdSuccessful": the command);
///   -1  failed ("ErrCmdFailed": the command);
///    0  one of the first four arguments is null: nothing was run (`*message` is untouched).
KWINSTUTIL_EXPORT int TEVInsLaunchExe(char* installDir, const char* lpName, char* program,
                                      char* arguments, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_ACTIONS_H_
