#include "ui/StdBofForm.h"

#include <algorithm>
#include <chrono>

#include "database/adoModul.h"
#include "frame/ProgramVariables.h"
#include "frame/Settings.h"
#include "langtools/RuntimeError.h"
#include "link/SystemSizes.h"
#include "link/cVexonComm.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "ui/Captions.h"
#include "ui/FormLayout.h"
#include "ui/KeyStates.h"
#include "ui/ListHandlers.h"
#include "ui/Options.h"
#include "ui/ProgramTree.h"
#include "ui/RunSoftKeyAction.h"
#include "ui/StatusRoutines.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/PendantKeyControl.h"
#include "ui/formlayer/StatusBar.h"
#include "ui/formlayer/TreeView.h"

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

// ---- The keys ----

constexpr std::int16_t kSoftKeys = 7;
constexpr std::int16_t kStatusKeys = 6;
constexpr std::int16_t kLastOptionKey = 4;
constexpr std::int16_t kEnterKey = 13;

using KeyClick = void (StdBofForm::*)(std::int16_t nIndex);

struct KeyCode {
    std::int16_t nCode;
    KeyClick click;
    std::int16_t nIndex;
};

// The hardware keys. The soft keys 3 and 4 and the last status key have none.
constexpr KeyCode kKeyCodes[] = {
    {113, &StdBofForm::SoftKey_Click, 0},  {114, &StdBofForm::SoftKey_Click, 1},
    {115, &StdBofForm::SoftKey_Click, 2},  {118, &StdBofForm::SoftKey_Click, 5},
    {119, &StdBofForm::SoftKey_Click, 6},  {129, &StdBofForm::StatKeyL_Click, 1},
    {130, &StdBofForm::StatKeyL_Click, 2}, {131, &StdBofForm::StatKeyL_Click, 3},
    {132, &StdBofForm::StatKeyL_Click, 4}};

// The first number of a range is the key 0 of its array.
struct KeyNumbers {
    std::int16_t nFirst, nLast;
    KeyClick click;  // none for the counterparts of the keys, which have no action
};

constexpr KeyNumbers kKeyNumbers[] = {{10, 15, &StdBofForm::StatKeyL_Click},
                                      {138, 143, nullptr},
                                      {30, 36, &StdBofForm::SoftKey_Click},
                                      {158, 164, nullptr}};

// What a soft key makes of the form ahead of its action.
struct SoftKeyState {
    std::int16_t nIndex;
    void (*enter)(const Form& form);
};
constexpr SoftKeyState kSoftKeyStates[] = {
    {0, EnterDatabaseView}, {1, DisableRunKeys}, {2, LeaveDatabaseView}, {5, DisableRunKeys}};

void Toggle(CheckBox& box) {
    box.SetValue(box.Value() != CheckBox::kCleared ? CheckBox::kCleared : CheckBox::kChecked);
}

// Where the box of the short symbols is seen, the key is that of the box, be it enabled or not.
void OptionOrSymbol(const Form& form) {
    auto& box = form.Get<CheckBox>(u"chkBoxSymbol");
    if (box.Visible())
        Toggle(box);
    else
        ShowOption3(form);
}

// The two boxes share one place, and only one of them is seen there.
void ToggleListBox(const Form& form) {
    for (const TextView sBox : {u"chkBoxSelAll", u"chkBoxAdd"}) {
        auto& box = form.Get<CheckBox>(sBox);
        if (!box.Visible()) continue;
        Toggle(box);
        return;
    }
}

// The tab key is sent to the form behind a look for the next control that nobody uses.
void StepFocus(Form& form) {
    constexpr Desktop::WindowHandle kNoDialog = 0;
    constexpr Desktop::WindowHandle kFirstControl = 1;
    TheDesktop().NextDialogTabItem(kNoDialog, kFirstControl, true);
    form.FocusNext();
}

struct StatusKeyAction {
    std::int16_t nIndex;
    void (*run)(Form& form);
};
// The last key is off for good; its step stays behind it.
constexpr StatusKeyAction kStatusKeyActions[] = {{1, [](Form& form) { ShowOption1(form); }},
                                                 {2, [](Form& form) { ShowOption2(form); }},
                                                 {3, [](Form& form) { OptionOrSymbol(form); }},
                                                 {4, [](Form& form) { ToggleListBox(form); }},
                                                 {5, StepFocus}};

// The places of the menu row's keys, in twips.
constexpr float kMenuePlaces[] = {600, 1800, 3000, 4200, 5400, 6600, 7800, 9000};

// ---- Places and words ----

constexpr std::chrono::milliseconds kTimeToRead{1500};

}  // namespace

// ---- Load ----

StdBofForm::StdBofForm() : DesignedForm(kDesign) {
    Add<PendantKeyControl>(u"TqpKeys").SetProgramId(kPendantKeysProgramId);
}

// The catalogue comes ahead of the database: they share the one connection.
void StdBofForm::Load() {
    if (!g_bPendantMode) return;
    StartLists();
    AttachHandlers();
    LoadCaptions();
    InitFormLayout(*this);
    InitStatusLayout(*this);
    CheckDatabase();
    ConnectLink();
}

void StdBofForm::AttachHandlers() {
    for (std::int16_t n = 0; n < kSoftKeys; ++n)
        SoftKey(*this, n).onClick = [this, n] { SoftKey_Click(n); };
    for (std::int16_t n = 0; n < kStatusKeys; ++n)
        StatKeyL(*this, n).onClick = [this, n] { StatKeyL_Click(n); };
    Get<PendantKeyControl>(u"TqpKeys").onFKey = [this](std::int16_t nCode) { TqpKeys_FKey(nCode); };
    std::int16_t nOption = 0;
    for (const TextView sOption : {u"Option1", u"Option2", u"Option3"})
        Get<RadioButton>(sOption).onClick = [this, n = ++nOption] { StatKeyL_Click(n); };
    Get<CheckBox>(u"chkBoxSelAll").onClick = [this] { SelectAll(*this); };
    auto& directories = Get<DirListBox>(u"Dir1");
    directories.onChange = [this] { FollowDirectory(*this); };
    directories.onKeyPress = [this](std::int16_t nKeyAscii) { Dir1_KeyPress(nKeyAscii); };
    Get<DriveListBox>(u"Drive1").onChange = [this] { Drive1_Change(); };
    Get<TreeView>(u"TreeView1").onKeyDown = [this](std::int16_t& nKeyCode, std::int16_t) {
        TreeView1_KeyDown(nKeyCode);
    };
}

void StdBofForm::CheckDatabase() {
    if (OpenDatabase(kLongTextDatabase)) return;
    for (std::int16_t n = 1; n <= kLastOptionKey; ++n)
        StatKeyL(*this, n).SetEnabled(false);
    SoftKey(*this, 0).SetEnabled(false);
    Get<StatusBar>(u"StatusBar1").Panels(kMessagePanel).SetText(u"no connect to database !!!");
}

void StdBofForm::ConnectLink() {
    if (g_Comm().ConnectingVexon(Class(), this)) {
        ShowLinkUp(*this);
        ReadSystemSizes();
    } else {
        Get<StatusBar>(u"StatusBar1").Panels(kLinkPanel).SetText(u"no connect to Vexon !!!");
    }
}

void StdBofForm::Form_Unload(std::int16_t&) {}

void StdBofForm::CallByName(TextView sMethod, std::span<const CallArgument> arguments) {
    if (sMethod != u"SetInfoResult") Form::CallByName(sMethod, arguments);
}

// ---- Keys ----

void StdBofForm::TqpKeys_FKey(std::int16_t nKeyCode) {
    const auto key = std::ranges::find(kKeyCodes, nKeyCode, &KeyCode::nCode);
    if (key != std::end(kKeyCodes)) (this->*key->click)(key->nIndex);
}

void StdBofForm::BOFKey(std::int16_t nKeyNumber) {
    const auto range = std::ranges::find_if(kKeyNumbers, [nKeyNumber](const KeyNumbers& numbers) {
        return nKeyNumber >= numbers.nFirst && nKeyNumber <= numbers.nLast;
    });
    if (range == std::end(kKeyNumbers) || !range->click) return;
    (this->*range->click)(static_cast<std::int16_t>(nKeyNumber - range->nFirst));
}

void StdBofForm::SoftKey_Click(std::int16_t nIndex) {
    if (!SoftKey(*this, nIndex).Enabled()) return;
    for (const SoftKeyState& state : kSoftKeyStates)
        if (state.nIndex == nIndex) state.enter(*this);
    RunSoftKeyAction(*this, nIndex, u"SoftKey_Click");
}

void StdBofForm::StatKeyL_Click(std::int16_t nIndex) {
    if (!StatKeyL(*this, nIndex).Enabled()) return;
    for (const StatusKeyAction& action : kStatusKeyActions)
        if (action.nIndex == nIndex) action.run(*this);
}

// ---- Mouse ----

void StdBofForm::Form_MouseEvent(std::int16_t, std::int16_t, float nX, float) {
    const auto place = std::ranges::find(kMenuePlaces, nX);
    if (place == std::end(kMenuePlaces)) return;
    MenueKey_Click(static_cast<std::int16_t>(place - std::begin(kMenuePlaces)));
}

void StdBofForm::MenueKey_Click(std::int16_t) {}

void StdBofForm::TreeView1_MouseDown(std::int16_t, std::int16_t, float, float) {}

// ---- Lists ----

void StdBofForm::TreeView1_KeyDown(std::int16_t nKeyCode) {
    WalkTree(*this, nKeyCode, m_sPrevNodeKey);
}

void StdBofForm::Dir1_KeyPress(std::int16_t nKeyAscii) {
    if (nKeyAscii != kEnterKey) return;
    auto& directories = Get<DirListBox>(u"Dir1");
    directories.SetPath(directories.List(directories.ListIndex()));
}

void StdBofForm::Drive1_Change() {
    try {
        Get<DirListBox>(u"Dir1").SetPath(Get<DriveListBox>(u"Drive1").Drive());
        return;
    } catch (const RuntimeError&) {  // told below
    }
    FallBackFromDrive();
}

// A failure on the way back goes up. The installation's drive comes through Drive1_Change once more
// if it is another one.
void StdBofForm::FallBackFromDrive() {
    auto& drives = Get<DriveListBox>(u"Drive1");
    SetPanel(*this, kMessagePanel, g_sMsgDeviceUnavailable + u" (" + UCase(drives.Drive()) + u")",
             picCritical());
    Get<StatusBar>(u"StatusBar1").Refresh();
    TheProcesses().Sleep(kTimeToRead);
    drives.SetDrive(nomira::Left(g_sInstallDir, kRootLength));
    Get<DirListBox>(u"Dir1").SetPath(Text(g_sInstallDir).append(DefaultTextFilePath()));
    TheProcesses().Sleep(kTimeToRead);
    SetPanel(*this, kMessagePanel, u"", {});
}

}  // namespace nomira
