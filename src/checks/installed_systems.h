#ifndef KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_
#define KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include <functional>
#include <string>

#include "report/message.h"

namespace kwinst {

/// Are two levels or operating systems equal? A missing value (null) equals only a missing value.
bool SameText(const char* one, const char* other);

/// Checks one installed system. Takes its name in the list and its table, which is null if there is
/// no memory for it. Returns false to end the walk.
using SystemCheck = std::function<bool(const char* system, TEVINSInstToc* table)>;

/// Calls `check` for each operating system that CODEDIR/OSUNIX lists and that has a
/// control/PRESENT, in the order of the list. A word of more than 47 characters is split there.
///
/// Returns true at the end of the list. Returns false if `check` returns false, if the list cannot
/// be read ("ErrWndOpenControlFile": its path, the system's error text; unless `message` is null),
/// or if a table reports a problem (the message of InitInstallToc; `message` must not be null).
bool ForEachInstalledSystem(const std::string& codeDir, const MessageFrame& frame,
                            TEVUnicodeString* message, const SystemCheck& check);

}  // namespace kwinst

#endif  // KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_
