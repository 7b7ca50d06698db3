#include <kwinstutil/processes.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "fixture.h"

namespace fs = std::filesystem;

namespace {

class ProcessesTest : public Fixture {
 protected:
  /// Makes `table` what ps prints. Its ids are not this test's: they must not be signalled.
  void FakePs(const std::string& table) {
    Write("table", "UID PID PPID C STIME TTY TIME CMD /t/x\n" + table);
    Program("bin/ps", "exec cat " + Path("table"));
    SetEnv("PATH", (Path("bin") + ":" + std::getenv("PATH")).c_str());
  }

  /// A line of ps.
  static std::string Line(int pid, int ppid, const std::string& command) {
    return "root " + std::to_string(pid) + " " + std::to_string(ppid) + " 0 10:00 ? 00:00:01 " +
           command + "\n";
  }

  /// The commands of the tasks of a tree, each with '|' behind it.
  static std::string Check(const std::string& tree, const std::string& exclude = "nothing") {
    TEVInsTaskList tasks;
    tasks.TEVInsCheckTask(tree.c_str(), CharPath(exclude));
    char** list = nullptr;
    int number = 0;
    tasks.TEVInsGetListTask(&list, &number);
    std::string text;
    for (int i = 0; i < number; ++i) text.append(list[i]).append("|");
    return text;
  }

  /// The status of a child that ends soon, else -1; `pid` as for waitpid.
  static int Ended(pid_t pid) {
    int status = -1;
    for (int i = 0; i < 200 && waitpid(pid, &status, WNOHANG) == 0; ++i) usleep(50'000);
    return status;
  }
};

TEST_F(ProcessesTest, ListsAllProcessesAndDescendants) {
  FakePs(Line(0, 1, "/t/sched") + Line(getpid(), 11, "/t/own") + Line(11, 1, "/t/a") +
         Line(12, 11, "b") + Line(13, 11, "d"));
  TEVInsTaskList tasks;
  EXPECT_EQ(tasks.TEVInsGetAllProcess(), 5);
  EXPECT_EQ(tasks.TEVInsGetProcessFils(13), 0);
  EXPECT_NE(tasks.TEVInsGetProcessFils(11), 0);
  EXPECT_EQ(tasks.TEVInsCheckTask("/t", nullptr), 6) << "added to the two descendants";
  Program("bin/ps", "exit 1");
  EXPECT_EQ(tasks.TEVInsGetAllProcess(), 0);
  TEVInsTaskList idle;
  FakePs(Line(0, 1, "/t/sched"));
  EXPECT_EQ(idle.TEVInsCheckTask("/t", nullptr), 1);
  setpgid(0, 0);          // no other process in this group, if it must fail
  idle.TEVInsKillTask();  // would signal the group
}

TEST_F(ProcessesTest, StopsRealProcesses) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // all that are started become children of this process
  const std::string prog = MakeDir("tree") + "/prog";
  const std::string start = Program("start", "sh -c 'sleep 50; :' & exec " + prog + " 51");
  fs::copy_file("/bin/sleep", prog);
  const pid_t child = fork();
  if (child == 0) execl(start.c_str(), start.c_str(), nullptr);
  const std::string expected = prog + " 51|sh -c sleep 50; :|sleep 50|";
  for (int i = 0; i < 100 && Check(Path("tree")) != expected; ++i) usleep(50'000);
  TEVInsTaskList tasks;
  EXPECT_EQ(Check(Path("tree")), expected);
  EXPECT_EQ(tasks.TEVInsCheckTask(Path("tree").c_str(), nullptr), 3);
  tasks.TEVInsKillTask();
  EXPECT_EQ(Ended(child), SIGTERM);
  while (Ended(-1) != -1) continue;
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "one goes on";
}

TEST_F(ProcessesTest, StopsTheDaemonStartedAtBoot) {
  // A /etc/rc2.d that only this process sees.
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "", MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("tmpfs", "/etc/rc2.d", "tmpfs", 0, nullptr) != 0) {
    GTEST_SKIP() << "no private /etc/rc2.d is allowed";
  }
  const std::string tree = Path("tree");
  const std::string script = Write("tree/code/command/InitOrbixDaemon");
  TEVInsTaskList tasks;
  fs::create_symlink("/elsewhere", "/etc/rc2.d/S99orbixds_0");
  fs::create_symlink(script, "/etc/rc2.d/S99orbixds" + std::string(118, 'x'));
  EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(tree.c_str()), 0) << "no link of this tree";
  fs::create_symlink(script, "/etc/rc2.d/S99orbixds_1");
  EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(tree.c_str()), 1);
  const pid_t daemon = fork();
  if (daemon == 0) execl("/bin/sleep", "sleep", "50", nullptr);
  FakePs(Line(daemon, 1, "/bin/sh /etc/rc2.d/S99orbixds_1"));
  EXPECT_EQ(tasks.TEVInsCheckTask(tree.c_str(), nullptr), 0);
  tasks.TEVInsKillTask();
  EXPECT_EQ(Ended(daemon), SIGTERM);
  const pid_t other = fork();  // which might have got the daemon's id
  if (other == 0) execl("/bin/sleep", "sleep", "50", nullptr);
  FakePs(Line(other, 1, "/bin/sh /etc/rc2.d/S99orbixds_1"));
  tasks.TEVInsCheckTask(tree.c_str(), nullptr);
  FakePs(Line(12, 1, "b"));
  tasks.TEVInsCheckTask(tree.c_str(), nullptr);
  tasks.TEVInsKillTask();
  usleep(50'000);
  EXPECT_EQ(waitpid(other, nullptr, WNOHANG), 0) << "the daemon of an earlier snapshot";
  kill(other, SIGKILL);
  Ended(other);
}

}  // namespace
