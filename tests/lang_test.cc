#include <kwinstutil/lang.h>

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
  const struct {
    int mask;
    const char* text;
  } kCases[] = {{127,
                 "Language-indexed fonts\nFrench\nGerman\nItalian\nJapanese\nSimplified_Chinese\n"
                 "Korean\n\n"},
                {~127, "\n"},
                {2 + 64, "French\nKorean\n\n"}};
  for (const auto& c : kCases) {
    TEVInsCreateNLSFile(CharPath(dir_), "aix", c.mask, message);
    EXPECT_EQ(message.ConvertToChar(), Message("CreateFile_OK", Path("aix/NLS.txt")));
    EXPECT_EQ(Read(Path("aix/NLS.txt")), c.text);
    EXPECT_EQ(Chosen(), c.mask & 127);
  }
  Write("aix/NLS.txt", "french\n French\nGerman \n" + std::string(5000, 'x') + "\nItalian");
  EXPECT_EQ(Chosen(), 8);
  Write("aix/NLS.txt");
  EXPECT_EQ(Chosen(), 0);
}

TEST_F(LangTest, RemovesWhatWasNotChosen) {
  const char* kLanguages[] = {"French", "German", "Italian", "Japanese", "Simplified_Chinese",
                              "Korean"};
  const char* kFonts[] = {"SICH", "TRCH", "KANJ", "KOHG", "SSS4"};
  const struct {
    int mask;
    const char* component;
    bool fonts;
  } kCases[] = {{127, "Visualization", true},
                {0, "Visualization", false},
                {0, "Modeler", true},
                {2 + 32, "Visualization2", true},
                {1, "Visualization", true}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.mask);
    for (const char* name : kLanguages)
      Write(std::string("aix/resources/msgcatalog/") + name + "/f");
    for (const char* name : kFonts)
      Write(std::string("aix/resources/fonts/Stroke/") + name + ".font");
    TEVInsRemoveLang(CharPath(dir_), "aix", CharPath(c.component), c.mask);
    int bit = 2;
    for (const char* name : kLanguages) {
      const bool kept = Exists(Path(std::string("aix/resources/msgcatalog/") + name));
      EXPECT_EQ(kept, (c.mask & bit) != 0) << name;
      bit *= 2;
    }
    for (const char* name : kFonts) {
      const bool kept = Exists(Path(std::string("aix/resources/fonts/Stroke/") + name + ".font"));
      EXPECT_EQ(kept, c.fonts) << name;
    }
  }
  TEVInsRemoveLang(CharPath(dir_), nullptr, CharPath("Modeler"), 0);
}

}  // namespace
