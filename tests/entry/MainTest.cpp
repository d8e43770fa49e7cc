#include "frame/entry/Main.h"

#include "adapters/memory/MemoryMachine.h"
#include "entry/BatchTimeline.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "testing/UnavailableEngine.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;

constexpr TextView kVersion = u"Software\\Orvo\\Version";
constexpr TextView kDatabase = u"Software\\Orvo\\Database";

class MainTest : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    testing::UnavailableEngine engine;
    testing::ForwardingRegistry registry{machine.registry};
    testing::ForwardingProcesses processes{machine.processes};

    // The machine is watched from here on.
    void Start(TextView sCommandLine) {
        Platform platform = testing::PortsOf(machine);
        platform.registry = &registry;
        platform.processes = &processes;
        platform.sCommandLine = Text(sCommandLine);
        SetPlatform(platform);
        Main();
    }
    void SetLanguage(TextView sValue) {
        machine.registry.SetString(RegistryRoot::CurrentUser, kDatabase, u"Language", sValue);
    }
    void SetCustomer(TextView sValue) {
        machine.registry.SetString(RegistryRoot::LocalMachine, kVersion, u"Customer", sValue);
    }
    void RunMiddleware() { machine.processes.Add(u"C:\\TQX\\SYS\\VEXON3.EXE"); }
    static bool IsShown(TextView sClass) {
        const Form* form = FindForm(sClass);
        return form && form->Visible();
    }
};

TEST_F(MainTest, ASecondInstanceOnlyRaisesTheFirst) {
    for (const TextView sCommandLine : {u"", u"TEXT_INTO_DB|OVERWRITE|C:\\x.txt", u"word"}) {
        machine.files.Put(u"C:\\x.txt", "IN_1 Pump\r\n");
        machine.desktop.bPreviousInstance = true;
        machine.desktop.windows = {u"Nomira"};
        machine.desktop.activated.clear();
        machine.desktop.raised.clear();
        RunMiddleware();
        SetCustomer(u"VW");
        Start(sCommandLine);
        EXPECT_EQ(machine.desktop.activated, (std::vector<Text>{u"Nomira"}));
        EXPECT_EQ(machine.desktop.raised, (std::vector<Text>{u"Nomira"}));
        EXPECT_TRUE(machine.desktop.boxes.empty());
        EXPECT_TRUE(registry.asked.empty());
        EXPECT_EQ(processes.nEnumerations, 0);
        EXPECT_EQ(engine.nAsked, 0);
        EXPECT_EQ(g_sTextFileExt, u"");
        EXPECT_EQ(FindForm(u"StdForm"), nullptr);
        EXPECT_FALSE(AnyFormVisible());
        EXPECT_FALSE(g_bBatchMode);
    }
}

TEST_F(MainTest, ReadsTheRegistryInItsOrder) {
    Start(u"");
    EXPECT_EQ(registry.asked, (std::vector<Text>{}));  // no key is there to ask

    machine.registry.AddKey(RegistryRoot::CurrentUser,
                            u"Software\\Nomira Program Settings\\Longname");
    machine.registry.AddKey(RegistryRoot::LocalMachine, kVersion);
    machine.registry.AddKey(RegistryRoot::CurrentUser, kDatabase);
    UnloadForm(u"NomiraMain");
    Start(u"");
    EXPECT_EQ(registry.asked,
              (std::vector<Text>{u"TextFileExtention", u"TextFileName", u"TextFilePath",
                                 u"Customer", u"InstallationDir", u"Language", u"Customer"}));
    EXPECT_EQ(registry.nOpenKeys, 0);
}

TEST_F(MainTest, TheThreeTestsOfTheFrontEndAreAlwaysMade) {
    for (const TextView sCommandLine : {u"", u"no command", u"word|"}) {
        registry.asked.clear();
        processes.nEnumerations = 0;
        machine.registry.SetString(RegistryRoot::CurrentUser,
                                   u"Software\\Nomira Program Settings\\Longname", u"TextFilePath",
                                   u"\\Given");
        machine.registry.AddKey(RegistryRoot::LocalMachine, kVersion);
        Start(sCommandLine);
        EXPECT_EQ(std::count(registry.asked.begin(), registry.asked.end(), u"Customer"), 1)
            << testing::Printable(sCommandLine);
        EXPECT_EQ(processes.nEnumerations, 1) << testing::Printable(sCommandLine);
    }
}

TEST_F(MainTest, PicksTheFrontEnd) {
    struct Row {
        TextView sCommandLine, sCustomer;
        bool bMiddleware;
        TextView sShown;
    };
    const Row rows[] = {
        {u"", u"VW", true, u"StdBofForm"},
        {u"", u"Anybody", true, u"StdBofForm"},
        {u"", u" ", true, u"NomiraMain"},  // a blank customer is none
        {u"", u"", true, u"NomiraMain"},
        {u"", u"VW", false, u"NomiraMain"},
        {u"", u"", false, u"NomiraMain"},
        {u"word", u"VW", true, u""},
        {u" ", u"VW", true, u""},  // a blank is a command line
        {u"\"C:\\a path\\x.txt\"", u"", false, u""},
        {u"word|", u"VW", true, u""},  // a batch run, over when Main returns
    };
    for (const Row& row : rows) {
        memory::MemoryMachine fresh;
        if (row.bMiddleware) fresh.processes.Add(u"C:\\TQX\\SYS\\VEXON3.EXE");
        fresh.registry.SetString(RegistryRoot::LocalMachine, kVersion, u"Customer", row.sCustomer);
        fresh.UseCommandLine(Text(row.sCommandLine));
        Main();
        EXPECT_EQ(IsShown(u"StdBofForm"), row.sShown == u"StdBofForm");
        EXPECT_EQ(IsShown(u"NomiraMain"), row.sShown == u"NomiraMain");
        EXPECT_EQ(AnyFormVisible(), !row.sShown.empty()) << testing::Printable(row.sCommandLine);
        EXPECT_EQ(g_bPendantMode, row.sShown == u"StdBofForm");
        EXPECT_EQ(g_bBatchMode, row.sCommandLine == u"word|");
    }
}

TEST_F(MainTest, TheFrontEndsFormIsLive) {
    Start(u"");
    ASSERT_TRUE(IsShown(u"NomiraMain"));
    EXPECT_TRUE(FindForm(u"NomiraMain")->IsLive());
    RunMiddleware();
    SetCustomer(u"VW");
    Start(u"");
    ASSERT_TRUE(IsShown(u"StdBofForm"));
    EXPECT_TRUE(FindForm(u"StdBofForm")->IsLive());
}

TEST_F(MainTest, TheModesAreSetBeforeAFormComesUp) {
    class ModesAtShow : public memory::RecordingView {
      public:
        void FormShown(Form& form) override {
            shown.push_back(form.Class() + (g_bPendantMode ? u" pendant" : u"") +
                            (g_bBatchMode ? u" batch" : u""));
        }
        std::vector<Text> shown;
    };
    RunMiddleware();
    SetCustomer(u"VW");
    ModesAtShow view;
    SetView(&view);
    Start(u"");
    g_bPendantMode = true;
    Start(u"word|");
    SetCustomer(u"");
    g_bPendantMode = true;
    Start(u"");
    EXPECT_EQ(view.shown,
              (std::vector<Text>{u"StdBofForm pendant", u"StdForm batch", u"NomiraMain"}));
}

TEST_F(MainTest, ALineWithoutASeparatorEndsSilently) {
    machine.files.Put(u"C:\\x.txt", "IN_1 Pump\r\n");
    for (const TextView sCommandLine : {u"C:\\x.txt", u"\"C:\\x.txt\"", u"--help", u"\"\""}) {
        Start(sCommandLine);
        EXPECT_FALSE(AnyFormVisible());
        EXPECT_EQ(FindForm(u"StdForm"), nullptr);
    }
    EXPECT_TRUE(machine.desktop.boxes.empty());
    EXPECT_EQ(engine.nAsked, 0);
}

TEST_F(MainTest, ABatchLineIsDispatched) {
    testing::BatchTimeline timeline(machine);
    Platform platform = testing::PortsOf(machine);
    platform.desktop = &timeline;
    platform.sCommandLine = u"\"word\"|";
    SetPlatform(platform);
    Main();
    EXPECT_EQ(timeline.happened,
              (std::vector<Text>{u"show StdForm", u"caption TQX Longname - Conversion",
                                 u"box Number of parameters too less !!!", u"unload StdForm"}));
    EXPECT_FALSE(AnyFormVisible());
}

TEST_F(MainTest, ReadsWhereTheControllerSoftwareIs) {
    machine.registry.SetString(RegistryRoot::LocalMachine, kVersion, u"InstallationDir",
                               u"D:\\TQX");
    SetLanguage(u"407");
    Start(u"");
    EXPECT_EQ(g_sInstallDir, u"D:\\TQX");
    EXPECT_EQ(g_sLanguage, u"407");
    EXPECT_EQ(g_sTextFilePath, u"\\Data");
}

TEST_F(MainTest, TheInstallationIsEmptyIfMissingAndElseAsRead) {
    g_sInstallDir = u"before";
    g_sLanguage = u"before";
    Start(u"word");
    EXPECT_EQ(g_sInstallDir, u"");
    EXPECT_EQ(g_sLanguage, u"");
    machine.registry.SetString(RegistryRoot::LocalMachine, kVersion, u"InstallationDir",
                               u" D:\\TQX ");
    // The right values under the wrong roots.
    machine.registry.SetString(RegistryRoot::CurrentUser, kVersion, u"InstallationDir", u"E:\\");
    machine.registry.SetString(RegistryRoot::LocalMachine, kDatabase, u"Language", u"409");
    Start(u"word");
    EXPECT_EQ(g_sInstallDir, u" D:\\TQX ");
    EXPECT_EQ(g_sLanguage, u"");
}

TEST_F(MainTest, ALineThatIsNoCommandReadsTheSettingsAllTheSame) {
    SetLanguage(u"407");
    Start(u"word");
    EXPECT_EQ(g_sTextFileExt, u"*.txt");
    EXPECT_EQ(g_nLanguageId, 1031);
}

TEST_F(MainTest, TheLanguageIsHexadecimalText) {
    struct Row {
        TextView sLanguage;
        std::int32_t nId;
    };
    const Row rows[] = {
        {u"7", 7},
        {u"407", 1031},
        {u"0409", 1033},
        {u"aB", 171},
        {u"0", 0},
        {u"8000", 32'768},  // no sign in 16 bits
        {u"FFFF", 65'535},
        {u"5F5E0FF", 99'999'999},
        {u"3B9AC9FF", 999'999'999},  // nine digits pass
        {u"3B9ACA00", 100'000'000},  // of ten, the last is lost
        {u"7FFFFFFF", 214'748'364},
        {u"FFFFFFFF", -1},
        {u"FA0A1F01", -99'999'999},  // the sign counts as one of the nine
        {u"FA0A1F00", -10'000'000},
        {u"80000000", -21'474'836},
    };
    for (const Row& row : rows) {
        SetLanguage(row.sLanguage);
        Start(u"word");
        EXPECT_EQ(g_nLanguageId, row.nId) << testing::Printable(row.sLanguage);
    }
}

TEST_F(MainTest, ALanguageThatIsNotHexadecimalFailsTheStart) {
    for (const TextView sLanguage : {u"German", u"0x407", u" 407", u"407 ", u" ", u"-7", u"&H7"}) {
        SetLanguage(sLanguage);
        EXPECT_EQ(Raised([&] { Start(u""); }), ErrorNumber::TypeMismatch)
            << testing::Printable(sLanguage);
        EXPECT_FALSE(AnyFormVisible());
    }
}

TEST_F(MainTest, ALanguageOfMoreThanThirtyTwoBitsFailsTheStart) {
    SetLanguage(u"100000000");
    EXPECT_EQ(Raised([&] { Start(u""); }), ErrorNumber::Overflow);
}

TEST_F(MainTest, WithoutALanguageTheUsersCounts) {
    machine.locale.nLangId = 1031;
    Start(u"word");
    EXPECT_EQ(g_nLanguageId, 7);
    machine.locale.nLangId = 0xFFFF;
    Start(u"word");
    EXPECT_EQ(g_nLanguageId, 255);  // 8 bits, so there is no sign to extend
    machine.locale.bLangIdFails = true;
    Start(u"word");
    EXPECT_EQ(g_nLanguageId, 9);
}

TEST_F(MainTest, TheSizeOfTheInputsAndOutputsIsFixedAtStart) {
    g_nNumIo = 5;
    g_nNumNotice = 6;
    g_bBatchMode = true;
    Start(u"word");
    EXPECT_EQ(g_nNumIo, 1024);
    EXPECT_EQ(g_nNumNotice, 6);  // the others are left to the controller
    EXPECT_FALSE(g_bBatchMode);
}

}  // namespace
}  // namespace nomira
