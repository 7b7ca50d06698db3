#include <dlfcn.h>
#include <kwinstutil/dirs.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <filesystem>

#include "fixture.h"

namespace {

/// What statvfs tells instead of the truth, while `active`.
struct {
  bool active = false;
  unsigned long size = 0;
  unsigned long blocks = 0;
} file_system;

}  // namespace

extern "C" __attribute__((visibility("default"))) int statvfs(const char* path,
                                                              struct statvfs* info) noexcept {
  using Function = int (*)(const char*, struct statvfs*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "statvfs"));
  const int status = real(path, info);
  if (status == 0 && file_system.active) {
    info->f_frsize = file_system.size;
    info->f_bavail = file_system.blocks;
  }
  return status;
}

namespace {

class DirsTest : public Fixture {
 protected:
  ~DirsTest() override { file_system.active = false; }

  TEVUnicodeString message_ = "untouched";
};

TEST_F(DirsTest, ExistsAndMayBeWritten) {
  CharPath with_slash(dir_ + "/");
  EXPECT_EQ(TEVInsCheckExistDir(with_slash, &message_), 1);
  EXPECT_EQ(with_slash.str(), dir_);
  EXPECT_EQ(TEVInsCheckExistDir(nullptr, &message_), 0);
  EXPECT_STREQ(message_.ConvertToChar(), "untouched");
  EXPECT_EQ(TEVInsCheckExistDir(CharPath(Path("no")), &message_), 0);
  EXPECT_EQ(message_.ConvertToChar(), Message("DirNotExist", Path("no")));
  AsNobody([&] {
    EXPECT_EQ(TEVInsCheckExistDir(CharPath("/usr"), &message_), 0);
    EXPECT_EQ(message_.ConvertToChar(), Message("DirNoWrite", "/usr"));
  });
}

TEST_F(DirsTest, TheNearestExistingDirectoryDecides) {
  const std::string untouched = "untouched";
  const struct {
    std::string path;
    int status;
    std::string examined;
  } kCases[] = {
      {dir_ + "/", 0, dir_},
      {Path("a/b/c/"), 0, dir_},
      {Path("a//b"), 0, dir_},
      {"/missing-directory/a/b", 0, "/"},
      {"/missing-directory", 0, "/"},
      {"missing-directory", -1, untouched},
      {"missing-directory/a", -1, untouched},
      {"/", -1, untouched},
      {"//missing-directory", -1, untouched},
      {"", -1, untouched},
      {"/" + std::string(2000, 'x'), 0, "/"},
      {dir_ + std::string(1100, '/') + "x", -1, untouched},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.path);
    char examined[1024] = "untouched";
    EXPECT_EQ(TEVInsCheckAccessDir(CharPath(c.path), examined), c.status);
    EXPECT_EQ(examined, c.examined);
  }
  EXPECT_EQ(TEVInsCheckAccessDir(nullptr, nullptr), -1);
  AsNobody([] {
    char examined[1024] = "";
    EXPECT_EQ(TEVInsCheckAccessDir(CharPath("/usr/missing/a"), examined), -1);
    EXPECT_STREQ(examined, "/usr");
  });
}

TEST_F(DirsTest, Syntax) {
  for (const char* path : {"opt/x", "", "/my dir", "/my\tdir", " /x"}) {
    TEVUnicodeString dir = path;
    EXPECT_EQ(TEVInsCheckSyntaxDir(&dir, &message_), -1) << path;
    EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndSyntaxDir", path));
  }
  for (const char* path : {"/opt//x/", "/", "/\xc3\xa9t\xc3\xa9/\xff"}) {
    TEVUnicodeString dir = path;
    EXPECT_EQ(TEVInsCheckSyntaxDir(&dir, nullptr), 0) << path;
  }
  EXPECT_EQ(TEVInsCheckSyntaxDir(nullptr, nullptr), -1);
}

TEST_F(DirsTest, FitForAnInstallation) {
  MakeDir("empty");
  Write("tree/aix/control/PRESENT");
  Write("full/file");
  const struct {
    std::string path;
    const char* system;
    int status;
    std::string message;
  } kCases[] = {
      {Path("empty"), "aix", 1, "untouched"},
      {Path("new/a"), "aix", 3, "untouched"},
      {Path("tree"), "aix", 4, "untouched"},
      {Path("tree"), "other", -2, Message("ErrWndEmptyDir", Path("tree"))},
      {Path("full"), "aix", -2, Message("ErrWndEmptyDir", Path("full"))},
      {Path("full"), nullptr, -2, "untouched"},
      {Path("full/file"), "aix", -2, Message("ErrWndFileAlreadyExist", Path("full/file"))},
      {"relative", "aix", -1, Message("ErrWndNoWriteDir", "")},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.path);
    message_ = "untouched";
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), c.system, &message_), c.status);
    EXPECT_EQ(message_.ConvertToChar(), c.message);
    const int short_status = c.status == 3 || c.status == -1 ? c.status : 0;
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), &message_), short_status);
  }
  EXPECT_EQ(TEVInsCheckEmptyDir(nullptr, "aix", nullptr), -10);
  chmod(Path("empty").c_str(), 0555);
  AsNobody([&] {
    EXPECT_EQ(TEVInsCheckEmptyDir(Path("empty").c_str(), "aix", &message_), -1);
    EXPECT_EQ(TEVInsCheckEmptyDir("/usr/missing", &message_), -1);
    EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndNoWriteDir", "/usr"));
  });
}

TEST_F(DirsTest, MeasuresSpace) {
  const struct {
    unsigned long size, blocks;
    unsigned int kilobytes;
    bool environment;
  } kCases[] = {{512, 3, 1, false},      {4096, 10, 40, true},   {1000, 2047, 1000, true},
                {1, 7 * 1024, 7, false}, {1, 8 * 1024, 8, true}, {1UL << 20, 1UL << 40, 0, false}};
  file_system.active = true;
  for (const auto& c : kCases) {
    file_system.size = c.size;
    file_system.blocks = c.blocks;
    unsigned int available = 1;
    EXPECT_EQ(TEVInsComputeAvailSpace(Path("a/b").c_str(), &available, nullptr), 0);
    EXPECT_EQ(available, c.kilobytes);
    EXPECT_EQ(TEVInsCheckEnvDir(dir_.c_str(), &message_), c.environment ? 2 : -2);
    EXPECT_EQ(TEVInsCheckEnvDir(Path("a/b").c_str(), &message_), c.environment ? 1 : -2);
  }
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndNoSpaceEnvDir", dir_));
  unsigned int available = 0;
  EXPECT_EQ(TEVInsComputeAvailSpace("missing", &available, &message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrWndAvailSpace", "", std::strerror(ENOENT)));
  EXPECT_EQ(TEVInsCheckEnvDir("missing", &message_), -1);
  EXPECT_EQ(TEVInsCheckEnvDir(nullptr, nullptr), -10);
}

TEST_F(DirsTest, CreatesTrees) {
  const mode_t before = umask(0);
  CharPath path(Path("x/y/z/"));
  EXPECT_EQ(TEVInsCreateDirectory(path), 0);
  EXPECT_EQ(path.str(), Path("x/y/z"));
  umask(before);
  struct stat info {};
  ASSERT_EQ(stat(path, &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0755U);
  EXPECT_EQ(TEVInsCreateDirectory(path), 0) << "exists already";
  EXPECT_EQ(TEVInsCreateDirectory(CharPath(Write("file") + "/below")), -1);
  EXPECT_EQ(TEVInsCreateDirectory(CharPath(std::string(1024, 'x'))), -1);
  EXPECT_EQ(TEVInsCreateDirectory(nullptr), -10);
  AsNobody([] { EXPECT_EQ(TEVInsCreateDirectory(CharPath("/usr")), -1); });
}

TEST_F(DirsTest, DeletesTreesAndNothingBeyond) {
  const std::string outside = Write("outside/file");
  Write("tree/a/b/file");
  Write("tree/.hidden");
  ASSERT_EQ(symlink(Path("outside").c_str(), Path("tree/a/link").c_str()), 0);
  ASSERT_EQ(symlink("nowhere", Path("tree/dangling").c_str()), 0);
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 0), 0);
  for (const char* name : {"tree/.hidden", "tree/a/b/file", "tree/a/link", "tree/dangling"}) {
    EXPECT_FALSE(Exists(Path(name))) << name;
  }
  EXPECT_TRUE(Exists(Path("tree/a/b")));
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 1), 0);
  EXPECT_FALSE(Exists(Path("tree")));
  EXPECT_TRUE(Exists(outside)) << "a symbolic link was followed";
  EXPECT_EQ(TEVInsDeleteDir(CharPath(Path("tree")), 1), -1);
}

TEST_F(DirsTest, ReadsPointerFiles) {
  const std::string line(1500, 'x');
  const struct {
    std::string content;
    std::string result;
  } kCases[] = {{"/opt/code\nsecond\n", "/opt/code"},
                {"no newline", "no newline"},
                {"", ""},
                {"\nsecond", ""},
                {line, line.substr(0, 1023)}};
  for (const auto& c : kCases) {
    char result[1024] = "before";
    Write("CodeDir.txt", c.content);
    EXPECT_EQ(TEVInsGetCodeDir(CharPath(dir_), result), 1);
    EXPECT_EQ(result, c.result);
  }
  char result[1024] = "before";
  EXPECT_EQ(TEVInsGetZEBDir(CharPath(dir_), result), -1);
  EXPECT_STREQ(result, "");
  MakeDir("ZEBDir.txt");
  EXPECT_EQ(TEVInsGetZEBDir(CharPath(dir_), result), -1) << "a directory";
  EXPECT_EQ(TEVInsGetZEBDir(nullptr, result), -10);
}

TEST_F(DirsTest, ReadsTheSystemsOfATree) {
  const auto word = [this](int index) {
    char result[16] = "before";
    TEVInsReadOSFile(dir_.c_str(), index, result);
    return std::string(result);
  };
  EXPECT_EQ(word(1), "before") << "no file";
  Write("OSUNIX", " aix_a\n\tsolaris_a 0123456789abcdefgh");
  const std::string expected[] = {"before", "aix_a", "solaris_a", "0123456789abcde", "fgh"};
  for (int index = 0; index <= 4; ++index) EXPECT_EQ(word(index), expected[index]);
  EXPECT_EQ(word(5), "before");
  Write("OSUNIX", "one");
  EXPECT_EQ(word(2), "");
  std::filesystem::remove(Path("OSUNIX"));
  MakeDir("OSUNIX");
  EXPECT_EQ(word(1), "before") << "a directory";
}

TEST_F(DirsTest, AsksTheSystem) {
  SetEnv("HOME", "/root");
  EXPECT_EQ(TEVInsIsRoot(), 1);
  SetEnv("HOME", "/root/");
  EXPECT_EQ(TEVInsIsRoot(), 0);
  SetEnv("HOME", nullptr);
  EXPECT_EQ(TEVInsIsRoot(), 0);
  char output[5] = "----";
  EXPECT_EQ(executeCmd(CharPath("echo ab; exit 3"), output, 5), 0);
  EXPECT_EQ(std::string(output, 5), std::string("ab\n\0\0", 5));
  EXPECT_EQ(executeCmd(CharPath("printf 123456789"), output, 5), 0);
  EXPECT_EQ(std::string(output, 5), "12345");
  TEVUnicodeString path = "///a//b/";
  TEVInsSuppressSlashDir(&path);
  EXPECT_STREQ(path.ConvertToChar(), "/a/b/");
}

}  // namespace
