#include "ui/StdBofForm.h"

#include "frame/ProgramVariables.h"
#include "ui/FormLayout.h"
#include "ui/formlayer/PendantKeyControl.h"

namespace nomira {
namespace {

using Kind = ControlKind;

constexpr std::uint32_t kLightGrey = 0xC0C0C0;
constexpr std::uint32_t kCyan = 0x00FFFF;

// clang-format off
constexpr ControlDesign kOnForm[] = {
    {u"SoftKey", Kind::Button, 600, 6830, 1095, 375, u"Soft-Key 0", 12,
     {.nIndex = 0, .bPictureStyle = true}},
    {u"SoftKey", Kind::Button, 1680, 6830, 1215, 375, u"Soft-Key 1", 11,
     {.nIndex = 1, .bPictureStyle = true}},
    {u"SoftKey", Kind::Button, 2890, 6830, 1215, 375, u"Soft-Key 2", 10,
     {.nIndex = 2, .bPictureStyle = true}},
    {u"SoftKey", Kind::Button, 4080, 6830, 1215, 375, u"Soft-Key 3", 9, {.nIndex = 3}},
    {u"SoftKey", Kind::Button, 5280, 6830, 1215, 375, u"Soft-Key 4", 8, {.nIndex = 4}},
    {u"SoftKey", Kind::Button, 6480, 6830, 1215, 375, u"Soft-Key 5", 7,
     {.nIndex = 5, .bPictureStyle = true}},
    {u"SoftKey", Kind::Button, 7680, 6830, 1215, 375, u"Soft-Key 6", 6,
     {.nIndex = 6, .bPictureStyle = true}},
    {u"StatKeyL", Kind::Button, 0, 600, 615, 615, u"SKL 0", 5, {.nIndex = 0}},
    {u"StatKeyL", Kind::Button, 0, 1800, 615, 615, u"", 4, {.nIndex = 1, .bPictureStyle = true}},
    {u"StatKeyL", Kind::Button, 0, 3000, 615, 615, u"", 3, {.nIndex = 2, .bPictureStyle = true}},
    {u"StatKeyL", Kind::Button, 0, 4200, 615, 615, u"", 2, {.nIndex = 3, .bPictureStyle = true}},
    {u"StatKeyL", Kind::Button, 0, 5400, 615, 615, u"", 1,
     {.nIndex = 4, .bPictureStyle = true, .sPicture = u"picKeyList"}},
    {u"StatKeyL", Kind::Button, 0, 6480, 615, 615, u"SKL 5", 0, {.nIndex = 5}},
    {u"adoList1", Kind::ListBox, 4200, 120, 495, 255, u"", 33,
     {.bVisible = false, .bSorted = true}},
    {u"adoList2", Kind::ListBox, 4920, 120, 495, 255, u"", 34,
     {.bVisible = false, .bSorted = true}},
    {u"adoList3", Kind::ListBox, 5640, 120, 495, 255, u"", 35,
     {.bVisible = false, .bSorted = true}},
    {u"adoList4", Kind::ListBox, 6360, 120, 495, 255, u"", 36,
     {.bVisible = false, .bSorted = true}},
    {u"RahmenFrm", Kind::Frame, 720, 360, 8775, 6375, u"Langtext - Konvertierung", 13,
     {.font = {.nSize = 9.75F, .bBold = true}}},
};

// The places overlap on purpose: the option that is chosen decides which of the lists are seen.
constexpr ControlDesign kInFrame[] = {
    {u"Option1", Kind::RadioButton, 240, 1500, 2175, 550, u"Textfile -> Database", 14,
     {.backColour = kCyan}},
    {u"Option2", Kind::RadioButton, 240, 2700, 2175, 550, u"Database -> Textfile", 15,
     {.backColour = kCyan}},
    {u"Option3", Kind::RadioButton, 240, 3900, 2175, 550, u"Database (IO's) -> Programs", 22,
     {.backColour = kCyan}},
    {u"chkBoxSymbol", Kind::CheckBox, 240, 3960, 2175, 375, u"mit Kurzsymbolik", 16,
     {.backColour = kCyan}},
    {u"chkBoxAdd", Kind::CheckBox, 240, 5280, 2295, 195, u"Langtexte hinzufuegen", 19},
    {u"chkBoxSelAll", Kind::CheckBox, 240, 5280, 2295, 195, u"Select all", 20},
    // The bar keeps the limits of its kind, 0 to 100.
    {u"ProgressBar2", Kind::ProgressBar, 5040, 5640, 3350, 135, u"", 17},
    {u"StatusBar1", Kind::StatusBar, 120, 5880, 8535, 375, u"", 18, {.nPanels = 4}},
    {u"Drive1", Kind::DriveList, 2760, 840, 2175, 315, u"", 21},
    {u"Dir1", Kind::DirList, 2760, 1320, 2175, 3465, u"", 23},
    {u"Text1", Kind::TextBox, 5040, 840, 3495, 315, u"Text1", 24},
    {u"Picture1", Kind::PictureBox, 2760, 840, 5775, 3975, u"", 25},
    {u"txtboxView", Kind::TextBox, 2760, 840, 5775, 3975, u"", 29,
     {.bMultiLine = true, .bBothScrollBars = true}},
    {u"TreeView1", Kind::Tree, 2760, 840, 2175, 3975, u"", 28},
    {u"File2", Kind::FileList, 5040, 840, 3495, 3990, u"", 30,
     {.nMultiSelect = SelectionList::kSimple}},
    {u"File1", Kind::FileList, 5040, 840, 3495, 3990, u"", 31},
    {u"List1", Kind::ListBox, 5040, 840, 3495, 3960, u"", 32,
     {.nMultiSelect = SelectionList::kExtended}},
    {u"Shape1", Kind::Shape, 120, 720, 2415, 4215},
    {u"Shape2", Kind::Shape, 2640, 720, 6015, 4215},
};

constexpr ControlDesign kInPicture[] = {
    {u"Image1", Kind::Image, 480, 720, 720, 720, u"", -1, {.sPicture = u"picStart"}},
    {u"Text2", Kind::TextBox, 1440, 960, 4215, 750, u"Langtext - Konvertierungs - Tool", 27,
     {.font = {.nSize = 13.5F}, .bMultiLine = true}},
    {u"txtVersion", Kind::TextBox, 1440, 1750, 2895, 375, u"Version ...", 26,
     {.font = {.nSize = 9.75F, .bBold = true}}},
};
// clang-format on

constexpr ContainerDesign kContainers[] = {
    {u"", kOnForm}, {u"RahmenFrm", kInFrame}, {u"Picture1", kInPicture}};

// The places in the lists are the pictures' roles; the forms' routines count on them.
constexpr TextView kTreePictures[] = {u"picTreeRoot", u"picTreeNode", u"picTreeCurrent"};
constexpr TextView kStatusKeyPictures[] = {
    u"picKeyOption1", u"picKeyOption1Off", u"picKeyOption2", u"picKeyOption2Off",
    u"picKeyOption3", u"picKeyOption3Off", u"picKeyList",    u"picKeyListOff"};
constexpr TextView kLinkPictures[] = {u"picLinkIdle", u"picLinkUp", u"picLinkDown"};
constexpr TextView kSoftKeyPictures[] = {
    u"picSoftView", u"picSoftSave", u"picSoftLeave", u"picSoftStart", u"picSoftExit",
    u"picRead",     u"picWrite",    u"picDelete",    u"picCompact",   u"picCritical"};
constexpr PictureListDesign kPictureLists[] = {{u"ImageList1", 16, 16, kTreePictures},
                                               {u"ImageList2", 32, 32, kStatusKeyPictures},
                                               {u"ImageList3", 48, 48, kLinkPictures},
                                               {u"ImageList4", 20, 19, kSoftKeyPictures}};

constexpr FormDesign kDesign{.sClass = kStdBofFormClass,
                             .sCaption = u"Nomira",
                             .nWidth = 9630,
                             .nHeight = 7260,
                             .containers = kContainers,
                             .pictureLists = kPictureLists,
                             .backColour = kLightGrey,
                             .bTabStopsAtButtons = false};

constexpr TextView kPendantKeysProgramId = u"TQPOCXLibCtl.Tqp";

}  // namespace

StdBofForm::StdBofForm() : DesignedForm(kDesign) {
    Add<PendantKeyControl>(u"TqpKeys").SetProgramId(kPendantKeysProgramId);
}

void StdBofForm::Load() {
    if (!g_bPendantMode) return;
    StartLists();
    InitFormLayout(*this);
    InitStatusLayout(*this);
}

void StdBofForm::CallByName(TextView sMethod, std::span<const CallArgument> arguments) {
    if (sMethod != u"SetInfoResult") Form::CallByName(sMethod, arguments);
}

}  // namespace nomira
