#include <dlfcn.h>
#include <kwinstutil/dirs.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "fixture.h"

namespace {

namespace fs = std::filesystem;

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

using Paths = std::vector<std::string>;

class DirsTest : public Fixture {
 protected:
  ~DirsTest() override { file_system.active = false; }

  /// The message since the last call, or "untouched".
  std::string Told() { return std::exchange(message_, "untouched").ConvertToChar(); }

  TEVUnicodeString message_ = "untouched";
};

TEST_F(DirsTest, ExistsAndMayBeWritten) {
  CharPath with_slash(dir_ + "/");
  EXPECT_EQ(TEVInsCheckExistDir(with_slash, &message_), 1);
  EXPECT_EQ(with_slash.str(), dir_);
  EXPECT_EQ(TEVInsCheckExistDir(nullptr, &message_), 0);
  EXPECT_EQ(Told(), "untouched");
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
  const std::string long_name(2000, 'x'), slashes(1100, '/');
  for (const char* path : {"/", "/a/b/c/", "/a//b"}) EXPECT_EQ(examined(dir_ + path), "0 " + dir_);
  for (const auto& path : Paths{"/missing/a/b", "/missing", "/" + long_name}) {
    EXPECT_EQ(examined(path), "0 /") << path;
  }
  for (const auto& path :
       Paths{"missing", "missing/a", "/", "//missing", "", dir_ + slashes + "x"}) {
    EXPECT_EQ(examined(path), "-1 untouched") << path;
  }
  EXPECT_EQ(TEVInsCheckAccessDir(nullptr, nullptr), -1);
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
  for (const char* path : {"/opt//x/", "/", "/\xc3\xa9t\xc3\xa9/\xff"}) {
    EXPECT_EQ(check(path), 0) << path;
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
    int status, short_status;
    std::string message;
  } kCases[] = {
      {Path("empty"), "aix", 1, 0, "untouched"},
      {Path("new/a"), "aix", 3, 3, "untouched"},
      {Path("tree"), "aix", 4, 0, "untouched"},
      {Path("tree"), "other", -2, 0, Message("ErrWndEmptyDir", Path("tree"))},
      {Path("full"), "aix", -2, 0, Message("ErrWndEmptyDir", Path("full"))},
      {Path("full"), nullptr, -2, 0, "untouched"},
      {Path("full/file"), "aix", -2, 0, Message("ErrWndFileAlreadyExist", Path("full/file"))},
      {"relative", "aix", -1, -1, Message("ErrWndNoWriteDir", "")}};
  for (const auto& c : kCases) {
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), c.system, &message_), c.status) << c.path;
    EXPECT_EQ(Told(), c.message) << c.path;
    EXPECT_EQ(TEVInsCheckEmptyDir(c.path.c_str(), &message_), c.short_status) << c.path;
    Told();
  }
  EXPECT_EQ(TEVInsCheckEmptyDir(nullptr, "aix", nullptr), -10);
  chmod(Path("empty").c_str(), 0555);
  AsNobody([&] {
    EXPECT_EQ(TEVInsCheckEmptyDir(Path("empty").c_str(), "aix", &message_), -1);
    EXPECT_EQ(TEVInsCheckEmptyDir("/usr/missing", &message_), -1);
    EXPECT_EQ(Told(), Message("ErrWndNoWriteDir", "/usr"));
  });
}

TEST_F(DirsTest, MeasuresSpace) {
  unsigned int available = 1;
  EXPECT_EQ(TEVInsComputeAvailSpace("missing", &available, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrWndAvailSpace", "", std::strerror(ENOENT)));
  EXPECT_EQ(TEVInsCheckEnvDir("missing", &message_), -1);
  EXPECT_EQ(TEVInsCheckEnvDir(nullptr, nullptr), -10);
  const struct {
    unsigned long size, blocks;
    unsigned int kilobytes;
    bool enough;
  } kCases[] = {{512, 3, 1, false},  {4096, 10, 40, true}, {1000, 2047, 1000, true},
                {1, 7168, 7, false}, {1, 8192, 8, true},   {1UL << 20, 1UL << 40, 0, false}};
  for (const auto& c : kCases) {
    file_system = {true, c.size, c.blocks};
    EXPECT_EQ(TEVInsComputeAvailSpace(Path("a/b").c_str(), &available, nullptr), 0);
    EXPECT_EQ(available, c.kilobytes);
    EXPECT_EQ(TEVInsCheckEnvDir(dir_.c_str(), &message_), c.enough ? 2 : -2);
    EXPECT_EQ(TEVInsCheckEnvDir(Path("a/b").c_str(), &message_), c.enough ? 1 : -2);
  }
  EXPECT_EQ(Told(), Message("ErrWndNoSpaceEnvDir", dir_));
}

TEST_F(DirsTest, CreatesTrees) {
  const mode_t before = umask(0);
  CharPath path(Path("x/y/z/"));
  EXPECT_EQ(TEVInsCreateDirectory(path), 0);
  umask(before);
  EXPECT_EQ(path.str(), Path("x/y/z"));
  EXPECT_EQ(fs::status(path.str()).permissions(), fs::perms(0755));
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
  const std::string line(1500, 'x');
  const std::map<std::string, std::string> kCases = {{"/opt/x\nsecond\n", "/opt/x"},
                                                     {"no newline", "no newline"},
                                                     {"", ""},
                                                     {"\nsecond", ""},
                                                     {line, line.substr(0, 1023)}};
  for (const auto& [content, expected] : kCases) {
    Write("CodeDir.txt", content);
    EXPECT_EQ(TEVInsGetCodeDir(CharPath(dir_), result), 1);
    EXPECT_EQ(result, expected);
  }
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
  const std::string expected[] = {"before",          "aix_a", "solaris_a",
                                  "0123456789abcde", "fgh",   "before"};
  for (int index = 0; index <= 5; ++index) EXPECT_EQ(word(index), expected[index]);
  Write("OSUNIX", "one");
  EXPECT_EQ(word(2), "");
  fs::remove(Path("OSUNIX"));
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
