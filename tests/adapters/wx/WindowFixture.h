// A real window on a display that nobody sees, for tests: forms in memory's machine, shown by the
// view on the screen.
#pragma once

#include <wx/window.h>

#include <memory>
#include <string>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/wx/Toolkit.h"
#include "adapters/wx/WxView.h"
#include "testing/TextPrinting.h"
#include "testing/VirtualDisplay.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira::wx {

class WindowTest : public ::testing::Test {
  protected:
    WindowTest();
    ~WindowTest() override;

    // Lets everything through that is on its way.
    void Settle();
    // The robot tool xdotool acts with the words as a user does, and the acts come through.
    void Robot(const std::string& sWords);
    // Clicks of the first mouse button into the control's middle.
    void Click(const Control& control, int nTimes = 1);
    // Clicks into a place of the control, in dots from its top left.
    void ClickAt(const Control& control, int nX, int nY, int nTimes = 1);

    // The form's window, painted, as a picture in the build's folder of screenshots.
    void TakeScreenshot(const Form& form, const std::string& sName);

    // Compares everything of the form that can be seen with what its windows have.
    void ExpectInStep(const Form& form);

    memory::MemoryMachine machine;
    std::unique_ptr<WxView> view;
};

}  // namespace nomira::wx
