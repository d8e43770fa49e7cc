#include "ui/ProgramTree.h"

#include <algorithm>
#include <vector>

#include "langtools/CParser.h"
#include "link/cVexonComm.h"
#include "ui/FormAccess.h"
#include "ui/StdBofForm.h"
#include "ui/formlayer/FormLayer.h"
#include "ui/formlayer/TreeView.h"

namespace nomira {
namespace {

constexpr TextView kEntryEnd = u"\n";
constexpr TextView kProgramEnding = u".SRC";
constexpr TextView kProgramDirectory = u"Program";
constexpr TextView kSpaceKey = u"TQX";
constexpr TextView kRobotKey = u"TQX_1";

// Places in ImageList1.
constexpr std::int16_t kRootPicture = 1;
constexpr std::int16_t kRestingPicture = 2;
constexpr std::int16_t kCurrentPicture = 3;

constexpr std::int16_t kKeyUp = 38;
constexpr std::int16_t kKeyDown = 40;

TreeView& Tree(const Form& form) {
    return form.Get<TreeView>(u"TreeView1");
}

// ---- Directories ----

std::vector<Text> CutEntries(Text& sDirList) {
    std::vector<Text> entries;
    TextView sRest = sDirList;
    while (const std::int32_t nEnd = InStr(sRest, kEntryEnd)) {
        if (nEnd > 1) entries.emplace_back(Left(sRest, nEnd - 1));
        sRest = Mid(sRest, nEnd + 1);
    }
    sDirList.clear();
    return entries;
}

bool IsNested(TextView sEntry) {
    return InStr(sEntry, TreeView::kPathSeparator) > 0;
}

// The entry that slides into the place of a moved one is passed over.
void MoveNestedToEnd(std::vector<Text>& entries) {
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        if (IsNested(*entry)) std::rotate(entry, entry + 1, entries.end());
}

void StartTree(TreeView& tree) {
    tree.Nodes().Clear();
    tree.SetImageList(u"ImageList1");
    TreeNode& space = tree.Nodes().Add(kSpaceKey, u"TQX:\\", kRootPicture);
    tree.Nodes().Add(kRobotKey, u"R1", kRestingPicture);
    space.SetSelected(true);
}

void AddDirectory(TreeView& tree, TextView sEntry, std::size_t nPlace) {
    const bool bPrograms = Equal(sEntry, kProgramDirectory);
    TreeNode& robot = tree.Nodes().Item(kRobotKey);
    TreeNode& node =
        tree.Nodes().AddChild(robot, u"R1_" + DecimalText(static_cast<std::int64_t>(nPlace)),
                              sEntry, bPrograms ? kCurrentPicture : kRestingPicture);
    if (!bPrograms) return;
    robot.SetExpanded(true);
    node.SetSelected(true);
}

// Nested directories have always gone to this tree, also those of the desktop form.
TreeView& PendantTree() {
    Form* form = FindForm(kStdBofFormClass);
    return Tree(form ? *form : LoadForm(std::make_unique<StdBofForm>()));
}

// Of the first node with this text; one behind the last node if there is none.
std::int16_t PlaceOf(const TreeNodes& nodes, TextView sText) {
    std::int16_t nPlace = 1;
    while (nPlace <= nodes.Count() && !Equal(nodes.Item(nPlace).Text(), sText))
        ++nPlace;
    return nPlace;
}

void AddNested(TextView sEntry, CParser& parser) {
    parser.Parse(sEntry, TreeView::kPathSeparator, u" ");
    TreeNodes& nodes = PendantTree().Nodes();
    const std::int16_t nParent = PlaceOf(nodes, parser.Token(1));
    for (std::int16_t n = 2; n <= parser.count(); ++n)
        nodes.AddChild(nodes.Item(nParent), u"R11_" + DecimalText(nParent), parser.Token(2),
                       kCurrentPicture);
}

// ---- Programs ----

Text CutName(Text& sNames) {
    const std::int32_t nEnd = InStr(sNames, kEntryEnd);
    Text sName(Left(sNames, nEnd - 1));
    sNames.erase(0, static_cast<std::size_t>(nEnd));
    return sName;
}

void AddPrograms(ListBox& list, Text& sNames) {
    while (!sNames.empty()) {
        const Text sName = CutName(sNames);
        if (UCase(Right(sName, std::ssize(kProgramEnding))) == kProgramEnding) list.AddItem(sName);
    }
}

// ---- The walk ----

// On the first walk the node that the way came from isn't known; what lies there is taken for it.
void RestNeighbour(TreeNode& node, std::int16_t nKeyCode) {
    TreeNode* neighbour = nKeyCode == kKeyDown ? node.Previous() : node.Child();
    if (neighbour) neighbour->SetImage(kRestingPicture);
}

// Going down the root keeps its picture, going up it doesn't.
bool LeavesPicture(TreeNode& node, std::int16_t nKeyCode, TextView sPrevNodeKey) {
    return Equal(sPrevNodeKey, node.Key()) ||
           (nKeyCode == kKeyDown && Equal(sPrevNodeKey, node.Root().Key()));
}

void ShowProgramsOf(const Form& form, TreeNode& node, Text& sPrevNodeKey) {
    Text sNames = g_Comm().GetParticularFileList(node.FullPath());
    Tree(form).SetFocus();
    node.SetImage(&node.Root() == &node ? kRootPicture : kCurrentPicture);
    sPrevNodeKey = node.Key();
    auto& list = form.Get<ListBox>(u"List1");
    list.Clear();
    AddPrograms(list, sNames);
}

}  // namespace

void FillRobotTree(const Form& form, Text& sDirList) {
    std::vector<Text> entries = CutEntries(sDirList);
    MoveNestedToEnd(entries);
    TreeView& tree = Tree(form);
    StartTree(tree);
    CParser parser;
    for (std::size_t n = 0; n < entries.size(); ++n) {
        if (IsNested(entries[n]))
            AddNested(entries[n], parser);
        else
            AddDirectory(tree, entries[n], n + 1);
    }
}

void ShowRobotPrograms(const Form& form, Text& sFileList) {
    SetVisible(form, {u"chkBoxAdd"}, false);
    form.Get<CheckBox>(u"chkBoxSelAll").SetValue(CheckBox::kCleared);
    SetVisible(form, {u"chkBoxSelAll"}, true);
    if (IsDesktopForm(form)) SetVisible(form, {u"cmdStart", u"Picture1"}, true);
    SetVisible(form, {u"List1"}, true);
    SetVisible(form, {u"Text1", u"txtboxView", u"File1", u"File2", u"Dir1", u"Drive1"}, false);
    TreeView& tree = Tree(form);
    tree.SetVisible(true);
    tree.SetEnabled(true);
    tree.SetFocus();
    AddPrograms(form.Get<ListBox>(u"List1"), sFileList);
}

void WalkTree(const Form& form, std::int16_t nKeyCode, Text& sPrevNodeKey) {
    if (nKeyCode != kKeyUp && nKeyCode != kKeyDown) return;
    TreeView& tree = Tree(form);
    TreeNode* node = tree.SelectedItem();
    if (!node) Raise(ErrorNumber::ObjectNotSet);
    if (Equal(node->Key(), sPrevNodeKey)) return;
    if (sPrevNodeKey.empty()) {
        sPrevNodeKey = node->Key();
        RestNeighbour(*node, nKeyCode);
    }
    if (node->Text().empty()) return;
    if (!LeavesPicture(*node, nKeyCode, sPrevNodeKey))
        tree.Nodes().Item(sPrevNodeKey).SetImage(kRestingPicture);
    ShowProgramsOf(form, *node, sPrevNodeKey);
}

}  // namespace nomira
