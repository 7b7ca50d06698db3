#ifndef KWINSTUTIL_PORTS_INETD_FILE_H_
#define KWINSTUTIL_PORTS_INETD_FILE_H_

#include <kb0core/TEVUnicodeString.h>

#include <string>

namespace kwinst {

/// What became of a line: kAlreadyThere means that the file had it already.
enum class InetdOutcome { kFailed, kAlreadyThere, kChanged };

/// Registers a service in the inetd file. Each line that begins with `service` is replaced by
/// `line`. If there is no such line, `line` is added. If the file already has the line `existing`,
/// nothing is done. No line is equal to an empty `existing`.
///
/// To replace lines, the file is renamed to its backup FILE.tmp, a new file is written, and the
/// backup is deleted. `message` is assigned, except for kAlreadyThere and if there is no memory for
/// the lines.
InetdOutcome RegisterInInetd(const std::string& service, const std::string& line,
                             const std::string& existing, TEVUnicodeString& message);

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_INETD_FILE_H_
