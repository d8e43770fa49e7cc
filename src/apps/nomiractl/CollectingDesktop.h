// The companion's desktop: it shows no boxes, it collects their words for the report.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/Desktop.h"

namespace nomira::companion {

class CollectingDesktop : public Desktop {
  public:
    bool PreviousInstance() override { return false; }
    void ActivateByTitle(TextView) override {}
    std::optional<WindowHandle> FindWindow(TextView) override { return std::nullopt; }
    void BringWindowToTop(WindowHandle) override {}
    void ShowMessageBox(TextView sText, TextView, BoxIcon) override { m_boxes.emplace_back(sText); }
    ScreenSize Screen() override { return {}; }
    // There are no dialogs.
    WindowHandle NextDialogTabItem(WindowHandle, WindowHandle, bool) override { return 0; }

    // The boxes since the last call.
    std::vector<Text> TakeBoxes() { return std::exchange(m_boxes, {}); }

  private:
    std::vector<Text> m_boxes;
};

}  // namespace nomira::companion
