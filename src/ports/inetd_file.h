#ifndef KWINSTUTIL_PORTS_INETD_FILE_H_
#define KWINSTUTIL_PORTS_INETD_FILE_H_

#include <kb0core/TEVUnicodeString.h>

#include <string>

namespace kwinst {

enum class InetdOutcome { kFailed, kStands, kChanged };

/// Registers a service in the inetd configuration file: `line` takes the place of each line that
/// begins with `service`, or is added when there is none. Nothing is done when the file has a line
/// that is `standing`; an empty one never stands.
///
/// Lines are replaced in three steps: the file becomes the backup FILE.tmp, is written anew, and
/// the backup is deleted. `message` is assigned with every outcome, except that it stays untouched
/// when the line stands and when there is no memory for the lines.
InetdOutcome RegisterInInetd(const std::string& service, const std::string& line,
                             const std::string& standing, TEVUnicodeString& message);

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_INETD_FILE_H_
