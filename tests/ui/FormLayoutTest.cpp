#include "ui/FormLayout.h"

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/PlayedUser.h"
#include "frame/Settings.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/AppVersion.h"
#include "ui/NomiraMain.h"
#include "ui/PendantKeys.h"
#include "ui/StdBofForm.h"
#include "ui/StdForm.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

using testing::Raised;
using Ranges = std::vector<PendantKeyControl::Range>;

const Ranges kRanges{{129, 132}, {113, 115}, {118, 119}};

class FormLayoutTest : public ::testing::Test {
  protected:
    FormLayoutTest() { g_sTextFileExt = u"*.nam"; }

    void UseCustomer(TextView sCustomer) {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
    }
    void InitAs(TextView sCustomer) {
        UseCustomer(sCustomer);
        InitFormLayout(pendant);
    }
    Button& SoftKey(int nIndex) {
        return pendant.Get<Button>(u"SoftKey", static_cast<std::int16_t>(nIndex));
    }
    Button& StatKeyL(int nIndex) {
        return pendant.Get<Button>(u"StatKeyL", static_cast<std::int16_t>(nIndex));
    }
    const Picture& Listed(TextView sList, int nPlace) {
        return pendant.Get<PictureList>(sList)
            .ListImages(static_cast<std::int16_t>(nPlace))
            .Picture;
    }
    // `places` are those of StatKeyL(1) to StatKeyL(4), each with the one when disabled.
    void ExpectStatusKeyPictures(const int (&places)[4][2]) {
        for (int n = 1; n <= 4; ++n) {
            EXPECT_EQ(StatKeyL(n).Picture(), Listed(u"ImageList2", places[n - 1][0])) << n;
            EXPECT_EQ(StatKeyL(n).DisabledPicture(), Listed(u"ImageList2", places[n - 1][1])) << n;
        }
    }
    static void ExpectVisible(const Form& form, std::initializer_list<TextView> names,
                              bool bVisible) {
        for (const TextView sName : names)
            EXPECT_EQ(form.Get<Control>(sName).Visible(), bVisible) << testing::Printable(sName);
    }

    memory::MemoryMachine machine;
    NomiraMain desktop;
    StdBofForm pendant;
};

// ---- Both forms ----

TEST_F(FormLayoutTest, ListsAndBoxesAreHiddenOnBothForms) {
    for (Form* form : std::initializer_list<Form*>{&desktop, &pendant}) {
        InitFormLayout(*form);
        ExpectVisible(*form,
                      {u"Text1", u"txtboxView", u"File1", u"File2", u"List1", u"TreeView1",
                       u"chkBoxAdd", u"chkBoxSelAll"},
                      false);
        EXPECT_EQ(form->Get<FileListBox>(u"File1").Pattern(), u"*.nam");
        EXPECT_EQ(form->Get<FileListBox>(u"File2").Pattern(), u"*.src");
    }
}

TEST_F(FormLayoutTest, AFormThatLacksTheControlsRaises) {
    const StdForm batch;
    EXPECT_EQ(Raised([&] { InitFormLayout(batch); }), ErrorNumber::NoSuchMember);
    const Form& loaded = LoadForm(std::make_unique<NomiraMain>());
    EXPECT_EQ(Raised([&] { InitStatusLayout(loaded); }), ErrorNumber::NoSuchMember);
}

// ---- The desktop form ----

TEST_F(FormLayoutTest, TheDesktopFormHidesStartAndKeepsTheRest) {
    desktop.Get<RadioButton>(u"Option2").SetValue(true);
    const auto& option = desktop.Get<RadioButton>(u"Option2");
    memory::RecordingView view;
    SetView(&view);
    InitFormLayout(desktop);
    SetView(nullptr);
    ExpectVisible(desktop, {u"cmdStart"}, false);
    ExpectVisible(desktop,
                  {u"Drive1", u"Dir1", u"cmdExit", u"cmdView", u"Option1", u"Option2", u"Option3"},
                  true);
    EXPECT_TRUE(option.Value());
    for (const auto& event : view.events) {
        EXPECT_FALSE(event.sControl.starts_with(u"Option"));
        EXPECT_FALSE(event.sProperty == u"Caption");
    }
}

// ---- The pendant form ----

TEST_F(FormLayoutTest, ThePendantFormShowsItsStartScreen) {
    pendant.Get<TextBox>(u"Text2").SetText(u"Titel");
    pendant.Get<Control>(u"Picture1").SetVisible(false);
    InitFormLayout(pendant);
    EXPECT_EQ(pendant.Get<Frame>(u"RahmenFrm").Caption(), u"Titel");
    ExpectVisible(pendant, {u"Picture1"}, true);
    ExpectVisible(pendant, {u"Dir1", u"Drive1"}, false);
    EXPECT_EQ(pendant.Get<TextBox>(u"txtVersion").Text(), VersionText(TheAppVersion()));
}

TEST_F(FormLayoutTest, SoftKeysShowPicturesInPlaceOfWords) {
    InitFormLayout(pendant);
    const int places[] = {1, 2, 3, 0, 0, 4, 5};  // in the list; 0 is none
    const bool enabled[] = {true, false, false, false, false, false, true};
    for (int n = 0; n <= 6; ++n) {
        SCOPED_TRACE(n);
        EXPECT_EQ(SoftKey(n).Caption(), u"");
        EXPECT_EQ(SoftKey(n).Picture(), places[n] ? Listed(u"ImageList4", places[n]) : Picture{});
        EXPECT_EQ(SoftKey(n).Enabled(), enabled[n]);
        EXPECT_TRUE(SoftKey(n).Font().bBold);
    }
}

TEST_F(FormLayoutTest, StatusKeysLoseTheirWordsAndSomeAreOff) {
    for (int n = 0; n <= 5; ++n)
        StatKeyL(n).SetEnabled(n == 0 || n > 3);
    InitFormLayout(pendant);
    const bool enabled[] = {false, true, true, true, false, false};
    for (int n = 0; n <= 5; ++n) {
        EXPECT_EQ(StatKeyL(n).Caption(), u"");
        EXPECT_EQ(StatKeyL(n).Enabled(), enabled[n]) << n;
        EXPECT_FALSE(StatKeyL(n).Font().bBold);
    }
}

TEST_F(FormLayoutTest, TheCustomersThirdStatusKeyWearsThePictureOfTheFourth) {
    InitAs(u"VW");
    ExpectStatusKeyPictures({{1, 2}, {3, 4}, {7, 8}, {7, 8}});
    ExpectVisible(pendant, {u"Option3"}, false);
    ExpectVisible(pendant, {u"chkBoxAdd", u"chkBoxSymbol", u"Option1", u"Option2"}, true);
    EXPECT_FALSE(pendant.Get<CheckBox>(u"chkBoxAdd").Enabled());
    EXPECT_FALSE(pendant.Get<CheckBox>(u"chkBoxSymbol").Enabled());
    EXPECT_TRUE(StatKeyL(3).Enabled());
}

// The comparison of the customer is exact.
TEST_F(FormLayoutTest, AnyOtherCustomerHasTheThirdOption) {
    for (const TextView sCustomer : {u"vw", u"Somebody", u"VW "}) {
        InitAs(u"VW");
        InitAs(sCustomer);
        SCOPED_TRACE(testing::Printable(sCustomer));
        ExpectStatusKeyPictures({{1, 2}, {3, 4}, {5, 6}, {7, 8}});
        ExpectVisible(pendant, {u"Option3"}, true);
        ExpectVisible(pendant, {u"chkBoxAdd", u"chkBoxSymbol"}, false);
    }
}

// What takes the place of the third option stands nearly in it.
TEST_F(FormLayoutTest, TheCustomersBoxStandsNearlyInThePlaceOfTheThirdOption) {
    InitAs(u"VW");
    EXPECT_EQ(pendant.Get<Control>(u"chkBoxSymbol").Top(), 3960);
    EXPECT_EQ(pendant.Get<Control>(u"Option3").Top(), 3900);
    EXPECT_EQ(pendant.Get<Control>(u"chkBoxSymbol").Left(),
              pendant.Get<Control>(u"Option3").Left());
}

TEST_F(FormLayoutTest, TheOptionsAreClearedForEveryCustomer) {
    for (const TextView sCustomer : {u"VW", u"Somebody"}) {
        for (const TextView sOption : {u"Option1", u"Option2", u"Option3"}) {
            pendant.Get<RadioButton>(sOption).SetValue(true);
            InitAs(sCustomer);
            EXPECT_FALSE(pendant.Get<RadioButton>(sOption).Value());
        }
    }
}

// ---- The pendant's keys ----

TEST_F(FormLayoutTest, EachInitHandsTheKeysOverOnceMore) {
    const auto& keys = pendant.Get<PendantKeyControl>(u"TqpKeys");
    InitFormLayout(pendant);
    EXPECT_EQ(keys.Ranges(), kRanges);
    InitFormLayout(pendant);
    Ranges twice = kRanges;
    twice.insert(twice.end(), kRanges.begin(), kRanges.end());
    EXPECT_EQ(keys.Ranges(), twice);
}

TEST_F(FormLayoutTest, TheKeysAreTakenBack) {
    auto& keys = pendant.Get<PendantKeyControl>(u"TqpKeys");
    std::vector<int> seen;
    keys.onFKey = [&](std::int16_t nKeyCode) { seen.push_back(nKeyCode); };
    memory::PlayedUser user(pendant);
    AddPendantKeys(pendant);
    for (int nKeyCode = 110; nKeyCode <= 135; ++nKeyCode)
        user.PressPendantKey(u"TqpKeys", static_cast<std::int16_t>(nKeyCode));
    EXPECT_EQ(seen, (std::vector<int>{113, 114, 115, 118, 119, 129, 130, 131, 132}));
    RemovePendantKeys(pendant);
    user.PressPendantKey(u"TqpKeys", 113);
    EXPECT_EQ(seen.size(), 9U);
    EXPECT_TRUE(keys.Ranges().empty());
}

TEST_F(FormLayoutTest, FormsOfOtherKindsHaveNoKeys) {
    EXPECT_EQ(Raised([&] { AddPendantKeys(desktop); }), std::nullopt);
    EXPECT_EQ(Raised([&] { RemovePendantKeys(desktop); }), std::nullopt);
}

// ---- The status bar ----

TEST_F(FormLayoutTest, TheProgressBarLiesInTheFourthPanel) {
    auto& bar = pendant.Get<StatusBar>(u"StatusBar1");
    bar.Panels(1).SetMinWidth(500);
    bar.Panels(2).SetMinWidth(600);
    InitStatusLayout(pendant);
    EXPECT_EQ(bar.Panels(3).MinWidth(), 2075);
    EXPECT_EQ(bar.Panels(4).MinWidth(), 5775);
    const auto& progress = pendant.Get<ProgressBar>(u"ProgressBar2");
    EXPECT_EQ(progress.Left(), 500 + 600 + 2075 + 50);
    EXPECT_EQ(progress.Top(), 5980);
    EXPECT_EQ(progress.Width(), 3855);
    EXPECT_EQ(progress.Height(), 175);
    EXPECT_FALSE(progress.Visible());
}

TEST_F(FormLayoutTest, TheStatusLayoutFollowsTheListsAndTheView) {
    pendant.Get<Control>(u"Drive1").Move(0, 0, 1100, 10);
    pendant.Get<Control>(u"txtboxView").Move(0, 0, 2920, 10);
    pendant.Get<Control>(u"StatusBar1").Move(0, 70, 10, 300);
    InitStatusLayout(pendant);
    EXPECT_EQ(pendant.Get<StatusBar>(u"StatusBar1").Panels(3).MinWidth(), 1000);
    EXPECT_EQ(pendant.Get<StatusBar>(u"StatusBar1").Panels(4).MinWidth(), 2920);
    const auto& progress = pendant.Get<ProgressBar>(u"ProgressBar2");
    EXPECT_EQ(progress.Top(), 170);
    EXPECT_EQ(progress.Width(), 1000);
    EXPECT_EQ(progress.Height(), 100);
}

// ---- The version ----

TEST(AppVersionTest, IsShownAsThreeNumbers) {
    EXPECT_EQ(VersionText({3, 1, 15}), u"Version 3.1.15");
    EXPECT_EQ(VersionText({}), u"Version 0.0.0");
}

TEST(AppVersionTest, IsThatOfTheProject) {
    EXPECT_EQ(VersionText(TheAppVersion()), u"Version " NOMIRA_PROJECT_VERSION);
}

}  // namespace
}  // namespace nomira
