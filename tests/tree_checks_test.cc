#include <fcntl.h>
#include <kwinstutil/checks.h>
#include <kwinstutil/toc.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "fixture.h"

namespace {

/// The tables of a medium and of a tree, and what a check makes of them.
struct Case {
  std::string medium, tree;
  int status;
  std::string message = kUntouched;
};

/// Checks that hold a medium against a tree. They run in the test's directory, since some leave a
/// file NUL in the current one.
class TreeChecks : public Fixture {
 protected:
  TreeChecks() { std::filesystem::current_path(dir_); }
  ~TreeChecks() override { std::filesystem::current_path("/"); }

  /// The table of the system `os` of the test's tree, made with these lines.
  TEVINSInstToc Tree(const std::string& table, const std::string& os = "aix") const {
    return TEVINSInstToc(Write(os + "/control/PRESENT", table).c_str());
  }

  /// Lists a file of 7 bytes in the manifest of a package; then damages it, if asked to.
  void List(const std::string& package, const std::string& file, bool damaged = true) const {
    std::filesystem::permissions(Write("aix/" + file, "1234567"), std::filesystem::perms{0644});
    std::ofstream manifest(Path("aix/control/" + package), std::ios::app);
    manifest << file << "\n644 7 862279280\n";
    if (damaged) Write("aix/" + file, "123456x");
  }

  /// Expects a status and a message.
  void Expect(int status, int expected, const std::string& message = kUntouched) {
    EXPECT_EQ(status, expected);
    EXPECT_EQ(Told(), message);
  }

  using Check = std::function<int(TEVINSInstToc*, TEVINSMediaToc*, TEVUnicodeString*)>;
  void Expect(const std::vector<Case>& cases, const Check& check) {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.medium + " on " + c.tree);
      TEVINSMediaToc medium(Write("TOC", c.medium).c_str());
      TEVINSInstToc tree = Tree(c.tree);
      Expect(check(&tree, &medium, &message_), c.status, c.message);
    }
  }
};

TEST_F(TreeChecks, WhatIsStillToInstall) {
  const std::string all = Message("ErrWndProductAllInstalled");
  Expect({{"code:PRD:A\ncode:PRD:B", "code:PRD:A", 1},
          {"code:PRD:A\ncode:SLT:B", "code:PRD:A\nzeb2:PRD:B", 1},
          {"code:SLT:A\ncode:FWK:B\nzeb2:PRD:C", "code:PRD:A", 0, all}},
         [](auto*... passed) { return TEVInsCheckInstall(code, passed...); });
  Expect({{"samples:SMP:S", "code:SMP:S", 1},
          {"samples:SMP:S", "samples:SMP:S", 0, Message("ErrWndSamplesAllInstalled")}},
         TEVInsCheckInstallSMP);
}

TEST_F(TreeChecks, WhichSdkPackagesCanBeInstalled) {
  const std::string all = Message("ErrWndProductAllInstalled");
  const std::string no_code = Message("ErrWndProductCodeNotInstalled");
  const std::string two = "zeb2:PRD:A.zeb2\nzeb2:SLT:B.zeb2";
  TEVINSInstToc code_tree = Tree("code:PRD:A\ncode:FWK:C", "code");
  Expect({{"zeb2:PRD:A.zeb2", "", 1},
          {"zeb2:SLT:C.zeb2x", "", 1},
          {"zeb2:PRD:B.zeb2", "", 0, no_code},
          {"zeb2:PRD:A.zeb2", "zeb2:PRD:A.zeb2", 0, all},
          {two, "zeb2:PRD:A.zeb2", 0, no_code},
          {two, "zeb2:SLT:B.zeb2", 1},
          {"", "", 0, all}},
         [&](auto* sdk, auto* medium, auto* message) {
           return TEVInsCheckInstallZEB(sdk, medium, &code_tree, message);
         });
}

TEST_F(TreeChecks, WhichFixPackagesAreMissing) {
  const std::string a = "code:FSP:A\n", b = "code:FSP:B\n", c = "code:FSP:C\n";
  const std::string all = Message("ErrWndProductAllInstalled");
  Expect({{"", "", 0, all}, {a, "", 1}, {a, a, 0, all}, {a, a + b, 1}, {a + b, a + c, 1}},
         [](auto*... passed) { return TEVInsCheckInstallSPK(code, passed...); });
  // The installed packages that are counted are those of the code, whatever is asked for.
  Expect({{"zeb2:FSP:A", "zeb2:FSP:A", 1}},
         [](auto*... passed) { return TEVInsCheckInstallSPK(zeb2, passed...); });
}

TEST_F(TreeChecks, TheCodeHasTheLevelOnEverySystem) {
  const std::string list = Path("OSUNIX"), none = Message("ErrNoPRESENTForAnyOS", "R12", dir_);
  const auto check = [&] { return TEVInsCheckInstallCode(CharPath(dir_), "R12", &message_); };
  Expect(TEVInsCheckInstallCode(CharPath("/no"), "R12", &message_), 0,
         Message("ErrorNoFile", "/no/OSUNIX") + Message("ErrNoPRESENTForAnyOS", "R12", "/no"));
  Expect(check(), 0, Message("ErrWndOpenControlFile", list, "No such file or directory"));
  for (const std::string& text : {std::string(), std::string("absent"), std::string(100000, 'x')}) {
    Write("OSUNIX", text);
    Expect(check(), 0, none);
  }
  Tree("code:FWK:BASE:ga=R12", "solaris");
  Write("OSUNIX", "absent\tsolaris\n");
  Expect(check(), 1);
  Write("OSUNIX", "solaris aix damaged");
  Write("damaged/control/PRESENT", "\xff\n");
  Tree("code:FWK:BASE:os=aix:ga=R11");
  Expect(check(), 0, Message("ErrWndGALevelCode", "R12", dir_, "R11", "aix"));
  Tree("code:FWK:BASE:os=aix:ga=R12");
  EXPECT_EQ(check(), 0);
  EXPECT_EQ(Told().find("ErrorInitToc|"), 0U);
}

TEST_F(TreeChecks, SystemAndLevelsMustMatch) {
  const std::string base = "code:FWK:B:os=aix:ga=R12\n", pack = base + "code:SPK:S:level=";
  const std::vector<Case> same = {
      {base, base, 1},
      {"code:FWK:B", "code:FWK:B", 1},
      {pack + "2", pack + "3", 1},
      {base, "code:FWK:B:os=hp:ga=R11", 0, Message("ErrWndOS", "aix", "hp")},
      {"code:FWK:B:os=aix", "code:FWK:B", 0, Message("ErrWndOS", "aix", "")},
      {base, "code:FWK:B:os=aix:ga=R11", 0, Message("ErrWndGALevel", "R12", "R11")}};
  for (auto* check : {TEVInsCheckPrereq, TEVInsCheckPrereqGA, TEVInsCheckPrereqGASP}) {
    Expect(same, check);
  }
  Expect({{pack + "2", base, 1}}, TEVInsCheckPrereqGA);
  Expect({{pack + "2", base, 0, Message("ErrWndGASPLevel2", "R12", "2", "R12")},
          {pack + "3", pack + "1", 0, Message("ErrWndGASPLevel1", "R12", "3", "R12", "1")}},
         TEVInsCheckPrereqGASP);
}

TEST_F(TreeChecks, WhichServicePackMayFollow) {
  const std::string commit = dir_ + "/code/command/tevstart -run TEVSoftwareMgt";
  const std::string no_commit = Message("ErrWndNoCommit", "1", "2", commit);
  const auto check = [this](int medium, int tree, int mode) {
    return TEVInsCheckSPKLevel(medium, tree, CharPath(dir_), mode, &message_);
  };
  const struct {
    int medium, tree, mode, committed, pending;
  } kCases[] = {{/*medium=*/2, /*tree=*/1, /*mode=*/0, /*committed=*/1, /*pending=*/-1},
                {/*medium=*/2, /*tree=*/2, /*mode=*/0, /*committed=*/2, /*pending=*/1},
                {/*medium=*/2, /*tree=*/2, /*mode=*/1, /*committed=*/1, /*pending=*/3},
                {/*medium=*/2, /*tree=*/2, /*mode=*/2, /*committed=*/1, /*pending=*/1}};
  for (const auto& c : kCases) Expect(check(c.medium, c.tree, c.mode), c.committed);
  Write("control/SPK.list");
  for (const auto& c : kCases) {
    Expect(check(c.medium, c.tree, c.mode), c.pending, c.pending < 0 ? no_commit : kUntouched);
  }
  Expect(check(1, 2, 0), -1, Message("ErrWndErrorCD", "2", dir_, "1"));
}

TEST_F(TreeChecks, TheCodeHasTheServicePackOfTheMedium) {
  const auto check = [this](auto*, auto* medium, auto* message) {
    return TEVInsCheckCodeLevel(medium, CharPath(dir_), message);
  };
  const std::string medium = "zeb2:SPK:S:level=2", tree = "code:FWK:B:os=AIX\ncode:SPK:P:level=";
  Expect({{medium, "", 0, Message("ErrorNoFile", "/OSUNIX")}}, check);
  Write("CodeDir.txt", dir_ + "\n");
  Write("OSUNIX", "absent aix");
  List("B", "code/b");
  Expect({{medium, tree + "1", 0, Message("ErrorBadMedia_1", "2", "AIX", "2")},
          {medium, tree + "3", 0, Message("ErrorBadMedia_2", "3", "AIX")},
          {medium, tree + "2", 1}},
         check);
  List("P", "code/p");
  const Case damaged = {medium, tree + "2", 0, Message("ErrorMustReinstallSPKCode", "2", "AIX")};
  Write("NUL", std::string(100, 'x'));
  Expect({damaged}, check);
  EXPECT_EQ(Read("NUL"), "code/b: content has changed\ncode/p: content has changed\n");
  std::filesystem::remove("NUL");
  std::filesystem::create_symlink("new", "NUL");
  Expect({damaged}, check);
  EXPECT_FALSE(Exists("new")) << "through the link";
  std::filesystem::remove("NUL");
  mkfifo("NUL", 0666);  // would block
  Expect({damaged}, check);
  pollfd reader = {open("NUL", O_RDONLY | O_NONBLOCK), POLLIN, 0};
  Expect({damaged}, check);
  EXPECT_EQ(poll(&reader, 1, 0), 0) << "the pipe was opened";
  close(reader.fd);
}

TEST_F(TreeChecks, ANameIsInAList) {
  char names[][48] = {"One", "Two", "Three"};
  EXPECT_EQ(TEVInsCheckUnloadCAF(names, 2, names[1]), 1);
  EXPECT_EQ(TEVInsCheckUnloadCAF(names, 2, names[2]), 0);
}

TEST_F(TreeChecks, AServicePackWasInterrupted) {
  const struct {
    const char* record;
    int value, automatic;
  } kRecords[] = {{"3 AUTOMATIC_COMMIT", 3, 1},
                  {"-7\n\tAUTOMATIC_COMMIT\n", -7, 1},
                  {"3 automatic_commit", 3, 0},
                  {"AUTOMATIC_COMMIT", 0, 0}};
  int value = 99, automatic = 99;
  EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 0);
  for (const auto& c : kRecords) {
    Write("control/SPKInterrupted.txt", c.record);
    EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 1) << c.record;
    EXPECT_TRUE(value == c.value && automatic == c.automatic) << c.record;
  }
  Write("control/SPKInterrupted.txt", "3 " + std::string(5000, 'x'));
  EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 1);
  std::filesystem::remove(Path("control/SPKInterrupted.txt"));
  mkfifo(Path("control/SPKInterrupted.txt").c_str(), 0666);  // would block
  EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 0);
}

TEST_F(TreeChecks, TheServicePackIsCommitted) {
  const auto committed = [&](int level) {
    return TEVInsCheckInstallSPKCommitted(CharPath(dir_), level, CharPath("aix"), &message_);
  };
  Tree("code:FWK:B:ga=R12\ncode:SPK:P:level=2");
  Expect(committed(2), 1);
  Expect(committed(3), 0, Message("MsgCheckBadInstalledSPK", dir_, "R12", "3", "2"));
  Write("aix/control/SPK.list");
  Expect(committed(2), 0, Message("MsgCheckInstallSPKNotCommitted", dir_, "R12", "2"));
  Tree("code:SPK:P:level=2");
  Expect(committed(2) + committed(3), 0);
  EXPECT_EQ(TEVInsCheckInstallSPKCommitted(CharPath(dir_), 2, CharPath("no"), &message_), 0);
}

TEST_F(TreeChecks, IntegrityHasThreeVerdicts) {
  TEVINSInstToc tree = Tree("code:PRD:P\ncode:SPK:S:level=2");
  const auto check = [&](int zeb) {
    CharPath os(Path("aix")), report(Path("report"));
    return TEVInsCheckIntegrityGA(&tree, os, report, &message_, zeb);
  };
  List("P", "code/p", false);
  Expect(check(0), 0, Message("CheckIntegrityOK"));
  List("P", "code/q");
  Expect(check(0), -2, Message("ErrCheckMORVELIntegrity"));
  List("S", "code/s");
  Expect(check(0), -3, Message("ErrIntegrityServicePack", "2"));
  Expect(check(2), -3, Message("ErrIntegrityServicePackZEB", "2"));
  const std::string lines = Read(Path("report"));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 5) << lines;
}

TEST_F(TreeChecks, WhereAHotFixMayGo) {
  const std::string base = "code:FWK:B:os=aix:ga=R12\n", pack = base + "code:SPK:S:level=1\n";
  const std::string plain = base + "code:HFX:HF1", for_pack = pack + "code:HFX:HF1";
  const auto check = [this](auto* tree, auto* medium, auto* message) {
    return TEVInsCheckHFXLevel(tree, medium, CharPath(Path("aix")), message);
  };
  List("B", "code/b");
  Expect({{plain, base, 1},
          {plain, "code:FWK:B:os=hp:ga=R12", -1, Message("ErrWndOS", "aix", "hp")},
          {plain, pack, -1, Message("ErrHFXLevelSPK", "HF1", "R12", "1")},
          {for_pack, pack, 1},
          {for_pack, for_pack, -1, Message("ErrHFXAlreadyInstalled", "HF1")},
          {for_pack, pack + "code:HFX:HF0", -1, Message("ErrHFXLevelold", "HF0", "HF1")},
          {pack, base, -1},
          {pack, for_pack, -1},
          {"code:HFX:HF1", "code:SPK:S", -1}},
         check);
  List("S", "code/s");
  Expect({{pack, pack, -1}, {for_pack, pack, -1, Message("ErrHFXneedreinstallSPK", "1", "HF1")}},
         check);
  Write("aix/control/SPK.list");
  Expect({{pack, pack, -1}, {for_pack, for_pack, -1, Message("ErrHFXCommitSPK", "1", "HF1")}},
         check);
}

}  // namespace
