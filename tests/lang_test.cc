#include <kwinstutil/lang.h>
#include <sys/stat.h>

#include <cstdio>
#include <tuple>

#include "fixture.h"

namespace {

class LangTest : public Fixture {
 protected:
  int Chosen() { return TEVInsInitChosenLang(CharPath(dir_), "aix"); }
};

TEST_F(LangTest, RecordsTheChoice) {
  TEVUnicodeString message;
  EXPECT_EQ(TEVInsCreateNLSFile(CharPath(dir_), "aix", 127, message), 0) << "whatever the outcome";
  EXPECT_EQ(message.ConvertToChar(), Message("CreateFile_KO", Path("aix/NLS.txt")));
  EXPECT_EQ(Chosen(), 127) << "no record";
  MakeDir("aix");
  const std::string all =
      "Language-indexed fonts\nFrench\nGerman\nItalian\nJapanese\nSimplified_Chinese\nKorean\n\n";
  for (const auto& [mask, text] :
       std::map<int, std::string>{{127, all}, {~127, "\n"}, {2 + 64, "French\nKorean\n\n"}}) {
    TEVInsCreateNLSFile(CharPath(dir_), "aix", mask, message);
    EXPECT_EQ(message.ConvertToChar(), Message("CreateFile_OK", Path("aix/NLS.txt")));
    EXPECT_EQ(Read(Path("aix/NLS.txt")), text);
    EXPECT_EQ(Chosen(), mask & 127);
  }
  Write("aix/NLS.txt", "french\n French\nGerman \n" + std::string(5000, 'x') + "\nItalian");
  EXPECT_EQ(Chosen(), 8);
  Write("aix/NLS.txt");
  EXPECT_EQ(Chosen(), 0);
  std::remove(Path("aix/NLS.txt").c_str());
  ASSERT_EQ(mkfifo(Path("aix/NLS.txt").c_str(), 0666), 0);
  EXPECT_EQ(Chosen(), 127) << "a pipe would have to be waited for";
}

TEST_F(LangTest, RemovesWhatWasNotChosen) {
  const std::string resources = "aix/resources/";
  const std::map<int, std::string> kLanguages = {
      {2, "French"}, {4, "German"}, {8, "Italian"}, {16, "Japanese"}, {32, "Simplified_Chinese"},
      {64, "Korean"}};
  const std::tuple<int, const char*, bool> kCases[] = {
      {126, "Visualization", false}, {34, "Visualization2", true}, {1, "Visualization", true}};
  for (const auto& [mask, component, fonts] : kCases) {
    const char* kFonts[] = {"SICH", "TRCH", "KANJ", "KOHG", "SSS4"};
    for (const auto& [bit, name] : kLanguages) Write(resources + "msgcatalog/" + name + "/f");
    for (const char* name : kFonts) Write(resources + "fonts/Stroke/" + name + ".font");
    TEVInsRemoveLang(CharPath(dir_), "aix", CharPath(component), mask);
    for (const auto& [bit, name] : kLanguages)
      EXPECT_EQ(Exists(Path(resources + "msgcatalog/" + name)), (mask & bit) != 0) << name;
    for (const char* name : kFonts)
      EXPECT_EQ(Exists(Path(resources + "fonts/Stroke/" + name + ".font")), fonts) << name;
  }
  TEVInsRemoveLang(CharPath(dir_), nullptr, CharPath("Modeler"), 0);
}

}  // namespace
