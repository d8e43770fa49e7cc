// Port: a view mirrors forms on a screen. The control objects are the truth; a view can be taken
// away and nothing but the picture is lost.
#pragma once

#include "langtools/Text.h"

namespace nomira {

class Control;
class Form;

class View {
  public:
    virtual ~View() = default;
    virtual void FormShown(Form& form) = 0;
    virtual void FormUnloaded(Form& form) = 0;
    // A property has a new value; `control` is nullptr for the form's own.
    virtual void PropertyChanged(Form& form, Control* control, TextView sProperty) = 0;
    // What has changed must be on the screen when this returns.
    virtual void Refreshed(Control& control) = 0;
    // Lets pending events of the user interface through. What a handler raises comes out of here,
    // and so does the end of the program, if the user closes a form meanwhile.
    virtual void ProcessPendingEvents() = 0;
    // Serves the user until no form is on the screen any more. What a handler raises ends it, and
    // comes out of here.
    virtual void RunEventLoop() = 0;
};

}  // namespace nomira
