#include <kwinstutil/report.h>

#include <cstring>
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
};

TEST_F(LogTest, ChoosesItsFile) {
  const std::string scratch = MakeDir("scratch");
  // What changes in the environment, and where the log then goes: nowhere for a refusal.
  const std::pair<std::map<std::string, const char*>, std::string> kCases[] = {
      {{}, Path("home/setup.log")},
      {{{"VRK_ODT_IN", ""}, {"VRK_ODT_OUT", ""}, {"VRK_ODT_TMP", scratch.c_str()}},
       scratch + "/kwinst.log"},
      {{{"VRK_ODT_IN", "1"}, {"VRK_ODT_OUT", nullptr}}, Path("home/setup.log")},
      {{{"VRK_ODT_OUT", "1"}, {"VRK_ODT_TMP", nullptr}}, Path("home/setup.log")},
      {{{"VRK_ODT_TMP", scratch.c_str()}, {"HOME", nullptr}}, ""},
      {{{"VRK_ODT_IN", nullptr}, {"HOME", ""}}, ""}};
  for (const auto& [environment, path] : kCases) {
    for (const auto& [name, value] : environment) SetEnv(name, value);
    TEVInstallLog log(CharPath("setup.log"));
    EXPECT_EQ(log.OpenLogFile(message_), path.empty() ? -1 : 1);
    EXPECT_EQ(Told(), path.empty() ? Message("ErrHOME") : kUntouched);
    EXPECT_EQ(log.GetLogFileName(), path);
    log.CloseLogFile();
    log.DeleteLogFile();
    EXPECT_FALSE(Exists(path));
  }
}

TEST_F(LogTest, ReportsWhatCannotBeOpened) {
  const std::string missing = Path("missing");
  const std::string file = missing + "/kwinst.log";
  const std::string too_long = "/" + std::string(1020, 'x');
  TEVInstallLog log(nullptr);
  void* members[3];
  static_assert(sizeof(log) == sizeof(members));
  std::memcpy(members, &log, sizeof(log));
  EXPECT_EQ(members[0], log.GetLogFileName());
  EXPECT_STREQ(static_cast<char*>(members[1]), "kwinst.log");
  EXPECT_EQ(members[2], nullptr);
  EXPECT_EQ(log.OpenLogFile(CharPath(missing), message_), -1);
  EXPECT_EQ(Told(), Message("ErrorOpenLog", file));
  EXPECT_EQ(log.OpenLogFile(CharPath(too_long), message_), -1);
  EXPECT_EQ(Told(), Message("ErrorOpenLog", too_long + "/kwinst.log"));
  EXPECT_EQ(log.GetLogFileName(), file) << "a path that does not fit changed the log's";
  EXPECT_EQ(log.OpenLogFile(nullptr, message_), -1) << "no directory: the last path again";
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
  EXPECT_EQ(Captured(1, [&] { closed.WriteLogFile(text); }), "text\n");
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
