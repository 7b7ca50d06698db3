#ifndef KWINSTUTIL_ENV_H_
#define KWINSTUTIL_ENV_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Settings that the installed product and the programs of the installation read from the
/// environment, and the Java runtime.

// The entries of the environment: texts KEY=VALUE, empty until they are exported. The environment
// points to them, so a program that writes into one of them changes the environment too.

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

/// For installers only: the library does not use them.
KWINSTUTIL_EXPORT extern int EnvJava;
KWINSTUTIL_EXPORT extern int TCKBootInit;

// Export. If KEY=VALUE does not fit its buffer, it is refused without a message. The former entry
// of what is refused stays. If the environment has no memory for an entry, the status is -1 too,
// without a message; the entries before it are exported then.

/// Exports TEVMetasearchPath, TEVSharedWorkbookPath and TEVW3PublishPath, as they are given. A null
/// path is skipped. Every other path must be absolute, without blanks and tabs, and writable; if it
/// does not exist, its nearest existing ancestor must be writable. A path that is refused does not
/// stop the others from being exported.
///
/// Returns
///    1  all were exported (`*message` is untouched);
///   -1  at least one was refused. For each of them, unless `message` is null, a message is
///       appended ("ErrWndSyntaxDir": the path; "ErrWndNoWriteDir": the directory tested).
///
/// System: exports TEVMetasearchPath, TEVSharedWorkbookPath and TEVW3PublishPath.
KWINSTUTIL_EXPORT int ExportDataDirectories(char* metasearchPath, char* sharedWorkbookPath,
                                            char* publishPath, TEVUnicodeString* message) noexcept;

/// Exports JAVA_HOME. A null `javaHome` gives an empty value. Nothing is checked. `message` is
/// ignored.
///
/// Returns
///    1  exported;
///   -1  too long.
///
/// System: exports JAVA_HOME.
KWINSTUTIL_EXPORT int ExportJavaHome(char* javaHome, TEVUnicodeString* message) noexcept;

/// Exports what a tree of the previous generation (K6) and a DRX tree beside the product need.
/// PORTAL_K6PANEL is always 1.
///
/// With `installK6` 1, TEV_TO_INSTALL is YES, TEV_CUST is `k6CustDir`, and PORTAL_LIBK6 is libK623
/// if `k6LibraryChoice` is 1 and libK6243 otherwise. With any other `installK6`, TEV_TO_INSTALL is
/// NO. With `installDrx` 1, DRX_TO_INSTALL is YES and DRX_CUST is `drxCustDir`. With any other
/// `installDrx`, DRX_TO_INSTALL is NO. The directory of a tree that is not to be installed is
/// ignored. Deliberate: the directories that are checked stay open, see CheckDir.
///
/// Returns
///    1  exported (`*message` is untouched);
///   -1  nothing was exported: `message` is null or a directory is too long (no message); or a
///       directory is null or not a directory ("ErrWndK6IsNotaDir": the directory; assigned, and
///       for the second of two appended).
///
/// System: exports PORTAL_K6PANEL, TEV_CUST, PORTAL_LIBK6, TEV_TO_INSTALL, DRX_CUST and
/// DRX_TO_INSTALL.
KWINSTUTIL_EXPORT int ExportK6(int installK6, char* k6CustDir, int k6LibraryChoice, int installDrx,
                               char* drxCustDir, TEVUnicodeString* message) noexcept;

/// Exports TCK_Mode, TCK_ServerName, TCK_ServerPort and TCK_BootInit (1 if `bootInit` is 1, 0
/// otherwise). In every mode except "NoServer" the name must not be empty. In these modes, with
/// `portAlreadyChecked` 0, the port must be free too.
///
/// Returns
///    1  exported (`*message` is untouched);
///   -1  nothing was exported: a pointer is null or a text is too long (no message); the name is
///       empty ("ErrWndTCKServerName", no parameter; assigned); the port is taken
///       ("ErrWndTCKPortNotFree": port, the next free one; assigned); or no port is free (the
///       message of GetFreePort).
///
/// System: exports TCK_Mode, TCK_ServerName, TCK_ServerPort and TCK_BootInit; binds TCP ports and
/// releases them.
KWINSTUTIL_EXPORT int ExportTCK(char* mode, char* serverName, int port, int bootInit,
                                TEVUnicodeString* message, int portAlreadyChecked) noexcept;

/// Exports MORVEL_INFORMATION: NO if `information` is 0, and YES otherwise. With YES it also
/// exports K7_ENV_NAME, K7_UNLOAD_PATH and K7_ENV_PATH; a null argument is skipped. `message` is
/// ignored.
///
/// Returns
///    1  exported;
///   -1  nothing was exported: a text is too long.
///
/// System: exports MORVEL_INFORMATION, K7_ENV_NAME, K7_UNLOAD_PATH and K7_ENV_PATH.
KWINSTUTIL_EXPORT int ExportMorvelInfo(int information, char* unloadPath, char* envPath,
                                       char* envName, TEVUnicodeString* message) noexcept;

/// Exports SERVERS_TIMEOUT. `message` may be null.
///
/// Returns
///    1  exported (`*message` is untouched);
///   -1  `minutes` is not from 2 to 35700 ("ErrWndTimeout": minutes; assigned).
///
/// System: exports SERVERS_TIMEOUT.
KWINSTUTIL_EXPORT int ExportServersTimeout(int minutes, TEVUnicodeString* message) noexcept;

/// Is `path` a directory that can be opened? Deliberate: it stays open.
///
/// Returns
///    1  yes;
///   -1  no, or `path` is null.
KWINSTUTIL_EXPORT int CheckDir(char* path) noexcept;

// Files of the environment.

/// Makes the path of the environment file of a configuration: DIR/NAME.txt, or DIR/NAME.sh if the
/// variable OLD_ENVIRONMENT_MODE is set and not empty. That file need not exist.
///
/// NAME is the first word of INSTALLDIR/CONFIGNAME.lp, at most 511 characters of it. DIR is the
/// first word of INSTALLDIR/EnvDir.txt, at most 1023 characters of it. `result` has at least 1540
/// bytes.
///
/// Returns
///   1  made;
///   0  an argument is null, or one of the two files does not exist, cannot be read or has no word
///      (`result` is untouched).
///
/// System: reads OLD_ENVIRONMENT_MODE.
extern "C" KWINSTUTIL_EXPORT int TEVInsEnvname(char* installDir, char* configName,
                                               char* result) noexcept;

// Java.

/// Looks for a Java home that TEVInsCheckJavaHome accepts. The candidates are JAVA_HOME, J_HOME and
/// JREPATH, if they are set and not empty, and then the first java in PATH: its path up to the
/// first "/bin/java". Each candidate that has a java takes at least one second. A candidate of more
/// than 1023 characters is skipped. `result` has at least 1024 bytes.
///
/// Returns
///    1  found, and copied into `result`;
///   -1  `result` is null; or none was found, and `result` is "/usr", a suggestion that was not
///       checked.
///
/// System: reads JAVA_HOME, J_HOME, JREPATH and PATH; runs java -version.
KWINSTUTIL_EXPORT int TEVInsGetJavaHome(char* result) noexcept;

/// Checks the version of a Java home. JAVAHOME/bin/java -version is run through the shell, with the
/// path unquoted. The first 1024 bytes that it prints must contain "1.3.1", "1.4." or "1.5.0"; no
/// other version is accepted. Takes at least one second. JAVAHOME/bin is searched as a list of
/// directories, so `javaHome` should not contain ':'.
///
/// `versionText` is assigned what was printed, as soon as the program has run. `message` is
/// assigned unless `javaHome` is null.
///
/// Returns
///    1  accepted (deliberate: `message` is "ErrBadJavaVersionUNIX32_32" all the same);
///   -1  there is no java ("ErrWndjreNotFound": JAVAHOME/bin); it could not be run
///       ("ErrGetJavaVersion": the command); or `javaHome` is null (both strings are untouched);
///   -3  another version, or nothing was printed ("ErrBadJavaVersionUNIX32_32", no parameter).
///
/// System: runs JAVAHOME/bin/java -version.
KWINSTUTIL_EXPORT int TEVInsCheckJavaHome(char* javaHome, TEVUnicodeString& versionText,
                                          TEVUnicodeString& message) noexcept;

#endif  // KWINSTUTIL_ENV_H_
