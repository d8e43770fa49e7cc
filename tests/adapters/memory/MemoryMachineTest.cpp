#include "adapters/memory/MemoryMachine.h"

#include <stdexcept>

#include "langtools/CodePage.h"
#include "langtools/ProgramState.h"
#include "platform/Platform.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/Form.h"

namespace nomira::memory {
namespace {

using nomira::testing::Raised;

int g_nResets = 0;
const OnProgramReset g_reset{[] { ++g_nResets; }};

TEST(MemoryMachineTest, IsThePlatformForAsLongAsItLives) {
    {
        MemoryMachine machine;
        EXPECT_EQ(&TheFiles(), &machine.files);
        EXPECT_EQ(&TheRegistry(), &machine.registry);
        EXPECT_EQ(&TheProcesses(), &machine.processes);
        EXPECT_EQ(&TheLocale(), &machine.locale);
        EXPECT_EQ(&TheDesktop(), &machine.desktop);
        EXPECT_EQ(&TheClosedLibrary(), &machine.closedLibrary);
    }
    EXPECT_THROW(TheFiles(), std::logic_error);
}

TEST(MemoryMachineTest, GivesTheProgramItsStartValuesWhenItComesAndGoes) {
    g_nResets = 0;
    {
        MemoryMachine machine;
        EXPECT_EQ(g_nResets, 1);
    }
    EXPECT_EQ(g_nResets, 2);
}

TEST(MemoryMachineTest, HandsTheCommandLineOver) {
    MemoryMachine machine;
    EXPECT_EQ(CommandLine(), Text());
    machine.UseCommandLine(u"TEXT_INTO_DB|x");
    EXPECT_EQ(CommandLine(), Text(u"TEXT_INTO_DB|x"));
}

TEST(MemoryMachineTest, AnotherPageIsTheSystemsPageUntilTheMachineGoes) {
    SingleBytePage::Table table{};
    table[65] = u'Ж';
    const SingleBytePage page(9999, table);
    {
        MemoryMachine machine;
        machine.UseCodePage(page);
        machine.files.Put(u"C:\\a.txt", "A");
        Text sLine;
        TheFiles().OpenForInput(u"C:\\a.txt")->ReadLine(sLine);
        EXPECT_EQ(sLine, Text(u"Ж"));
    }
    EXPECT_EQ(SystemCodePage().Number(), 1252);
}

TEST(MemoryFilesTest, OpeningFailsAsTold) {
    MemoryFiles files;
    files.Put(u"C:\\a.txt", "a");
    files.FailOpen(u"c:\\A.txt", ErrorNumber::PermissionDenied);
    EXPECT_EQ(Raised([&] { files.OpenForInput(u"C:\\a.txt"); }), ErrorNumber::PermissionDenied);
    EXPECT_EQ(Raised([&] { files.OpenForOutput(u"C:\\a.txt"); }), ErrorNumber::PermissionDenied);
    files.ClearFailures();
    EXPECT_EQ(Raised([&] { files.OpenForInput(u"C:\\a.txt"); }), std::nullopt);
}

TEST(MemoryFilesTest, WritingFailsWhenTheRoomIsUsedUp) {
    MemoryFiles files;
    files.FailWrite(u"C:\\a.txt", ErrorNumber::DiskFull, 6);
    const auto file = files.OpenForOutput(u"C:\\a.txt");
    file->PrintLine(u"a");
    file->PrintLine(u"b");
    EXPECT_EQ(Raised([&] { file->PrintLine(u"c"); }), ErrorNumber::DiskFull);
    EXPECT_EQ(files.Bytes(u"C:\\a.txt"), "a\r\nb\r\n");
}

TEST(MemoryFilesTest, ChangingFailsAsTold) {
    MemoryFiles files;
    files.Put(u"C:\\a.txt", "");
    for (const TextView sPath : {u"C:\\a.txt", u"C:\\dir"})
        files.FailChange(sPath, ErrorNumber::PermissionDenied);
    const auto denied = ErrorNumber::PermissionDenied;
    EXPECT_EQ(Raised([&] { files.Kill(u"C:\\*.txt"); }), denied);
    EXPECT_EQ(Raised([&] { files.SetAttr(u"C:\\a.txt", AttributeArchive); }), denied);
    EXPECT_EQ(Raised([&] { files.Name(u"C:\\a.txt", u"C:\\b.txt"); }), denied);
    EXPECT_EQ(Raised([&] { files.Name(u"C:\\b.txt", u"C:\\a.txt"); }), denied);
    EXPECT_EQ(Raised([&] { files.MkDir(u"C:\\dir"); }), denied);
    EXPECT_EQ(Raised([&] { files.RmDir(u"C:\\dir"); }), denied);
    EXPECT_TRUE(files.Exists(u"C:\\a.txt"));
}

TEST(MemoryFilesTest, HiddenAndSystemFilesCountInDirOnlyIfAsked) {
    MemoryFiles files;
    files.Put(u"C:\\h.txt", "");
    files.Put(u"C:\\s.txt", "");
    files.SetAttr(u"C:\\h.txt", AttributeHidden);
    files.SetAttr(u"C:\\s.txt", AttributeSystem);
    EXPECT_EQ(files.Dir(u"C:\\*"), std::vector<Text>{});
    EXPECT_EQ(files.Dir(u"C:\\*", AttributeHidden), std::vector<Text>{u"h.txt"});
    EXPECT_EQ(files.Dir(u"C:\\*", AttributeSystem), std::vector<Text>{u"s.txt"});
}

TEST(MemoryFilesTest, WritingSetsTheArchiveBit) {
    MemoryFiles files;
    files.Put(u"C:\\a.txt", "");
    files.SetAttr(u"C:\\a.txt", AttributeNormal);
    EXPECT_EQ(files.GetAttr(u"C:\\a.txt"), AttributeNormal);
    files.OpenForOutput(u"C:\\a.txt")->Close();
    EXPECT_EQ(files.GetAttr(u"C:\\a.txt"), AttributeArchive);
}

TEST(MemoryFilesTest, OpenFilesAreCounted) {
    MemoryFiles files;
    files.Put(u"C:\\a.txt", "");
    auto in = files.OpenForInput(u"C:\\a.txt");
    const auto out = files.OpenForOutput(u"C:\\b.txt");
    EXPECT_EQ(files.OpenFiles(), 2);
    in.reset();
    out->Close();
    EXPECT_EQ(files.OpenFiles(), 0);
}

TEST(MemoryRegistryTest, WhatIsRemovedIsGone) {
    MemoryRegistry registry;
    const auto root = RegistryRoot::CurrentUser;
    registry.SetString(root, u"A\\B", u"v", u"x");
    Registry::KeyHandle key = 0;
    ASSERT_EQ(registry.OpenKey(root, u"A\\B", key), Registry::kSuccess);
    EXPECT_EQ(registry.OpenKeys(), 1U);
    registry.RemoveValue(root, u"a\\b", u"V");
    EXPECT_EQ(registry.QueryValue(key, u"v", {}), 0U);
    registry.RemoveKey(root, u"A");
    EXPECT_EQ(registry.OpenKey(root, u"A\\B", key), Registry::kFileNotFound);
    EXPECT_EQ(registry.Opened(), 2);
}

TEST(MemoryLocaleTest, TheLanguageCanFail) {
    MemoryLocale locale;
    locale.bLangIdFails = true;
    EXPECT_EQ(Raised([&] { locale.UserDefaultLangId(); }), ErrorNumber::DeviceUnavailable);
}

TEST(MemoryProcessesTest, AddedProcessesHaveDifferentIds) {
    MemoryProcesses processes;
    processes.Add(u"\\a");
    processes.Add(u"\\b");
    EXPECT_EQ(processes.ModuleFileName(processes.EnumProcesses().at(1)), Text(u"\\b"));
}

TEST(MemoryProcessesTest, SeesAsManyIdsAsTheOldBufferHeld) {
    MemoryProcesses processes;
    for (int n = 0; n < 126; ++n)
        processes.Add(u"\\x");
    EXPECT_EQ(processes.EnumProcesses().size(), 125U);
}

TEST(RecordingViewTest, WritesDownWhatItIsTold) {
    Form form(u"TestForm");
    Label label(form, u"Information");
    RecordingView view;
    int nPending = 0;
    view.onPendingEvents = [&] { ++nPending; };
    view.FormShown(form);
    view.PropertyChanged(form, &label, u"Caption");
    view.PropertyChanged(form, nullptr, u"Caption");
    view.Refreshed(label);
    view.ProcessPendingEvents();
    view.FormUnloaded(form);
    using Kind = ViewEvent::Kind;
    EXPECT_EQ(view.events, (std::vector<ViewEvent>{
                               {Kind::FormShown, u"TestForm", u"", u""},
                               {Kind::PropertyChanged, u"TestForm", u"Information", u"Caption"},
                               {Kind::PropertyChanged, u"TestForm", u"", u"Caption"},
                               {Kind::Refreshed, u"TestForm", u"Information", u""},
                               {Kind::PendingEvents, u"", u"", u""},
                               {Kind::FormUnloaded, u"TestForm", u"", u""}}));
    EXPECT_EQ(nPending, 1);
    EXPECT_EQ(view.CountChanges(u"Information", u"Caption"), 1);
    EXPECT_EQ(view.Count(Kind::PropertyChanged), 2);
}

}  // namespace
}  // namespace nomira::memory
