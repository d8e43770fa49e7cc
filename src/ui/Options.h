// What each of the three options shows and enables, on both main forms.
//
// The routines reach the controls by their names, and differ from the form's kind only at their
// end: the desktop form gets its Start button, the pendant form its keys, panels and caption. A
// drive or a directory that can't be used is passed over, and the lists stay where they are.
#pragma once

#include "ui/formlayer/Form.h"

namespace nomira {

// Text file into the database: the list of text files, and the box for what happens to the old
// texts.
void ShowOption1(const Form& form);
// Database into a text file: the name of the file, which takes the focus.
void ShowOption2(const Form& form);
// Database into programs: the list of programs, and the box that selects them all. The database
// view, the program tree and the controller's list stay as they are.
void ShowOption3(const Form& form);

}  // namespace nomira
