#ifndef KWINSTUTIL_TESTS_FAULTY_RUN_H_
#define KWINSTUTIL_TESTS_FAULTY_RUN_H_

#include <elf.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>

/// The registers of a process that is stopped at a system call.
class Registers {
 public:
  explicit Registers(pid_t process) : process_(process) {
    Transfer(PTRACE_GETREGSET, NT_PRSTATUS, &all_, sizeof(all_));
  }

#ifdef __x86_64__
  void SetThirdArgument(uint64_t value) { Set(all_.rdx, value); }
  void SetResult(int value) { Set(all_.rax, static_cast<uint64_t>(value)); }
  /// Lets the kernel do nothing.
  void Skip() { Set(all_.orig_rax, static_cast<uint64_t>(-1)); }
#else
  void SetThirdArgument(uint64_t value) { Set(all_.regs[2], value); }
  void SetResult(int value) { Set(all_.regs[0], static_cast<uint64_t>(value)); }
  void Skip() {
    int none = -1;
    Transfer(PTRACE_SETREGSET, NT_ARM_SYSTEM_CALL, &none, sizeof(none));
  }
#endif

 private:
  template <typename Register>
  void Set(Register& one, uint64_t value) {
    one = value;
    Transfer(PTRACE_SETREGSET, NT_PRSTATUS, &all_, sizeof(all_));
  }

  void Transfer(decltype(PTRACE_GETREGSET) request, int set, void* data, size_t size) {
    iovec place = {data, size};
    ptrace(request, process_, set, &place);
  }

  const pid_t process_;
  user_regs_struct all_{};
};

/// Runs an operation in a child process, and lets one system call of it or of its programs go
/// wrong. It is traced: so calls are met that are made within the C library, and those of programs.
class FaultyRun {
 public:
  /// How the call goes wrong, besides with an errno: so do all later calls of that number and all
  /// of programs; all processes are killed before it; after it, and after half of it if it writes;
  /// before it, and only calls count that may change a file; the disk is full from the middle of it
  /// on, and only calls count that need room there.
  enum Effect : int {
    kForEver = 1 << 16,
    kKilled = -1,
    kTorn = -2,
    kKilledBeforeChange = -3,
    kFull = -4
  };

  /// The `call`th one from 1, of the operation itself or of its programs.
  FaultyRun(int call, int effect, bool in_program, const std::function<std::string()>& operation)
      : call_(call), effect_(effect), in_program_(in_program) {
    constexpr size_t kSize = 4096;
    // The outcome is passed on without a system call, which could go wrong.
    void* shared = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    std::fflush(nullptr);
    root_ = fork();
    if (root_ == 0) {
      for (std::FILE* stream : {stdout, stderr})
        if (std::freopen("printed", "a", stream) == nullptr) _exit(1);
      if (setpgid(0, 0) != 0 || ptrace(PTRACE_TRACEME, 0, 0, 0) != 0) _exit(1);
      raise(SIGSTOP);
      operation().copy(static_cast<char*>(shared), kSize - 1);
      sched_yield();
      kWritesCounters ? std::exit(0) : _exit(0);
    }
    waitpid(root_, nullptr, 0);
    Watch();
    told = static_cast<char*>(shared);
    munmap(shared, kSize);
  }

  bool reached = false;  ///< the call was made
  int calls = 0;         ///< that were counted
  int status = 0;        ///< with which the process ended; 128 and the signal
  std::string told;      ///< what the operation returned; empty if it was killed

 private:
  /// Does the program count at its exit what has run? The leak check cannot be traced.
#ifdef KWINSTUTIL_COVERAGE
  static constexpr bool kWritesCounters = true;
#else
  static constexpr bool kWritesCounters = false;
#endif

  /// Memory, signals and the like are left alone, what the operation itself prints, and all that
  /// comes after the operation.
  bool MayFail(pid_t process, const __ptrace_syscall_info& info) {
    if (info.entry.nr == SYS_sched_yield) ended_ = true;
    if (ended_) return false;
    if (IsOneOf({SYS_mmap, SYS_munmap, SYS_mprotect, SYS_mremap, SYS_madvise, SYS_brk, SYS_futex,
                 SYS_rt_sigaction, SYS_rt_sigprocmask, SYS_rt_sigreturn, SYS_sigaltstack, SYS_umask,
                 SYS_getpid, SYS_gettid, SYS_exit_group},
                info)) {
      return false;
    }
    return process != root_ || info.entry.nr != SYS_write || info.entry.args[0] > STDERR_FILENO;
  }

  static bool IsOneOf(std::initializer_list<long> calls, const __ptrace_syscall_info& info) {
    return std::any_of(calls.begin(), calls.end(),
                       [&info](long call) { return info.entry.nr == static_cast<uint64_t>(call); });
  }

  /// Output counts when it goes to a file.
  static bool NeedsRoom(pid_t process, const __ptrace_syscall_info& info) {
    if (IsOneOf({SYS_write, SYS_writev, SYS_pwrite64}, info)) {
      char file[16] = "";
      const std::string link =
          "/proc/" + std::to_string(process) + "/fd/" + std::to_string(info.entry.args[0]);
      return readlink(link.c_str(), file, sizeof(file) - 1) > 0 && file[0] == '/' &&
             std::string(file).rfind("/dev/", 0) != 0;
    }
    if (info.entry.nr == SYS_openat) return (info.entry.args[2] & O_CREAT) != 0;
    return IsOneOf({SYS_mkdirat, SYS_linkat, SYS_symlinkat, SYS_sendfile, SYS_copy_file_range,
#ifdef SYS_mkdir  // Younger kinds of processors have only the calls above.
                    SYS_mkdir, SYS_link, SYS_symlink
#endif
                   },
                   info);
  }

  static bool MayChange(pid_t process, const __ptrace_syscall_info& info) {
    return NeedsRoom(process, info) ||
           IsOneOf({SYS_renameat2, SYS_renameat, SYS_unlinkat, SYS_fchmod, SYS_fchmodat, SYS_fchown,
                    SYS_fchownat, SYS_truncate, SYS_ftruncate,
#ifdef SYS_rename
                    SYS_rename, SYS_unlink, SYS_rmdir, SYS_chmod, SYS_lchown
#endif
                   },
                   info);
  }

  /// Is it a call of the kind that is to go wrong?
  bool IsTried(pid_t process, const __ptrace_syscall_info& info) const {
    if (effect_ == kKilledBeforeChange) return MayChange(process, info);
    return effect_ != kFull || NeedsRoom(process, info);
  }

  /// Watches all processes until they have ended.
  void Watch() {
    ptrace(PTRACE_SETOPTIONS, root_, 0,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE |
               PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL);
    ptrace(PTRACE_SYSCALL, root_, 0, 0);
    int event = 0;
    for (pid_t process = 0; (process = waitpid(-1, &event, __WALL)) != -1;) {
      if (!WIFSTOPPED(event)) {
        if (process == root_)
          status = WIFEXITED(event) ? WEXITSTATUS(event) : 128 + WTERMSIG(event);
        continue;
      }
      const int signal = WSTOPSIG(event);
      const bool at_call = signal == (SIGTRAP | 0x80);
      __ptrace_syscall_info info{};
      if (at_call) ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof(info), &info);
      if (info.op == PTRACE_SYSCALL_INFO_ENTRY && MayFail(process, info)) AtEntry(process, info);
      if (info.op == PTRACE_SYSCALL_INFO_EXIT && reached) AtExit(process);
      // The tracing makes signals of its own.
      const bool own = at_call || signal == SIGTRAP || signal == SIGSTOP;
      ptrace(PTRACE_SYSCALL, process, 0, own ? 0 : signal);
    }
  }

  void AtEntry(pid_t process, const __ptrace_syscall_info& info) {
    const bool tried = IsTried(process, info);
    const bool counts = tried && (process != root_) == in_program_ && ++calls == call_;
    const bool again =
        reached && ((effect_ >= kForEver && (info.entry.nr == number_ || process != root_)) ||
                    (effect_ == kFull && tried));
    if (!counts && !again) return;
    reached = true;
    number_ = info.entry.nr;
    if (effect_ == kKilled || effect_ == kKilledBeforeChange) kill(-root_, SIGKILL);
    const bool halves = effect_ == kTorn || effect_ == kFull || effect_ >= kForEver;
    const bool writes = IsOneOf({SYS_write, SYS_writev}, info) && info.entry.args[2] > 1;
    // A full disk takes the first half, too.
    if (counts && writes && halves) {
      Registers(process).SetThirdArgument(info.entry.args[2] / 2);
    } else if (effect_ > 0 || effect_ == kFull) {
      // These have done their work even when they fail.
      if (!IsOneOf({SYS_close, SYS_wait4}, info)) Registers(process).Skip();
      errors_[process] = effect_ == kFull ? ENOSPC : effect_ % kForEver;
    }
  }

  void AtExit(pid_t process) {
    if (effect_ == kTorn) kill(-root_, SIGKILL);
    if (errors_.count(process) == 0) return;
    Registers(process).SetResult(-errors_[process]);
    errors_.erase(process);
  }

  const int call_, effect_;
  const bool in_program_;
  pid_t root_ = 0;
  bool ended_ = false;           ///< the operation has
  uint64_t number_ = 0;          ///< of the call that went wrong
  std::map<pid_t, int> errors_;  ///< what the call will return in which a process is
};

#endif  // KWINSTUTIL_TESTS_FAULTY_RUN_H_
