#include <string>

#include "kwinstutil/spk.h"
#include "support/environment_entry.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::Format;

namespace {

// The environment keeps pointers to these.
char library_path[1024];
char install_path[1024];

/// Sets both variables, or neither if one of them does not fit.
bool SetEnvironment(const char* installDir) {
  const std::string programs = kwinst::JoinPath(installDir, kwinst::kProgramDir);
  return kwinst::Publish({{library_path, "LD_LIBRARYN32_PATH=" + programs},
                          {install_path, Format("TEVInstallPath=%s", installDir)}});
}

std::string CommandFor(const std::string& program, const char* logFile) {
  return Format(
      "unset SRCDIR; unset STARTDIR ;unset TEVMsgCatalogPath;unset TEVGraphicPath;"
      "unset TEVReffilesPath;%s  1>>%s  2>>%s",
      program.c_str(), logFile, logFile);
}

}  // namespace

int TEVInsSPK(char* suffix, char* installDir, char* logFile) noexcept {
  if (suffix == nullptr || installDir == nullptr || logFile == nullptr) return -1;
  const std::string list = kwinst::ControlFile(installDir, kwinst::kPostInstallList);
  if (!kwinst::Exists(list)) return 0;
  if (!SetEnvironment(installDir)) return -1;

  int status = 0;
  kwinst::ForEachWord<256>(list.c_str(), [&](const char* word) {
    const std::string program = kwinst::ProgramFile(installDir, Format("%s_%s", word, suffix));
    if (kwinst::Exists(program)) status = kwinst::RunShell(CommandFor(program, logFile)) / 256;
    return true;
  });
  return status;
}
