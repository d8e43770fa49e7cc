// The three forms in their states: what is on the screen is what the form objects have. A
// screenshot of each state goes into the build's folder of screenshots.
#include <malloc.h>

#include "WindowFixture.h"
#include "adapters/memory/PlayedUser.h"
#include "adapters/memory/ScriptedLinkLibrary.h"
#include "frame/ProgramVariables.h"
#include "frame/Progress.h"
#include "frame/Settings.h"
#include "link/cVexonComm.h"
#include "testing/TestDatabase.h"
#include "ui/FormAccess.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/StdForm.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira::wx {
namespace {

class FormWindowsTest : public WindowTest {
  protected:
    FormWindowsTest() {
        for (const char16_t* pName : {u"C:\\longnames.txt", u"C:\\old.txt", u"C:\\cell1.src",
                                      u"C:\\home.src", u"C:\\R1\\a.src", u"C:\\texts\\b.txt"})
            machine.files.Put(pName, "IN_1 Pump\r\n");
        SetLinkLibrary(&library);
        g_sTextFileExt = u"*.txt";
        g_sTextFileName = u"longnames";
        db.Execute(
            "INSERT INTO Items(Module,KeyString) VALUES('IO','IN_1');"
            "INSERT INTO Messages VALUES((SELECT max(Key_id) FROM Items),99,'Pump at the gate');");
    }
    ~FormWindowsTest() override {
        for (const TextView sClass : {kNomiraMainClass, kStdBofFormClass, kStdFormClass})
            UnloadForm(sClass);
        g_Comm().ExitVexonComm();
        SetLinkLibrary(nullptr);
    }

    template <typename Kind>
    Form& Show() {
        Form& form = LoadForm(std::make_unique<Kind>());
        form.SetLive(true);
        form.Show();
        return form;
    }
    Form& ShowPendant(TextView sCustomer) {
        machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version",
                                   u"Customer", sCustomer);
        g_bPendantMode = true;
        return Show<StdBofForm>();
    }
    // Presses each of the buttons, and compares the form and takes its picture after it.
    struct Step {
        TextView sControl;
        int nIndex;  // -1 for no element of an array
        const char* pName;
    };
    void Walk(Form& form, std::initializer_list<Step> steps) {
        for (const auto& [sControl, nIndex, pName] : steps) {
            SCOPED_TRACE(pName);
            memory::PlayedUser user(form);
            if (nIndex < 0)
                user.Click(sControl);
            else
                user.Click(sControl, static_cast<std::int16_t>(nIndex));
            ExpectInStep(form);
            TakeScreenshot(form, pName);
        }
    }

    testing::TestDatabase db;
    memory::ScriptedLinkLibrary library{machine.files};
};

TEST_F(FormWindowsTest, TheDesktopForm) {
    Form& form = Show<NomiraMain>();
    ExpectInStep(form);
    TakeScreenshot(form, "desktop-start");
    Walk(form, {{u"Option1", -1, "desktop-option1"},
                {u"Option2", -1, "desktop-option2"},
                {u"Option3", -1, "desktop-option3"},
                {u"chkBoxSelAll", -1, "desktop-select-all"},
                {u"cmdView", -1, "desktop-view"},
                {u"cmdExit", -1, "desktop-after-view"}});
}

// The sanitizers tell of leaks besides; here it is what stays in use.
TEST_F(FormWindowsTest, ViewsOpenedOverAndOverKeepNoMemory) {
    Form& form = Show<NomiraMain>();
    memory::PlayedUser user(form);
    const auto open = [&](int nTimes) {
        for (int n = 0; n < nTimes; ++n) {
            for (const TextView sButton : {u"cmdView", u"cmdExit"}) {
                user.Click(sButton);
                view->ProcessPendingEvents();
            }
        }
        return mallinfo2().uordblks;
    };
    const std::size_t nBefore = open(50);
    const std::size_t nAfter = open(1000);
    EXPECT_LT(nAfter, nBefore + 200 * 1024);
}

TEST_F(FormWindowsTest, TheDesktopFormWithALink) {
    machine.processes.Add(u"C:\\tqx\\vexon3.exe");
    library.listings[u"TQX:\\\\R1\\*."] = {u"Program", u"System"};
    library.listings[u"TQX:\\\\R1\\"] = {u"cell1.src", u"home.src"};
    Form& form = Show<NomiraMain>();
    Walk(form, {{u"Option3", -1, "desktop-tree"}});
}

TEST_F(FormWindowsTest, TheDesktopFormWithoutADatabase) {
    db.RemoveFile();
    Form& form = Show<NomiraMain>();
    ExpectInStep(form);
    TakeScreenshot(form, "desktop-no-database");
}

TEST_F(FormWindowsTest, ADesktopPassOnItsWay) {
    Form& form = Show<NomiraMain>();
    form.Get<ProgressBar>(u"ProgressBar1").SetVisible(true);
    form.Get<StatusBar>(u"StatusBar1").Panels(2).SetText(u"converting data");
    form.Get<StatusBar>(u"StatusBar1").Refresh();
    for (int n = 0; n < 15; ++n)
        AdvanceProgress();
    ExpectInStep(form);
    TakeScreenshot(form, "desktop-running");
}

TEST_F(FormWindowsTest, ThePendantForm) {
    Form& form = ShowPendant(u"another");
    ExpectInStep(form);
    TakeScreenshot(form, "pendant-start");
    Walk(form, {{u"StatKeyL", 1, "pendant-option1"},
                {u"StatKeyL", 2, "pendant-option2"},
                {u"StatKeyL", 3, "pendant-option3"},
                {u"StatKeyL", 4, "pendant-select-all"},
                {u"SoftKey", 0, "pendant-view"},
                {u"SoftKey", 2, "pendant-after-view"},
                {u"SoftKey", 5, "pendant-after-run"}});
}

TEST_F(FormWindowsTest, ThePendantFormOfVw) {
    Form& form = ShowPendant(u"VW");
    ExpectInStep(form);
    TakeScreenshot(form, "pendant-vw-start");
    Walk(form, {{u"StatKeyL", 1, "pendant-vw-option1"},
                {u"StatKeyL", 3, "pendant-vw-symbols"},
                {u"StatKeyL", 2, "pendant-vw-option2"}});
}

TEST_F(FormWindowsTest, WhatIsDisabledIsWrittenInGreyOnATintedForm) {
    Form& form = ShowPendant(u"VW");
    const auto written = [&](TextView sControl) {
        view->ShowChanges();
        return view->WindowOf(form.Get<Control>(sControl))->GetForegroundColour();
    };
    EXPECT_EQ(written(u"Option1"), *wxBLACK);
    EXPECT_NE(written(u"chkBoxSymbol"), *wxBLACK);
    form.Get<Control>(u"chkBoxSymbol").SetEnabled(true);
    EXPECT_EQ(written(u"chkBoxSymbol"), *wxBLACK);
}

TEST_F(FormWindowsTest, ThePendantFormWithoutADatabase) {
    db.RemoveFile();
    Form& form = ShowPendant(u"another");
    ExpectInStep(form);
    TakeScreenshot(form, "pendant-no-database");
}

TEST_F(FormWindowsTest, ThePendantFormAsDesigned) {
    Form& form = Show<StdBofForm>();
    ExpectInStep(form);
    TakeScreenshot(form, "pendant-designed");
}

TEST_F(FormWindowsTest, TheBatchForm) {
    Form& form = Show<StdForm>();
    form.SetCaption(u"TQX Longname - Conversion");
    form.Get<Label>(u"Information").SetCaption(u"converting textfile into database");
    form.Get<ProgressBar>(u"ProgressBar").SetValue(37);
    ExpectInStep(form);
    TakeScreenshot(form, "batch");
}

}  // namespace
}  // namespace nomira::wx
