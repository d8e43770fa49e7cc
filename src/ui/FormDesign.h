// A form's design: its caption, its size, and its controls with their places and words, as tables
// that the form is built from. Lengths are twips; a control inside a container counts from the
// container's top left.
#pragma once

#include <cstdint>
#include <span>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira {

enum class ControlKind { Label, Frame, CheckBox, ProgressBar };

struct ControlDesign {
    TextView sName;
    ControlKind kind;
    std::int32_t nLeft, nTop, nWidth, nHeight;
    TextView sCaption;                         // empty for a kind that has none
    std::int16_t nValue = CheckBox::kCleared;  // of a check box
};

struct FormDesign {
    TextView sClass;
    TextView sCaption;
    std::int32_t nWidth, nHeight;  // the client area
    std::span<const ControlDesign> controls;
};

// A form that begins as its design says: not loaded, not shown, at the screen's origin.
class DesignedForm : public Form {
  protected:
    explicit DesignedForm(const FormDesign& design);

  private:
    Control& AddByKind(const ControlDesign& design);
    template <typename Kind>
    Kind& AddWithCaption(const ControlDesign& design);
};

}  // namespace nomira
