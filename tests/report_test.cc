#include <kwinstutil/report.h>

#include <ctime>

#include "fixture.h"

namespace {

/// The text with [TIME] for every time of the log's form in brackets.
std::string WithoutTimes(std::string text) {
  for (size_t at = 0; (at = text.find('[', at)) != std::string::npos; ++at) {
    tm time{};
    const char* end = strptime(text.c_str() + at + 1, "%a %b %e %T %Y", &time);
    if (end == text.c_str() + at + 25 && *end == ']') text.replace(at + 1, 24, "TIME");
  }
  return text;
}

class LogTest : public Fixture {
 protected:
  LogTest() { SetEnv("HOME", MakeDir("home").c_str()); }

  void Develop(const char* in, const char* out, const char* tmp) {
    SetEnv("VRK_ODT_IN", in);
    SetEnv("VRK_ODT_OUT", out);
    SetEnv("VRK_ODT_TMP", tmp);
  }

  TEVUnicodeString message_ = "untouched";
};

TEST_F(LogTest, ChoosesItsFile) {
  MakeDir("scratch");
  const std::string home = Path("home");
  const std::string scratch = Path("scratch");
  const std::string with_slash = home + "/";
  const struct {
    const char* home;
    const char* name;
    const char *in, *out, *tmp;
    std::string path;  ///< empty for a refusal
  } kCases[] = {
      {home.c_str(), nullptr, nullptr, nullptr, nullptr, home + "/kwinst.log"},
      {with_slash.c_str(), "setup.log", nullptr, nullptr, nullptr, home + "/setup.log"},
      {home.c_str(), "setup.log", "", "", scratch.c_str(), scratch + "/kwinst.log"},
      {home.c_str(), "setup.log", "1", nullptr, scratch.c_str(), home + "/setup.log"},
      {home.c_str(), "setup.log", "1", "1", nullptr, home + "/setup.log"},
      {nullptr, nullptr, "1", "1", scratch.c_str(), ""},
      {"", nullptr, nullptr, nullptr, nullptr, ""},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.path);
    SetEnv("HOME", c.home);
    Develop(c.in, c.out, c.tmp);
    CharPath name(c.name == nullptr ? "" : c.name);
    TEVInstallLog log(c.name == nullptr ? nullptr : static_cast<char*>(name));
    SetEnv("VRK_ODT_IN", nullptr);  // the mode was settled when the log was made
    message_ = "untouched";
    EXPECT_EQ(log.OpenLogFile(message_), c.path.empty() ? -1 : 1);
    EXPECT_STREQ(message_.ConvertToChar(),
                 c.path.empty() ? Message("ErrHOME").c_str() : "untouched");
    EXPECT_EQ(log.GetLogFileName(), c.path);
    log.CloseLogFile();
    log.DeleteLogFile();
    EXPECT_FALSE(Exists(c.path));
  }
}

TEST_F(LogTest, TellsWhatCannotBeOpened) {
  const std::string missing = Path("missing");
  const std::string file = missing + "/kwinst.log";
  const std::string too_long = "/" + std::string(1020, 'x');
  TEVInstallLog log(nullptr);
  EXPECT_EQ(log.OpenLogFile(CharPath(missing), message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrorOpenLog", file));
  EXPECT_EQ(log.OpenLogFile(CharPath(too_long), message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrorOpenLog", too_long + "/kwinst.log"));
  EXPECT_EQ(log.GetLogFileName(), file) << "a path that does not fit changed the log's";
  EXPECT_EQ(log.OpenLogFile(nullptr, message_), -1) << "no directory: the last path again";
  TEVUnicodeString header;
  SetEnv("HOME", missing.c_str());
  EXPECT_EQ(log.OpenLogFile(header, message_), -1);

  // The path that just fits, and the one that does not.
  std::string deep = dir_;
  while (deep.size() < 1012 - 250) deep += "/" + std::string(240, 'd');
  deep += "/" + std::string(1012 - deep.size() - 1, 'e');
  MakeDir(deep.substr(dir_.size() + 1));
  EXPECT_EQ(log.OpenLogFile(CharPath(deep), message_), 1);
  log.CloseLogFile();
  EXPECT_EQ(log.OpenLogFile(CharPath(deep + "/"), message_), -1);
}

TEST_F(LogTest, FramesEachRun) {
  TEVUnicodeString header = " first\n";
  TEVUnicodeString entry = "100% of an entry\n";
  TEVUnicodeString trailer = " done";
  for (int run = 0; run < 2; ++run) {
    TEVInstallLog log(nullptr);
    ASSERT_EQ(log.OpenLogFile(header, message_), 0);
    log.WriteLogFile(entry);
    EXPECT_TRUE(Read(log.GetLogFileName()).find("entry\n") != std::string::npos) << "not flushed";
    log.CloseLogFile(trailer);
  }
  const std::string rule(58, '=');
  const std::string one =
      rule + "\n[TIME] first\n100% of an entry\n\n\n[TIME] done\n" + rule + "\n";
  EXPECT_EQ(WithoutTimes(Read(Path("home/kwinst.log"))), one + one);
}

TEST_F(LogTest, LosesNoTextWithoutAFile) {
  TEVUnicodeString text = "text\n";
  TEVInstallLog closed(nullptr);
  EXPECT_EQ(Captured(1,
                     [&] {
                       closed.WriteLogFile(text);
                       closed.WriteLogFile(CharPath("more\n"));
                     }),
            "text\nmore\n");

  TEVInstallLog full(CharPath("/dev/full"));
  ASSERT_EQ(full.OpenPathLogFile(message_), 1);
  EXPECT_STREQ(full.GetLogFileName(), "");
  std::string output;
  EXPECT_EQ(Captured(2, [&] { output = Captured(1, [&] { full.WriteLogFile(text); }); }),
            Message("ErrWndErrorWriteLog") + "\n");
  EXPECT_EQ(output, "text\n\n");
  EXPECT_EQ(Captured(1, [&] { full.WriteLogFile(text); }), "text\n") << "not given up";
}

TEST_F(LogTest, CopiesTextFiles) {
  const std::string lines = "first\n" + std::string(5000, 'x') + "\nlast without a newline";
  const std::string source = Write("source", lines);
  const std::string binary = Write("binary", std::string("kept\n\0cut\nlost\n", 15));
  TEVInstallLog log(nullptr);
  log.CopyFile(CharPath(source));
  ASSERT_EQ(log.OpenLogFile(CharPath(Path("home")), message_), 1);
  log.CopyFile(CharPath(source));
  log.CopyFile(CharPath(Path("missing")));
  log.CopyFile(CharPath(binary));
  log.CopyFile(CharPath(log.GetLogFileName()));
  log.CloseLogFile();
  EXPECT_EQ(Read(Path("home/kwinst.log")), lines + "kept\n");
}

}  // namespace
