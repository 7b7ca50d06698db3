#include "support/tree_paths.h"

#include <kb0core/TEVFile.h>

namespace kwinst {

bool Exists(const char* path) { return TEVFileAccess(path, 0) == 0; }

std::string JoinPath(const std::string& dir, const std::string& name) { return dir + '/' + name; }

std::string SystemDir(const char* installDir, const char* osDir) {
  return osDir == nullptr ? installDir : JoinPath(installDir, osDir);
}

std::string ControlFile(const std::string& systemDir, const std::string& name) {
  return JoinPath(JoinPath(systemDir, kControlDir), name);
}

std::string ProgramFile(const std::string& systemDir, const std::string& name) {
  return JoinPath(JoinPath(systemDir, kProgramDir), name);
}

Archive FindArchive(const std::string& plain) {
  const std::string compressed = plain + ".Z";
  if (Exists(compressed)) return {compressed, true};
  return {plain, false};
}

}  // namespace kwinst
