#include "ui/KeyStates.h"

#include <cstdint>

#include "frame/ProgramVariables.h"
#include "ui/FormAccess.h"
#include "ui/FormLayout.h"
#include "ui/Options.h"

namespace nomira {
namespace {

constexpr std::int16_t kRunKeys[] = {0, 1, 2, 5};     // soft keys
constexpr std::int16_t kOptionKeys[] = {1, 2, 3, 4};  // status keys

void EnableOptions(const Form& form, bool bEnabled) {
    SetEnabled(form, {u"Option1", u"Option2", u"Option3"}, bEnabled);
}

void ShowView(const Form& form) {
    SetVisible(form, {u"Drive1", u"Dir1", u"File1", u"File2", u"List1", u"Text1", u"TreeView1"},
               false);
    auto& view = form.Get<TextBox>(u"txtboxView");
    view.SetVisible(true);
    view.SetFocus();
    SetVisible(form, {u"ProgressBar2"}, true);
}

// Where the way back from the view leads.
struct Return {
    TextView sButton;
    void (*show)(const Form& form);  // shows all that the view has hidden of the option
    TextView sFocus;
};

constexpr Return kReturns[] = {
    {u"Option1", ShowOption1, u"File1"},
    {u"Option2", ShowOption2, u"Text1"},
    {u"Option3", ShowOption3, u"File2"},
};

void ReturnToOption(const Form& form) {
    for (const Return& row : kReturns) {
        if (!form.Get<RadioButton>(row.sButton).Value()) continue;
        row.show(form);
        form.Get<Control>(row.sFocus).SetFocus();
        return;
    }
    InitFormLayout(form);
}

}  // namespace

void EnterDatabaseView(const Form& form) {
    EnableOptions(form, false);
    for (const std::int16_t nKey : kOptionKeys)
        StatKeyL(form, nKey).SetEnabled(false);
    DisableRunKeys(form);
    ShowView(form);
    if (!IsPendantForm(form)) return;
    SetVisible(form, {u"Picture1"}, false);
    form.Get<Frame>(u"RahmenFrm").SetCaption(g_sDatabaseViewCaption);
}

void LeaveDatabaseView(const Form& form) {
    EnableOptions(form, true);
    SoftKey(form, 1).SetEnabled(false);
    SoftKey(form, 2).SetEnabled(false);
    SoftKey(form, 5).SetEnabled(true);
    SetVisible(form, {u"txtboxView"}, false);
    if (IsPendantForm(form)) ReturnToOption(form);
}

void DisableRunKeys(const Form& form) {
    for (const std::int16_t nKey : kRunKeys)
        SoftKey(form, nKey).SetEnabled(false);
}

void EnableRunKeys(const Form& form) {
    SoftKey(form, 0).SetEnabled(true);
    if (form.Get<Control>(u"txtboxView").Visible()) {
        SoftKey(form, 1).SetEnabled(true);
        SoftKey(form, 2).SetEnabled(true);
    } else {
        SoftKey(form, 5).SetEnabled(true);
    }
}

}  // namespace nomira
