#include <kwinstutil/checks.h>
#include <kwinstutil/toc.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "fixture.h"

namespace {

using MediumToc = std::unique_ptr<TEVINSMediaToc>;
using TreeToc = std::unique_ptr<TEVINSInstToc>;

constexpr const char* kUntouched = "untouched";

/// Checks that hold a medium against a tree. They run in the test's directory, since some leave a
/// file NUL in the current one.
class TreeChecks : public Fixture {
 protected:
  TreeChecks() { std::filesystem::current_path(dir_); }
  ~TreeChecks() override { std::filesystem::current_path("/"); }

  MediumToc Medium(const std::string& table) const {
    return std::make_unique<TEVINSMediaToc>(Write("TOC", table).c_str());
  }

  /// The table of the system `os` of the test's tree, made with these lines.
  TreeToc Tree(const std::string& table, const std::string& os = "aix") const {
    return std::make_unique<TEVINSInstToc>(Write(os + "/control/PRESENT", table).c_str());
  }

  /// Lists a file of 7 bytes in the manifest of a package; then damages it, if asked to.
  void List(const std::string& package, const std::string& file, bool damaged) const {
    chmod(Write("aix/" + file, "1234567").c_str(), 0644);
    std::ofstream manifest(Path("aix/control/" + package), std::ios::app);
    manifest << file << "\n644 7 862279280\n";
    if (damaged) Write("aix/" + file, "123456x");
  }

  /// Expects a status and a message, and forgets the message.
  void Expect(int status, int expected, const std::string& message = kUntouched) {
    EXPECT_EQ(status, expected);
    EXPECT_EQ(message_.ConvertToChar(), message);
    message_ = kUntouched;
  }

  TEVUnicodeString message_ = kUntouched;
};

TEST_F(TreeChecks, WhatIsStillToInstall) {
  const std::string all = Message("ErrWndProductAllInstalled");
  const std::string all_samples = Message("ErrWndSamplesAllInstalled");
  const struct {
    const char *medium, *tree;
    bool product, sample;
  } kCases[] = {{"code:PRD:A\ncode:PRD:B\nsamples:SMP:S", "code:PRD:A", true, true},
                {"code:SLT:A\nsamples:SMP:S", "code:PRD:A\nsamples:SMP:S", false, false},
                {"code:PRD:A\ncode:SLT:B", "code:PRD:A\nzeb2:PRD:B", true, false},
                {"code:FWK:A\nzeb2:PRD:B", "", false, false}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.medium);
    const MediumToc medium = Medium(c.medium);
    const TreeToc tree = Tree(c.tree);
    int status = TEVInsCheckInstall(code, tree.get(), medium.get(), &message_);
    Expect(status, c.product, c.product ? kUntouched : all);
    status = TEVInsCheckInstallSMP(tree.get(), medium.get(), &message_);
    Expect(status, c.sample, c.sample ? kUntouched : all_samples);
    Expect(TEVInsCheckInstall(code, nullptr, medium.get(), &message_), 0, all);
    EXPECT_EQ(TEVInsCheckInstallSMP(nullptr, medium.get(), nullptr), 0);
  }
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  Expect(TEVInsCheckInstallSMP(nullptr, nullptr, &message_), 0,
         "All the samples on the media are already installed\n");
}

TEST_F(TreeChecks, WhichSdkPackagesCanBeInstalled) {
  const std::string all = Message("ErrWndProductAllInstalled");
  const std::string no_code = Message("ErrWndProductCodeNotInstalled");
  const std::string two = "zeb2:PRD:A.zeb2\nzeb2:SLT:B.zeb2";
  const struct {
    std::string medium, sdk, code, message;
  } kCases[] = {{"zeb2:PRD:A.zeb2", "", "code:PRD:A", kUntouched},
                {"zeb2:SLT:A.zeb2x", "", "code:FWK:A", kUntouched},
                {"zeb2:PRD:A", "", "code:PRD:A", kUntouched},
                {"zeb2:PRD:A.zeb2", "", "zeb2:PRD:A", no_code},
                {"zeb2:PRD:A.zeb2", "zeb2:PRD:A.zeb2", "code:PRD:A", all},
                {two, "zeb2:PRD:A.zeb2", "code:PRD:A", no_code},
                {two, "zeb2:SLT:B.zeb2", "code:PRD:A", kUntouched},
                {"", "", "", all}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.medium + " on " + c.sdk);
    const MediumToc medium = Medium(c.medium);
    const TreeToc sdk = Tree(c.sdk, "sdk"), code_tree = Tree(c.code);
    const int status = c.message == kUntouched ? 1 : 0;
    Expect(TEVInsCheckInstallZEB(sdk.get(), medium.get(), code_tree.get(), &message_), status,
           c.message);
    EXPECT_EQ(TEVInsCheckInstallZEB(sdk.get(), medium.get(), code_tree.get(), nullptr), status);
    Expect(TEVInsCheckInstallZEB(nullptr, medium.get(), nullptr, &message_), 0,
           c.medium.empty() ? all : no_code);
  }
}

TEST_F(TreeChecks, WhichFixPackagesAreMissing) {
  const auto table = [](const std::string& names) {
    std::string lines;
    for (const char name : names) lines += std::string("code:FSP:") + name + "\n";
    return lines;
  };
  const struct {
    std::string medium, tree;
    int status;
  } kCases[] = {{"", "", 0},    {"A", "", 1},    {"A", "A", 0},
                {"A", "AB", 1}, {"AB", "AC", 1}, {"", "A", 1}};
  for (const auto& c : kCases) {
    const MediumToc medium = Medium(table(c.medium));
    const int status =
        TEVInsCheckInstallSPK(code, Tree(table(c.tree)).get(), medium.get(), &message_);
    Expect(status, c.status, status == 1 ? kUntouched : Message("ErrWndProductAllInstalled"));
  }
  EXPECT_EQ(TEVInsCheckInstallSPK(code, nullptr, Medium("").get(), nullptr), 0);
  EXPECT_EQ(TEVInsCheckInstallSPK(code, nullptr, Medium("code:FSP:A").get(), nullptr), 1);
  // The installed packages that are counted are those of the code, whatever is asked for.
  const MediumToc medium = Medium("zeb2:FSP:A");
  EXPECT_EQ(TEVInsCheckInstallSPK(zeb2, Tree("zeb2:FSP:A").get(), medium.get(), nullptr), 1);
}

TEST_F(TreeChecks, TheCodeHasTheLevelOnEverySystem) {
  const std::string list = Path("OSUNIX"), none = Message("ErrNoPRESENTForAnyOS", "R12", dir_);
  const auto check = [&] { return TEVInsCheckInstallCode(CharPath(dir_), "R12", &message_); };
  Expect(TEVInsCheckInstallCode(CharPath("/no"), "R12", &message_), 0,
         Message("ErrorNoFile", "/no/OSUNIX") + Message("ErrNoPRESENTForAnyOS", "R12", "/no"));
  Expect(check(), 0, Message("ErrWndOpenControlFile", list, "No such file or directory"));
  MakeDir("OSUNIX");
  Expect(check(), 0, Message("ErrWndOpenControlFile", list, "Is a directory"));
  std::filesystem::remove(list);
  for (const std::string& text : {std::string(), std::string("absent"), std::string(100000, 'x')}) {
    Write("OSUNIX", text);
    Expect(check(), 0, none);
  }
  // A name of 48 characters is read as two.
  const std::string name47(47, 'n');
  Tree("code:FWK:BASE:os=solaris:ga=R12", name47);
  std::string systems = "absent\t" + name47 + "m\n";
  for (int i = 0; i < 10000; ++i) systems += " s" + std::to_string(i);
  Write("OSUNIX", systems);
  Expect(check(), 1);
  Write("OSUNIX", name47 + " aix damaged");
  Write("damaged/control/PRESENT", "\xff\n");
  Tree("code:FWK:BASE:os=aix:ga=R11");
  Expect(check(), 0, Message("ErrWndGALevelCode", "R12", dir_, "R11", "aix"));
  Tree("code:FWK:BASE");
  Expect(check(), 0, Message("ErrWndGALevelCode", "R12", dir_, "", ""));
  EXPECT_EQ(TEVInsCheckInstallCode(CharPath(dir_), "R12", nullptr), 0);
  Tree("code:FWK:BASE:os=aix:ga=R12");
  EXPECT_EQ(check(), 0);
  EXPECT_EQ(std::string(message_.ConvertToChar()).find("ErrorInitToc|"), 0U);
}

TEST_F(TreeChecks, FindsTheSdkDirectory) {
  char result[1024] = "before";
  const auto check = [&] { return TEVInsCheckZEBDir(CharPath(dir_), result); };
  EXPECT_EQ(check(), 0);
  Write("ZEBDir.txt", "/opt/sdk\nmore");
  EXPECT_EQ(check(), 1);
  EXPECT_STREQ(result, "/opt/sdk");
  Write("ZEBDir.txt", std::string(2000, 'x'));
  EXPECT_EQ(check(), 1);
  EXPECT_EQ(result, std::string(1023, 'x'));
  std::filesystem::remove(Path("ZEBDir.txt"));
  MakeDir("ZEBDir.txt");
  EXPECT_EQ(check(), 1);
  EXPECT_EQ(result, std::string(1023, 'x')) << "changed by an unreadable file";
  EXPECT_EQ(TEVInsCheckZEBDir(nullptr, result), 0);
}

TEST_F(TreeChecks, SystemAndLevelsMustMatch) {
  const std::string base = "code:FWK:B:os=aix:ga=R12\n", pack = base + "code:SPK:S:level=";
  const struct {
    std::string medium, tree, message, message_with_pack;
  } kCases[] = {
      {base, base, kUntouched, kUntouched},
      {"code:FWK:B", "code:FWK:B", kUntouched, kUntouched},
      {base, "code:FWK:B:os=hp:ga=R11", Message("ErrWndOS", "aix", "hp"), ""},
      {"code:FWK:B:os=aix", "code:FWK:B", Message("ErrWndOS", "aix", ""), ""},
      {base, "code:FWK:B:os=aix:ga=R11", Message("ErrWndGALevel", "R12", "R11"), ""},
      {pack + "3", pack + "3", kUntouched, kUntouched},
      {pack + "2", pack + "3", kUntouched, kUntouched},
      {pack + "2", base, kUntouched, Message("ErrWndGASPLevel2", "R12", "2", "R12")},
      {pack + "3", pack + "1", kUntouched, Message("ErrWndGASPLevel1", "R12", "3", "R12", "1")}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.medium + " on " + c.tree);
    const MediumToc medium = Medium(c.medium);
    const TreeToc tree = Tree(c.tree);
    const int status = c.message == kUntouched ? 1 : 0;
    const std::string with_pack = status == 0 ? c.message : c.message_with_pack;
    Expect(TEVInsCheckPrereq(tree.get(), medium.get(), &message_), status, c.message);
    Expect(TEVInsCheckPrereqGA(tree.get(), medium.get(), &message_), status, c.message);
    Expect(TEVInsCheckPrereqGASP(tree.get(), medium.get(), &message_),
           with_pack == kUntouched ? 1 : 0, with_pack);
  }
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  const MediumToc medium = Medium(pack + "3");
  const TreeToc tree = Tree(base);
  const std::string forbidden = "It is forbidden to install GA R12 Service Pack 3 data on GA R12 ";
  int status = TEVInsCheckPrereqGASP(tree.get(), medium.get(), &message_);
  Expect(status, 0, forbidden + "with no Service Pack\n");
  status = TEVInsCheckPrereqGASP(Tree(pack + "1").get(), medium.get(), &message_);
  Expect(status, 0, forbidden + "Service Pack 1\n");
  Expect(TEVInsCheckPrereq(nullptr, medium.get(), &message_), 1);
  Expect(TEVInsCheckPrereqGA(tree.get(), nullptr, &message_), 0);
  Expect(TEVInsCheckPrereqGASP(nullptr, medium.get(), &message_), 0);
  EXPECT_EQ(TEVInsCheckPrereq(tree.get(), medium.get(), nullptr), -1);
  EXPECT_EQ(TEVInsCheckPrereqGA(tree.get(), medium.get(), nullptr), -1);
  EXPECT_EQ(TEVInsCheckPrereqGASP(tree.get(), medium.get(), nullptr), -1);
}

TEST_F(TreeChecks, WhichServicePackMayFollow) {
  const std::string commit = dir_ + "/code/command/tevstart -run TEVSoftwareMgt";
  const std::string no_commit = Message("ErrWndNoCommit", "1", "2", commit);
  const std::string older = Message("ErrWndErrorCD", "2", dir_, "1");
  const struct {
    int medium, tree, mode, committed, pending;
    std::string committed_message, pending_message;
  } kCases[] = {{2, 1, 0, 1, -1, kUntouched, no_commit}, {2, 1, 1, 1, -1, kUntouched, no_commit},
                {1, 2, 0, -1, -1, older, older},         {2, 2, 0, 2, 1, kUntouched, kUntouched},
                {2, 2, 1, 1, 3, kUntouched, kUntouched}, {2, 2, 2, 1, 1, kUntouched, kUntouched}};
  const auto check = [&](const auto& c) {
    return TEVInsCheckSPKLevel(c.medium, c.tree, CharPath(dir_), c.mode, &message_);
  };
  for (const auto& c : kCases) Expect(check(c), c.committed, c.committed_message);
  Write("control/SPK.list");
  for (const auto& c : kCases) Expect(check(c), c.pending, c.pending_message);
  EXPECT_EQ(TEVInsCheckSPKLevel(2, 1, CharPath(dir_), 0, nullptr), -1);
}

TEST_F(TreeChecks, TheCodeHasTheServicePackOfTheMedium) {
  const MediumToc medium = Medium("zeb2:SPK:S:level=2");
  const auto check = [&] { return TEVInsCheckCodeLevel(medium.get(), CharPath(dir_), &message_); };
  Expect(check(), 0, Message("ErrorNoFile", "/OSUNIX"));
  EXPECT_EQ(TEVInsCheckCodeLevel(nullptr, nullptr, nullptr), 0);
  Write("CodeDir.txt", dir_ + "\n");
  Expect(check(), 0, Message("ErrorNoFile", Path("OSUNIX")));
  Write("OSUNIX", "absent aix");
  Expect(check(), 1);
  EXPECT_FALSE(Exists(Path("NUL")));

  Tree("code:FWK:B:os=AIX\ncode:SPK:P:level=1");
  Expect(check(), 0, Message("ErrorBadMedia_1", "2", "AIX", "2"));
  EXPECT_EQ(TEVInsCheckCodeLevel(medium.get(), CharPath(dir_), nullptr), 0);
  Tree("code:FWK:B:os=AIX\ncode:SPK:P:level=3");
  Expect(check(), 0, Message("ErrorBadMedia_2", "3", "AIX"));

  Tree("code:FWK:B:os=AIX\ncode:SPK:P:level=2");
  Expect(check(), 1);
  EXPECT_TRUE(Exists(Path("NUL")));
  List("B", "code/b", true);
  Expect(check(), 1);
  List("P", "code/p", true);
  Expect(check(), 0, Message("ErrorMustReinstallSPKCode", "2", "AIX"));
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  Expect(check(), 0, "You must re-install Code Service Pack level 2 for OS AIX\n");
}

TEST_F(TreeChecks, CommitState) {
  char names[][48] = {"One", "Two"};
  EXPECT_EQ(TEVInsCheckUnloadCAF(names, 2, CharPath("Two")), 1);
  EXPECT_EQ(TEVInsCheckUnloadCAF(names, 1, CharPath("Two")), 0);
  EXPECT_EQ(TEVInsCheckUnloadCAF(nullptr, -1, CharPath("Two")), 0);

  const std::string long_word(5000, 'x');
  const struct {
    std::string record;
    int value, automatic;
  } kRecords[] = {{"3 AUTOMATIC_COMMIT", 3, 1}, {"-7\n\tAUTOMATIC_COMMIT\n", -7, 1},
                  {"3 automatic_commit", 3, 0}, {"AUTOMATIC_COMMIT", 0, 0},
                  {"1 " + long_word, 1, 0},     {"3", 3, 0}};
  int value = 99, automatic = 99;
  EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 0);
  EXPECT_EQ(TEVInsCheckInterruptSPK(nullptr, &value, &automatic), 0);
  EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), nullptr, &automatic), 0);
  for (const auto& c : kRecords) {
    Write("control/SPKInterrupted.txt", c.record);
    EXPECT_EQ(TEVInsCheckInterruptSPK(CharPath(dir_), &value, &automatic), 1) << c.record;
    EXPECT_TRUE(value == c.value && automatic == c.automatic) << c.record;
  }
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
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  const std::string text = dir_ + " is not a valid installation path to install  R12 SP";
  Expect(committed(2), 0, text + "2 ZEB CDROM because code SP is not committed\n");
  Expect(committed(3), 0, text + "3 ZEB CDROM because installed SPK level is 2\n");
  Tree("code:SPK:P:level=2");
  Expect(committed(2), 0);
  Expect(committed(1), 0);
  EXPECT_EQ(TEVInsCheckInstallSPKCommitted(CharPath(dir_), 2, CharPath("aix"), nullptr), -1);
  EXPECT_EQ(TEVInsCheckInstallSPKCommitted(CharPath(dir_), 2, CharPath("no"), &message_), 0);
}

TEST_F(TreeChecks, IntegrityHasThreeVerdicts) {
  const TreeToc tree = Tree("code:PRD:P\ncode:SPK:S:level=2");
  std::ostringstream report;
  const auto check = [&](int zeb) {
    return TEVInsCheckIntegrityGA(tree.get(), CharPath(Path("aix")), report, &message_, zeb);
  };
  List("P", "code/p", false);
  Expect(check(0), 0, Message("CheckIntegrityOK"));
  List("P", "code/q", true);
  Expect(check(0), -2, Message("ErrCheckMORVELIntegrity"));
  List("S", "code/s", true);
  Expect(check(0), -3, Message("ErrIntegrityServicePack", "2"));
  Expect(check(2), -3, Message("ErrIntegrityServicePackZEB", "2"));
  Expect(TEVInsCheckResult(nullptr, CharPath(""), report, &message_, 0), -2,
         Message("ErrCheckMORVELIntegrity"));
  EXPECT_NE(report.str().find("code/s"), std::string::npos);

  const auto check_to = [&](const std::string& file) {
    return TEVInsCheckIntegrityGA(tree.get(), CharPath(Path("aix")), CharPath(file), &message_, 0);
  };
  for (const std::string& file : {Path("report"), Path("report"), std::string("/no/report")}) {
    Expect(check_to(file), -3, Message("ErrIntegrityServicePack", "2"));
  }
  const std::string lines = Read(Path("report"));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 4) << lines;
}

TEST_F(TreeChecks, WhereAHotFixMayGo) {
  const std::string base = "code:FWK:B:os=aix:ga=R12\n";
  const std::string pack = base + "code:SPK:S:level=1\n";
  const MediumToc plain = Medium(base + "code:HFX:HF1");
  const MediumToc for_pack = Medium(pack + "code:HFX:HF1");
  const auto check = [&](const MediumToc& medium, const std::string& tree) {
    return TEVInsCheckHFXLevel(Tree(tree).get(), medium.get(), CharPath(Path("aix")), &message_);
  };
  Expect(check(plain, base), 1);
  EXPECT_FALSE(Exists(Path("NUL"))) << "nothing to look at without a service pack";
  Expect(check(plain, "code:FWK:B:os=hp:ga=R12"), -1, Message("ErrWndOS", "aix", "hp"));
  Expect(check(plain, pack), -1, Message("ErrHFXLevelSPK", "HF1", "R12", "1"));
  Expect(check(for_pack, pack), 1);
  EXPECT_TRUE(Exists(Path("NUL")));
  Expect(check(for_pack, pack + "code:HFX:HF1"), -1, Message("ErrHFXAlreadyInstalled", "HF1"));
  Expect(check(for_pack, pack + "code:HFX:HF0"), -1, Message("ErrHFXLevelold", "HF0", "HF1"));
  List("B", "code/b", true);
  Expect(check(for_pack, pack), 1);
  List("S", "code/s", true);
  Expect(check(for_pack, pack), -1, Message("ErrHFXneedreinstallSPK", "1", "HF1"));
  const MediumToc nameless = Medium(pack);
  Expect(check(nameless, pack), -1);
  Expect(check(nameless, base), -1);
  Expect(check(nameless, pack + "code:HFX:HF0"), -1);
  Write("aix/control/SPK.list");
  Expect(check(for_pack, pack + "code:HFX:HF1"), -1, Message("ErrHFXCommitSPK", "1", "HF1"));
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  Expect(check(for_pack, pack), -1,
         "You need to commit Service Pack level 1 before installing hot ifx HF1\n");
  std::filesystem::remove(Path("aix/control/SPK.list"));
  Expect(check(for_pack, pack), -1, "You need to reinstall Service Pack 1 before installing HF1\n");
  Expect(check(plain, pack), -1,
         "It is impossible to install hot fix HF1 on R12 with Service Pack level 1\n");
  Expect(check(for_pack, pack + "code:HFX:HF1"), -1, "Hot fix HF1 is already installed\n");
  Expect(check(for_pack, pack + "code:HFX:HF0"), -1,
         "You need to remove hot fix HF0 before installing HF1\n");
  EXPECT_EQ(TEVInsCheckHFXLevel(nullptr, plain.get(), CharPath(dir_), &message_), -1);
  EXPECT_EQ(TEVInsCheckHFXLevel(Tree(base).get(), plain.get(), nullptr, &message_), -1);
  EXPECT_EQ(TEVInsCheckHFXLevel(Tree(base).get(), plain.get(), CharPath(dir_), nullptr), -1);
}

}  // namespace
