#include "ui/RunConversion.h"

#include <algorithm>

#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "frame/KillProcess.h"
#include "frame/Progress.h"
#include "frame/Settings.h"
#include "platform/Platform.h"
#include "ui/FormAccess.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"
#include "userprogram/Customer2.h"
#include "userprogram/RewriteUserProgram.h"
#include "userprogram/Staging.h"

namespace nomira {
namespace {

constexpr float kProgressMax = 27;
constexpr TextView kMiddlewareProcesses[] = {u"Orvo-Vexon 3.EXE", u"VEXON3.EXE"};

StatusBar& Bar(const Form& form) {
    return form.Get<StatusBar>(u"StatusBar1");
}

ProgressBar& Progress(const Form& form) {
    return form.Get<ProgressBar>(u"ProgressBar1");
}

void ShowWork(const Form& form, TextView sWork) {
    Bar(form).Panels(kWorkPanel).SetText(sWork);
}

void EnableLeaving(const Form& form, bool bEnabled) {
    SetEnabled(form, {u"cmdExit", u"cmdView"}, bEnabled);
}

void AskForSelection() {
    TheDesktop().ShowMessageBox(u"Please choose one file at least !", u"Tip", BoxIcon::Exclamation);
}

// ---- The options: each is false if nothing is selected, which ends the run at once ----

void ImportFile(const Form& form, TextView sPath) {
    if (IsCustomerVw() && HarvestFile(sPath)) {
        ShowWork(form, u"converting data");
        WriteHarvest(form);
        return;
    }
    if (form.Get<CheckBox>(u"chkBoxAdd").Value() == CheckBox::kChecked) {
        ShowWork(form, u"deleting data");
        ClearDbForTextFile(sPath);
    }
    ShowWork(form, u"converting data");
    TextIntoDb(sPath);
}

bool ImportSelectedFiles(const Form& form) {
    if (!HasSelectionFile1(form)) return false;
    const auto& list = form.Get<FileListBox>(u"File1");
    for (const Text& sName : SelectedNames(list))
        ImportFile(form, PathInList(list, sName));
    return true;
}

bool ExportToFile(const Form& form) {
    DbIntoText(ExportTargetPath(form));
    return true;
}

bool IsMiddlewareRunning() {
    return std::ranges::any_of(kMiddlewareProcesses, IsProcessRunning);
}

// A missing selection shows in the status bar here, and the run ends as any other.
void RewriteOnTheController(const Form& form) {
    const auto entries = CollectSelectedFile2(form);
    if (!entries) return;
    if (entries->empty())
        AskForSelection();
    else
        RewriteOnController(*entries);
}

void RewriteOnDisk(const Form& form) {
    const auto& list = form.Get<FileListBox>(u"File2");
    for (const Text& sName : SelectedNames(list)) {
        ShowWork(form, sName);
        Bar(form).Refresh();
        RewriteUserProgram(PathInList(list, sName));
    }
}

bool RewriteSelectedPrograms(const Form& form) {
    if (IsMiddlewareRunning()) {
        RewriteOnTheController(form);
        return true;
    }
    if (!HasSelectionFile2(form)) return false;
    RewriteOnDisk(form);
    return true;
}

struct Option {
    TextView sButton;
    bool (*run)(const Form&);
};

constexpr Option kOptions[] = {{u"Option1", ImportSelectedFiles},
                               {u"Option2", ExportToFile},
                               {u"Option3", RewriteSelectedPrograms}};

// True without a chosen option.
bool RunChosenOption(const Form& form) {
    const auto* chosen = std::ranges::find_if(kOptions, [&](const Option& option) {
        return form.Get<RadioButton>(option.sButton).Value();
    });
    return chosen == std::end(kOptions) || chosen->run(form);
}

// ---- The run around them ----

void SaveView(const Form& form) {
    ShowWork(form, u"saving data");
    Bar(form).Refresh();
    Progress(form).SetVisible(true);
    Text sEdited = form.Get<TextBox>(u"txtboxView").Text();
    ApplyEditedText(sEdited);
    Progress(form).SetVisible(false);
    ShowWork(form, u"");
    EnableLeaving(form, true);
}

void StartProgress(const Form& form) {
    ProgressBar& bar = Progress(form);
    bar.SetValue(bar.Min());
    bar.SetVisible(true);
    g_bProgressReset = true;
}

void ShowFinished(const Form& form) {
    EnableLeaving(form, true);
    Progress(form).SetVisible(false);
    ShowWork(form, u"program");
    Bar(form).Panels(kResultPanel).SetText(u"finished!");
    Bar(form).Refresh();
}

}  // namespace

void RunConversion(const Form& form) {
    EnableLeaving(form, false);
    Progress(form).SetMin(0);
    Progress(form).SetMax(kProgressMax);
    if (Equal(form.Get<Button>(u"cmdStart").Caption(), kSaveCaption)) {
        SaveView(form);
        return;
    }
    StartProgress(form);
    if (RunChosenOption(form)) {
        ShowFinished(form);
        return;
    }
    AskForSelection();
    EnableLeaving(form, true);
}

}  // namespace nomira
