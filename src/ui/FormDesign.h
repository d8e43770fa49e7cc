// A form's design: its caption, its size, and its controls with their places and words, as tables
// that the form is built from. Lengths are twips; a control inside a container counts from the
// container's top left.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "langtools/Text.h"
#include "ui/formlayer/Form.h"
#include "ui/formlayer/ListBox.h"

namespace nomira {

enum class ControlKind {
    Button,
    CheckBox,
    DirList,
    DriveList,
    FileList,
    Frame,
    Image,
    Label,
    ListBox,
    PictureBox,
    ProgressBar,
    RadioButton,
    Shape,
    StatusBar,
    TextBox,
    Tree
};

struct FontDesign {
    TextView sName = u"";
    float nSize = 0;  // points
    bool bBold = false;
};

// What only some controls have; a property that a kind lacks is passed over.
struct ControlExtras {
    std::optional<std::int16_t> nIndex = std::nullopt;  // of an array's element
    bool bVisible = true;
    FontDesign font = {};
    Colour backColour = std::nullopt;
    std::int16_t nValue = 0;   // of a check box
    std::int16_t nPanels = 0;  // of a status bar
    bool bMultiLine = false;
    bool bBothScrollBars = false;
    std::int16_t nMultiSelect = SelectionList::kSingle;
    bool bSorted = false;
    bool bPictureStyle = false;
    TextView sPicture = u"";    // name of a picture
    TextView sImageList = u"";  // name of a tree's picture list
};

struct ControlDesign {
    TextView sName;
    ControlKind kind;
    std::int32_t nLeft, nTop, nWidth, nHeight;
    TextView sText = u"";    // the caption, or what stands in a text box
    std::int16_t nTab = -1;  // place in the tab order; -1 for a control that has none
    ControlExtras extras = {};
};

// The controls that lie in one container; those of an empty name lie on the form itself.
struct ContainerDesign {
    TextView sContainer;
    std::span<const ControlDesign> controls;
};

struct PictureListDesign {
    TextView sName;
    std::int16_t nWidth, nHeight;  // dots
    std::span<const TextView> pictures;
};

struct FormDesign {
    TextView sClass;
    TextView sCaption;
    std::int32_t nWidth, nHeight;                 // the client area
    std::span<const ContainerDesign> containers;  // a container stands ahead of what is in it
    std::span<const PictureListDesign> pictureLists = {};
    Colour backColour = std::nullopt;
    bool bTabStopsAtButtons = true;  // at buttons, radio buttons and check boxes
};

// A form that begins as its design says: not loaded, not shown, at the screen's origin.
class DesignedForm : public Form {
  protected:
    explicit DesignedForm(const FormDesign& design);

    // Puts Dir1, File1 and File2 on the root of the drive that Drive1 shows, where the lists stay
    // until the program or the user moves them; without such a drive they stay empty.
    void StartLists();

  private:
    void AddControls(const ContainerDesign& container, bool bTabStopsAtButtons);
    void AddPictureList(const PictureListDesign& design);
    Control& AddByKind(const ControlDesign& design);
    template <typename Kind>
    Control& AddDesigned(const ControlDesign& design);
};

}  // namespace nomira
