#include <dlfcn.h>
#include <kwinstutil/ports.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "fixture.h"

namespace {

/// A network of the test's own, where that is allowed: then no other program takes its ports.
[[maybe_unused]] const bool private_network = unshare(CLONE_NEWNET) == 0;

/// Ports that a test takes and gives back start here.
const int base = 20'000 + getpid() % 1'000 * 10;

bool sockets_end = false;  ///< no more sockets can be made
bool names_end = false;    ///< no socket tells its address

std::string Text(int number) { return std::to_string(number); }

}  // namespace

extern "C" __attribute__((visibility("default"))) int socket(int domain, int type,
                                                             int protocol) noexcept {
  static const auto real = reinterpret_cast<decltype(&socket)>(dlsym(RTLD_NEXT, "socket"));
  errno = EMFILE;
  return sockets_end ? -1 : real(domain, type, protocol);
}

extern "C" __attribute__((visibility("default"))) int getsockname(int socket, sockaddr* address,
                                                                  socklen_t* size) noexcept {
  static const auto real =
      reinterpret_cast<decltype(&getsockname)>(dlsym(RTLD_NEXT, "getsockname"));
  errno = ENOBUFS;
  return names_end ? -1 : real(socket, address, size);
}

namespace {

class PortsTest : public Fixture {
 protected:
  ~PortsTest() override { GiveBack(); }

  void Take(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    taken_.push_back(socket(AF_INET, SOCK_STREAM, 0));
    bind(taken_.back(), reinterpret_cast<sockaddr*>(&address), sizeof(address));
  }

  void GiveBack() {
    for (const int socket : taken_) close(socket);
    taken_.clear();
  }

  std::string Told() const { return message_.ConvertToChar(); }

  TEVUnicodeString message_ = "kept ";

 private:
  std::vector<int> taken_;
};

std::string Env(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value == nullptr ? "(not set)" : value;
}

TEST_F(PortsTest, SearchesTheFirstFreePort) {
  for (const int port : {base, base + 1, 65535}) Take(port);
  const int before = dup(0);
  close(before);
  EXPECT_EQ(GetFreePort(base, &message_, 65535), base + 2);
  EXPECT_EQ(GetFreePort(base + 2, &message_, base + 2), base + 2);
  EXPECT_EQ(Told(), "kept ");
  EXPECT_EQ(dup(0), before) << "a socket is still open";
  const struct {
    int start, max;
    const char* key;
  } kCases[] = {{base, base + 1, "ErrSearchFreePort"},
                {2000, 1999, "ErrValuePortTooBig"},
                {65535, 65535, "ErrSearchFreePort"},
                {65535, 70000, "ErrSearchFreePort"},
                {67000, 70000, "ErrSearchFreePort"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(GetFreePort(c.start, &message_, c.max), -1);
    EXPECT_EQ(Told(), Message(c.key, Text(c.start), Text(c.max)));
  }
  EXPECT_EQ(GetFreePort(base, nullptr, 65535), -1);
  names_end = true;
  EXPECT_EQ(GetFreePort(base + 9, &message_, 65535), -1);  // which is taken from now on
  EXPECT_EQ(Told(), Message("Errgetsockname", Text(base + 9), std::strerror(ENOBUFS)));
  names_end = false;
  sockets_end = true;
  EXPECT_EQ(GetFreePort(base, &message_, 65535), -1);
  EXPECT_EQ(Told(), Message("ErrCreateSocket", Text(base), std::strerror(EMFILE)));
  sockets_end = false;
}

TEST_F(PortsTest, ReplacesTakenAndEqualRunPorts) {
  // Ports are counted from `base`; in `moved` each pair is an old and a new one.
  const struct {
    std::vector<int> taken, ports, result, moved;
  } kCases[] = {{{}, {0}, {0}, {}},
                {{0}, {0}, {1}, {0, 1}},
                {{}, {0, 1}, {0, 1}, {}},
                {{}, {0, 0}, {1, 0}, {0, 1}},
                {{0, 1}, {0, 1}, {2, 3}, {0, 2, 1, 3}},
                {{}, {0, 0, 0}, {1, 2, 0}, {0, 1, 0, 2}},
                {{0}, {0, 1, 2}, {3, 1, 2}, {0, 3}},
                {{0, 1, 2}, {0, 1, 2}, {3, 4, 5}, {0, 3, 1, 4, 2, 5}}};
  for (const auto& c : kCases) {
    for (const int port : c.taken) Take(base + port);
    std::vector<int> p = c.ports;
    for (int& port : p) port += base;
    message_ = "kept ";
    std::string told = "kept ";
    const int status = p.size() == 1   ? CheckK7RunPortValue(&p[0], &message_)
                       : p.size() == 2 ? CheckK7RunPortValue(&p[0], &p[1], &message_)
                                       : CheckK7RunPortValue(&p[0], &p[1], &p[2], &message_);
    for (size_t i = 0; i < c.moved.size(); i += 2) {
      told +=
          Message("ErrWndK7RunPortNotFree", Text(base + c.moved[i]), Text(base + c.moved[i + 1]));
    }
    for (int& port : p) port -= base;
    EXPECT_EQ(p, c.result);
    EXPECT_EQ(status, c.moved.empty() ? 1 : 0);
    EXPECT_EQ(Told(), told);
    GiveBack();
  }
}

TEST_F(PortsTest, RefusesRunPortsOutOfRange) {
  int low = 1023, high = 65536, last = 65535, other = 65535;
  EXPECT_EQ(CheckValuePortMinMax(1024, nullptr) + CheckValuePortMinMax(65535, nullptr), 2);
  EXPECT_EQ(CheckValuePortMinMax(1023, nullptr) + CheckValuePortMinMax(65536, nullptr), 0);
  EXPECT_EQ(CheckK7RunPortValue(&low, &high, &last, &message_), 0);
  EXPECT_EQ(Told(), "kept " + Message("ErrWndK7RunPort", "1023", "1024") +
                        Message("ErrWndK7RunPortMax", "65536", "65535"));
  EXPECT_EQ(CheckK7RunPortValue(nullptr, &message_), -1);
  EXPECT_EQ(CheckK7RunPortValue(&low, nullptr, &message_), -1);
  EXPECT_EQ(CheckK7RunPortValue(&low, &high, nullptr, &message_), -1);
  EXPECT_EQ(CheckK7RunPortValue(&last, nullptr), -1);
  EXPECT_EQ(CheckK7RunPortValue(&last, &other, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrValuePortTooBig", "65536", "65535"));
}

TEST_F(PortsTest, ChecksAndExportsTheOrbDaemon) {
  const auto check = [this](int port, int first, int range, int boot) {
    return TEVInsCheckOrbixValue(port, first, range, boot, &message_);
  };
  const auto exported = [] {
    return Env("ORBIX_ItDaemonPort") + " " + Env("ORBIX_ItDaemonServerBase") + " " +
           Env("ORBIX_ItDaemonServerRange") + " " + Env("ORBIX_BootInit");
  };
  ASSERT_EQ(check(1024, 1025, 64510, 1), 1) << Told();
  EXPECT_EQ(exported() + Told(), "1024 1025 64510 1kept ");
  Take(base);
  const struct {
    int port, first, range;
    const char* key;
    int p1, p2;
  } kCases[] = {{1023, 0, 0, "ErrBadOrbixPort1", 1023, 1023},
                {49152, 0, 0, "ErrBadOrbixPort2", 49152, 49152},
                {49151, 1023, 0, "ErrBadServerBase1", 1023, 1023},
                {1024, 65486, 0, "ErrBadServerBase2", 65486, 65486},
                {1024, 65485, 49, "ErrBadServerRange1", 49, 49},
                {1024, 65485, 51, "ErrBadServerRange2", 51, 51},
                {base, 1024, 50, "ErrWndOrbixPortNotFree", base, base + 1},
                {1024, 1024, 50, "ErrWndOrbixServerBase", 1024, 1024}};
  for (const auto& c : kCases) {
    EXPECT_EQ(check(c.port, c.first, c.range, 0), 0);
    EXPECT_EQ(Told(), Message(c.key, Text(c.p1), Text(c.p2)));
  }
  Take(49151);
  EXPECT_EQ(check(49151, 65485, 50, 0), 0);
  EXPECT_EQ(Told(), Message("ErrSearchFreePort", "49151", "49151"));
  EXPECT_EQ(TEVInsCheckOrbixValue(1024, 1025, 50, 0, nullptr), -1);
  EXPECT_EQ(exported(), "1024 1025 64510 1");
  EXPECT_EQ(check(1024, 65485, 50, 2), 1);
  EXPECT_EQ(exported(), "1024 65485 50 0");

  // One remembered port lies over the first bytes of an entry.
  EXPECT_EQ(SetFreePort(200, 1, 2, 3) + SetFreePort(400, 1, 2, 3) + InitFreePort(400), 0);
  EXPECT_STREQ(varOrbixPort, "ORBIX_ItDaemonPort=1024");
  EXPECT_EQ(InitFreePort(100), 0);
  EXPECT_EQ(std::string(varOrbixPort, 6), std::string("\0\0\x1f\x92X_", 6));
  EXPECT_EQ(SetFreePort(500, 0x010203, 2, 3), 0);
  EXPECT_EQ(std::string(varOrbixPort, 6), std::string("\0\1\2\3X_", 6));
}

TEST_F(PortsTest, AsksForAndStartsTheOrbDaemon) {
  const auto program = [this](const std::string& path, const std::string& text) {
    std::filesystem::permissions(Write(path, "#!/bin/sh\n" + text), std::filesystem::perms(0755));
  };
  EXPECT_EQ(IsOrbixRunning(CharPath(dir_)), 0);
  for (const char* text : {"test $# = 0", "exit 3", "kill -9 $$"}) {
    program("code/bin/lsit", text);
    EXPECT_EQ(IsOrbixRunning(CharPath(dir_)), text[0] == 't' ? 1 : 0) << text;
  }
  SetEnv("IT_CONFIG_PATH", nullptr);
  char host[256] = "";
  gethostname(host, sizeof(host));
  for (const char* before : {static_cast<const char*>(nullptr), ""}) {
    SetEnv("LD_LIBRARYN32_PATH", before);
    std::string libraries = before == nullptr ? "" : ":";
    std::string dir = Path("d");
    for (int restart = 0; restart < 5; ++restart) {  // each from a longer directory
      const std::string name = dir.substr(dir_.size() + 1) + "/code/bin/orbixd";
      program(name, "echo $* $DISPLAY $PWD $IT_CONFIG_PATH $LD_LIBRARYN32_PATH > new; mv new told");
      EXPECT_EQ(TEVInsRestartOrbix(CharPath(dir)), 0);
      libraries.insert(0, dir + "/code/patchOrbixIRIX" + (restart == 0 ? "" : ":"));
      for (int i = 0; i < 1000 && !Exists(dir + "/told"); ++i) usleep(10'000);
      EXPECT_EQ(Read(dir + "/told"), "-u -s -t " + std::string(host) + ":0 " + dir + " " + dir +
                                         "/startup/orbix " + libraries + "\n");
      std::filesystem::remove(dir + "/told");
      dir += "/" + std::string(200, 'x');
    }
  }
}

TEST_F(PortsTest, ExportsTheMetaSearch) {
  const auto exported = [] {
    std::string values;
    for (const char* name : {"Port", "Server", "ProxyLogin", "ProxyPassword", "MailServer",
                             "MailPort", "Language", "EnableProxy", "ProxyHost", "ProxyPort",
                             "ProxyDomains", "Email", "Time", "SnapshotsPort"}) {
      values += Env(std::string("MetaSearch") + name) + ";";
    }
    return values;
  };
  const auto check = [this](MetaSearchData data) {
    return TEVInsCheckMetasearch(&data, &message_);
  };
  const std::string nothing(14, ';');
  EXPECT_EQ(TEVInsCheckMetasearch(nullptr, nullptr), 1);
  EXPECT_EQ(exported(), nothing);
  Take(base);
  MetaSearchData data = {"en",    "host", base + 1, "mail", 0,        0,       "proxy",
                         "login", "pw",   -1,       "a,b",  base + 1, nullptr, "12:00"};
  EXPECT_EQ(check(data), 1);
  EXPECT_EQ(exported(), Text(base + 1) + ";host;login;pw;mail;0;en;NO;proxy;-1;a,b;;12:00;" +
                            Text(base + 1) + ";");
  const std::string email(127 - 16, 'x');  // the longest texts that fit
  const std::string domains(1023 - 23, 'x');
  std::memset(data.language, 'x', 127 - 19);
  data.enableProxy = 2;
  data.email = email.c_str();
  data.proxyDomains = domains.c_str();
  EXPECT_EQ(check(data), 1);
  EXPECT_EQ(Env("MetaSearchEmail") + Env("MetaSearchProxyDomains"), email + domains);
  EXPECT_EQ(Env("MetaSearchEnableProxy") + Told(), "YESkept ");

  const std::string longer_email = email + "x";
  const std::string longer_domains = domains + "x";
  MetaSearchData bad[] = {data, data, data, data, data, data};
  bad[0].port = bad[1].snapshotsPort = base;
  bad[2].port = -1;
  bad[3].email = longer_email.c_str();
  bad[4].proxyDomains = longer_domains.c_str();
  std::memset(bad[5].language, 'x', sizeof(bad[5].language));
  for (size_t i = 0; i < 6; ++i) {
    message_ = "kept ";
    EXPECT_EQ(check(bad[i]), -1) << i;
    EXPECT_EQ(exported(), nothing);
    if (i != 2) {
      EXPECT_EQ(Told(),
                i > 2 ? "kept " : Message("ErrWndOrbixPortNotFree", Text(base), Text(base + 1)));
    }
  }
  EXPECT_EQ(TEVInsCheckMetasearch(&data, nullptr), -1);
}

}  // namespace
