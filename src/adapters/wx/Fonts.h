// The forms' fonts, and captions that stay inside their controls.
#pragma once

#include <wx/font.h>
#include <wx/gdicmn.h>
#include <wx/string.h>

#include "ui/formlayer/Controls.h"

namespace nomira::wx {

// Where nothing is told: the small face that the forms' places were made for.
wxFont MakeFont(const Font& font);

struct FittedText {
    wxString sText;  // with line ends where it is broken
    wxFont font;     // the given one, or a smaller one
};

// A caption for a room of the given size: broken at blanks if the room is high enough, and else in
// a smaller letter, though never one too small to be read.
FittedText FitText(const wxString& sText, const wxFont& font, const wxSize& room);

}  // namespace nomira::wx
