#include <dlfcn.h>
#include <kwinstutil/services.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <vector>

#include "fixture.h"

namespace fs = std::filesystem;

namespace {

/// The function that fails once, after some calls that go well.
struct {
  const char* function = "";
  int good_calls = 0;
} fault;

bool Fails(const char* function) {
  if (std::strcmp(fault.function, function) != 0 || fault.good_calls-- != 0) return false;
  errno = EIO;
  return true;
}

template <typename Function>
Function* Real(const char* name, Function*) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
std::FILE* fopen(const char* path, const char* mode) {
  return Fails("fopen") ? nullptr : Real("fopen", &fopen)(path, mode);
}
size_t fwrite(const void* data, size_t size, size_t count, std::FILE* file) {
  return Real("fwrite", &fwrite)(data, size, Fails("fwrite") ? count / 2 : count, file);
}
int fclose(std::FILE* file) {
  const int status = Real("fclose", &fclose)(file);
  return Fails("fclose") ? EOF : status;
}
int rename(const char* from, const char* to) noexcept {
  return Fails("rename") ? -1 : Real("rename", &rename)(from, to);
}
int unlink(const char* path) noexcept {
  return Fails("unlink") ? -1 : Real("unlink", &unlink)(path);
}
}
#pragma GCC visibility pop

// The library allocates its line tables with this.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return Fails("new") ? nullptr : ::operator new(size);
}

namespace {

const std::string kEnd = "#Brovik Communication ports\n";
const std::string kBb = "morvelk7bb       1/tcp   " + kEnd;
const std::string kRun = "morvelk7run      2/tcp   " + kEnd;
const std::string kBroker = "TEVDeviceBroker 3/tcp     " + kEnd;
const std::string kAddedBroker = "TEVDeviceBroker 3/tcp  " + kEnd;
const std::string kAppended =
    "morvelk7bb       1/tcp  " + kEnd + "morvelk7run      2/tcp  " + kEnd + kAddedBroker;
const std::string kDemon = "morvelk7run stream tcp nowait root /d  #TEVSysDemon\n";
const std::string kEntry = "mi-ray stream tcp nowait root /s/ray.sh ray.sh /s";
const std::string kRay = kEntry + "\n";
const std::string kNone = "(no file)";

class ServicesTest : public Fixture {
 protected:
  /// An update of a file from one content to another.
  struct Update {
    std::string file, before, after;
    int failure;  ///< its status
    std::function<int()> run;
  };

  ServicesTest() {
    for (const char* variable : {"VRK_ODT_IN", "VRK_ODT_OUT"}) SetEnv(variable, "");
    SetEnv("VRK_ODT_TMP", dir_.c_str());
  }

  int NewPorts(int bb, int run, int broker) {
    return UpdateNewPorts(bb, run, broker, CharPath(services_), &message_);
  }

  void ExpectMessage(const std::string& expected) {
    EXPECT_EQ(message_.ConvertToChar(), expected);
    message_ = "untouched";
  }

  /// Updates a file that has `before` in it.
  void ExpectUpdate(const Update& update, const std::string& before, const std::string& after) {
    SCOPED_TRACE(before.substr(0, 60));
    Write(update.file.substr(dir_.size()), before);
    EXPECT_EQ(update.run(), 1);
    ExpectMessage(Message("OKWriteServicesFile", update.file));
    EXPECT_TRUE(Read(update.file) == after) << Read(update.file).substr(0, 2000);
    EXPECT_EQ(Read(update.file + ".tmp"), kNone);
  }

  /// Updates a file while the `call`th call of a function fails.
  void ExpectFailure(const Update& update, const char* function, int call, int status,
                     const std::string& message, const std::string& after,
                     const std::string& temporary = kNone) {
    SCOPED_TRACE(update.file + ", " + function + " call " + std::to_string(call));
    fs::remove(update.file + ".tmp");
    Write(update.file.substr(dir_.size()), update.before);
    fault = {function, call - 1};
    EXPECT_EQ(update.run(), status);
    EXPECT_EQ(fault.good_calls, -1) << "the function was not called";
    fault = {};
    ExpectMessage(message);
    EXPECT_EQ(Read(update.file), after);
    EXPECT_EQ(Read(update.file + ".tmp"), temporary);
  }

  const std::string services_ = Path("services");
  const std::string inetd_ = Path("inetd.conf");
  TEVUnicodeString message_ = "untouched";

  const std::function<int()> demon_ = [this] { return UpdateDemon(CharPath("/d"), &message_); };
  const std::function<int()> satellite_ = [this] {
    return SatUpdateInet(CharPath("/s"), message_);
  };
  const Update appends_[4] = {
      {services_, "x", "x\n" + kAppended, -1,
       [this] { return UpdatePorts(1, 2, 3, CharPath(services_), &message_); }},
      {services_, "x", "x\n" + kAppended, -1, [this] { return NewPorts(1, 2, 3); }},
      {inetd_, "x", "x\n" + kDemon, -1, demon_},
      {inetd_, "x", "x\n" + kRay, -2, satellite_}};
  const Update new_ports_ = {services_, "x\nmorvelk7bb", "x\n" + kBb + kRun + kAddedBroker, -1,
                             appends_[1].run};
  const Update programs_[2] = {
      {inetd_, "morvelk7run2\nmi-ray\nmorvelk7run", kDemon + "mi-ray\n" + kDemon, -1, demon_},
      {inetd_, "mi-ray2\n#\nmi-ray\nx", kRay + "#\n" + kRay + "x", -2, satellite_}};
};

TEST_F(ServicesTest, Registers) {
  for (const Update& update : appends_) {
    ExpectUpdate(update, update.before, update.after);
    ExpectUpdate(update, "", update.after.substr(2));
  }
  for (const Update& update : programs_) ExpectUpdate(update, update.before, update.after);
  ExpectUpdate(new_ports_, new_ports_.before, new_ports_.after);
  ExpectUpdate(appends_[0], kAppended, kAppended + kAppended);
  ExpectUpdate(programs_[1], kRay, kRay);
  Write("inetd.conf", "mi-ray 1\n" + kEntry);
  EXPECT_EQ(satellite_(), 0);
  ExpectMessage("untouched");
}

TEST_F(ServicesTest, ReplacesPorts) {
  const std::string binary("a\0b\n\xff\xfe\r\n", 8);
  const std::string line_1023 = std::string(1022, 'x') + "\n";
  const std::string piece(1023, 'x');
  std::string many;
  for (int i = 0; i < 100'000; ++i) many += "service" + std::to_string(i) + " 1/udp # a comment\n";
  const struct {
    int bb, run, broker;
    std::string before, after;
  } kCases[] = {
      {0, 0, 0, "#morvelk7bb\n morvelk7run", "#morvelk7bb\n morvelk7run"},
      {0, 2, 0, "morvelk7run 8\nftp\nmorvelk7runner", kRun + "ftp\n" + kRun},
      {1, 0, 3, "TEVDeviceBroker\nmorvelk7bb", kBroker + kBb},
      {0, 0, 0, "morvelk7bb\nftp", "morvelk7bb\nftp"},
      {1, 0, 0, binary + "morvelk7bb\n" + binary, binary + kBb + binary},
      {1, 0, 0, line_1023 + "morvelk7bb\n", line_1023 + kBb},
      {1, 0, 0, piece + "morvelk7bb y\nz", piece + kBb + "z"},
      {1, 0, 0, "morvelk7bb" + std::string(4990, 'x'), kBb + std::string(5000 - 1023, 'x')},
      {1, 2, 3, many + "morvelk7bb\n", many + kBb + kRun + kAddedBroker},
      {1, 2, 3, many, many + kAppended},
  };
  for (const auto& c : kCases) {
    const Update update = {services_, "", "", -1, [&] { return NewPorts(c.bb, c.run, c.broker); }};
    ExpectUpdate(update, c.before, c.after);
  }
}

TEST_F(ServicesTest, AProgramThatFillsASlot) {
  const std::string path(973, 'd');
  const std::string full = "morvelk7run stream tcp nowait root " + path + "  #TEVSysDemon\n";
  const Update update = {inetd_, "", "", -1,
                         [&] { return UpdateDemon(CharPath(path), &message_); }};
  ExpectUpdate(update, kDemon, full);
  EXPECT_EQ(UpdateDemon(CharPath(path + "d"), &message_), -1);
  ExpectMessage(Message("ErrWndWriteServicesFile", inetd_));
  EXPECT_EQ(Read(inetd_), full);
}

TEST_F(ServicesTest, LooksForEntries) {
  const struct {
    std::string services;
    int both, broker, satellite;
    std::string added;
  } kCases[] = {
      {"morvelk7bb\n", -1, -1, 1, "mi-ray          7001/tcp   # Rendering slave\n"},
      {"morvelk7run\nx\nmorvelk7bb", 1, -1, 1, "\nmi-ray          7001/tcp   # Rendering slave\n"},
      {" TEVDeviceBroker\n# see mi-ray\n", -1, -1, 0, ""},
      {"TEVDeviceBroker2 mi-ray", -1, 1, 0, ""}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.services);
    Write("services", c.services);
    EXPECT_EQ(CheckEtcServices(100), c.both);
    EXPECT_EQ(CheckEtcServices(0), c.broker);
    EXPECT_EQ(SatUpdateService(message_), c.satellite);
    EXPECT_EQ(Read(services_), c.services + c.added);
  }
  const std::string entry =
      "morvelk7run stream tcp nowait root /i/code/bin/TEVSysDemon  #TEVSysDemon";
  for (const auto& [text, needed] : std::map<std::string, int>{
           {"x\n" + entry, 0}, {entry + "\nx", 0}, {entry + " \n", 1}, {"#" + entry, 1}}) {
    EXPECT_EQ(CheckNeedUpdateServices(CharPath(Write("file", text)), CharPath("/i")), needed);
  }
  EXPECT_EQ(CheckNeedUpdateServices(CharPath(Path("no")), CharPath("/i")), 1);
  EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), 0);
  for (const auto& [text, megabytes] : std::map<std::string, int>{
           {"2048000 KB\n", 2000}, {"\n 2047", 1}, {"4294967295", 4194303}, {"x", 0}}) {
    Write("LFSFS", text);
    EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), megabytes) << text;
  }
  EXPECT_EQ(SatUpdateInet(nullptr, message_), -2);
  SetEnv("VRK_ODT_TMP", nullptr);
  EXPECT_EQ(CheckEtcServices(0), -1);
  EXPECT_EQ(SatUpdateService(message_), -1);
  ExpectMessage("untouched");
  for (const Update& update : programs_) {
    EXPECT_EQ(update.run(), update.failure);
    ExpectMessage(Message("ErrVRK_ODT_TMP"));
  }
}

TEST_F(ServicesTest, FilesThatCannotBeOpened) {
  const auto expect_refusals = [this](int error, int satellite) {
    SCOPED_TRACE(std::strerror(error));
    for (const Update& update : appends_) {
      EXPECT_EQ(update.run(), update.failure);
      ExpectMessage(Message("ErrWndOpenServicesFile", update.file, std::strerror(error)));
    }
    EXPECT_EQ(CheckEtcServices(0), -1);
    EXPECT_EQ(SatUpdateService(message_), satellite);
    fs::remove(services_);
    fs::remove(inetd_);
  };
  for (const std::string& file : {services_, inetd_}) fs::create_symlink("no/no", file);
  expect_refusals(ENOENT, -2);
  for (const std::string& file : {services_, inetd_}) fs::create_directory(file);
  expect_refusals(EISDIR, -2);
  expect_refusals(ENOENT, 1);
  for (const char* file : {"services", "inetd.conf"}) chmod(Write(file).c_str(), 0444);
  chmod(dir_.c_str(), 0777);
  AsNobody([&] { expect_refusals(EACCES, -2); });

  // This one can be opened, and fails when it is read.
  EXPECT_EQ(UpdateNewPorts(1, 2, 3, CharPath("/proc/self/mem"), &message_), -1);
  ExpectMessage(Message("ErrWndOpenServicesFile", "/proc/self/mem", std::strerror(EIO)));
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  EXPECT_EQ(UpdatePorts(1, 2, 3, CharPath("missing"), &message_), -1);
  ExpectMessage("Setup cannot open file missing - No such file or directory\n");
  Write("services");
  EXPECT_EQ(appends_[0].run(), 1);
  ExpectMessage("File " + services_ + "  was updated\n");
  EXPECT_EQ(UpdatePorts(0, 0, 0, CharPath("missing"), nullptr), -1);
  EXPECT_EQ(UpdateNewPorts(0, 0, 0, CharPath("missing"), nullptr), -1);
}

TEST_F(ServicesTest, WhatFailuresLeave) {
  const char* reason = std::strerror(EIO);
  const auto expect_write_failures = [&](const Update& u, int last_close) {
    const std::string message = Message("ErrWndWriteServicesFile", u.file);
    ExpectFailure(u, "fopen", 1, u.failure, Message("ErrWndOpenServicesFile", u.file, reason),
                  u.before);
    ExpectFailure(u, "fwrite", 1, u.failure, message, u.before);
    ExpectFailure(u, "fclose", last_close, u.failure, message, u.before);
  };
  for (const Update& update : appends_) expect_write_failures(update, 1);
  const Update service = {services_, "x", "", -2, [this] { return SatUpdateService(message_); }};
  ExpectFailure(service, "fopen", 2, -2, "untouched", "x");
  ExpectFailure(service, "fwrite", 1, -2, "untouched", "x");
  ExpectFailure(service, "fclose", 2, -2, "untouched", "x");

  const Update& p = new_ports_;
  expect_write_failures(p, 2);
  ExpectFailure(p, "new", 1, -1, Message("ErrWndAllocServicesFile", "", "5120"), p.before);
  ExpectFailure(p, "fopen", 2, -1, Message("ErrWndOpenServicesFile", "", reason), p.before);
  ExpectFailure(p, "unlink", 1, 1, Message("OKWriteServicesFile", p.file), p.after);
  ExpectFailure(p, "rename", 1, 1, Message("KORenameServicesFile", p.file), kNone, p.after);
  for (const Update& u : programs_) {
    expect_write_failures(u, 2);
    ExpectFailure(u, "new", 1, u.failure, "untouched", u.before);
    ExpectFailure(u, "rename", 1, u.failure, Message("ErrWndRenameServicesFile", u.file, reason),
                  u.before);
    ExpectFailure(u, "fopen", 2, u.failure, Message("ErrWndOpenServicesFile", u.file, reason),
                  kNone, u.before);
    ExpectFailure(u, "unlink", 1, 1, Message("OKWriteServicesFile", u.file), u.after, u.before);
  }
}

TEST_F(ServicesTest, KeepsModeAndOwner) {
  const bool root = geteuid() == 0;
  for (const Update& update : {new_ports_, programs_[0]}) {
    Write(update.file.substr(dir_.size()), update.before);
    chmod(update.file.c_str(), 0646);
    EXPECT_EQ(root ? chown(update.file.c_str(), 1, 2) : 0, 0);
    EXPECT_EQ(update.run(), 1);
    struct stat info {};
    ASSERT_EQ(stat(update.file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0646U);
    EXPECT_EQ(info.st_uid, root ? 1U : geteuid());
    EXPECT_EQ(info.st_gid, root ? 2U : getegid());
  }
  // Who may write the file, but not give a new one to its owner, is refused.
  chmod(dir_.c_str(), 0777);
  if (root) AsNobody([this] { EXPECT_EQ(NewPorts(9, 9, 9), -1); });
  EXPECT_EQ(Read(services_), new_ports_.after);
  // A rewritten file takes a link's place; an appended one is reached through it.
  fs::rename(services_, Path("real"));
  fs::create_symlink("real", services_);
  EXPECT_EQ(appends_[0].run(), 1);
  EXPECT_EQ(Read(Path("real")), new_ports_.after + kAppended);
  EXPECT_EQ(NewPorts(0, 0, 0), 1);
  EXPECT_FALSE(fs::is_symlink(services_));
  EXPECT_EQ(Read(Path("real")), Read(services_));
}

}  // namespace
