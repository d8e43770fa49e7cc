#include "ui/Options.h"

#include <array>
#include <cstdint>
#include <optional>

#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"
#include "platform/Files.h"
#include "ui/FormAccess.h"
#include "ui/StatusRoutines.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

constexpr std::optional<bool> kUnchanged = std::nullopt;
constexpr TextView kProgramFolder = u"\\Roboter\\TQX\\R1";
constexpr std::int32_t kExtensionLength = 4;  // .txt and its like
constexpr std::int16_t kStatusKeys = 4;

// Which controls an option shows.
struct OptionView {
    bool bName;  // Text1
    std::optional<bool> view;
    bool bFile1, bFile2;
    std::optional<bool> robotLists;  // List1 and TreeView1
    bool bAdd, bSelAll;
};

// What an option does to the pendant's keys and panels.
struct OptionKeys {
    TextView sButton;
    bool bClearsAction;  // panel 3
    bool bCaptionLast;   // behind the panels rather than ahead of them
    // Of the status keys 1 to 4.
    std::array<std::optional<bool>, kStatusKeys> enabled;
};

constexpr OptionView kView1{false, false, true, false, false, true, false};
constexpr OptionView kView2{true, false, false, false, false, false, false};
constexpr OptionView kView3{false, kUnchanged, false, true, kUnchanged, false, true};

constexpr OptionKeys kKeys1{u"Option1", true, false, {false, true, true, true}};
// The third key follows from the customer.
constexpr OptionKeys kKeys2{u"Option2", true, false, {true, false, kUnchanged, false}};
constexpr OptionKeys kKeys3{u"Option3", false, true, {true, true, false, true}};

void GoTo(const Form& form, TextView sFolder) {
    if (g_sInstallDir.empty()) return;
    // The lists stay where they are if the folder isn't there.
    IgnoreFailure(
        [&] { form.Get<DriveListBox>(u"Drive1").SetDrive(Left(g_sInstallDir, kRootLength)); });
    IgnoreFailure(
        [&] { form.Get<DirListBox>(u"Dir1").SetPath(Text(g_sInstallDir).append(sFolder)); });
}

void AskForName(const Form& form) {
    auto& name = form.Get<TextBox>(u"Text1");
    name.SetText(Text(g_sTextFileName).append(Right(g_sTextFileExt, kExtensionLength)));
    name.SetVisible(true);
    name.SetFocus();
}

void ShowNameAndView(const Form& form, const OptionView& option) {
    if (option.bName)
        AskForName(form);
    else
        SetVisible(form, {u"Text1"}, false);
    if (option.view) SetVisible(form, {u"txtboxView"}, *option.view);
}

void ShowLists(const Form& form, const OptionView& option) {
    SetVisible(form, {u"File1"}, option.bFile1);
    SetVisible(form, {u"File2"}, option.bFile2);
    if (option.robotLists) SetVisible(form, {u"List1", u"TreeView1"}, *option.robotLists);
    SetVisible(form, {u"chkBoxAdd"}, option.bAdd);
    SetVisible(form, {u"chkBoxSelAll"}, option.bSelAll);
}

void ClearPanels(const Form& form, const OptionKeys& option) {
    if (option.bClearsAction) form.Get<StatusBar>(u"StatusBar1").Panels(kActionPanel).SetText(u"");
    SetPanel(form, kMessagePanel, u"", {});
}

void TakeCaption(const Form& form, TextView sButton) {
    form.Get<Frame>(u"RahmenFrm").SetCaption(form.Get<RadioButton>(sButton).Caption());
}

void ShowKeys(const Form& form, const OptionKeys& option) {
    SetVisible(form, {u"Picture1"}, false);
    if (!option.bCaptionLast) TakeCaption(form, option.sButton);
    ClearPanels(form, option);
    if (option.bCaptionLast) TakeCaption(form, option.sButton);
    SoftKey(form, 5).SetEnabled(true);
    // A new value fires the button's handler, and this routine runs once more to its end in
    // between: the status key of the option is still enabled.
    auto& button = form.Get<RadioButton>(option.sButton);
    button.SetValue(true);
    button.SetTabStop(false);
    for (std::int16_t n = 1; n <= kStatusKeys; ++n)
        if (const auto& enabled = option.enabled[n - 1]) StatKeyL(form, n).SetEnabled(*enabled);
}

// Whichever form it is, the option is open to a start.
void ShowByKind(const Form& form, const OptionKeys& option) {
    if (IsDesktopForm(form)) SetVisible(form, {u"cmdStart"}, true);
    if (IsPendantForm(form)) ShowKeys(form, option);
}

void OfferBoxes(const Form& form) {
    SetEnabled(form, {u"chkBoxAdd"}, true);
    if (IsCustomerVw()) SetEnabled(form, {u"chkBoxSymbol"}, true);
}

void ShowNameKeys(const Form& form) {
    Button& key = StatKeyL(form, 2);
    key.SetPicture(Listed(form, u"ImageList2", 3));
    key.SetDisabledPicture(Listed(form, u"ImageList2", 4));
    const bool bVw = IsCustomerVw();
    StatKeyL(form, 3).SetEnabled(!bVw);
    if (!bVw) return;
    SetEnabled(form, {u"chkBoxSymbol"}, false);
    SetVisible(form, {u"chkBoxAdd"}, true);
    SetEnabled(form, {u"chkBoxAdd"}, false);
}

}  // namespace

void ShowOption1(const Form& form) {
    ShowNameAndView(form, kView1);
    auto& files = form.Get<FileListBox>(u"File1");
    files.SetPattern(g_sTextFileExt);
    SetVisible(form, {u"Dir1", u"Drive1"}, true);
    GoTo(form, g_sTextFilePath);
    files.Refresh();
    ShowLists(form, kView1);
    ShowByKind(form, kKeys1);
    if (IsPendantForm(form)) OfferBoxes(form);
}

void ShowOption2(const Form& form) {
    ShowNameAndView(form, kView2);
    SetVisible(form, {u"Dir1", u"Drive1"}, true);
    GoTo(form, g_sTextFilePath);
    ShowLists(form, kView2);
    ShowByKind(form, kKeys2);
    if (IsPendantForm(form)) ShowNameKeys(form);
}

void ShowOption3(const Form& form) {
    ShowNameAndView(form, kView3);
    SetVisible(form, {u"Dir1", u"Drive1"}, true);
    GoTo(form, kProgramFolder);
    form.Get<FileListBox>(u"File2").Refresh();
    ShowLists(form, kView3);
    ShowByKind(form, kKeys3);
}

}  // namespace nomira
