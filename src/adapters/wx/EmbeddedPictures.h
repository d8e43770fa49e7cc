// The rasters that the build has made of the drawings in pictures/, as PNG files in memory. Its
// source is written by pictures/embed_pictures.py.
#pragma once

#include <span>

#include "langtools/Text.h"

namespace nomira::wx {

// One raster. Those of one name stand together, the smallest first: that
// is the one for a display of usual density.
struct EmbeddedPicture {
    TextView sName;
    int nWidth, nHeight;  // dots
    std::span<const unsigned char> png;
};

std::span<const EmbeddedPicture> EmbeddedPictures();

}  // namespace nomira::wx
