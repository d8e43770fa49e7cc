// The controller's directories as a tree, and the programs of one of them in a list.
//
// The routines reach TreeView1, List1 and their neighbours by name and trap nothing. Lists of names
// come as the link gives them: one text, each entry closed by a line feed.
#pragma once

#include <cstdint>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira {

// Fills the form's tree anew: the roots "TQX:\" and "R1" side by side, and each directory below
// "R1", its key ending in its place in the list. A directory "Program" is selected, and "R1" opened
// for it. Empties the list; what stands behind its last line feed is dropped.
// An entry with a "\" in it goes to the pendant form's tree whichever form is filled, below the
// first node whose text is the entry's first part; that form is created unseen if need be. Raises
// IndexOutOfBounds if there is no such node, and KeyNotUnique for a second entry below it or a
// third part, for all of those get the same key.
void FillRobotTree(const Form& form, Text& sDirList);

// Shows tree and list in place of the local lists, and adds the names that end in ".src", in any
// case, to those in the list. Empties the list of names. Raises InvalidProcedureCall if its last
// name lacks the line feed; the names ahead of that are in the list then, and the rest is left in
// `sFileList`.
void ShowRobotPrograms(const Form& form, Text& sFileList);

// A key in the tree, before the tree itself acts on it: up (38) and down (40) show the programs of
// the selected node's directory and mark it by its picture; other keys do nothing. `sPrevNodeKey`
// is the caller's memory of the key of the node that was dealt with last, empty at first; a second
// key on that node does nothing.
// Raises ObjectNotSet without a selected node or without a link, ElementNotFound if the node dealt
// with last is gone, and InvalidProcedureCall if the tree can't take the focus.
void WalkTree(const Form& form, std::int16_t nKeyCode, Text& sPrevNodeKey);

}  // namespace nomira
