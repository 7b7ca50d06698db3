#include <qtoclib/TEVINSToc.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <random>
#include <sstream>

#include "checksum.h"
#include "fixture.h"

namespace {

namespace fs = std::filesystem;

std::string Information() {
  char* text = nullptr;
  TEVINSToc::sGetInfoMsg(text);
  return text == nullptr ? "" : text;
}

std::string OrNull(const char* text) { return text == nullptr ? "(null)" : text; }

/// A list as callers make it: zeroed bytes, and no constructor or destructor.
struct FreeBytes {
  void operator()(TEVINSStockName* list) const { ::operator delete(list); }
};
using ListInBytes = std::unique_ptr<TEVINSStockName, FreeBytes>;

ListInBytes ZeroedList() {
  void* bytes = ::operator new(sizeof(TEVINSStockName));
  std::memset(bytes, 0, sizeof(TEVINSStockName));
  return ListInBytes(static_cast<TEVINSStockName*>(bytes));
}

std::string Names(const TEVINSToc& toc, TEVINSPkg kind, TEVINSType type) {
  const ListInBytes list = ZeroedList();
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
    for (const char* file : {"code/bin/prog", "code/lib"}) {
      chmod(Write(std::string("os/") + file, "content").c_str(), 0644);
    }
    Write("os/control/P", Listed("code/bin/prog") + Listed("code/lib"));
  }

  /// The two lines that a manifest has for a file of the tree, with cksum's own opinion of it.
  std::string Listed(const std::string& file) const {
    const std::string output = Path("cksum.out");
    EXPECT_EQ(std::system(("cksum <" + Path("os/" + file) + " >" + output).c_str()), 0);
    std::istringstream words(Read(output));
    std::string crc;
    std::string size;
    words >> crc >> size;
    return file + "\n0644 " + size + " " + crc + "\n";
  }

  /// The verdict on the tree and the report, in one text.
  std::string Integrity() const {
    std::ostringstream report;
    const int verdict =
        TEVINSInstToc(Path("os").c_str()).CheckIntegrity(report, Path("os").c_str(), 0, 0);
    return std::to_string(verdict) + "\n" + report.str();
  }

  std::mt19937 random_{1};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same at every run
};

TEST_F(TocTest, EveryLineCountsOrIsTold) {
  const std::string name47(47, 'n');
  const struct {
    std::string line;
    std::string problem;  ///< or empty: the line counts; "-": it counts for nothing
  } kCases[] = {
      {"code:PRD:X", ""},
      {"zeb2:FIX:X.zeb2:no key:=:os:other=1\r", ""},
      {"unknownM:GRP:" + name47, ""},
      {"code:PRD:" + std::string(10'000, ':'), "it has no package name"},
      {"code:PRD:X" + std::string(10'000, ':') + "os=last", ""},
      {"code:PRD:X:level=high", ""},
      {"code:SPK:X:level=2147483647", ""},
      {"code:HFX:X:level=0", "its level is no number above 0"},
      {"code:SPK:X:level=2147483648", "its level is no number above 0"},
      {"code:HFX:X:level=2x", "its level is no number above 0"},
      {"", "-"},
      {" \t\r", "-"},
      {"# code:PRD", "-"},
      {"code:PRD", "it has fewer than three fields"},
      {"Code:PRD:X", "its first field is no content type"},
      {"code:PRDX:X", "its second field is no package kind"},
      {"code:PRD:", "it has no package name"},
      {"code:PRD:" + name47 + "n", "its package name is longer than 47 characters"},
      {std::string("code:PRD:X\0Y", 12), "it has a zero byte"},
      {"code:PRD:" + std::string(3'000'000, 'x'), "its package name is longer than 47 characters"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.line.substr(0, 60));
    const std::string path = Write("TOC", "code:PRD:A\n" + c.line + "\ncode:PRD:Z");
    TEVINSToc::sResetInfoMsg();
    const TEVINSMediaToc toc(path.c_str());
    EXPECT_EQ(toc.GetNbToc(), c.problem.empty() ? 3 : 2);
    const bool told = !c.problem.empty() && c.problem != "-";
    EXPECT_EQ(Information(), told ? path + ", line 2: " + c.problem + "\n" : "");
    EXPECT_EQ(Names(toc, PRD, code).substr(0, 2) + Names(toc, FWK, code), "A ");
  }
}

TEST_F(TocTest, OnlySomeOfManyBadLinesAreTold) {
  std::string table = "code:PRD:X";
  for (int i = 0; i < 1000; ++i) table.insert(0, "what?\n");
  EXPECT_EQ(TEVINSMediaToc(Write("TOC", table).c_str()).GetNbToc(), 1);
  const std::string told = Information();
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 21);
  EXPECT_NE(told.find("besides these: 980\n"), std::string::npos) << told;
}

TEST_F(TocTest, LevelsAndSystem) {
  const struct {
    const char* table;
    const char* expected;  ///< os, ga, service pack, hot fix and its level
  } kCases[] = {
      {"", "(null) (null) 0 (null) 0"},
      {"code:FWK:B:os=aix:ga=R1=2\ncode:PRD:C:os=hp:os=sun:ga=\n", "sun  0 (null) 0"},
      {"code:FWK:B:os=aix\ncode:bad:C:os=sun\n", "aix (null) 0 (null) 0"},
      {"code:SPK:S\n", "(null) (null) 1 (null) 0"},
      {"code:SPK:S:level=3\nzeb2:SPK:T:level=+2\ncode:FSP:F:level=9\n", "(null) (null) 3 (null) 0"},
      {"code:HFX:H:level=5\ncode:HFX:I:level=4\ncode:PRD:P:level=8\n", "(null) (null) 0 I 4"},
  };
  for (const auto& c : kCases) {
    const TEVINSMediaToc toc(Write("TOC", c.table).c_str());
    std::ostringstream values;
    values << OrNull(toc.GetOS()) << ' ' << OrNull(toc.GetGALevel()) << ' ' << toc.GetSPKLevel(1)
           << ' ' << OrNull(toc.GetHFXName()) << ' ' << toc.GetHFXLevel();
    EXPECT_EQ(values.str(), c.expected) << c.table;
  }
}

TEST_F(TocTest, ListsHaveTheFileOrderAndALimit) {
  std::string table = "zeb2:PRD:other\ncode:FIX:other\n";
  for (int i = 1; i <= 4096; ++i) table += "code:PRD:P" + std::to_string(i) + "\n";
  const ListInBytes list = ZeroedList();
  TEVINSMediaToc(Write("TOC", table).c_str()).GetPackage(PRD, code, list.get(), 1);
  EXPECT_EQ(list->GetNbName(), 4096);
  EXPECT_STREQ(list->GetName(0), "P1");
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
  EXPECT_FALSE(ZeroedList()->Add(std::string(52, 'x').c_str()));
  EXPECT_TRUE(ZeroedList()->Add(std::string(51, 'x').c_str()));
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
    std::string all;
    for (const auto& [path, told] : std::vector<std::pair<std::string, std::string>>{
             {Path("none"), Path("none") + ": cannot be read: No such file or directory\n"},
             {tree, present + ": cannot be read: Permission denied\n"},
             {Path("other"), Path("other/control/PRESENT: cannot be read: Is a directory\n")},
             {"/dev/zero", "/dev/zero: cannot be read: Operation not supported\n"}}) {
      EXPECT_EQ(TEVINSInstToc(path.c_str()).GetNbToc(), 0);
      EXPECT_EQ(Information(), all += told);
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
  const std::string no_details =
      "control/S, line 1: the mode, size and checksum of the file do not follow\n";
  const std::string no_path = "control/S, line 1: it is not the path of a file in the tree\n";
  const std::string spk_last = "code:PRD:P\ncode:SPK:S\n";
  const std::string prd_last = "code:FSP:S\ncode:PRD:P\n";
  const std::string dir = "2\ncontrol/S: cannot be read: Is a directory\n";
  const std::string edit = "printf Content >code/bin/prog";
  const struct {
    std::string packages;
    std::string manifest;  ///< of package S
    std::string damage;    ///< a command run in the tree
    std::string expected;
  } kCases[] = {
      {spk_last, "\n" + prog + " \t\n\n", ":", "1\n"},
      {spk_last, "./code//bin/prog\r\n104644  7\t" + prog.substr(prog.rfind(' ')),
       "chmod 4644 code/bin/prog", "1\n"},
      {spk_last, "", "rm code/lib", "0\ncode/lib: is missing\n"},
      {spk_last, "", "rm -r code/bin; touch code/bin", "0\ncode/bin/prog: is missing\n"},
      {spk_last, "", "echo >>code/lib", "0\ncode/lib: size is 8, should be 7\n"},
      {spk_last, "", "chmod 4644 code/lib", "0\ncode/lib: mode is 4644, should be 0644\n"},
      {spk_last, "", "mv code/lib l; ln -s ../l code/lib", "0\ncode/lib: is not a regular file\n"},
      // The last package that lists a file decides, both what the file should be and whose it is.
      {spk_last, wrong, ":", "2\n" + changed},
      {prd_last, wrong, ":", "1\n"},
      {spk_last, prog, edit, "2\n" + changed},
      {prd_last, prog, edit, "0\n" + changed},
      {spk_last + "code:PRD:P\n", wrong, ":", "1\n"},
      {"code:SPK:S\ndocumentation:PRD:S\n", wrong, ":", "0\n" + changed},
      // Manifests that are damaged themselves.
      {spk_last, "/etc/passwd\n0644 1 1\n" + prog, ":", "2\n" + no_path},
      {prd_last, "code/../../x\n0644 1 1\n", ":", "2\n" + no_path},
      {spk_last, std::string(5000, 'x') + "\n0644 1 1\n", ":", "2\n" + no_path},
      {spk_last, "code/bin/prog", ":", "2\n" + no_details},
      {spk_last, "code/lib\n" + wrong, ":", "2\n" + no_details + changed},
      {spk_last, "code/bin/prog\n0648 7 1\n" + prog, ":", "2\n" + no_details},
      {spk_last, "code/bin/prog\n0644 7 4294967296\n", ":", "2\n" + no_details},
      {spk_last, "code/bin/prog\n0644 7 1 1\n", "printf x >code/bin/prog", "2\n" + no_details},
      {"code:SPK:S\n", "a\x1B[2J\n0644 1 1\n", ":", "2\na?[2J: is missing\n"},
      {spk_last, "", "mkdir control/S", dir},
      {spk_last, " \n", ":", "2\ncontrol/S: lists no file\n"},
      {"code:SPK:..\ncode:SPK:.\ncode:SPK:../control/S\n", "/x", ":", "1\n"},
      {spk_last, prog, "rm -r control/S control/P", "1\n"},
  };
  for (const auto& c : kCases) {
    MakeTree(c.packages);
    if (!c.manifest.empty()) Write("os/control/S", c.manifest);
    ASSERT_EQ(std::system(("cd " + Path("os") + " && { " + c.damage + "; }").c_str()), 0);
    EXPECT_EQ(Integrity(), c.expected) << c.packages << c.manifest << c.damage;
  }
}

TEST_F(TocTest, IntegrityOfWhatCannotBeRead) {
  MakeTree("code:PRD:P\ncode:SPK:S\n");
  const std::string manifest = Write("os/control/S", Listed("code/lib").replace(9, 4, "0000"));
  const std::string path = Path("os");
  chmod(manifest.c_str(), 0);
  AsNobody([&] { EXPECT_EQ(Integrity(), "2\ncontrol/S: cannot be read: Permission denied\n"); });
  chmod(manifest.c_str(), 0644);
  chmod(Path("os/code/lib").c_str(), 0);
  AsNobody([&] { EXPECT_EQ(Integrity(), "2\ncode/lib: cannot be read: Permission denied\n"); });
  std::ostringstream failed;
  failed.setstate(std::ios::failbit);
  fs::remove(Path("os/code/lib"));
  const TEVINSInstToc toc(path.c_str());
  EXPECT_EQ(toc.CheckIntegrity(failed, path.c_str(), 0, 0), 2);
  EXPECT_EQ(toc.CheckIntegrity(failed, nullptr, 0, 0), 0);
  EXPECT_EQ(toc.CheckIntegrity(failed, Path("not/mounted").c_str(), 0, 0), 0);
}

TEST_F(TocTest, ChecksumsAreThoseOfCksum) {
  MakeTree("code:PRD:P\n");
  std::string manifest;
  std::string all_changed = "0\n";
  for (const uint32_t size :
       {0, 1, 7, 8, 15, 16, 63, 64, 65, 79, 80, 127, 128, 1000, 65539, 131172}) {
    std::string content(size, ' ');
    for (char& c : content) c = static_cast<char>(random_());
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
    EXPECT_EQ(kwinst::UpdateCrc(size, bytes, content.size()),
              kwinst::UpdateCrcByTable(size, bytes, content.size()));
    const std::string file = "code/" + std::to_string(size);
    Write("os/" + file, content);
    manifest += Listed(file);
    if (size > 0) all_changed += file + ": content has changed\n";
  }
  Write("os/control/P", manifest);
  EXPECT_EQ(Integrity(), "1\n");
  for (const auto& entry : fs::directory_iterator(Path("os/code"))) {
    std::string content = entry.is_regular_file() ? Read(entry.path()) : "";
    if (content.empty()) continue;
    content[random_() % content.size()] ^= 1;
    Write("os/code/" + entry.path().filename().string(), content);
  }
  EXPECT_EQ(Integrity(), all_changed);
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
    EXPECT_NE(Integrity().find("\ncode/lib: mode is 0644, should be 0600\n"), std::string::npos)
        << bad;
    // No byte of what a manifest says of a file may become another without being noticed.
    std::string changed = manifest;
    const size_t start = changed.find('\n') + 1;
    char& byte = changed[start + random_() % (changed.find('\n', start) - start)];
    const char before = byte;
    while (byte == before || byte == ' ' || byte == '\t') byte = static_cast<char>(random_());
    Write("os/control/P", changed);
    EXPECT_EQ(Integrity()[0], '0') << changed;
  }
}

}  // namespace
