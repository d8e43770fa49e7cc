#include "ui/FormLayout.h"

#include "frame/Settings.h"
#include "ui/AppVersion.h"
#include "ui/FormAccess.h"
#include "ui/PendantKeys.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

// Places in a picture list are one-based.
struct SoftKeyPicture {
    std::int16_t nKey, nPlace;
};
constexpr SoftKeyPicture kSoftKeyPictures[] = {{0, 1}, {1, 2}, {2, 3}, {5, 4}, {6, 5}};

struct StatusKeyPicture {
    std::int16_t nKey, nPlace, nDisabledPlace;
};
constexpr StatusKeyPicture kStatusKeyPictures[] = {{1, 1, 2}, {2, 3, 4}, {3, 5, 6}, {4, 7, 8}};
// The third key stands for the box of the short symbols there, and wears the picture of the fourth.
constexpr StatusKeyPicture kThirdKeyOfVw{3, 7, 8};

constexpr bool kStatusKeyEnabled[] = {false, true, true, true, false, false};
constexpr std::int16_t kLastSoftKey = 6;

void HideLists(const Form& form) {
    SetVisible(form, {u"Text1", u"txtboxView", u"File1"}, false);
    form.Get<FileListBox>(u"File1").SetPattern(g_sTextFileExt);
    SetVisible(form, {u"File2"}, false);
    form.Get<FileListBox>(u"File2").SetPattern(kProgramPattern);
    SetVisible(form, {u"List1", u"TreeView1", u"chkBoxAdd", u"chkBoxSelAll"}, false);
}

void ShowStartScreen(const Form& form) {
    form.Get<Frame>(u"RahmenFrm").SetCaption(form.Get<TextBox>(u"Text2").Text());
    SetVisible(form, {u"Picture1"}, true);
    form.Get<TextBox>(u"txtVersion").SetText(VersionText(TheAppVersion()));
    SetVisible(form, {u"Dir1", u"Drive1"}, false);
}

void InitSoftKeys(const Form& form) {
    for (std::int16_t n = 1; n <= 5; ++n)
        SoftKey(form, n).SetEnabled(false);
    for (std::int16_t n = 0; n <= kLastSoftKey; ++n)
        SoftKey(form, n).SetCaption(u"");
    for (const auto& [nKey, nPlace] : kSoftKeyPictures)
        SoftKey(form, nKey).SetPicture(Listed(form, u"ImageList4", nPlace));
}

void InitStatusKeys(const Form& form) {
    std::int16_t nKey = 0;
    for (const bool bEnabled : kStatusKeyEnabled) {
        StatKeyL(form, nKey).SetCaption(u"");
        StatKeyL(form, nKey++).SetEnabled(bEnabled);
    }
}

void SetPictures(const Form& form, const StatusKeyPicture& row) {
    Button& key = StatKeyL(form, row.nKey);
    key.SetPicture(Listed(form, u"ImageList2", row.nPlace));
    key.SetDisabledPicture(Listed(form, u"ImageList2", row.nDisabledPlace));
}

void ClearOptions(const Form& form) {
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
        form.Get<RadioButton>(sOption).SetValue(false);
}

void InitVariant(const Form& form) {
    const bool bVw = IsCustomerVw();
    for (const StatusKeyPicture& row : kStatusKeyPictures)
        SetPictures(form, bVw && row.nKey == kThirdKeyOfVw.nKey ? kThirdKeyOfVw : row);
    SetVisible(form, {u"Option3"}, !bVw);
    ClearOptions(form);
    SetVisible(form, {u"chkBoxSymbol"}, bVw);
    if (!bVw) return;
    SetVisible(form, {u"chkBoxAdd"}, true);
    SetEnabled(form, {u"chkBoxAdd", u"chkBoxSymbol"}, false);
}

void InitPendant(const Form& form) {
    ShowStartScreen(form);
    InitSoftKeys(form);
    InitStatusKeys(form);
    for (std::int16_t n = 0; n <= kLastSoftKey; ++n)
        SoftKey(form, n).SetFontBold(true);
    InitVariant(form);
}

}  // namespace

void InitFormLayout(const Form& form) {
    AddPendantKeys(form);
    HideLists(form);
    if (IsDesktopForm(form)) SetVisible(form, {u"cmdStart"}, false);
    if (IsPendantForm(form)) InitPendant(form);
}

void InitStatusLayout(const Form& form) {
    auto& bar = form.Get<StatusBar>(u"StatusBar1");
    const auto& view = form.Get<Control>(u"txtboxView");
    bar.Panels(3).SetMinWidth(form.Get<Control>(u"Drive1").Width() - 100);
    bar.Panels(4).SetMinWidth(view.Width());
    auto& progress = form.Get<ProgressBar>(u"ProgressBar2");
    progress.Move(bar.Panels(4).Left() + 50, bar.Top() + 100, view.Width() - 1920,
                  bar.Height() - 200);
    progress.SetVisible(false);
}

}  // namespace nomira
