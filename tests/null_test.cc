// What is answered to null where a header allows it. Nothing is done, and no message is made.

#include <kwinstutil/kwinstutil.h>

#include <tuple>

#include "fixture.h"

namespace {

/// The answers when each of the arguments in turn is null, with a blank behind each.
template <typename Function, typename... Argument>
std::string Answers(Function function, Argument*... arguments) {
  std::string answers;
  for (size_t null = 0; null < sizeof...(Argument); ++null) {
    std::tuple<Argument*...> passed(arguments...);
    size_t i = 0;
    std::apply([&](auto*&... each) { ((each = i++ == null ? nullptr : each), ...); }, passed);
    answers += std::to_string(std::apply(function, passed)) + " ";
  }
  return answers;
}

class NullTest : public Fixture {
 protected:
  char t[1024] = "/text";
  int n = 1024;
  TEVUnicodeString* const m = &message_;
};

TEST_F(NullTest, ReportsThatNothingWasDone) {
  TEVINSMediaToc media(nullptr);
  TEVINSInstToc tree(nullptr);
  // What stands in braces takes the place of the pointers, one of them null, that are passed on.
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCommande(a..., m); }, t), "-10 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsUpdate(a..., m); }, t, t), "-10 -10 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCopyInstall(a..., m); }, t, t), "-10 -10 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCreateFile(a..., m); }, t, t), "-10 -10 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsPalomirSetup(a..., m); }, t), "-10 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsLaunchExe(a..., m); }, t, t, t, t), "0 0 0 0 ");

  EXPECT_EQ(Answers([](auto* a) { return TEVInsCheckMediaSMP(nullptr, a); }, m), "-1 ");
  EXPECT_EQ(Answers(TEVInsCheckZEBDir, t, t), "0 0 ");
  EXPECT_EQ(Answers(TEVInsCheckPrereq, &tree, &media, m), "1 1 -1 ");
  EXPECT_EQ(Answers(TEVInsCheckPrereqGA, &tree, &media, m), "0 0 -1 ");
  EXPECT_EQ(Answers(TEVInsCheckPrereqGASP, &tree, &media, m), "0 0 -1 ");
  EXPECT_EQ(Answers([&](auto* a) { return TEVInsCheckSPKLevel(1, 1, t, 0, a); }, m), "-1 ");
  EXPECT_EQ(Answers(TEVInsCheckInterruptSPK, t, &n, &n), "0 0 0 ");
  const auto committed = [this](char* dir, TEVUnicodeString* message) {
    return TEVInsCheckInstallSPKCommitted(dir, 1, t, message);
  };
  EXPECT_EQ(Answers(committed, t, m), "-1 -1 ");
  EXPECT_EQ(Answers(TEVInsCheckHFXLevel, &tree, &media, t, m), "-1 -1 -1 -1 ");

  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCheckExistDir(a..., m); }, t), "0 ");
  EXPECT_EQ(Answers(TEVInsCheckAccessDir, t, t), "-1 -1 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCheckSyntaxDir(a..., m); }, m), "-1 ");
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCheckEmptyDir(a..., t, m); }, t), "-10 ");
  EXPECT_EQ(TEVInsCheckEmptyDir("/usr", nullptr, m), -2);
  EXPECT_EQ(Answers([&](auto... a) { return TEVInsCheckEnvDir(a..., m); }, t), "-10 ");
  EXPECT_EQ(Answers(TEVInsCreateDirectory, t), "-10 ");
  EXPECT_EQ(Answers(TEVInsGetCodeDir, t, t), "-10 -10 ");
  TEVInsReadOSFile(nullptr, 1, t);
  TEVInsReadOSFile("/", 1, nullptr);
  TEVInsGetTempDir(nullptr);
  TEVInsSuppressSlashDir(nullptr);
  TEVInsRemoveLang(nullptr, t, t, 0);
  TEVInsRemoveLang(t, t, nullptr, 0);

  const auto transfer = [&](auto... a) { return TEVInsTransferCAF(a..., t, 127, *m); };
  EXPECT_EQ(Answers(transfer, t, t, t), "-1 -1 -1 ");
  EXPECT_EQ(Answers([](auto... a) { return TEVInsSuppressLine(a..., nullptr, 0); }, t, t),
            "-1 -1 ");
  EXPECT_EQ(Answers([](auto... a) { return TEVInsAddLine(a..., nullptr); }, t, t), "-1 -1 ");
  EXPECT_EQ(Answers([](auto* a) { return GetFreePort(1024, a, 65535); }, m), "-1 ");
  const auto run_ports = [&](auto... a) { return CheckK7RunPortValue(a..., m); };
  EXPECT_EQ(Answers(run_ports, &n, &n, &n), "-1 -1 -1 ");
  EXPECT_EQ(Answers([](auto* a) { return TEVInsCheckOrbixValue(1, 1, 1, 1, a); }, m), "-1 ");
  EXPECT_EQ(Answers([&](auto* a) { return SatUpdateInet(a, *m); }, t), "-2 ");
  EXPECT_EQ(Answers(TEVInsSPK, t, t, t), "-1 -1 -1 ");
  const auto save = [&](char* medium, char* dir, const char* os) {
    return TEVInsSaveFilesBeforeInstall(t, medium, dir, os, code, *m);
  };
  EXPECT_EQ(Answers(save, t, t, t), "-1 -1 -1 ");
  TEVInsTaskList tasks;
  EXPECT_EQ(tasks.TEVInsCheckOrbixReboot(nullptr), 0);
  tasks.TEVInsGetListTask(nullptr, nullptr);

  EXPECT_EQ(BROVIK_ZEB2_INTERNAL_KWINSTUTIL(), 1);
  EXPECT_STREQ(t, "/text");
  EXPECT_EQ(Told(), kUntouched);
}

}  // namespace
