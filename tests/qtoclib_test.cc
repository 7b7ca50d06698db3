#include <qtoclib/TEVINSToc.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <sstream>
#include <tuple>
#include <vector>

#include "checksum.h"
#include "fixture.h"

namespace {

namespace fs = std::filesystem;

std::string Information() {
  char* text = nullptr;
  TEVINSToc::sGetInfoMsg(text);
  return text == nullptr ? "" : text;
}

std::string Names(const TEVINSToc& toc, TEVINSPkg kind, TEVINSType type) {
  const auto list = std::make_unique<TEVINSStockName>();
  toc.GetPackage(kind, type, list.get(), 0);
  std::string names;
  for (int i = 0; i < list->GetNbName(); ++i) names += list->GetName(i) + std::string(" ");
  return names;
}

class TocTest : public Fixture {
 protected:
  TocTest() { TEVINSToc::sResetInfoMsg(); }

  /// Makes the tree "os" with these packages and, in package P's manifest, its two files.
  void MakeTree(const std::string& packages) const {
    fs::remove_all(Path("os"));
    Write("os/control/PRESENT", packages);
    for (const char* file : {"os/code/bin/prog", "os/code/lib"}) {
      chmod(Write(file, "content").c_str(), 0644);
    }
    Write("os/control/P", Listed("code/bin/prog code/lib"));
  }

  /// The two lines that a manifest has for each of these files of the tree, with cksum's own
  /// opinion.
  std::string Listed(const std::string& files) const {
    const std::string command = "cd " + Path("os") + " && cksum " + files;
    const std::string lines = R"( | awk '{ print $3 "\n0644 " $2 " " $1 }')";
    return Captured(1, [&] { std::ignore = std::system((command + lines).c_str()); });
  }

  /// The verdict on the tree and the report, in one text.
  std::string Integrity() const {
    const std::string path = Path("os");
    std::ostringstream report;
    const int verdict = TEVINSInstToc(path.c_str()).CheckIntegrity(report, path.c_str(), 0, 0);
    return std::to_string(verdict) + "\n" + report.str();
  }
};

TEST_F(TocTest, EveryLineCountsOrIsTold) {
  const std::string name47(47, 'n'), many(10'000, ':');
  const std::vector<std::pair<std::string, std::string>> kLines = {
      {"unknownM:GRP:" + name47 + many + "os=last", "counts"},
      {"zeb2:FIX:X.zeb2:no key:=:os:level=high\r\ncode:SPK:X:level=2147483647", "counts"},
      {" \t\r\n# code:PRD", "counts for nothing"},
      {"code:PRD", "it has fewer than three fields"},
      {"code:PRD:" + many, "it has no package name"},
      {std::string("code:PRD:X\0Y", 12), "it has a zero byte"},
      {"Code:PRD:X", "its first field is no content type"},
      {"code:PRDX:X", "its second field is no package kind"},
      {"code:SPK:X:level=2147483648", "its level is no number above 0"},
      {"code:PRD:" + name47 + "n", "its package name is longer than 47 characters"}};
  for (const auto& [line, result] : kLines) {
    TEVINSToc::sResetInfoMsg();
    const std::string path = Write("TOC", "code:SMP:A\n" + line + "\ncode:SMP:Z");
    const TEVINSMediaToc toc(path.c_str());
    EXPECT_EQ(toc.GetNbToc() > 2, result == "counts");
    EXPECT_EQ(Information(), result[0] == 'c' ? "" : path + ", line 2: " + result + "\n");
    EXPECT_EQ(Names(toc, SMP, code), "A Z ") << line;
  }
}

TEST_F(TocTest, ListsAndReportsHaveALimit) {
  std::string table;
  for (int i = 1; i <= 4098; ++i) table += "code:PRD:P" + std::to_string(i) + "\n";
  const std::string path = Write("TOC", table);
  const TEVINSInstToc toc(path.c_str());
  const std::string names = Names(toc, PRD, code);
  EXPECT_EQ(names.substr(names.size() - 12), "P4095 P4096 ");
  EXPECT_EQ(Information(), path + ": packages that found no room in a list of 4096: 2\n");
  TEVINSStockNameInst installed(-1);
  toc.GetPackageInst(PRD, code, &installed, 0);
  EXPECT_STREQ(installed.GetName(4097), "P4098");
  for (int i = 0; i < 1000; ++i) table.insert(0, "what?\n");
  EXPECT_EQ(TEVINSMediaToc(Write("TOC", table).c_str()).GetNbToc(), 4098);
  EXPECT_NE(Information().find("besides these: 980\n"), std::string::npos) << Information();
}

TEST_F(TocTest, InstalledTables) {
  const std::string tree = MakeDir("PRESENT");  // a directory like any other
  EXPECT_EQ(TEVINSInstToc(tree.c_str()).GetNbToc(), 0);
  const std::string present = Write("PRESENT/control/PRESENT", "zeb2:FIX:F\n");
  for (const std::string& path : {tree, present}) {
    EXPECT_EQ(TEVINSInstToc(path.c_str()).IsInstalled("F", zeb2), 0);
    EXPECT_EQ(TEVINSInstToc(path.c_str()).IsInstalled("F", code), -1);
  }
  EXPECT_EQ(Information(), "");
  chmod(present.c_str(), 0);
  AsNobody([&] {
    EXPECT_EQ(TEVINSInstToc(tree.c_str()).GetNbToc(), 0);
    EXPECT_EQ(TEVINSMediaToc("/dev/zero").GetNbToc(), 0);
    EXPECT_EQ(Information(), present + ": cannot be read: Permission denied\n" +
                                 "/dev/zero: cannot be read: Operation not supported\n");
  });
}

TEST_F(TocTest, IntegrityReportsEachDamage) {
  MakeTree("code:PRD:P\n");
  const std::string prog = Listed("code/bin/prog"), wrong = "code/bin/prog\n0644 7 1\n";
  const std::string changed = "code/bin/prog: content has changed\n";
  const std::string no_path = "2\ncontrol/S, line 1: it is not the path of a file in the tree\n";
  const std::string no_details =
      "2\ncontrol/S, line 1: the mode, size and checksum of the file do not follow\n";
  const std::string last = "code:PRD:P\ncode:SPK:S\n", first = "code:FSP:S\ncode:PRD:P\n";
  const struct {
    std::string packages, manifest;  ///< of the tree, and of package S
    std::string damage;              ///< a command run in the tree
    std::string expected;
  } kCases[] = {
      {last, "./code//bin/prog\r\n100644  7\t" + prog.substr(prog.rfind(' ')), ":", "1\n"},
      {last, "", "rm -r code/bin; touch code/bin", "0\ncode/bin/prog: is missing\n"},
      {last, "", "echo >>code/lib", "0\ncode/lib: size is 8, should be 7\n"},
      {last, "", "chmod 4644 code/lib", "0\ncode/lib: mode is 4644, should be 0644\n"},
      {last, "", "mv code/lib l; ln -s ../l code/lib", "0\ncode/lib: is not a regular file\n"},
      // The last package that lists a file decides, both what the file should be and whose it is.
      {last, "\n" + wrong + " \t\n", ":", "2\n" + changed},
      {first, prog, "printf Content >code/bin/prog", "0\n" + changed},
      {last, "/etc/passwd\n0644 1 1\n" + prog, ":", no_path},
      {first, "code/../../x\n0644 1 1\n", ":", no_path},
      {last, "code/lib\n" + wrong, "echo >>code/lib", no_details + changed},
      {"code:SPK:S\ncode:SPK:S\n", "a\x1B[2J\x7F\n0644 1 1\n", ":", "2\na?[2J?: is missing\n"},
      {last, "x\n8 7 1\n", ":", no_details},
      {last, "x\n644 7x 1\n", ":", no_details},
      {last, "x\n644 7 -1\n", ":", no_details},
      {last, "x\n644 7 1 x\n", ":", no_details},
      {last, " \n", ":", "2\ncontrol/S: lists no file\n"},
      {last, "", "mkdir control/S", "2\ncontrol/S: cannot be read: Is a directory\n"},
      {"code:SPK:..\ncode:SPK:.\ncode:SPK:../control/S\n", "/x", ":", "1\n"},
      {last, prog, "rm -r control/S control/P", "1\n"}};
  for (const auto& c : kCases) {
    MakeTree(c.packages);
    if (!c.manifest.empty()) Write("os/control/S", c.manifest);
    ASSERT_EQ(std::system(("cd " + Path("os") + " && { " + c.damage + "; }").c_str()), 0);
    EXPECT_EQ(Integrity(), c.expected) << c.packages << c.manifest << c.damage;
  }
}

TEST_F(TocTest, IntegrityOfWhatCannotBeRead) {
  MakeTree("code:PRD:P\n");
  Write("os/control/P", Listed("code/lib").replace(9, 4, "0000"));
  chmod(Path("os/code/lib").c_str(), 0);
  AsNobody([&] { EXPECT_EQ(Integrity(), "0\ncode/lib: cannot be read: Permission denied\n"); });
  fs::remove_all(Path("os"));
  EXPECT_EQ(Integrity(), "0\n" + Path("os") + ": is no directory\n");
}

TEST_F(TocTest, ChecksumsAreThoseOfCksum) {
  MakeTree("code:PRD:P\n");
  std::mt19937 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same at every run
  for (const uint32_t size : {0U, 1U, 15U, 16U, 63U, 64U, 65U, 79U, 128U, 1000U, 65539U, 131172U}) {
    std::string content(size, ' ');
    for (char& c : content) c = static_cast<char>(random());
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
    EXPECT_EQ(kwinst::UpdateCrc(size, bytes, size), kwinst::UpdateCrcByTable(size, bytes, size));
    Write("os/code/" + std::to_string(size), content);
  }
  Write("os/control/P", Listed("code/[0-9]*"));
  EXPECT_EQ(Integrity(), "1\n");
}

}  // namespace
