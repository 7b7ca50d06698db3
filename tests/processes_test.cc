#include <dlfcn.h>
#include <kwinstutil/processes.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <vector>

#include "fixture.h"

namespace {

std::vector<pid_t>* signalled = nullptr;  ///< set: receives who would be signalled
bool no_memory = false;                   ///< for the library's snapshots and command lines

}  // namespace

extern "C" __attribute__((visibility("default"))) int kill(pid_t pid, int signal) noexcept {
  using Function = int (*)(pid_t, int);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "kill"));
  if (signalled == nullptr) return real(pid, signal);
  signalled->push_back(signal == SIGTERM ? pid : -1);
  return 0;
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return no_memory ? nullptr : ::operator new[](size);
}

namespace {

class ProcessesTest : public Fixture {
 protected:
  ~ProcessesTest() override {
    signalled = nullptr;
    no_memory = false;
  }

  std::string Script(const std::string& name, const std::string& text) const {
    std::string path = Write(name, "#!/bin/sh\n" + text + "\n");
    chmod(path.c_str(), 0755);
    return path;
  }

  /// Makes `table` what ps prints.
  void FakePs(const std::string& table) {
    Write("table", "UID PID PPID C STIME TTY TIME CMD /t/x\n" + table);
    Script("bin/ps", "exec cat " + Path("table"));
    SetEnv("PATH", (Path("bin") + ":" + std::getenv("PATH")).c_str());
  }

  /// A line of ps.
  static std::string Line(int pid, int ppid, const std::string& command) {
    return "root " + std::to_string(pid) + " " + std::to_string(ppid) + " 0 10:00 ? 00:00:01 " +
           command + "\n";
  }

  /// The commands in the list, each with '|' behind it.
  static std::string List(TEVInsTaskList& tasks) {
    char** list = nullptr;
    int number = 0;
    tasks.TEVInsGetListTask(&list, &number);
    std::string text;
    for (int i = 0; i < number; ++i) text.append(list[i]).append("|");
    return text;
  }
  static std::string Check(const std::string& tree, const std::string& exclude = "nothing") {
    TEVInsTaskList tasks;
    tasks.TEVInsCheckTask(tree.c_str(), CharPath(exclude));
    return List(tasks);
  }
};

TEST_F(ProcessesTest, ListsTheTasksOfATreeAndTheirDescendants) {
  FakePs(Line(getpid(), 11, "/t/own") + Line(getppid(), 11, "/t/parent") + Line(11, 1, "/t/a") +
         Line(12, 11, "b") + Line(14, 12, "/t/c -x") + Line(13, 11, "d") + Line(20, 1, "/t2/a") +
         "root 21 1 0 Nov 21 ? 00:00:01 /t/date\nroot 22 x 0 ? ? ? /t/bad\n\n" +
         Line(23, 1, std::string(2000, 'x') + "/t/long"));
  EXPECT_EQ(Check("/t"), "/t/a|b|/t/c -x|d|/t/c -x|00:00:01 /t/date|");
  EXPECT_EQ(Check("/t", "/t/a"), "/t/c -x|00:00:01 /t/date|");
  EXPECT_EQ(Check("/t", ""), "");

  TEVInsTaskList tasks;
  char** list = nullptr;
  tasks.TEVInsGetListTask(&list, nullptr);
  EXPECT_EQ(list, nullptr) << "an empty list was handed out";
  EXPECT_EQ(tasks.TEVInsGetAllProcess(), 9);
  EXPECT_EQ(tasks.TEVInsGetProcessFils(13), 0);
  EXPECT_NE(tasks.TEVInsGetProcessFils(11), 0);
  EXPECT_EQ(tasks.TEVInsCheckTask("/t2", nullptr), 4) << "added to the three descendants";
  std::vector<pid_t> pids;
  signalled = &pids;
  tasks.TEVInsKillTask();
  EXPECT_EQ(pids, (std::vector<pid_t>{20, 13, 14, 12}));
  no_memory = true;
  EXPECT_EQ(Check("/t"), "");
}

TEST_F(ProcessesTest, StopsAtAHundredTasks) {
  std::string tasks;
  std::string children;
  for (int i = 2; i <= 150; ++i) {
    tasks += Line(i, 1, "/t/x");
    children += Line(i, 1, "child");
  }
  const std::string table[] = {tasks, Line(1, 0, "/t/parent") + children,
                               tasks + Line(200, 101, "child of the hundredth")};
  for (const std::string& lines : table) {
    FakePs(lines);
    TEVInsTaskList list;
    EXPECT_EQ(list.TEVInsCheckTask("/t", nullptr), 100);
    EXPECT_EQ(list.TEVInsCheckTask("/t", nullptr), 100);
  }
}

TEST_F(ProcessesTest, StopsRealProcesses) {
  // What the stopped ones leave behind becomes this process's child.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const std::string prog = Path("tree/code/bin/prog");
  const std::string start =
      Script("tree/code/bin/start", "sh -c 'sleep 50; :' & sleep 0.2; " + prog + " 51; :");
  std::filesystem::copy_file("/bin/sleep", prog);
  if (fork() == 0) execl(start.c_str(), start.c_str(), nullptr);

  const std::string expected =
      "/bin/sh " + start + "|sh -c sleep 50; :|sleep 50|" + prog + " 51|" + prog + " 51|";
  for (int i = 0; i < 100 && Check(Path("tree")) != expected; ++i) usleep(50'000);
  TEVInsTaskList tasks;
  tasks.TEVInsCheckTask(Path("tree").c_str(), nullptr);
  EXPECT_EQ(List(tasks), expected);
  EXPECT_EQ(Check(Path("tree"), "/start"), prog + " 51|");
  EXPECT_EQ(Check(Path("tre")), "");
  tasks.TEVInsKillTask();
  alarm(30);  // one that goes on would be waited for
  while (wait(nullptr) > 0) continue;
  alarm(0);
}

TEST_F(ProcessesTest, StopsTheDaemonStartedAtBoot) {
  const std::string script =
      Script("tree/code/command/InitOrbixDaemon", "while :; do sleep 0.1; done");
  const pid_t child = fork();
  if (child == 0) {
    // A /etc/rc2.d that only this process sees.
    if (unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", "/etc/rc2.d", "tmpfs", 0, nullptr) != 0) {
      _exit(77);
    }
    TEVInsTaskList tasks;
    EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(Path("tree").c_str()), 0) << "no link";
    const std::string link = "/etc/rc2.d/S99orbixds_1";
    EXPECT_EQ(symlink("/elsewhere", "/etc/rc2.d/S99orbixds_0"), 0);
    EXPECT_EQ(symlink(script.c_str(), "/etc/rc2.d/S98other"), 0);
    EXPECT_EQ(symlink(script.c_str(), ("/etc/rc2.d/S99orbixds" + std::string(118, 'x')).c_str()),
              0);
    std::filesystem::copy_file(script, "/etc/rc2.d/S99orbixds_2");
    EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(Path("tree").c_str()), 0) << "no link of this tree";
    EXPECT_EQ(symlink(script.c_str(), link.c_str()), 0);
    EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(Path("tree").c_str()), 1);
    EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(nullptr), 0);
    const pid_t daemon = fork();
    if (daemon == 0) execl(link.c_str(), link.c_str(), nullptr);
    usleep(200'000);
    EXPECT_EQ(tasks.TEVInsCheckTask(Path("tree").c_str(), nullptr), 0);
    tasks.TEVInsKillTask();
    int status = 0;
    waitpid(daemon, &status, 0);
    EXPECT_EQ(status, SIGTERM);
    EXPECT_EQ(tasks.TEVInsCheckOrbixReboot("/none"), 0) << "no script";
    _exit(HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "no private /etc/rc2.d is allowed";
  EXPECT_EQ(status, 0);
}

}  // namespace
