#include <kb0core/TEVEnvironment.h>
#include <kwinstutil/env.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "fixture.h"

namespace {

using Names = std::initializer_list<const char*>;

class EnvTest : public Fixture {
 protected:
  /// The values of the variables, each with a ";" behind it; "-" for one that is not set.
  static std::string Env(Names names) {
    std::string values;
    for (const char* name : names) {
      const char* value = std::getenv(name);
      values += (value == nullptr ? "-" : value) + std::string(";");
    }
    return values;
  }

  void Unset(Names names) {
    for (const char* name : names) SetEnv(name, nullptr);
  }

  /// What has been told since the last call.
  std::string Told() {
    std::string told = message_.ConvertToChar();
    message_ = "";
    return told;
  }

  TEVUnicodeString message_;
};

TEST_F(EnvTest, FindsTheEnvironmentFile) {
  const auto path = [this](const char* old_mode, const char* lp, std::string_view dir) {
    SetEnv("OLD_ENVIRONMENT_MODE", old_mode);
    if (lp != nullptr) Write("k7.lp", lp);
    Write("EnvDir.txt", dir);
    char result[1540] = " untouched";
    const int status = TEVInsEnvname(CharPath(dir_), CharPath("k7"), result);
    return std::to_string(status) + result;
  };
  const std::string refused = "0 untouched";
  const std::string longer(1100, 'x');
  EXPECT_EQ(path(nullptr, nullptr, "dir"), refused);
  EXPECT_EQ(path(nullptr, " \n", "dir"), refused);
  EXPECT_EQ(path(nullptr, "name", " \n"), refused);
  EXPECT_EQ(path(nullptr, " \n\tEnv one\n", "/env/dir"), "1/env/dir/Env.txt");
  EXPECT_EQ(path("", "Env", "/env/dir\nx"), "1/env/dir/Env.txt");
  EXPECT_EQ(path("x", "\xff\x01", std::string_view("d\0d", 3)), "1d/\xff\x01.sh");
  EXPECT_EQ(path("x", longer.c_str(), longer),
            "1" + longer.substr(0, 1023) + "/" + longer.substr(0, 511) + ".sh");
  std::filesystem::remove(Path("k7.lp"));
  MakeDir("k7.lp");
  EXPECT_EQ(path(nullptr, nullptr, "dir"), refused);
  EXPECT_EQ(TEVInsEnvname(nullptr, CharPath("k7"), CharPath("")), 0);
  EXPECT_EQ(TEVInsEnvname(CharPath(dir_), nullptr, CharPath("")), 0);
  EXPECT_EQ(TEVInsEnvname(CharPath(dir_), CharPath("k7"), nullptr), 0);
}

TEST_F(EnvTest, ExportsTheDataDirectoriesThatPass) {
  const Names names = {"TEVMetasearchPath", "TEVSharedWorkbookPath", "TEVW3PublishPath"};
  Unset(names);
  EXPECT_EQ(ExportDataDirectories(nullptr, nullptr, nullptr, nullptr), 1);
  AsNobody([&] {
    EXPECT_EQ(
        ExportDataDirectories(CharPath("a"), CharPath("/usr/no"), CharPath("/tmp/"), &message_),
        -1);
    EXPECT_EQ(Told(), Message("ErrWndSyntaxDir", "a") + Message("ErrWndNoWriteDir", "/usr"));
    EXPECT_EQ(Env(names), "-;-;/tmp/;");
  });
  const std::string fits = "/no" + std::string(1023 - 18 - 3, 'x');
  EXPECT_EQ(ExportDataDirectories(CharPath(fits), CharPath("/a"), CharPath("a"), nullptr), -1);
  EXPECT_EQ(ExportDataDirectories(CharPath(fits + "x"), CharPath("/b"), nullptr, &message_), -1);
  EXPECT_EQ(Env(names) + Told(), fits + ";/b;-;");
}

TEST_F(EnvTest, ExportsTheTreesBeside) {
  const Names names = {"PORTAL_K6PANEL", "TEV_CUST", "PORTAL_LIBK6",
                       "TEV_TO_INSTALL", "DRX_CUST", "DRX_TO_INSTALL"};
  Unset(names);
  const std::string file = Write("file");
  const std::string too_long = dir_ + std::string(1023, '/');
  const std::string none = "-;-;-;-;-;-;";
  const struct {
    int k6;
    std::string k6_dir;
    int library, drx;
    std::string drx_dir, exported, told;
  } kCases[] = {
      {1, file, 1, 1, dir_, none, Message("ErrWndK6IsNotaDir", file)},
      {1, dir_, 1, 1, "no", none, Message("ErrWndK6IsNotaDir", "no")},
      {1, file, 1, 1, "", none, Message("ErrWndK6IsNotaDir", file) + Message("ErrWndK6IsNotaDir")},
      {1, dir_, 1, 1, too_long, none, ""},
      {1, too_long, 1, 1, dir_, none, ""},
      {0, file, 1, 2, "no", "1;-;-;NO;-;NO;", ""},
      {1, dir_, 2, 0, "", "1;" + dir_ + ";libK6243;YES;-;NO;", ""},
      {1, "/usr", 1, 1, dir_, "1;/usr;libK623;YES;" + dir_ + ";YES;", ""}};
  for (const auto& c : kCases) {
    message_ = c.told.empty() ? "" : "replaced";
    EXPECT_EQ(ExportK6(c.k6, CharPath(c.k6_dir), c.library, c.drx, CharPath(c.drx_dir), &message_),
              c.exported == none ? -1 : 1);
    EXPECT_EQ(Env(names), c.exported);
    EXPECT_EQ(Told(), c.told);
  }
  EXPECT_EQ(ExportK6(1, nullptr, 1, 0, nullptr, &message_), -1);
  EXPECT_EQ(ExportK6(0, nullptr, 0, 0, nullptr, nullptr), -1);
  EXPECT_STREQ(tev_to_install, "TEV_TO_INSTALL=YES");
}

TEST_F(EnvTest, ExportsTheTckServer) {
  const Names names = {"TCK_Mode", "TCK_ServerName", "TCK_ServerPort", "TCK_BootInit"};
  Unset(names);
  sockaddr_in address{};
  socklen_t size = sizeof(address);
  const int taken = socket(AF_INET, SOCK_STREAM, 0);
  address.sin_family = AF_INET;
  bind(taken, reinterpret_cast<sockaddr*>(&address), size);
  getsockname(taken, reinterpret_cast<sockaddr*>(&address), &size);
  const int port = ntohs(address.sin_port);
  const std::string name(127 - 15, 'x');
  const struct {
    std::string mode, name;
    int port, boot, checked;
    std::string told, exported;
  } kCases[] = {
      {"Mode", "", port, 1, 1, "ErrWndTCKServerName|", ""},
      {"Mode", "host", port, 1, 0, "ErrWndTCKPortNotFree|" + std::to_string(port) + "|", ""},
      {"Mode", "host", 65536, 1, 0, "ErrValuePortTooBig|65536|65535|", ""},
      {std::string(119, 'x'), "host", port, 1, 1, "", ""},
      {"Mode", name + "x", port, 1, 1, "", ""},
      {"NoServer", "", 0, 1, 0, "", "NoServer;;0;1;"},
      {"Mode", name, port, 2, 1, "", "Mode;" + name + ";" + std::to_string(port) + ";0;"}};
  std::string exported = "-;-;-;-;";
  for (const auto& c : kCases) {
    EXPECT_EQ(ExportTCK(CharPath(c.mode), CharPath(c.name), c.port, c.boot, &message_, c.checked),
              c.exported.empty() ? -1 : 1);
    EXPECT_EQ(Told().substr(0, c.told.size()), c.told);
    if (!c.exported.empty()) exported = c.exported;
    EXPECT_EQ(Env(names), exported);
  }
  close(taken);
  EXPECT_EQ(ExportTCK(CharPath("M"), CharPath("host"), port, 1, &message_, 0), 1) << Told();
  EXPECT_EQ(ExportTCK(CharPath("NoServer"), CharPath(""), 0, 1, nullptr, 0), -1);
  EXPECT_EQ(ExportTCK(nullptr, CharPath(""), 0, 1, &message_, 0), -1);
  EXPECT_EQ(ExportTCK(CharPath("NoServer"), nullptr, 0, 1, &message_, 0), -1);
}

TEST_F(EnvTest, ExportsInformationTimeoutAndJavaHome) {
  const Names names = {"MORVEL_INFORMATION", "K7_ENV_NAME", "K7_UNLOAD_PATH", "K7_ENV_PATH"};
  Unset(names);
  CharPath u("u"), p("p"), name(std::string(255 - 12, 'x')), longer(name.str() + "x");
  EXPECT_EQ(ExportMorvelInfo(0, u, p, name, nullptr), 1);
  EXPECT_EQ(ExportMorvelInfo(1, u, p, longer, nullptr), -1);
  EXPECT_EQ(Env(names), "NO;-;-;-;");
  EXPECT_EQ(ExportMorvelInfo(2, u, p, nullptr, nullptr), 1);
  EXPECT_EQ(Env(names), "YES;-;u;p;");
  EXPECT_EQ(ExportMorvelInfo(1, nullptr, nullptr, name, nullptr), 1);
  EXPECT_EQ(Env(names), "YES;" + name.str() + ";u;p;");

  SetEnv("JAVA_HOME", "before");
  EXPECT_EQ(ExportJavaHome(CharPath(std::string(1014, 'x')), nullptr), -1);
  EXPECT_EQ(Env({"JAVA_HOME"}), "before;");
  EXPECT_EQ(ExportJavaHome(CharPath(std::string(1013, 'x')), nullptr), 1);
  EXPECT_EQ(ExportJavaHome(nullptr, nullptr), 1);
  EXPECT_EQ(Env({"JAVA_HOME"}), ";");

  for (const int minutes : {2, 35700}) {
    EXPECT_EQ(ExportServersTimeout(minutes, nullptr), 1);
    const std::string child = "test $SERVERS_TIMEOUT = " + std::to_string(minutes);
    EXPECT_EQ(std::system(child.c_str()), 0) << "a child sees another value";
  }
  EXPECT_EQ(ExportServersTimeout(1, nullptr), -1);
  EXPECT_EQ(ExportServersTimeout(35701, &message_), -1);
  EXPECT_EQ(Told() + TimeoutEnv, Message("ErrWndTimeout", "35701") + "SERVERS_TIMEOUT=35700");
}

class JavaTest : public EnvTest {
 protected:
  /// A directory with a program that prints the banner of a Java, or runs a script of its own.
  std::string Home(const std::string& name, const std::string& version, std::string script = "") {
    if (!version.empty()) script = "echo 'java version \"" + version + "\"' >&2";
    const std::string java = Write(name + "/java", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(java, std::filesystem::perms(0755));
    return std::filesystem::path(java).parent_path().parent_path();
  }

  /// Runs each body in a child of its own, side by side: a look at a Java takes a second.
  static void SideBySide(const std::vector<std::function<void()>>& bodies) {
    for (const auto& body : bodies) {
      if (fork() != 0) continue;
      body();
      std::fflush(nullptr);
      _exit(HasFailure() ? 1 : 0);
    }
    for (size_t i = 0; i < bodies.size(); ++i) {
      int status = -1;
      wait(&status);
      EXPECT_EQ(status, 0) << "see the failures above";
    }
  }

  TEVUnicodeString version_ = "kept";
};

TEST_F(JavaTest, AcceptsAClosedListOfVersions) {
  const struct {
    const char *version, *script;
    int status;
    size_t printed;
  } kCases[] = {{"1.3.0", "", -3, 21}, {"1.3.1", "", 1, 21},
                {"1.4.2", "", 1, 21},  {"1.5.0", "", 1, 21},
                {"1.5.1", "", -3, 21}, {"1.6.0", "", -3, 21},
                {"", "exit 3", -3, 0}, {"", "yes 1.6 | head -c 1000000; echo 1.4.", -3, 1024}};
  std::vector<std::function<void()>> checks;
  for (const auto& c : kCases) {
    checks.emplace_back([&, number = std::to_string(checks.size())] {
      const std::string home = Home(number + "/bin", c.version, c.script);
      EXPECT_EQ(TEVInsCheckJavaHome(CharPath(home), version_, message_), c.status) << c.version;
      EXPECT_EQ(Told(), Message("ErrBadJavaVersionUNIX32_32"));
      EXPECT_EQ(std::strlen(version_.ConvertToChar()), c.printed);
    });
  }
  SideBySide(checks);
}

TEST_F(JavaTest, TellsWhyItCannotLook) {
  const std::string home = Home("home/bin", "1.4.2");
  EXPECT_EQ(TEVInsCheckJavaHome(nullptr, version_, message_), -1);
  EXPECT_EQ(Told(), "");
  EXPECT_EQ(TEVInsCheckJavaHome(CharPath(dir_), version_, message_), -1);
  EXPECT_EQ(Told(), Message("ErrWndjreNotFound", dir_ + "/bin"));
  AsNobody([&] {
    const int next = dup(0);
    close(next);
    const rlimit limit = {static_cast<rlim_t>(next) + 1, static_cast<rlim_t>(next) + 1};
    setrlimit(RLIMIT_NOFILE, &limit);  // a file can be opened, but no pipe
    EXPECT_EQ(TEVInsCheckJavaHome(CharPath(home), version_, message_), -1);
    EXPECT_EQ(Told(), Message("ErrGetJavaVersion", home + "/bin/java -version 2>&1"));
  });
  EXPECT_STREQ(version_.ConvertToChar(), "kept");
}

TEST_F(JavaTest, LooksInOnePlaceAfterTheOther) {
  const std::string good = Home("good/bin", "1.4.2");
  const std::string other = Home("other/bin", "1.3.1");
  const std::string bad = Home("bad/bin", "1.6.0");
  Home("odd", "1.4.2");
  const std::string too_long = good + std::string(1024, '/');
  const struct {
    const char *java_home, *j_home, *jre_path;
    std::string path, found;
  } kCases[] = {{good.c_str(), other.c_str(), nullptr, bad + "/bin", good},
                {"", other.c_str(), good.c_str(), "", other},
                {too_long.c_str(), nullptr, other.c_str(), "", other},
                {bad.c_str(), nullptr, "/no", ":" + good + "/bin:" + other + "/bin", good},
                {nullptr, nullptr, nullptr, Path("odd") + ":" + good + "/bin", "/usr"}};
  std::vector<std::function<void()>> searches;
  for (const auto& c : kCases) {
    searches.emplace_back([&] {
      SetEnv("JAVA_HOME", c.java_home);
      SetEnv("J_HOME", c.j_home);
      SetEnv("JREPATH", c.jre_path);
      SetEnv("PATH", c.path.c_str());
      char result[1024] = "before";
      EXPECT_EQ(TEVInsGetJavaHome(result), c.found == "/usr" ? -1 : 1);
      EXPECT_EQ(result, c.found);
    });
  }
  SideBySide(searches);
  EXPECT_EQ(TEVInsGetJavaHome(nullptr), -1);
}

TEST_F(JavaTest, RefusesTheJavaOfThisMachine) {
  const std::string java = TEVFindPath("java", std::getenv("PATH")).ConvertToChar();
  if (java.empty()) GTEST_SKIP() << "there is no java in PATH";
  const std::string home = std::filesystem::canonical(java).parent_path().parent_path();
  EXPECT_EQ(TEVInsCheckJavaHome(CharPath(home), version_, message_), -3);
  EXPECT_NE(version_.SearchSubString("version"), -1) << version_.ConvertToChar();
}

}  // namespace
