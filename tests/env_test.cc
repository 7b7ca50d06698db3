#include <kwinstutil/env.h>

#include <cstdlib>
#include <cstring>

#include "fixture.h"

namespace {

using EnvTest = Fixture;
using Names = std::initializer_list<const char*>;

TEST_F(EnvTest, FindsTheEnvironmentFile) {
  const std::string longer(1100, 'x');
  const std::string longest = "1" + longer.substr(0, 1023) + "/" + longer.substr(0, 511) + ".sh";
  const struct {
    const char* old_mode;
    std::string lp, dir, result;
  } kCases[] = {{nullptr, " \n", "dir", "0 untouched"},
                {nullptr, "name", " \n", "0 untouched"},
                {nullptr, " \n\tEnv one\n", "/env/dir", "1/env/dir/Env.txt"},
                {"x", "\xff\x01", std::string("d\0d", 3), "1d/\xff\x01.sh"},
                {"x", longer, longer, longest}};
  EXPECT_EQ(TEVInsEnvname(CharPath(dir_), CharPath("k7"), CharPath("")), 0);
  for (const auto& c : kCases) {
    SetEnv("OLD_ENVIRONMENT_MODE", c.old_mode);
    Write("k7.lp", c.lp);
    Write("EnvDir.txt", c.dir);
    char result[1540] = " untouched";
    const int status = TEVInsEnvname(CharPath(dir_), CharPath("k7"), result);
    EXPECT_EQ(std::to_string(status) + result, c.result);
  }
}

TEST_F(EnvTest, ExportsTheDataDirectoriesThatPass) {
  const Names names = {"TEVMetasearchPath", "TEVSharedWorkbookPath", "TEVW3PublishPath"};
  const std::string fits = "/no" + std::string(1023 - 18 - 3, 'x');
  CharPath relative("a"), locked("/usr/no"), good("/tmp/"), longest(fits), longer(fits + "x");
  AsNobody([&] {
    EXPECT_EQ(ExportDataDirectories(relative, locked, good, &message_), -1);
    EXPECT_EQ(Told(),
              kUntouched + Message("ErrWndSyntaxDir", "a") + Message("ErrWndNoWriteDir", "/usr"));
    EXPECT_EQ(Env(names), "-;-;/tmp/;");
  });
  EXPECT_EQ(ExportDataDirectories(longest, CharPath("/a"), relative, nullptr), -1);
  EXPECT_EQ(ExportDataDirectories(longer, CharPath("/b"), nullptr, &message_), -1);
  EXPECT_EQ(Env(names) + Told(), fits + ";/b;-;" + kUntouched);
}

TEST_F(EnvTest, ExportsTheTreesBeside) {
  const Names names = {"PORTAL_K6PANEL", "TEV_CUST", "PORTAL_LIBK6",
                       "TEV_TO_INSTALL", "DRX_CUST", "DRX_TO_INSTALL"};
  const std::string file = "/dev/null", none = "-;-;-;-;-;-;";
  const struct {
    int k6;
    std::string k6_dir;
    int library, drx;
    std::string drx_dir, exported, told;
  } kCases[] = {
      {/*k6=*/1, file, /*library=*/1, /*drx=*/1, "", none,
       Message("ErrWndK6IsNotaDir", file) + Message("ErrWndK6IsNotaDir")},
      {/*k6=*/1, dir_, /*library=*/1, /*drx=*/1, "no", none, Message("ErrWndK6IsNotaDir", "no")},
      {/*k6=*/1, dir_, /*library=*/1, /*drx=*/1, dir_ + std::string(1023, '/'), none, kUntouched},
      {/*k6=*/0, file, /*library=*/1, /*drx=*/2, "no", "1;-;-;NO;-;NO;", kUntouched},
      {/*k6=*/1, dir_, /*library=*/2, /*drx=*/0, "", "1;" + dir_ + ";libK6243;YES;-;NO;",
       kUntouched},
      {/*k6=*/1, "/usr", /*library=*/1, /*drx=*/1, dir_, "1;/usr;libK623;YES;" + dir_ + ";YES;",
       kUntouched}};
  for (const auto& c : kCases) {
    EXPECT_EQ(ExportK6(c.k6, CharPath(c.k6_dir), c.library, c.drx, CharPath(c.drx_dir), &message_),
              c.exported == none ? -1 : 1);
    EXPECT_EQ(Env(names) + Told(), c.exported + c.told);
  }
}

TEST_F(EnvTest, ExportsTheTckServer) {
  const Names names = {"TCK_Mode", "TCK_ServerName", "TCK_ServerPort", "TCK_BootInit"};
  const std::string name(127 - 15, 'x');
  constexpr int kUnchecked = 0, kChecked = 1;
  const struct {
    std::string name;
    int port, checked;
    std::string told, exported;
  } kCases[] = {
      {"", 2000, kChecked, Message("ErrWndTCKServerName"), "-;-;-;-;"},
      {"host", 65536, kUnchecked, Message("ErrValuePortTooBig", "65536", "65535"), "-;-;-;-;"},
      {name + "x", 2000, kChecked, kUntouched, "-;-;-;-;"},
      {name, 2000, kChecked, kUntouched, "Mode;" + name + ";2000;1;"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(ExportTCK(CharPath("Mode"), CharPath(c.name), c.port, 1, &message_, c.checked),
              c.exported[0] == '-' ? -1 : 1);
    EXPECT_EQ(Env(names) + Told(), c.exported + c.told);
  }
  EXPECT_EQ(ExportTCK(CharPath("NoServer"), CharPath(""), 0, 2, &message_, 0), 1);
  EXPECT_EQ(Env(names), "NoServer;;0;0;");
}

TEST_F(EnvTest, ExportsInformationTimeoutAndJavaHome) {
  const Names names = {"MORVEL_INFORMATION", "K7_ENV_NAME", "K7_UNLOAD_PATH", "K7_ENV_PATH"};
  CharPath u("u"), p("p"), name(std::string(255 - 12, 'x')), longer(name.str() + "x");
  EXPECT_EQ(ExportMorvelInfo(0, u, p, name, nullptr), 1);
  EXPECT_EQ(ExportMorvelInfo(1, u, p, longer, nullptr), -1);
  EXPECT_EQ(Env(names), "NO;-;-;-;");
  EXPECT_EQ(ExportMorvelInfo(2, u, nullptr, name, nullptr), 1);
  EXPECT_EQ(Env(names), "YES;" + name.str() + ";u;-;");
  EXPECT_EQ(ExportJavaHome(CharPath(std::string(1014, 'x')), nullptr), -1);
  EXPECT_EQ(ExportJavaHome(nullptr, nullptr), 1);
  for (const int minutes : {2, 35700}) EXPECT_EQ(ExportServersTimeout(minutes, nullptr), 1);
  EXPECT_EQ(std::system("test =$SERVERS_TIMEOUT=$JAVA_HOME = =35700="), 0);  // in a child
  EXPECT_EQ(ExportServersTimeout(35701, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrWndTimeout", "35701"));
  UseDefaultTexts();
  EXPECT_EQ(ExportServersTimeout(1, &message_), -1);
  EXPECT_EQ(Told(),
            "Incorrect timeout value : 1. Timeout value can range from 2 to 35700 minutes\n");
}

TEST_F(EnvTest, AcceptsAClosedListOfJavaVersions) {
  const struct {
    const char* script;
    int status;
    size_t printed;
  } kCases[] = {{"echo 'java version \"1.3.1\"' >&2", 1, 21},
                {"echo 1.5.1", -3, 6},
                {"yes 1.6 | head -c 1000000; echo 1.4.", -3, 1024}};
  TEVUnicodeString version;
  EXPECT_EQ(TEVInsCheckJavaHome(CharPath(dir_), version, message_), -1);
  EXPECT_EQ(Told(), Message("ErrWndjreNotFound", dir_ + "/bin"));
  UseDefaultTexts();
  for (const auto& c : kCases) {
    Program("home/bin/java", c.script);
    EXPECT_EQ(TEVInsCheckJavaHome(CharPath(Path("home")), version, message_), c.status);
    EXPECT_EQ(Told(), "Java version 1.3.1 or higher is required");
    EXPECT_EQ(std::strlen(version.ConvertToChar()), c.printed) << c.script;
  }
  EXPECT_EQ(TEVInsCheckJavaHome(CharPath(dir_), version, message_), -1);
  EXPECT_EQ(Told(), "java was not found in path " + dir_ + "/bin\n");
}

TEST_F(EnvTest, LooksForJavaInOnePlaceAfterTheOther) {
  const std::string good = Path("good"), other = Path("other"), bad = Path("bad");
  Program("good/bin/java", "echo 1.4.2");
  Program("other/bin/java", "echo 1.5.0");
  Program("bad/bin/java", "echo 1.6.0");
  const struct {
    std::string java_home, j_home, jre_path, path, found;
  } kCases[] = {{good, other, "", bad + "/bin", good},
                {good + std::string(1024, '/'), "", other, "", other},
                {bad, "", "/no", ":" + good + "/bin:" + other + "/bin", good},
                {"", "", "", dir_, "/usr"}};
  for (const auto& c : kCases) {
    SetEnv("JAVA_HOME", c.java_home.c_str());
    SetEnv("J_HOME", c.j_home.c_str());
    SetEnv("JREPATH", c.jre_path.c_str());
    SetEnv("PATH", c.path.c_str());
    char result[1024] = "before";
    EXPECT_EQ(TEVInsGetJavaHome(result), c.found == "/usr" ? -1 : 1);
    EXPECT_EQ(result, c.found);
  }
}

}  // namespace
