#include "frame/Progress.h"

#include <memory>

#include "adapters/memory/MemoryMachine.h"
#include "frame/ProgramVariables.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using memory::RecordingView;
using memory::ViewEvent;

// A form with nothing but a bar. What the program's own forms give their bars is tested with them.
class BarForm : public Form {
  public:
    BarForm(Text sClass, Text sBar, float nMin, float nMax) : Form(std::move(sClass)) {
        auto& bar = Add<ProgressBar>(std::move(sBar));
        bar.SetMin(nMin);
        bar.SetMax(nMax);
    }
};

class ProgressTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;

    ProgressBar& LoadBatchForm() {
        g_bBatchMode = true;
        return Load(u"StdForm", u"ProgressBar", 1, 100);
    }
    ProgressBar& LoadPendantForm(bool bLive = true) {
        return Load(u"StdBofForm", u"ProgressBar2", 0, 100, bLive);
    }
    ProgressBar& LoadDesktopForm(bool bLive = true) {
        return Load(u"NomiraMain", u"ProgressBar1", 1, 27, bLive);
    }
    static void Advance(int nCalls) {
        for (int i = 0; i < nCalls; ++i)
            AdvanceProgress();
    }

  private:
    static ProgressBar& Load(TextView sClass, TextView sBar, float nMin, float nMax,
                             bool bLive = false) {
        Form& form = LoadForm(std::make_unique<BarForm>(Text(sClass), Text(sBar), nMin, nMax));
        form.SetLive(bLive);
        return form.Get<ProgressBar>(sBar);
    }
};

TEST_F(ProgressTest, BatchBarShowsOddCountsOnly) {
    ProgressBar& bar = LoadBatchForm();
    const float expected[] = {1, 1, 3, 3, 5, 5, 7};
    for (const float nValue : expected) {
        AdvanceProgress();
        EXPECT_EQ(bar.Value(), nValue);
    }
}

TEST_F(ProgressTest, BatchBarWrapsByModulusAndNeverShowsTheZero) {
    ProgressBar& bar = LoadBatchForm();
    Advance(99);
    EXPECT_EQ(g_nProgressCount, 99);
    EXPECT_EQ(bar.Value(), 99);
    AdvanceProgress();
    EXPECT_EQ(g_nProgressCount, 0);
    EXPECT_EQ(bar.Value(), 99);
    AdvanceProgress();
    EXPECT_EQ(g_nProgressCount, 1);
    EXPECT_EQ(bar.Value(), 1);
}

TEST_F(ProgressTest, AResetStartsTheBatchBarAtOne) {
    ProgressBar& bar = LoadBatchForm();
    Advance(41);
    EXPECT_EQ(bar.Value(), 41);
    g_bProgressReset = true;
    AdvanceProgress();
    EXPECT_EQ(bar.Value(), 1);
    EXPECT_EQ(g_nProgressCount, 1);
    EXPECT_FALSE(g_bProgressReset);
    Advance(2);
    EXPECT_EQ(bar.Value(), 3);
}

TEST_F(ProgressTest, TheBatchBranchLetsNoEventsThrough) {
    LoadBatchForm();
    RecordingView view;
    SetView(&view);
    Advance(10);
    EXPECT_EQ(view.Count(ViewEvent::Kind::PendingEvents), 0);
}

TEST_F(ProgressTest, TheBatchBarIsTouchedOnEverySecondCallOnly) {
    LoadBatchForm();
    AdvanceProgress();
    RecordingView view;
    SetView(&view);
    Advance(10);
    EXPECT_EQ(view.CountChanges(u"ProgressBar", u"Value"), 5);
    EXPECT_EQ(view.events.size(), 5U);
}

TEST_F(ProgressTest, BatchModeComesBeforeTheForms) {
    ProgressBar& pendant = LoadPendantForm();
    ProgressBar& desktop = LoadDesktopForm();
    ProgressBar& batch = LoadBatchForm();
    Advance(3);
    EXPECT_EQ(batch.Value(), 3);
    EXPECT_EQ(pendant.Value(), 0);
    EXPECT_EQ(desktop.Value(), 1);
}

TEST_F(ProgressTest, BatchModeWithoutItsFormDoesNothing) {
    ProgressBar& desktop = LoadDesktopForm();
    g_bBatchMode = true;
    g_bProgressReset = true;
    Advance(5);
    EXPECT_EQ(desktop.Value(), 1);
    EXPECT_EQ(g_nProgressCount, 0);
    EXPECT_TRUE(g_bProgressReset);
}

TEST_F(ProgressTest, PendantBarMovesByFifteenHundredthsFromOne) {
    ProgressBar& bar = LoadPendantForm();
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 1.15F);
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 1.30F);
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 1.45F);
}

TEST_F(ProgressTest, PendantBarFallsBackToOneBehindItsMaximum) {
    ProgressBar& bar = LoadPendantForm();
    // 1.0 + 660 x 0.15 = 100.0, which a sum of doubles may miss by a little either way.
    Advance(659);
    EXPECT_FLOAT_EQ(bar.Value(), 99.85F);
    float nLast = bar.Value();
    int nCalls = 659;
    while (bar.Value() >= nLast) {
        nLast = bar.Value();
        AdvanceProgress();
        ++nCalls;
        ASSERT_LT(nCalls, 700);
    }
    EXPECT_EQ(bar.Value(), 1.0F);
    EXPECT_EQ(g_dProgressValue, 1.0);
    EXPECT_LE(nLast, 100.0F);
    EXPECT_GT(nLast, 99.84F);
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 1.15F);
}

TEST_F(ProgressTest, PendantValueEqualToTheMaximumInThirtyTwoBitsIsShown) {
    ProgressBar& bar = LoadPendantForm();
    // A little above the maximum as a double, exactly the maximum as a 32-bit float.
    g_dProgressValue = 99.85 + 1e-9;
    AdvanceProgress();
    EXPECT_GT(g_dProgressValue, 100.0);
    EXPECT_EQ(bar.Value(), 100.0F);
}

TEST_F(ProgressTest, AResetStartsThePendantBarAtOneExactly) {
    ProgressBar& bar = LoadPendantForm();
    Advance(10);
    g_bProgressReset = true;
    AdvanceProgress();
    EXPECT_EQ(bar.Value(), 1.0F);
    EXPECT_FALSE(g_bProgressReset);
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 1.15F);
}

TEST_F(ProgressTest, ThePendantBranchLetsEventsThroughFirst) {
    ProgressBar& bar = LoadPendantForm();
    RecordingView view;
    float nSeenByEvent = -1;
    view.onPendingEvents = [&] { nSeenByEvent = bar.Value(); };
    SetView(&view);
    AdvanceProgress();
    EXPECT_EQ(nSeenByEvent, 0.0F);
    EXPECT_EQ(view.events, (std::vector<ViewEvent>{{ViewEvent::Kind::PendingEvents, u"", u"", u""},
                                                   {ViewEvent::Kind::PropertyChanged, u"StdBofForm",
                                                    u"ProgressBar2", u"Value"}}));
}

TEST_F(ProgressTest, AnEventMayCloseThePendantForm) {
    LoadPendantForm();
    RecordingView view;
    view.onPendingEvents = [] { FindForm(u"StdBofForm")->UserClose(); };
    SetView(&view);
    AdvanceProgress();
    EXPECT_EQ(FindForm(u"StdBofForm"), nullptr);
    AdvanceProgress();
    EXPECT_EQ(view.Count(ViewEvent::Kind::PendingEvents), 1);
}

TEST_F(ProgressTest, DesktopBarShowsOddCountsUpToTwentyFive) {
    ProgressBar& bar = LoadDesktopForm();
    std::vector<int> shown;
    for (int i = 0; i < 54; ++i) {
        AdvanceProgress();
        const int nValue = static_cast<int>(bar.Value());
        if (shown.empty() || shown.back() != nValue) shown.push_back(nValue);
    }
    // 26 and 0 follow each other at the wrap, and neither is shown.
    EXPECT_EQ(shown, (std::vector<int>{1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25,
                                       1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25}));
}

TEST_F(ProgressTest, AResetStartsTheDesktopBarAtOne) {
    ProgressBar& bar = LoadDesktopForm();
    Advance(9);
    g_bProgressReset = true;
    AdvanceProgress();
    EXPECT_EQ(bar.Value(), 1);
}

TEST_F(ProgressTest, BatchAndDesktopShareTheirCount) {
    LoadBatchForm();
    Advance(6);
    g_bBatchMode = false;
    ProgressBar& desktop = LoadDesktopForm();
    AdvanceProgress();
    EXPECT_EQ(desktop.Value(), 7);
}

TEST_F(ProgressTest, ALivePendantFormComesBeforeTheDesktopForm) {
    ProgressBar& desktop = LoadDesktopForm();
    ProgressBar& pendant = LoadPendantForm();
    AdvanceProgress();
    EXPECT_FLOAT_EQ(pendant.Value(), 1.15F);
    EXPECT_EQ(desktop.Value(), 1);
    EXPECT_EQ(g_nProgressCount, 0);
}

TEST_F(ProgressTest, AFormThatOnlyCarriesListsDoesNotCount) {
    ProgressBar& pendant = LoadPendantForm(false);
    ProgressBar& desktop = LoadDesktopForm();
    g_bPendantMode = true;  // not asked
    Advance(3);
    EXPECT_EQ(pendant.Value(), 0);
    EXPECT_EQ(desktop.Value(), 3);
}

TEST_F(ProgressTest, WithoutALiveFormTheCallChangesNothing) {
    ProgressBar& pendant = LoadPendantForm(false);
    ProgressBar& desktop = LoadDesktopForm(false);
    RecordingView view;
    SetView(&view);
    g_bProgressReset = true;
    Advance(5);
    EXPECT_EQ(pendant.Value(), 0);
    EXPECT_EQ(desktop.Value(), 1);
    EXPECT_TRUE(g_bProgressReset);
    EXPECT_EQ(g_nProgressCount, 0);
    EXPECT_EQ(g_dProgressValue, 0.0);
    EXPECT_TRUE(view.events.empty());
}

TEST_F(ProgressTest, WithoutAnyFormTheCallDoesNotFail) {
    Advance(5);
    EXPECT_EQ(g_nProgressCount, 0);
}

TEST_F(ProgressTest, ThePendantBarGoesOnWhereTheLastRunEnded) {
    LoadPendantForm();
    Advance(10);
    UnloadForm(u"StdBofForm");
    ProgressBar& bar = LoadPendantForm();
    AdvanceProgress();
    EXPECT_FLOAT_EQ(bar.Value(), 2.65F);
}

TEST_F(ProgressTest, ThePendantBarWrapsAtTheMaximumThatItHas) {
    ProgressBar& bar = LoadPendantForm();
    bar.SetMax(2);
    Advance(6);
    EXPECT_FLOAT_EQ(bar.Value(), 1.90F);
    AdvanceProgress();
    EXPECT_EQ(bar.Value(), 1.0F);
}

TEST_F(ProgressTest, ARunWithoutAResetGoesOnWhereTheLastOneEnded) {
    LoadBatchForm();
    Advance(4);
    UnloadForm(u"StdForm");
    ProgressBar& bar = LoadBatchForm();
    AdvanceProgress();
    EXPECT_EQ(bar.Value(), 5);
}

}  // namespace
}  // namespace nomira
