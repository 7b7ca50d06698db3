#include <kwinstutil/checks.h>
#include <kwinstutil/toc.h>

#include <memory>

#include "fixture.h"

namespace {

class TocTest : public Fixture {
 protected:
  /// A medium with the given table.
  std::unique_ptr<TEVINSMediaToc> Medium(const std::string& table) {
    TEVINSMediaToc* toc = nullptr;
    EXPECT_EQ(InitMediaToc(CharPath(Write("TOC", table)), &toc, &message_), 0);
    return std::unique_ptr<TEVINSMediaToc>(toc);
  }

  static std::string Information() {
    char* text = nullptr;
    TEVINSToc::sGetInfoMsg(text);
    return text == nullptr ? "" : text;
  }

  TEVUnicodeString message_ = "untouched";
};

TEST_F(TocTest, OpensWhatItCanAndTellsTheRest) {
  TEVINSMediaToc* media = reinterpret_cast<TEVINSMediaToc*>(1);
  EXPECT_EQ(InitMediaToc(CharPath(Path("TOC")), &media, &message_), -1);
  EXPECT_EQ(message_.ConvertToChar(), Message("ErrorInitNoToc", Path("TOC")));
  EXPECT_EQ(media, nullptr);

  const std::string damaged = Write("TOC", "code:PRD:Modeler\nnonsense\n");
  EXPECT_EQ(InitMediaToc(CharPath(damaged), &media, &message_), -1);
  EXPECT_EQ(std::string(message_.ConvertToChar()).find("ErrorInitMediaToc|" + damaged + "|"), 0U);
  EXPECT_NE(message_.SearchSubString("line 2"), -1) << message_.ConvertToChar();
  ASSERT_NE(media, nullptr);
  EXPECT_EQ(media->GetNbToc(), 1);
  EXPECT_EQ(Information(), "");
  delete media;
}

TEST_F(TocTest, OpensTreesThatAreNotThereYet) {
  TEVINSInstToc* tree = nullptr;
  const TEVINSMediaToc earlier("/missing/TOC");  // its problem is none of the tree's
  EXPECT_EQ(InitInstallToc(CharPath(MakeDir("new")), &tree, &message_), 0);
  EXPECT_STREQ(message_.ConvertToChar(), "untouched");
  delete tree;
  EXPECT_EQ(InitInstallToc(CharPath(Path("missing")), &tree, &message_), -2);
  EXPECT_EQ(std::string(message_.ConvertToChar()).find("ErrorInitToc|" + Path("missing") + "|"),
            0U);
  EXPECT_NE(tree, nullptr);
  EXPECT_EQ(Information(), "");
  delete tree;
}

TEST_F(TocTest, AsksMediaForTheirContent) {
  const struct {
    const char* table;
    int code_status, sdk_status, pack, hot_fix, sample;
  } kCases[] = {
      {"", -1, -1, 4, 4, -1},
      {"code:PRD:A", 0, -1, 4, 4, -1},
      {"code:SLT:A", 0, -1, 4, 4, -1},
      {"zeb2:PRD:A.zeb2", -1, 0, 4, 4, -1},
      {"code:FWK:A\nsamples:PRD:A\ndocumentation:SMP:A", -1, -1, 4, 4, -1},
      {"code:SPK:A\nzeb2:SPK:A", -1, -1, 0, 4, -1},
      {"zeb2:SPK:A", -1, -1, 1, 4, -1},
      {"code:HFX:A", -1, -1, 4, 0, -1},
      {"samples:SMP:A", -1, -1, 4, 4, 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.table);
    const auto medium = Medium(c.table);
    const auto expect = [this](int status, int expected, const std::string& failure) {
      EXPECT_EQ(status, expected);
      EXPECT_EQ(message_.ConvertToChar(), failure);
      message_ = "untouched";
    };
    const std::string empty = Message("ErrEmptyMediaToc");
    expect(TEVInsCheckMedia(code, medium.get(), &message_), c.code_status,
           c.code_status == 0 ? "untouched" : empty);
    expect(TEVInsCheckMedia(zeb2, medium.get(), &message_), c.sdk_status,
           c.sdk_status == 0 ? "untouched" : empty);
    expect(TEVInsCheckMediaSPK(medium.get(), &message_), c.pack,
           c.pack < 4 ? "untouched" : Message("ErrorNoSPK"));
    expect(TEVInsCheckMediaHFX(medium.get(), &message_), c.hot_fix,
           c.hot_fix == 0 ? "untouched" : Message("ErrorNoHFX"));
    expect(TEVInsCheckMediaSMP(medium.get(), &message_), c.sample,
           c.sample == 0 ? "untouched" : empty);
    EXPECT_EQ(TEVInsCheckMediaSMP(medium.get(), nullptr), -1) << "a message is required";
  }
  EXPECT_EQ(TEVInsCheckMedia(code, nullptr, nullptr), -1);
  EXPECT_EQ(TEVInsCheckMediaSPK(nullptr, nullptr), 4);
  EXPECT_EQ(TEVInsCheckMediaHFX(nullptr, &message_), 4);
  EXPECT_EQ(TEVInsCheckMediaSMP(nullptr, &message_), -1);
  SetEnv("TEVMsgCatalogPath", "/nonexistent");
  EXPECT_EQ(TEVInsCheckMediaHFX(nullptr, &message_), 4);
  EXPECT_STREQ(message_.ConvertToChar(), "This is not a HFX media");
}

TEST_F(TocTest, LooksForTheSatellite) {
  const std::string dir = MakeDir("satellite");
  for (const std::string name : {"LumaforgeSatellite.Z", "LFSFS"}) {
    EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir + "/"), &message_), -2);
    EXPECT_EQ(message_.ConvertToChar(), Message("ErrorNoFile", dir + "//" + name));
    EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir), nullptr), -2);
    Write("satellite/" + name);
  }
  EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir), nullptr), 0);
}

}  // namespace
