#include <kwinstutil/env.h>
#include <kwinstutil/ports.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fixture.h"

namespace {

/// A network of the test's own: no other program has or takes its ports.
const bool private_network =
    unshare(geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) == 0;

std::string Text(int number) { return std::to_string(number); }

class PortsTest : public Fixture {
 protected:
  ~PortsTest() override { GiveBack(); }

  void SetUp() override {
    if (!private_network) GTEST_SKIP() << "the machine's own ports are left alone";
  }

  void Take(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    taken_.push_back(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(bind(taken_.back(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  }

  void GiveBack() {
    for (const int socket : taken_) close(socket);
    taken_.clear();
  }

  std::vector<int> taken_;
};

TEST_F(PortsTest, SearchesTheFirstFreePort) {
  for (const int port : {2000, 2001, 65535}) Take(port);
  EXPECT_EQ(GetFreePort(2000, &message_, 65535), 2002);
  EXPECT_EQ(Told(), kUntouched);
  EXPECT_EQ(GetFreePort(2000, &message_, 2001), -1);
  EXPECT_EQ(Told(), Message("ErrSearchFreePort", "2000", "2001"));
  EXPECT_EQ(GetFreePort(65535, &message_, 70000), -1);
  EXPECT_EQ(Told(), Message("ErrSearchFreePort", "65535", "70000"));
  EXPECT_GT(GetFreePort(-2, &message_, 65535), 0);
  EXPECT_EQ(GetFreePort(-2, &message_, -1), -1);
  EXPECT_EQ(Told(), Message("ErrSearchFreePort", "-2", "-1"));
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  const rlimit none = {0, files.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_EQ(GetFreePort(2000, &message_, 65535), -1);
  setrlimit(RLIMIT_NOFILE, &files);
  EXPECT_EQ(Told(), Message("ErrCreateSocket", "2000", std::strerror(EMFILE)));
  EXPECT_EQ(ExportTCK(CharPath("Mode"), CharPath("host"), 2000, 1, &message_, 0), -1);
  EXPECT_EQ(Told(), Message("ErrWndTCKPortNotFree", "2000", "2002"));
  EXPECT_EQ(ExportTCK(CharPath("Mode"), CharPath("host"), 2002, 1, &message_, 0), 1);
}

TEST_F(PortsTest, ReplacesTakenAndEqualRunPorts) {
  const struct {
    std::vector<int> taken, ports, result;
  } kCases[] = {{/*taken=*/{}, /*ports=*/{2000}, /*result=*/{2000}},
                {/*taken=*/{2000}, /*ports=*/{2000}, /*result=*/{2001}},
                {/*taken=*/{}, /*ports=*/{2000, 2000}, /*result=*/{2001, 2000}},
                {/*taken=*/{2000, 2001}, /*ports=*/{2000, 2001}, /*result=*/{2002, 2003}},
                {/*taken=*/{}, /*ports=*/{2000, 2000, 2000}, /*result=*/{2001, 2002, 2000}},
                {/*taken=*/{2000}, /*ports=*/{2000, 2001, 2002}, /*result=*/{2003, 2001, 2002}}};
  for (const auto& c : kCases) {
    for (const int port : c.taken) Take(port);
    std::vector<int> p = c.ports;
    const int status = p.size() == 1   ? CheckK7RunPortValue(&p[0], &message_)
                       : p.size() == 2 ? CheckK7RunPortValue(&p[0], &p[1], &message_)
                                       : CheckK7RunPortValue(&p[0], &p[1], &p[2], &message_);
    EXPECT_EQ(p, c.result);
    EXPECT_EQ(status, c.result == c.ports ? 1 : 0);
    std::string told = kUntouched;
    for (size_t i = 0; i < p.size(); ++i) {
      if (p[i] == c.ports[i]) continue;
      told += Message("ErrWndK7RunPortNotFree", Text(c.ports[i]), Text(p[i]));
    }
    EXPECT_EQ(Told(), told);
    GiveBack();
  }
  int low = 1023, high = 65536, last = 65535, other = 65535;
  EXPECT_EQ(CheckK7RunPortValue(&low, &high, &last, &message_), 0);
  EXPECT_EQ(Told(), kUntouched + Message("ErrWndK7RunPort", "1023", "1024") +
                        Message("ErrWndK7RunPortMax", "65536", "65535"));
  EXPECT_EQ(CheckK7RunPortValue(&last, &other, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrValuePortTooBig", "65536", "65535"));
}

TEST_F(PortsTest, ChecksAndExportsTheOrbDaemon) {
  const auto names = {"DaemonPort", "DaemonServerBase", "DaemonServerRange"};
  EXPECT_EQ(TEVInsCheckOrbixValue(1024, 1025, 64510, 1, &message_), 1);
  for (const int port : {2000, 49151}) Take(port);
  const auto refused = [](const char* key, int value, int limit) {
    return Message(key, Text(value), Text(limit));
  };
  const struct {
    int port, first, range;
    std::string refusal;
  } kCases[] = {
      {/*port=*/1023, /*first=*/0, /*range=*/0, refused("ErrBadOrbixPort1", 1023, 1023)},
      {/*port=*/49152, /*first=*/0, /*range=*/0, refused("ErrBadOrbixPort2", 49152, 49152)},
      {/*port=*/49151, /*first=*/1023, /*range=*/0, refused("ErrBadServerBase1", 1023, 1023)},
      {/*port=*/1024, /*first=*/65486, /*range=*/0, refused("ErrBadServerBase2", 65486, 65486)},
      {/*port=*/1024, /*first=*/65485, /*range=*/49, refused("ErrBadServerRange1", 49, 49)},
      {/*port=*/1024, /*first=*/65485, /*range=*/51, refused("ErrBadServerRange2", 51, 51)},
      {/*port=*/2000, /*first=*/1024, /*range=*/50, refused("ErrWndOrbixPortNotFree", 2000, 2001)},
      {/*port=*/49151, /*first=*/65485, /*range=*/50, refused("ErrSearchFreePort", 49151, 49151)},
      {/*port=*/1024, /*first=*/1024, /*range=*/50, refused("ErrWndOrbixServerBase", 1024, 1024)}};
  for (const auto& c : kCases) {
    EXPECT_EQ(TEVInsCheckOrbixValue(c.port, c.first, c.range, 0, &message_), 0);
    EXPECT_EQ(Told(), c.refusal);
  }
  EXPECT_EQ(Env(names, "ORBIX_It") + std::getenv("ORBIX_BootInit"), "1024;1025;64510;1");
  // One remembered port lies over the first bytes of an entry, and no other one.
  EXPECT_EQ(SetFreePort(500, 0x010203, 2, 3) + InitFreePort(500), 0);
  EXPECT_EQ(std::string(varOrbixPort, 6), std::string("\0\1\2\3X_", 6));
  EXPECT_EQ(InitFreePort(100) + SetFreePort(100, 1, 2, 3), 0);
  for (const int group : {200, 300, 400})
    EXPECT_EQ(InitFreePort(group) + SetFreePort(group, 1, 2, 3), 0);
  EXPECT_EQ(std::string(varOrbixPort, 6), std::string("\0\0\x1F\x92X_", 6));
}

TEST_F(PortsTest, AsksForAndStartsTheOrbDaemon) {
  EXPECT_EQ(IsOrbixRunning(CharPath(dir_)), 0);
  for (const char* text : {"test $# = 0", "exit 3", "kill -9 $$"}) {
    Program("code/bin/lsit", text);
    EXPECT_EQ(IsOrbixRunning(CharPath(dir_)), text[0] == 't' ? 1 : 0) << text;
  }
  SetEnv("IT_CONFIG_PATH", nullptr);
  SetEnv("LD_LIBRARYN32_PATH", "before");
  Program("code/bin/orbixd", "echo $* $PWD $IT_CONFIG_PATH $LD_LIBRARYN32_PATH > new; mv new told");
  EXPECT_EQ(TEVInsRestartOrbix(CharPath(dir_)), 0);
  for (int i = 0; i < 1000 && !Exists(Path("told")); ++i) usleep(10'000);
  EXPECT_EQ(Read(Path("told")), "-u -s -t " + dir_ + " " + dir_ + "/startup/orbix " + dir_ +
                                    "/code/patchOrbixIRIX:before\n");
}

TEST_F(PortsTest, ExportsTheMetaSearch) {
  const auto names = {"Port",         "Server",   "ProxyLogin",  "ProxyPassword", "MailServer",
                      "MailPort",     "Language", "EnableProxy", "ProxyHost",     "ProxyPort",
                      "ProxyDomains", "Email",    "Time",        "SnapshotsPort"};
  MetaSearchData data = {"en",    "host", 1024, "mail", 0,    0,       "proxy",
                         "login", "pw",   -1,   "a,b",  1025, nullptr, "12:00"};
  EXPECT_EQ(TEVInsCheckMetasearch(&data, &message_), 1);
  EXPECT_EQ(Env(names, "MetaSearch"), "1024;host;login;pw;mail;0;en;NO;proxy;-1;a,b;;12:00;1025;");
  data.email = std::getenv("MetaSearchServer");  // in an entry that is written over
  EXPECT_EQ(TEVInsCheckMetasearch(&data, &message_), 1);
  EXPECT_EQ(Env({"Email"}, "MetaSearch"), "host;");
  Take(2000);
  const std::string too_long(127 - 15, 'x');
  MetaSearchData bad[] = {data, data, data, data};
  bad[0].port = bad[1].snapshotsPort = 2000;
  bad[2].email = too_long.c_str();
  std::memset(bad[3].language, 'x', sizeof(bad[3].language));
  for (MetaSearchData& b : bad) {
    EXPECT_EQ(TEVInsCheckMetasearch(&b, &message_), -1);
    EXPECT_EQ(Told(),
              &b < &bad[2] ? Message("ErrWndOrbixPortNotFree", "2000", "2001") : kUntouched);
    EXPECT_EQ(Env(names, "MetaSearch"), std::string(14, ';'));
  }
  data.email = nullptr;
  data.enableProxy = 2;
  EXPECT_EQ(TEVInsCheckMetasearch(&data, &message_), 1);
  EXPECT_EQ(Env({"EnableProxy"}, "MetaSearch"), "YES;");
  EXPECT_EQ(TEVInsCheckMetasearch(nullptr, nullptr), 1);
  EXPECT_EQ(Env(names, "MetaSearch"), std::string(14, ';'));
}

}  // namespace
