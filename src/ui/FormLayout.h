// The start state of the main forms. The routines reach the controls by their names and trap
// nothing: a form that lacks one of them raises NoSuchMember.
#pragma once

#include "ui/formlayer/Form.h"

namespace nomira {

// The state without a chosen option: the lists and boxes are hidden; on the desktop form Start is
// hidden too, and the drive and directory lists and the options stay as they are; the pendant form
// shows its start screen, its keys get their pictures and lose their words, and its options are
// cleared. Registers the pendant's keys, at each call anew. Reads the customer from the registry.
void InitFormLayout(const Form& form);

// The pendant form's status bar gets its widths, and the progress bar, hidden, its place in
// panel 4.
void InitStatusLayout(const Form& form);

}  // namespace nomira
