#include "ui/formlayer/StatusBar.h"

#include "adapters/memory/RecordingView.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;

class StatusBarTest : public ::testing::Test {
  protected:
    class SampleForm : public Form {
      public:
        SampleForm() : Form(u"Sample") {}
        StatusBar& bar = Add<StatusBar>(u"Bar");
    };
    SampleForm form;
    StatusBar& bar = form.bar;
};

TEST_F(StatusBarTest, PanelsAreCountedFromOne) {
    EXPECT_EQ(bar.PanelCount(), 0);
    bar.AddPanel().SetText(u"first");
    bar.AddPanel(u"Objekt2").SetText(u"second");
    EXPECT_EQ(bar.PanelCount(), 2);
    EXPECT_EQ(bar.Panels(1).Text(), u"first");
    EXPECT_EQ(bar.Panels(2).Text(), u"second");
    EXPECT_EQ(bar.Panels(2).Key(), u"Objekt2");
    for (const int nIndex : {-1, 0, 3})
        EXPECT_EQ(Raised([&] { bar.Panels(static_cast<std::int16_t>(nIndex)); }),
                  ErrorNumber::IndexOutOfBounds)
            << nIndex;
}

TEST_F(StatusBarTest, APanelBeginsWithoutTextAndPicture) {
    const Panel& panel = bar.AddPanel();
    EXPECT_EQ(panel.Text(), u"");
    EXPECT_EQ(panel.Picture(), Picture{});
    EXPECT_EQ(panel.Style(), Panel::kTextStyle);
    EXPECT_EQ(panel.MinWidth(), Panel::kUsualMinWidth);
}

TEST_F(StatusBarTest, AKeyIsUsedOnce) {
    bar.AddPanel(u"A");
    bar.AddPanel();
    bar.AddPanel();
    EXPECT_EQ(Raised([&] { bar.AddPanel(u"A"); }), ErrorNumber::KeyNotUnique);
    EXPECT_EQ(bar.PanelCount(), 3);
}

TEST_F(StatusBarTest, APanelStandsBehindThoseAhead) {
    bar.AddPanel().SetMinWidth(255);
    bar.AddPanel().SetMinWidth(1700);
    bar.AddPanel();
    EXPECT_EQ(bar.Panels(1).Left(), 0);
    EXPECT_EQ(bar.Panels(2).Left(), 255);
    EXPECT_EQ(bar.Panels(3).Left(), 1955);
    bar.Panels(1).SetMinWidth(300);
    EXPECT_EQ(bar.Panels(3).Left(), 2000);
}

TEST_F(StatusBarTest, TheViewHearsWhichPanelHasChanged) {
    bar.AddPanel();
    bar.AddPanel();
    memory::RecordingView view;
    SetView(&view);
    for (int n = 0; n < 2; ++n) {
        bar.Panels(2).SetText(u"x");
        bar.Panels(2).SetPicture({u"picCritical"});
        bar.Panels(1).SetStyle(Panel::kClockStyle);
        bar.Panels(1).SetMinWidth(10);
    }
    bar.Panels(2).SetPicture({});
    SetView(nullptr);
    std::vector<Text> told;
    for (const auto& event : view.events)
        told.push_back(event.sControl + u"." + event.sProperty);
    EXPECT_EQ(told, (std::vector<Text>{u"Bar.Panels(2).Text", u"Bar.Panels(2).Picture",
                                       u"Bar.Panels(1).Style", u"Bar.Panels(1).MinWidth",
                                       u"Bar.Panels(2).Picture"}));
}

}  // namespace
}  // namespace nomira
