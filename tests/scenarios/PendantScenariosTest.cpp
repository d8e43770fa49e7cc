// An operator's work at the pendant form, by its keys, from the start of the program to its end.
#include <gtest/gtest.h>

#include "scenarios/Plant.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira::testing {
namespace {

using memory::PlayedUser;
using Texts = std::vector<std::string>;

// The hardware keys by what they stand for.
enum Key : std::int16_t {
    kView = 113,
    kSave = 114,
    kLeave = 115,
    kStart = 118,
    kExit = 119,
    kOption1 = 129,
    kOption2 = 130,
    kOption3 = 131,
    kList = 132
};

class PendantScenariosTest : public ::testing::Test {
  protected:
    PendantScenariosTest() {
        plant.UseCustomer("Cell7");
        plant.RunMiddleware();
    }
    static void Press(PlayedUser& user, Key key) { user.PressPendantKey(u"TqpKeys", key); }
    static bool IsVisible(const Form& form, TextView sControl) {
        return form.Get<Control>(sControl).Visible();
    }
    static const Panel& PanelOf(const Form& form, std::int16_t nPanel) {
        return std::as_const(form.Get<StatusBar>(u"StatusBar1")).Panels(nPanel);
    }
    // Which of the soft keys 0 to 6 are enabled, as u"0..." and so on.
    static Text SoftKeys(const Form& form) {
        Text sKeys;
        for (std::int16_t n = 0; n <= 6; ++n)
            sKeys +=
                form.Get<Button>(u"SoftKey", n).Enabled() ? static_cast<char16_t>(u'0' + n) : u'.';
        return sKeys;
    }
    static Text StatusKeys(const Form& form) {
        Text sKeys;
        for (std::int16_t n = 0; n <= 5; ++n)
            sKeys +=
                form.Get<Button>(u"StatKeyL", n).Enabled() ? static_cast<char16_t>(u'0' + n) : u'.';
        return sKeys;
    }
    void FillCatalogue() {
        struct Row {
            const char *sKey, *sText;
        };
        int nKey = 0;
        const auto path = plant.CreateCatalogue();
        for (const Row& row : {Row{"DatabaseView", "Datenbank"},
                               {"LongTextConversion", "Langtexte"},
                               {"LongText", "Langtext"},
                               {"Database", "DB"},
                               {"UserProgram", "Programm"},
                               {"AddToDatabase", "anfuegen"},
                               {"SelectAllFiles", "alle"},
                               {"WithSymbol", "mit Symbol"},
                               {"EnterName", "Name fehlt"},
                               {"SelectFile", "Datei fehlt"},
                               {"DeviceUnavailable", "Laufwerk nicht bereit"}}) {
            const std::string sId = std::to_string(++nKey);
            ExecuteOn(path, "INSERT INTO Items (Key_id, Module, KeyString) VALUES (" + sId +
                                ", 'Nomira', '" + row.sKey +
                                "'); INSERT INTO Messages (Key_id, Language_id, String) VALUES (" +
                                sId + ", 7, '" + row.sText + "');");
        }
        plant.UseGerman();
    }

    Plant plant;
};

TEST_F(PendantScenariosTest, ThroughAllOptionsViewSaveAndExit) {
    FillCatalogue();
    plant.StoreText("IO", "IN_1", "Pump");
    plant.Put("Temp/NomiraTemp/left_behind.src", "DEF x()\r\n");
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        const auto& frame = form.Get<Frame>(u"RahmenFrm");
        EXPECT_EQ(frame.Caption(), u"Langtexte");
        EXPECT_TRUE(IsVisible(form, u"Picture1"));
        EXPECT_EQ(SoftKeys(form), u"0.....6");
        EXPECT_EQ(StatusKeys(form), u".123..");
        EXPECT_EQ(PanelOf(form, 2).Picture(), Picture{u"picLinkUp"});

        Press(user, kOption1);
        EXPECT_EQ(frame.Caption(), u"Langtext -> DB");
        EXPECT_TRUE(IsVisible(form, u"File1"));
        EXPECT_EQ(SoftKeys(form), u"0....56");
        EXPECT_EQ(StatusKeys(form), u"..234.");
        Press(user, kList);
        EXPECT_EQ(form.Get<CheckBox>(u"chkBoxAdd").Value(), CheckBox::kChecked);

        Press(user, kOption2);
        EXPECT_EQ(frame.Caption(), u"DB -> Langtext");
        EXPECT_TRUE(IsVisible(form, u"Text1"));
        EXPECT_TRUE(form.Get<TextBox>(u"Text1").HasFocus());
        EXPECT_EQ(StatusKeys(form), u".1.3..");

        Press(user, kOption3);
        EXPECT_EQ(frame.Caption(), u"Langtext (IO's) -> Programm");
        EXPECT_TRUE(IsVisible(form, u"File2"));
        EXPECT_EQ(StatusKeys(form), u".12.4.");

        Press(user, kView);
        EXPECT_EQ(frame.Caption(), u"Datenbank");
        EXPECT_EQ(SoftKeys(form), u"012...6");
        EXPECT_EQ(StatusKeys(form), u"......");
        EXPECT_EQ(form.Get<TextBox>(u"txtboxView").Text(), u"IN_1 Pump\r\n");
        user.Type(u"txtboxView", u"IN_1 Pump\r\nIN_2 Gate\r\n");
        Press(user, kSave);
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump", "IN_2=Gate"}));
        EXPECT_EQ(SoftKeys(form), u"012...6");
        EXPECT_FALSE(IsVisible(form, u"ProgressBar2"));

        Press(user, kLeave);
        EXPECT_EQ(frame.Caption(), u"Langtext (IO's) -> Programm");
        EXPECT_TRUE(IsVisible(form, u"File2"));
        EXPECT_EQ(StatusKeys(form), u".12.4.");
        Press(user, kExit);
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
    EXPECT_FALSE(std::filesystem::exists(plant.OnDriveC("Temp/NomiraTemp")));
    EXPECT_TRUE(plant.desktop.boxes.empty());
}

// The save compacts the store: it lies in a new file afterwards.
TEST_F(PendantScenariosTest, TheSaveCompacts) {
    plant.StoreText("IO", "IN_1", "Pump");
    ExecuteOn(
        plant.Database(),
        "WITH RECURSIVE Numbers(n) AS (SELECT 2 UNION SELECT n + 1 FROM Numbers WHERE n < 200)"
        " INSERT INTO Items (Key_id, Module, KeyString) SELECT n, 'IO', 'IN_' || n FROM Numbers;"
        "INSERT INTO Messages (Key_id, Language_id, String)"
        " SELECT Key_id, 99, hex(zeroblob(250)) FROM Items WHERE Key_id > 1");
    const auto nBefore = std::filesystem::file_size(plant.Database());
    plant.Run([&](PlayedUser& user, Form&) {
        Press(user, kView);
        user.Type(u"txtboxView", u"IN_1 Pump\r\n");
        Press(user, kSave);
    });
    EXPECT_EQ(plant.Texts(), Texts{"IN_1=Pump"});
    EXPECT_LT(std::filesystem::file_size(plant.Database()), nBefore / 2);
}

TEST_F(PendantScenariosTest, ATextFileIsRunFirstOverAndThenIntoTheOldOnes) {
    plant.StoreText("IO", "IN_9", "from before");
    plant.Put("tqx/Data/a.txt", "IN_1 Pump\r\n");
    plant.Put("tqx/Data/b.txt", "IN_2 Valve\r\n");
    plant.Run([&](PlayedUser& user, Form& form) {
        Press(user, kOption1);
        user.Select(u"File1", 0);
        Press(user, kStart);
        EXPECT_EQ(plant.Texts(), Texts{"IN_1=Pump"});
        Press(user, kList);
        user.Select(u"File1", 1);
        Press(user, kStart);
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump", "IN_2=Valve"}));
        EXPECT_EQ(SoftKeys(form), u"0....56");
    });
}

TEST_F(PendantScenariosTest, WithoutASelectionThePanelSaysSo) {
    plant.Run([&](PlayedUser& user, Form& form) {
        Press(user, kOption1);
        Press(user, kStart);
        EXPECT_EQ(PanelOf(form, 4).Text(), u"select one file at least");
        EXPECT_EQ(PanelOf(form, 4).Picture(), Picture{u"picCritical"});
        Press(user, kOption2);
        EXPECT_EQ(PanelOf(form, 4).Text(), u"");
        user.Type(u"Text1", u"");
        Press(user, kStart);
        EXPECT_EQ(PanelOf(form, 4).Text(), u"please enter a name");
    });
    EXPECT_TRUE(plant.desktop.boxes.empty());
}

TEST_F(PendantScenariosTest, ProgramsOfTheControllerTakeTheNames) {
    plant.StoreText("IO", "OUT_7", "Pump");
    plant.PutOnRobot("R1/Program/a.src", kProgram);
    plant.Put("tqx/Roboter/TQX/R1/a.src", "the disk's own copy");
    plant.Run([&](PlayedUser& user, Form&) {
        Press(user, kOption3);
        Press(user, kList);  // all of them
        Press(user, kStart);
    });
    EXPECT_EQ(plant.BytesOnRobot("R1/Program/a.src"), kRewritten);
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/a.src"), "the disk's own copy");
}

TEST_F(PendantScenariosTest, ABadDriveIsToldForAMomentAndLeftForTheInstallation) {
    FillCatalogue();
    plant.AddEmptyDrive('e');
    std::vector<Text> told;
    plant.Run([&](PlayedUser& user, Form& form) {
        plant.processes.onSleep = [&] {
            told.push_back(PanelOf(form, 4).Text() + u"|" +
                           form.Get<DriveListBox>(u"Drive1").Drive());
        };
        Press(user, kOption1);
        user.PickDrive(u"Drive1", u"e:");
        EXPECT_EQ(form.Get<DriveListBox>(u"Drive1").Drive(), u"c:");
        EXPECT_EQ(form.Get<DirListBox>(u"Dir1").Path(), u"C:\\tqx\\Data");
        EXPECT_EQ(PanelOf(form, 4).Text(), u"");
        EXPECT_EQ(PanelOf(form, 4).Picture(), Picture{});
    });
    EXPECT_EQ(told, (std::vector<Text>{u"Laufwerk nicht bereit (E:)|e:",
                                       u"Laufwerk nicht bereit (E:)|c:"}));
    EXPECT_EQ(plant.processes.slept,
              std::vector<std::chrono::milliseconds>(2, std::chrono::milliseconds(1500)));
}

// The operator leaves in the middle of an import: what is stored stays, the rest doesn't come.
TEST_F(PendantScenariosTest, TheExitKeyEndsTheProgramInTheMiddleOfAPass) {
    std::string sFile;
    for (int n = 1; n <= 50; ++n)
        sFile += "IN_" + std::to_string(n) + " Pump\r\n";
    plant.Put("tqx/Data/a.txt", sFile);
    int nSteps = 0;
    const int nStatus = plant.Run([&](PlayedUser& user, Form&) {
        plant.view.onPendingEvents = [&] {
            if (++nSteps == 20) Press(user, kExit);
        };
        Press(user, kOption1);
        Press(user, kList);  // no clearing: every step is one of the import
        user.Select(u"File1", 0);
        Press(user, kStart);
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
    EXPECT_EQ(nSteps, 20);
    const std::size_t nStored = plant.Texts().size();
    EXPECT_GT(nStored, 10U);
    EXPECT_LT(nStored, 30U);
}

// The run keys are off while a pass runs; the status keys work, and only the form's state follows.
TEST_F(PendantScenariosTest, TheClosedWindowEndsTheProgramInTheMiddleOfAPass) {
    plant.Put("tqx/Data/a.txt", "IN_1 Pump\r\nIN_2 Pump\r\nIN_3 Pump\r\n");
    int nSteps = 0;
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        plant.view.onPendingEvents = [&] {
            if (++nSteps == 2) form.UserClose();
        };
        Press(user, kOption1);
        Press(user, kList);  // no clearing: every step is one of the import
        user.Select(u"File1", 0);
        Press(user, kStart);
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
    EXPECT_EQ(nSteps, 2);
    EXPECT_TRUE(plant.desktop.boxes.empty());
    EXPECT_LT(plant.Texts().size(), 3U);
}

TEST_F(PendantScenariosTest, TheClosedWindowEndsTheProgramAtRest) {
    const int nStatus = plant.Run([&](PlayedUser&, Form& form) { form.UserClose(); });
    EXPECT_EQ(nStatus, 0);
    EXPECT_FALSE(AnyFormVisible());
    EXPECT_TRUE(plant.desktop.boxes.empty());
}

TEST_F(PendantScenariosTest, KeysPressedDuringAPassDoWhatTheKeyModelSays) {
    plant.StoreText("IO", "IN_9", "from before");
    plant.Put("tqx/Data/a.txt", "IN_1 Pump\r\nIN_2 Valve\r\n");
    plant.Run([&](PlayedUser& user, Form& form) {
        bool bPressed = false;
        plant.view.onPendingEvents = [&] {
            const bool bImport = PanelOf(form, 3).Picture() == Picture{u"picWrite"};
            if (bPressed || !bImport) return;
            bPressed = true;
            EXPECT_EQ(SoftKeys(form), u"......6");
            for (const Key key : {kView, kSave, kLeave, kStart})
                Press(user, key);
            EXPECT_FALSE(IsVisible(form, u"txtboxView"));
            Press(user, kOption3);
            EXPECT_TRUE(IsVisible(form, u"File2"));
        };
        Press(user, kOption1);
        user.Select(u"File1", 0);
        Press(user, kStart);
        EXPECT_TRUE(bPressed);
        EXPECT_EQ(plant.Texts(), (Texts{"IN_1=Pump", "IN_2=Valve"}));
        EXPECT_EQ(SoftKeys(form), u"0....56");
        EXPECT_EQ(StatusKeys(form), u".12.4.");
    });
}

// The choice of another option moves the lists to another directory, and what was selected is no
// longer: an import that was still to come finds no file.
TEST_F(PendantScenariosTest, AnotherOptionWhileTheOldTextsAreDeletedLeavesNothingToImport) {
    plant.StoreText("IO", "IN_9", "from before");
    plant.Put("tqx/Data/a.txt", "IN_1 Pump\r\nIN_2 Valve\r\n");
    plant.Run([&](PlayedUser& user, Form& form) {
        plant.view.onPendingEvents = [&] {
            if (PanelOf(form, 3).Picture() == Picture{u"picDelete"}) Press(user, kOption3);
        };
        Press(user, kOption1);
        user.Select(u"File1", 0);
        Press(user, kStart);
        EXPECT_EQ(plant.Texts(), Texts{});
        EXPECT_EQ(PanelOf(form, 4).Text(), u"select one file at least");
    });
}

// The middleware's process runs, and nobody answers: the form can't tell that from a link.
TEST_F(PendantScenariosTest, WithoutAnAnswerOfTheControllerNoProgramIsRewritten) {
    plant.simulator.Stop();
    plant.StoreText("IO", "OUT_7", "Pump");
    plant.Put("tqx/Roboter/TQX/R1/a.src", kProgram);
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        EXPECT_EQ(PanelOf(form, 2).Picture(), Picture{u"picLinkUp"});
        Press(user, kOption3);
        Press(user, kList);
        Press(user, kStart);
        EXPECT_EQ(SoftKeys(form), u"0....56");
        Press(user, kExit);
    });
    EXPECT_EQ(nStatus, 0);
    EXPECT_EQ(plant.Bytes("tqx/Roboter/TQX/R1/a.src"), kProgram);
}

TEST_F(PendantScenariosTest, VwHarvestsItsAssignments) {
    plant.UseCustomer("VW");
    std::filesystem::create_directories(plant.OnDriveC("tqx/Roboter/Init"));
    plant.Put("tqx/Roboter/Init/signals.txt",
              "E_001 = E1 \\ ;clamp open\r\nA_002 = A2 \\ ;valve\r\n");
    plant.StoreText("IO", "IN_9", "from before");
    plant.Run([&](PlayedUser& user, Form& form) {
        EXPECT_FALSE(IsVisible(form, u"Option3"));
        EXPECT_TRUE(IsVisible(form, u"chkBoxSymbol"));
        Press(user, kOption1);
        user.Select(u"File1", 0);
        Press(user, kOption3);
        EXPECT_EQ(form.Get<CheckBox>(u"chkBoxSymbol").Value(), CheckBox::kChecked);
        EXPECT_TRUE(IsVisible(form, u"File1"));
        Press(user, kStart);
    });
    EXPECT_EQ(plant.Texts(), (Texts{"IN_1=clamp open", "OUT_2=valve"}));
}

TEST_F(PendantScenariosTest, WithoutTheDatabaseOnlyTheExitIsOpen) {
    std::filesystem::remove(plant.Database());
    const int nStatus = plant.Run([&](PlayedUser& user, Form& form) {
        EXPECT_EQ(PanelOf(form, 4).Text(), u"no connect to database !!!");
        EXPECT_EQ(SoftKeys(form), u"......6");
        EXPECT_EQ(StatusKeys(form), u"......");
        Press(user, kExit);
        ADD_FAILURE() << "the program goes on";
    });
    EXPECT_EQ(nStatus, 0);
}

}  // namespace
}  // namespace nomira::testing
