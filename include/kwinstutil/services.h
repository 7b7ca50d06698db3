#ifndef KWINSTUTIL_SERVICES_H_
#define KWINSTUTIL_SERVICES_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// The product's lines in the system's services file and inetd configuration file.
///
/// The services file is /etc/services and the inetd file /etc/inetd.conf. When VRK_ODT_IN and
/// VRK_ODT_OUT are both set (to anything), they are `services` and `inetd.conf` in the directory
/// VRK_ODT_TMP; a function that takes a path uses that path in any case.
///
/// A line belongs to a service when it begins with the service's name, also as the beginning of a
/// longer name. A line of more than 1023 characters is read in pieces of 1023, which count as
/// lines. A file whose last line lacks its newline gets one before a line is added.
///
/// A file that lines are added to keeps its content whatever happens: it is cut back when not all
/// can be stored. A file in which lines are replaced is rewritten as a new file with the same mode
/// and owner; where these cannot be kept, it counts as one that cannot be written. The new file
/// takes the place of the path itself: of a symbolic link there, not of the file that it leads to,
/// which stays as it was. Files are not locked against other writers.
///
/// No argument may be null, unless a function says so.

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

#endif  // KWINSTUTIL_SERVICES_H_
