// What the tests of the desktop form stand on: a machine in memory, a store of its own, a
// controller that answers as told, and the form with a view that writes down every step.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/PlayedUser.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/BasicText.h"
#include "link/cVexonComm.h"
#include "platform/Platform.h"
#include "testing/NotingFiles.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira::testing {

using Texts = std::vector<Text>;

// Writes down, in their order, the changes of a form's controls as u"cmdStart.Enabled=False" (with
// the value where it is a boolean, a caption or a panel's text), refreshes as
// u"StatusBar1.Refresh", and the yields as u"pending events".
class StepView : public memory::RecordingView {
  public:
    Texts steps;

    void PropertyChanged(Form& form, Control* control, TextView sProperty) override {
        RecordingView::PropertyChanged(form, control, sProperty);
        if (control)
            steps.push_back((control->FullName() + u".").append(sProperty) +
                            ValueOf(*control, sProperty));
    }
    void Refreshed(Control& control) override { steps.push_back(control.FullName() + u".Refresh"); }
    void ProcessPendingEvents() override {
        steps.emplace_back(u"pending events");
        RecordingView::ProcessPendingEvents();
    }

    // The place of the first such step, counted from 0; as many as there are steps if there is
    // none.
    std::ptrdiff_t PlaceOf(TextView sStep) const {
        return std::ranges::find(steps, sStep) - steps.begin();
    }
    bool Has(TextView sStep) const { return std::ranges::find(steps, sStep) != steps.end(); }

  private:
    static Text ValueOf(Control& control, TextView sProperty) {
        if (sProperty == u"Visible") return control.Visible() ? u"=True" : u"=False";
        if (sProperty == u"Enabled") return control.Enabled() ? u"=True" : u"=False";
        if (const auto* button = As<Button>(&control); button && sProperty == u"Caption")
            return u"=" + button->Caption();
        const auto* bar = As<StatusBar>(&control);
        if (bar && sProperty.starts_with(u"Panels(") && sProperty.ends_with(u").Text"))
            return u"=" + bar->Panels(static_cast<std::int16_t>(Val(Mid(sProperty, 8)))).Text();
        return {};
    }
};

// The disk as it is, but for drives that it has and that can't be read.
class DrivesWithoutDisk : public NotingFiles {
  public:
    using NotingFiles::NotingFiles;
    // Such drives, as u"D:", and the number that reading one raises.
    Texts drives;
    ErrorNumber number = ErrorNumber::DeviceUnavailable;
    // A system without drives at all.
    bool bNone = false;

    Texts Drives() override {
        if (bNone) return {};
        Texts all = NotingFiles::Drives();
        for (const Text& sDrive : drives)
            if (std::ranges::find(all, sDrive) == all.end()) all.push_back(sDrive);
        std::ranges::sort(all);
        return all;
    }
    std::uint16_t GetAttr(TextView sPath) override {
        const bool bBad = std::ranges::any_of(
            drives, [&](const Text& sDrive) { return EqualNoCase(Left(sPath, 2), sDrive); });
        if (bBad) Raise(number);
        return NotingFiles::GetAttr(sPath);
    }
};

class DesktopFixture : public ::testing::Test {
  protected:
    memory::MemoryMachine machine;
    TestDatabase db;
    memory::ScriptedLinkLibrary library{machine.files};
    StepView view;
    // What the file statements note goes among the view's steps.
    DrivesWithoutDisk disk{machine.files, view.steps};
    Form* form = nullptr;

    DesktopFixture() {
        SetPlatform({&machine.registry, &machine.processes, &machine.locale, &machine.desktop,
                     &disk, &machine.closedLibrary, u""});
        SetLinkLibrary(&library);
        g_sTextFileExt = u"*.txt";
        g_sTextFileName = u"names";
    }
    ~DesktopFixture() override {
        SetView(nullptr);
        UnloadForm(kNomiraMainClass);
        UnloadForm(kStdBofFormClass);
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }

    // The form as Main shows it. The steps of its load are forgotten.
    void Show() {
        SetView(&view);
        form = &LoadForm(std::make_unique<NomiraMain>());
        form->SetLive(true);
        form->Show();
        view.steps.clear();
    }
    memory::PlayedUser User() const { return memory::PlayedUser(*form); }
    template <typename Kind>
    Kind& Get(TextView sName) const {
        return form->Get<Kind>(sName);
    }
    bool IsEnabled(TextView sName) const { return Get<Control>(sName).Enabled(); }
    Text Panel(std::int16_t nPanel) const {
        return Get<StatusBar>(u"StatusBar1").Panels(nPanel).Text();
    }

    // The controls that the operator sees, in the order of the form's design.
    Texts Seen() const {
        Texts names;
        form->ForEachControl([&](const Control& control) {
            if (control.Visible() && !control.Name().starts_with(u"ImageList"))
                names.push_back(control.FullName());
        });
        return names;
    }

    static Texts Entries(const SelectionList& list) {
        Texts names;
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            names.push_back(list.List(n));
        return names;
    }
    static Texts Selected(const SelectionList& list) {
        Texts names;
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            if (list.Selected(n)) names.push_back(list.List(n));
        return names;
    }

    void RunMiddleware(TextView sName = u"vexon3.exe") {
        machine.processes.Add(Text(u"C:\\tqx\\").append(sName));
    }
    void BecomeCustomer(TextView sCustomer = u"VW") {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
    }

    // What the controller answers when its directories, or its programs, are asked for.
    void SetDirectories(const Texts& names) { library.listings[u"TQX:\\\\R1\\*."] = names; }
    void SetPrograms(const Texts& names) { library.listings[u"TQX:\\\\R1\\"] = names; }
    int Calls(TextView sCall) const {
        return static_cast<int>(
            std::ranges::count_if(library.calls, [&](TextView s) { return s.starts_with(sCall); }));
    }

    void Store(const std::string& sModule, const std::string& sKey, const std::string& sText) {
        db.Execute("INSERT INTO Items(Module,KeyString) VALUES('" + sModule + "','" + sKey +
                   "');INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items),99,'" + sText +
                   "');");
    }
    // All texts as "Key|Text", sorted by bytes.
    std::vector<std::string> Stored() const {
        std::vector<std::string> rows;
        for (const auto& row : db.Query("SELECT KeyString||'|'||String FROM Items "
                                        "JOIN Messages USING(Key_id) WHERE Language_id=99"))
            rows.push_back(row.front());
        std::ranges::sort(rows);
        return rows;
    }
};

}  // namespace nomira::testing
