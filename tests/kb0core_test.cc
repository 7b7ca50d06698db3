#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVFile.h>
#include <kb0core/TEVMsgCatalog.h>
#include <kb0core/TEVProcess.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <set>

#include "fixture.h"

namespace {

using namespace std::string_literals;
using Cases = std::vector<std::pair<std::string, std::string>>;

class UnicodeString : public Fixture {};
class Files : public Fixture {};
class Directories : public Fixture {};
class Environment : public Fixture {};
class Processes : public Fixture {};

class MessageCatalog : public Fixture {
 protected:
  /// The message of the catalog Test in use, or "none".
  static std::string Build(const char* key, std::vector<TEVUnicodeString> parameters = {}) {
    const int count = static_cast<int>(parameters.size());
    const auto message = TEVMsgCatalog::BuildMessage("Test", key, parameters.data(), count, "none");
    return message.ConvertToChar();
  }

  /// Puts a catalog Test with this content in use, under a new path since each is read only once.
  void Use(const std::string& content) {
    const std::string directory = std::to_string(++catalogs_);
    Write(directory + "/Test.msg", content);
    SetEnv("TEVMsgCatalogPath", Path(directory).c_str());
  }

 private:
  int catalogs_ = 0;
};

TEST_F(MessageCatalog, ReadsGoodLinesAndPassesOverOthers) {
  Cases cases = {{"Key = \"\"", ""},
                 {"  Key=\"text\" \t \r", "text"},
                 {"Key = \"a\\n\\t\\\"b\\\\n\"", "a\n\t\"b\\n"},
                 {"Key = \"# = \xc3\xa9 \xff\"", "# = \xc3\xa9 \xff"},
                 {"\0\xfe\0\nKey = \"a\""s, "a"},
                 {"Key = \"first\"\nKey = \"last\"\nKey = \"bad", "last"}};
  for (const char* bad : {"", "#Key = \"a\"", "Key \"a\"", "Key = a", "Key = \"a", "Key = \"a\\\"",
                          "Key = \"a\\", "Key = \"\\x\"", "Key = \"a\" b", "Key Key = \"a\"",
                          "Key == \"a\"", "= \"a\"\n\"\n=\"", "key = \"a\""}) {
    cases.emplace_back(bad, "none");
  }
  for (const auto& [line, text] : cases) {
    Use(line);
    EXPECT_EQ(Build("Key"), text) << line;
    Use("# comment\n\n" + line + "\nNext.Key_2 = \"next\"\n");
    EXPECT_EQ(Build("Key"), text) << line << " and more lines";
    EXPECT_EQ(Build("Next.Key_2"), "next") << line;
  }
}

TEST_F(MessageCatalog, PutsParametersInWithoutReadingThemAgain) {
  const Cases kCases = {{"{1} {2}{2}", "{2}\\n {1}{1}"},
                        {"<{3}{9}>", "<>"},
                        {"{0} {10} {x} {} { {1 1}", "{0} {10} {x} {} { {1 1}"},
                        {"{{1}} {{{2}", "{{2}\\n} {{{1}"},
                        {"{", "{"},
                        {"{1", "{1"}};
  for (const auto& [text, message] : kCases) {
    Use("Key = \"" + text + "\"\n");
    EXPECT_EQ(Build("Key", {"{2}\\n", "{1}"}), message) << text;
  }
  Use("Key = \"<{1}>\"");
  EXPECT_STREQ(TEVMsgCatalog::BuildMessage("Test", "Key", nullptr, 3, "").ConvertToChar(), "<>");
  EXPECT_STREQ(TEVMsgCatalog::BuildMessage("Test", "N", nullptr, 0, "{1}").ConvertToChar(), "{1}");
}

TEST_F(MessageCatalog, IsInTheLanguageOfTheUser) {
  Use("Key = \"English\"\nOnly = \"English only\"\n");
  for (const std::string folder :
       {"French", "German", "Italian", "Japanese", "Korean", "Simplified_Chinese"}) {
    Write("1/" + folder + "/Test.msg", "Key = \"" + folder + "\"\n");
  }
  // LC_ALL, LC_MESSAGES, LANG and the language that they choose.
  const std::vector<const char*> kCases[] = {{nullptr, nullptr, nullptr, "English"},
                                             {"fr", "de", "it", "French"},
                                             {"", "de@euro", "it", "German"},
                                             {nullptr, "", "it_IT@euro", "Italian"},
                                             {"ja_JP.UTF-8", "", "", "Japanese"},
                                             {"ko.eucKR", "", "", "Korean"},
                                             {"zh_CN.GB18030", "", "", "Simplified_Chinese"},
                                             {"zh_TW", "", "", "English"},
                                             {"C", "fr", "fr", "English"},
                                             {"french", "", "", "English"}};
  for (const auto& c : kCases) {
    SetEnv("LC_ALL", c[0]);
    SetEnv("LC_MESSAGES", c[1]);
    SetEnv("LANG", c[2]);
    EXPECT_EQ(Build("Key"), c[3]);
    EXPECT_EQ(Build("Only"), "English only");
  }
}

TEST_F(MessageCatalog, IsTheFirstReadableFileOfThePathAsItIsNow) {
  MakeDir("directory/Test.msg");
  std::filesystem::create_symlink("/proc/self/mem", MakeDir("broken") + "/Test.msg");  // EIO
  ASSERT_EQ(mkfifo((MakeDir("fifo") + "/Test.msg").c_str(), 0666), 0);  // would block
  chmod(Write("secret/Test.msg", "Key = \"secret\"").c_str(), 0);
  Write("one/Test.msg", "Key = \"one\"");
  Write("two/Test.msg", "Key = \"two\"\nOther = \"two\"");
  Write("two/French/Test.msg", "Key = \"deux\"");
  const std::string one = Path("one"), two = Path("two");
  const Cases kCases = {
      {one + ":" + two, "one"},
      {"::" + Path("no") + "::" + two, "two"},
      {Path("directory") + ":" + Path("fifo") + ":" + Path("broken") + ":" + one, "one"},
      {"", "none"}};
  for (const auto& [path, text] : kCases) {
    SetEnv("TEVMsgCatalogPath", path.c_str());
    EXPECT_EQ(Build("Key"), text) << path;
  }
  SetEnv("LC_ALL", "fr_FR");
  SetEnv("TEVMsgCatalogPath", (one + ":" + two).c_str());
  EXPECT_EQ(Build("Key"), "one") << "the French file belongs to another English one";
  EXPECT_EQ(Build("Other"), "none");
  SetEnv("TEVMsgCatalogPath", (Path("secret") + ":" + two).c_str());
  AsNobody([] { EXPECT_EQ(Build("Key"), "deux"); });
}

TEST_F(MessageCatalog, FindsTheGoodLineAfterAnyGarbage) {
  const std::string kStart = "# c\nKey = \"a{1}\\n\\\"\"\r\n\nErr.No = \"{2} \\\\ x\"\nKey=\"\"\n";
  const std::string kBytes = "\"\\={}#\n\r\t \0\xff\xc3K1"s;
  std::mt19937 random(20240607);  // NOLINT(cert-msc*): the same cases each time
  const auto below = [&random](size_t bound) { return random() % bound; };
  for (int round = 0; round < 2000; ++round) {
    std::string garbage = kStart;
    for (size_t changes = 1 + below(12); changes > 0; --changes) {
      garbage[below(garbage.size())] = kBytes[below(kBytes.size())];
    }
    garbage.erase(below(garbage.size()), below(8));
    garbage.insert(below(garbage.size()), round % 100 == 0 ? 100000 : below(4), garbage[0]);
    Use(garbage + "\nKey = \"found {1}\"" + (round % 2 == 0 ? "\n" : ""));
    ASSERT_EQ(Build("Key", {"it"}), "found it") << garbage;
    Build("Err.No", {"only one"});
  }
}

TEST_F(UnicodeString, IsCutAndSearchedByPosition) {
  const TEVUnicodeString text("abcabc\xff");
  struct Case {
    int position, length;
    const char *part, *rest;
  };
  const Case kCases[] = {{0, 7, "abcabc\xff", ""},  {1, 2, "bc", "aabc\xff"},
                         {5, 99, "c\xff", "abcab"}, {7, 1, "", "abcabc\xff"},
                         {99, 1, "", "abcabc\xff"}, {-1, 3, "", "abcabc\xff"},
                         {2, -1, "", "abcabc\xff"}};
  for (const Case& c : kCases) {
    EXPECT_STREQ(text.SubString(c.position, c.length).ConvertToChar(), c.part) << c.position;
    TEVUnicodeString rest = text;
    rest.Remove(c.position, c.length);
    EXPECT_STREQ(rest.ConvertToChar(), c.rest) << c.position;
  }
  for (const auto& [from, found] : std::map<int, int>{{-5, 1}, {1, 1}, {2, 4}, {5, -1}, {99, -1}}) {
    EXPECT_EQ(text.SearchSubString("bc", from), found) << from;
  }
}

TEST_F(UnicodeString, IsChangedAlsoFromItsOwnText) {
  TEVUnicodeString text("/a/text/that/is/too/long/to/stand/in/the/object//");
  text = text.ConvertToChar() + 3;
  text.Strip(TEVUnicodeChar('/'));
  EXPECT_STREQ(text.ConvertToChar(), "text/that/is/too/long/to/stand/in/the/object");
  text = "//";
  text.Append(text);
  EXPECT_STREQ(text.ConvertToChar(), "////");
  text.Strip(TEVUnicodeChar('/'));
  EXPECT_STREQ(text.ConvertToChar(), "");
  text = "<%05d>";
  text.BuildFromNum(-42, text.ConvertToChar());
  EXPECT_STREQ(text.ConvertToChar(), "<-0042>");
  text.BuildFromNum(7, "%300d");
  EXPECT_EQ(text.ConvertToChar(), std::string(299, ' ') + "7");
  text = nullptr;
  EXPECT_STREQ(text.ConvertToChar(), "");
  EXPECT_STREQ(TEVUnicodeString(nullptr).ConvertToChar(), TEVString(nullptr).ConvertToChar());
}

TEST_F(Files, AreTestedRenamedAndDeletedButNotWhatALinkNames) {
  const std::string file = Write("file", "12345"), link = Path("link"), dir = MakeDir("empty");
  std::filesystem::create_symlink("nowhere", link);
  TEVFileInfo info;
  EXPECT_EQ(TEVGetFileInfo(file.c_str(), &info), 0);
  EXPECT_TRUE(S_ISREG(info.mode) && info.size == 5);
  EXPECT_EQ(TEVGetFileInfo(link.c_str(), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.mode));
  EXPECT_EQ(TEVFileAccess(link.c_str(), 0), -1);
  EXPECT_EQ(TEVFileAccess(file.c_str(), 1), -1);
  chmod(file.c_str(), 0444);
  AsNobody([&] {
    EXPECT_EQ(TEVFileAccess(file.c_str(), 4), 0);
    EXPECT_EQ(TEVFileAccess(file.c_str(), 4 + 2), -1);
  });
  EXPECT_EQ(TEVRenameFile(file.c_str(), Write("to", "old").c_str()), 0);
  EXPECT_EQ(Read(Path("to")), "12345");
  EXPECT_EQ(TEVDeleteFile(link.c_str()), 0);
  EXPECT_FALSE(Exists(link));
  EXPECT_EQ(TEVDeleteFile(dir.c_str()), -1);
  EXPECT_TRUE(Exists(dir));
  for (const char* none : {file.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(TEVGetFileInfo(none, &info), -1);
    EXPECT_EQ(TEVFileAccess(none, 0), -1);
    EXPECT_EQ(TEVRenameFile(none, link.c_str()), -1);
    EXPECT_EQ(TEVDeleteFile(none), -1);
  }
}

TEST_F(Files, AreReadLineByLineAndTellOfFailures) {
  std::FILE* file = nullptr;
  char buffer[8];
  ASSERT_EQ(TEVFOpen(Write("lines", "one\n\nlong line").c_str(), "r", &file), 0);
  EXPECT_EQ(TEVFGets(buffer, 1, file), -1);
  for (const char* line : {"one\n", "\n", "long li", "ne"}) {
    EXPECT_EQ(TEVFEof(file), 0);
    EXPECT_EQ(TEVFGets(buffer, sizeof buffer, file), 0);
    EXPECT_STREQ(buffer, line);
  }
  EXPECT_EQ(TEVFGets(buffer, sizeof buffer, file), -1);
  EXPECT_EQ(TEVFEof(file), 1);
  EXPECT_EQ(TEVFClose(file), 0);
  EXPECT_EQ(TEVFOpen(Path("none").c_str(), "r", &file), ENOENT);
  EXPECT_EQ(file, nullptr);
  EXPECT_NE(TEVFOpen(nullptr, "r", &file), 0);
  ASSERT_EQ(TEVFOpen(dir_.c_str(), "r", &file), 0);  // opens, but cannot be read
  EXPECT_EQ(TEVFGets(buffer, sizeof buffer, file), -1);
  EXPECT_EQ(TEVFClose(file), -1);
  for (const bool failed_before : {false, true}) {
    ASSERT_EQ(TEVFOpen("/dev/full", "w", &file), 0);
    EXPECT_NE(std::fputs("lost", file), EOF);
    if (failed_before) {
      EXPECT_EQ(std::fflush(file), EOF);
    }
    EXPECT_EQ(TEVFClose(file), -1) << failed_before;
  }
}

TEST_F(Directories, AreListedWhenTheyCanBeRead) {
  const std::string longest(255, 'x');
  Write("d/" + longest);
  Write("d/.hidden");
  TEVDirectory directory = nullptr;
  ASSERT_EQ(TEVOpenDirectory(Path("d").c_str(), &directory), 0);
  std::set<std::string> names;
  TEVDirectoryEntry entry;
  int end = 0;
  while (TEVReadDirectory(directory, &entry, &end) == 0) names.insert(entry.name);
  EXPECT_EQ(end, 1);
  EXPECT_EQ(names, (std::set<std::string>{".", "..", ".hidden", longest}));
  EXPECT_EQ(TEVCloseDirectory(directory), 0);
  EXPECT_EQ(TEVOpenDirectory(Path("d/.hidden").c_str(), &directory), -1);
  EXPECT_EQ(TEVOpenDirectory(nullptr, &directory), -1);
  chmod(Path("d").c_str(), 0);
  AsNobody([&] { EXPECT_EQ(TEVOpenDirectory(Path("d").c_str(), &directory), -1); });
}

TEST_F(Environment, TakesTheEntryItselfAndNoOther) {
  SetEnv("KB0_TEST", nullptr);  // put back after the test
  static char entry[] = "KB0_TEST=a=b";
  static char name[] = "KB0_TEST";
  EXPECT_EQ(TEVPutEnv(entry), 0);
  entry[9] = 'c';
  EXPECT_EQ(TEVPutEnv(name), -1);
  EXPECT_STREQ(TEVGetEnv(name), "c=b");
  EXPECT_EQ(TEVPutEnv(nullptr), -1);
  EXPECT_EQ(TEVGetEnv(nullptr), nullptr);
}

TEST_F(Environment, FindsTheFirstProgramOfThePath) {
  MakeDir("directory/prog");
  Write("plain/prog");
  chmod(Write("bin/prog").c_str(), 0755);
  std::filesystem::create_symlink("../bin/prog", MakeDir("linked") + "/prog");
  const std::string others = Path("none") + ":" + Path("directory") + ":" + Path("plain");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(Path("bin"));
  const Cases kCases = {{others, ""},
                        {others + ":" + Path("linked:/bin"), Path("linked/prog")},
                        {"", "./prog"},
                        {"/none:", "./prog"},
                        {"/none::/none", "./prog"}};
  for (const auto& [path, found] : kCases) {
    EXPECT_EQ(TEVFindPath("prog", path.c_str()).ConvertToChar(), found) << path;
  }
  std::filesystem::current_path(before);
  EXPECT_STREQ(TEVFindPath(nullptr, "/bin").ConvertToChar(), "");
  EXPECT_STREQ(TEVFindPath("sh", nullptr).ConvertToChar(), "");
}

TEST_F(Processes, ReportHowTheyEnded) {
  const std::map<std::string, int> kCases = {{"exit 0", 0}, {"exit 3", 3}, {"kill -9 $$", -1}};
  for (const auto& [script, expected] : kCases) {
    CharPath shell("/bin/sh"), option("-c"), text(script);
    char* arguments[] = {shell, option, text, nullptr};
    int status = 99;
    EXPECT_EQ(TEVStartProcess(shell, arguments, 1, nullptr, &status), 0) << script;
    EXPECT_EQ(status, expected) << script;
    EXPECT_EQ(TEVStartProcess(shell, arguments, 1, nullptr, nullptr), 0) << script;
  }
}

TEST_F(Processes, AreStartedOrRefusedAtOnce) {
  CharPath name("sleep"), seconds("100");
  char* arguments[] = {name, seconds, nullptr};
  int id = 99, exit_status = 99, status = 0;
  for (const std::string& path : {Path("none"), dir_, Write("plain", "#!/bin/sh\n")}) {
    EXPECT_EQ(TEVStartProcess(path.c_str(), arguments, 1, &id, &exit_status), -1) << path;
  }
  EXPECT_EQ(TEVStartProcess(nullptr, arguments, 1, &id, &exit_status), -1);
  EXPECT_EQ(TEVStartProcess("/bin/sleep", nullptr, 1, &id, &exit_status), -1);
  EXPECT_EQ(id, 99);
  ASSERT_EQ(TEVStartProcess("/bin/sleep", arguments, 0, &id, &exit_status), 0);
  EXPECT_EQ(exit_status, 99);
  EXPECT_EQ(kill(id, SIGTERM), 0);
  EXPECT_EQ(waitpid(id, &status, 0), id);
  EXPECT_TRUE(WIFSIGNALED(status));
}

}  // namespace
