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

#endif  // KWINSTUTIL_ACTIONS_H_
