#include "adapters/wx/PendantKeyTable.h"

#include <algorithm>

#include "ui/formlayer/Form.h"
#include "ui/formlayer/PendantKeyControl.h"

namespace nomira::wx {
namespace {

// clang-format off
constexpr PcKey kKeys[] = {
    {WXK_F2, false, "F2", 113, u"SoftKey", 0, "Show the database as text"},
    {WXK_F3, false, "F3", 114, u"SoftKey", 1, "Save the text into the database"},
    {WXK_F4, false, "F4", 115, u"SoftKey", 2, "Leave the view of the database"},
    {WXK_F7, false, "F7", 118, u"SoftKey", 5, "Start the conversion"},
    {WXK_F8, false, "F8", 119, u"SoftKey", 6, "End the program"},
    {'1', true, "Ctrl+1", 129, u"StatKeyL", 1, "Text file into database"},
    {'2', true, "Ctrl+2", 130, u"StatKeyL", 2, "Database into text file"},
    {'3', true, "Ctrl+3", 131, u"StatKeyL", 3, "Database into programs, or short symbols on and off"},
    {'4', true, "Ctrl+4", 132, u"StatKeyL", 4, "The box below the options on and off"},
};
// clang-format on

bool HasPendantKeys(const Form& form) {
    bool bFound = false;
    form.ForEachControl(
        [&](Control& control) { bFound = bFound || As<PendantKeyControl>(&control) != nullptr; });
    return bFound;
}

}  // namespace

std::span<const PcKey> PcKeys() {
    return kKeys;
}

const PcKey* KeyOfEvent(const wxKeyEvent& event) {
    const int nModifiers = event.GetModifiers();
    const auto* const key = std::ranges::find_if(kKeys, [&](const PcKey& row) {
        return row.nKey == event.GetKeyCode() &&
               nModifiers == (row.bControl ? wxMOD_CONTROL : wxMOD_NONE);
    });
    return key == std::end(kKeys) ? nullptr : key;
}

const PcKey* KeyOfButton(const Control& control) {
    const auto* const key = std::ranges::find_if(kKeys, [&](const PcKey& row) {
        return row.sArray == control.Name() && row.nIndex == control.Index();
    });
    return key == std::end(kKeys) || !HasPendantKeys(control.Owner()) ? nullptr : key;
}

wxString ToolTipOf(const PcKey& key) {
    return wxString(key.sWhat) + " (" + key.sShown + ")";
}

}  // namespace nomira::wx
