// The collection of loaded forms, and the view that shows them.
//
// A routine that stands low but speaks to a form (the progress call, the label of the batch form)
// finds the form here by its name; a form that is not loaded is passed over.
#pragma once

#include <memory>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"
#include "ui/formlayer/View.h"

namespace nomira {

// Adds the form to the collection and runs its Load. Raises KeyAlreadyUsed if one of its class is
// loaded already.
Form& LoadForm(std::unique_ptr<Form> form);
// Takes the form off the screen and out of the collection; nothing happens if it isn't loaded. The
// form is gone then, so that a handler of it does this as its last act alone (a window that the
// user closes: Form::UserClose).
void UnloadForm(TextView sClass);
// nullptr if no form of this class is loaded.
Form* FindForm(TextView sClass);
// The control `sName` of the loaded form `sClass` as its kind; nullptr if either is missing.
template <typename Kind>
Kind* FindControl(TextView sClass, TextView sName) {
    const Form* form = FindForm(sClass);
    return form ? As<Kind>(form->Find(sName)) : nullptr;
}
// Whether any loaded form is on the screen: the program's message loop lives as long.
bool AnyFormVisible();

// nullptr, the start value, shows nothing. Not owned.
void SetView(View* view);
View* TheView();
// Lets pending user-interface events through; nothing happens without a view.
void ProcessPendingEvents();

}  // namespace nomira
