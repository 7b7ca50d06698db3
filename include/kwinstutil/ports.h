#ifndef KWINSTUTIL_PORTS_H_
#define KWINSTUTIL_PORTS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// Free ports, the ORB daemon, the meta-search, and the system's services and inetd files.

// Free ports. Legal ports of the product are 1024 to 65535. Nothing is written to disk.

/// Resets the values that the process remembers for a group of ports. No search uses them. For
/// group 200, 300 or 400 the values of that group become 0, except the second one of 400, which
/// stays. For group 100 all values become 0, except one that stays and two that become 8080 and
/// 8082. Any other group changes nothing. Returns 0.
///
/// Deliberate: the value of group 500 is stored over the first four bytes of `varOrbixPort`. Group
/// 100 sets that value too, so `varOrbixPort` is an empty text until TEVInsCheckOrbixValue writes
/// it again.
///
/// System: group 100 removes ORBIX_ItDaemonPort from the environment.
KWINSTUTIL_EXPORT int InitFreePort(int group) noexcept;

/// Remembers the values of a group of ports: two for group 200, three for 300 and 400, and one from
/// 0 to 16777215 for 500, which makes `varOrbixPort` empty (see InitFreePort). The other arguments
/// are ignored, and any other group changes nothing. No search uses the values. Returns 0.
///
/// System: group 500 removes ORBIX_ItDaemonPort from the environment.
KWINSTUTIL_EXPORT int SetFreePort(int group, int first, int second, int third) noexcept;

/// Searches for the first TCP port from `start` to `max` that can be bound on every address of this
/// host. The port is not kept: it was free when it was tried. Only ports from 0 to 65535 are tried.
/// If port 0 is tried, the system chooses a free port.
///
/// Returns
///    n  the port (`*message` is untouched);
///   -1  `message` is null, and nothing was tried; or, with `*message` assigned:
///       `max` is below `start` ("ErrValuePortTooBig": start, max);
///       there is no socket ("ErrCreateSocket": start, the system's error text);
///       no port is free ("ErrSearchFreePort": start, max);
///       the port that was bound is unknown ("Errgetsockname": start, the system's error text).
///       Deliberate: the socket stays open after the last two.
///
/// System: binds TCP ports and releases them.
KWINSTUTIL_EXPORT int GetFreePort(int start, TEVUnicodeString* message, int max) noexcept;

/// Is `port` legal? `message` may be null. Returns 1 if it is (`*message` is untouched), and 0 if
/// not ("ErrWndK7RunPort": port, 1024; or "ErrWndK7RunPortMax": port, 65535; appended).
KWINSTUTIL_EXPORT int CheckValuePortMinMax(int port, TEVUnicodeString* message) noexcept;

/// Checks the ports of a user. A port that is taken, or equals another of them, is replaced by the
/// next free port that equals none of them. Of two equal ports the earlier one is replaced.
///
/// Returns
///    1  all are legal and free (`*message` is untouched);
///    0  some are not legal, and nothing was replaced (the messages of CheckValuePortMinMax); or
///       some were replaced ("ErrWndK7RunPortNotFree": the old port, the new one; appended);
///   -1  a port is null (no message); `message` is null and the ports are legal; or a search has
///       failed (the message of GetFreePort, assigned). Ports that were replaced before stay so.
///
/// System: binds TCP ports and releases them.
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port, TEVUnicodeString* message) noexcept;
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port1, int* port2,
                                          TEVUnicodeString* message) noexcept;
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port1, int* port2, int* port3,
                                          TEVUnicodeString* message) noexcept;

// ORB daemon.

/// The entries of TEVInsCheckOrbixValue. The environment points to them.
KWINSTUTIL_EXPORT extern char varOrbixPort[128];
KWINSTUTIL_EXPORT extern char varOrbixBase[128];
KWINSTUTIL_EXPORT extern char varOrbixRange[128];
KWINSTUTIL_EXPORT extern char varOrbixBoot[128];

/// Checks three values for the ORB daemon, and exports them: its port, the first port that it gives
/// to servers, and the number of these ports. ORBIX_BootInit is 1 if `boot` is 1, and 0 otherwise.
///
/// Returns
///    1  exported (`*message` is untouched);
///    0  refused. Buffers and environment are untouched. The first of these messages is assigned:
///       port below 1024 ("ErrBadOrbixPort1": port, 1023), above 49151 ("ErrBadOrbixPort2": port,
///       49152); base below 1024 ("ErrBadServerBase1": base, 1023), above 65485
///       ("ErrBadServerBase2": base, 65486); range below 50 ("ErrBadServerRange1": range, 49),
///       above 65535 - base ("ErrBadServerRange2": range, 65536 - base);
///       no port from `port` to 49151 is free (the message of GetFreePort);
///       the port is taken ("ErrWndOrbixPortNotFree": port, the next free one);
///       the port is not below the base ("ErrWndOrbixServerBase": base, port).
///       0 too, without a message, if the environment has no memory for an entry;
///   -1  `message` is null, and nothing was checked.
///
/// System: exports ORBIX_ItDaemonPort, ORBIX_ItDaemonServerBase, ORBIX_ItDaemonServerRange and
/// ORBIX_BootInit; binds TCP ports and releases them.
KWINSTUTIL_EXPORT int TEVInsCheckOrbixValue(int port, int base, int range, int boot,
                                            TEVUnicodeString* message) noexcept;

/// Does the ORB daemon run? INSTALLDIR/code/bin/lsit, which asks it, is run without a shell.
/// Returns 1 if that is successful, and 0 if lsit fails or cannot be started. `installDir` must not
/// be null.
///
/// System: runs INSTALLDIR/code/bin/lsit.
extern "C" KWINSTUTIL_EXPORT int IsOrbixRunning(char* installDir) noexcept;

/// Starts the ORB daemon INSTALLDIR/code/bin/orbixd in the background. It is started by the shell,
/// with the path unquoted, and its standard output is discarded. `installDir` must not be null.
/// IT_CONFIG_PATH is set to INSTALLDIR/startup/orbix. INSTALLDIR/code/patchOrbixIRIX is put at the
/// beginning of LD_LIBRARYN32_PATH, again at each call. Returns 0: failures are not reported.
///
/// System: exports IT_CONFIG_PATH and LD_LIBRARYN32_PATH; starts INSTALLDIR/code/bin/orbixd.
KWINSTUTIL_EXPORT int TEVInsRestartOrbix(char* installDir) noexcept;

// Meta-search.

/// The settings of the meta-search service. A null text is exported as an empty value.
struct MetaSearchData {
  char language[128];
  const char* server;
  int port;
  const char* mailServer;
  int mailPort;
  int enableProxy;  ///< any value but 0 means yes
  const char* proxyHost;
  const char* proxyLogin;
  const char* proxyPassword;
  int proxyPort;
  const char* proxyDomains;  ///< domains that are reached without the proxy
  int snapshotsPort;
  const char* email;
  const char* time;  ///< of the schedule
};

/// Checks that `port` and `snapshotsPort` are free, and exports every setting in a variable named
/// after its field: MetaSearchLanguage, MetaSearchServer and so on. MetaSearchEnableProxy is YES or
/// NO. With a null `data` nothing is checked, and all variables become empty. An entry has at most
/// 127 bytes (proxy domains: 1023), with its key and "=". A text may
/// point into the environment, to a value that an earlier call exported.
///
/// Returns
///    1  exported (`*message` is untouched);
///   -1  a port is taken ("ErrWndOrbixPortNotFree": port, the next free one; assigned); a port
///       cannot be tested (the message of GetFreePort, or none if `message` is null); or an entry
///       is too long, or the environment has no memory for it (no message). After -1, settings
///       that an earlier call exported are empty.
///
/// System: exports the fourteen MetaSearch variables; binds TCP ports and releases them.
KWINSTUTIL_EXPORT int TEVInsCheckMetasearch(MetaSearchData* data,
                                            TEVUnicodeString* message) noexcept;

// The product's lines in the system's services file and inetd file.
//
// The files are /etc/services and /etc/inetd.conf; in the development mode (VRK_ODT_IN and
// VRK_ODT_OUT are both set, to anything) VRK_ODT_TMP/services and VRK_ODT_TMP/inetd.conf. A
// function that gets the path of a file uses that path in both modes. No argument may be null,
// unless a function says so.
//
// A line belongs to a service if it begins with the name of the service. No more is compared: a
// line of "morvelk7runner" belongs to "morvelk7run" too. A line of more than 1023 characters is
// read in pieces of 1023, and each piece is treated as a line. A last line without a newline gets
// one before a line is added.
//
// A file to which lines are added keeps its content: if not all can be stored, it is cut back to
// its former length. A file in which lines are replaced is rewritten: a new file with the same mode
// and owner replaces it. If the mode or the owner cannot be kept, this is treated as a file that
// cannot be written. Files are not locked against other writers.
//
// If the path is a symbolic link, the link stays, and FILE is the file that it leads to. FILE.tmp
// lies beside that FILE. The messages of a failed renaming or rewriting name FILE, not the link. A
// link that leads nowhere is treated as a file that cannot be opened.

// Are the entries there? Nothing is written to disk.

/// Does `inetdFile` need the line of the daemon INSTALLDIR/code/bin/TEVSysDemon? Returns 0 if it
/// has the line exactly as UpdateDemon writes it, and 1 if the line is missing or the file cannot
/// be read.
KWINSTUTIL_EXPORT int CheckNeedUpdateServices(char* inetdFile, char* installDir) noexcept;

/// Does the services file have the lines of the product? With `mode` 100 these are "morvelk7bb" and
/// "morvelk7run", with any other mode "TEVDeviceBroker". Returns 1 if it has all of them, and -1 if
/// not, if it cannot be read, or if the development mode is on and VRK_ODT_TMP is unset.
///
/// System: reads /etc/services; in the development mode VRK_ODT_TMP/services.
KWINSTUTIL_EXPORT int CheckEtcServices(int mode) noexcept;

// Registration. A service with port 0 is skipped.

/// Appends a line for each port to `servicesFile`, which must exist. A second call registers the
/// services twice: existing lines are not examined. `message` is assigned unless it is null.
///
/// Returns
///    1  done ("OKWriteServicesFile": the file);
///   -1  the file cannot be opened ("ErrWndOpenServicesFile": the file, the system's error text) or
///       cannot be written ("ErrWndWriteServicesFile": the file).
///
/// Writes: appends to SERVICESFILE.
KWINSTUTIL_EXPORT int UpdatePorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                                  TEVUnicodeString* message) noexcept;

/// Registers each port in `servicesFile`, which must exist. The new line replaces every line that
/// the service has; if it has none, the line is added. If none of the three services has a line,
/// the new lines are appended and the rest of the file is untouched. Otherwise the file is
/// rewritten, even if nothing in it changes: the new content is written to FILE.tmp, FILE is
/// deleted, and FILE.tmp is renamed to FILE. If the process is killed in between, FILE.tmp holds
/// all of the new content. `message` is assigned unless it is null.
///
/// Returns
///    1  done ("OKWriteServicesFile": the file);
///    1  too, if the renaming failed ("KORenameServicesFile": the file). FILE.tmp then holds all of
///       the new content, and FILE may be gone;
///   -1  failed. The file is as it was, and there is no new FILE.tmp:
///       the file cannot be opened or read ("ErrWndOpenServicesFile": the file, the system's error
///       text), or FILE.tmp cannot be opened ("ErrWndOpenServicesFile": an empty text, the error
///       text);
///       there is no memory ("ErrWndAllocServicesFile": empty, the bytes needed);
///       it cannot be read a second time or be stored ("ErrWndWriteServicesFile": the file).
///
/// Writes: appends to SERVICESFILE or replaces it, by way of SERVICESFILE.tmp.
KWINSTUTIL_EXPORT int UpdateNewPorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                                     TEVUnicodeString* message) noexcept;

/// Registers the daemon program `demonPath` for the service "morvelk7run" in the inetd file, which
/// must exist. The new line replaces every line of that service; if it has none, the line is added.
///
/// To replace lines, FILE is renamed to its backup FILE.tmp, a new FILE is written, and the backup
/// is deleted. If the process is killed in between, the backup must be renamed back before the next
/// call: that call would treat what is left of FILE as all of it. A new line of more than 1023
/// characters cannot replace another one: this is treated as a file that cannot be written. It can
/// be added, but CheckNeedUpdateServices does not recognise it, and a later call cannot replace it.
/// `message` is assigned, unless there is no memory.
///
/// Returns
///    1  done ("OKWriteServicesFile": the file);
///   -1  failed, and the file is as it was:
///       the development mode is on and VRK_ODT_TMP is unset ("ErrVRK_ODT_TMP", no parameter);
///       the file cannot be opened or read ("ErrWndOpenServicesFile": the file, the system's error
///       text) or renamed to its backup ("ErrWndRenameServicesFile": the same);
///       it cannot be read a second time or written ("ErrWndWriteServicesFile": the file);
///       there is no memory (no message);
///   -1  too, with the former content in FILE.tmp: the new file cannot be created
///       ("ErrWndOpenServicesFile": the file, the system's error text), or the backup cannot be
///       renamed back ("ErrWndWriteServicesFile": the file).
///
/// Writes: the inetd file; its backup FILE.tmp.
/// System: changes /etc/inetd.conf; in the development mode VRK_ODT_TMP/inetd.conf.
KWINSTUTIL_EXPORT int UpdateDemon(char* demonPath, TEVUnicodeString* message) noexcept;

// The rendering satellite: a rendering slave that inetd starts as the service "mi-ray".

/// Returns the disk space in megabytes that the satellite's medium requires: the kilobytes at the
/// beginning of MEDIADIR/LFSFS, divided by 1024 and rounded down. Returns 0 if the file has no such
/// number or cannot be read. `message` is ignored.
KWINSTUTIL_EXPORT int SatComputeRequired(char* mediaDir, TEVUnicodeString& message) noexcept;

/// Appends the line of port 7001 to the services file, unless one of its lines contains "mi-ray".
/// If the file does not exist, it is created. If the caller may write but not read it, a newline
/// and the line are appended, whatever the file contains. `message` is ignored.
///
/// Returns
///    0  a line contains "mi-ray" already;
///    1  appended;
///   -1  the development mode is on and VRK_ODT_TMP is unset;
///   -2  reading failed, or the file cannot be opened for appending or written.
///
/// Writes: appends to the services file, or creates it.
/// System: changes /etc/services; in the development mode VRK_ODT_TMP/services.
KWINSTUTIL_EXPORT int SatUpdateService(TEVUnicodeString& message) noexcept;

/// Registers SATDIR/ray.sh for the service "mi-ray" in the inetd file and assigns `message`, as
/// UpdateDemon does. Deliberate: an entry that is there already is recognised only as the last
/// line, without a newline. Anywhere else it is replaced by the same line.
///
/// Returns
///    0  the entry is there already (`message` is untouched);
///    1  the file was changed ("OKWriteServicesFile": the file);
///   -2  `satDir` is null (no message), or the file could not be changed (as for UpdateDemon).
///
/// Writes: the inetd file; its backup FILE.tmp.
/// System: changes /etc/inetd.conf; in the development mode VRK_ODT_TMP/inetd.conf.
KWINSTUTIL_EXPORT int SatUpdateInet(char* satDir, TEVUnicodeString& message) noexcept;

#endif  // KWINSTUTIL_PORTS_H_
