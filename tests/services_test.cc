#include <kwinstutil/services.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "fixture.h"

namespace fs = std::filesystem;

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

class ServicesTest : public Fixture {
 protected:
  using Run = std::function<int()>;

  /// An update of a file from one content to another.
  struct Update {
    std::string file, before, after;
    int failure;  ///< its status
    Run run;
  };

  ServicesTest() {
    for (const char* v : {"VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"}) SetEnv(v, dir_.c_str());
  }

  int NewPorts(const std::array<int, 3>& ports) {
    return UpdateNewPorts(ports[0], ports[1], ports[2], CharPath(services_), &message_);
  }

  void ExpectRun(const Run& run, int status, const std::string& message) {
    EXPECT_EQ(run(), status);
    EXPECT_EQ(Told(), message);
  }

  void ExpectUpdate(const Update& update) {
    SCOPED_TRACE(update.file + ": " + update.before.substr(0, 60));
    Write(fs::path(update.file).filename(), update.before);
    ExpectRun(update.run, 1, Message("OKWriteServicesFile", update.file));
    EXPECT_TRUE(Read(update.file) == update.after) << Read(update.file).substr(0, 2000);
    EXPECT_FALSE(Exists(update.file + ".tmp"));
  }

  const std::string services_ = Path("services");
  const std::string inetd_ = Path("inetd.conf");

  const Run ports_ = [this] { return UpdatePorts(1, 2, 3, CharPath(services_), &message_); };
  const Run new_ports_ = [this] { return NewPorts({1, 2, 3}); };
  const Run demon_ = [this] { return UpdateDemon(CharPath("/d"), &message_); };
  const Run ray_ = [this] { return SatUpdateInet(CharPath("/s"), message_); };
  /// The first four append lines, the others rewrite the file.
  const Update updates_[7] = {
      {services_, "x", "x\n" + kAppended, -1, ports_},
      {services_, "x", "x\n" + kAppended, -1, new_ports_},
      {inetd_, "x", "x\n" + kDemon, -1, demon_},
      {inetd_, "x", "x\n" + kRay, -2, ray_},
      {services_, "x\nmorvelk7bb", "x\n" + kBb + kRun + kAddedBroker, -1, new_ports_},
      {inetd_, "morvelk7run2\nmi-ray\nmorvelk7run", kDemon + "mi-ray\n" + kDemon, -1, demon_},
      {inetd_, "mi-ray2\n#\nmi-ray\nx", kRay + "#\n" + kRay + "x", -2, ray_}};
};

TEST_F(ServicesTest, Registers) {
  for (const Update& update : updates_) ExpectUpdate(update);
  ExpectUpdate({services_, "", kAppended, 0, new_ports_});
  ExpectUpdate({services_, kAppended, kAppended + kAppended, 0, ports_});
  ExpectUpdate({inetd_, kRay, kRay, 0, ray_});
  Write("inetd.conf", "mi-ray 1\n" + kEntry);
  ExpectRun(ray_, 0, kUntouched);
  EXPECT_EQ(UpdateDemon(CharPath(std::string(2000, 'd')), &message_), 1) << "is only added";
}

TEST_F(ServicesTest, LooksForEntries) {
  for (const char* end : {"", "\nx", " \n"}) {
    Write("file", "morvelk7run stream tcp nowait root /i/code/bin/TEVSysDemon  #TEVSysDemon" +
                      std::string(end));
    EXPECT_EQ(CheckNeedUpdateServices(CharPath(Path("file")), CharPath("/i")), end[0] == ' ');
  }
  EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), 0) << "no file";
  for (const char* size : {"", "\n2047 KB"}) {
    Write("LFSFS", size);
    EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), size[0] == '\0' ? 0 : 1);
  }
}

TEST_F(ServicesTest, FilesThatCannotBeOpened) {
  const auto expect_refusals = [this](int error) {
    for (const Update& u : updates_) {
      ExpectRun(u.run, u.failure, Message("ErrWndOpenServicesFile", u.file, std::strerror(error)));
    }
    EXPECT_EQ(CheckEtcServices(0), -1);
  };
  expect_refusals(ENOENT);
  for (const std::string& file : {services_, inetd_}) ASSERT_EQ(mkfifo(file.c_str(), 0666), 0);
  expect_refusals(ENOTSUP);
  EXPECT_EQ(CheckNeedUpdateServices(CharPath(services_), CharPath("/i")), 1);
  for (const char* file : {"services", "inetd.conf"}) {
    fs::remove(Path(file));
    chmod(Write(file, "morvelk7run").c_str(), 0444);
  }
  AsNobody([&] { expect_refusals(EACCES); });
  const Run too_long = [this] { return UpdateDemon(CharPath(std::string(974, 'd')), &message_); };
  ExpectRun(too_long, -1, Message("ErrWndWriteServicesFile", inetd_));
  MakeDir("inetd.conf.tmp");
  ExpectRun(demon_, -1, Message("ErrWndRenameServicesFile", inetd_, std::strerror(EISDIR)));
}

TEST_F(ServicesTest, TellsWithoutACatalog) {
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  ExpectRun(ports_, -1, "Setup cannot open file " + services_ + " - No such file or directory\n");
  Write("services");
  ExpectRun(ports_, 1, "File " + services_ + "  was updated\n");
  SetEnv("VRK_ODT_TMP", nullptr);
  EXPECT_EQ(SatUpdateService(message_) + CheckEtcServices(0), -2);
  ExpectRun(demon_, -1, "VRK_ODT_TMP is not set\n");
}

TEST_F(ServicesTest, KeepsModeAndOwner) {
  const unsigned owner = geteuid() == 0 ? 1 : geteuid();
  chmod(Write("services").c_str(), 0646);
  EXPECT_EQ(chown(services_.c_str(), owner, getegid()), 0);
  ExpectUpdate(updates_[4]);
  struct stat info {};
  ASSERT_EQ(stat(services_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0646U);
  EXPECT_EQ(info.st_uid, owner);
  // Who may write the file, but not give a new one to its owner, is refused.
  chmod(dir_.c_str(), 0777);
  if (owner == 1) AsNobody([this] { EXPECT_EQ(NewPorts({9, 9, 9}), -1); });
  EXPECT_EQ(Read(services_), updates_[4].after);
  // A rewritten file takes a link's place; an appended one is reached through it.
  fs::rename(services_, Path("real"));
  fs::create_symlink("real", services_);
  EXPECT_EQ(ports_() + NewPorts({0, 0, 0}), 2);
  EXPECT_FALSE(fs::is_symlink(services_));
  EXPECT_EQ(Read(Path("real")), updates_[4].after + kAppended);
  // A link in the place of the new file leads to nothing that is written.
  fs::create_symlink("real", services_ + ".tmp");
  ExpectUpdate(updates_[4]);
  fs::create_hard_link(Write("inetd.conf"), inetd_ + ".tmp");
  ExpectUpdate(updates_[5]);
  EXPECT_EQ(Read(Path("real")), updates_[4].after + kAppended);
}

}  // namespace
