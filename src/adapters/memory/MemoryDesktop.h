// A desktop that nobody sees: it answers what a test has set and records what is asked of it.
#pragma once

#include <optional>
#include <vector>

#include "langtools/Text.h"
#include "platform/Desktop.h"

namespace nomira::memory {

struct MessageBoxShown {
    Text sText;
    Text sTitle;
    BoxIcon icon = BoxIcon::None;
    bool operator==(const MessageBoxShown&) const = default;
};

struct TabItemAsked {
    Desktop::WindowHandle dialog, control;
    bool bPrevious;
    bool operator==(const TabItemAsked&) const = default;
};

class MemoryDesktop : public Desktop {
  public:
    bool bPreviousInstance = false;
    std::vector<Text> windows;               // titles of the top-level windows
    ScreenSize screen{1024 * 15, 768 * 15};  // 1024 x 768 dots of 15 twips

    // What happened, in its order.
    std::vector<MessageBoxShown> boxes;
    std::vector<Text> activated;  // titles that were to be activated, whether there or not
    std::vector<Text> raised;     // titles of the windows that were brought to the top
    std::vector<TabItemAsked> tabItems;

    bool PreviousInstance() override { return bPreviousInstance; }
    void ActivateByTitle(TextView sTitle) override { activated.emplace_back(sTitle); }
    std::optional<WindowHandle> FindWindow(TextView sTitle) override;
    void BringWindowToTop(WindowHandle window) override;
    void ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) override;
    ScreenSize Screen() override { return screen; }
    WindowHandle NextDialogTabItem(WindowHandle dialog, WindowHandle control,
                                   bool bPrevious) override;
};

}  // namespace nomira::memory
