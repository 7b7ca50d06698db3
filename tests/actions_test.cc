#include <kwinstutil/actions.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "fixture.h"

namespace {

class ActionsTest : public Fixture {
 protected:
  TEVUnicodeString message_ = "untouched";
};

TEST_F(ActionsTest, TellsTheOutcomeOfEachCommand) {
  const std::string from = Write("from", "from\n");
  const std::string to = Write("to", "to\n");
  EXPECT_EQ(TEVInsCommande(CharPath("exit 3"), &message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrCmdFailed", "exit 3"));
  EXPECT_EQ(TEVInsCommande(CharPath("true"), &message_), 1);
  EXPECT_EQ(message_.ConvertToChar(), Message("CmdSuccessful", "true"));

  EXPECT_EQ(TEVInsUpdate(CharPath(from), CharPath(to), &message_), 1);
  EXPECT_EQ(message_.ConvertToChar(), Message("CmdSucessful", "cat " + from + " >> " + to));
  EXPECT_EQ(Read(to), "to\nfrom\n");
  EXPECT_EQ(TEVInsUpdate(CharPath(Path("no")), CharPath(to), &message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrFileNotExist", Path("no")));

  EXPECT_EQ(TEVInsCopyInstall(CharPath(from), CharPath(Path("copy")), &message_), 1);
  EXPECT_EQ(message_.ConvertToChar(), Message("CmdSuccessful", "cp " + from + " " + Path("copy")));
  EXPECT_EQ(Read(Path("copy")), "from\n");
  EXPECT_EQ(TEVInsCopyInstall(CharPath(Path("no")), CharPath(to), &message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrCmdFailed", "cp " + Path("no") + " " + to));
}

TEST_F(ActionsTest, AFailedUpdateLeavesTheFileAsItWas) {
  const std::string to = Write("to", "to\n");
  const std::string from = Write("from", std::string(1 << 16, 'x'));
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    // The append fails in its middle, as on a full disk.
    const rlimit limit = {4096, 4096};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(TEVInsUpdate(CharPath(from), CharPath(to), &message_) == -1 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Read(to), "to\n");
}

TEST_F(ActionsTest, CreatesFilesOfOneLine) {
  const std::string file = Write("file", "a longer text than the new one\n");
  EXPECT_EQ(TEVInsCreateFile(CharPath(file), CharPath("100%s"), &message_), 1);
  EXPECT_EQ(message_.ConvertToChar(), Message("CreateFile_OK", file));
  EXPECT_EQ(Read(file), "100%s\n");
  for (const std::string& path : {Path("no/file"), std::string("/dev/full"), dir_}) {
    EXPECT_EQ(TEVInsCreateFile(CharPath(path), CharPath("text"), &message_), -1);
    EXPECT_EQ(message_.ConvertToChar(), Message("CreateFile_KO", path));
  }
}

TEST_F(ActionsTest, RefusesNull) {
  EXPECT_EQ(TEVInsCommande(nullptr, &message_), -10);
  EXPECT_EQ(TEVInsUpdate(CharPath("a"), nullptr, &message_), -10);
  EXPECT_EQ(TEVInsUpdate(nullptr, CharPath("a"), &message_), -10);
  EXPECT_EQ(TEVInsCopyInstall(nullptr, CharPath("a"), &message_), -10);
  EXPECT_EQ(TEVInsCreateFile(CharPath("a"), nullptr, &message_), -10);
  EXPECT_STREQ(message_.ConvertToChar(), "untouched");
}

}  // namespace
