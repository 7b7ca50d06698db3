#ifndef KWINSTUTIL_PROCESSES_H_
#define KWINSTUTIL_PROCESSES_H_

#include <sys/types.h>

#include <cstddef>
#include <memory>

#include "kwinstutil/export.h"

/// The programs that run from an installed tree: finds them, lists them and stops them. Construct,
/// TEVInsCheckOrbixReboot when the ORB daemon may have been started at boot, TEVInsCheckTask,
/// TEVInsGetListTask, TEVInsKillTask.
///
/// The list holds at most 100 tasks and only grows; tasks that there is no memory for are left out.
/// The process that made the object and its parent are never in it. A process may be listed twice:
/// as a task of the tree and as the descendant of one.
class KWINSTUTIL_EXPORT TEVInsTaskList {
 public:
  TEVInsTaskList() noexcept;
  ~TEVInsTaskList() noexcept;
  TEVInsTaskList(const TEVInsTaskList&) = delete;
  TEVInsTaskList& operator=(const TEVInsTaskList&) = delete;

  /// Looks in /etc/rc2.d for a symbolic link that has "S99orbixds" in its name, of at most 127
  /// characters, and INSTALLDIR/code/command/InitOrbixDaemon in its target, when that script
  /// exists. The last such link counts.
  ///
  /// Returns 1 when one was found, by this call or an earlier one of this object; else 0, also when
  /// `installDir` is null, the script does not exist or there is no memory for its path.
  int TEVInsCheckOrbixReboot(const char* installDir) noexcept;

  /// Takes a snapshot of the processes and adds each one that has `installDir` and '/' in its
  /// command line, but not `exclude` (which may be null), to the list, followed by all of its
  /// descendants. Remembers the process of this snapshot that was started from the boot link, if
  /// there is one. `installDir` must not be null.
  ///
  /// Returns the number of tasks in the list.
  int TEVInsCheckTask(const char* installDir, char* exclude) noexcept;

  /// Stores the number of tasks in `*number`, and the list of their command lines in `*list`, which
  /// is left alone when there are none. Either may be null. The list lives as long as the object.
  void TEVInsGetListTask(char*** list, int* number) noexcept;

  /// Sends SIGTERM to the process that was started from the boot link, then to the tasks, from the
  /// last to the first. A process 0 is not signalled. Waits for none, and tells no failures.
  void TEVInsKillTask() noexcept;

  /// Takes a snapshot with "ps -ef", in the place of the former one. A line of more than 1023
  /// characters is taken as several, and one with a number that is no process id as none. Returns
  /// the number of processes, 0 on failure.
  int TEVInsGetAllProcess() noexcept;

  /// Adds the descendants of a process in the snapshot to the list, each child before its own.
  /// Returns how many children were looked at until the list was full; 0 when there is none.
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
