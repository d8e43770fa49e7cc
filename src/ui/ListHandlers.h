// What the file lists of both main forms do when the user moves about: the forms' handlers call
// these routines with themselves.
#pragma once

#include "ui/formlayer/Form.h"

namespace nomira {

// After a click on chkBoxSelAll: a checked box selects every entry of File2, then of List1; a
// cleared box takes every selection there away. Both lists are treated, seen or not. A box that is
// neither changes nothing.
void SelectAll(const Form& form);

// After a change of Dir1: File1 and File2 get their patterns and show that directory, and the first
// program there, if there is one, is selected. Raises what Dir1's path raises as a path of a file
// list.
void FollowDirectory(const Form& form);

}  // namespace nomira
