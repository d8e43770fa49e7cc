#include "ui/StatusRoutines.h"

#include "frame/Progress.h"
#include "ui/FormAccess.h"
#include "ui/formlayer/StatusBar.h"

namespace nomira {
namespace {

Panel& PanelOf(const Form& form, std::int16_t nPanel) {
    return form.Get<StatusBar>(u"StatusBar1").Panels(nPanel);
}

}  // namespace

void SetPanel(const Form& form, std::int16_t nPanel, TextView sText, const Picture& picture) {
    Panel& panel = PanelOf(form, nPanel);
    panel.SetText(sText);
    panel.SetPicture(picture);
}

void ShowLinkUp(const Form& form) {
    PanelOf(form, kLinkPanel).SetPicture(Listed(form, u"ImageList3", 2));
}

void BeginStatus(const Form& form, TextView sText, std::int16_t nPanel, const Picture& picture) {
    g_bProgressReset = true;
    SetVisible(form, {u"ProgressBar2"}, true);
    SetPanel(form, nPanel, sText, picture);
}

void EndStatus(const Form& form, std::int16_t nPanel) {
    SetVisible(form, {u"ProgressBar2"}, false);
    SetPanel(form, nPanel, u"", {});
}

}  // namespace nomira
