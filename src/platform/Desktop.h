// Port: the user's desktop: other instances, windows by title, the message box, the screen.
#pragma once

#include <cstdint>
#include <optional>

#include "langtools/Text.h"

namespace nomira {

enum class BoxIcon { None, Exclamation };

// Twips: 1440 to the inch.
struct ScreenSize {
    std::int32_t nWidth = 0;
    std::int32_t nHeight = 0;
};

class Desktop {
  public:
    using WindowHandle = std::uint32_t;

    virtual ~Desktop() = default;

    // Whether another instance of this program runs. The first call that gives false makes this
    // process the one instance, until it ends.
    virtual bool PreviousInstance() = 0;

    // Activates the window of this exact title, of whatever process. Nothing happens without one.
    virtual void ActivateByTitle(TextView sTitle) = 0;

    // The top-level window of this exact title, nullopt if there is none.
    virtual std::optional<WindowHandle> FindWindow(TextView sTitle) = 0;
    virtual void BringWindowToTop(WindowHandle window) = 0;

    // A box with an OK button; returns when the operator has closed it. Where nobody can see a
    // box, its words go to the standard error stream and the call returns at once.
    virtual void ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) = 0;

    virtual ScreenSize Screen() = 0;

    // The control behind `control` in the dialog's tab order, or ahead of it; 0 is no dialog, and
    // no control.
    virtual WindowHandle NextDialogTabItem(WindowHandle dialog, WindowHandle control,
                                           bool bPrevious) = 0;
};

}  // namespace nomira
