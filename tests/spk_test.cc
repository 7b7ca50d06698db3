#include <dlfcn.h>
#include <kwinstutil/spk.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "fixture.h"

namespace fs = std::filesystem;

namespace {

int renames_until_failure = -1;  ///< -1: none fails

}  // namespace

extern "C" __attribute__((visibility("default"))) int rename(const char* from,
                                                             const char* to) noexcept {
  using Function = int (*)(const char*, const char*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "rename"));
  return renames_until_failure >= 0 && renames_until_failure-- == 0 ? -1 : real(from, to);
}

namespace {

class ServicePackTest : public Fixture {
 protected:
  ServicePackTest() : os_(fs::path(dir_).filename()), unpacked_("/tmp/" + os_ + "/control/SP1") {
    MakeDir("medium");
    MakeDir("tree");
    fs::create_directories(fs::path(unpacked_).parent_path());
    fs::permissions(fs::path(unpacked_).parent_path(), fs::perms::all);
  }
  ~ServicePackTest() override {
    renames_until_failure = -1;
    std::error_code ignored;
    fs::remove_all("/tmp/" + os_, ignored);
    fs::remove("/tmp/control", ignored);
  }

  static int Prune(const std::string& source, const std::string& dest, const std::string& name,
                   TEVINSType type = code) {
    TEVInsResetPresent reset;
    EXPECT_EQ(reset.InitSource(CharPath(source)), 0);
    EXPECT_EQ(reset.InitDest(CharPath(dest)), 0);
    return reset.Remove(CharPath(name), type);
  }

  /// Makes an archive with the control file `member`, which has the given mode.
  void Pack(const std::string& content, std::string member = "", const char* mode = "644") {
    if (member.empty()) member = os_ + "/control/SP1";
    Write("parts/" + member, content);
    const std::string command = "cd " + dir_ + "/parts && chmod " + mode + " " + member +
                                " && tar -cf ../medium/SP1 * && rm -r " + dir_ + "/parts";
    ASSERT_EQ(std::system(command.c_str()), 0);
  }

  int Save(TEVINSType type = code) {
    return TEVInsSaveFilesBeforeInstall(CharPath("SP1"), CharPath(Path("medium")),
                                        CharPath(Path("tree")),
                                        type == zeb2 ? nullptr : os_.c_str(), type, message_);
  }

  /// Restores with the given control file.
  int Restore(const std::string& content) {
    fs::copy_file(Write("content", content), unpacked_);
    return RestoreAgain();
  }
  int RestoreAgain() {
    return TEVInsRestoreFiles(CharPath(Path("tree")), CharPath("SP1"), os_.c_str(), code, message_);
  }

  /// The names in tree/, sorted, each with a blank behind it.
  std::string Tree() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(Path("tree"))) {
      names.insert(entry.path().filename());
    }
    std::string list;
    for (const std::string& name : names) list += name + " ";
    return list;
  }

  std::string os_;  ///< so named that a control file is unpacked in the test's own directory
  std::string unpacked_;
  TEVUnicodeString message_ = "untouched";
};

TEST_F(ServicePackTest, PrunesTheLinesOfOneServicePack) {
  const std::string n47(47, 'n');
  const std::string binary("code:\0:b\0:\xff\n", 12);
  const std::string others =
      "zeb2:SPK:SP3:x\ncode:HFX:SP3\ncode:FIX:SP3\ncode:SPK:SP33\ncode:SPK:sp3\n";
  std::string many;
  std::string many_kept;
  for (int i = 0; i < 50'000; ++i) {
    const std::string kept = "code:PRD:Package" + std::to_string(i) + ":os=aix\n";
    many += kept + "code:SPK:SP3\n";
    many_kept += kept;
  }
  const struct {
    std::string source;
    std::string name;
    std::string result;
  } kCases[] = {
      // Nothing is dropped from the first seven.
      {"", "SP3", ""},
      {"\n\ncode\ncode:SPK\ncode:SPK:\n:\n:::", "SP3", "\n\ncode\ncode:SPK\ncode:SPK:\n:\n:::\n"},
      {others, "SP3", others},
      {binary, "b", binary},
      {"code:SPK:" + n47, n47 + "n", "code:SPK:" + n47 + "\n"},
      {n47 + ":SPK:SP3:more:\n", "SP3", n47 + ":SPK:SP3:more:\n"},
      // The 48th character of a field is taken for its separator.
      {n47 + "n:SPK:SP3\ncode:" + n47 + "n:a\n", "SP3", n47 + "::SPK:SP3\ncode:" + n47 + "::a\n"},
      {"first\ncode:SPK:SP3:more\ncode:SPK:SP3", "SP3", "first\n"},
      {"code:SPK:" + n47 + "n:more\ncode:SPK:" + n47 + "\nlast", n47, "last\n"},
      {many, "SP3", many_kept},
      {"none", "SP3", "none\n"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Prune(Write("PRESENT", c.source), Path("pruned"), c.name), 0);
    EXPECT_TRUE(Read(Path("pruned")) == c.result) << c.source.substr(0, 200);
    EXPECT_EQ(TEVInsResetPresent::IsLineRemoved(), &c - kCases < 7 ? 0 : 1);
  }
  EXPECT_EQ(Prune(Write("PRESENT", others), Path("pruned"), "SP3", zeb2), 0);
  EXPECT_EQ(Read(Path("pruned")), others.substr(others.find('\n') + 1));
}

TEST_F(ServicePackTest, TellsWhatCannotBeCopied) {
  const std::string missing = Path("missing");
  const std::string present = Write("PRESENT", "code:PRD:A\n\ncode:PRD:B");
  TEVInsResetPresent reset;
  EXPECT_EQ(reset.InitSource(CharPath(missing)), -1);
  EXPECT_EQ(reset.InitDest(CharPath(Path("no/dir"))), -1);
  EXPECT_EQ(Prune(present, "/dev/full", "SP3"), -1);
  EXPECT_EQ(Prune(dir_, Path("pruned"), "SP3"), -1) << "a directory";
  const auto copy = [](const std::string& from, const std::string& to) {
    return TEVInsResetPresent::FileCopy(CharPath(from), CharPath(to));
  };
  EXPECT_EQ(copy(present, Path("copy")), 0);
  EXPECT_EQ(Read(Path("copy")), "code:PRD:A\n\ncode:PRD:B\n");
  EXPECT_EQ(copy(missing, Path("none")), -1);
  EXPECT_EQ(copy(present, "/dev/full"), -1);
  EXPECT_EQ(copy(dir_, Path("copy")), -1);
  EXPECT_FALSE(Exists(missing) || Exists(Path("none")));
}

TEST_F(ServicePackTest, SavesFirstWordsAndRestoresWholeLines) {
  for (const char* name : {"prog", "other", "3d", "0", "x y"}) {
    Write(std::string("tree/") + name, name);
  }
  ASSERT_EQ(symlink("nowhere", Path("tree/link").c_str()), 0);
  Write("tree/prog.beforeSPK", "older");
  Pack("prog 1234\n755 1 2\n3d\n0\n\n other\nmissing\nlink\nother\ttab\nother");
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Tree(), "0 3d link.beforeSPK other.beforeSPK prog.beforeSPK x y ");
  EXPECT_EQ(Read(Path("tree/prog.beforeSPK")), "prog");
  EXPECT_FALSE(Exists(unpacked_));

  EXPECT_EQ(RestoreAgain(), 0) << "no control file, nothing to restore";
  for (const char* name : {"0.beforeSPK", "x y.beforeSPK", "prog"}) {
    Write(std::string("tree/") + name, "new");
  }
  EXPECT_EQ(Restore("prog\nother 12\n0\n\nx y\nmissing\nlink"), 0);
  EXPECT_EQ(Tree(), "0 3d link other.beforeSPK prog x y ");
  EXPECT_EQ(Read(Path("tree/prog")) + Read(Path("tree/0")), "prognew");
  EXPECT_FALSE(Exists(unpacked_));
  EXPECT_STREQ(message_.ConvertToChar(), "untouched");
}

TEST_F(ServicePackTest, FindsTheControlFileOfEachTypeAndArchive) {
  for (const char* name : {"tree/a", "tree/b", "tree/c"}) Write(name);
  Pack("c", "control/SP1");
  EXPECT_EQ(Save(zeb2), 0);
  EXPECT_EQ(Tree(), "a b c.beforeSPK ");
  EXPECT_FALSE(Exists("/tmp/control/SP1"));
  if (std::system("command -v compress >/dev/null") != 0) GTEST_SKIP() << "there is no compress";
  Pack("a");
  ASSERT_EQ(std::system(("compress -f " + Path("medium/SP1")).c_str()), 0);
  Pack("b");
  EXPECT_EQ(Save(samples), 0);
  EXPECT_EQ(Tree(), "a.beforeSPK b c.beforeSPK ");
}

TEST_F(ServicePackTest, AFailedRenameLosesNothingAndIsMadeUpFor) {
  const std::string b = Path("tree/b");
  for (const char* name : {"tree/a", "tree/b", "tree/c"}) Write(name);
  Pack("a\nb\nc\n");
  renames_until_failure = 1;
  EXPECT_EQ(Save(), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndRenameFile.Text", b, b + ".beforeSPK"));
  EXPECT_EQ(Tree(), "a.beforeSPK b c ");
  EXPECT_FALSE(Exists(unpacked_));
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Tree(), "a.beforeSPK b.beforeSPK c.beforeSPK ");

  renames_until_failure = 1;
  EXPECT_EQ(Restore("a\nb\nc\n"), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndRenameFile.Text", b + ".beforeSPK", b));
  EXPECT_EQ(Tree(), "a b.beforeSPK c.beforeSPK ");
  EXPECT_EQ(Restore("a\nb\nc\n"), 0);
  EXPECT_EQ(Tree(), "a b c ");
}

TEST_F(ServicePackTest, TellsControlFilesThatCannotBeHad) {
  const std::string not_unpacked =
      Message("ErrWndExtractTar.Text", os_ + "/control/SP1", Path("medium/SP1")) +
      Message("CheckTmpDir", "/tmp");
  EXPECT_EQ(Save(), -1) << "no archive";
  EXPECT_EQ(message_.ConvertToChar(), not_unpacked);
  Write("tree/a");
  Pack("a\n" + std::string(1 << 16, 'x'));
  AsNobody([&] {
    // tar fails in its middle, as on a full disk.
    const rlimit limit = {4096, 4096};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(Save(), -1);
    EXPECT_EQ(message_.ConvertToChar(), not_unpacked);
  });
  EXPECT_FALSE(Exists(unpacked_)) << "the part that was written";
  EXPECT_EQ(Tree(), "a ");

  Pack("a\n", "", "0");
  AsNobody([&] {
    EXPECT_EQ(Save(), -1);
    EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndOpenControlFile.Text", unpacked_, "13"));
    EXPECT_FALSE(Exists(unpacked_));
  });
  message_ = "untouched";
  CharPath name("SP1");
  EXPECT_EQ(TEVInsSaveFilesBeforeInstall(name, nullptr, name, "aix", code, message_), -1);
  EXPECT_EQ(TEVInsSaveFilesBeforeInstall(name, name, nullptr, "aix", code, message_), -1);
  EXPECT_EQ(TEVInsSaveFilesBeforeInstall(name, name, name, nullptr, code, message_), -1);
  EXPECT_STREQ(message_.ConvertToChar(), "untouched");
}

TEST_F(ServicePackTest, RunsThePostInstallPrograms) {
  const std::string tree = Path("tree");
  const std::string log = Write("log", "before\n");
  const auto run = [&log](const std::string& dir) {
    return TEVInsSPK(CharPath("sp"), CharPath(dir), CharPath(log));
  };
  SetEnv("LD_LIBRARYN32_PATH", "before");
  SetEnv("TEVInstallPath", "before");
  SetEnv("STARTDIR", "set");
  EXPECT_EQ(run(tree), 0) << "no list";
  EXPECT_STREQ(std::getenv("LD_LIBRARYN32_PATH"), "before");
  Write("tree/control/CAFPost.list", "missing\n");
  // The longest directory that the environment takes, and one that is longer.
  const std::string longest = tree + std::string(995 - tree.size(), '/');
  EXPECT_EQ(run(longest), 0);
  EXPECT_EQ(run(longest + "/"), -1);
  EXPECT_EQ(std::getenv("TEVInstallPath"), longest);

  const std::pair<const char*, const char*> kPrograms[] = {
      {"env_sp", "echo $TEVInstallPath $LD_LIBRARYN32_PATH [$STARTDIR]; exit 2"},
      {"fail_sp", "echo failed >&2; exit 3"},
      {"last_sp", "echo last; exit 4"}};
  for (const auto& [name, text] : kPrograms) {
    const std::string path = Path("tree/code/bin/") + name;
    Write(std::string("tree/code/bin/") + name, std::string("#!/bin/sh\n") + text + "\n");
    chmod(path.c_str(), 0755);
  }
  Write("tree/control/CAFPost.list", "env\tfail\n" + std::string(255, 'x') + "last missing");
  EXPECT_EQ(run(tree), 4) << "a word of 255 characters ends there";
  EXPECT_EQ(Read(log), "before\n" + tree + " " + tree + "/code/bin []\nfailed\nlast\n");
  EXPECT_EQ(TEVInsSPK(nullptr, CharPath(tree), CharPath(log)), -1);
  EXPECT_EQ(TEVInsSPK(CharPath("sp"), nullptr, CharPath(log)), -1);
  EXPECT_EQ(TEVInsSPK(CharPath("sp"), CharPath(tree), nullptr), -1);
}

}  // namespace
