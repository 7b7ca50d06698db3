#ifndef KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_
#define KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include <functional>
#include <string>

#include "report/message.h"

namespace kwinst {

/// Are two levels or operating systems the same? One that is missing equals only a missing one.
bool SameText(const char* one, const char* other);

/// What is to be done with one installed system: its name in the list, and its table, which is null
/// when there was no memory for it. False ends the walk.
using SystemCheck = std::function<bool(const char* system, TEVINSInstToc* table)>;

/// Walks through the operating systems that CODEDIR/OSUNIX lists and that have a control/PRESENT,
/// in the order of the list. Words of more than 47 characters are split there.
///
/// Returns true at the end of the list. Returns false when `check` did, when the list cannot be
/// read ("ErrWndOpenControlFile": its path, the system's error text; unless `message` is null), or
/// when a table reports a problem (the message of InitInstallToc, which does not test the pointer).
bool ForEachInstalledSystem(const std::string& codeDir, const MessageFrame& frame,
                            TEVUnicodeString* message, const SystemCheck& check);

}  // namespace kwinst

#endif  // KWINSTUTIL_CHECKS_INSTALLED_SYSTEMS_H_
