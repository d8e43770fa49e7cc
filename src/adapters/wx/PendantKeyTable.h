// Which keys of a PC's keyboard stand for the hardware keys of the pendant. docs/keys.md shows the
// same table to the operator.
#pragma once

#include <wx/event.h>
#include <wx/string.h>

#include <cstdint>
#include <span>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira::wx {

struct PcKey {
    int nKey;  // as the toolkit numbers them
    bool bControl;
    const char* sShown;  // the key's name for the operator
    std::int16_t nCode;  // the pendant's code
    TextView sArray;     // the button that is drawn for it
    std::int16_t nIndex;
    const char* sWhat;  // what it does
};

std::span<const PcKey> PcKeys();

// nullptr for a key that stands for none.
const PcKey* KeyOfEvent(const wxKeyEvent& event);
// The key for which the control is drawn, nullptr if there is none.
const PcKey* KeyOfButton(const Control& control);

// Such as "Start the conversion (F7)".
wxString ToolTipOf(const PcKey& key);

}  // namespace nomira::wx
