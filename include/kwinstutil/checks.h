#ifndef KWINSTUTIL_CHECKS_H_
#define KWINSTUTIL_CHECKS_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include <ostream>

#include "kwinstutil/export.h"

/// \file
/// Whether a medium may be installed on a tree.
///
/// Unless said otherwise, a null `media` counts as an empty medium, a null `message` means that no
/// message is wanted, `*message` is assigned on a refusal and untouched otherwise, and nothing is
/// written to disk. Levels and operating systems are compared as strings; one that a table does not
/// have equals only a missing one, and is empty in a message. A list of packages for which there is
/// no memory counts as empty.

// What the medium holds.

/// Does the medium hold products or solutions of the content type?
///
/// Returns
///    0  it does;
///   -1  it does not ("ErrEmptyMediaToc", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMedia(TEVINSType type, TEVINSMediaToc* media,
                                       TEVUnicodeString* message) noexcept;

/// Does the directory `mediaDir` hold the files of the rendering satellite, LumaforgeSatellite.Z
/// and LFSFS? `mediaDir` must not be null.
///
/// Returns
///    0  both are there;
///   -2  one is missing ("ErrorNoFile": the path of the first that is).
KWINSTUTIL_EXPORT int TEVInsCheckMediaSAT(char* mediaDir, TEVUnicodeString* message) noexcept;

/// Does the medium hold a service pack?
///
/// Returns
///    0  a service pack of the code;
///    1  a service pack of the SDK part only, or there is no memory to ask for one (without a
///       message);
///    4  no service pack, or there was no memory to ask for one of the code ("ErrorNoSPK", no
///       parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMediaSPK(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold a hot fix?
///
/// Returns
///    0  it does, or there is no memory to ask;
///    4  it does not ("ErrorNoHFX", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMediaHFX(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold samples? Unlike the others, this check requires a message string.
///
/// Returns
///    0  it does;
///   -1  it does not ("ErrEmptyMediaToc", no parameter), or `message` is null: then the medium is
///       not looked at.
KWINSTUTIL_EXPORT int TEVInsCheckMediaSMP(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

// What the tree holds already. A package is missing when the tree's table says exactly that.

/// Does the medium hold a product or solution of the type that the tree does not? Without a tree
/// (null) nothing counts as missing. `message` must not be null.
///
/// Returns
///   1  it does;
///   0  all are installed ("ErrWndProductAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstall(TEVINSType type, TEVINSInstToc* installed,
                                         TEVINSMediaToc* media, TEVUnicodeString* message) noexcept;

/// The same for samples; `message` may be null.
///
/// Returns
///   1  there are samples to install;
///   0  all are installed ("ErrWndSamplesAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstallSMP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// Does the medium hold an SDK package that the SDK tree `installed` does not, while the code tree
/// `installedCode` holds the code that it extends: the package of its name up to ".zeb2"? Without
/// an SDK tree nothing counts as installed, without a code tree nothing as installable.
///
/// Returns
///   1  it does;
///   0  all SDK packages are installed ("ErrWndProductAllInstalled"), or the code of the others is
///      not ("ErrWndProductCodeNotInstalled"); no parameter.
KWINSTUTIL_EXPORT int TEVInsCheckInstallZEB(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVINSInstToc* installedCode,
                                            TEVUnicodeString* message) noexcept;

/// Does the medium hold a fix package that the tree does not, or another number of them than the
/// tree has for the code (whatever the type)?
///
/// Returns
///   1  it does;
///   0  all are installed ("ErrWndProductAllInstalled", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckInstallSPK(TEVINSType type, TEVINSInstToc* installed,
                                            TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// Is the code in `installDir` of the level `gaLevel`, for each operating system that
/// INSTALLDIR/OSUNIX lists and that has a control/PRESENT? `installDir` must not be null; `message`
/// may only be null when no table has a problem.
///
/// Returns
///   1  it is;
///   0  the directory does not exist ("ErrorNoFile": path of OSUNIX; and in the same text
///      "ErrNoPRESENTForAnyOS": gaLevel, installDir), OSUNIX cannot be read
///      ("ErrWndOpenControlFile": path, the system's error text), a table has a problem (see
///      InitInstallToc), a system has another level ("ErrWndGALevelCode": gaLevel, installDir, its
///      level, its name), or none has a control/PRESENT ("ErrNoPRESENTForAnyOS": gaLevel,
///      installDir).
KWINSTUTIL_EXPORT int TEVInsCheckInstallCode(char* installDir, const char* gaLevel,
                                             TEVUnicodeString* message) noexcept;

/// Does the tree record an SDK directory? Reads the first line of TREEDIR/ZEBDir.txt, at most 1023
/// characters of it, into `zebDir`, of at least 1024 bytes.
///
/// Returns
///   1  it does; also when the file cannot be read, and `zebDir` is then as it was;
///   0  the file does not exist, or an argument is null.
KWINSTUTIL_EXPORT int TEVInsCheckZEBDir(char* treeDir, char* zebDir) noexcept;

// Levels.

/// Are medium and tree of the same operating system and general-availability level?
///
/// Returns
///    1  they are, or a table is null;
///    0  they are not ("ErrWndOS" or "ErrWndGALevel": the medium's, the tree's);
///   -1  `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckPrereq(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                        TEVUnicodeString* message) noexcept;

/// As TEVInsCheckPrereq, but 0, without a message, when a table is null.
KWINSTUTIL_EXPORT int TEVInsCheckPrereqGA(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// As TEVInsCheckPrereqGA; and the tree's service pack must not be lower than the medium's, else 0:
/// "ErrWndGASPLevel2" (level, the medium's service pack, level) for a tree without a service pack,
/// "ErrWndGASPLevel1" (level, the medium's, level, the tree's) for another.
KWINSTUTIL_EXPORT int TEVInsCheckPrereqGASP(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                            TEVUnicodeString* message) noexcept;

/// May a service pack of level `mediaLevel` be installed on a tree with the level `installedLevel`?
/// `installDir`, which must not be null, holds control/SPK.list while the installed one is pending:
/// applied, but not committed.
///
/// Returns
///    1  yes: a higher level on one that is not pending; the same level on one that is not pending
///       with `mode` other than 0, or on a pending one with `mode` other than 1;
///    2  the same level, not pending, `mode` 0;
///    3  the same level, pending, `mode` 1;
///   -1  a higher level on a pending one ("ErrWndNoCommit": the tree's, the medium's, the command
///       that commits), a lower level ("ErrWndErrorCD": the tree's, installDir, the medium's), or
///       `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckSPKLevel(int mediaLevel, int installedLevel, char* installDir,
                                          int mode, TEVUnicodeString* message) noexcept;

/// Is the code that INSTALLDIR/CodeDir.txt names, for each operating system that its OSUNIX lists
/// and that has a control/PRESENT, at the service-pack level of the medium, and are the files of
/// that service pack intact? Without a CodeDir.txt, or with a null `installDir`, the code is looked
/// for in "/". `message` may only be null when no table has a problem and no system has a higher
/// level or damaged files. Leaves a file "NUL" in the current directory after each system of the
/// same level.
///
/// Returns
///   1  it is;
///   0  OSUNIX does not exist ("ErrorNoFile": path) or cannot be read ("ErrWndOpenControlFile":
///      path, the system's error text), a table has a problem (see InitInstallToc), a system has a
///      lower level ("ErrorBadMedia_1": the medium's, the system, the medium's) or a higher one
///      ("ErrorBadMedia_2": its level, the system), or its service pack is damaged
///      ("ErrorMustReinstallSPKCode": its level, the system).
KWINSTUTIL_EXPORT int TEVInsCheckCodeLevel(TEVINSMediaToc* media, char* installDir,
                                           TEVUnicodeString* message) noexcept;

// Commit state and integrity.

/// Is `name`, which must not be null, one of the first `count` of `names`, each ended by a zero
/// within its 48 bytes? 1 or 0.
KWINSTUTIL_EXPORT int TEVInsCheckUnloadCAF(char names[][48], int count, char* name) noexcept;

/// Reads INSTALLDIR/control/SPKInterrupted.txt, which an interrupted service pack leaves: an
/// integer into `*interruptedValue` (0 when it is none, the nearest int when it is too large), and
/// 1 into `*automaticCommit` when the word after it is AUTOMATIC_COMMIT, else 0 (also when
/// there was no integer, or one that is too large).
///
/// Returns
///   1  read;
///   0  there is no record that can be read, or a pointer is null.
KWINSTUTIL_EXPORT int TEVInsCheckInterruptSPK(char* installDir, int* interruptedValue,
                                              int* automaticCommit) noexcept;

/// May an SDK medium of service-pack level `spLevel` be installed on the code of `osName` in
/// `installDir`, or on the code in `installDir` itself when `osName` is null?
///
/// Returns
///    1  yes: the code has that level, and it is committed;
///    0  the table has a problem (see InitInstallToc), the level is pending
///       ("MsgCheckInstallSPKNotCommitted": installDir, general-availability level, spLevel) or
///       another ("MsgCheckBadInstalledSPK": the same and the installed level). Without a
///       general-availability level the last two have no message;
///   -1  `installDir` or `message` is null.
KWINSTUTIL_EXPORT int TEVInsCheckInstallSPKCommitted(char* installDir, int spLevel, char* osName,
                                                     TEVUnicodeString* message) noexcept;

/// Are the files of the tree as its packages' manifests say? `path` is the system directory; each
/// missing or damaged file is reported to `report`. `message` must not be null: it is assigned in
/// every case.
///
/// Returns
///    0  they are ("CheckIntegrityOK", no parameter);
///   -3  files of a service pack are not ("ErrIntegrityServicePack" when `zebMedia` is 0, else
///       "ErrIntegrityServicePackZEB": the installed service-pack level);
///   -2  others are not, or `installed` is null ("ErrCheckMORVELIntegrity", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckResult(TEVINSInstToc* installed, char* path, std::ostream& report,
                                        TEVUnicodeString* message, int zebMedia) noexcept;

/// The same.
KWINSTUTIL_EXPORT int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path,
                                             std::ostream& report, TEVUnicodeString* message,
                                             int zebMedia) noexcept;

/// The same, with the report appended to the file `reportFile`. Whether that can be opened makes no
/// difference to the result.
KWINSTUTIL_EXPORT int TEVInsCheckIntegrityGA(TEVINSInstToc* installed, char* path, char* reportFile,
                                             TEVUnicodeString* message, int zebMedia) noexcept;

// Hot fixes.

/// May the hot fix of the medium be installed on the tree, whose system directory is `installDir`?
/// Leaves a file "NUL" in the current directory when it has to look at the files of a service pack.
///
/// Returns
///    1  yes;
///   -1  an argument is null (no message), operating system or level differ (see
///       TEVInsCheckPrereq), the service packs differ ("ErrHFXLevelSPK": hot fix, installed level,
///       installed service pack), the installed one is pending ("ErrHFXCommitSPK": it, hot fix) or
///       damaged ("ErrHFXneedreinstallSPK": it, hot fix), or a hot fix is there already: the same
///       ("ErrHFXAlreadyInstalled": hot fix) or another ("ErrHFXLevelold": that one, hot fix). A
///       message that would need a name or level that is missing is left out.
KWINSTUTIL_EXPORT int TEVInsCheckHFXLevel(TEVINSInstToc* installed, TEVINSMediaToc* media,
                                          char* installDir, TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_CHECKS_H_
