#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVFile.h>
#include <kb0core/TEVMsgCatalog.h>
#include <kb0core/TEVProcess.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <vector>

#include "fixture.h"

namespace {

using namespace std::string_literals;
using Cases = std::vector<std::pair<std::string, std::string>>;

class Kb0CoreTest : public Fixture {
 protected:
  /// The message of the catalog Test in use, or "no{1}".
  static std::string Build(const char* key) {
    TEVUnicodeString parameters[] = {"{2}\\n", "{1}"};
    return TEVMsgCatalog::BuildMessage("Test", key, parameters, 2, "no{1}").ConvertToChar();
  }

  /// Puts a catalog Test with this content in use, under a new path since each is read only once.
  void Use(const std::string& content) {
    const std::string directory = std::to_string(++catalogs_);
    Write(directory + "/Test.msg", content);
    SetEnv("TEVMsgCatalogPath", Path(directory).c_str());
  }

  int catalogs_ = 0;
};

TEST_F(Kb0CoreTest, CatalogTakesGoodLinesAndPutsParametersInOnce) {
  Cases cases = {
      {R"(Key = "")", ""},
      {"  Key=\"text\" \t \r", "text"},
      {R"(Key = "a\n\t\"b\\n")", "a\n\t\"b\\n"},
      {"Key = \"# = \xc3\xa9 \xff\"", "# = \xc3\xa9 \xff"},
      {std::string(100000, '\\') + "\0\xfe\0\nKey = \"a\""s, "a"},
      {"Key = \"first\"\nKey = \"last\"\nKey = \"bad", "last"},
      {R"(Key = "{1} {2}{2}<{3}{9}>")", R"({2}\n {1}{1}<>)"},
      {R"(Key = "{0} {10} {x} {} { {{1}} {{{2} {1")", R"({0} {10} {x} {} { {{2}\n} {{{1} {1)"}};
  for (const char* bad :
       {"", R"(#Key = "a")", R"(Key "a")", "Key = a", R"(Key = "a)", R"(Key = "a\")",
        R"(Key = "a\)", R"(Key = "\x")", R"(Key = "a" b)", R"(Key Key = "a")", R"(Key == "a")",
        "= \"a\"\n\"\n=\"", R"(key = "a")"}) {
    cases.emplace_back(bad, "no{1}");
  }
  for (const auto& [line, text] : cases) {
    Use(line);
    EXPECT_EQ(Build("Key"), text) << line;
    Use("# comment\n\n" + line + "\nNext.Key_2 = \"<{3}>\"\n");
    EXPECT_EQ(Build("Key") + Build("Next.Key_2"), text + "<>") << line;
  }
  Use("Key = \"<{1}>\"");
  EXPECT_STREQ(TEVMsgCatalog::BuildMessage("Test", "Key", nullptr, 3, "").ConvertToChar(), "<>");
}

TEST_F(Kb0CoreTest, CatalogIsInTheLanguageOfTheUser) {
  Use("Key = \"English\"\nOnly = \" only\"\n");
  SetEnv("LANG", "fr");
  SetEnv("LC_MESSAGES", "de@euro");
  const Cases kLocales = {{"fr", "French"},
                          {"it_IT@euro", "Italian"},
                          {"ja_JP.UTF-8", "Japanese"},
                          {"ko.eucKR", "Korean"},
                          {"zh_CN.GB18030", "Simplified_Chinese"},
                          {"zh_TW", "English"},
                          {"C", "English"},
                          {"french", "English"},
                          {"de", "German"},
                          {"en", "English"}};
  for (const auto& [locale, language] : kLocales) {
    Write("1/" + language + "/Test.msg", "Key = \"" + language + "\"\n");
    SetEnv("LC_ALL", locale.c_str());
    EXPECT_EQ(Build("Key") + Build("Only"), language + " only") << locale;
  }
  for (const auto& [variable, next] :
       Cases{{"LC_ALL", "German"}, {"LC_MESSAGES", "French"}, {"LANG", "English"}}) {
    SetEnv(variable, "");
    EXPECT_EQ(Build("Key"), next) << "the language without " << variable;
  }
}

TEST_F(Kb0CoreTest, CatalogIsTheFirstReadableFileOfThePathAsItIsNow) {
  MakeDir("directory/Test.msg");
  std::filesystem::create_symlink("/proc/self/mem", MakeDir("broken") + "/Test.msg");  // EIO
  ASSERT_EQ(mkfifo((MakeDir("fifo") + "/Test.msg").c_str(), 0666), 0);  // would block
  chmod(Write("secret/Test.msg", "Key = \"secret\"").c_str(), 0);
  Write("one/Test.msg", "Key = \"one\"");
  Write("two/Test.msg", "Key = \"two\"\nOther = \"other\"");
  Write("two/French/Test.msg", "Key = \"deux\"");
  std::filesystem::current_path(dir_);
  const auto build = [this](const char* locale, const char* path) {
    SetEnv("LC_ALL", locale);
    SetEnv("TEVMsgCatalogPath", path);
    return Build("Key") + " " + Build("Other");
  };
  EXPECT_EQ(build("C", "one:two"), "one no{1}");
  EXPECT_EQ(build("C", "::no::two"), "two other");
  EXPECT_EQ(build("C", "directory:fifo:broken:one"), "one no{1}");
  EXPECT_EQ(build("C", ""), "no{1} no{1}");
  EXPECT_EQ(build("fr_FR", "one:two"), "one no{1}") << "the French file belongs to another";
  AsNobody([&] { EXPECT_EQ(build("fr_FR", "secret:two"), "deux other"); });
  std::filesystem::current_path("/");
}

TEST_F(Kb0CoreTest, StringsAreCutAndSearchedByPosition) {
  const auto cut = [](int position, int length) {
    TEVUnicodeString text("abcabc\xff");
    const TEVUnicodeString part = text.SubString(position, length);
    text.Remove(position, length);
    return std::string(part.ConvertToChar()) + "|" + text.ConvertToChar();
  };
  EXPECT_EQ(cut(0, 7), "abcabc\xff|");
  EXPECT_EQ(cut(1, 2), "bc|aabc\xff");
  EXPECT_EQ(cut(5, 99), "c\xff|abcab");
  for (const int position : {-1, 7, 99}) EXPECT_EQ(cut(position, 3), "|abcabc\xff");
  EXPECT_EQ(cut(2, -1), "|abcabc\xff");
  for (const auto& [from, found] : std::map<int, int>{{-5, 1}, {1, 1}, {2, 4}, {5, -1}, {99, -1}}) {
    EXPECT_EQ(TEVUnicodeString("abcabc").SearchSubString("bc", from), found) << from;
  }
}

TEST_F(Kb0CoreTest, StringsAreChangedAlsoFromTheirOwnText) {
  TEVUnicodeString text("/a/text/that/is/too/long/to/stand/in/the/object//");
  text = text.ConvertToChar() + 40;
  text.Append(text);
  EXPECT_STREQ(text.ConvertToChar(), "/object///object//");
  text.Strip(TEVUnicodeChar('/'));
  EXPECT_STREQ(text.ConvertToChar(), "/object///object");
  text = "//";
  text.Strip(TEVUnicodeChar('/'));
  EXPECT_STREQ(text.ConvertToChar(), TEVUnicodeString(nullptr).ConvertToChar());
  text = "<%0300d>";
  text.BuildFromNum(-42, text.ConvertToChar());
  EXPECT_EQ(text.ConvertToChar(), "<-" + std::string(297, '0') + "42>");
  text = nullptr;
  EXPECT_STREQ(text.ConvertToChar(), TEVString(nullptr).ConvertToChar());
}

TEST_F(Kb0CoreTest, FilesAreHandledButNotWhatALinkNames) {
  const std::string file = Write("file", "12345"), link = Path("link");
  std::filesystem::create_symlink("file", link);
  TEVFileInfo info;
  EXPECT_EQ(TEVGetFileInfo(link.c_str(), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.mode));
  EXPECT_EQ(TEVDeleteFile(link.c_str()), 0);
  EXPECT_FALSE(Exists(link));
  EXPECT_EQ(TEVGetFileInfo(file.c_str(), &info), 0);
  EXPECT_TRUE(S_ISREG(info.mode) && info.size == 5);
  EXPECT_EQ(TEVFileAccess(file.c_str(), 4 + 2), 0);
  EXPECT_EQ(TEVFileAccess(file.c_str(), 4 + 1), -1);
  EXPECT_EQ(TEVRenameFile(file.c_str(), Write("to", "old").c_str()), 0);
  EXPECT_EQ(Read(Path("to")), "12345");
  for (const char* none : {file.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(TEVGetFileInfo(none, &info) + TEVFileAccess(none, 0), -2);
    EXPECT_EQ(TEVRenameFile(none, link.c_str()) + TEVDeleteFile(none), -2);
  }
}

TEST_F(Kb0CoreTest, FilesAreReadLineByLineAndTellOfFailures) {
  std::FILE* file = nullptr;
  char buffer[8];
  ASSERT_EQ(TEVFOpen(Write("lines", "\nlong line").c_str(), "r", &file), 0);
  EXPECT_EQ(TEVFGets(buffer, 1, file), -1);
  for (const char* line : {"\n", "long li", "ne"}) {
    EXPECT_EQ(TEVFEof(file) + TEVFGets(buffer, sizeof buffer, file), 0);
    EXPECT_STREQ(buffer, line);
  }
  EXPECT_EQ(TEVFEof(file), 1);
  EXPECT_EQ(TEVFGets(buffer, sizeof buffer, file), -1);
  EXPECT_EQ(TEVFClose(file), 0);
  EXPECT_EQ(TEVFOpen(Path("none").c_str(), "r", &file), ENOENT);
  EXPECT_EQ(TEVFOpen(nullptr, "r", &file), EINVAL);
  ASSERT_EQ(TEVFOpen(dir_.c_str(), "r", &file), 0);  // opens, but cannot be read
  EXPECT_EQ(TEVFGets(buffer, sizeof buffer, file), -1);
  EXPECT_EQ(TEVFClose(file), -1);
  ASSERT_EQ(TEVFOpen("/dev/full", "w", &file), 0);
  EXPECT_NE(std::fputs("lost", file), EOF);
  EXPECT_EQ(TEVFClose(file), -1);
}

TEST_F(Kb0CoreTest, DirectoriesAreListed) {
  const std::string longest(255, 'x'), file = Write("d/" + longest);
  std::set<std::string> names;
  TEVDirectory directory = nullptr;
  TEVDirectoryEntry entry;
  int end = 0;
  ASSERT_EQ(TEVOpenDirectory(Path("d").c_str(), &directory), 0);
  while (TEVReadDirectory(directory, &entry, &end) == 0) names.insert(entry.name);
  EXPECT_EQ(end, 1);
  EXPECT_EQ(names, (std::set<std::string>{".", "..", longest}));
  EXPECT_EQ(TEVCloseDirectory(directory), 0);
  EXPECT_EQ(TEVOpenDirectory(file.c_str(), &directory), -1);
  EXPECT_EQ(TEVOpenDirectory(nullptr, &directory), -1);
}

TEST_F(Kb0CoreTest, EnvironmentTakesTheEntryItselfAndFindsPrograms) {
  SetEnv("KB0_TEST", nullptr);  // put back after the test
  static char entry[] = "KB0_TEST=a=b", name[] = "KB0_TEST";
  EXPECT_EQ(TEVPutEnv(entry), 0);
  entry[9] = 'c';
  EXPECT_EQ(TEVPutEnv(name) + TEVPutEnv(nullptr), -2);
  EXPECT_STREQ(TEVGetEnv(name), "c=b");
  EXPECT_EQ(TEVGetEnv(nullptr), nullptr);

  MakeDir("directory/prog");
  Write("plain/prog");
  chmod(Write("bin/prog").c_str(), 0755);
  std::filesystem::create_symlink("../bin/prog", MakeDir("linked") + "/prog");
  std::filesystem::current_path(Path("bin"));
  const Cases kCases = {{"../no:../directory:../plain", ""},
                        {"../plain:../linked:.", "../linked/prog"},
                        {"", "./prog"},
                        {"../no:", "./prog"},
                        {"../no::../no", "./prog"}};
  for (const auto& [path, found] : kCases) {
    EXPECT_EQ(TEVFindPath("prog", path.c_str()).ConvertToChar(), found) << path;
  }
  std::filesystem::current_path("/");
  EXPECT_STREQ(TEVFindPath(nullptr, "/bin").ConvertToChar(), "");
  EXPECT_STREQ(TEVFindPath("sh", nullptr).ConvertToChar(), "");
}

TEST_F(Kb0CoreTest, ProcessesAreWaitedForOrLeftOrRefused) {
  int id = 99, result = 99;
  const auto run = [&](const char* program, const char* script, int wait, int* exit_status) {
    CharPath name("sh"), option("-c"), text(script);
    char* arguments[] = {name, option, text, nullptr};
    return TEVStartProcess(program, arguments, wait, &id, exit_status);
  };
  EXPECT_EQ(run(Write("plain", "#!/bin/sh\n").c_str(), "", 1, &result), -1);
  EXPECT_EQ(run(nullptr, "", 1, &result), -1);
  EXPECT_EQ(TEVStartProcess("/bin/sh", nullptr, 1, &id, &result), -1);
  EXPECT_EQ(id, 99);
  ASSERT_EQ(run("/bin/sh", "exec sleep 100", 0, &result), 0);
  EXPECT_EQ(result, 99);
  EXPECT_EQ(kill(id, SIGTERM), 0);
  EXPECT_EQ(waitpid(id, nullptr, 0), id);
  EXPECT_EQ(run("/bin/sh", "exit 3", 1, nullptr), 0);
  EXPECT_EQ(run("/bin/sh", "exit 3", 1, &result), 0);
  EXPECT_EQ(result, 3);
  EXPECT_EQ(run("/bin/sh", "kill -9 $$", 1, &result), 0);
  EXPECT_EQ(result, -1);
}

}  // namespace
