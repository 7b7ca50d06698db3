#include "support/tree_paths.h"

namespace kwinst {

std::string JoinPath(const std::string& dir, const std::string& name) { return dir + '/' + name; }

std::string SystemDir(const char* installDir, const char* osDir) {
  return osDir == nullptr ? installDir : JoinPath(installDir, osDir);
}

std::string ControlFile(const std::string& systemDir, const std::string& name) {
  return JoinPath(systemDir, "control/" + name);
}

}  // namespace kwinst
