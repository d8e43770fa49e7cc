#include "ui/StatusRoutines.h"

#include "frame/Progress.h"
#include "ui/NomiraMain.h"
#include "ui/PendantFixture.h"

namespace nomira::testing {
namespace {

class StatusRoutinesTest : public PendantFixture {
  protected:
    StatusRoutinesTest() { LoadPendant(); }
};

TEST_F(StatusRoutinesTest, BeginShowsTheBarAndThePanel) {
    BeginStatus(Pendant(), u"works", 3, Pendant().picWrite());
    EXPECT_TRUE(Seen(u"ProgressBar2"));
    EXPECT_EQ(PanelOf(3).Text(), u"works");
    EXPECT_EQ(PictureOf(3), u"picWrite");
    EXPECT_EQ(PanelOf(4).Text(), u"");
    BeginStatus(Pendant(), u"elsewhere", 1, {});
    EXPECT_EQ(PanelOf(1).Text(), u"elsewhere");
    EXPECT_EQ(PictureOf(1), u"");
    EXPECT_EQ(PictureOf(3), u"picWrite");
}

TEST_F(StatusRoutinesTest, TheBarBeginsAnew) {
    g_dProgressValue = 50;
    AdvanceProgress();
    EXPECT_GT(Get<ProgressBar>(u"ProgressBar2").Value(), 50);
    BeginStatus(Pendant(), u"", 3, {});
    EXPECT_TRUE(g_bProgressReset);
    AdvanceProgress();
    EXPECT_EQ(Get<ProgressBar>(u"ProgressBar2").Value(), 1.0F);
}

TEST_F(StatusRoutinesTest, EndHidesTheBarAndClearsThePanel) {
    BeginStatus(Pendant(), u"works", 3, Pendant().picRead());
    PanelOf(4).SetText(u"a problem");
    EndStatus(Pendant(), 3);
    EXPECT_FALSE(Seen(u"ProgressBar2"));
    EXPECT_EQ(PanelOf(3).Text(), u"");
    EXPECT_EQ(PictureOf(3), u"");
    EXPECT_EQ(PanelOf(4).Text(), u"a problem");
}

TEST_F(StatusRoutinesTest, EndLeavesTheRequestForANewBeginning) {
    for (const bool bReset : {true, false}) {
        g_bProgressReset = bReset;
        EndStatus(Pendant(), 3);
        EXPECT_EQ(g_bProgressReset, bReset);
    }
}

TEST_F(StatusRoutinesTest, TheDesktopFormHasNoSuchBar) {
    const NomiraMain desktop;
    EXPECT_EQ(Raised([&] { BeginStatus(desktop, u"", 1, {}); }), ErrorNumber::NoSuchMember);
    EXPECT_EQ(Raised([&] { EndStatus(desktop, 1); }), ErrorNumber::NoSuchMember);
}

TEST_F(StatusRoutinesTest, AMissingPanelRaises) {
    EXPECT_EQ(Raised([] { BeginStatus(Pendant(), u"", 5, {}); }), ErrorNumber::IndexOutOfBounds);
}

TEST_F(StatusRoutinesTest, TheLinksPictureLeavesThePanelsText) {
    PanelOf(2).SetText(u"a word");
    ShowLinkUp(Pendant());
    EXPECT_EQ(PictureOf(2), Listed(Pendant(), u"ImageList3", 2).sName);
    EXPECT_EQ(PanelOf(2).Text(), u"a word");
}

TEST_F(StatusRoutinesTest, ThePicturesAreTheEntries6To10OfTheFourthList) {
    const Picture pictures[] = {Pendant().picRead(), Pendant().picWrite(), Pendant().picDelete(),
                                Pendant().picCompact(), Pendant().picCritical()};
    for (std::int16_t n = 0; n < 5; ++n)
        EXPECT_EQ(pictures[n], Listed(Pendant(), u"ImageList4", static_cast<std::int16_t>(6 + n)));
    EXPECT_EQ(pictures[4].sName, u"picCritical");
}

}  // namespace
}  // namespace nomira::testing
