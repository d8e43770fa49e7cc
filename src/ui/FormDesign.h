// A form's design: its caption, its size, and its controls with their places and words, as tables
// that the form is built from. Lengths are twips; a control inside a container counts from the
// container's top left.
#pragma once

#include <cstdint>
#include <span>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"

namespace nomira {

enum class ControlKind {
    Label,
    Frame,
    TextBox,
    CheckBox,
    ProgressBar,
    DirList,
    FileList,
    MultiFileList,  // a file list of which several entries can be selected
    StatusBar
};

struct ControlDesign {
    TextView sName;
    ControlKind kind;
    std::int32_t nLeft, nTop, nWidth, nHeight;
    TextView sCaption;        // or the text of a text box; empty for a kind that has none
    std::int16_t nValue = 0;  // of a check box; how many panels a status bar has
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
    Control& AddTextBox(const ControlDesign& design);
    Control& AddCheckBox(const ControlDesign& design);
    Control& AddFileList(const ControlDesign& design);
    Control& AddStatusBar(const ControlDesign& design);
};

}  // namespace nomira
