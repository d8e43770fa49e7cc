// The pendant form: the front end on a controller.
//
// So far the form is its caption, its size, its progress bar and two check boxes, which is what the
// start-up, the progress call and the harvest need of it. The keys, the lists and their logic are
// not built yet, and no view shows the form.
#pragma once

#include "ui/FormDesign.h"

namespace nomira {

// The name by which the form is known in the collection of loaded forms.
inline constexpr TextView kStdBofFormClass = u"StdBofForm";

class StdBofForm : public DesignedForm {
  public:
    StdBofForm();
};

}  // namespace nomira
