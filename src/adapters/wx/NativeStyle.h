// What the toolkit doesn't offer by itself and each windowing system does in its own way. One
// source per system; the build picks it.
#pragma once

#include <wx/toplevel.h>

namespace nomira::wx {

// The forms' controls have places that leave no room for the wide paddings of today's themes: takes
// these away in the window.
void MakeCompact(wxTopLevelWindow& window);

// How much larger than on a screen of 96 dots to the inch everything is to be drawn, as the
// system's settings have it.
double ScreenScale();

// The name by which programs that read the screen aloud know the window.
void SetAccessibleName(wxWindow& window, const wxString& sName);
wxString AccessibleName(wxWindow& window);

}  // namespace nomira::wx
