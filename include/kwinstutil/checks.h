#ifndef KWINSTUTIL_CHECKS_H_
#define KWINSTUTIL_CHECKS_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include <ostream>

#include "kwinstutil/export.h"

/// \file
/// Whether a medium may be installed on a tree.
///
/// Unless a function says otherwise: a null `media` is treated as an empty medium. With a null
/// `message` no message is made. `*message` is assigned on a refusal and untouched otherwise.
/// Nothing is written to disk.
///
/// Levels and operating systems are compared as strings. Two missing values are equal; a missing
/// and a present one are not. In a message a missing value is an empty string.
///
/// A check takes at most 4096 packages of one kind and type from a medium. If the medium has more,
/// TEVInsCheckInstall, TEVInsCheckInstallSMP, TEVInsCheckInstallZEB and TEVInsCheckInstallSPK may
/// give a wrong answer. The information text then says how many were left out: empty it with
/// TEVINSToc::sResetInfoMsg before the check, and read it with TEVINSToc::sGetInfoMsg after it. If
/// there is no memory for a list of packages, the list is treated as empty.
///
/// TEVInsCheckInstallCode and TEVInsCheckCodeLevel read the operating systems of a tree from OSUNIX
/// in its top directory. A system without control/PRESENT is skipped. A word of more than 47
/// characters in OSUNIX is split there.

// What the medium holds.

/// Does the medium hold products or solutions of `type`?
///
/// Returns
///    0  yes;
///   -1  no ("ErrEmptyMediaToc", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMedia(TEVINSType type, TEVINSMediaToc* media,
                                       TEVUnicodeString* message) noexcept;

/// Does the directory `mediaDir` hold the files of the rendering satellite, LumaforgeSatellite.Z
/// and LFSFS? `mediaDir` must not be null.
///
/// Returns
///    0  yes, both;
///   -2  no ("ErrorNoFile": the path of the first file that does not exist).
KWINSTUTIL_EXPORT int TEVInsCheckMediaSAT(char* mediaDir, TEVUnicodeString* message) noexcept;

/// Does the medium hold a service pack?
///
/// Returns
///    0  the code has one;
///    1  only the SDK has one, or there is no memory for the list of the SDK's packs (no message);
///    4  no ("ErrorNoSPK", no parameter).
///
/// Without memory for the list of the code's packs, only the SDK is examined.
KWINSTUTIL_EXPORT int TEVInsCheckMediaSPK(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold a hot fix? Returns 0 if so, or if there is no memory to look for one, and 4
/// if not ("ErrorNoHFX", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMediaHFX(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold samples? Returns 0 if so, and -1 if not ("ErrEmptyMediaToc", no parameter)
/// or if `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckMediaSMP(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

// What the tree holds. A package is missing if TEVINSInstToc::IsInstalled returns -1. Without a
// tree (null) nothing is missing, unless a function says otherwise.

/// Does the medium hold a product or solution of the type that the tree does not hold? `message`
/// must not be null.
///
/// Returns
///   1  yes;
///   0  no, all are installed ("ErrWndProductAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstall(TEVINSType type, TEVINSInstToc* installed,
                                         TEVINSMediaToc* media, TEVUnicodeString* message) noexcept;

/// Does the medium hold samples that the tree does not hold?
///
/// Returns
///   1  yes;
///   0  no, all are installed ("ErrWndSamplesAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstallSMP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// Does the medium hold an SDK package that can be installed? The SDK tree `installed` must not
/// hold it. The code tree `installedCode` must hold its code: the package with its name up to
/// ".zeb2". Without an SDK tree (null) no SDK package is installed. Without a code tree (null) none
/// can be installed.
///
/// Returns
///   1  yes;
///   0  no: all SDK packages are installed ("ErrWndProductAllInstalled", no parameter), or the
///      missing ones lack their code ("ErrWndProductCodeNotInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstallZEB(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVINSInstToc* installedCode,
                                            TEVUnicodeString* message) noexcept;

/// Does the medium hold a fix package that the tree does not hold, or does the number of fix
/// packages differ? The tree's number is always that of its code, whatever `type` is.
///
/// Returns
///   1  yes;
///   0  no, all are installed ("ErrWndProductAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstallSPK(TEVINSType type, TEVINSInstToc* installed,
                                            TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// Does the code in `installDir` have the level `gaLevel` on every operating system? `installDir`
/// must not be null. `message` may be null only if no table reports a problem.
///
/// Returns
///   1  yes;
///   0  no, for one of these reasons:
///      the directory does not exist ("ErrorNoFile": the path of OSUNIX; followed in the same
///      text by "ErrNoPRESENTForAnyOS": gaLevel, installDir);
///      OSUNIX cannot be read ("ErrWndOpenControlFile": its path, the system's error text);
///      a table reports a problem (see InitInstallToc);
///      a system has another level ("ErrWndGALevelCode": gaLevel, installDir, the level and the
///      operating system that its table gives);
///      no system has a control/PRESENT ("ErrNoPRESENTForAnyOS": gaLevel, installDir).
KWINSTUTIL_EXPORT int TEVInsCheckInstallCode(char* installDir, const char* gaLevel,
                                             TEVUnicodeString* message) noexcept;

/// Does the tree record an SDK directory? The first line of TREEDIR/ZEBDir.txt, at most 1023
/// characters of it, is copied into `zebDir`, which has at least 1024 bytes.
///
/// Returns
///   1  yes. If the file exists but cannot be read, `zebDir` is untouched;
///   0  no, the file does not exist; or an argument is null.
KWINSTUTIL_EXPORT int TEVInsCheckZEBDir(char* treeDir, char* zebDir) noexcept;

// Levels.

/// Do medium and tree have the same operating system and the same general-availability level?
///
/// Returns
///    1  yes, or a table is null;
///    0  no ("ErrWndOS" or "ErrWndGALevel": the medium's value, the tree's value);
///   -1  `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckPrereq(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                        TEVUnicodeString* message) noexcept;

/// Does the same as TEVInsCheckPrereq, but requires both tables: if one is null, returns 0 without
/// a message.
KWINSTUTIL_EXPORT int TEVInsCheckPrereqGA(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the same as TEVInsCheckPrereqGA, and requires that the service pack of the tree is not
/// lower than that of the medium.
///
/// Returns
///    1  yes;
///    0  no (as TEVInsCheckPrereqGA); or the tree has no service pack ("ErrWndGASPLevel2": the
///       general-availability level, the medium's service pack, the general-availability level)
///       or a lower one ("ErrWndGASPLevel1": the same three, the tree's service pack);
///   -1  `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckPrereqGASP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// May a service pack of level `mediaLevel` be installed on a tree with the level `installedLevel`?
/// The installed level is pending (applied, but not committed) while INSTALLDIR/control/SPK.list
/// exists. `installDir` must not be null.
///
/// Returns
///    1  yes: the medium has a higher level, and the installed one is not pending; or the levels
///       are equal, and it is not pending while `mode` is not 0, or pending while `mode` is not 1;
///    2  the levels are equal, the installed one is not pending, and `mode` is 0;
///    3  the levels are equal, the installed one is pending, and `mode` is 1;
///   -1  no: the medium has a higher level, but the installed one is pending ("ErrWndNoCommit": the
///       installed level, the medium's, the command that commits); the medium has a lower level
///       ("ErrWndErrorCD": the installed level, installDir, the medium's); or `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckSPKLevel(int mediaLevel, int installedLevel, char* installDir,
                                          int mode, TEVUnicodeString* message) noexcept;

/// Does the code have the service-pack level of the medium, and are the files of that service pack
/// intact? The code is in the directory that INSTALLDIR/CodeDir.txt names. Without that file, or
/// with a null `installDir`, it is looked for in "/". If there is no memory for the table of a
/// system, the level of the system before it is used, or 0 for the first. `message` may be null
/// only if no table reports a problem and no system has a higher level or damaged files.
///
/// Returns
///   1  yes;
///   0  no, for one of these reasons ("system" stands for the operating system that the table
///      gives):
///      OSUNIX does not exist ("ErrorNoFile": its path);
///      OSUNIX cannot be read ("ErrWndOpenControlFile": its path, the system's error text);
///      a table reports a problem (see InitInstallToc);
///      a system has a lower level ("ErrorBadMedia_1": the medium's level, system, the medium's
///      level);
///      a system has a higher level ("ErrorBadMedia_2": its level, system);
///      the service pack of a system is damaged ("ErrorMustReinstallSPKCode": its level, system).
///
/// Writes: NUL in the current directory, for each system of the same level, and it stays there. If
/// NUL is a symbolic link, a pipe or a device, it is left as it is.
KWINSTUTIL_EXPORT int TEVInsCheckCodeLevel(TEVINSMediaToc* media, char* installDir,
                                           TEVUnicodeString* message) noexcept;

// Commit state and integrity.

/// Is `name` one of the first `count` of `names`? Returns 1 if so, and 0 if not. Each of the names
/// ends with a zero byte within its 48 bytes. `name` must not be null.
KWINSTUTIL_EXPORT int TEVInsCheckUnloadCAF(char names[][48], int count, char* name) noexcept;

/// Reads INSTALLDIR/control/SPKInterrupted.txt, which an interrupted service pack leaves: an
/// integer and a word. `*interruptedValue` becomes the integer: 0 if there is none, and the nearest
/// int if it is too large. `*automaticCommit` becomes 1 if the word is AUTOMATIC_COMMIT, and 0
/// otherwise. If the integer is missing or too large, the word is not read. Returns 1 if the file
/// was read, and 0 if it does not exist or cannot be read, or if a pointer is null.
KWINSTUTIL_EXPORT int TEVInsCheckInterruptSPK(char* installDir, int* interruptedValue,
                                              int* automaticCommit) noexcept;

/// May an SDK medium of service-pack level `spLevel` be installed on the code of `osName` in
/// `installDir`? With a null `osName`, the code is in `installDir` itself.
///
/// Returns
///    1  yes: the code has that level, and it is committed;
///    0  no: the table reports a problem (see InitInstallToc); the level is pending
///       ("MsgCheckInstallSPKNotCommitted": installDir, the general-availability level, spLevel);
///       or the code has another level ("MsgCheckBadInstalledSPK": the same three, the installed
///       level). If the table has no general-availability level, the last two have no message;
///   -1  `installDir` or `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckInstallSPKCommitted(char* installDir, int spLevel, char* osName,
                                                     TEVUnicodeString* message) noexcept;

/// Are the files of the tree as the manifests of its packages say? `path` is the system directory.
/// Each missing or damaged file is written to `report`. `message` must not be null; it is assigned
/// in every case.
///
/// Returns
///    0  yes ("CheckIntegrityOK", no parameter);
///   -3  no, files of a service pack are damaged ("ErrIntegrityServicePack" if `zebMedia` is 0,
///       "ErrIntegrityServicePackZEB" otherwise: the installed service-pack level);
///   -2  no, only other files are damaged; or `installed` is null ("ErrCheckMORVELIntegrity", no
///       parameter).
///
/// Writes: the report, to the stream.
KWINSTUTIL_EXPORT int TEVInsCheckResult(TEVINSInstToc* installed, char* path, std::ostream& report,
                                        TEVUnicodeString* message, int zebMedia) noexcept;

/// Does the same as TEVInsCheckResult, with the same statuses 0, -3 and -2.
///
/// Writes: the report, to the stream.
KWINSTUTIL_EXPORT int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path,
                                             std::ostream& report, TEVUnicodeString* message,
                                             int zebMedia) noexcept;

/// Does the same as TEVInsCheckResult, with the same statuses, and appends the report to the file
/// `reportFile`. If the file cannot be opened, there is no report and the status is the same.
///
/// Writes: appends to REPORTFILE, or creates it.
KWINSTUTIL_EXPORT int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path, char* reportFile,
                                             TEVUnicodeString* message, int zebMedia) noexcept;

// Hot fixes.

/// May the hot fix of the medium be installed on the tree? `installDir` is its system directory. If
/// a message would need a name or level that is missing, no message is made.
///
/// Returns
///    1  yes;
///   -1  no, for one of these reasons:
///      an argument is null (no message);
///      the operating systems or the levels differ (the messages of TEVInsCheckPrereq);
///      the service packs differ ("ErrHFXLevelSPK": hot fix, the tree's general-availability level,
///      its service-pack level);
///      the tree's service pack is pending ("ErrHFXCommitSPK": its level, hot fix);
///      the tree has this hot fix already ("ErrHFXAlreadyInstalled": hot fix) or another one
///      ("ErrHFXLevelold": the installed hot fix, hot fix);
///      the tree's service pack is damaged ("ErrHFXneedreinstallSPK": its level, hot fix).
///
/// Writes: NUL as TEVInsCheckCodeLevel does, if the files of a service pack are checked.
KWINSTUTIL_EXPORT int TEVInsCheckHFXLevel(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                          char* installDir, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_CHECKS_H_
