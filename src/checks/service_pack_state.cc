#include "checks/service_pack_state.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "support/tree_paths.h"

namespace kwinst {

namespace {

/// Replaces the content of the file NUL in the current directory, or creates it. A symbolic link is
/// not followed, and a pipe or a device is left alone: it might have to be waited for.
void WriteNul(const std::string& report) {
  const int file = open("NUL", O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
  if (file == -1) return;
  struct stat info {};
  if (fstat(file, &info) == 0 && S_ISREG(info.st_mode) && ftruncate(file, 0) == 0) {
    [[maybe_unused]] const ssize_t written = write(file, report.data(), report.size());
  }
  close(file);
}

}  // namespace

bool ServicePackIsPending(const std::string& systemDir) {
  return Exists(ControlFile(systemDir, kPendingPack));
}

bool ServicePackIsDamaged(TEVINSInstToc* table, std::string systemDir) {
  std::ostringstream report;
  const bool damaged =
      table != nullptr && table->CheckIntegrity(report, systemDir.data(), 0, 0) == 2;
  WriteNul(report.str());
  return damaged;
}

}  // namespace kwinst
