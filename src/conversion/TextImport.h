// The text file of long names on its way into the database: one signal a line, a key and a text.
//
// The file is plain 8-bit text without a header, a comment syntax or an end mark. A line whose
// first word is no key of this installation is passed over without a word. Keys stand in the form
// of the installation: on a customer's the customer form alone; on a standard one the standard
// form, except that a process parameter's key is its bare number there and is stored so.
//
// Both passes open and close the file and the database themselves. A file that can't be opened
// ends a pass without a word and without a change; whether the database could be opened is not
// looked at, and each operation on it then fails silently. Nothing else is trapped: a line of more
// than 32,767 characters (or words, in ClearDbForTextFile) raises Overflow out of the pass, which
// ends there. The file is closed then; the database stays open until somebody opens or closes it,
// and what the pass has done so far stays done.
#pragma once

#include "conversion/KeyForms.h"
#include "langtools/Text.h"

namespace nomira {

// The line, the key and the long name in work; the rewriter of programs shares them. A pass leaves
// in them what its last line left there. Each thread has its own: the program has one, and the
// companion looks at several programs at once.
extern thread_local Text g_sLine;
extern thread_local Text g_vSymbol;
extern thread_local Text g_vLongName;

// Stores every line that begins with a key of this installation, a later line over an earlier one
// with the same key, and passes over all others. A key without a text is stored with the empty
// marker, a welding channel's with an empty text. One progress step a line.
void TextIntoDb(TextView sFile);

// Makes room for the file: learns from its keys which of two sets of classes to wipe, the signals
// (classes 1 to 11) or the welding channels (12 to 14), and wipes each whole, at its first key.
// The keys of binary signals are no reason to wipe, though binary signals are wiped with the
// others. Tabs are not yet blanks here, so that a key with a tab behind it is no reason either.
void ClearDbForTextFile(TextView sFile);

// What the import makes of the line in g_sLine, without a database: spells out its umlauts and
// tabs, leaves the key in standard form in g_vSymbol and the text as it is stored in g_vLongName,
// and gives the key's form. A line that is passed over gives nullptr; g_vSymbol is its first word
// then, and g_vLongName stays. Raises Overflow as TextIntoDb does.
const KeyForm* TakeTextLine(const KeyForms& forms);

// What the wipe sees of the line in g_sLine, which it leaves as it is: its first word goes to
// g_vSymbol; nullptr if that is no key. Raises Overflow for more than 32,767 words.
const KeyForm* TakeWipeKey(const KeyForms& forms);

// Writes umlauts as two letters and tabs as four blanks, in place; returns the same text. The long
// names go into comments of robot programs, where the controller refuses those letters. Raises
// Overflow for more than 32,767 characters.
Text& NormalizeUmlauts(Text& sLine);

}  // namespace nomira
