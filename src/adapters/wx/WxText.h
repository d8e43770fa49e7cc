// Text on its way into the toolkit's strings and back.
#pragma once

#include <wx/string.h>

#include "langtools/Text.h"

namespace nomira::wx {

wxString ToWx(TextView sText);
Text FromWx(const wxString& sText);

// Line ends: the program's texts have CR LF (or one of them alone), the toolkit's have LF.
wxString ToWxLines(TextView sText);
Text FromWxLines(const wxString& sText);

// A caption as it stands: the toolkit would take an ampersand for the mark of a shortcut.
wxString ToWxCaption(TextView sCaption);

}  // namespace nomira::wx
