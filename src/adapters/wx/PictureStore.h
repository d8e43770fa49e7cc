// What the pictures of the form layer look like: they are known by name there (docs/pictures.md).
// The window toolkit must have been started, though it needs no display for this.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

#include "langtools/Text.h"

namespace nomira::wx {

// The picture in any size that is asked for, without loss in those that it was made for; its
// default size is that of its list on the form. Empty for a name that isn't known, and for no name.
wxBitmapBundle PictureBundle(TextView sName);

// The application's icon, from 16 to 256 dots.
wxIconBundle ApplicationIcons();

}  // namespace nomira::wx
