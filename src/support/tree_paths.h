#ifndef KWINSTUTIL_SUPPORT_TREE_PATHS_H_
#define KWINSTUTIL_SUPPORT_TREE_PATHS_H_

#include <string>

namespace kwinst {

/// DIR/NAME. Nothing is normalised: a `dir` that ends in '/' gives two of them.
std::string JoinPath(const std::string& dir, const std::string& name);

/// The system directory INSTALLDIR/OSDIR, or INSTALLDIR itself when `osDir` is null.
std::string SystemDir(const char* installDir, const char* osDir);

/// The file `name` in the control directory of a system directory.
std::string ControlFile(const std::string& systemDir, const std::string& name);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_TREE_PATHS_H_
