// The batch run's one window: a line of text for the phase of the work, and a progress bar.
#pragma once

#include "ui/FormDesign.h"

namespace nomira {

// The name by which the form is known in the collection of loaded forms.
inline constexpr TextView kStdFormClass = u"StdForm";

class StdForm : public DesignedForm {
  public:
    StdForm();

    // The bar begins at 1 of 1 to 100, and the form moves to the middle of the screen.
    void Load() override;
};

}  // namespace nomira
