// The desktop form: the front end on any PC that is no controller.
//
// So far the form is its caption, its size, its status and progress bars, and the lists and boxes
// that the passes and the staging of programs read. The other lists, the options, the buttons and
// their logic are not built yet, and no view shows the form.
#pragma once

#include "ui/FormDesign.h"

namespace nomira {

// The name by which the form is known in the collection of loaded forms.
inline constexpr TextView kNomiraMainClass = u"NomiraMain";

class NomiraMain : public DesignedForm {
  public:
    NomiraMain();

    // The progress bar begins at 1 of 1 to 27; the status bar gets its other three panels.
    void Load() override;
};

}  // namespace nomira
