#include <kwinstutil/files.h>

#include <cstdlib>

#include "fixture.h"

namespace {

class TransferTest : public Fixture {
 protected:
  TransferTest() {
    MakeDir("medium");
    MakeDir("tree");
  }

  /// Packs the files below parts/ as medium/`name`, and then removes them.
  void Pack(const std::string& name) {
    Shell("cd " + dir_ + " && tar -cf medium/" + name + " -C parts . && rm -r parts");
  }

  static void Shell(const std::string& command) {
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }

  int Transfer(const std::string& name, const char* os, int languages = 127) {
    return TEVInsTransferCAF(CharPath(name), CharPath(Path("medium")), CharPath(Path("tree")), os,
                             languages, message_);
  }

  /// The first line that df prints; in a bare root it may know no file system, and print none.
  std::string FileSystems() {
    Shell("df -k -i 2>/dev/null | head -n 1 >" + Path("df"));
    return Read(Path("df"));
  }

  std::string SideLog() { return Read(Path("tree/TEVInsErrorTransfer.log")); }

  TEVUnicodeString message_ = "before ";
};

TEST_F(TransferTest, UnpacksAddsTheTableAndRemovesLanguages) {
  Write("parts/aix/control/One.toc", "code:PRD:One\n");
  Write("parts/aix/resources/msgcatalog/French/One.msg");
  Write("parts/aix/resources/msgcatalog/German/One.msg");
  Pack("One");
  Write("parts/control/Two.toc", "code:PRD:Two\n");
  Write("parts/resources/msgcatalog/German/Two.msg");
  Pack("Two");
  Write("tree/aix/control/PRESENT", "code:FWK:BASE\n");

  EXPECT_EQ(Transfer("One", "aix", 2), 0);
  EXPECT_EQ(Transfer("Two", nullptr, 2), 0);
  EXPECT_STREQ(message_.ConvertToChar(), "before ");
  EXPECT_EQ(Read(Path("tree/aix/control/PRESENT")), "code:FWK:BASE\ncode:PRD:One\n");
  EXPECT_EQ(Read(Path("tree/control/PRESENT")), "code:PRD:Two\n");
  EXPECT_TRUE(Exists(Path("tree/aix/resources/msgcatalog/French")));
  EXPECT_FALSE(Exists(Path("tree/aix/resources/msgcatalog/German")));
  EXPECT_TRUE(Exists(Path("tree/resources/msgcatalog/German"))) << "no system, no removal";
  EXPECT_FALSE(Exists(Path("tree/ErrorTar.log")));
  EXPECT_EQ(SideLog(), "(no file)");
  EXPECT_EQ(TEVInsTransferCAF(CharPath("One"), nullptr, CharPath("/"), "aix", 0, message_), -1);
}

TEST_F(TransferTest, PrefersTheCompressedArchive) {
  if (std::system("command -v compress >/dev/null") != 0) GTEST_SKIP() << "there is no compress";
  Write("parts/control/One.toc", "code:PRD:Compressed\n");
  Pack("One");
  // Small files do not shrink, and are left alone without -f.
  Shell("compress -f " + Path("medium/One"));
  Write("parts/control/One.toc", "code:PRD:Plain\n");
  Pack("One");
  EXPECT_EQ(Transfer("One", nullptr), 0);
  EXPECT_EQ(Read(Path("tree/control/PRESENT")), "code:PRD:Compressed\n");
}

TEST_F(TransferTest, HandsOnWarnings) {
  // A tar that goes well and prints two lines.
  Shell("mkdir " + Path("bin") + " && printf '#!/bin/sh\\necho first\\necho second >&2\\n' >" +
        Path("bin/tar") + " && chmod +x " + Path("bin/tar"));
  SetEnv("PATH", (Path("bin") + ":" + std::getenv("PATH")).c_str());
  Write("tree/control/One.toc", "code:PRD:One\n");
  EXPECT_EQ(Transfer("One", nullptr), 0);
  EXPECT_STREQ(message_.ConvertToChar(), "before firstsecond");
  EXPECT_FALSE(Exists(Path("tree/ErrorTar.log")));
}

TEST_F(TransferTest, AFailureLeavesASideLogForTheLog) {
  const std::string archive = Write("medium/Bad", "no archive");
  const std::string error_file = Path("tree/ErrorTar.log");
  EXPECT_EQ(Transfer("Bad", "aix", 0), -100);
  EXPECT_EQ(message_.ConvertToChar(),
            Message("ErrCommandInterrupted",
                    "cd " + Path("tree") + "; tar -xf " + archive + "  >" + error_file + " 2>&1"));
  EXPECT_NE(Read(error_file), "") << "what tar said is kept";
  EXPECT_FALSE(Exists(Path("tree/aix/control/PRESENT")));

  // Without its table, an archive that unpacks is no success either.
  Write("parts/file");
  Pack("NoToc");
  message_ = "before ";
  EXPECT_EQ(Transfer("NoToc", "aix"), -100);
  EXPECT_EQ(message_.ConvertToChar(),
            "before " + Message("ErrFileNotExist", Path("tree/aix/control/NoToc.toc")));

  const std::string side_log = SideLog();
  EXPECT_NE(side_log.find(archive), std::string::npos) << "no checksum: " << side_log;
  EXPECT_NE(side_log.find(FileSystems()), std::string::npos) << "no file systems: " << side_log;
  TEVInstallLog log(CharPath(Path("log")));
  ASSERT_EQ(log.OpenPathLogFile(message_), 1);
  TEVInsTransferLogInfo(CharPath(dir_), "other", code, &log);
  TEVInsTransferLogInfo(CharPath(dir_), "tree", code, &log);
  TEVInsTransferLogInfo(CharPath(dir_), "tree", code, &log);
  EXPECT_EQ(Read(Path("log")), "Filesystem information:\n" + side_log);
  EXPECT_EQ(SideLog(), "(no file)");

  WriteLogErrorTransfer(CharPath(Path("tree")), nullptr);
  EXPECT_EQ(SideLog().find(FileSystems()), 0U) << "only the file systems";
  TEVInsTransferLogInfo(CharPath(Path("tree")), "ignored", zeb2, nullptr);
  EXPECT_EQ(SideLog(), "(no file)");
  WriteLogErrorTransfer(CharPath(Path("missing")), nullptr);
}

}  // namespace
