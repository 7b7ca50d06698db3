#ifndef KWINSTUTIL_ENV_H_
#define KWINSTUTIL_ENV_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Settings that the installed product and the programs of the installation read from the
/// environment, and the Java runtime.

// The entries, texts KEY=VALUE. The environment points to them, so a text written there by hand
// changes it too. Empty until they are exported.

KWINSTUTIL_EXPORT extern char EnvMSPath[1024];
KWINSTUTIL_EXPORT extern char EnvShWBPath[1024];
KWINSTUTIL_EXPORT extern char EnvPublishPath[1024];
KWINSTUTIL_EXPORT extern char EnvJavaHome[1024];
KWINSTUTIL_EXPORT extern char tev_to_install[20];
KWINSTUTIL_EXPORT extern char tev_cust[1024];
KWINSTUTIL_EXPORT extern char tev_versionlib[1024];
KWINSTUTIL_EXPORT extern char drx_to_install[20];
KWINSTUTIL_EXPORT extern char drx_cust[1024];
KWINSTUTIL_EXPORT extern char varTCKMode[128];
KWINSTUTIL_EXPORT extern char varTCKServerName[128];
KWINSTUTIL_EXPORT extern char varTCKServerPort[128];
KWINSTUTIL_EXPORT extern char varTCKBoot[128];
KWINSTUTIL_EXPORT extern char EnvMorvelInfo[32];
KWINSTUTIL_EXPORT extern char EnvMorvelEnvName[256];
KWINSTUTIL_EXPORT extern char EnvMorvelInfoPath[1024];
KWINSTUTIL_EXPORT extern char EnvMorvelInfoEnvPath[1024];
KWINSTUTIL_EXPORT extern char TimeoutEnv[128];

/// The entry PORTAL_K6PANEL=1.
KWINSTUTIL_EXPORT extern char* portal_k6panel;

/// For the installer's use: the library neither reads nor writes them.
KWINSTUTIL_EXPORT extern int EnvJava;
KWINSTUTIL_EXPORT extern int TCKBootInit;

// Export. An entry, its key and "=" included, that does not fit its buffer is refused without a
// message. A call that refuses something leaves the entries of what it refuses as they were. The
// same status -1, without a message, is returned when the environment has no memory for an entry;
// those before it are exported then.

/// Exports TEVMetasearchPath, TEVSharedWorkbookPath and TEVW3PublishPath, as they are given. Each
/// path that is not null must be absolute, without blanks and tabs, and writable, or its nearest
/// existing ancestor must be. A path that is refused does not keep the others from being exported.
///
/// Returns
///    1  all were exported (none, when all are null); `*message` is untouched;
///   -1  at least one was refused. For each of them in turn, unless `message` is null, the message
///       is appended: "ErrWndSyntaxDir": the path, or "ErrWndNoWriteDir": the directory tested.
KWINSTUTIL_EXPORT int ExportDataDirectories(char* metasearchPath, char* sharedWorkbookPath,
                                            char* publishPath, TEVUnicodeString* message) noexcept;

/// Exports JAVA_HOME, with an empty value when `javaHome` is null. Nothing is checked. `message` is
/// not used.
///
/// Returns
///    1  exported;
///   -1  too long.
KWINSTUTIL_EXPORT int ExportJavaHome(char* javaHome, TEVUnicodeString* message) noexcept;

/// Exports what a previous-generation tree and a DRX tree beside the product need: PORTAL_K6PANEL=1
/// and, with `installK6` 1, TEV_CUST, PORTAL_LIBK6 (libK623 when `k6LibraryChoice` is 1, else
/// libK6243) and TEV_TO_INSTALL=YES, else TEV_TO_INSTALL=NO; with `installDrx` 1, DRX_CUST and
/// DRX_TO_INSTALL=YES, else DRX_TO_INSTALL=NO. The directory of a tree that is not installed is not
/// looked at. Leaves the directories that it checks open, see CheckDir.
///
/// Returns
///    1  exported; `*message` is untouched;
///   -1  nothing was exported: `message` is null, a directory is too long (no message), or is none
///       or null ("ErrWndK6IsNotaDir": the directory; assigned, the second of two appended).
KWINSTUTIL_EXPORT int ExportK6(int installK6, char* k6CustDir, int k6LibraryChoice, int installDrx,
                               char* drxCustDir, TEVUnicodeString* message) noexcept;

/// Exports TCK_Mode, TCK_ServerName, TCK_ServerPort and TCK_BootInit (1 when `bootInit` is 1, else
/// 0). In every mode but "NoServer" the name must not be empty and, with `portAlreadyChecked` 0,
/// the port must be free.
///
/// Returns
///    1  exported; `*message` is untouched;
///   -1  nothing was exported: a pointer is null or a text too long (no message), the name is empty
///       ("ErrWndTCKServerName"; assigned), the port is taken ("ErrWndTCKPortNotFree": port, the
///       next free one; assigned), or there is no free one (the message of GetFreePort).
KWINSTUTIL_EXPORT int ExportTCK(char* mode, char* serverName, int port, int bootInit,
                                TEVUnicodeString* message, int portAlreadyChecked) noexcept;

/// Exports MORVEL_INFORMATION: NO when `information` is 0; else YES, with K7_ENV_NAME,
/// K7_UNLOAD_PATH and K7_ENV_PATH where the argument is not null. `message` is not used.
///
/// Returns
///    1  exported;
///   -1  nothing was exported: a text is too long.
KWINSTUTIL_EXPORT int ExportMorvelInfo(int information, char* unloadPath, char* envPath,
                                       char* envName, TEVUnicodeString* message) noexcept;

/// Exports SERVERS_TIMEOUT. `message` may be null.
///
/// Returns
///    1  exported;
///   -1  `minutes` is not from 2 to 35700 ("ErrWndTimeout": minutes; assigned).
KWINSTUTIL_EXPORT int ExportServersTimeout(int minutes, TEVUnicodeString* message) noexcept;

/// Is `path` a directory that can be opened? It is left open.
///
/// Returns
///    1  yes;
///   -1  no, or `path` is null.
KWINSTUTIL_EXPORT int CheckDir(char* path) noexcept;

// Files of the environment.

/// Makes the path of the environment file of a configuration: DIR/NAME.txt, or DIR/NAME.sh when the
/// variable OLD_ENVIRONMENT_MODE is set and not empty. NAME is the first word of
/// INSTALLDIR/CONFIGNAME.lp, at most 511 characters of it; DIR is that of INSTALLDIR/EnvDir.txt, at
/// most 1023. `result` has at least 1540 bytes. The path's file need not exist.
///
/// Returns
///   1  made;
///   0  an argument is null, or one of the two files is missing, cannot be read or has no word:
///      `result` is untouched.
extern "C" KWINSTUTIL_EXPORT int TEVInsEnvname(char* installDir, char* configName,
                                               char* result) noexcept;

// Java.

/// Looks for a Java home that passes TEVInsCheckJavaHome: in JAVA_HOME, J_HOME and JREPATH, where
/// they are set and not empty, then that of the first java in PATH: its path up to its first
/// "/bin/java". Each candidate that has a java takes at least a second. `result` has at least 1024
/// bytes; a longer candidate is passed over.
///
/// Returns
///    1  found, in `result`;
///   -1  `result` is null, or nothing was found: `result` is then "/usr", a suggestion that is not
///       checked.
KWINSTUTIL_EXPORT int TEVInsGetJavaHome(char* result) noexcept;

/// Runs JAVAHOME/bin/java -version through the shell, with the path unquoted, and looks for
/// "1.3.1", "1.4." or "1.5.0" in the first 1024 bytes that it prints: no other version is accepted.
/// Takes at least a second. JAVAHOME/bin is searched as a path list, so `javaHome` should have no
/// ':'. `versionText` is assigned with those bytes as soon as the program has run, and `message` in
/// every case but the null one.
///
/// Returns
///    1  accepted; `message` holds "ErrBadJavaVersionUNIX32_32" all the same;
///   -1  there is no java ("ErrWndjreNotFound": JAVAHOME/bin), it could not be run
///       ("ErrGetJavaVersion": the command), or `javaHome` is null (both strings are untouched);
///   -3  another version, or nothing was printed ("ErrBadJavaVersionUNIX32_32").
KWINSTUTIL_EXPORT int TEVInsCheckJavaHome(char* javaHome, TEVUnicodeString& versionText,
                                          TEVUnicodeString& message) noexcept;

#endif  // KWINSTUTIL_ENV_H_
