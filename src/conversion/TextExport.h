// The database's long texts as text, and edited text on its way back.
//
// Edited text replaces the whole set of long texts, and is read by rules of its own, which differ
// from those for a text file:
//  - a customer installation takes customer and standard keys alike, and a process parameter's key
//    is ZTQXProcParam_n on every installation, which a standard one's text file doesn't know;
//  - where a key holds a "_", its digits end it and no blank is needed: IN_12Pump is the key IN_12
//    with the text Pump, and IN_12345 the key IN_1234 with the text 5;
//  - such a key without a text stores the empty text, never the empty marker; a line with any
//    other key and no text is passed over.
#pragma once

#include <cstdint>

#include "langtools/Text.h"

namespace nomira {

// The text last produced by BuildLongTextDump or last applied by ApplyEditedText, in standard form
// after the latter; it lets ApplyEditedText see that the operator changed nothing.
extern Text g_sLastExport;

// Writes the whole export to the file, over a read-only or hidden one too, and one more CR LF
// behind it. An empty export writes nothing and leaves the file alone; a target that can't be
// opened is passed over without a word. A failure of the writing itself is raised.
void DbIntoText(TextView sFile);

// All classes in their order, the rows of each by number, "KEY text" CR LF; the customer's keys on
// a customer installation. Empty if there are no rows. Sets g_sLastExport,
// and gives that.
const Text& BuildLongTextDump();

// The rows of one class, by number; opens and closes the database itself. Rows with a Null, with
// the empty marker, or whose key isn't the prefix and one to four digits are left out. `nSize` is
// not used. Never fails: a failure ends the reading with what the result holds at that moment,
// which is nothing while rows are still being read. Those rows stay in the sort buffers and go out
// with the next class that is read.
Text ReadClassRows(TextView sModule, TextView sPrefix, std::int16_t nSize,
                   TextView sCustomerPrefix);

// Replaces all long texts by those of the edited text; an empty one deletes them all. Nothing
// happens if it equals g_sLastExport. Lines that are no rows are passed over. On a customer
// installation `sText` comes back with standard keys. Raises Overflow for more than 32,767 lines,
// or characters in a line, and InvalidProcedureCall for a key such as FlagText5 with nothing but a
// tab behind it; what was there is deleted by then, and the database stays open.
void ApplyEditedText(Text& sText);

// Customer keys at the line starts turned into standard ones; every line trimmed and ended by
// CR LF, empty lines gone. Raises Overflow for more than 32,767 lines.
Text CustomerTextToStandard(TextView sText);

}  // namespace nomira
