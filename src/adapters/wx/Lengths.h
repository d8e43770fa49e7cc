// Twips, the forms' lengths (1440 to the inch), into the screen's dots and back.
#pragma once

#include <wx/gdicmn.h>

#include <cstdint>

#include "adapters/wx/NativeStyle.h"

namespace nomira::wx {

// How many twips a dot has on a screen of 96 dots to the inch.
inline constexpr double kTwipsPerDot = 15;

inline int Dots(std::int32_t nTwips) {
    return wxRound(nTwips / kTwipsPerDot * ScreenScale());
}
inline std::int32_t Twips(int nDots) {
    return wxRound(nDots * kTwipsPerDot / ScreenScale());
}

// Edges that are the same in twips are the same in dots.
inline wxRect DotRect(std::int32_t nLeft, std::int32_t nTop, std::int32_t nWidth,
                      std::int32_t nHeight) {
    const int nX = Dots(nLeft), nY = Dots(nTop);
    return {nX, nY, Dots(nLeft + nWidth) - nX, Dots(nTop + nHeight) - nY};
}

// The place of a control, or of a form's client area on the screen.
template <typename Placed>
wxRect PlaceOf(const Placed& placed) {
    return DotRect(placed.Left(), placed.Top(), placed.Width(), placed.Height());
}

}  // namespace nomira::wx
