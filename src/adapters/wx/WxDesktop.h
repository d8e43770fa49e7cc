// The desktop of a machine with a screen: message boxes are windows, the screen has its real size.
// The rest, such as the other instance, is another desktop's work.
#pragma once

#include "adapters/wx/WxView.h"
#include "platform/Desktop.h"

namespace nomira::wx {

class WxDesktop : public Desktop {
  public:
    // Both must outlive the desktop.
    WxDesktop(WxView& view, Desktop& rest) : m_view(view), m_rest(rest) {}

    bool PreviousInstance() override { return m_rest.PreviousInstance(); }
    void ActivateByTitle(TextView sTitle) override { m_rest.ActivateByTitle(sTitle); }
    std::optional<WindowHandle> FindWindow(TextView sTitle) override {
        return m_rest.FindWindow(sTitle);
    }
    void BringWindowToTop(WindowHandle window) override { m_rest.BringWindowToTop(window); }
    void ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) override;
    ScreenSize Screen() override;
    WindowHandle NextDialogTabItem(WindowHandle dialog, WindowHandle control,
                                   bool bPrevious) override {
        return m_rest.NextDialogTabItem(dialog, control, bPrevious);
    }

  private:
    WxView& m_view;
    Desktop& m_rest;
};

}  // namespace nomira::wx
