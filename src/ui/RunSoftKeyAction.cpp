#include "ui/RunSoftKeyAction.h"

#include "conversion/TextExport.h"
#include "conversion/TextImport.h"
#include "database/adoModul.h"
#include "frame/Settings.h"
#include "langtools/ProgramEnd.h"
#include "link/cVexonComm.h"
#include "ui/KeyStates.h"
#include "ui/PendantKeys.h"
#include "ui/StatusRoutines.h"
#include "ui/StdBofForm.h"
#include "userprogram/Customer2.h"
#include "userprogram/RewriteUserProgram.h"
#include "userprogram/Staging.h"

namespace nomira {
namespace {

// Runs a pass while the panel shows its picture.
template <typename Pass>
void WithStatus(const Form& form, const Picture& picture, Pass pass) {
    BeginStatus(form, u"", kActionPanel, picture);
    pass();
    EndStatus(form, kActionPanel);
}

bool IsChosen(const Form& form, TextView sOption) {
    return form.Get<RadioButton>(sOption).Value();
}

// ---- View, save ----

// The picture of a link that is up, whatever the link is.
void ViewDatabase(StdBofForm& form) {
    SetPanel(form, kLinkPanel, u"", {});
    ShowLinkUp(form);
    WithStatus(form, form.picRead(), [&] {
        auto& view = form.Get<TextBox>(u"txtboxView");
        view.SetText(u"");
        view.SetText(BuildLongTextDump());
    });
    ShowLinkUp(form);
    EnableRunKeys(form);
}

// The box keeps the operator's own text, whatever the pass makes of it.
void SaveView(StdBofForm& form) {
    BeginStatus(form, u"", kActionPanel, form.picWrite());
    Text sEdited = form.Get<TextBox>(u"txtboxView").Text();
    ApplyEditedText(sEdited);
    BeginStatus(form, u"", kActionPanel, form.picCompact());
    CompactLongTextDatabase();
    EndStatus(form, kActionPanel);
    EnableRunKeys(form);
}

// ---- Start ----

// On the pendant the box means "add", so that the old texts go if it isn't checked.
void ImportTextFile(const StdBofForm& form) {
    if (form.Get<CheckBox>(u"chkBoxAdd").Value() <= CheckBox::kCleared)
        WithStatus(form, form.picDelete(), [&] { ClearDbForTextFile(FirstSelectedFile1(form)); });
    WithStatus(form, form.picWrite(), [&] { TextIntoDb(FirstSelectedFile1(form)); });
}

void HarvestOrImport(const StdBofForm& form) {
    if (IsCustomerVw() && HarvestFile(FirstSelectedFile1(form)))
        WithStatus(form, form.picWrite(), [&] { WriteHarvest(form); });
    else
        ImportTextFile(form);
}

void ExportTextFile(const StdBofForm& form) {
    const Text sPath = ExportTargetPath(form);
    if (!sPath.empty()) WithStatus(form, form.picRead(), [&] { DbIntoText(sPath); });
}

// On the controller or, without a link, the first selected one of the disk: without a selection an
// empty path, at which the rewriter fails.
void RewritePrograms(const StdBofForm& form, bool bConnected) {
    if (!IsChosen(form, u"Option3")) return;
    if (bConnected)
        WithStatus(form, form.picWrite(), [&] { StagedRewriteOnController(form); });
    else if (!g_Comm().IsVexonConnected())
        RewriteUserProgram(FirstSelectedFile2(form));
}

// Without an option, too, the link is connected.
void Convert(StdBofForm& form) {
    if (IsChosen(form, u"Option1"))
        HarvestOrImport(form);
    else if (IsChosen(form, u"Option2"))
        ExportTextFile(form);
    else
        RewritePrograms(form, g_Comm().ConnectingVexon(form.Class(), &form));
}

void StartConversion(StdBofForm& form) {
    Convert(form);
    EnableRunKeys(form);
    SetVisible(form, {u"ProgressBar2"}, false);
}

// ---- Exit ----

void ExitProgram(StdBofForm& form) {
    RemovePendantKeys(form);
    g_Comm().ExitVexonComm();
    std::int16_t nCancel = 0;
    form.Form_Unload(nCancel);
    ClearTempDir();
    EndProgram();
}

struct Action {
    std::int16_t nIndex;
    void (*run)(StdBofForm& form);
};

constexpr Action kActions[] = {
    {0, ViewDatabase}, {1, SaveView}, {5, StartConversion}, {6, ExitProgram}};

}  // namespace

void RunSoftKeyAction(StdBofForm& form, std::int16_t nIndex, TextView) {
    for (const Action& action : kActions)
        if (action.nIndex == nIndex) action.run(form);
}

}  // namespace nomira
