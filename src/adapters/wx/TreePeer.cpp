#include "adapters/wx/TreePeer.h"

#include <wx/treectrl.h>

#include <algorithm>

#include "adapters/wx/PictureStore.h"
#include "adapters/wx/WxText.h"
#include "ui/formlayer/Form.h"
#include "ui/formlayer/Picture.h"

namespace nomira::wx {
namespace {

// The old codes of the keys that move through a tree.
constexpr struct {
    int nKey;
    std::int16_t nCode;
} kKeyCodes[] = {{WXK_END, 35}, {WXK_HOME, 36},  {WXK_LEFT, 37},
                 {WXK_UP, 38},  {WXK_RIGHT, 39}, {WXK_DOWN, 40}};

constexpr std::int16_t kShift = 1, kControl = 2, kAlt = 4;

std::int16_t CodeOf(int nKey) {
    const auto* const row =
        std::ranges::find(kKeyCodes, nKey, [](const auto& r) { return r.nKey; });
    return row == std::end(kKeyCodes) ? std::int16_t{0} : row->nCode;
}

int KeyOf(std::int16_t nCode) {
    const auto* const row =
        std::ranges::find(kKeyCodes, nCode, [](const auto& r) { return r.nCode; });
    return row == std::end(kKeyCodes) ? 0 : row->nKey;
}

std::int16_t ShiftOf(const wxKeyEvent& event) {
    return static_cast<std::int16_t>((event.ShiftDown() ? kShift : 0) |
                                     (event.ControlDown() ? kControl : 0) |
                                     (event.AltDown() ? kAlt : 0));
}

std::int16_t NumberOf(const TreeNode* node) {
    return node ? node->Index() : std::int16_t{0};
}

}  // namespace

TreePeer::TreePeer(FormWindow& owner, TreeView& control, wxWindow& parent)
    : PeerOf(owner, control),
      m_tree(new wxTreeCtrl(&parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                            wxTR_DEFAULT_STYLE | wxTR_HIDE_ROOT | wxTR_SINGLE | wxBORDER_SIMPLE)) {
    Adopt(*m_tree);
    m_tree->Bind(wxEVT_TREE_SEL_CHANGED, [this](wxTreeEvent& event) { OnSelected(event); });
    m_tree->Bind(wxEVT_TREE_ITEM_EXPANDED, [this](wxTreeEvent& event) { OnExpanded(event, true); });
    m_tree->Bind(wxEVT_TREE_ITEM_COLLAPSED,
                 [this](wxTreeEvent& event) { OnExpanded(event, false); });
    m_tree->Bind(wxEVT_CHAR, [this](wxKeyEvent& event) { OnKey(event); });
}

void TreePeer::SyncOwn() {
    ShowPictures();
    if (!HasSameNodes()) Rebuild();
    for (std::int16_t n = 1; n <= TheControl().Nodes().Count(); ++n) {
        const TreeNode& node = TheControl().Nodes().Item(n);
        const wxTreeItemId& item = m_items[static_cast<std::size_t>(n - 1)].id;
        const wxString sText = ToWx(node.Text());
        if (m_tree->GetItemText(item) != sText) m_tree->SetItemText(item, sText);
        const int nImage = ImageOf(node);
        if (m_tree->GetItemImage(item) != nImage) m_tree->SetItemImage(item, nImage);
        if (m_tree->ItemHasChildren(item) && m_tree->IsExpanded(item) != node.Expanded())
            node.Expanded() ? m_tree->Expand(item) : m_tree->Collapse(item);
    }
    const TreeNode* selected = TheControl().SelectedItem();
    if (NodeOf(m_tree->GetSelection()) == selected) return;
    if (selected)
        m_tree->SelectItem(m_items[static_cast<std::size_t>(selected->Index() - 1)].id);
    else
        m_tree->Unselect();
}

// A place that the picture list doesn't have shows nothing.
int TreePeer::ImageOf(const TreeNode& node) const {
    return node.Image() <= m_tree->GetImageCount() ? node.Image() - 1 : -1;
}

void TreePeer::ShowPictures() {
    const Text& sList = TheControl().ImageList();
    if (m_sPictures == sList) return;
    m_sPictures = sList;
    const auto* list = As<PictureList>(TheControl().Owner().Find(sList));
    wxVector<wxBitmapBundle> bundles;
    for (std::int16_t n = 1; list && n <= list->ImageCount(); ++n) {
        const wxBitmapBundle bundle = PictureBundle(list->ListImages(n).Picture.sName);
        const wxSize size(list->ImageWidth(), list->ImageHeight());
        bundles.push_back(bundle.IsOk() ? bundle : wxBitmapBundle(wxBitmap(size)));
    }
    m_tree->SetImages(bundles);
}

bool TreePeer::HasSameNodes() const {
    const TreeNodes& nodes = TheControl().Nodes();
    if (static_cast<std::size_t>(nodes.Count()) != m_items.size()) return false;
    for (std::int16_t n = 1; n <= nodes.Count(); ++n) {
        const Item& item = m_items[static_cast<std::size_t>(n - 1)];
        if (item.nParent != NumberOf(nodes.Item(n).Parent()) || item.sKey != nodes.Item(n).Key())
            return false;
    }
    return true;
}

// A parent stands ahead of its children in the order of the numbers.
void TreePeer::Rebuild() {
    m_items.clear();
    m_tree->DeleteAllItems();
    const wxTreeItemId root = m_tree->AddRoot(wxString());
    const TreeNodes& nodes = TheControl().Nodes();
    for (std::int16_t n = 1; n <= nodes.Count(); ++n) {
        const TreeNode& node = nodes.Item(n);
        const std::int16_t nParent = NumberOf(node.Parent());
        const wxTreeItemId parent =
            nParent ? m_items[static_cast<std::size_t>(nParent - 1)].id : root;
        m_items.push_back({m_tree->AppendItem(parent, ToWx(node.Text())), nParent, node.Key()});
    }
}

TreeNode* TreePeer::NodeOf(const wxTreeItemId& item) const {
    const auto place = std::ranges::find(m_items, item, &Item::id);
    if (!item.IsOk() || place == m_items.end()) return nullptr;
    return &TheControl().Nodes().Item(static_cast<std::int16_t>(place - m_items.begin() + 1));
}

void TreePeer::OnSelected(const wxTreeEvent& event) {
    Act([&] {
        if (TreeNode* node = NodeOf(event.GetItem())) TheControl().UserSelect(*node);
    });
}

void TreePeer::OnExpanded(const wxTreeEvent& event, bool bExpanded) {
    Act([&] {
        if (TreeNode* node = NodeOf(event.GetItem())) TheControl().UserExpand(*node, bExpanded);
    });
}

// The form hears of the key before the tree acts on it, and may put another one in its place.
void TreePeer::OnKey(wxKeyEvent& event) {
    const std::int16_t nGiven = CodeOf(event.GetKeyCode());
    if (nGiven == 0) {
        event.Skip();
        return;
    }
    std::int16_t nCode = 0;
    Act([&] { nCode = TheControl().UserKeyDown(nGiven, ShiftOf(event)); });
    if (nCode == nGiven)
        event.Skip();
    else if (const int nKey = KeyOf(nCode))
        event.m_keyCode = nKey, event.Skip();
}

}  // namespace nomira::wx
