// The desktop form: the front end on any PC that is no controller.
//
// The form has its whole design: controls, places, words. The logic behind the controls is not
// built yet, and no view shows the form.
#pragma once

#include "ui/FormAccess.h"
#include "ui/FormDesign.h"

namespace nomira {

class NomiraMain : public DesignedForm {
  public:
    NomiraMain();

    // The form moves to the middle of the screen and into the state without a chosen option; the
    // progress bar begins at 1 of 1 to 27, hidden over the status bar, which gets its other three
    // panels.
    void Load() override;
};

}  // namespace nomira
