#include <kwinstutil/ports.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "fixture.h"

namespace fs = std::filesystem;

namespace {

// What becomes of the lines is shown by fuzz/services_fuzz.cc.
class ServicesTest : public Fixture {
 protected:
  using Run = std::function<int()>;

  ServicesTest() {
    for (const char* v : {"VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"}) SetEnv(v, dir_.c_str());
  }

  int NewPorts(int port) {
    return UpdateNewPorts(port, port, port, CharPath(services_), &message_);
  }

  void ExpectRun(const Run& run, int status, const std::string& message) {
    EXPECT_EQ(run(), status);
    EXPECT_EQ(Told(), message);
  }

  /// Has lines replaced in a file, which is then another one.
  void Rewrite(const std::string& file, const Run& run) {
    Write(fs::path(file).filename(), "x\nmorvelk7run");
    ExpectRun(run, 1, Message("OKWriteServicesFile", file));
    EXPECT_EQ(Read(file).substr(0, 14), "x\nmorvelk7run ");
    EXPECT_FALSE(Exists(file + ".tmp"));
  }

  const std::string services_ = Path("services");
  const std::string inetd_ = Path("inetd.conf");

  const Run ports_ = [this] { return UpdatePorts(1, 2, 3, CharPath(services_), &message_); };
  const Run new_ports_ = [this] { return NewPorts(1); };
  const Run demon_ = [this] { return UpdateDemon(CharPath("/d"), &message_); };
  const Run ray_ = [this] { return SatUpdateInet(CharPath("/s"), message_); };
};

TEST_F(ServicesTest, AServiceGetsItsNewPort) {
  Write("services", "ftp 21/tcp\nmorvelk7run 1/tcp\nssh 22/tcp\n");
  EXPECT_EQ(UpdateNewPorts(0, 5001, 0, CharPath(Path("services")), &message_), 1);
  EXPECT_EQ(Read(Path("services")),
            "ftp 21/tcp\nmorvelk7run      5001/tcp   #Brovik Communication ports\nssh 22/tcp\n");
}

TEST_F(ServicesTest, ReadsTheSpaceThatTheSatelliteNeeds) {
  EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), 0) << "no file";
  for (const char* size : {"", "\n2047 KB"}) {
    Write("LFSFS", size);
    EXPECT_EQ(SatComputeRequired(CharPath(dir_), message_), size[0] == '\0' ? 0 : 1);
  }
}

TEST_F(ServicesTest, FilesThatCannotBeOpened) {
  const auto expect_refusals = [this](int error) {
    const auto message = [error](const std::string& file) {
      return Message("ErrWndOpenServicesFile", file, std::strerror(error));
    };
    for (const Run& run : {ports_, new_ports_}) ExpectRun(run, -1, message(services_));
    ExpectRun(demon_, -1, message(inetd_));
    ExpectRun(ray_, -2, message(inetd_));
    EXPECT_EQ(CheckEtcServices(0), -1);
  };
  expect_refusals(ENOENT);
  for (const bool loop : {false, true}) {
    fs::create_symlink(loop ? "inetd.conf" : "nowhere", services_);
    fs::create_symlink("services", inetd_);
    expect_refusals(loop ? ELOOP : ENOENT);
    EXPECT_EQ(SatUpdateService(message_), -2);
    EXPECT_TRUE(fs::remove(services_) && fs::remove(inetd_) && !Exists(Path("nowhere")));
  }
  chmod(Write("services", "x").c_str(), 0222);
  AsNobody(
      [&] { EXPECT_EQ(SatUpdateService(message_), 1) << "no need to read what is appended to"; });
  chmod(services_.c_str(), 0644);
  EXPECT_EQ(Read(services_), "x\nmi-ray          7001/tcp   # Rendering slave\n");
  fs::remove(services_);
  for (const std::string& file : {services_, inetd_}) ASSERT_EQ(mkfifo(file.c_str(), 0666), 0);
  expect_refusals(ENOTSUP);
  EXPECT_EQ(CheckNeedUpdateServices(CharPath(services_), CharPath("/i")), 1);
  for (const char* file : {"services", "inetd.conf"}) {
    fs::remove(Path(file));
    chmod(Write(file, "morvelk7run").c_str(), 0444);
  }
  AsNobody([&] { expect_refusals(EACCES); });
  for (const std::string& file : {services_, inetd_}) chmod(file.c_str(), 0644);
  const Run too_long = [this] { return UpdateDemon(CharPath(std::string(974, 'd')), &message_); };
  ExpectRun(too_long, -1, Message("ErrWndWriteServicesFile", inetd_));
  MakeDir("inetd.conf.tmp");
  ExpectRun(demon_, -1, Message("ErrWndRenameServicesFile", inetd_, std::strerror(EISDIR)));
}

TEST_F(ServicesTest, ReportsWithoutACatalog) {
  UseDefaultTexts();
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
  Rewrite(services_, new_ports_);
  struct stat info {};
  ASSERT_EQ(stat(services_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0646U);
  EXPECT_EQ(info.st_uid, owner);
  // Who may write the file, but not give a new one to its owner, is refused.
  const std::string rewritten = Read(services_);
  chmod(dir_.c_str(), 0777);
  if (owner == 1) AsNobody([this] { EXPECT_EQ(NewPorts(9), -1); });
  EXPECT_EQ(Read(services_), rewritten);
  // A link stays one: the file that it leads to is replaced. What a link in the place of the new
  // file or of the backup leads to is not.
  const std::string other = Write("other", "x");
  for (const bool is_inetd : {false, true}) {
    const std::string link = is_inetd ? inetd_ : services_, real = Write("etc/real");
    fs::remove(link);
    fs::create_symlink("etc/real", link);
    fs::create_symlink(other, real + ".tmp");
    Rewrite(link, is_inetd ? demon_ : new_ports_);
    EXPECT_TRUE(fs::is_symlink(link) && fs::is_regular_file(fs::symlink_status(real))) << link;
    EXPECT_FALSE(Exists(real + ".tmp"));
  }
  EXPECT_EQ(Read(other), "x");
  fs::create_hard_link(Path("etc/real"), Path("etc/real.tmp"));
  Rewrite(inetd_, demon_);
}

}  // namespace
