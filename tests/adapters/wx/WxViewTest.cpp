// The view's own rules: loops, what handlers raise, closing, painting at once, what is served
// beside the windows, message boxes.
#include "adapters/wx/WxView.h"

#include <unistd.h>
#include <wx/app.h>

#include <array>
#include <cstdlib>

#include "WindowFixture.h"
#include "adapters/memory/MemoryDesktop.h"
#include "adapters/wx/Lengths.h"
#include "adapters/wx/NativeStyle.h"
#include "adapters/wx/PendantKeyTable.h"
#include "adapters/wx/WxDesktop.h"
#include "langtools/ProgramEnd.h"
#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "ui/FormAccess.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/PendantKeyControl.h"

namespace nomira::wx {
namespace {

using testing::Raised;

class PlainForm : public Form {
  public:
    explicit PlainForm(Text sClass = u"Plain") : Form(std::move(sClass)) {
        SetCaption(u"A plain form");
        Move(1500, 1500, 4500, 3000);
        button.Move(0, 0, 1500, 450);
        button.SetCaption(u"button");
        button.SetTabIndex(0);
        bar.Move(0, 1500, 3000, 300);
    }
    Button& button = Add<Button>(u"Button");
    ProgressBar& bar = Add<ProgressBar>(u"Bar");
};

struct End {};

class WxViewTest : public WindowTest {
  protected:
    PlainForm& Show() {
        auto& form = static_cast<PlainForm&>(LoadForm(std::make_unique<PlainForm>()));
        form.Show();
        return form;
    }
    // Presses the button some time after the loop has begun.
    static void PressSoon() { ASSERT_EQ(std::system("(xdotool sleep 0.2 key space) &"), 0); }
};

TEST_F(WxViewTest, TheLoopEndsWithTheLastForm) {
    PlainForm& form = Show();
    form.button.onClick = [] { UnloadForm(u"Plain"); };
    PressSoon();
    view->RunEventLoop();
    EXPECT_EQ(FindForm(u"Plain"), nullptr);
}

TEST_F(WxViewTest, TheLoopDoesNotBeginWithoutAForm) {
    view->RunEventLoop();
    EXPECT_FALSE(AnyFormVisible());
}

TEST_F(WxViewTest, WhatAHandlerRaisesComesOutOfTheLoop) {
    PlainForm& form = Show();
    form.button.onClick = [] { Raise(ErrorNumber::PathNotFound); };
    PressSoon();
    EXPECT_EQ(Raised([&] { view->RunEventLoop(); }), ErrorNumber::PathNotFound);
    EXPECT_TRUE(form.Visible());
    form.button.onClick = [] { throw End{}; };
    PressSoon();
    EXPECT_THROW(view->RunEventLoop(), End);
}

TEST_F(WxViewTest, WhatAHandlerRaisesComesOutOfThePendingEvents) {
    PlainForm& form = Show();
    Settle();
    form.button.onClick = [] { throw End{}; };
    ASSERT_EQ(std::system("xdotool key space"), 0);
    EXPECT_THROW(Settle(), End);
    form.button.onClick = nullptr;
    Settle();
}

// As on the pendant: a key ends the program in the middle of a pass.
TEST_F(WxViewTest, AnEventInsideAPassEndsThePassAndTheLoop) {
    PlainForm& form = Show();
    bool bAfterPass = false;
    form.button.onClick = [&] {
        form.button.onClick = [] { throw End{}; };
        if (std::system("xdotool key space") == 0) Settle();
        bAfterPass = true;
    };
    PressSoon();
    EXPECT_THROW(view->RunEventLoop(), End);
    EXPECT_FALSE(bAfterPass);
}

TEST_F(WxViewTest, TheCloseBoxUnloadsTheFormAndEndsTheLoop) {
    PlainForm& form = Show();
    wxTheApp->CallAfter([&] { view->FrameOf(form)->Close(); });
    view->RunEventLoop();
    EXPECT_EQ(FindForm(u"Plain"), nullptr);
}

// A close in the middle of a pass comes out of the next look for events, and the form outlives it.
TEST_F(WxViewTest, TheCloseBoxEndsTheProgramInsideAHandler) {
    PlainForm& form = Show();
    bool bStillThere = false, bAfterPass = false;
    form.button.onClick = [&] {
        view->FrameOf(form)->Close();
        bStillThere = FindForm(u"Plain") == &form;
        view->ProcessPendingEvents();
        bAfterPass = true;
    };
    PressSoon();
    EXPECT_THROW(view->RunEventLoop(), ProgramEnd);
    EXPECT_TRUE(bStillThere);
    EXPECT_FALSE(bAfterPass);
    EXPECT_EQ(FindForm(u"Plain"), &form);
}

TEST_F(WxViewTest, AWindowThatIsClosedWhileAHandlerLetsEventsThroughEndsTheProgram) {
    PlainForm& form = Show();
    bool bAfterPass = false;
    form.button.onClick = [&] {
        wxTheApp->CallAfter([&] { view->FrameOf(form)->Close(); });
        Settle();
        bAfterPass = true;
    };
    PressSoon();
    EXPECT_THROW(view->RunEventLoop(), ProgramEnd);
    EXPECT_FALSE(bAfterPass);
}

TEST_F(WxViewTest, TheLoopGoesOnWhileAnotherFormIsThere) {
    PlainForm& form = Show();
    Form& other = LoadForm(std::make_unique<PlainForm>(u"Other"));
    other.Show();
    wxTheApp->CallAfter([&] { view->FrameOf(form)->Close(); });
    wxTheApp->CallAfter([&] {
        EXPECT_EQ(FindForm(u"Plain"), nullptr);
        view->FrameOf(other)->Close();
    });
    view->RunEventLoop();
    EXPECT_FALSE(AnyFormVisible());
}

TEST_F(WxViewTest, ARefreshPaintsButLetsNoActThrough) {
    PlainForm& form = Show();
    Settle();
    int nClicks = 0;
    form.button.onClick = [&] { ++nClicks; };
    form.button.SetCaption(u"other");
    ASSERT_EQ(std::system("xdotool key space"), 0);
    form.button.Refresh();
    EXPECT_EQ(view->WindowOf(form.button)->GetLabel(), "other");
    EXPECT_EQ(nClicks, 0);
    Settle();
    EXPECT_EQ(nClicks, 1);
}

TEST_F(WxViewTest, AFormThatIsShownIsPaintedAtOnce) {
    const PlainForm& form = Show();
    EXPECT_TRUE(view->FrameOf(form)->IsPainted());
}

TEST_F(WxViewTest, ChangesReachTheWindow) {
    PlainForm& form = Show();
    form.SetCaption(u"new words");
    form.Move(3000, 3000, 6000, 4500);
    form.button.SetCaption(u"a & b");
    form.button.Move(150, 300, 3000, 600);
    form.button.SetEnabled(false);
    form.bar.SetVisible(false);
    ExpectInStep(form);
    Settle();
    EXPECT_EQ(view->FrameOf(form)->GetPosition(), wxPoint(Dots(3000), Dots(3000)));
    form.button.SetFontBold(true);
    view->ShowChanges();
    EXPECT_EQ(view->WindowOf(form.button)->GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
}

TEST_F(WxViewTest, ItTellsWhichTitlesAreThere) {
    std::vector<Text> told;
    view->onTitleShown = [&](TextView sTitle) { told.push_back(u"+" + Text(sTitle)); };
    view->onTitleGone = [&](TextView sTitle) { told.push_back(u"-" + Text(sTitle)); };
    Show().SetCaption(u"new");
    UnloadForm(u"Plain");
    EXPECT_EQ(told, (std::vector<Text>{u"+A plain form", u"-A plain form", u"+new", u"-new"}));
}

// Both lie on the same place, so that a click tells which is above.
TEST_F(WxViewTest, AWindowIsRaisedByItsTitle) {
    std::string sClicked;
    PlainForm& form = Show();
    form.button.onClick = [&] { sClicked += 'a'; };
    auto& other = static_cast<PlainForm&>(LoadForm(std::make_unique<PlainForm>(u"Other")));
    other.SetCaption(u"other");
    other.button.onClick = [&] { sClicked += 'b'; };
    other.Show();
    view->RaiseWindow(u"no such title");
    Click(form.button);
    view->RaiseWindow(u"A plain form");
    Click(form.button);
    view->RaiseWindow(u"other");
    Click(form.button);
    EXPECT_EQ(sClicked, "bab");
}

TEST_F(WxViewTest, SourcesAreServedInTheLoop) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    std::string sRead;
    view->AddSource({[&] {
                         return std::vector<int>{pipe[0], -1};
                     },
                     [&] {
                         if (sRead.empty() && ::write(pipe[1], "x", 1) != 1) throw End{};
                     }});
    view->AddSource({[&] { return std::vector<int>{pipe[0]}; },
                     [&] {
                         char c = 0;
                         if (::read(pipe[0], &c, 1) == 1) sRead += c;
                         UnloadForm(u"Plain");
                     }});
    Show();
    view->RunEventLoop();
    EXPECT_EQ(sRead, "x");
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(WxViewTest, WhatASourceRaisesComesOutOfTheLoop) {
    Show();
    view->AddSource({[] { return std::vector<int>{}; }, [] { throw End{}; }});
    EXPECT_THROW(view->RunEventLoop(), End);
}

TEST_F(WxViewTest, AMessageBoxWaitsForTheOperator) {
    WxDesktop desktop(*view, machine.desktop);
    Show();
    ASSERT_EQ(std::system("(xdotool sleep 0.4 key Return) &"), 0);
    desktop.ShowMessageBox(u"line one\r\nline two", u"Tip", BoxIcon::Exclamation);
    Settle();
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(WxViewTest, TheScreenHasItsRealSize) {
    WxDesktop desktop(*view, machine.desktop);
    EXPECT_EQ(desktop.Screen().nWidth, 1280 * 15);
    EXPECT_EQ(desktop.Screen().nHeight, 1024 * 15);
}

// The rest of the desktop is another one's work.
TEST_F(WxViewTest, OtherInstancesAreTheOtherDesktopsWork) {
    WxDesktop desktop(*view, machine.desktop);
    machine.desktop.bPreviousInstance = true;
    EXPECT_TRUE(desktop.PreviousInstance());
}

TEST_F(WxViewTest, EveryControlHasANameToBeReadAloud) {
    for (const auto& make :
         {+[]() -> std::unique_ptr<Form> { return std::make_unique<NomiraMain>(); },
          +[]() -> std::unique_ptr<Form> { return std::make_unique<StdBofForm>(); }}) {
        Form& form = LoadForm(make());
        form.Show();
        form.ForEachControl([&](Control& control) {
            if (wxWindow* window = view->WindowOf(control)) {
                EXPECT_NE(AccessibleName(*window), "") << window->GetName();
            }
        });
        UnloadForm(form.Class());
    }
}

TEST_F(WxViewTest, TheDrawnKeysTellTheirKeys) {
    Form& form = LoadForm(std::make_unique<StdBofForm>());
    form.Show();
    for (const PcKey& key : PcKeys()) {
        wxWindow* window = view->WindowOf(form.Get<Button>(key.sArray, key.nIndex));
        EXPECT_EQ(window->GetToolTipText(), ToolTipOf(key));
        EXPECT_EQ(AccessibleName(*window), key.sWhat);
    }
    EXPECT_EQ(view->WindowOf(SoftKey(form, 3))->GetToolTip(), nullptr);
}

TEST_F(WxViewTest, EveryKeyOfTheTableIsOneOfThePendants) {
    Form& form = LoadForm(std::make_unique<StdBofForm>());
    form.Show();
    int nHeard = 0;
    auto& keys = form.Get<PendantKeyControl>(u"TqpKeys");
    keys.AddFKeys(129, 132);
    keys.AddFKeys(113, 115);
    keys.AddFKeys(118, 119);
    keys.onFKey = [&](std::int16_t) { ++nHeard; };
    for (const PcKey& key : PcKeys())
        keys.UserKey(key.nCode);
    EXPECT_EQ(nHeard, 9);
}

TEST_F(WxViewTest, ViewsComeAndGo) {
    for (int n = 0; n < 3; ++n) {
        Show();
        UnloadForm(u"Plain");
        SetView(nullptr);
        view = std::make_unique<WxView>();
        SetView(view.get());
    }
    ExpectInStep(Show());
}

}  // namespace
}  // namespace nomira::wx
