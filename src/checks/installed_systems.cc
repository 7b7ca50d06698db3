#include "checks/installed_systems.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include "kwinstutil/toc.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

namespace kwinst {

namespace {

/// Checks one system of the list. A system without a control/PRESENT is ignored.
bool CheckSystem(const std::string& codeDir, const char* system, TEVUnicodeString* message,
                 const SystemCheck& check) {
  std::string present = ControlFile(JoinPath(codeDir, system), kPresent);
  if (!Exists(present)) return true;
  TEVINSInstToc* table = nullptr;
  const int status = InitInstallToc(present.data(), &table, message);
  const std::unique_ptr<TEVINSInstToc> owned(table);
  return status != -2 && check(system, table);
}

}  // namespace

bool SameText(const char* one, const char* other) {
  if (one == nullptr || other == nullptr) return one == other;
  return std::strcmp(one, other) == 0;
}

bool ForEachInstalledSystem(const std::string& codeDir, const MessageFrame& frame,
                            TEVUnicodeString* message, const SystemCheck& check) {
  const std::string list = JoinPath(codeDir, kSystemList);
  bool passed = true;
  const bool read = ForEachWord<48>(list.c_str(), [&](const char* system) {
    passed = CheckSystem(codeDir, system, message, check);
    return passed;
  });
  if (!read) {
    const char* reason = std::strerror(errno);
    if (message != nullptr) *message = frame.Build("ErrWndOpenControlFile", {list, reason});
  }
  return read && passed;
}

}  // namespace kwinst
