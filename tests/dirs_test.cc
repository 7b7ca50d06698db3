#include <kwinstutil/checks.h>
#include <kwinstutil/dirs.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>

#include "fixture.h"

namespace {

namespace fs = std::filesystem;

using DirsTest = Fixture;

TEST_F(DirsTest, ExistsAndMayBeWritten) {
  CharPath with_slash(dir_ + "/");
  EXPECT_EQ(TEVInsCheckExistDir(with_slash, &message_), 1);
  EXPECT_EQ(with_slash.str(), dir_);
  EXPECT_EQ(TEVInsCheckExistDir(CharPath(Path("no")), &message_), 0);
  EXPECT_EQ(Told(), Message("DirNotExist", Path("no")));
  AsNobody([&] {
    EXPECT_EQ(TEVInsCheckExistDir(CharPath("/usr"), &message_), 0);
    EXPECT_EQ(Told(), Message("DirNoWrite", "/usr"));
  });
}

TEST_F(DirsTest, TheNearestExistingDirectoryDecides) {
  const auto examined = [](const std::string& path) {
    char result[1024] = "untouched";
    const int status = TEVInsCheckAccessDir(CharPath(path), result);
    return std::to_string(status) + " " + result;
  };
  for (const char* path : {"/", "/a/b/c/", "/a//b"}) EXPECT_EQ(examined(dir_ + path), "0 " + dir_);
  EXPECT_EQ(examined("/missing/" + std::string(900, 'x')), "0 /");
  EXPECT_EQ(examined(dir_ + std::string(1100, '/') + "x"), "-1 untouched");
  for (const char* path : {"missing/a", "/", ""}) EXPECT_EQ(examined(path), "-1 untouched") << path;
  AsNobody([&] { EXPECT_EQ(examined("/usr/missing/a"), "-1 /usr"); });
}

TEST_F(DirsTest, Syntax) {
  const auto check = [this](const char* path) {
    TEVUnicodeString dir = path;
    return TEVInsCheckSyntaxDir(&dir, &message_);
  };
  for (const char* path : {"opt/x", "", "/my dir", "/my\tdir", " /x"}) {
    EXPECT_EQ(check(path), -1) << path;
    EXPECT_EQ(Told(), Message("ErrWndSyntaxDir", path));
  }
  for (const char* path : {"/opt//x/", "/", "/\xc3\xa9\xff"}) EXPECT_EQ(check(path), 0) << path;
}

TEST_F(DirsTest, FitForAnInstallation) {
  const std::string empty = MakeDir("empty"), file = Write("full/file"), tree = Path("tree");
  Write("tree/aix/control/PRESENT");
  const struct {
    std::string path;
    const char* system;
    int status, short_status;
    std::string message;
  } kCases[] = {
      {empty, "aix", /*status=*/1, /*short_status=*/0, kUntouched},
      {Path("new/a"), "aix", /*status=*/3, /*short_status=*/3, kUntouched},
      {tree, "aix", /*status=*/4, /*short_status=*/0, kUntouched},
      {tree, "other", /*status=*/-2, /*short_status=*/0, Message("ErrWndEmptyDir", tree)},
      {file, "aix", /*status=*/-2, /*short_status=*/0, Message("ErrWndFileAlreadyExist", file)},
      {"relative", "aix", /*status=*/-1, /*short_status=*/-1, Message("ErrWndNoWriteDir", "")}};
  for (const auto& c : kCases) {
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), c.system, &message_), c.status) << c.path;
    EXPECT_EQ(Told(), c.message) << c.path;
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), &message_), c.short_status) << c.path;
    Told();
  }
  chmod(empty.c_str(), 0555);
  AsNobody([&] {
    EXPECT_EQ(TEVInsCheckEmptyDir(empty.c_str(), "aix", &message_), -1);
    EXPECT_EQ(TEVInsCheckEmptyDir("/usr/missing", &message_), -1);
    EXPECT_EQ(TEVInsCheckEnvDir("/usr/missing", &message_), -1);
    EXPECT_EQ(Told(), Message("ErrWndNoWriteDir", "/usr"));
  });
}

TEST_F(DirsTest, MeasuresSpace) {
  unsigned int available = 1;
  EXPECT_EQ(TEVInsComputeAvailSpace("missing", &available, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrWndAvailSpace", "", std::strerror(ENOENT)));
  EXPECT_EQ(TEVInsCheckEnvDir("/proc", &message_), -2) << "it never has any space";
  EXPECT_EQ(Told(), Message("ErrWndNoSpaceEnvDir", "/proc"));
  EXPECT_EQ(TEVInsComputeAvailSpace(Path("a/b").c_str(), &available, &message_), 0);
  const auto expected = static_cast<unsigned int>(fs::space(dir_).available / 1024);
  EXPECT_NEAR(available, expected, 0.1 * expected);
  EXPECT_EQ(TEVInsCheckEnvDir(dir_.c_str(), &message_), 2);
  EXPECT_EQ(TEVInsCheckEnvDir(Path("a/b").c_str(), &message_), 1);
}

TEST_F(DirsTest, CreatesTrees) {
  const mode_t before = umask(0);
  CharPath path(Path("x/y/z/"));
  EXPECT_EQ(TEVInsCreateDirectory(path), 0);
  umask(before);
  EXPECT_EQ(fs::status(Path("x/y/z")).permissions(), fs::perms(0755));
  EXPECT_EQ(TEVInsCreateDirectory(path), 0) << "exists already";
  EXPECT_EQ(TEVInsCreateDirectory(CharPath(Write("file") + "/below")), -1);
  EXPECT_EQ(TEVInsCreateDirectory(CharPath(dir_ + std::string(1024, '/') + "x")), -1);
  AsNobody([] { EXPECT_EQ(TEVInsCreateDirectory(CharPath("/usr")), -1); });
}

TEST_F(DirsTest, DeletesTreesAndNothingBeyond) {
  const std::string outside = Write("outside/file");
  Write("tree/a/b/file");
  Write("tree/.hidden");
  fs::permissions(Path("tree/a"), fs::perms(0444));
  fs::permissions(Path("tree"), fs::perms(0555));
  AsNobody([this] {
    EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 1), 0) << "what cannot be deleted stays";
    EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree/a")), 1), -1) << "nothing there can be examined";
  });
  EXPECT_TRUE(Exists(Path("tree/.hidden")));
  for (const char* dir : {"tree", "tree/a"}) fs::permissions(Path(dir), fs::perms(0755));
  fs::create_symlink(Path("outside"), Path("tree/a/link"));
  fs::create_symlink("nowhere", Path("tree/dangling"));
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 0), 0);
  for (const auto& entry : fs::recursive_directory_iterator(Path("tree"))) {
    EXPECT_TRUE(fs::is_directory(entry.symlink_status())) << entry.path();
  }
  EXPECT_TRUE(Exists(Path("tree/a/b")));
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 1), 0);
  EXPECT_FALSE(Exists(Path("tree")));
  EXPECT_TRUE(Exists(outside)) << "a symbolic link was followed";
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 1), -1);
}

TEST_F(DirsTest, ReadsPointerFiles) {
  char result[1024] = "before";
  EXPECT_EQ(TEVInsGetZEBDir(CharPath(dir_), result), -1);
  EXPECT_EQ(TEVInsCheckZEBDir(CharPath(dir_), result), 0);
  EXPECT_STREQ(result, "");
  Write("CodeDir.txt", "/opt/x\nsecond\n");
  EXPECT_EQ(TEVInsGetCodeDir(CharPath(dir_), result), 1);
  EXPECT_STREQ(result, "/opt/x");
  Write("ZEBDir.txt", std::string(1500, 'x'));
  EXPECT_EQ(TEVInsCheckZEBDir(CharPath(dir_), result), 1);
  EXPECT_EQ(result, std::string(1023, 'x'));
}

TEST_F(DirsTest, ReadsTheSystemsOfATree) {
  Write("OSUNIX", " aix_a\n\tsolaris_a 0123456789abcdefgh");
  const std::string expected[] = {"", "aix_a", "solaris_a", "0123456789abcde", "fgh", ""};
  for (int index = 0; index <= 5; ++index) {
    char result[16] = "";
    TEVInsReadOSFile(dir_.c_str(), index, result);
    EXPECT_EQ(result, expected[index]);
  }
}

TEST_F(DirsTest, AsksTheSystem) {
  SetEnv("HOME", "/root");
  EXPECT_EQ(TEVInsIsRoot(), 1);
  SetEnv("HOME", "/root/");
  EXPECT_EQ(TEVInsIsRoot(), 0);
  char output[5] = "----";
  EXPECT_EQ(executeCmd(CharPath("printf 123456789; exit 3"), output, 5), 0);
  EXPECT_EQ(std::string(output, 5), "12345");
  TEVUnicodeString path = "///a//b/";
  TEVInsSuppressSlashDir(&path);
  EXPECT_STREQ(path.ConvertToChar(), "/a/b/");
}

}  // namespace
