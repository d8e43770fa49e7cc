// Lengths, fonts and sizes of pictures.
#include "WindowFixture.h"
#include "adapters/wx/Fonts.h"
#include "adapters/wx/Lengths.h"
#include "adapters/wx/PictureStore.h"
#include "adapters/wx/Surface.h"

namespace nomira::wx {
namespace {

class LooksTest : public WindowTest {};

TEST_F(LooksTest, FifteenTwipsAreADotAtTheUsualResolution) {
    ASSERT_EQ(ScreenScale(), 1);
    EXPECT_EQ(Dots(1440), 96);
    EXPECT_EQ(Dots(22), 1);
    EXPECT_EQ(Dots(23), 2);
    EXPECT_EQ(Twips(96), 1440);
}

TEST_F(LooksTest, EdgesThatMeetInTwipsMeetInDots) {
    const wxRect left = DotRect(1680, 0, 1210, 100), right = DotRect(2890, 0, 1215, 100);
    EXPECT_EQ(left.x + left.width, right.x);
}

TEST_F(LooksTest, AFontIsTheFormsOrTheUsualSmallOne) {
    EXPECT_EQ(MakeFont({}).GetFractionalPointSize(), 8.25);
    const wxFont font = MakeFont({u"Arial", 9.75F, true});
    EXPECT_EQ(font.GetFractionalPointSize(), 9.75);
    EXPECT_EQ(font.GetWeight(), wxFONTWEIGHT_BOLD);
    EXPECT_EQ(font.GetFaceName(), "Arial");
}

TEST_F(LooksTest, ATextThatFitsStaysAsItIs) {
    const FittedText fitted = FitText("Start", MakeFont({}), wxSize(100, 20));
    EXPECT_EQ(fitted.sText, "Start");
    EXPECT_EQ(fitted.font, MakeFont({}));
}

TEST_F(LooksTest, ATextTooWideForOneLineGetsSmaller) {
    const FittedText fitted = FitText("Database (IO's) -> Programs", MakeFont({}), wxSize(130, 17));
    EXPECT_EQ(fitted.sText, "Database (IO's) -> Programs");
    EXPECT_LT(fitted.font.GetFractionalPointSize(), 8.25);
    EXPECT_GE(fitted.font.GetFractionalPointSize(), 6.5);
}

TEST_F(LooksTest, ATextTooWideBreaksAtABlankWhereThereIsRoom) {
    const FittedText fitted = FitText("Database (IO's) -> Programs", MakeFont({}), wxSize(110, 40));
    EXPECT_EQ(fitted.font, MakeFont({}));
    EXPECT_EQ(fitted.sText.Freq('\n'), 1);
}

TEST_F(LooksTest, APictureKeepsItsSizeUnlessTheRoomIsSmaller) {
    const auto* frame = new wxFrame(nullptr, wxID_ANY, "");
    const wxBitmapBundle bundle = PictureBundle(u"picSoftView");
    ASSERT_EQ(bundle.GetDefaultSize(), wxSize(20, 19));
    EXPECT_EQ(PictureFor(*frame, bundle, wxSize(100, 50)).GetLogicalSize(), wxSize(20, 19));
    EXPECT_EQ(PictureFor(*frame, bundle, wxSize(10, 50)).GetLogicalSize(), wxSize(10, 10));
    EXPECT_EQ(PictureFor(*frame, bundle, wxSize(40, 0)).GetLogicalSize(), wxSize(1, 1));
    delete frame;
}

}  // namespace
}  // namespace nomira::wx
