#include "checks/service_pack_state.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "support/tree_paths.h"

namespace kwinst {

namespace {

constexpr const char* kReport = "NUL";  // in the current directory

/// Replaces the content of the report, or creates it. What is not a regular file is not opened:
/// opening a pipe wakes its reader, and opening a device may do anything.
void WriteReport(const std::string& report) {
  struct stat info {};
  if (lstat(kReport, &info) == 0 && !S_ISREG(info.st_mode)) return;
  const int file = open(kReport, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
  if (file == -1) return;
  // Another program may have replaced the file since it was examined.
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
  WriteReport(report.str());
  return damaged;
}

}  // namespace kwinst
