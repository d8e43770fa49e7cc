// The pendant form: the front end on a controller.
//
// The form has its whole design: controls, places, words. The logic behind the controls is not
// built yet, and no view shows the form.
#pragma once

#include "ui/FormAccess.h"
#include "ui/FormDesign.h"

namespace nomira {

class StdBofForm : public DesignedForm {
  public:
    StdBofForm();

    // In pendant mode the form goes into the state without a chosen option; else, when another form
    // only needs its controls, it stays as designed.
    void Load() override;

    // SetInfoResult, the link's report of a watched variable, is taken and ignored.
    void CallByName(TextView sMethod, std::span<const CallArgument> arguments) override;
};

}  // namespace nomira
