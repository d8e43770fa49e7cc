// The pendant form: the front end on a controller.
//
// So far the form is its caption, its size, its status and progress bars, and the lists and boxes
// that the passes and the staging of programs read. The keys, the other lists and their logic are
// not built yet, and no view shows the form.
#pragma once

#include "ui/FormDesign.h"

namespace nomira {

// The name by which the form is known in the collection of loaded forms.
inline constexpr TextView kStdBofFormClass = u"StdBofForm";

class StdBofForm : public DesignedForm {
  public:
    StdBofForm();

    // SetInfoResult, the link's report of a watched variable, is taken and ignored.
    void CallByName(TextView sMethod, std::span<const CallArgument> arguments) override;
};

}  // namespace nomira
