// Which keys and controls of the pendant form are live in the database view, while an action runs,
// and behind it. The routines reach the controls by their names.
#pragma once

#include "ui/formlayer/Form.h"

namespace nomira {

// Into the view: its text box takes the place of the lists and the focus, and the keys are off that
// choose an option or start an action.
void EnterDatabaseView(const Form& form);
// Back to what the chosen option shows, whose list or name takes the focus; to the start screen
// without one.
void LeaveDatabaseView(const Form& form);

// Ahead of an action: the soft keys are off that start one. The status keys stay as they are.
void DisableRunKeys(const Form& form);
// Behind it: the soft key of the view is on, and those that belong to the view, or else the one
// that starts. None is switched off here.
void EnableRunKeys(const Form& form);

}  // namespace nomira
