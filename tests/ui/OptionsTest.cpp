#include "ui/Options.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "adapters/memory/MemoryMachine.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/StdForm.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

using Routine = void (*)(const Form&);
constexpr Routine kShow[] = {ShowOption1, ShowOption2, ShowOption3};

// Yes, no, or as it was before.
enum class Seen { Yes, No, AsBefore };
using enum Seen;

class OptionsTest : public ::testing::Test {
  protected:
    OptionsTest() {
        g_sTextFileExt = u"*.txt";
        g_sTextFileName = u"SymName";
        g_sTextFilePath = u"\\Data";
        machine.files.PutDirectory(u"C:\\tqx\\Data");
        machine.files.PutDirectory(u"C:\\tqx\\Roboter\\TQX\\R1");
        machine.files.PutDirectory(u"D:\\else");
    }
    void UseCustomer(TextView sCustomer) {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
    }
    static void SetAll(const Form& form, bool bVisible) {
        SetVisible(form,
                   {u"Text1", u"txtboxView", u"Dir1", u"Drive1", u"File1", u"File2", u"List1",
                    u"TreeView1", u"chkBoxAdd", u"chkBoxSelAll"},
                   bVisible);
    }
    static void ExpectSeen(const Form& form, TextView sControl, Seen seen, bool bBefore) {
        const bool bExpected = seen == AsBefore ? bBefore : seen == Yes;
        EXPECT_EQ(form.Get<Control>(sControl).Visible(), bExpected)
            << testing::Printable(form.Class()) << " " << testing::Printable(sControl) << " from "
            << bBefore;
    }
    bool KeyEnabled(int nIndex) const {
        return StatKeyL(pendant, static_cast<std::int16_t>(nIndex)).Enabled();
    }
    Panel& PanelOf(int nIndex) {
        return pendant.Get<StatusBar>(u"StatusBar1").Panels(static_cast<std::int16_t>(nIndex));
    }

    memory::MemoryMachine machine;
    memory::RecordingView view;
    NomiraMain desktop;
    StdBofForm pendant;
};

// ---- What both forms show ----

TEST_F(OptionsTest, EachOptionShowsItsOwnControls) {
    struct Row {
        TextView sControl;
        Seen options[3];
    };
    const Row rows[] = {
        {u"Text1", {No, Yes, No}},      {u"txtboxView", {No, No, AsBefore}},
        {u"Dir1", {Yes, Yes, Yes}},     {u"Drive1", {Yes, Yes, Yes}},
        {u"File1", {Yes, No, No}},      {u"File2", {No, No, Yes}},
        {u"List1", {No, No, AsBefore}}, {u"TreeView1", {No, No, AsBefore}},
        {u"chkBoxAdd", {Yes, No, No}},  {u"chkBoxSelAll", {No, No, Yes}},
    };
    for (const Form* form : {static_cast<Form*>(&desktop), static_cast<Form*>(&pendant)}) {
        for (int n = 0; n < 3; ++n) {
            for (const bool bBefore : {false, true}) {
                SetAll(*form, bBefore);
                kShow[n](*form);
                for (const Row& row : rows)
                    ExpectSeen(*form, row.sControl, row.options[n], bBefore);
            }
        }
    }
}

TEST_F(OptionsTest, TheNamesExtensionIsThePatternsLastFourCharacters) {
    struct Row {
        TextView sPattern, sName;
    };
    for (const auto& [sPattern, sName] : {Row{u"*.txt", u"SymName.txt"},
                                          {u"*.*", u"SymName*.*"},
                                          {u"", u"SymName"},
                                          {u"*.names", u"SymNameames"}}) {
        g_sTextFileExt = sPattern;
        ShowOption2(desktop);
        EXPECT_EQ(desktop.Get<TextBox>(u"Text1").Text(), sName);
    }
}

TEST_F(OptionsTest, TheNameTakesTheFocus) {
    ShowOption2(desktop);
    EXPECT_TRUE(desktop.Get<TextBox>(u"Text1").HasFocus());
    ShowOption2(pendant);
    EXPECT_TRUE(pendant.Get<TextBox>(u"Text1").HasFocus());
}

TEST_F(OptionsTest, TheFirstOptionAloneSetsThePattern) {
    auto& files = desktop.Get<FileListBox>(u"File1");
    files.SetPattern(u"*.old");
    ShowOption2(desktop);
    ShowOption3(desktop);
    EXPECT_EQ(files.Pattern(), u"*.old");
    ShowOption1(desktop);
    EXPECT_EQ(files.Pattern(), u"*.txt");
}

// ---- Places ----

TEST_F(OptionsTest, TheListsGoToTheInstallation) {
    g_sInstallDir = u"C:\\tqx";
    const TextView expected[] = {u"C:\\tqx\\Data", u"C:\\tqx\\Data", u"C:\\tqx\\Roboter\\TQX\\R1"};
    for (const Form* form : {static_cast<Form*>(&desktop), static_cast<Form*>(&pendant)}) {
        for (int n = 0; n < 3; ++n) {
            form->Get<DriveListBox>(u"Drive1").SetDrive(u"D:");
            form->Get<DirListBox>(u"Dir1").SetPath(u"D:\\else");
            kShow[n](*form);
            EXPECT_EQ(form->Get<DriveListBox>(u"Drive1").Drive(), u"c:");
            EXPECT_EQ(form->Get<DirListBox>(u"Dir1").Path(), expected[n]);
        }
    }
}

TEST_F(OptionsTest, TheListIsReadAnewBehindTheWayToTheInstallation) {
    g_sInstallDir = u"C:\\tqx";
    SetView(&view);
    for (const auto& [nOption, sList] : {std::pair(0, u"File1"), std::pair(2, u"File2")}) {
        desktop.Get<DirListBox>(u"Dir1").SetPath(u"D:\\else");
        view.events.clear();
        kShow[nOption](desktop);
        const auto placeOf = [this](const memory::ViewEvent& event) {
            return std::ranges::find(view.events, event) - view.events.begin();
        };
        using Kind = memory::ViewEvent::Kind;
        const auto nArrived = placeOf({Kind::PropertyChanged, u"NomiraMain", u"Dir1", u"Path"});
        const auto nRead = placeOf({Kind::Refreshed, u"NomiraMain", sList, {}});
        EXPECT_LT(nArrived, nRead) << testing::Printable(sList);
        EXPECT_LT(nRead, std::ssize(view.events));
    }
    SetView(nullptr);
}

TEST_F(OptionsTest, WithoutAnInstallationTheListsStayAndAreRefreshedAllTheSame) {
    SetView(&view);
    const TextView refreshed[] = {u"File1", u"", u"File2"};
    for (int n = 0; n < 3; ++n) {
        desktop.Get<DriveListBox>(u"Drive1").SetDrive(u"D:");
        desktop.Get<DirListBox>(u"Dir1").SetPath(u"D:\\else");
        view.events.clear();
        kShow[n](desktop);
        EXPECT_EQ(desktop.Get<DriveListBox>(u"Drive1").Drive(), u"d:");
        EXPECT_EQ(desktop.Get<DirListBox>(u"Dir1").Path(), u"D:\\else");
        Text sRefreshed;
        for (const auto& event : view.events)
            if (event.kind == memory::ViewEvent::Kind::Refreshed) sRefreshed += event.sControl;
        EXPECT_EQ(sRefreshed, refreshed[n]);
    }
}

TEST_F(OptionsTest, ARefreshedListReadsTheDirectoryAnew) {
    auto& programs = desktop.Get<FileListBox>(u"File2");
    programs.SetPattern(u"*.src");
    programs.SetPath(u"D:\\else");
    machine.files.Put(u"D:\\else\\new.src", "x");
    ShowOption3(desktop);
    EXPECT_EQ(programs.ListCount(), 1);
}

TEST_F(OptionsTest, ADriveOrAFolderThatIsMissingIsPassedOver) {
    for (const TextView sInstallDir : {u"X:\\tqx", u"C:\\nowhere"}) {
        g_sInstallDir = sInstallDir;
        for (int n = 0; n < 3; ++n) {
            desktop.Get<DirListBox>(u"Dir1").SetPath(u"D:\\else");
            SetAll(desktop, false);
            kShow[n](desktop);
            EXPECT_EQ(desktop.Get<DirListBox>(u"Dir1").Path(), u"D:\\else");
            EXPECT_TRUE(desktop.Get<Control>(u"cmdStart").Visible());
        }
    }
}

// A drive that fails doesn't keep the directory from being tried.
TEST_F(OptionsTest, TheFolderIsTriedEvenIfTheDriveFails) {
    g_sInstallDir = u"\\tqx";
    desktop.Get<DirListBox>(u"Dir1").SetPath(u"C:\\");
    ShowOption1(desktop);
    EXPECT_EQ(desktop.Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx\\Data");
}

// ---- By the form's kind ----

TEST_F(OptionsTest, TheDesktopGetsItsStartButton) {
    for (const Routine show : kShow) {
        SetVisible(desktop, {u"cmdStart"}, false);
        show(desktop);
        EXPECT_TRUE(desktop.Get<Control>(u"cmdStart").Visible());
    }
}

TEST_F(OptionsTest, TheDesktopsOptionsKeepTheirValues) {
    for (const Routine show : kShow)
        show(desktop);
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
        EXPECT_FALSE(desktop.Get<RadioButton>(sOption).Value());
}

TEST_F(OptionsTest, ThePendantTakesTheOptionsCaption) {
    const TextView captions[] = {u"first", u"second", u"third"};
    const TextView options[] = {u"Option1", u"Option2", u"Option3"};
    for (int n = 0; n < 3; ++n)
        pendant.Get<RadioButton>(options[n]).SetCaption(captions[n]);
    for (int n = 0; n < 3; ++n) {
        SetVisible(pendant, {u"Picture1"}, true);
        SoftKey(pendant, 5).SetEnabled(false);
        pendant.Get<RadioButton>(options[n]).SetTabStop(true);
        kShow[n](pendant);
        EXPECT_EQ(pendant.Get<Frame>(u"RahmenFrm").Caption(), captions[n]);
        EXPECT_FALSE(pendant.Get<Control>(u"Picture1").Visible());
        EXPECT_TRUE(SoftKey(pendant, 5).Enabled());
        EXPECT_TRUE(pendant.Get<RadioButton>(options[n]).Value());
        EXPECT_FALSE(pendant.Get<RadioButton>(options[n]).TabStop());
    }
}

TEST_F(OptionsTest, TheMessagePanelIsClearedAndTheActionPanelByTwoOfThree) {
    for (int n = 0; n < 3; ++n) {
        PanelOf(3).SetText(u"action");
        PanelOf(3).SetPicture({u"picRead"});
        PanelOf(4).SetText(u"message");
        PanelOf(4).SetPicture({u"picCritical"});
        kShow[n](pendant);
        EXPECT_EQ(PanelOf(3).Text(), n == 2 ? u"action" : u"");
        EXPECT_EQ(PanelOf(3).Picture(), Picture{u"picRead"});
        EXPECT_EQ(PanelOf(4).Text(), u"");
        EXPECT_EQ(PanelOf(4).Picture(), Picture{});
    }
}

TEST_F(OptionsTest, TheThirdOptionTakesItsCaptionBehindThePanels) {
    SetView(&view);
    const auto bCaptionFirst = [&] {
        for (const auto& event : view.events) {
            if (event.sControl == u"RahmenFrm") return true;
            if (event.sControl == u"StatusBar1") return false;
        }
        ADD_FAILURE() << "neither has changed";
        return false;
    };
    for (int n = 0; n < 3; ++n) {
        pendant.Get<Frame>(u"RahmenFrm").SetCaption(u"before");
        PanelOf(4).SetText(u"message");
        view.events.clear();
        kShow[n](pendant);
        EXPECT_EQ(bCaptionFirst(), n < 2) << n;
    }
}

TEST_F(OptionsTest, EachOptionEnablesTheStatusKeysOfTheOthers) {
    struct Row {
        TextView sCustomer;
        bool keys[3][4];
    };
    const Row rows[] = {
        {u"X", {{false, true, true, true}, {true, false, true, false}, {true, true, false, true}}},
        {u"vw", {{false, true, true, true}, {true, false, true, false}, {true, true, false, true}}},
        {u"VW",
         {{false, true, true, true}, {true, false, false, false}, {true, true, false, true}}},
    };
    for (const Row& row : rows) {
        UseCustomer(row.sCustomer);
        for (int nOption = 0; nOption < 3; ++nOption) {
            for (const bool bBefore : {false, true}) {
                for (std::int16_t n = 0; n <= 5; ++n)
                    StatKeyL(pendant, n).SetEnabled(bBefore);
                kShow[nOption](pendant);
                for (int n = 1; n <= 4; ++n)
                    EXPECT_EQ(KeyEnabled(n), row.keys[nOption][n - 1])
                        << testing::Printable(row.sCustomer) << nOption << n;
                EXPECT_EQ(KeyEnabled(0), bBefore);
                EXPECT_EQ(KeyEnabled(5), bBefore);
            }
        }
    }
}

TEST_F(OptionsTest, TheFirstOptionOffersTheBoxes) {
    for (const TextView sCustomer : {u"X", u"VW"}) {
        UseCustomer(sCustomer);
        SetEnabled(pendant, {u"chkBoxAdd", u"chkBoxSymbol"}, false);
        ShowOption1(pendant);
        EXPECT_TRUE(pendant.Get<CheckBox>(u"chkBoxAdd").Enabled());
        EXPECT_EQ(pendant.Get<CheckBox>(u"chkBoxSymbol").Enabled(), sCustomer == u"VW");
    }
}

TEST_F(OptionsTest, TheSecondOptionGreysTheBoxesForVwAlone) {
    for (const TextView sCustomer : {u"X", u"VW"}) {
        const bool bVw = sCustomer == u"VW";
        UseCustomer(sCustomer);
        SetEnabled(pendant, {u"chkBoxAdd", u"chkBoxSymbol"}, true);
        ShowOption2(pendant);
        EXPECT_EQ(pendant.Get<CheckBox>(u"chkBoxAdd").Enabled(), !bVw);
        EXPECT_EQ(pendant.Get<CheckBox>(u"chkBoxAdd").Visible(), bVw);
        EXPECT_EQ(pendant.Get<CheckBox>(u"chkBoxSymbol").Enabled(), !bVw);
    }
}

TEST_F(OptionsTest, TheSecondOptionGivesTheSecondStatusKeyItsPictures) {
    StatKeyL(pendant, 2).SetPicture({u"picRead"});
    StatKeyL(pendant, 2).SetDisabledPicture({u"picRead"});
    ShowOption1(pendant);
    EXPECT_EQ(StatKeyL(pendant, 2).Picture(), Picture{u"picRead"});
    ShowOption2(pendant);
    EXPECT_EQ(StatKeyL(pendant, 2).Picture(), Listed(pendant, u"ImageList2", 3));
    EXPECT_EQ(StatKeyL(pendant, 2).DisabledPicture(), Listed(pendant, u"ImageList2", 4));
}

TEST_F(OptionsTest, AFormThatLacksTheControlsRaises) {
    const StdForm batch;
    for (const Routine show : kShow)
        EXPECT_EQ(testing::Raised([&] { show(batch); }), ErrorNumber::NoSuchMember);
}

}  // namespace
}  // namespace nomira
