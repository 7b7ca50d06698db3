#include <kwinstutil/actions.h>

#include <filesystem>

#include "fixture.h"

namespace {

using ActionsTest = Fixture;

TEST_F(ActionsTest, ReportsTheOutcomeOfEachCommand) {
  const std::string from = Write("from", "from\n");
  const std::string to = Write("to", "to\n");
  const std::string no = Path("no");
  EXPECT_EQ(TEVInsCommande(CharPath("exit 3"), &message_), -1);
  EXPECT_EQ(Told(), Message("ErrCmdFailed", "exit 3"));
  EXPECT_EQ(TEVInsUpdate(CharPath(from), CharPath(to), &message_), 1);
  EXPECT_EQ(Told(), Message("CmdSucessful", "cat " + from + " >> " + to));
  CharPath link(Path("link")), loop(Path("loop"));
  std::filesystem::create_symlink("new", link.str());
  EXPECT_EQ(TEVInsUpdate(CharPath(dir_), link, &message_), -1);
  EXPECT_FALSE(Exists(Path("new")));
  EXPECT_EQ(TEVInsUpdate(CharPath(from), link, &message_), 1);
  EXPECT_EQ(Read(Path("new")), "from\n");
  std::filesystem::create_symlink("loop", loop.str());
  const auto fail = [&] { EXPECT_EQ(TEVInsUpdate(CharPath(from), loop, &message_), -1); };
  EXPECT_NE(Captured(2, fail).find(loop.str()), std::string::npos) << "the shell says why";
  EXPECT_EQ(Told(), Message("ErrCmdFailed", "cat " + from + " >> " + loop.str()));
  EXPECT_EQ(TEVInsUpdate(CharPath(no), CharPath(to), &message_), -1);
  EXPECT_EQ(Told(), Message("ErrFileNotExist", no));
  EXPECT_EQ(TEVInsCopyInstall(CharPath(from), CharPath(Path("copy")), &message_), 1);
  EXPECT_EQ(Told(), Message("CmdSuccessful", "cp " + from + " " + Path("copy")));
}

TEST_F(ActionsTest, ReportsHowTheSetupEnded) {
  const std::string kMessages[] = {
      Message("PalomirSetupRC_0"), Message("PalomirSetupRC_1", "exit 1"),
      Message("PalomirSetupRC_2", "exit 2"), Message("PalomirSetupDefault", "3")};
  for (int status = 0; status < 4; ++status) {
    const std::string command = "exit " + std::to_string(status);
    EXPECT_EQ(TEVInsPalomirSetup(CharPath(command), &message_), status);
    EXPECT_EQ(Told(), kMessages[status]);
  }
  EXPECT_EQ(TEVInsPalomirSetup(CharPath("kill -9 $$"), &message_), 0) << "the shell itself";
  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 0);
  Write("code/bin/DRXPeopleUpdate");
  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 0);
  Write("control/Q8M.prd");
  EXPECT_EQ(TEVInsNeedQDNUpdate(CharPath(dir_)), 1);
}

TEST_F(ActionsTest, StartsProgramsInTheirEnvironment) {
  const std::string start =
      Program("code/command/tevstart",
              "printf '%s|' \"$@\" >" + Path("said") + "; exit $(cat " + Path("status") + ")");
  const auto expect = [&](const std::string& options) {
    const std::string update = start + " -run \"DRXPeopleUpdate -p -m\"" + options + " ";
    const std::string launch = start + " -run \"prog a b\"" + options;
    for (const bool good : {true, false}) {
      Write("status", good ? "0" : "3");
      EXPECT_EQ(TEVInsQDNUpdate(CharPath(dir_), &message_, nullptr), good ? 1 : -1);
      EXPECT_EQ(Told(), good ? Message("CmdDRXPeopleUpdateSuccessful", update)
                             : Message("ErrDRXPeopleUpdateFailed", update, "768"));
      EXPECT_EQ(TEVInsLaunchExe(CharPath(dir_), "My", CharPath("prog"), CharPath("a b"), &message_),
                good ? 1 : -1);
      EXPECT_EQ(Told(), Message(good ? "CmdSuccessful" : "ErrCmdFailed", launch));
    }
  };
  expect("");
  for (const char* lp : {"PALOMIR_QDN.lp", "My.lp"}) Write(lp, " name\tother\n");
  expect("");
  Write("EnvDir.txt", "/env\n/other");
  expect(" -env name -direnv /env");
  EXPECT_EQ(Read(Path("said")), "-run|prog a b|-env|name|-direnv|/env|");
  for (const char* file : {"PALOMIR_QDN.lp", "My.lp", "EnvDir.txt"}) Write(file);
  expect(" -env  -direnv ");
}

}  // namespace
