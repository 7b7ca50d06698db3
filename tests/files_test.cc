#include <kwinstutil/files.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "fixture.h"

namespace {

// Which lines go and come is shown by fuzz/lines_fuzz.cc.
using LineTest = Fixture;

TEST_F(LineTest, LinesWithATextGo) {
  Write("file", "first line\nold line\nan old line\n");
  EXPECT_EQ(TEVInsSuppressLine(CharPath(Path("file")), CharPath("old"), nullptr, 1), 1);
  EXPECT_EQ(Read(Path("file")), "first line\nan old line\n");  // 1: at the start only
  EXPECT_EQ(TEVInsSuppressLine(CharPath(Path("file")), CharPath("old"), nullptr, 0), 1);
  EXPECT_EQ(Read(Path("file")), "first line\n");
}

TEST_F(LineTest, NoFileIsMadeAndTheModeStays) {
  CharPath file(Path("file")), text("text");
  EXPECT_EQ(TEVInsSuppressLine(file, text, nullptr, 1) + TEVInsAddLine(file, text, nullptr), -2);
  EXPECT_FALSE(Exists(file.str()) || Exists(file.str() + ".tmp" + std::to_string(getpid())));
  chmod(Write("file", "text a\nend").c_str(), 0751);
  EXPECT_EQ(TEVInsSuppressLine(file, text, nullptr, 1), 1);
  EXPECT_EQ(Read(file.str()), "end");
  EXPECT_EQ(std::filesystem::status(file.str()).permissions(), std::filesystem::perms(0751));
}

class TransferTest : public Fixture {
 protected:
  /// Packs the files below parts/ as `name`, and then removes them.
  void Pack(const std::string& name) {
    const std::string tar = "cd " + dir_ + " && tar -cf " + name + " -C parts . && rm -r parts";
    EXPECT_EQ(std::system(tar.c_str()), 0);
  }

  int Transfer(const std::string& name, const char* os, int languages = 127) {
    return TEVInsTransferCAF(CharPath(name), CharPath(dir_), CharPath(Path("tree")), os, languages,
                             message_);
  }

  std::string SideLog() { return Read(Path("tree/TEVInsErrorTransfer.log")); }
};

TEST_F(TransferTest, UnpacksAddsTheTableAndRemovesLanguages) {
  for (const char* language : {"French", "German"})
    Write(std::string("parts/aix/resources/msgcatalog/") + language + "/One.msg");
  Write("parts/aix/control/One.toc", "code:PRD:One\n");
  Pack("One");
  Write("parts/control/Two.toc", "code:PRD:Two\n");
  Write("parts/resources/msgcatalog/German/Two.msg");
  Pack("Two");
  Write("tree/aix/control/PRESENT", "code:FWK:BASE\n");
  EXPECT_EQ(Transfer("One", "aix", 2), 0);
  EXPECT_EQ(Transfer("Two", nullptr, 2), 0);
  EXPECT_EQ(Told(), kUntouched);
  EXPECT_EQ(Read(Path("tree/aix/control/PRESENT")), "code:FWK:BASE\ncode:PRD:One\n");
  EXPECT_EQ(Read(Path("tree/control/PRESENT")), "code:PRD:Two\n");
  EXPECT_TRUE(Exists(Path("tree/aix/resources/msgcatalog/French")));
  EXPECT_FALSE(Exists(Path("tree/aix/resources/msgcatalog/German")));
  EXPECT_TRUE(Exists(Path("tree/resources/msgcatalog/German"))) << "no system, no removal";
  EXPECT_EQ(SideLog(), "(no file)");
}

TEST_F(TransferTest, HandsOnWarnings) {
  // A tar that goes well and prints two lines.
  Program("bin/tar", "echo first\necho second >&2");
  SetEnv("PATH", (Path("bin") + ":" + std::getenv("PATH")).c_str());
  Write("tree/control/One.toc", "code:PRD:One\n");
  EXPECT_EQ(Transfer("One", nullptr), 0);
  EXPECT_EQ(Told(), kUntouched + std::string("firstsecond"));
  EXPECT_FALSE(Exists(Path("tree/ErrorTar.log")));
}

TEST_F(TransferTest, AFailureLeavesASideLogForTheLog) {
  const std::string archive = Write("Bad", "no archive");
  const std::string error_file = MakeDir("tree") + "/ErrorTar.log";
  EXPECT_EQ(Transfer("Bad", "aix", 0), -100);
  EXPECT_EQ(Told(), Message("ErrCommandInterrupted", "cd " + Path("tree") + "; tar -xf " + archive +
                                                         "  >" + error_file + " 2>&1"));
  EXPECT_NE(Read(error_file), "") << "what tar said is kept";

  // Without its table, an archive that unpacks is no success either.
  Write("parts/file");
  Pack("NoToc");
  EXPECT_EQ(Transfer("NoToc", "aix"), -100);
  EXPECT_EQ(Told(), kUntouched + Message("ErrFileNotExist", Path("tree/aix/control/NoToc.toc")));

  const std::string side_log = SideLog();
  EXPECT_NE(side_log.find(archive), std::string::npos) << "no checksum: " << side_log;
  TEVInstallLog log(CharPath(Path("log")));
  ASSERT_EQ(log.OpenPathLogFile(message_), 1);
  for (const char* name : {"other", "tree", "tree"})
    TEVInsTransferLogInfo(CharPath(dir_), name, code, &log);
  EXPECT_EQ(Read(Path("log")), "Filesystem information:\n" + side_log);
  EXPECT_EQ(SideLog(), "(no file)");
  WriteLogErrorTransfer(CharPath(Path("missing")), nullptr);
  WriteLogErrorTransfer(CharPath(Path("tree")), nullptr);
  EXPECT_EQ(SideLog().find(archive), std::string::npos) << "the checksum of which archive?";
}

}  // namespace
