#include "adapters/memory/MemoryDesktop.h"

#include <algorithm>

namespace nomira::memory {

// A handle is the window's place in the list, counted from 1.
std::optional<Desktop::WindowHandle> MemoryDesktop::FindWindow(TextView sTitle) {
    const auto found = std::find(windows.begin(), windows.end(), sTitle);
    if (found == windows.end()) return std::nullopt;
    return static_cast<WindowHandle>(found - windows.begin() + 1);
}

void MemoryDesktop::BringWindowToTop(WindowHandle window) {
    if (window >= 1 && window <= windows.size()) raised.push_back(windows[window - 1]);
}

void MemoryDesktop::ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) {
    boxes.push_back({Text(sText), Text(sTitle), icon});
}

Desktop::WindowHandle MemoryDesktop::NextDialogTabItem(WindowHandle dialog, WindowHandle control,
                                                       bool bPrevious) {
    tabItems.push_back({dialog, control, bPrevious});
    return 0;
}

}  // namespace nomira::memory
