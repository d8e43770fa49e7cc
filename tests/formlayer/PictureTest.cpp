#include "ui/formlayer/Picture.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/PendantKeyControl.h"

namespace nomira {
namespace {

using testing::Raised;

class PictureTest : public ::testing::Test {
  protected:
    PictureTest() { SetView(&view); }
    ~PictureTest() override { SetView(nullptr); }

    class SampleForm : public Form {
      public:
        SampleForm() : Form(u"Sample") {}
        PictureBox& box = Add<PictureBox>(u"Box");
        PictureList& list = Add<PictureList>(u"Pictures");
        PendantKeyControl& keys = Add<PendantKeyControl>(u"Keys");
    };
    memory::RecordingView view;
    SampleForm form;
};

TEST_F(PictureTest, ABoxShowsItsPicture) {
    for (int i = 0; i < 2; ++i)
        form.box.SetPicture({u"start"});
    EXPECT_EQ(form.box.Picture().sName, u"start");
    EXPECT_EQ(view.CountChanges(u"Box", u"Picture"), 1);
    EXPECT_FALSE(form.box.CanTakeFocus());
}

TEST_F(PictureTest, AListCountsItsPicturesFromOne) {
    EXPECT_EQ(form.list.ImageCount(), 0);
    form.list.AddImage({u"a"});
    form.list.AddImage({u"b"});
    form.list.SetImageSize(20, 19);
    EXPECT_EQ(form.list.ImageCount(), 2);
    EXPECT_EQ(form.list.ListImages(1).Picture.sName, u"a");
    EXPECT_EQ(form.list.ListImages(2).Picture.sName, u"b");
    EXPECT_EQ(form.list.ImageWidth(), 20);
    EXPECT_EQ(form.list.ImageHeight(), 19);
    for (const int nIndex : {-1, 0, 3})
        EXPECT_EQ(Raised([&] { form.list.ListImages(static_cast<std::int16_t>(nIndex)); }),
                  ErrorNumber::IndexOutOfBounds);
}

using PendantKeyControlTest = PictureTest;

TEST_F(PendantKeyControlTest, DeliversTheKeysOfItsRangesAlone) {
    std::vector<int> seen;
    form.keys.onFKey = [&](std::int16_t nKeyCode) { seen.push_back(nKeyCode); };
    form.keys.UserKey(113);
    form.keys.AddFKeys(113, 115);
    form.keys.AddFKeys(118, 118);
    for (const int nKeyCode : {112, 113, 115, 116, 118, 119})
        form.keys.UserKey(static_cast<std::int16_t>(nKeyCode));
    EXPECT_EQ(seen, (std::vector<int>{113, 115, 118}));
}

TEST_F(PendantKeyControlTest, ARangeAddedTwiceDeliversOnceAndEndsAtOnce) {
    int nKeys = 0;
    form.keys.onFKey = [&](std::int16_t) { ++nKeys; };
    form.keys.AddFKeys(113, 115);
    form.keys.AddFKeys(113, 115);
    EXPECT_EQ(form.keys.Ranges().size(), 2U);
    form.keys.UserKey(114);
    EXPECT_EQ(nKeys, 1);
    form.keys.SubFKeys(118, 119);
    form.keys.SubFKeys(113, 115);
    form.keys.UserKey(114);
    EXPECT_EQ(nKeys, 1);
    EXPECT_TRUE(form.keys.Ranges().empty());
    EXPECT_EQ(view.CountChanges(u"Keys", u"FKeys"), 3);
}

TEST_F(PendantKeyControlTest, TheEndOfARangeLeavesTheOthers) {
    form.keys.AddFKeys(113, 115);
    form.keys.AddFKeys(118, 119);
    form.keys.SubFKeys(113, 115);
    form.keys.SubFKeys(118, 118);
    EXPECT_EQ(form.keys.Ranges(), (std::vector<PendantKeyControl::Range>{{118, 119}}));
}

TEST_F(PendantKeyControlTest, AKeyWithoutAHandlerIsNoFailure) {
    form.keys.AddFKeys(113, 115);
    EXPECT_EQ(Raised([&] { form.keys.UserKey(113); }), std::nullopt);
}

}  // namespace
}  // namespace nomira
