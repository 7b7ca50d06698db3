#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVMsgCatalog.h>
#include <kb0core/TEVProcess.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>

#include "fixture.h"

namespace {

class Kb0CoreTest : public Fixture {
 protected:
  /// The message of the catalog Test in use, or "no{1}".
  static std::string Build(const char* key) {
    TEVUnicodeString parameters[] = {"{2}\\n", "{1}"};
    return TEVMsgCatalog::BuildMessage("Test", key, parameters, 2, "no{1}").ConvertToChar();
  }
};

TEST_F(Kb0CoreTest, CatalogIsTheFirstReadableFileOfThePathAsItIsNow) {
  MakeDir("directory/Test.msg");
  ASSERT_EQ(mkfifo((MakeDir("fifo") + "/Test.msg").c_str(), 0666), 0);  // would block
  chmod(Write("secret/Test.msg", "Key = \"secret\"").c_str(), 0);
  Write("one/Test.msg", "Key = \"one\"");
  Write("two/Test.msg", "Key = \"two\"\nOther = \"other\"");
  Write("two/French/Test.msg", "Key = \"deux\"");
  std::filesystem::current_path(dir_);
  const auto build = [this](const char* path) {
    SetEnv("TEVMsgCatalogPath", path);
    return Build("Key") + " " + Build("Other");
  };
  EXPECT_EQ(build("one:two"), "one no{1}");
  EXPECT_EQ(build("::no::two"), "two other");
  EXPECT_EQ(build("directory:fifo:one"), "one no{1}");
  EXPECT_EQ(build(""), "no{1} no{1}");
  SetEnv("LANG", "de");
  SetEnv("LC_MESSAGES", "fr_FR");
  EXPECT_EQ(build("one:two"), "one no{1}") << "the French file belongs to another";
  AsNobody([&] { EXPECT_EQ(build("secret:two"), "deux other"); });
  SetEnv("LC_ALL", "de");
  EXPECT_EQ(build("two"), "two other") << "the other locales come behind LC_ALL";
  std::filesystem::current_path("/");
}

TEST_F(Kb0CoreTest, StringsAreCutAndSearchedByPosition) {
  const auto cut = [](int position, int length) {
    TEVUnicodeString text("abcabc\xff");
    const TEVUnicodeString part = text.SubString(position, length);
    text.Remove(position, length);
    return std::string(part.ConvertToChar()) + "|" + text.ConvertToChar();
  };
  EXPECT_EQ(cut(1, 2), "bc|aabc\xff");
  EXPECT_EQ(cut(5, 99), "c\xff|abcab");
  for (const int position : {-1, 7, 99}) EXPECT_EQ(cut(position, 3), "|abcabc\xff");
  EXPECT_EQ(TEVUnicodeString("abcabc").SearchSubString("bc", 2), 4);
  TEVUnicodeString text("/opt//");
  text.Strip(TEVUnicodeChar('/'));
  EXPECT_STREQ(text.ConvertToChar(), "/opt");
  text = nullptr;
  EXPECT_EQ(std::string(text.ConvertToChar()) + TEVString(nullptr).ConvertToChar(), "");
}

TEST_F(Kb0CoreTest, ProgramsAreFoundOnAPath) {
  MakeDir("directory/prog");
  Write("plain/prog");
  chmod(Write("bin/prog").c_str(), 0755);
  std::filesystem::create_symlink("../bin/prog", MakeDir("linked") + "/prog");
  std::filesystem::current_path(Path("bin"));
  EXPECT_STREQ(TEVFindPath("prog", "../no:../directory:../plain").ConvertToChar(), "");
  EXPECT_STREQ(TEVFindPath("prog", "../plain:../linked/:.").ConvertToChar(), "../linked/prog");
  EXPECT_STREQ(TEVFindPath("prog", "../no:").ConvertToChar(), "./prog");
  EXPECT_STREQ(TEVFindPath(nullptr, ".").ConvertToChar(), "");
  EXPECT_STREQ(TEVFindPath("prog", nullptr).ConvertToChar(), "");
  std::filesystem::current_path("/");
}

TEST_F(Kb0CoreTest, ProcessesAreWaitedForOrLeftOrRefused) {
  int id = 99, result = 99;
  const auto run = [&](const char* program, const char* script, int wait) {
    CharPath name("sh"), option("-c"), text(script);
    char* arguments[] = {name, option, text, nullptr};
    return TEVStartProcess(program, arguments, wait, &id, &result);
  };
  EXPECT_EQ(run(Write("plain", "#!/bin/sh\n").c_str(), "", 1), -1);
  ASSERT_EQ(run("/bin/sh", "exit 3", 0), 0);
  EXPECT_EQ(result, 99);
  EXPECT_EQ(waitpid(id, nullptr, 0), id);
  EXPECT_EQ(run("/bin/sh", "exit 3", 1), 0);
  EXPECT_EQ(result, 3);
  char* const arguments[] = {nullptr};
  EXPECT_EQ(TEVStartProcess("/bin/true", arguments, 1, nullptr, nullptr), 0);
  EXPECT_EQ(run("/bin/sh", "kill -9 $$", 1), 0);
  EXPECT_EQ(result, -1);
}

}  // namespace
