#include <qtoclib/TEVINSToc.h>
#include <sys/stat.h>

#include <algorithm>
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

/// A list as callers make it: zeroed bytes, and no constructor or destructor.
struct ListInBytes {
  TEVINSStockName* get() { return reinterpret_cast<TEVINSStockName*>(bytes.data()); }
  std::vector<char> bytes = std::vector<char>(sizeof(TEVINSStockName));
};

std::string Names(const TEVINSToc& toc, TEVINSPkg kind, TEVINSType type) {
  ListInBytes bytes;
  TEVINSStockName* list = bytes.get();
  toc.GetPackage(kind, type, list, 0);
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
    Write("os/control/P", Listed("code/bin/prog") + Listed("code/lib"));
  }

  /// The two lines that a manifest has for a file of the tree, with cksum's own opinion of it.
  std::string Listed(const std::string& file) const {
    const std::string command = "cksum <" + Path("os/" + file);
    std::string crc, size;
    std::istringstream(Captured(1, [&] { std::ignore = std::system(command.c_str()); })) >> crc >>
        size;
    return file + "\n0644 " + size + " " + crc + "\n";
  }

  /// The verdict on the tree and the report, in one text.
  std::string Integrity() const {
    const std::string path = Path("os");
    std::ostringstream report;
    const int verdict = TEVINSInstToc(path.c_str()).CheckIntegrity(report, path.c_str(), 0, 0);
    return std::to_string(verdict) + "\n" + report.str();
  }

  std::mt19937 random_{1};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same at every run
};

TEST_F(TocTest, EveryLineCountsOrIsTold) {
  const std::string name47(47, 'n'), many(10'000, ':');
  const std::map<std::string, std::vector<std::string>> kLines = {
      {"counts",
       {"code:PRD:X", "zeb2:FIX:X.zeb2:no key:=:os:other=1\r", "unknownM:GRP:" + name47,
        "code:PRD:X" + many + "os=last", "code:PRD:X:level=high", "code:SPK:X:level=2147483647"}},
      {"counts for nothing", {"", " \t\r", "# code:PRD"}},
      {"it has fewer than three fields", {"code:PRD"}},
      {"it has no package name", {"code:PRD:", "code:PRD:" + many}},
      {"it has a zero byte", {std::string("code:PRD:X\0Y", 12)}},
      {"its first field is no content type", {"Code:PRD:X"}},
      {"its second field is no package kind", {"code:PRDX:X"}},
      {"its level is no number above 0",
       {"code:HFX:X:level=0", "code:SPK:X:level=2147483648", "code:HFX:X:level=2x"}},
      {"its package name is longer than 47 characters",
       {"code:PRD:" + name47 + "n", "code:PRD:" + std::string(3'000'000, 'x')}}};
  for (const auto& [result, lines] : kLines) {
    for (const std::string& line : lines) {
      SCOPED_TRACE(line.substr(0, 60));
      TEVINSToc::sResetInfoMsg();
      const std::string path = Write("TOC", "code:PRD:A\n" + line + "\ncode:PRD:Z");
      const TEVINSMediaToc toc(path.c_str());
      EXPECT_EQ(toc.GetNbToc(), result == "counts" ? 3 : 2);
      const std::string told = path + ", line 2: ";
      EXPECT_EQ(Information(), result[0] == 'c' ? "" : told + result + "\n");
      EXPECT_EQ(Names(toc, PRD, code).substr(0, 2) + Names(toc, FWK, code), "A ");
    }
  }
}

TEST_F(TocTest, LevelsAndSystem) {
  // For each table the system, the level, that of the service pack, the hot fix and its level.
  const std::map<std::string, std::string> kCases = {
      {"code:FWK:B:os=aix:ga=R1=2\ncode:PRD:C:os=hp:os=sun:ga=\n", "sun  0 - 0"},
      {"code:FWK:B:os=aix\ncode:bad:C:os=sun\n", "aix - 0 - 0"},
      {"code:SPK:S\n", "- - 1 - 0"},
      {"code:SPK:S:level=3\nzeb2:SPK:T:level=+2\ncode:FSP:F:level=9\n", "- - 3 - 0"},
      {"code:HFX:H:level=5\ncode:HFX:I:level=4\ncode:PRD:P:level=8\n", "- - 0 I 4"}};
  const auto text = [](const char* value) { return value == nullptr ? "-" : value; };
  for (const auto& [table, expected] : kCases) {
    const TEVINSMediaToc toc(Write("TOC", table).c_str());
    std::ostringstream values;
    values << text(toc.GetOS()) << ' ' << text(toc.GetGALevel()) << ' ' << toc.GetSPKLevel(1) << ' '
           << text(toc.GetHFXName()) << ' ' << toc.GetHFXLevel();
    EXPECT_EQ(values.str(), expected) << table;
  }
}

TEST_F(TocTest, ListsAndReportsHaveALimit) {
  std::string table = "zeb2:PRD:other\ncode:FIX:other\n";
  for (int i = 1; i <= 4096; ++i) table += "code:PRD:P" + std::to_string(i) + "\n";
  ListInBytes bytes;
  TEVINSStockName* list = bytes.get();
  TEVINSMediaToc(Write("TOC", table).c_str()).GetPackage(PRD, code, list, 1);
  EXPECT_EQ(list->GetNbName(), 4096);
  EXPECT_STREQ(list->GetName(4095), "P4096");
  EXPECT_EQ(list->GetName(4096), nullptr);
  EXPECT_EQ(list->GetName(-1), nullptr);
  EXPECT_EQ(Information(), "");

  const std::string path = Write("TOC", table + "code:PRD:a\ncode:PRD:b\n");
  const TEVINSInstToc toc(path.c_str());
  EXPECT_EQ(Names(toc, PRD, code).substr(0, 6), "P1 P2 ");
  EXPECT_EQ(Information(), path + ": packages that found no room in a list of 4096: 2\n");
  TEVINSStockNameInst installed(-1);
  toc.GetPackageInst(PRD, code, &installed, 0);
  EXPECT_EQ(installed.GetNbName(), 4098);
  EXPECT_STREQ(installed.GetName(4097), "b");
  EXPECT_EQ(installed.GetName(4098), nullptr);
  toc.GetPackage(PRD, code, nullptr, 0);
  EXPECT_FALSE(ListInBytes().get()->Add(std::string(52, 'x').c_str()));
  EXPECT_TRUE(ListInBytes().get()->Add(std::string(51, 'x').c_str()));

  for (int i = 0; i < 1000; ++i) table.insert(0, "what?\n");
  TEVINSToc::sResetInfoMsg();
  EXPECT_EQ(TEVINSMediaToc(Write("TOC", table).c_str()).GetNbToc(), 4098);
  const std::string told = Information();
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 21);
  EXPECT_NE(told.find("besides these: 980\n"), std::string::npos) << told;
}

TEST_F(TocTest, InstalledTables) {
  const std::string tree = MakeDir("tree");
  EXPECT_EQ(TEVINSInstToc(tree.c_str()).GetNbToc(), 0);
  const std::string present = Write("tree/control/PRESENT", "code:PRD:Modeler\nzeb2:FIX:F\n");
  for (const std::string& path : {tree, present}) {
    const TEVINSInstToc toc(path.c_str());
    EXPECT_EQ(toc.GetNbToc(), 2);
    EXPECT_EQ(toc.IsInstalled("Modeler", code), 0);
    EXPECT_EQ(toc.IsInstalled("F", zeb2), 0);
    EXPECT_EQ(toc.IsInstalled("F", code), -1);
    EXPECT_EQ(toc.IsInstalled(nullptr, code), -1);
  }
  EXPECT_EQ(Information(), "");

  MakeDir("other/control/PRESENT");
  chmod(present.c_str(), 0);
  AsNobody([&] {
    const std::map<std::string, std::string> kProblems = {
        {Path("none"), ": cannot be read: No such file or directory\n"},
        {present, ": cannot be read: Permission denied\n"},
        {Path("other/control/PRESENT"), ": cannot be read: Is a directory\n"},
        {"/dev/zero", ": cannot be read: Operation not supported\n"}};
    std::string all;
    for (const auto& [path, problem] : kProblems) {
      EXPECT_EQ(TEVINSInstToc(path.substr(0, path.find("/control")).c_str()).GetNbToc(), 0);
      EXPECT_EQ(Information(), all += path + problem);
    }
    TEVINSToc::sClearInfoMsg();
    EXPECT_EQ(TEVINSMediaToc(tree.c_str()).GetNbToc(), 0);
    EXPECT_EQ(Information(), tree + ": cannot be read: Is a directory\n");
  });
}

TEST_F(TocTest, IntegrityTellsEachDamage) {
  MakeTree("code:PRD:P\n");
  const std::string prog = Listed("code/bin/prog");
  const std::string wrong = "code/bin/prog\n0644 7 1\n";
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
      {last, "\n" + prog + " \t\n\n", ":", "1\n"},
      {last, "./code//bin/prog\r\n104644  7\t" + prog.substr(prog.rfind(' ')),
       "chmod 4644 code/bin/prog", "1\n"},
      {last, "", "rm code/lib", "0\ncode/lib: is missing\n"},
      {last, "", "rm -r code/bin; touch code/bin", "0\ncode/bin/prog: is missing\n"},
      {last, "", "echo >>code/lib", "0\ncode/lib: size is 8, should be 7\n"},
      {last, "", "chmod 4644 code/lib", "0\ncode/lib: mode is 4644, should be 0644\n"},
      {last, "", "mv code/lib l; ln -s ../l code/lib", "0\ncode/lib: is not a regular file\n"},
      // The last package that lists a file decides, both what the file should be and whose it is.
      {last, wrong, ":", "2\n" + changed},
      {first, wrong, ":", "1\n"},
      {first, prog, "printf Content >code/bin/prog", "0\n" + changed},
      {last + "code:PRD:P\n", wrong, ":", "1\n"},
      {"code:SPK:S\ndocumentation:PRD:S\n", wrong, ":", "0\n" + changed},
      // Manifests that are damaged themselves.
      {last, "/etc/passwd\n0644 1 1\n" + prog, ":", no_path},
      {first, "code/../../x\n0644 1 1\n", ":", no_path},
      {last, std::string(5000, 'x') + "\n0644 1 1\n", ":", no_path},
      {last, "code/bin/prog", ":", no_details},
      {last, "code/lib\n" + wrong, ":", no_details + changed},
      {last, "code/bin/prog\n0648 7 1\n" + prog, ":", no_details},
      {last, "code/bin/prog\n0644 7 4294967296\n", ":", no_details},
      {last, "code/bin/prog\n0644 7 1 1\n", ":", no_details},
      {"code:SPK:S\n", "a\x1B[2J\n0644 1 1\n", ":", "2\na?[2J: is missing\n"},
      {last, "", "mkdir control/S", "2\ncontrol/S: cannot be read: Is a directory\n"},
      {last, " \n", ":", "2\ncontrol/S: lists no file\n"},
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
  MakeTree("code:PRD:P\ncode:SPK:S\n");
  Write("os/control/S", Listed("code/lib").replace(9, 4, "0000"));
  for (const std::string file : {"control/S", "code/lib"}) {
    fs::permissions(Path("os/" + file), fs::perms::none);
    AsNobody([&] {
      EXPECT_NE(Integrity().find(file + ": cannot be read: Permission denied\n"),
                std::string::npos);
    });
    fs::permissions(Path("os/" + file), fs::perms{0644});
  }
  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  fs::remove(Path("os/code/lib"));
  const std::string path = Path("os");
  const TEVINSInstToc toc(path.c_str());
  EXPECT_EQ(toc.CheckIntegrity(failed, path.c_str(), 0, 0), 2);
  EXPECT_EQ(toc.CheckIntegrity(failed, nullptr, 0, 0), 0);
  EXPECT_EQ(toc.CheckIntegrity(failed, Path("not/mounted").c_str(), 0, 0), 0);
}

TEST_F(TocTest, ChecksumsAreThoseOfCksum) {
  MakeTree("code:PRD:P\n");
  std::string manifest;
  for (const uint32_t size : std::initializer_list<uint32_t>{0, 1, 8, 15, 16, 63, 64, 65, 79, 80,
                                                             127, 128, 1000, 65539, 131172}) {
    std::string content(size, ' ');
    for (char& c : content) c = static_cast<char>(random_());
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
    EXPECT_EQ(kwinst::UpdateCrc(size, bytes, content.size()),
              kwinst::UpdateCrcByTable(size, bytes, content.size()));
    const std::string file = "code/" + std::to_string(size);
    Write("os/" + file, content);
    manifest += Listed(file);
  }
  Write("os/control/P", manifest);
  EXPECT_EQ(Integrity(), "1\n");
}

TEST_F(TocTest, GarbageHidesNothing) {
  const std::string table = "code:FWK:BASE:os=aix\n\n# x\ncode:SPK:S:level=2\nzeb2:PRD:Q\n";
  MakeTree("code:PRD:P\n");
  const std::string manifest = Read(Path("os/control/P"));
  const auto mutated = [this](std::string text) {
    for (size_t n = random_() % 20; n > 0; --n) {
      const size_t at = random_() % text.size();
      if (random_() % 3 == 0) text.insert(at, text.substr(random_() % text.size(), random_() % 99));
      text[at] = random_() % 4 == 0 ? "\n:\r\0"[random_() % 4] : static_cast<char>(random_());
    }
    return text;
  };
  for (int i = 0; i < 200; ++i) {
    const std::string garbage = mutated(table);
    const TEVINSMediaToc toc(Write("TOC", garbage + "\nsamples:SMP:last").c_str());
    EXPECT_EQ(Names(toc, SMP, samples), "last ") << garbage;

    const std::string bad = mutated(manifest);
    Write("os/control/P", bad + "\ncode/lib\n0600 7 0\n");
    const std::string report = Integrity();
    EXPECT_NE(report.find("code/lib: mode is 0644, should be 0600\n"), std::string::npos) << bad;
  }
}

}  // namespace
