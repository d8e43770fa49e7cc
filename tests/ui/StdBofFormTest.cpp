#include "ui/StdBofForm.h"

#include <chrono>
#include <cmath>
#include <map>

#include "testing/ForwardingEngine.h"
#include "ui/PendantFixture.h"
#include "userprogram/Staging.h"

namespace nomira::testing {
namespace {

using std::chrono::milliseconds;

// The form with its hook open to a test.
class OpenPendant : public StdBofForm {
  public:
    std::vector<std::int16_t> menueKeys;

  protected:
    void MenueKey_Click(std::int16_t nIndex) override { menueKeys.push_back(nIndex); }
};

class StdBofFormTest : public PendantFixture {
  protected:
    static void Choose(int nOption) { PressStatus(nOption); }
    static void PressHardware(int nKeyCode) { User().PressPendantKey(u"TqpKeys", Short(nKeyCode)); }
    void PutCatalogueTitle(const std::string& sTitle) {
        ExecuteOn(db.CreateCatalogue(),
                  "INSERT INTO Items VALUES(1,'Nomira','LongTextConversion');"
                  "INSERT INTO Messages VALUES(1,0,'" +
                      sTitle + "')");
    }
};

// ---- Load ----

TEST_F(StdBofFormTest, OutsideOfPendantModeTheLoadDoesNothingAtAll) {
    const ForwardingEngine engine;
    machine.processes.Add(u"C:\\vexon3.exe");
    const int nOpened = machine.registry.Opened();
    LoadForm(std::make_unique<StdBofForm>());
    EXPECT_TRUE(engine.operations.empty());
    EXPECT_TRUE(library.calls.empty());
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    EXPECT_EQ(machine.registry.Opened(), nOpened);
    EXPECT_TRUE(Get<PendantKeyControl>(u"TqpKeys").Ranges().empty());
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"");
    EXPECT_EQ(Get<RadioButton>(u"Option1").Caption(), u"Textfile -> Database");
    EXPECT_EQ(g_sMsgDeviceUnavailable, u"");
    const StdBofForm designed;
    Pendant().ForEachControl([&](const Control& control) {
        const Control* other = control.Index() ? designed.Find(control.Name(), *control.Index())
                                               : designed.Find(control.Name());
        EXPECT_EQ(control.Visible(), other->Visible()) << Printable(control.FullName());
        EXPECT_EQ(control.Enabled(), other->Enabled()) << Printable(control.FullName());
    });
}

TEST_F(StdBofFormTest, OutsideOfPendantModeNoControlHasAHandler) {
    LoadForm(std::make_unique<StdBofForm>());
    PressStatus(1);
    PressSoft(0);
    EXPECT_FALSE(Get<RadioButton>(u"Option1").Value());
    User().Click(u"Option2");
    EXPECT_TRUE(Seen(u"File1"));
    EXPECT_TRUE(Seen(u"Picture1"));
}

TEST_F(StdBofFormTest, TheLoadShowsTheStartScreenInTheLanguageOfTheCatalogue) {
    PutCatalogueTitle("Umsetzung");
    LoadPendant();
    EXPECT_EQ(SeenControls(), Rows{"Picture1"});
    EXPECT_EQ(Caption(), u"Umsetzung");
    EXPECT_EQ(Get<RadioButton>(u"Option1").Caption(), u"LongText -> Database");
    EXPECT_EQ(PanelOf(4).MinWidth(), 5775);
    EXPECT_EQ(Get<PendantKeyControl>(u"TqpKeys").Ranges(),
              (std::vector<PendantKeyControl::Range>{{129, 132}, {113, 115}, {118, 119}}));
    for (std::int16_t n = 1; n <= 4; ++n)
        EXPECT_EQ(PanelOf(n).Text(), u"") << n;
}

// The two share the one connection, so that the catalogue comes first.
TEST_F(StdBofFormTest, TheLoadLeavesTheLongTextDatabaseOpen) {
    PutCatalogueTitle("Umsetzung");
    Store("IO", "IN_1", "Gate");
    LoadPendant();
    ASSERT_NE(g_Connection, nullptr);
    EXPECT_NE(FindKeyId(u"IO", u"IN_1", g_Connection.get()), 0);
}

TEST_F(StdBofFormTest, TheLoadLooksForTheDatabaseAheadOfTheLink) {
    db.RemoveFile();
    library.bInstalled = false;
    g_bPendantMode = true;
    LoadForm(std::make_unique<StdBofForm>());
    const auto placeOf = [this](TextView sStage) {
        return std::ranges::find(view.stages, sStage) - view.stages.begin();
    };
    const auto nDatabase = placeOf(u"4.Text=no connect to database !!!");
    const auto nLink = placeOf(u"2.Text=no connect to Vexon !!!");
    EXPECT_LT(placeOf(u"bar=off"), nDatabase) << "behind the status bar's layout";
    EXPECT_LT(nDatabase, nLink);
    EXPECT_LT(nLink, std::ssize(view.stages));
}

TEST_F(StdBofFormTest, WithoutADatabaseOnlyTheExitIsLeft) {
    db.RemoveFile();
    LoadPendant();
    EXPECT_EQ(Keys(), "----+ ----");
    EXPECT_EQ(PanelOf(4).Text(), u"no connect to database !!!");
    EXPECT_EQ(PictureOf(2), u"picLinkUp") << "the load goes on";
    EXPECT_TRUE(EndsProgram([] { PressSoft(6); }));
}

TEST_F(StdBofFormTest, WithoutADatabaseAnOptionCanBeMarkedButNotChosen) {
    db.RemoveFile();
    LoadPendant();
    User().Click(u"Option1");
    EXPECT_TRUE(Get<RadioButton>(u"Option1").Value());
    EXPECT_EQ(SeenControls(), Rows{"Picture1"});
    EXPECT_EQ(Keys(), "----+ ----");
}

TEST_F(StdBofFormTest, TheLoadConnectsAndReadsTheSizes) {
    library.SetVariable(u"$NUM_OUT", u"2048");
    LoadPendant();
    EXPECT_TRUE(g_Comm().IsVexonConnected());
    EXPECT_EQ(
        std::ranges::count(library.calls, u"CreateLinkObject(LNK_TqxLib.SyncVar, StdBofForm)"), 1);
    EXPECT_EQ(g_nNumIo, 2048);
    EXPECT_EQ(g_nNumTimer, 32);
    EXPECT_EQ(PictureOf(2), Listed(Pendant(), u"ImageList3", 2).sName);
    EXPECT_EQ(PanelOf(2).Text(), u"");
}

// The link's answer is yes as soon as its object is there.
TEST_F(StdBofFormTest, WithoutTheMiddlewareTheLinkCountsAsThereAllTheSame) {
    library.bMiddlewareRuns = false;
    g_nNumIo = 7;
    LoadPendant();
    EXPECT_EQ(PictureOf(2), u"picLinkUp");
    EXPECT_EQ(g_nNumIo, 1024);
}

TEST_F(StdBofFormTest, WithoutTheLibraryAWordInTheSecondPanelTellsSo) {
    library.bInstalled = false;
    g_nNumIo = 7;
    LoadPendant();
    EXPECT_EQ(PanelOf(2).Text(), u"no connect to Vexon !!!");
    EXPECT_EQ(PictureOf(2), u"");
    EXPECT_EQ(g_nNumIo, 7);
    EXPECT_EQ(Keys(), "+---+ +++-");
}

TEST_F(StdBofFormTest, UnloadLeavesEverythingAsItIs) {
    LoadPendant();
    std::int16_t nCancel = 5;
    Pendant().Form_Unload(nCancel);
    EXPECT_EQ(nCancel, 5);
    EXPECT_TRUE(view.events.empty());
    EXPECT_TRUE(g_Comm().IsVexonConnected());
}

TEST_F(StdBofFormTest, ReportsOfTheLinkAreTakenAndIgnored) {
    LoadPendant();
    library.SetVariable(u"$A", u"1");
    g_Comm().VexonCommands->SetInfoOn(u"$A", u"");
    library.SetVariable(u"$A", u"2");
    EXPECT_NO_THROW(library.ServeEvents());
    EXPECT_TRUE(view.events.empty());
}

// ---- Which key does what ----

class KeyTableTest : public StdBofFormTest {
  protected:
    // What the press of a key makes of the start screen, if all keys are on.
    template <typename Press>
    std::string EffectOf(Press press) {
        UnloadForm(kStdBofFormClass);
        LoadPendant();
        machine.desktop.tabItems.clear();
        g_Comm().ExitVexonComm();
        for (std::int16_t n = 0; n <= 6; ++n)
            SoftKey(Pendant(), n).SetEnabled(true);
        for (std::int16_t n = 0; n <= 5; ++n)
            StatKeyL(Pendant(), n).SetEnabled(true);
        SetVisible(Pendant(), {u"chkBoxAdd"}, true);
        library.calls.clear();
        view.events.clear();
        if (EndsProgram([&] { press(); })) return "exit";
        return Effect();
    }
    std::string Effect() const {
        for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
            if (Get<RadioButton>(sOption).Value()) return Printable(sOption);
        if (Get<CheckBox>(u"chkBoxAdd").Value() == CheckBox::kChecked) return "box";
        if (!machine.desktop.tabItems.empty()) return "focus";
        if (Seen(u"txtboxView")) return "view";
        if (std::ranges::count(view.stages, u"3.Picture=picCompact") != 0) return "save";
        if (Get<PendantKeyControl>(u"TqpKeys").Ranges().size() == 6) return "leave";
        if (!library.calls.empty()) return "start";
        // A click gives the drawn key the focus, which is no effect.
        const bool bNothing = std::ranges::all_of(
            view.events, [](const auto& event) { return event.sProperty == u"Focus"; });
        return bNothing ? "nothing" : "something else";
    }
    // The effects of the numbers, but for "nothing".
    template <typename Press>
    std::map<int, std::string> EffectsOf(int nFirst, int nLast, Press press) {
        std::map<int, std::string> effects;
        for (int n = nFirst; n <= nLast; ++n) {
            const std::string sEffect = EffectOf([&] { press(Short(n)); });
            if (sEffect != "nothing") effects[n] = sEffect;
        }
        return effects;
    }
};

// 116, 117 and 120 among those that do nothing.
TEST_F(KeyTableTest, EachHardwareKeyHasItsButton) {
    const std::map<int, std::string> expected{{113, "view"},    {114, "save"},    {115, "leave"},
                                              {118, "start"},   {119, "exit"},    {129, "Option1"},
                                              {130, "Option2"}, {131, "Option3"}, {132, "box"}};
    EXPECT_EQ(EffectsOf(105, 140, PressHardware), expected);
    const auto deliver = [](std::int16_t nKeyCode) {
        Get<PendantKeyControl>(u"TqpKeys").onFKey(nKeyCode);
    };
    EXPECT_EQ(EffectsOf(105, 140, deliver), expected) << "whatever the control lets through";
    for (const int nKeyCode : {-32768, -113, 0, 1, 5, 13, 32767})
        EXPECT_EQ(EffectOf([&] { deliver(Short(nKeyCode)); }), "nothing");
}

TEST_F(KeyTableTest, EachKeyNumberHasItsButton) {
    const std::map<int, std::string> expected{
        {11, "Option1"}, {12, "Option2"}, {13, "Option3"}, {14, "box"},   {15, "focus"},
        {30, "view"},    {31, "save"},    {32, "leave"},   {35, "start"}, {36, "exit"}};
    const auto press = [](std::int16_t nNumber) { Pendant().BOFKey(nNumber); };
    EXPECT_EQ(EffectsOf(5, 42, press), expected);
    EXPECT_TRUE(EffectsOf(135, 167, press).empty());
    for (const int nNumber : {-32768, -10, 0, 32767})
        EXPECT_EQ(EffectOf([&] { press(Short(nNumber)); }), "nothing");
}

// The ends of the ranges reach keys that exist: one behind them would raise.
TEST_F(KeyTableTest, TheRangesOfKeyNumbersEndWithTheKeys) {
    LoadPendant();
    for (const int nNumber :
         {9, 10, 15, 16, 29, 33, 34, 37, 137, 138, 143, 144, 157, 158, 164, 165})
        EXPECT_EQ(Raised([&] { Pendant().BOFKey(Short(nNumber)); }), std::nullopt) << nNumber;
    EXPECT_EQ(Raised([] { Pendant().SoftKey_Click(7); }), ErrorNumber::ControlElementMissing);
    EXPECT_EQ(Raised([] { Pendant().StatKeyL_Click(6); }), ErrorNumber::ControlElementMissing);
}

TEST_F(KeyTableTest, AClickIsAsGoodAsTheHardwareKey) {
    const auto soft = [](std::int16_t n) { PressSoft(n); };
    EXPECT_EQ(EffectsOf(0, 6, soft),
              (std::map<int, std::string>{
                  {0, "view"}, {1, "save"}, {2, "leave"}, {5, "start"}, {6, "exit"}}));
    const auto status = [](std::int16_t n) { PressStatus(n); };
    EXPECT_EQ(EffectsOf(0, 5, status),
              (std::map<int, std::string>{
                  {1, "Option1"}, {2, "Option2"}, {3, "Option3"}, {4, "box"}, {5, "focus"}}));
}

TEST_F(KeyTableTest, ADisabledKeyDoesNothingHoweverItIsPressed) {
    for (std::int16_t n = 0; n <= 6; ++n) {
        EXPECT_EQ(EffectOf([&] {
                      SoftKey(Pendant(), n).SetEnabled(false);
                      view.events.clear();
                      PressSoft(n);
                      Pendant().SoftKey_Click(n);
                      Pendant().BOFKey(Short(30 + n));
                  }),
                  "nothing")
            << "soft key " << n;
    }
    for (std::int16_t n = 0; n <= 5; ++n) {
        EXPECT_EQ(EffectOf([&] {
                      StatKeyL(Pendant(), n).SetEnabled(false);
                      view.events.clear();
                      PressStatus(n);
                      Pendant().StatKeyL_Click(n);
                      Pendant().BOFKey(Short(10 + n));
                  }),
                  "nothing")
            << "status key " << n;
    }
}

TEST_F(StdBofFormTest, TheKeysWithoutAFunctionAreOffAndStayOff) {
    LoadPendant();
    for (const int nOption : {1, 2, 3}) {
        Choose(nOption);
        PressSoft(0);
        PressSoft(2);
        for (const int n : {3, 4})
            EXPECT_FALSE(SoftKey(Pendant(), Short(n)).Enabled()) << nOption;
        for (const int n : {0, 5})
            EXPECT_FALSE(StatKeyL(Pendant(), Short(n)).Enabled()) << nOption;
    }
    PressStatus(5);
    Pendant().BOFKey(15);
    EXPECT_TRUE(machine.desktop.tabItems.empty());
}

// ---- The mouse ----

TEST_F(StdBofFormTest, TheMenuRowKnowsItsExactPlacesAlone) {
    auto& form = LoadPendant<OpenPendant>();
    for (const float nX : {600.0F, 1800.0F, 3000.0F, 4200.0F, 5400.0F, 6600.0F, 7800.0F, 9000.0F})
        form.Form_MouseEvent(1, 0, nX, 50);
    EXPECT_EQ(form.menueKeys, (std::vector<std::int16_t>{0, 1, 2, 3, 4, 5, 6, 7}));
    form.menueKeys.clear();
    for (const float nX : {600.5F, 0.0F, -600.0F, 10200.0F, 1200.0F, std::nextafter(600.0F, 0.0F),
                           std::nextafter(600.0F, 1000.0F), NAN})
        form.Form_MouseEvent(1, 0, nX, 600);
    EXPECT_TRUE(form.menueKeys.empty());
    form.Form_MouseEvent(2, 7, 600, -1);
    EXPECT_EQ(form.menueKeys, std::vector<std::int16_t>{0}) << "button and height don't matter";
}

TEST_F(StdBofFormTest, TheMenuRowAndTheTreesMouseDoNothing) {
    LoadPendant();
    Pendant().Form_MouseEvent(1, 0, 600, 0);
    Pendant().TreeView1_MouseDown(1, 0, 600, 0);
    EXPECT_TRUE(view.events.empty());
}

// ---- Options and keys ----

TEST_F(StdBofFormTest, TheStartScreenHasTheViewAndTheOptions) {
    for (const TextView sCustomer : {u"Somebody", u"VW"}) {
        BecomeCustomer(sCustomer);
        LoadPendant();
        EXPECT_EQ(Keys(), "+---+ +++-");
        UnloadForm(kStdBofFormClass);
        g_Comm().ExitVexonComm();
    }
}

// The soft keys 0 to 2 stay as they were before; 5 and 6 are on.
TEST_F(StdBofFormTest, EachOptionHasItsKeys) {
    struct Row {
        TextView sCustomer;
        std::int16_t nOption;
        const char* szStatusKeys;
    };
    const Row rows[] = {
        {u"Somebody", 1, "-+++"}, {u"Somebody", 2, "+-+-"}, {u"Somebody", 3, "++-+"},
        {u"vw", 3, "++-+"},       {u"VW", 1, "-+++"},       {u"VW", 2, "+---"},
    };
    for (const Row& row : rows) {
        for (const bool bBefore : {true, false}) {
            SCOPED_TRACE(Printable(row.sCustomer) + std::to_string(row.nOption));
            BecomeCustomer(row.sCustomer);
            LoadPendant();
            SoftKey(Pendant(), 0).SetEnabled(!bBefore);
            SoftKey(Pendant(), 1).SetEnabled(bBefore);
            SoftKey(Pendant(), 2).SetEnabled(bBefore);
            Choose(row.nOption);
            EXPECT_EQ(Keys(), (bBefore ? "-++++ " : "+--++ ") + std::string(row.szStatusKeys));
            UnloadForm(kStdBofFormClass);
            g_Comm().ExitVexonComm();
        }
    }
}

// Wherever the way comes from.
TEST_F(StdBofFormTest, AnOptionsKeysDoNotDependOnTheOneBefore) {
    const char* const szKeys[] = {"+--++ -+++", "+--++ +-+-", "+--++ ++-+"};
    LoadPendant();
    for (const int nOption : {1, 2, 3, 2, 1, 3, 1}) {
        Choose(nOption);
        EXPECT_EQ(Keys(), szKeys[nOption - 1]) << nOption;
    }
}

TEST_F(StdBofFormTest, AnOptionButtonChoosesLikeItsStatusKey) {
    LoadPendant();
    User().Click(u"Option2");
    EXPECT_EQ(Keys(), "+--++ +-+-");
    EXPECT_EQ(SeenControls(), (Rows{"Drive1", "Dir1", "Text1"}));
    EXPECT_EQ(Get<TextBox>(u"Text1").Text(), u"SymName.txt");
    User().Click(u"Option3");
    EXPECT_EQ(SeenControls(), (Rows{"Drive1", "Dir1", "File2", "chkBoxSelAll"}));
    User().Click(u"Option1");
    EXPECT_EQ(SeenControls(), (Rows{"Drive1", "Dir1", "File1", "chkBoxAdd"}));
    EXPECT_EQ(Caption(), Get<RadioButton>(u"Option1").Caption());
}

// The routine sets the button's value while its status key is still on.
TEST_F(StdBofFormTest, TheFirstChoiceOfAnOptionRunsItsRoutineTwice) {
    LoadPendant();
    const auto nRefreshed = [this](TextView sList) {
        return std::ranges::count_if(view.events, [&](const memory::ViewEvent& event) {
            return event.kind == memory::ViewEvent::Kind::Refreshed && event.sControl == sList;
        });
    };
    Choose(1);
    EXPECT_EQ(nRefreshed(u"File1"), 2);
    EXPECT_EQ(Keys(), "+--++ -+++");
    StatKeyL(Pendant(), 1).SetEnabled(true);
    Choose(1);
    EXPECT_EQ(nRefreshed(u"File1"), 3) << "the value is the old one";
    EXPECT_EQ(Keys(), "+--++ -+++");
    Choose(3);
    EXPECT_EQ(nRefreshed(u"File2"), 2);
    User().Click(u"Option1");
    EXPECT_EQ(nRefreshed(u"File1"), 4) << "the button has its value before its handler runs";
}

TEST_F(StdBofFormTest, TheDatabaseViewHasItsKeys) {
    LoadPendant();
    PressSoft(0);
    EXPECT_EQ(Keys(), "+++-+ ----");
    PressSoft(2);
    EXPECT_EQ(Keys(), "+---+ +++-");
    EXPECT_EQ(Get<PendantKeyControl>(u"TqpKeys").Ranges().size(), 6U);
    Choose(2);
    PressSoft(0);
    EXPECT_EQ(Keys(), "+++-+ ----");
    PressSoft(2);
    EXPECT_EQ(Keys(), "+--++ +-+-");
    EXPECT_EQ(Focus(), u"Text1");
}

TEST_F(StdBofFormTest, InTheViewNoOptionCanBeChosen) {
    LoadPendant();
    PressSoft(0);
    User().Click(u"Option1");
    PressHardware(129);
    EXPECT_FALSE(Get<RadioButton>(u"Option1").Value());
    EXPECT_TRUE(Seen(u"txtboxView"));
}

// ---- The boxes ----

TEST_F(StdBofFormTest, TheCustomersThirdKeyTurnsTheBoxOfTheShortSymbols) {
    BecomeCustomer();
    LoadPendant();
    const auto& box = Get<CheckBox>(u"chkBoxSymbol");
    Choose(1);
    for (const int nValue : {1, 0, 1}) {
        PressHardware(131);
        EXPECT_EQ(box.Value(), nValue);
    }
    Get<CheckBox>(u"chkBoxSymbol").SetValue(CheckBox::kGrey);
    PressHardware(131);
    EXPECT_EQ(box.Value(), 0);
    EXPECT_FALSE(Get<RadioButton>(u"Option3").Value());
    EXPECT_TRUE(Seen(u"File1"));
}

// The key looks whether the box is seen, not whether it is enabled.
TEST_F(StdBofFormTest, OnTheStartScreenTheThirdKeyTurnsADisabledBox) {
    BecomeCustomer();
    LoadPendant();
    EXPECT_FALSE(On(u"chkBoxSymbol"));
    PressStatus(3);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSymbol").Value(), 1);
    EXPECT_TRUE(Seen(u"Picture1"));
}

TEST_F(StdBofFormTest, TheThirdKeyTurnsTheBoxOnlyWhileItIsSeen) {
    BecomeCustomer();
    LoadPendant();
    SetVisible(Pendant(), {u"chkBoxSymbol"}, false);
    PressStatus(3);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSymbol").Value(), 0);
    EXPECT_TRUE(Get<RadioButton>(u"Option3").Value());
}

TEST_F(StdBofFormTest, TheCustomersSecondOptionLeavesTheBoxesGreyed) {
    BecomeCustomer();
    LoadPendant();
    Choose(1);
    EXPECT_TRUE(On(u"chkBoxSymbol"));
    EXPECT_TRUE(On(u"chkBoxAdd"));
    Choose(2);
    EXPECT_FALSE(StatKeyL(Pendant(), 3).Enabled());
    for (const TextView sBox : {u"chkBoxSymbol", u"chkBoxAdd"}) {
        EXPECT_TRUE(Seen(sBox));
        EXPECT_FALSE(On(sBox));
    }
    PressHardware(131);
    PressHardware(132);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSymbol").Value(), 0);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxAdd").Value(), 0);
}

TEST_F(StdBofFormTest, TheFourthKeyTurnsTheBoxThatIsSeen) {
    LoadPendant();
    Choose(1);
    PressStatus(4);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxAdd").Value(), 1);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSelAll").Value(), 0);
    PressStatus(4);
    EXPECT_EQ(Get<CheckBox>(u"chkBoxAdd").Value(), 0);
}

TEST_F(StdBofFormTest, InTheThirdOptionTheFourthKeySelectsAllPrograms) {
    LoadPendant();
    Choose(3);
    const auto& programs = Get<FileListBox>(u"File2");
    ASSERT_EQ(programs.ListCount(), 2);
    SetVisible(Pendant(), {u"chkBoxAdd"}, true);  // in the same place
    for (const bool bSelected : {true, false, true}) {
        PressHardware(132);
        EXPECT_EQ(Get<CheckBox>(u"chkBoxSelAll").Value(), bSelected ? 1 : 0);
        EXPECT_EQ(programs.Selected(0), bSelected);
        EXPECT_EQ(programs.Selected(1), bSelected);
    }
    EXPECT_EQ(Get<CheckBox>(u"chkBoxAdd").Value(), 0);
}

TEST_F(StdBofFormTest, WithoutABoxTheFourthKeyDoesNothing) {
    LoadPendant();
    StatKeyL(Pendant(), 4).SetEnabled(true);
    view.events.clear();
    PressHardware(132);
    EXPECT_TRUE(view.events.empty());
}

TEST_F(StdBofFormTest, TheBoxSelectsBothListsAndAGreyOneNeither) {
    LoadPendant();
    Choose(3);
    auto& list = Get<ListBox>(u"List1");
    list.AddItem(u"x.src");
    User().Click(u"chkBoxSelAll");
    EXPECT_TRUE(Get<FileListBox>(u"File2").Selected(0));
    EXPECT_TRUE(list.Selected(0));
    list.SetSelected(0, false);
    Get<CheckBox>(u"chkBoxSelAll").SetValue(CheckBox::kGrey);
    EXPECT_TRUE(Get<FileListBox>(u"File2").Selected(0));
    EXPECT_FALSE(list.Selected(0));
    User().Click(u"chkBoxSelAll");
    EXPECT_FALSE(Get<FileListBox>(u"File2").Selected(0));
}

// ---- The focus ----

TEST_F(StdBofFormTest, TheFocusStepIsATabKeyBehindALook) {
    LoadPendant();
    Choose(1);
    Get<Control>(u"Drive1").SetFocus();
    StatKeyL(Pendant(), 5).SetEnabled(true);
    Pendant().BOFKey(15);
    EXPECT_EQ(Focus(), u"Dir1");
    EXPECT_EQ(machine.desktop.tabItems, (std::vector<memory::TabItemAsked>{{0, 1, true}}));
}

TEST_F(StdBofFormTest, TheTabOrderRunsThroughListsAndTextBoxesOnly) {
    LoadPendant();
    const auto round = [](TextView sFrom) {
        Get<Control>(sFrom).SetFocus();
        Texts stops;
        do {
            User().PressTab();
            stops.push_back(Focus());
        } while (stops.back() != sFrom && stops.size() < 10);
        return stops;
    };
    EXPECT_EQ(round(u"Text2"), (Texts{u"txtVersion", u"Text2"}));
    Choose(1);
    EXPECT_EQ(round(u"File1"), (Texts{u"Drive1", u"Dir1", u"File1"}));
    Choose(2);
    EXPECT_EQ(round(u"Text1"), (Texts{u"Drive1", u"Dir1", u"Text1"}));
    Choose(3);
    EXPECT_EQ(round(u"File2"), (Texts{u"Drive1", u"Dir1", u"File2"}));
    PressSoft(0);
    EXPECT_EQ(round(u"txtboxView"), Texts{u"txtboxView"});
}

// ---- Directories and drives ----

TEST_F(StdBofFormTest, ANewDirectoryShowsItsFilesAndSelectsTheFirstProgram) {
    LoadPendant();
    Get<FileListBox>(u"File1").SetPattern(u"*.*");
    Get<FileListBox>(u"File2").SetPattern(u"*.*");
    Get<DirListBox>(u"Dir1").SetPath(u"C:\\tqx\\Roboter\\TQX\\R1");
    EXPECT_EQ(Get<FileListBox>(u"File1").Path(), u"C:\\tqx\\Roboter\\TQX\\R1");
    EXPECT_EQ(Get<FileListBox>(u"File1").Pattern(), u"*.txt");
    EXPECT_EQ(Get<FileListBox>(u"File2").Pattern(), u"*.src");
    EXPECT_TRUE(Get<FileListBox>(u"File2").Selected(0));
    EXPECT_FALSE(Get<FileListBox>(u"File2").Selected(1));
    Get<DirListBox>(u"Dir1").SetPath(u"C:\\tqx\\Data");
    EXPECT_EQ(Get<FileListBox>(u"File1").ListCount(), 2);
    EXPECT_EQ(Get<FileListBox>(u"File2").ListCount(), 0) << "and no failure";
}

TEST_F(StdBofFormTest, TheEnterKeyOpensTheHighlightedDirectory) {
    LoadPendant();
    Choose(1);
    Get<DirListBox>(u"Dir1").SetPath(u"C:\\tqx");
    User().Highlight(u"Dir1", 0);
    for (const int nKey : {12, 14, 32, 0})
        User().PressKey(u"Dir1", Short(nKey));
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx");
    User().PressKey(u"Dir1", 13);
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx\\Data");
    User().PressKey(u"Dir1", 13);
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx\\Data") << "nothing is highlighted";
    User().Highlight(u"Dir1", -2);
    User().PressKey(u"Dir1", 13);
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx");
}

TEST_F(StdBofFormTest, AnotherDriveIsFollowed) {
    machine.files.Put(u"D:\\texts.txt", "x");
    LoadPendant();
    Choose(1);
    User().PickDrive(u"Drive1", u"d:");
    EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), u"d:\\");
    EXPECT_EQ(Get<FileListBox>(u"File1").ListCount(), 1);
    EXPECT_TRUE(machine.processes.slept.empty());
}

class BadDriveTest : public StdBofFormTest {
  protected:
    // What is seen while the form waits: the fourth panel, the drive and the directory.
    struct Moment {
        Text sText, sPicture, sDrive, sPath;
        bool operator==(const Moment&) const = default;
    };
    std::vector<Moment> moments;
    int nRefreshedFirst = 0;

    void LoadAndChoose() {
        LoadPendant();
        g_sMsgDeviceUnavailable = u"not ready";
        Choose(1);
        machine.processes.onSleep = [this] {
            moments.push_back({PanelOf(4).Text(), PictureOf(4),
                               Get<DriveListBox>(u"Drive1").Drive(),
                               Get<DirListBox>(u"Dir1").Path()});
            if (moments.size() == 1)
                nRefreshedFirst = view.Count(memory::ViewEvent::Kind::Refreshed);
        };
        view.events.clear();
    }
    void ExpectFallBackTo(TextView sPath) {
        const Text sBefore = Get<DirListBox>(u"Dir1").Path();
        User().PickDrive(u"Drive1", PendantFiles::kEmptyDrive);
        EXPECT_EQ(machine.processes.slept,
                  (std::vector<milliseconds>{milliseconds(1500), milliseconds(1500)}));
        ASSERT_EQ(moments.size(), 2U);
        EXPECT_EQ(moments[0], (Moment{u"not ready (Q:)", u"picCritical", u"q:", sBefore}));
        EXPECT_EQ(moments[1], (Moment{u"not ready (Q:)", u"picCritical", u"c:", Text(sPath)}));
        EXPECT_EQ(nRefreshedFirst, 1) << "the bar shows it before the wait";
        EXPECT_EQ(PanelOf(4).Text(), u"");
        EXPECT_EQ(PictureOf(4), u"");
        EXPECT_EQ(Get<DriveListBox>(u"Drive1").Drive(), u"c:");
        EXPECT_EQ(Get<DirListBox>(u"Dir1").Path(), sPath);
        EXPECT_TRUE(machine.desktop.boxes.empty());
    }
};

TEST_F(BadDriveTest, ABadDriveIsToldAndLeftForTheDataOfTheInstallation) {
    LoadAndChoose();
    ExpectFallBackTo(u"C:\\tqx\\Data");
    EXPECT_EQ(Get<FileListBox>(u"File1").Path(), u"C:\\tqx\\Data");
}

TEST_F(BadDriveTest, TheCustomersWayBackGoesToItsPrograms) {
    BecomeCustomer();
    LoadAndChoose();
    ExpectFallBackTo(u"C:\\tqx\\Roboter\\Init");
}

TEST_F(BadDriveTest, WithTheAsciiOptionTheCustomerHasAnotherPlace) {
    BecomeCustomer();
    InstallAsciiOption();
    LoadAndChoose();
    ExpectFallBackTo(u"C:\\tqx\\Roboter\\IBGN\\TQX\\R1\\IBGN");
}

TEST_F(BadDriveTest, TheAsciiOptionAloneChangesNothing) {
    InstallAsciiOption();
    LoadAndChoose();
    ExpectFallBackTo(u"C:\\tqx\\Data");
}

// Whatever stands in the setting of the text file's path.
TEST_F(BadDriveTest, TheWayBackDoesNotFollowTheSetting) {
    g_sTextFilePath = u"\\Roboter";
    LoadAndChoose();
    ExpectFallBackTo(u"C:\\tqx\\Data");
}

TEST_F(BadDriveTest, AFailureOnTheWayBackGoesUp) {
    LoadAndChoose();
    g_sInstallDir = u"C:\\elsewhere";
    EXPECT_EQ(Raised([] { User().PickDrive(u"Drive1", PendantFiles::kEmptyDrive); }),
              ErrorNumber::PathNotFound);
    EXPECT_EQ(PanelOf(4).Text(), u"not ready (Q:)");
    EXPECT_EQ(machine.processes.slept.size(), 1U);
}

TEST_F(BadDriveTest, WithoutAnInstallationThereIsNoWayBack) {
    LoadAndChoose();
    g_sInstallDir = u"";
    EXPECT_EQ(Raised([] { User().PickDrive(u"Drive1", PendantFiles::kEmptyDrive); }),
              ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(Get<DriveListBox>(u"Drive1").Drive(), u"q:");
}

// The installation's drive comes through the same handler, and is told in its turn.
TEST_F(BadDriveTest, ABadDriveOfTheInstallationIsToldTooAndFails) {
    LoadAndChoose();
    files.badDrives.emplace_back(u"c:");
    EXPECT_EQ(Raised([] { User().PickDrive(u"Drive1", PendantFiles::kEmptyDrive); }),
              ErrorNumber::DiskNotReady);
    ASSERT_EQ(moments.size(), 2U);
    EXPECT_EQ(moments[0].sText, u"not ready (Q:)");
    EXPECT_EQ(moments[1].sText, u"not ready (C:)");
}

// ---- The tree ----

TEST_F(StdBofFormTest, AKeyInTheTreeShowsTheProgramsOfTheNode) {
    library.PutFile(u"TQX:\\R1\\Program\\one.src", "x");
    LoadPendant();
    SetVisible(Pendant(), {u"TreeView1"}, true);
    auto& tree = Get<TreeView>(u"TreeView1");
    TreeNode& robot = tree.Nodes().Add(u"TQX_1", u"R1", 2);
    tree.Nodes().AddChild(robot, u"R1_1", u"Program", 2);
    User().SelectNode(u"TreeView1", u"R1_1");
    User().PressTreeKey(u"TreeView1", 40);
    EXPECT_EQ(tree.Nodes().Item(u"R1_1").Image(), 3);
    ASSERT_EQ(Get<ListBox>(u"List1").ListCount(), 1);
    EXPECT_EQ(Get<ListBox>(u"List1").List(0), u"one.src");
    library.calls.clear();
    User().PressTreeKey(u"TreeView1", 40);
    EXPECT_TRUE(library.calls.empty()) << "the form remembers the node";
    User().SelectNode(u"TreeView1", u"TQX_1");
    User().PressTreeKey(u"TreeView1", 38);
    EXPECT_EQ(tree.Nodes().Item(u"R1_1").Image(), 2);
}

// ---- While an action runs ----

class RunningActionTest : public StdBofFormTest {
  protected:
    RunningActionTest() { Store("IO", "IN_9", "old"); }
    std::string sKeysInside;
    void LookInside() {
        AtStep(1, [this] { sKeysInside = Keys(); });
    }
};

TEST_F(RunningActionTest, AStartedConversionHasTheExitAndTheStatusKeysAlone) {
    LoadPendant();
    Choose(1);
    User().Select(u"File1", 0);
    LookInside();
    PressSoft(5);
    EXPECT_EQ(sKeysInside, "----+ -+++");
    EXPECT_EQ(Keys(), "+--++ -+++");
    EXPECT_FALSE(Seen(u"ProgressBar2"));
    Choose(2);
    LookInside();
    PressSoft(5);
    EXPECT_EQ(sKeysInside, "----+ +-+-");
}

TEST_F(RunningActionTest, TheViewIsReadWithTheExitAlone) {
    LoadPendant();
    LookInside();
    PressSoft(0);
    EXPECT_EQ(sKeysInside, "----+ ----");
    EXPECT_EQ(Keys(), "+++-+ ----");
    EXPECT_EQ(Get<TextBox>(u"txtboxView").Text(), u"IN_9 old\r\n");
}

TEST_F(RunningActionTest, TheViewIsSavedWithTheExitAlone) {
    LoadPendant();
    PressSoft(0);
    User().Type(u"txtboxView", u"IN_9 new\r\n");
    LookInside();
    PressSoft(1);
    EXPECT_EQ(sKeysInside, "----+ ----");
    EXPECT_EQ(Keys(), "+++-+ ----");
    EXPECT_EQ(Stored(), Rows{"IN_9|new"});
    EXPECT_TRUE(Seen(u"txtboxView"));
}

TEST_F(RunningActionTest, AStartKeyPressedInsideIsNotHeard) {
    LoadPendant();
    Choose(1);
    User().Select(u"File1", 0);
    AtStep(1, [this] {
        view.stages.clear();
        for (const int nKeyCode : {113, 114, 115, 118})
            PressHardware(nKeyCode);
        EXPECT_TRUE(view.stages.empty());
    });
    PressSoft(5);
    EXPECT_FALSE(Seen(u"txtboxView"));
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_2|Door"}));
}

// The status keys are on, and an option switches the start key on.
TEST_F(RunningActionTest, AnOptionChosenInsideGivesTheStartKeyBack) {
    LoadPendant();
    Choose(1);
    User().Select(u"File1", 0);
    std::string sInside;
    AtStep(1, [&] {
        Choose(2);
        sInside = Keys();
    });
    PressSoft(5);
    EXPECT_EQ(sInside, "---++ +-+-");
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_2|Door"})) << "the pass goes on";
    EXPECT_EQ(Keys(), "+--++ +-+-");
}

// The second run takes the shared connection away from the first, which goes on without one.
TEST_F(RunningActionTest, ARunStartedInsideARunTakesItsDatabaseAway) {
    machine.files.Put(kTextFile, "IN_1 Gate\r\nIN_2 Door\r\nIN_3 Lamp\r\n");
    LoadPendant();
    Choose(1);
    PressStatus(4);
    User().Select(u"File1", 0);
    AtStep(2, [] {
        Choose(2);
        PressHardware(118);
    });
    PressSoft(5);
    EXPECT_EQ(machine.files.Bytes(u"C:\\tqx\\Data\\SymName.txt"),
              "IN_1 Gate\r\nIN_2 Door\r\nIN_9 old\r\n\r\n");
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_2|Door", "IN_9|old"}));
    EXPECT_EQ(Keys(), "+--++ +-+-");
}

TEST_F(RunningActionTest, AnImportStartedInsideAnExportEndsTheExportsRead) {
    Store("IO", "OUT_1", "kept");
    LoadPendant();
    Choose(2);
    AtStep(1, [] {
        Choose(1);
        PressStatus(4);
        User().Select(u"File1", 0);
        PressHardware(118);
    });
    PressSoft(5);
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_2|Door", "IN_9|old", "OUT_1|kept"}));
}

// ---- Exit ----

TEST_F(StdBofFormTest, TheExitClearsUpAndEndsTheProgram) {
    LoadPendant();
    machine.files.Put(Text(TempDir) + u"\\left.src", "x");
    EXPECT_TRUE(EndsProgram([] { PressHardware(119); }));
    EXPECT_TRUE(Get<PendantKeyControl>(u"TqpKeys").Ranges().empty());
    EXPECT_FALSE(g_Comm().IsVexonConnected());
    EXPECT_EQ(library.calls.back(), u"Release(factory)");
    EXPECT_FALSE(machine.files.Exists(TempDir));
    EXPECT_TRUE(machine.desktop.boxes.empty());
}

TEST_F(StdBofFormTest, TheExitTakesTheKeysBackAheadOfTheLinksEnd) {
    class KeyView : public WatchingView {
      public:
        int nTakenWithLink = 0;
        void PropertyChanged(Form& form, Control* control, TextView sProperty) override {
            WatchingView::PropertyChanged(form, control, sProperty);
            if (sProperty == u"FKeys" && g_Comm().IsVexonConnected()) ++nTakenWithLink;
        }
    };
    KeyView keyView;
    LoadPendant();
    SetView(&keyView);
    EXPECT_TRUE(EndsProgram([] { PressHardware(119); }));
    EXPECT_EQ(keyView.nTakenWithLink, 3);
    SetView(&view);
}

TEST_F(StdBofFormTest, TheExitIsOpenInEveryState) {
    for (const int nOption : {0, 1, 2, 3}) {
        for (const bool bView : {false, true}) {
            LoadPendant();
            if (nOption > 0) Choose(nOption);
            if (bView) PressSoft(0);
            EXPECT_TRUE(EndsProgram([] { PressSoft(6); })) << nOption << bView;
            UnloadForm(kStdBofFormClass);
        }
    }
}

TEST_F(StdBofFormTest, TheExitIgnoresWhatCannotBeClearedUp) {
    LoadPendant();
    machine.files.Put(Text(TempDir) + u"\\left.src", "x");
    machine.files.Put(Text(TempDir) + u"\\other.dat", "x");
    EXPECT_TRUE(EndsProgram([] { PressSoft(6); }));
    EXPECT_FALSE(machine.files.Exists(Text(TempDir) + u"\\left.src"));
    EXPECT_TRUE(machine.files.Exists(Text(TempDir) + u"\\other.dat"));
    UnloadForm(kStdBofFormClass);
    LoadPendant();
    machine.files.FailChange(Text(TempDir), ErrorNumber::PathFileAccess);
    EXPECT_TRUE(EndsProgram([] { PressSoft(6); }));
}

TEST_F(RunningActionTest, TheExitInAnImportKeepsWhatIsStored) {
    LoadPendant();
    Choose(1);
    PressStatus(4);
    User().Select(u"File1", 0);
    AtStep(1, [] { PressHardware(119); });
    EXPECT_TRUE(EndsProgram([] { PressHardware(118); }));
    EXPECT_EQ(Stored(), (Rows{"IN_1|Gate", "IN_9|old"}));
    EXPECT_EQ(machine.files.OpenFiles(), 0);
}

TEST_F(RunningActionTest, TheExitInARewriteLeavesTheProgramAsItWas) {
    Store("IO", "OUT_12", "Cooling");
    library.PutFile(u"TQX:\\R1\\Program\\a.src", kOldProgram);
    library.PutFile(u"TQX:\\R1\\Program\\b.src", kOldProgram);
    LoadPendant();
    Choose(3);
    PressStatus(4);
    AtStep(2, [] { PressHardware(119); });  // in the second program
    EXPECT_TRUE(EndsProgram([] { PressHardware(118); }));
    EXPECT_EQ(library.FileBytes(u"TQX:\\R1\\Program\\a.src"), kNewProgram);
    EXPECT_EQ(library.FileBytes(u"TQX:\\R1\\Program\\b.src"), kOldProgram);
    EXPECT_FALSE(machine.files.Exists(TempDir));
    EXPECT_FALSE(g_Comm().IsVexonConnected());
}

TEST_F(RunningActionTest, TheExitInASavedViewKeepsWhatIsStored) {
    LoadPendant();
    PressSoft(0);
    User().Type(u"txtboxView", u"IN_1 a\r\nIN_2 b\r\nIN_3 c\r\n");
    AtStep(12, [] { PressHardware(119); });  // behind the eleven of the wipe
    EXPECT_TRUE(EndsProgram([] { PressHardware(114); }));
    EXPECT_EQ(Stored(), Rows{"IN_1|a"});
    EXPECT_EQ(files.killed, Texts{Text(TempDir) + u"\\*.src"}) << "no compaction";
}

TEST_F(RunningActionTest, AFormThatIsClosedInAnyActionEndsTheProgramWithoutClearingUp) {
    struct Row {
        int nSoftKey;
        int nOption;  // 0 without one
    };
    for (const Row& row : {Row{5, 1}, Row{5, 2}, Row{5, 3}, Row{0, 0}, Row{1, 0}}) {
        library.PutFile(u"TQX:\\R1\\Program\\a.src", kOldProgram);
        const StdBofForm& form = LoadPendant();
        if (row.nSoftKey == 1) PressSoft(0);
        if (row.nSoftKey == 5) Choose(row.nOption);
        if (row.nOption == 1) User().Select(u"File1", 0);
        if (row.nOption == 3) PressStatus(4);
        if (row.nSoftKey == 1) User().Type(u"txtboxView", u"IN_9 new\r\n");
        bool bClosed = false;
        AtStep(1, [&] {
            bClosed = true;
            Pendant().UserClose();
        });
        EXPECT_TRUE(EndsProgram([&] { PressSoft(row.nSoftKey); }))
            << row.nSoftKey << " in " << row.nOption;
        EXPECT_TRUE(bClosed);
        EXPECT_EQ(FindForm(kStdBofFormClass), &form);
        EXPECT_EQ(machine.files.OpenFiles(), 0);
        EXPECT_TRUE(files.killed.empty());
        EXPECT_TRUE(g_Comm().IsVexonConnected());
        view.onPendingEvents = nullptr;
        UnloadForm(kStdBofFormClass);
    }
}

TEST_F(StdBofFormTest, AFormThatIsClosedAtRestGoes) {
    LoadPendant().Show();
    PressSoft(0);
    Pendant().UserClose();
    EXPECT_EQ(FindForm(kStdBofFormClass), nullptr);
    EXPECT_FALSE(AnyFormVisible());
    EXPECT_TRUE(files.killed.empty());
    EXPECT_TRUE(g_Comm().IsVexonConnected());
}

}  // namespace
}  // namespace nomira::testing
