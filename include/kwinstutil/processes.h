#ifndef KWINSTUTIL_PROCESSES_H_
#define KWINSTUTIL_PROCESSES_H_

#include <sys/types.h>

#include <cstddef>
#include <memory>

#include "kwinstutil/export.h"

/// \file
/// The programs that run from an installed tree.

/// Finds the programs that run from an installed tree, lists them and stops them. Construct, then
/// call TEVInsCheckOrbixReboot if the ORB daemon may have been started at boot, TEVInsCheckTask,
/// TEVInsGetListTask and TEVInsKillTask.
///
/// The list has at most 100 tasks and only grows. A task for which there is no memory is left out.
/// The process that made the object and its parent are never in it. A process may be listed twice:
/// as a task of the tree and as the descendant of one.
class KWINSTUTIL_EXPORT TEVInsTaskList {
 public:
  TEVInsTaskList() noexcept;
  ~TEVInsTaskList() noexcept;
  TEVInsTaskList(const TEVInsTaskList&) = delete;
  TEVInsTaskList& operator=(const TEVInsTaskList&) = delete;

  /// Was the ORB daemon of the tree started at boot? Looks in /etc/rc2.d for a symbolic link whose
  /// name contains "S99orbixds" and whose target contains
  /// INSTALLDIR/code/command/InitOrbixDaemon. A name of more than 127 characters is ignored. The
  /// script must exist. The last such link is used.
  ///
  /// Returns
  ///   1  yes, in this call or an earlier one of this object;
  ///   0  no. It is no too if `installDir` is null, the script does not exist, or there is no
  ///      memory for its path.
  ///
  /// System: reads the links in /etc/rc2.d.
  int TEVInsCheckOrbixReboot(const char* installDir) noexcept;

  /// Takes a snapshot of the processes and adds the tasks of the tree to the list, each followed by
  /// all of its descendants. A process is a task of the tree if its command line contains
  /// `installDir` followed by '/', but not `exclude`. If this snapshot has a process that was
  /// started from the boot link, it is remembered. `installDir` must not be null; `exclude` may be
  /// null.
  ///
  /// Returns the number of tasks in the list.
  ///
  /// System: runs ps -ef.
  int TEVInsCheckTask(const char* installDir, char* exclude) noexcept;

  /// Stores the number of tasks in `*number` and the list of their command lines in `*list`. Either
  /// may be null. If there are no tasks, `*list` is untouched. The list lives as long as the
  /// object.
  void TEVInsGetListTask(char*** list, int* number) noexcept;

  /// Sends SIGTERM to the process that was started from the boot link, and then to the tasks, from
  /// the last to the first. A process 0 is not signalled. The call does not wait for their end.
  /// Failures are not reported.
  ///
  /// System: sends SIGTERM to processes.
  void TEVInsKillTask() noexcept;

  /// Takes a new snapshot with "ps -ef". A line of more than 1023 characters is read in pieces of
  /// 1023, and each piece is treated as a line. A line without a valid process id is ignored.
  ///
  /// Returns the number of processes, or 0 on failure.
  ///
  /// System: runs ps -ef.
  int TEVInsGetAllProcess() noexcept;

  /// Adds the descendants of a process in the snapshot to the list. Each child comes before its own
  /// children.
  ///
  /// Returns the number of children that were found before the list was full; 0 if there are none.
  int TEVInsGetProcessFils(long pid) noexcept;  // NOLINT(google-runtime-int)

 private:
  static constexpr int kMaxTasks = 100;
  static constexpr int kTextSize = 1024;

  struct Record {
    long pid;   // NOLINT(google-runtime-int)
    long ppid;  // NOLINT(google-runtime-int)
    char command[kTextSize];
  };

  void FindOrbix() noexcept;
  bool MakeRoom() noexcept;
  bool IsOther(const Record& record) const noexcept;
  bool Append(const Record& record) noexcept;

  int pids_[kMaxTasks] = {};
  char* commands_[kMaxTasks] = {};
  int count_ = 0;

  int orbix_boot_ = 0;         ///< 1 when the boot link was found
  char boot_entry_[128] = "";  ///< its name
  std::unique_ptr<char[]> daemon_script_;
  long orbix_pid_ = 0;                     // NOLINT(google-runtime-int)
  std::unique_ptr<char[]> orbix_command_;  ///< for a debugger; nothing reads it

  std::unique_ptr<Record[]> records_;  ///< the snapshot
  size_t record_count_ = 0;
  size_t capacity_ = 0;

  const pid_t own_pid_;
  const pid_t parent_pid_;
};

#endif  // KWINSTUTIL_PROCESSES_H_
