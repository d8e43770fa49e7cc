#include "ui/KeyStates.h"

#include "ui/NomiraMain.h"
#include "ui/Options.h"
#include "ui/PendantFixture.h"

namespace nomira::testing {
namespace {

class KeyStatesTest : public PendantFixture {
  protected:
    KeyStatesTest() {
        g_sDatabaseViewCaption = u"as it was";
        LoadPendant();
        g_sDatabaseViewCaption = u"The database";
    }
    static void SetKeys(bool bEnabled) {
        for (std::int16_t n = 0; n <= 6; ++n)
            SoftKey(Pendant(), n).SetEnabled(bEnabled);
        for (std::int16_t n = 0; n <= 5; ++n)
            StatKeyL(Pendant(), n).SetEnabled(bEnabled);
    }
    static void ShowAllLists() {
        SetVisible(Pendant(),
                   {u"Drive1", u"Dir1", u"File1", u"File2", u"List1", u"Text1", u"TreeView1",
                    u"Picture1", u"chkBoxAdd"},
                   true);
    }
    static bool OptionsOn() {
        EXPECT_EQ(On(u"Option1"), On(u"Option2"));
        EXPECT_EQ(On(u"Option1"), On(u"Option3"));
        return On(u"Option1");
    }
};

// ---- Into the view ----

TEST_F(KeyStatesTest, TheViewTakesThePlaceOfTheLists) {
    ShowAllLists();
    EnterDatabaseView(Pendant());
    EXPECT_EQ(SeenControls(), (Rows{"txtboxView", "chkBoxAdd", "ProgressBar2"}));
    EXPECT_EQ(Focus(), u"txtboxView");
    EXPECT_EQ(Caption(), u"The database");
}

TEST_F(KeyStatesTest, TheViewSwitchesOffWhatChoosesAndStarts) {
    SetKeys(true);
    EnterDatabaseView(Pendant());
    EXPECT_EQ(Keys(), "----+ ----");
    EXPECT_FALSE(OptionsOn());
    EXPECT_TRUE(SoftKey(Pendant(), 3).Enabled());
    EXPECT_TRUE(SoftKey(Pendant(), 4).Enabled());
    EXPECT_TRUE(StatKeyL(Pendant(), 0).Enabled());
    EXPECT_TRUE(StatKeyL(Pendant(), 5).Enabled());
}

// ---- Around an action ----

TEST_F(KeyStatesTest, AnActionSwitchesOffTheKeysThatStartOne) {
    SetKeys(true);
    DisableRunKeys(Pendant());
    EXPECT_EQ(Keys(), "----+ ++++");
    EXPECT_TRUE(SoftKey(Pendant(), 3).Enabled());
    EXPECT_TRUE(SoftKey(Pendant(), 4).Enabled());
    SetKeys(false);
    DisableRunKeys(Pendant());
    EXPECT_EQ(Keys(), "----- ----");
}

TEST_F(KeyStatesTest, BehindAnActionTheViewsKeysAreOnOrElseTheStartKey) {
    for (const bool bView : {true, false}) {
        SetVisible(Pendant(), {u"txtboxView"}, bView);
        SetKeys(false);
        EnableRunKeys(Pendant());
        EXPECT_EQ(Keys(), bView ? "+++-- ----" : "+--+- ----");
        EXPECT_FALSE(SoftKey(Pendant(), 3).Enabled());
        SetKeys(true);
        EnableRunKeys(Pendant());
        EXPECT_EQ(Keys(), "+++++ ++++") << "nothing is switched off here";
    }
}

// ---- Out of the view ----

TEST_F(KeyStatesTest, TheWayBackLeadsToTheChosenOption) {
    struct Row {
        TextView sOption;
        Rows seen;
        const char* szKeys;
        TextView sFocus;
    };
    const Row rows[] = {
        {u"Option1", {"Drive1", "Dir1", "File1", "chkBoxAdd"}, "---+- -+++", u"File1"},
        {u"Option2", {"Drive1", "Dir1", "Text1"}, "---+- +-+-", u"Text1"},
        {u"Option3", {"Drive1", "Dir1", "File2", "chkBoxSelAll"}, "---+- ++-+", u"File2"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Printable(row.sOption));
        SetKeys(false);
        Get<RadioButton>(row.sOption).SetValue(true);
        EnterDatabaseView(Pendant());
        SetVisible(Pendant(), {u"ProgressBar2"}, false);
        LeaveDatabaseView(Pendant());
        EXPECT_EQ(SeenControls(), row.seen);
        EXPECT_EQ(Keys(), row.szKeys);
        EXPECT_EQ(Focus(), row.sFocus);
        EXPECT_EQ(Caption(), Get<RadioButton>(row.sOption).Caption());
        EXPECT_TRUE(OptionsOn());
    }
}

TEST_F(KeyStatesTest, TheViewsKeysGoOffOnTheWayBack) {
    SetKeys(true);
    EnterDatabaseView(Pendant());
    SetKeys(true);
    SoftKey(Pendant(), 5).SetEnabled(false);
    Get<RadioButton>(u"Option2").SetValue(true);
    LeaveDatabaseView(Pendant());
    EXPECT_EQ(Keys(), "+--++ +-+-");
}

TEST_F(KeyStatesTest, WithoutAnOptionTheWayBackLeadsToTheStartScreen) {
    const auto& keys = Get<PendantKeyControl>(u"TqpKeys");
    EnterDatabaseView(Pendant());
    EnableRunKeys(Pendant());
    SetVisible(Pendant(), {u"ProgressBar2"}, false);
    LeaveDatabaseView(Pendant());
    EXPECT_EQ(SeenControls(), Rows{"Picture1"});
    EXPECT_EQ(Keys(), "+---+ +++-");
    EXPECT_EQ(Caption(), Get<TextBox>(u"Text2").Text());
    EXPECT_TRUE(OptionsOn());
    EXPECT_EQ(keys.Ranges().size(), 6U);
}

TEST_F(KeyStatesTest, TheCustomersWayBackIsThatOfTheOption) {
    UnloadForm(kStdBofFormClass);
    BecomeCustomer();
    LoadPendant();
    Get<RadioButton>(u"Option1").SetValue(true);
    for (const TextView sBox : {u"chkBoxSymbol", u"chkBoxAdd"})
        Get<Control>(sBox).SetEnabled(false);
    EnterDatabaseView(Pendant());
    LeaveDatabaseView(Pendant());
    EXPECT_EQ(Focus(), u"File1");
    EXPECT_TRUE(On(u"chkBoxSymbol"));
    EXPECT_TRUE(On(u"chkBoxAdd"));
    EXPECT_EQ(Keys(), "---++ -+++");
}

// ---- Other forms ----

// A form of another kind that has the keys, but neither a start screen nor a frame.
class OtherForm : public Form {
  public:
    OtherForm() : Form(u"Other") {
        for (std::int16_t n = 0; n <= 6; ++n)
            AddElement<Button>(u"SoftKey", n);
        for (std::int16_t n = 0; n <= 5; ++n)
            AddElement<Button>(u"StatKeyL", n);
        for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
            Add<RadioButton>(Text(sOption));
        for (const TextView sList :
             {u"Drive1", u"Dir1", u"File1", u"File2", u"List1", u"Text1", u"TreeView1"})
            Add<Label>(Text(sList));
        Add<TextBox>(u"txtboxView");
        Add<ProgressBar>(u"ProgressBar2");
    }
};

TEST_F(KeyStatesTest, AFormOfAnotherKindHasNeitherStartScreenNorOptions) {
    const OtherForm other;
    other.Get<RadioButton>(u"Option1").SetValue(true);
    EnterDatabaseView(other);
    EXPECT_TRUE(other.Get<Control>(u"txtboxView").HasFocus());
    LeaveDatabaseView(other);
    EXPECT_FALSE(other.Get<Control>(u"txtboxView").Visible());
    EXPECT_FALSE(other.Get<Control>(u"File1").Visible());
    EXPECT_TRUE(SoftKey(other, 5).Enabled());
}

TEST_F(KeyStatesTest, TheDesktopFormHasNoKeys) {
    const NomiraMain desktop;
    for (const auto routine : {EnterDatabaseView, LeaveDatabaseView, DisableRunKeys, EnableRunKeys})
        EXPECT_EQ(Raised([&] { routine(desktop); }), ErrorNumber::NoSuchMember);
}

}  // namespace
}  // namespace nomira::testing
