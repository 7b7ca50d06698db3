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

  static bool HasInformation() {
    char* text = nullptr;
    TEVINSToc::sGetInfoMsg(text);
    return text != nullptr;
  }
};

TEST_F(TocTest, OpensWhatItCanAndReportsTheRest) {
  TEVINSMediaToc* media = reinterpret_cast<TEVINSMediaToc*>(1);
  EXPECT_EQ(InitMediaToc(CharPath(Path("TOC")), &media, &message_), -1);
  EXPECT_EQ(Told(), Message("ErrorInitNoToc", Path("TOC")));
  EXPECT_EQ(media, nullptr);

  const std::string damaged = Write("TOC", "code:PRD:Modeler\nnonsense\n");
  EXPECT_EQ(InitMediaToc(CharPath(damaged), &media, &message_), -1);
  EXPECT_EQ(Told().find("ErrorInitMediaToc|" + damaged + "|" + damaged + ", line 2: "), 0U);
  ASSERT_NE(media, nullptr);
  EXPECT_EQ(media->GetNbToc(), 1);
  EXPECT_FALSE(HasInformation());
  delete media;
}

TEST_F(TocTest, OpensTreesThatAreNotThereYet) {
  TEVINSInstToc* tree = nullptr;
  const TEVINSMediaToc earlier("/missing/TOC");  // its problem is not the tree's
  EXPECT_EQ(InitInstallToc(CharPath(MakeDir("new")), &tree, &message_), 0);
  EXPECT_EQ(Told(), kUntouched);
  delete tree;
  EXPECT_EQ(InitInstallToc(CharPath(Path("missing")), &tree, &message_), -2);
  EXPECT_EQ(Told().find("ErrorInitToc|" + Path("missing") + "|"), 0U);
  EXPECT_NE(tree, nullptr);
  EXPECT_FALSE(HasInformation());
  delete tree;
}

TEST_F(TocTest, AsksMediaForTheirContent) {
  constexpr int kHas = 0, kSdkPack = 1, kEmpty = -1, kIsNot = 4;
  const struct {
    const char* table;
    int code_status, sdk_status, pack, hot_fix, sample;
  } kCases[] = {
      {"", kEmpty, kEmpty, kIsNot, kIsNot, kEmpty},
      {"code:PRD:A", kHas, kEmpty, kIsNot, kIsNot, kEmpty},
      {"code:SLT:A", kHas, kEmpty, kIsNot, kIsNot, kEmpty},
      {"zeb2:PRD:A.zeb2", kEmpty, kHas, kIsNot, kIsNot, kEmpty},
      {"code:FWK:A\nsamples:PRD:A\ndocumentation:SMP:A", kEmpty, kEmpty, kIsNot, kIsNot, kEmpty},
      {"code:SPK:A\nzeb2:SPK:A", kEmpty, kEmpty, kHas, kIsNot, kEmpty},
      {"zeb2:SPK:A", kEmpty, kEmpty, kSdkPack, kIsNot, kEmpty},
      {"code:HFX:A", kEmpty, kEmpty, kIsNot, kHas, kEmpty},
      {"samples:SMP:A", kEmpty, kEmpty, kIsNot, kIsNot, kHas},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.table);
    const auto medium = Medium(c.table);
    const auto expect = [this](int status, int expected, const std::string& failure) {
      EXPECT_EQ(status, expected);
      EXPECT_EQ(Told(), expected == kHas || expected == kSdkPack ? kUntouched : failure);
    };
    const std::string empty = Message("ErrEmptyMediaToc");
    expect(TEVInsCheckMedia(code, medium.get(), &message_), c.code_status, empty);
    expect(TEVInsCheckMedia(zeb2, medium.get(), &message_), c.sdk_status, empty);
    expect(TEVInsCheckMediaSPK(medium.get(), &message_), c.pack, Message("ErrorNoSPK"));
    expect(TEVInsCheckMediaHFX(medium.get(), &message_), c.hot_fix, Message("ErrorNoHFX"));
    expect(TEVInsCheckMediaSMP(medium.get(), &message_), c.sample, empty);
  }
  UseDefaultTexts();
  EXPECT_EQ(TEVInsCheckMediaHFX(nullptr, &message_), 4);
  EXPECT_EQ(Told(), "This is not a HFX media");
}

TEST_F(TocTest, LooksForTheSatellite) {
  const std::string dir = MakeDir("satellite");
  for (const std::string name : {"LumaforgeSatellite.Z", "LFSFS"}) {
    EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir + "/"), &message_), -2);
    EXPECT_EQ(Told(), Message("ErrorNoFile", dir + "//" + name));
    EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir), nullptr), -2);
    Write("satellite/" + name);
  }
  EXPECT_EQ(TEVInsCheckMediaSAT(CharPath(dir), nullptr), 0);
}

}  // namespace
