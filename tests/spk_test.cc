#include <kwinstutil/spk.h>

#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "fixture.h"

// std::strstream is deprecated, but part of the interface.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace fs = std::filesystem;

namespace {

class ServicePackTest : public Fixture {
 protected:
  ServicePackTest() : os_(fs::path(dir_).filename()), unpacked_("/tmp/" + os_ + "/control/SP1") {
    MakeDir("medium");
    fs::create_directories(fs::path(unpacked_).parent_path());
  }
  ~ServicePackTest() override {
    std::error_code ignored;
    fs::remove_all("/tmp/" + os_, ignored);
  }

  static void Shell(const std::string& command) { EXPECT_EQ(std::system(command.c_str()), 0); }

  /// Makes a service pack with a control file; without `content` it is a link that leads nowhere.
  void Pack(const std::string& content) const {
    const std::string file = Write("parts/" + os_ + "/control/SP1", content);
    if (content.empty()) Shell("ln -sf nowhere " + file);
    Shell("cd " + Path("parts") + " && tar -cf ../medium/SP1 * && rm -r ../parts");
  }

  int Save() {
    return TEVInsSaveFilesBeforeInstall(CharPath("SP1"), CharPath(Path("medium")),
                                        CharPath(Path("tree")), os_.c_str(), code, message_);
  }
  /// Restores with this control file, or with none.
  int Restore(const std::string& content = "") {
    if (!content.empty()) fs::copy_file(Write("content", content), unpacked_);
    return TEVInsRestoreFiles(CharPath(Path("tree")), CharPath("SP1"), os_.c_str(), code, message_);
  }

  /// The names in tree/.
  std::string Tree() const {
    return Captured(1, [this] { Shell("cd " + Path("tree") + " && printf '%s|' *"); });
  }

  std::string os_;  ///< so named that a control file is unpacked in a directory of this test
  std::string unpacked_;
};

TEST_F(ServicePackTest, TheLineOfAServicePackGoes) {
  for (const std::string pack : {"SP3", ""}) {
    TEVInsResetPresent reset;
    const std::string from = Write("PRESENT", "code:FWK:A\ncode:SPK:" + pack + ":x\ncode:SPK\n");
    EXPECT_EQ(reset.InitSource(CharPath(from)) + reset.InitDest(CharPath(Path("new"))), 0);
    EXPECT_EQ(reset.Remove(CharPath(pack), code), 0);
    EXPECT_EQ(Read(Path("new")), "code:FWK:A\ncode:SPK\n");
  }
}

#if !defined(_LIBCPP_VERSION) || __cplusplus <= 202302L
TEST_F(ServicePackTest, WritesTheHeadOfALineThatStays) {
  const std::tuple<std::string, int, const char*> kLines[] = {
      {"code:SPK:SP3:level=3", 0, ":level=3"},
      {"code:SPK:SP33:x", 13, ":x"},
      {std::string("code:SPK:SP3") + '\0', 0, ""},  // what std::ends adds
      {"code", 6, ""}};
  for (const auto& [text, length, behind] : kLines) {
    TEVInsResetPresent reset;
    ASSERT_EQ(reset.InitDest(CharPath(Path("head"))), 0);
    std::strstream line;
    line << text;
    EXPECT_EQ(reset.IsLineToRemove(CharPath("SP3"), line, code), length);
    std::string rest;
    std::getline(line, rest);
    EXPECT_EQ(rest, behind);
  }
  EXPECT_EQ(Read(Path("head")), "code");
}
#endif

TEST_F(ServicePackTest, RefusesOneFileOnBothSides) {
  const std::string file = Write("file", "code:SPK\ncode:SPK:SP1"), link = Path("link");
  fs::create_hard_link(file, link);
  TEVInsResetPresent reset;
  EXPECT_EQ(reset.InitSource(CharPath(file)), 0);
  EXPECT_EQ(reset.InitDest(CharPath(link)), -1);
  EXPECT_EQ(reset.Remove(CharPath(""), code), -1);
  EXPECT_EQ(TEVInsResetPresent::FileCopy(CharPath(file), CharPath(link)), -1);
  EXPECT_EQ(Read(file), "code:SPK\ncode:SPK:SP1");
}

TEST_F(ServicePackTest, SavesFirstWordsAndRestoresWholeLines) {
  for (const std::string name : {"prog", "lead", "tab", "3d", "0", "x y"})
    Write("tree/" + name, name);
  fs::create_symlink("nowhere", Path("tree/link"));
  Write("tree/prog.beforeSPK", "older");
  Pack("prog 1234\n755 1 2\n3d\n0\n\n lead x\nmissing\nlink\ntab\tx\n" + std::string(1, '\0') +
       "\ntab\n");
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Tree(), "0|3d|lead.beforeSPK|link.beforeSPK|prog.beforeSPK|tab|x y|");
  EXPECT_EQ(Read(Path("tree/prog.beforeSPK")), "prog");

  EXPECT_EQ(Restore(), 0) << "no control file, nothing to restore";
  for (const char* name : {"tree/0.beforeSPK", "tree/x y.beforeSPK", "tree/prog"})
    Write(name, "new");
  EXPECT_EQ(Restore("prog\nlead x\n0\n\nx y\nmissing\nlink"), 0);
  EXPECT_EQ(Tree(), "0|3d|lead.beforeSPK|link|prog|tab|x y|");
  EXPECT_EQ(Read(Path("tree/prog")) + Read(Path("tree/0")), "prognew");
  EXPECT_FALSE(Exists(unpacked_));
  EXPECT_EQ(Told(), kUntouched);
}

TEST_F(ServicePackTest, ReportsWhatCannotBeRenamed) {
  const std::string b = Write("tree/b"), saved = MakeDir("tree/b.beforeSPK");
  Pack("b");  // no file takes the place of a directory
  EXPECT_EQ(Save(), -1);
  EXPECT_EQ(Told(), Message("ErrWndRenameFile.Text", b, saved));
  fs::remove(saved);
  fs::rename(b, saved);
  MakeDir("tree/b");
  EXPECT_EQ(Restore("b\n"), -1);
  EXPECT_EQ(Told(), Message("ErrWndRenameFile.Text", saved, b));
}

TEST_F(ServicePackTest, ReportsControlFilesThatCannotBeHad) {
  const std::string archive = Path("medium/SP1");
  const std::string not_unpacked = Message("ErrWndExtractTar.Text", os_ + "/control/SP1", archive) +
                                   Message("CheckTmpDir", "/tmp");
  Write("older");
  fs::copy_file(Path("older"), unpacked_);
  EXPECT_EQ(Save(), -1) << "no archive";
  EXPECT_EQ(Told(), not_unpacked);
  EXPECT_TRUE(Exists(unpacked_)) << "this call has not unpacked it";
  Pack("a\n" + std::string(5000, 'x'));
  fs::resize_file(archive, 2048);
  EXPECT_EQ(Save(), -1);
  Pack("");
  EXPECT_EQ(Save(), -1);
  EXPECT_EQ(Told(), Message("ErrWndOpenControlFile.Text", unpacked_, "2"));
  EXPECT_FALSE(Exists(unpacked_));
  fs::create_symlink("nowhere", unpacked_);
  EXPECT_EQ(Restore(), 0) << "a link that leads nowhere is no control file";
}

TEST_F(ServicePackTest, RunsThePostInstallPrograms) {
  const std::string tree = Path("tree");
  const std::string log = Write("log", "before\n");
  const auto run = [&] { return TEVInsSPK(CharPath("sp"), CharPath(tree), CharPath(log)); };
  for (const char* name : {"LD_LIBRARYN32_PATH", "TEVInstallPath", "STARTDIR"}) SetEnv(name, "old");
  EXPECT_EQ(run(), 0) << "no list";
  Write("tree/control/CAFPost.list", "env\tfail\n" + std::string(255, 'x') + "last missing");
  Write("tree/code/bin/env_sp", "echo $TEVInstallPath $LD_LIBRARYN32_PATH [$STARTDIR]; exit 2");
  Write("tree/code/bin/fail_sp", "echo failed >&2; exit 3");
  Write("tree/code/bin/last_sp", "echo last; exit 4");
  Shell("chmod +x " + tree + "/code/bin/*");
  EXPECT_EQ(run(), 4) << "a word of 255 characters ends there";
  EXPECT_EQ(Read(log), "before\n" + tree + " " + tree + "/code/bin []\nfailed\nlast\n");
}

}  // namespace
