#ifndef KWINSTUTIL_PORTS_SYSTEM_FILE_H_
#define KWINSTUTIL_PORTS_SYSTEM_FILE_H_

#include <optional>
#include <string>

#include "support/text_file.h"

namespace kwinst {

/// The system file /etc/NAME, or its copy VRK_ODT_TMP/NAME when VRK_ODT_IN and VRK_ODT_OUT are both
/// set. None when there should be a copy and VRK_ODT_TMP is unset.
std::optional<std::string> SystemFile(const std::string& name);

/// Opens a stream. Null when that fails, or for a pipe or a device, with the system's text for the
/// reason in `*error`.
InputFile OpenSystemFile(const std::string& path, const char* mode, std::string* error);

/// The file that `path` leads to when it is a symbolic link, else `path` itself. None, with errno
/// set, when that is not known, as for a link that leads nowhere.
std::optional<std::string> RealFile(const std::string& path);

/// Removes `copy` when it is a link to something else, or `path` itself under another name: to
/// write a copy there would overwrite what it leads to.
void DropLink(const std::string& copy, const std::string& path);

/// Adds whole lines at the end of a file that is open for writing, and closes it. When the file is
/// open for reading too and its last line lacks a newline, that is added first. Adds nothing when
/// `lines` is empty. False when not all could be stored; the file at `path` then is as long as it
/// was.
bool AppendAndClose(InputFile file, const std::string& path, const std::string& lines);

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_SYSTEM_FILE_H_
