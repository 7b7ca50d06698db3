#ifndef KWINSTUTIL_PORTS_H_
#define KWINSTUTIL_PORTS_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

// Free ports. A product's port is legal from 1024 to 65535. Nothing is written to disk.

/// Resets the values that the process remembers for a group of ports.
///
///   100  everything: 8080 and 8082 for two of the values, 0 for the others but one, which stays;
///   200, 300, 400  the values of that group, except the second one of 400, which stays.
///
/// The remembered values have no say in any search. Group 100 also makes `varOrbixPort` an empty
/// text until TEVInsCheckOrbixValue writes it again, because the value of group 500 is stored over
/// its first four bytes. Another group changes nothing. Returns 0.
KWINSTUTIL_EXPORT int InitFreePort(int group) noexcept;

/// Remembers the values of a group of ports: two for group 200, three for 300 and 400, one for 500;
/// the others are ignored. Group 500 makes `varOrbixPort` an empty text, see InitFreePort, so that
/// ORBIX_ItDaemonPort leaves the environment; its value is from 0 to 16777215. Another
/// group changes nothing. Returns 0.
KWINSTUTIL_EXPORT int SetFreePort(int group, int first, int second, int third) noexcept;

/// Searches the first TCP port from `start` to `max` that can be bound on every address of this
/// host. The port is not kept: it was free when it was tried. Port 0 stands for any free port; none
/// outside of 0 to 65535 is tried.
///
/// Returns the port, with `*message` untouched, or
///   -1  `message` is null (nothing is tried), or one of these, which is assigned:
///       "ErrValuePortTooBig": start, max  `max` is below `start`;
///       "ErrCreateSocket": start, the system's error text;
///       "ErrSearchFreePort": start, max  none is free;
///       "Errgetsockname": start, the system's error text.
///       After the last two the socket stays open.
KWINSTUTIL_EXPORT int GetFreePort(int start, TEVUnicodeString* message, int max) noexcept;

/// Is `port` legal? `message` may be null.
///
/// Returns
///   1  yes;
///   0  no ("ErrWndK7RunPort": port, 1024, or "ErrWndK7RunPortMax": port, 65535; appended).
KWINSTUTIL_EXPORT int CheckValuePortMinMax(int port, TEVUnicodeString* message) noexcept;

/// Checks ports that the user asks for, and replaces each one that is taken, or that equals another
/// of them, by the next free one that equals none. Of two equal ports the earlier is replaced.
///
/// Returns
///    1  all are legal and free;
///    0  some are not legal, and nothing was replaced (the messages of CheckValuePortMinMax), or
///       some were replaced ("ErrWndK7RunPortNotFree" for each: the old port, the new one);
///   -1  a port is null (no message), `message` is null and the ports are legal, or a search has
///       failed (the message of GetFreePort). Ports replaced before stay so.
///
/// Messages are appended, but that of a failed search takes the place of what was there.
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port, TEVUnicodeString* message) noexcept;
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port1, int* port2,
                                          TEVUnicodeString* message) noexcept;
KWINSTUTIL_EXPORT int CheckK7RunPortValue(int* port1, int* port2, int* port3,
                                          TEVUnicodeString* message) noexcept;

// ORB daemon.

/// The environment entries of TEVInsCheckOrbixValue. The environment points to them.
KWINSTUTIL_EXPORT extern char varOrbixPort[128];
KWINSTUTIL_EXPORT extern char varOrbixBase[128];
KWINSTUTIL_EXPORT extern char varOrbixRange[128];
KWINSTUTIL_EXPORT extern char varOrbixBoot[128];

/// Checks the port of the ORB daemon, and the first and the number of the ports that it hands out,
/// and exports ORBIX_ItDaemonPort, ORBIX_ItDaemonServerBase, ORBIX_ItDaemonServerRange and
/// ORBIX_BootInit (1 when `boot` is 1, else 0).
///
/// Returns
///    1  exported; `*message` is untouched;
///    0  refused; the first of these is assigned, and buffers and environment are untouched:
///       "ErrBadOrbixPort1": port, 1023 and "ErrBadOrbixPort2": port, 49152 (1024 to 49151);
///       "ErrBadServerBase1": base, 1023 and "ErrBadServerBase2": base, 65486 (1024 to 65485);
///       "ErrBadServerRange1": range, 49 and "ErrBadServerRange2": range, 65536 - base (50 to
///       65535 - base); the message of GetFreePort, when no port up to 49151 is free;
///       "ErrWndOrbixPortNotFree": port, the next free one;
///       "ErrWndOrbixServerBase": base, port (the port must be the lower one).
///       Also 0, without a message, when the environment has no memory for an entry.
///   -1  `message` is null: nothing was checked.
KWINSTUTIL_EXPORT int TEVInsCheckOrbixValue(int port, int base, int range, int boot,
                                            TEVUnicodeString* message) noexcept;

/// Runs INSTALLDIR/code/bin/lsit, which lists what the ORB daemon knows, without a shell.
/// `installDir` must not be null.
///
/// Returns
///   1  it was successful: the daemon runs;
///   0  it was not, or could not be started.
extern "C" KWINSTUTIL_EXPORT int IsOrbixRunning(char* installDir) noexcept;

/// Starts the ORB daemon INSTALLDIR/code/bin/orbixd in the background, through the shell and with
/// the path unquoted, and discards its standard output. `installDir` must not be null.
///
/// Sets IT_CONFIG_PATH to INSTALLDIR/startup/orbix and puts INSTALLDIR/code/patchOrbixIRIX at the
/// beginning of LD_LIBRARYN32_PATH, once more at each call. Returns 0, whatever has failed.
KWINSTUTIL_EXPORT int TEVInsRestartOrbix(char* installDir) noexcept;

// Meta-search.

/// The settings of the meta-search service. A null text is exported as an empty value.
struct MetaSearchData {
  char language[128];
  const char* server;
  int port;
  const char* mailServer;
  int mailPort;
  int enableProxy;  ///< 0, or another value for yes
  const char* proxyHost;
  const char* proxyLogin;
  const char* proxyPassword;
  int proxyPort;
  const char* proxyDomains;  ///< domains that are reached without the proxy
  int snapshotsPort;
  const char* email;
  const char* time;  ///< of the schedule
};

/// Checks that `port` and `snapshotsPort` are free, and exports every setting as the variable
/// MetaSearchLanguage, MetaSearchServer and so on, named as its field; MetaSearchEnableProxy is YES
/// or NO. With a null `data` all of them are exported empty, and nothing is checked.
///
/// An entry, its key and "=" included, has at most 127 bytes, that of the proxy domains 1023.
///
/// Returns
///    1  exported; `*message` is untouched;
///   -1  a port is taken ("ErrWndOrbixPortNotFree": port, the next free one; assigned), cannot be
///       tested (the message of GetFreePort; none when `message` is null), or an entry is too long
///       or the environment has no memory for it (no message). Settings that an earlier call
///       exported are empty then.
KWINSTUTIL_EXPORT int TEVInsCheckMetasearch(MetaSearchData* data,
                                            TEVUnicodeString* message) noexcept;

// The product's lines in the system's services file and inetd configuration file.
//
// The services file is /etc/services and the inetd file /etc/inetd.conf. When VRK_ODT_IN and
// VRK_ODT_OUT are both set (to anything), they are `services` and `inetd.conf` in the directory
// VRK_ODT_TMP; a function that takes a path uses that path in any case.
//
// A line belongs to a service when it begins with the service's name, also as the beginning of a
// longer name. A line of more than 1023 characters is read in pieces of 1023, which count as
// lines. A file whose last line lacks its newline gets one before a line is added.
//
// A file that lines are added to keeps its content whatever happens: it is cut back when not all
// can be stored. A file in which lines are replaced is rewritten as a new file with the same mode
// and owner; where these cannot be kept, it counts as one that cannot be written. The new file
// takes the place of the path itself: of a symbolic link there, not of the file that it leads to,
// which stays as it was. Files are not locked against other writers.
//
// No argument may be null, unless a function says so.

// Are the entries there? Nothing is written.

/// Has `inetdFile` the line of the daemon INSTALLDIR/code/bin/TEVSysDemon, exactly as UpdateDemon
/// writes it?
///
/// Returns
///    0  yes;
///    1  no, or the file cannot be read.
KWINSTUTIL_EXPORT int CheckNeedUpdateServices(char* inetdFile, char* installDir) noexcept;

/// Has the services file the lines of a purpose: with `mode` 100 those of both "morvelk7bb" and
/// "morvelk7run", with another one that of "TEVDeviceBroker"?
///
/// Returns
///    1  yes;
///   -1  no, the file cannot be read, or VRK_ODT_TMP is needed and unset.
KWINSTUTIL_EXPORT int CheckEtcServices(int mode) noexcept;

// Registration. A port of 0 leaves its service alone.

/// Appends a line for each port to `servicesFile`, which must exist. What is there already is not
/// looked at, so a second call registers the services twice.
///
/// `message` may be null, and is assigned otherwise. Returns
///    1  done ("OKWriteServicesFile": the file);
///   -1  the file cannot be opened ("ErrWndOpenServicesFile": the file, the system's error text) or
///       written ("ErrWndWriteServicesFile": the file).
KWINSTUTIL_EXPORT int UpdatePorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                                  TEVUnicodeString* message) noexcept;

/// Registers each port in `servicesFile`, which must exist: in the place of every line that its
/// service has, or in an added line. When none of the three services has a line, those of the ports
/// are appended and nothing else is touched; otherwise the file is rewritten, also when nothing in
/// it changes.
///
/// A rewritten file is written as FILE.tmp, then deleted, and FILE.tmp renamed to it. When the
/// process is killed in between, FILE.tmp holds all that should be in FILE.
///
/// `message` may be null, and is assigned otherwise. Returns
///    1  done ("OKWriteServicesFile": the file);
///    1  too, when the rename failed ("KORenameServicesFile": the file): the new content is all in
///       FILE.tmp, and FILE may be gone;
///   -1  the file cannot be opened or read ("ErrWndOpenServicesFile": the file, the system's error
///       text), FILE.tmp cannot be opened (the same: empty, the error text), there is no memory
///       ("ErrWndAllocServicesFile": empty, the bytes needed), or the new content cannot be stored
///       ("ErrWndWriteServicesFile": the file). The file is as it was, and there is no new
///       FILE.tmp.
KWINSTUTIL_EXPORT int UpdateNewPorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                                     TEVUnicodeString* message) noexcept;

/// Registers the daemon program `demonPath` for the service "morvelk7run" in the inetd file, which
/// must exist: in the place of every line of that service, or in an added line.
///
/// A file in which lines are replaced is renamed to its backup FILE.tmp and written anew; then the
/// backup is deleted. When the process is killed in between, the backup must be renamed back before
/// the next call, which would take what is left of the file for all of it. A replacement of more
/// than 1023 characters counts as one that cannot be written. An added line may be longer;
/// CheckNeedUpdateServices does not recognise it then, and a later call cannot replace it.
///
/// `message` is assigned, except when there is no memory. Returns
///    1  done ("OKWriteServicesFile": the file);
///   -1  VRK_ODT_TMP is needed and unset ("ErrVRK_ODT_TMP"); the file cannot be opened or read
///       ("ErrWndOpenServicesFile": the file, the system's error text), renamed to its backup
///       ("ErrWndRenameServicesFile": the same) or written ("ErrWndWriteServicesFile": the file);
///       or there is no memory. The file is as it was.
///   -1  too, when the file was renamed and cannot be created again ("ErrWndOpenServicesFile": as
///       above): the former content is in FILE.tmp. So it is if a backup cannot be renamed back.
KWINSTUTIL_EXPORT int UpdateDemon(char* demonPath, TEVUnicodeString* message) noexcept;

// The rendering satellite: a rendering slave that inetd starts as the service "mi-ray".

/// The disk space in megabytes that the satellite's medium asks for: the kilobytes at the beginning
/// of MEDIADIR/LFSFS, rounded down. 0 when that file has no such number or cannot be read.
/// `message` is not used.
KWINSTUTIL_EXPORT int SatComputeRequired(char* mediaDir, TEVUnicodeString& message) noexcept;

/// Appends the line of port 7001 to the services file, which is created when missing, unless any of
/// its lines has "mi-ray" in it. `message` is not used.
///
/// Returns
///    0  a line has it;
///    1  appended;
///   -1  VRK_ODT_TMP is needed and unset;
///   -2  the file cannot be read, opened for appending or written.
KWINSTUTIL_EXPORT int SatUpdateService(TEVUnicodeString& message) noexcept;

/// Registers SATDIR/ray.sh in the inetd file, which must exist, as UpdateDemon does its program.
/// Nothing is done when the entry is there already as the last line, without a newline; anywhere
/// else it is replaced by itself.
///
/// `message` is assigned as by UpdateDemon. Returns
///    0  the entry is there already (`message` is untouched);
///    1  the file was changed;
///   -2  failed, as UpdateDemon fails; or `satDir` is null (`message` is untouched).
KWINSTUTIL_EXPORT int SatUpdateInet(char* satDir, TEVUnicodeString& message) noexcept;

#endif  // KWINSTUTIL_PORTS_H_
