#include <kwinstutil/actions.h>
#include <sys/resource.h>
#include <sys/stat.h>
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

TEST_F(ActionsTest, TellsHowTheSetupEnded) {
  const std::pair<const char*, std::string> kCases[] = {
      {"true", Message("PalomirSetupRC_0")},
      {"exit 1", Message("PalomirSetupRC_1", "exit 1")},
      {"exit 2", Message("PalomirSetupRC_2", "exit 2")},
      {"exit 7", Message("PalomirSetupDefault", "7")}};
  for (const auto& [command, text] : kCases) {
    EXPECT_EQ(TEVInsPalomirSetup(CharPath(command), &message_),
              command[0] == 't' ? 0 : command[5] - '0');
    EXPECT_EQ(message_.ConvertToChar(), text);
  }
  EXPECT_EQ(TEVInsPalomirSetup(CharPath("kill -9 $$"), &message_), 0) << "the shell itself";
  EXPECT_EQ(TEVInsPalomirSetup(nullptr, nullptr), -10);

  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 0);
  Write("code/bin/DRXPeopleUpdate");
  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 0);
  Write("control/Q8M.prd");
  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 1);
}

TEST_F(ActionsTest, StartsProgramsInTheirEnvironment) {
  const std::string start =
      Write("code/command/tevstart", "#!/bin/sh\nprintf '%s|' \"$@\" >" + Path("said") +
                                         "\nexit $(cat " + Path("status") + ")\n");
  chmod(start.c_str(), 0755);
  const struct {
    const char* lp;         ///< null for no file
    const char* directory;  ///< null for no file
    std::string options;
  } kCases[] = {{nullptr, "/env\n", ""},
                {" name\tother\n", nullptr, ""},
                {" name\tother\n", "/env\n/other", " -env name -direnv /env"},
                {"", "", " -env  -direnv "}};
  for (const auto& c : kCases) {
    for (const char* lp : {"PALOMIR_QDN.lp", "My.lp"}) {
      unlink(Path(lp).c_str());
      if (c.lp != nullptr) Write(lp, c.lp);
    }
    unlink(Path("EnvDir.txt").c_str());
    if (c.directory != nullptr) Write("EnvDir.txt", c.directory);
    const std::string update = start + " -run \"DRXPeopleUpdate -p -m\"" + c.options + " ";
    const std::string launch = start + " -run \"prog a b\"" + c.options;
    for (const bool good : {true, false}) {
      Write("status", good ? "0" : "3");
      EXPECT_EQ(TEVInsQDNUpdate(CharPath(dir_), &message_, nullptr), good ? 1 : -1);
      EXPECT_EQ(message_.ConvertToChar(), good
                                              ? Message("CmdDRXPeopleUpdateSuccessful", update)
                                              : Message("ErrDRXPeopleUpdateFailed", update, "768"));
      EXPECT_EQ(TEVInsLaunchExe(CharPath(dir_), "My", CharPath("prog"), CharPath("a b"), &message_),
                good ? 1 : -1);
      EXPECT_EQ(message_.ConvertToChar(), Message(good ? "CmdSuccessful" : "ErrCmdFailed", launch));
    }
  }
  EXPECT_EQ(Read(Path("said")), "-run|prog a b|-env|-direnv|");
  EXPECT_EQ(TEVInsLaunchExe(CharPath(dir_), "My", CharPath("prog"), nullptr, nullptr), 0);

  Write("bare/TEVInstUtil.msg", "Other = \"\"\n");
  SetEnv("TEVMsgCatalogPath", Path("bare").c_str());
  const std::string update = start + " -run \"DRXPeopleUpdate -p -m\" -env  -direnv  ";
  TEVInsQDNUpdate(CharPath(dir_), &message_, nullptr);
  EXPECT_EQ(message_.ConvertToChar(), "Commande [" + update + "] failed. rc= 768 \n");
  Write("status", "0");
  TEVInsQDNUpdate(CharPath(dir_), &message_, nullptr);
  EXPECT_EQ(message_.ConvertToChar(), "Commande [" + update + "] was successful");
}

}  // namespace
