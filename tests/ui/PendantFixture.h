// What the tests of the pendant form stand on: a machine in memory, a database on a real file, a
// controller that answers as told, and the form as an operator has it before him.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/PlayedUser.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "database/FolderFiles.h"
#include "database/adoModul.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/ProgramEnd.h"
#include "link/cVexonComm.h"
#include "platform/ForwardingFiles.h"
#include "platform/Platform.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/StatusBar.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::testing {

using Rows = std::vector<std::string>;
using Texts = std::vector<Text>;

// The disk in memory; but the databases are those of the test's folder, and there may be a drive
// without a disk in it.
class PendantFiles : public ForwardingFiles {
  public:
    PendantFiles(Files& inner, std::filesystem::path folder)
        : ForwardingFiles(inner), m_databases(std::move(folder)) {}

    static constexpr TextView kEmptyDrive = u"q:";
    // The drives that can't be read, in small letters.
    Texts badDrives{Text(kEmptyDrive)};
    Texts killed;
    // Runs ahead of each deletion; may be empty.
    std::function<void()> onKill;

    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes) override {
        RequireReady(sPath);
        return IsDatabase(sPath) ? m_databases.Dir(sPath, nAttributes)
                                 : ForwardingFiles::Dir(sPath, nAttributes);
    }
    std::uint16_t GetAttr(TextView sPath) override {
        RequireReady(sPath);
        return ForwardingFiles::GetAttr(sPath);
    }
    void Kill(TextView sPath) override {
        if (onKill) onKill();
        killed.emplace_back(sPath);
        if (IsDatabase(sPath))
            m_databases.Kill(sPath);
        else
            ForwardingFiles::Kill(sPath);
    }
    void Name(TextView sOldPath, TextView sNewPath) override {
        if (IsDatabase(sOldPath))
            m_databases.Name(sOldPath, sNewPath);
        else
            ForwardingFiles::Name(sOldPath, sNewPath);
    }
    std::vector<Text> Drives() override {
        std::vector<Text> drives = ForwardingFiles::Drives();
        drives.emplace_back(u"Q:");
        return drives;
    }

  private:
    static bool IsDatabase(TextView sPath) { return sPath.ends_with(u".mdb"); }
    void RequireReady(TextView sPath) {
        if (std::ranges::count(badDrives, LCase(sPath.substr(0, 2))) != 0)
            Raise(ErrorNumber::DiskNotReady);
    }

    FolderFiles m_databases;
};

// A view that also writes down what the panels of the status bar, the progress bar and the view's
// text box became, each as u"2.Picture=picLinkUp", u"bar=on", u"view=" and its length.
class WatchingView : public memory::RecordingView {
  public:
    Texts stages;

    void PropertyChanged(Form& form, Control* control, TextView sProperty) override {
        RecordingView::PropertyChanged(form, control, sProperty);
        if (!control) return;
        if (auto* bar = As<StatusBar>(control)) NotePanel(*bar, sProperty);
        if (control->Name() == u"ProgressBar2" && sProperty == u"Visible")
            stages.push_back(control->Visible() ? u"bar=on" : u"bar=off");
        if (control->Name() == u"txtboxView" && sProperty == u"Text")
            stages.push_back(u"view=" + DecimalText(std::ssize(As<TextBox>(control)->Text())));
    }

  private:
    // The property is u"Panels(4).Text".
    void NotePanel(const StatusBar& bar, TextView sProperty) {
        if (!sProperty.starts_with(u"Panels(")) return;
        const char16_t cNumber = sProperty[7];
        const Panel& panel = bar.Panels(static_cast<std::int16_t>(cNumber - u'0'));
        const TextView sName = sProperty.substr(10);
        if (sName == u"Text") stages.push_back(Text(1, cNumber) + u".Text=" + panel.Text());
        if (sName == u"Picture")
            stages.push_back(Text(1, cNumber) + u".Picture=" + panel.Picture().sName);
    }
};

class PendantFixture : public ::testing::Test {
  protected:
    PendantFixture() {
        Platform platform = PortsOf(machine);
        platform.files = &files;
        SetPlatform(platform);
        SetLinkLibrary(&library);
        SetView(&view);
        g_sInstallDir = u"C:\\tqx";
        g_sTextFileExt = u"*.txt";
        g_sTextFileName = u"SymName";
        g_sTextFilePath = u"\\Data";
        machine.files.PutDirectory(u"C:\\tqx\\Roboter\\Init");
        machine.files.PutDirectory(u"C:\\tqx\\Roboter\\IBGN\\TQX\\R1\\IBGN");
        machine.files.Put(kTextFile, "IN_1 Gate\r\nIN_2 Door\r\n");
        machine.files.Put(u"C:\\tqx\\Data\\second.txt", "IN_7 Second\r\n");
        machine.files.Put(kProgram, kOldProgram);
        machine.files.Put(u"C:\\tqx\\Roboter\\TQX\\R1\\b.src", kOldProgram);
    }
    ~PendantFixture() override {
        UnloadForm(kStdBofFormClass);
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
        SetView(nullptr);
    }

    static constexpr TextView kTextFile = u"C:\\tqx\\Data\\names.txt";
    static constexpr TextView kProgram = u"C:\\tqx\\Roboter\\TQX\\R1\\a.src";
    static constexpr const char* kOldProgram = ";FOLD OUT 12 'Pump' State=TRUE\r\n";
    static constexpr const char* kNewProgram = ";FOLD OUT 12 'Cooling' State=TRUE\r\n";

    void BecomeCustomer(TextView sCustomer = u"VW") {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
    }
    void InstallAsciiOption() {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Options\\ASCII",
                                   u"Name", u"ASCII");
    }

    // The form of a run on the pendant.
    template <typename Kind = StdBofForm>
    Kind& LoadPendant() {
        g_bPendantMode = true;
        Form& loaded = LoadForm(std::make_unique<Kind>());
        loaded.SetLive(true);
        view.events.clear();
        view.stages.clear();
        return dynamic_cast<Kind&>(loaded);
    }

    // What the form shows; it must be loaded.
    static StdBofForm& Pendant() { return dynamic_cast<StdBofForm&>(*FindForm(kStdBofFormClass)); }
    static memory::PlayedUser User() { return memory::PlayedUser(Pendant()); }
    template <typename Kind>
    static Kind& Get(TextView sName) {
        return Pendant().Get<Kind>(sName);
    }
    static Panel& PanelOf(std::int16_t nPanel) {
        return Get<StatusBar>(u"StatusBar1").Panels(nPanel);
    }
    static Text PictureOf(std::int16_t nPanel) { return PanelOf(nPanel).Picture().sName; }
    static std::int16_t Short(int n) { return static_cast<std::int16_t>(n); }
    static void PressSoft(int nIndex) { User().Click(u"SoftKey", Short(nIndex)); }
    static void PressStatus(int nIndex) { User().Click(u"StatKeyL", Short(nIndex)); }
    static Text Focus() { return Pendant().Focus() ? Pendant().Focus()->FullName() : Text(); }
    static bool Seen(TextView sName) { return Get<Control>(sName).Visible(); }
    static bool On(TextView sName) { return Get<Control>(sName).Enabled(); }
    static Text Caption() { return Get<Frame>(u"RahmenFrm").Caption(); }
    // Of the soft keys 0, 1, 2, 5, 6 and the status keys 1 to 4 which are on: "+---+ +++-".
    static std::string Keys() {
        std::string sKeys;
        for (const int n : {0, 1, 2, 5, 6})
            sKeys += SoftKey(Pendant(), Short(n)).Enabled() ? '+' : '-';
        sKeys += ' ';
        for (const int n : {1, 2, 3, 4})
            sKeys += StatKeyL(Pendant(), Short(n)).Enabled() ? '+' : '-';
        return sKeys;
    }
    // Of the lists and boxes those that are seen.
    static Rows SeenControls() {
        Rows seen;
        for (const TextView sName : {u"Picture1", u"txtboxView", u"Drive1", u"Dir1", u"File1",
                                     u"File2", u"Text1", u"List1", u"TreeView1", u"chkBoxAdd",
                                     u"chkBoxSelAll", u"chkBoxSymbol", u"ProgressBar2"})
            if (Seen(sName)) seen.push_back(Printable(sName));
        return seen;
    }

    void Store(const std::string& sModule, const std::string& sKey, const std::string& sText) {
        db.Execute("INSERT INTO Items(Module,KeyString) VALUES('" + sModule + "','" + sKey +
                   "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items),99,'" + sText +
                   "');");
    }
    // All texts as "Key|Text", sorted.
    Rows Stored() const {
        Rows rows;
        for (const auto& row : db.Query("SELECT KeyString||'|'||String FROM Items "
                                        "JOIN Messages USING(Key_id) WHERE Language_id=99"))
            rows.push_back(row.front());
        std::ranges::sort(rows);
        return rows;
    }

    // Runs the act once, at the `nTh` progress step from now on, counted from 1.
    void AtStep(int nTh, std::function<void()> act) {
        view.onPendingEvents = [this, nTh, act = std::move(act), nSteps = 0]() mutable {
            if (++nSteps != nTh) return;
            const auto kept = act;
            view.onPendingEvents = nullptr;
            kept();
        };
    }
    // Whether the call ends the program.
    template <typename Call>
    static bool EndsProgram(Call call) {
        try {
            call();
        } catch (const ProgramEnd&) {
            return true;
        }
        return false;
    }

    memory::MemoryMachine machine;
    TestDatabase db;
    PendantFiles files{machine.files, db.Folder()};
    memory::ScriptedLinkLibrary library{machine.files};
    WatchingView view;
};

}  // namespace nomira::testing
