#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "kwinstutil/processes.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

namespace {

constexpr const char* kBootDir = "/etc/rc2.d";

bool Contains(const char* text, const char* part) { return std::strstr(text, part) != nullptr; }

/// Is the entry `name` of the boot directory a symbolic link with `part` in its target?
bool LinksTo(const char* name, const char* part) {
  const std::string path = kwinst::JoinPath(kBootDir, name);
  TEVFileInfo info;
  if (TEVGetFileInfo(path.c_str(), &info) != 0 || !S_ISLNK(info.mode)) return false;
  char target[kwinst::kPathSize];
  const ssize_t length = readlink(path.c_str(), target, sizeof target - 1);
  if (length < 0) return false;
  target[length] = '\0';
  return Contains(target, part);
}

/// A copy of `text`, or null if there is no memory for it.
template <size_t size>
std::unique_ptr<char[]> Copy(const char (&text)[size]) {
  std::unique_ptr<char[]> copy(new (std::nothrow) char[size]);
  if (copy != nullptr) std::memcpy(copy.get(), text, size);
  return copy;
}

}  // namespace

TEVInsTaskList::TEVInsTaskList() noexcept : own_pid_(getpid()), parent_pid_(getppid()) {}

TEVInsTaskList::~TEVInsTaskList() noexcept {
  for (int i = 0; i < count_; ++i) delete[] commands_[i];
}

int TEVInsTaskList::TEVInsCheckOrbixReboot(const char* installDir) noexcept {
  if (installDir == nullptr) return 0;
  const size_t size = std::strlen(installDir) + 1 + std::strlen(kwinst::kOrbDaemonScript) + 1;
  daemon_script_.reset(new (std::nothrow) char[size]);
  if (daemon_script_ == nullptr) return 0;
  static_cast<void>(
      std::snprintf(daemon_script_.get(), size, "%s/%s", installDir, kwinst::kOrbDaemonScript));
  if (!kwinst::Exists(daemon_script_.get())) return orbix_boot_ = 0;

  TEVDirectory directory = nullptr;
  if (TEVOpenDirectory(kBootDir, &directory) != 0) return orbix_boot_;
  TEVDirectoryEntry entry;
  int end = 0;
  while (TEVReadDirectory(directory, &entry, &end) == 0) {
    if (!Contains(entry.name, "S99orbixds") || !LinksTo(entry.name, daemon_script_.get())) continue;
    if (!kwinst::CopyWhole(entry.name, boot_entry_, sizeof boot_entry_)) continue;
    orbix_boot_ = 1;
  }
  TEVCloseDirectory(directory);
  return orbix_boot_;
}

int TEVInsTaskList::TEVInsCheckTask(const char* installDir, char* exclude) noexcept {
  TEVInsGetAllProcess();
  FindOrbix();

  const std::string pattern = kwinst::JoinPath(installDir, "");
  for (size_t i = 0; i < record_count_ && count_ < kMaxTasks; ++i) {
    const Record& record = records_[i];
    if (exclude != nullptr && Contains(record.command, exclude)) continue;
    if (!IsOther(record) || !Contains(record.command, pattern.c_str())) continue;
    if (Append(record)) TEVInsGetProcessFils(record.pid);
  }
  return count_;
}

void TEVInsTaskList::FindOrbix() noexcept {
  orbix_pid_ = 0;
  orbix_command_.reset();
  if (orbix_boot_ != 1) return;
  for (size_t i = 0; i < record_count_; ++i) {
    const Record& record = records_[i];
    if (!Contains(record.command, boot_entry_)) continue;
    orbix_pid_ = record.pid;
    orbix_command_ = Copy(record.command);
    return;
  }
}

void TEVInsTaskList::TEVInsGetListTask(char*** list, int* number) noexcept {
  if (number != nullptr) *number = count_;
  if (list != nullptr && count_ != 0) *list = commands_;
}

void TEVInsTaskList::TEVInsKillTask() noexcept {
  if (orbix_boot_ == 1 && orbix_pid_ > 0) kill(static_cast<pid_t>(orbix_pid_), SIGTERM);
  for (int i = count_ - 1; i >= 0; --i) {
    if (pids_[i] > 0) kill(pids_[i], SIGTERM);
  }
}

int TEVInsTaskList::TEVInsGetAllProcess() noexcept {
  record_count_ = 0;
  const kwinst::ShellOutput pipe = kwinst::OpenShell("ps -ef");
  char header[kTextSize];
  if (TEVFGets(header, sizeof header, pipe.get()) != 0 || !MakeRoom()) return 0;
  bool room = true;
  kwinst::ForEachLine<kTextSize>(pipe.get(), [this, &room](const char* line) {
    room = MakeRoom();
    if (!room) return false;
    Record& record = records_[record_count_];
    record = {};
    // User, pid, ppid, use, start, terminal, time, command. A start that is printed as two words
    // shifts the columns: the command then begins with the time.
    // NOLINTNEXTLINE(cert-err34-c): ps prints no number that does not fit.
    const int values = std::sscanf(line, "%*s %ld %ld %*d %*s %*s %*s %1023[^\n]", &record.pid,
                                   &record.ppid, record.command);
    // A line that is too long comes in pieces, which may have any number in the place of an id.
    if (values == 3 && record.pid >= 0 && record.pid <= INT_MAX) ++record_count_;
    return true;
  });
  if (!room) record_count_ = 0;
  return static_cast<int>(record_count_);
}

// The recursion is at most 100 levels deep: each level has added a task.
// NOLINTNEXTLINE(google-runtime-int, misc-no-recursion)
int TEVInsTaskList::TEVInsGetProcessFils(long pid) noexcept {
  int children = 0;
  for (size_t i = 0; i < record_count_; ++i) {
    const Record& record = records_[i];
    if (record.ppid != pid || !IsOther(record)) continue;
    ++children;
    if (!Append(record) || count_ == kMaxTasks) return children;
    TEVInsGetProcessFils(record.pid);
  }
  return children;
}

bool TEVInsTaskList::MakeRoom() noexcept {
  if (record_count_ < capacity_) return true;
  const size_t larger = capacity_ == 0 ? 1 : 2 * capacity_;
  std::unique_ptr<Record[]> records(new (std::nothrow) Record[larger]);
  if (records == nullptr) return false;
  std::copy_n(records_.get(), record_count_, records.get());
  records_ = std::move(records);
  capacity_ = larger;
  return true;
}

bool TEVInsTaskList::IsOther(const Record& record) const noexcept {
  return record.pid != own_pid_ && record.pid != parent_pid_;
}

bool TEVInsTaskList::Append(const Record& record) noexcept {
  if (count_ == kMaxTasks) return false;
  std::unique_ptr<char[]> command = Copy(record.command);
  if (command == nullptr) return false;
  pids_[count_] = static_cast<int>(record.pid);
  commands_[count_++] = command.release();
  return true;
}
