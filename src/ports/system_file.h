#ifndef KWINSTUTIL_PORTS_SYSTEM_FILE_H_
#define KWINSTUTIL_PORTS_SYSTEM_FILE_H_

#include <optional>
#include <string>

#include "support/text_file.h"

namespace kwinst {

/// Of the file beside a system file while that is rewritten: the new content, or the old one.
constexpr char kRewriteSuffix[] = ".tmp";

/// The path of the system file: /etc/NAME, or VRK_ODT_TMP/NAME if VRK_ODT_IN and VRK_ODT_OUT are
/// both set. No value if they are set and VRK_ODT_TMP is not.
std::optional<std::string> SystemFile(const std::string& name);

/// Opens a file. Returns null, with the system's error text in `*error`, if that fails, and if the
/// file is a pipe or a device.
InputFile OpenSystemFile(const std::string& path, const char* mode, std::string* error);

/// The file that `path` leads to if it is a symbolic link, otherwise `path` itself. No value, with
/// errno set, if that is not known: a link may lead nowhere.
std::optional<std::string> RealFile(const std::string& path);

/// Removes `copy` if it is a symbolic link, or the file `path` under another name: writing to
/// `copy` would overwrite another file.
void DropLink(const std::string& copy, const std::string& path);

/// Adds whole lines at the end of a file that is open for writing, and closes it. If the last line
/// lacks a newline, one is added before. One is added too if the file is not open for reading,
/// since its last line is then not known; an empty line does no harm. Adds nothing if `lines` is
/// empty. Returns false if not all could be stored: the file `path` then has its former length.
bool AppendAndClose(InputFile file, const std::string& path, const std::string& lines);

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_SYSTEM_FILE_H_
