// The companion's desktop: it shows no boxes, it collects their words for the report. Each thread
// has its own boxes. There is one of these at a time.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/Desktop.h"

namespace nomira::companion {

class CollectingDesktop : public Desktop {
  public:
    CollectingDesktop() { Boxes().clear(); }

    bool PreviousInstance() override { return false; }
    void ActivateByTitle(TextView) override {}
    std::optional<WindowHandle> FindWindow(TextView) override { return std::nullopt; }
    void BringWindowToTop(WindowHandle) override {}
    void ShowMessageBox(TextView sText, TextView, BoxIcon) override { Boxes().emplace_back(sText); }
    ScreenSize Screen() override { return {}; }
    // There are no dialogs.
    WindowHandle NextDialogTabItem(WindowHandle, WindowHandle, bool) override { return 0; }

    // The boxes of this thread since the last call.
    std::vector<Text> TakeBoxes() { return std::exchange(Boxes(), {}); }

  private:
    static std::vector<Text>& Boxes() {
        static thread_local std::vector<Text> boxes;
        return boxes;
    }
};

}  // namespace nomira::companion
