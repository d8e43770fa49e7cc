// The control through which the pendant's hardware keys reach a form. It has no place on the form.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

class PendantKeyControl : public Control {
  public:
    // The first and the last key code.
    struct Range {
        std::int32_t nFirst = 0, nLast = 0;
        bool operator==(const Range&) const = default;
    };

    using Control::Control;

    // Gets the code of a pressed key.
    std::function<void(std::int16_t)> onFKey;

    // From now on the keys of the range come to this form. A range may be added again; one
    // SubFKeys ends it all the same.
    void AddFKeys(std::int32_t nFirst, std::int32_t nLast);
    // Ends the range; nothing happens for one that was not added.
    void SubFKeys(std::int32_t nFirst, std::int32_t nLast);
    // In the order of their addition.
    const std::vector<Range>& Ranges() const { return m_ranges; }

    // By which the system knows the control. Given at design time.
    const Text& ProgramId() const { return m_sProgramId; }
    void SetProgramId(TextView sProgramId) { m_sProgramId = sProgramId; }

    // The user has pressed a key of the pendant; nothing happens outside the ranges.
    void UserKey(std::int16_t nKeyCode);

  private:
    std::vector<Range> m_ranges;
    Text m_sProgramId;
};

}  // namespace nomira
