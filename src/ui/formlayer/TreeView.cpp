#include "ui/formlayer/TreeView.h"

#include <algorithm>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"

namespace nomira {

TreeNode::TreeNode(TreeView& tree, std::int16_t nIndex, TreeNode* parent, nomira::Text sKey)
    : m_tree(tree), m_nIndex(nIndex), m_parent(parent), m_sKey(std::move(sKey)) {}

// The view hears of a node's property as u"Nodes(4).Text".
template <typename Held, typename Given>
void TreeNode::Assign(Held& held, const Given& value, TextView sProperty) {
    m_tree.Assign(held, value, (u"Nodes(" + DecimalText(m_nIndex) + u").").append(sProperty));
}

void TreeNode::SetText(TextView sText) {
    Assign(m_sText, sText, u"Text");
}

void TreeNode::SetImage(std::int16_t nImage) {
    Assign(m_nImage, nImage, u"Image");
}

bool TreeNode::Selected() const {
    return m_tree.SelectedItem() == this;
}

void TreeNode::SetSelected(bool bSelected) {
    if (bSelected != Selected()) m_tree.Select(bSelected ? this : nullptr);
}

void TreeNode::SetExpanded(bool bExpanded) {
    Assign(m_bExpanded, bExpanded, u"Expanded");
}

TreeNode& TreeNode::Root() {
    TreeNode* node = this;
    while (node->m_parent)
        node = node->m_parent;
    return *node;
}

TreeNode* TreeNode::Child() const {
    const TreeNodes& nodes = std::as_const(m_tree).Nodes();
    for (std::int16_t n = 1; n <= nodes.Count(); ++n)
        if (nodes.Item(n).m_parent == this) return &nodes.Item(n);
    return nullptr;
}

TreeNode* TreeNode::Previous() const {
    const TreeNodes& nodes = std::as_const(m_tree).Nodes();
    for (auto n = static_cast<std::int16_t>(m_nIndex - 1); n >= 1; --n)
        if (nodes.Item(n).m_parent == m_parent) return &nodes.Item(n);
    return nullptr;
}

nomira::Text TreeNode::FullPath() const {
    if (!m_parent) return m_sText;
    return m_parent->FullPath().append(TreeView::kPathSeparator).append(m_sText);
}

TreeNode& TreeNodes::Item(std::int16_t nIndex) const {
    if (nIndex < 1 || nIndex > Count()) Raise(ErrorNumber::IndexOutOfBounds);
    return *m_nodes[static_cast<std::size_t>(nIndex - 1)];
}

TreeNode& TreeNodes::Item(TextView sKey) const {
    TreeNode* node = Find(sKey);
    if (!node) Raise(ErrorNumber::ElementNotFound);
    return *node;
}

TreeNode* TreeNodes::Find(TextView sKey) const {
    const auto place = std::ranges::find_if(
        m_nodes, [&](const auto& node) { return !sKey.empty() && Equal(node->Key(), sKey); });
    return place == m_nodes.end() ? nullptr : place->get();
}

std::int16_t TreeNodes::Count() const {
    return ToInt16(std::ssize(m_nodes));
}

TreeNode& TreeNodes::Add(TextView sKey, TextView sText, std::int16_t nImage) {
    return AddUnder(nullptr, sKey, sText, nImage);
}

TreeNode& TreeNodes::AddChild(TreeNode& parent, TextView sKey, TextView sText,
                              std::int16_t nImage) {
    return AddUnder(&parent, sKey, sText, nImage);
}

TreeNode& TreeNodes::AddUnder(TreeNode* parent, TextView sKey, TextView sText,
                              std::int16_t nImage) {
    if (Find(sKey)) Raise(ErrorNumber::KeyNotUnique);
    const auto nIndex = ToInt16(std::ssize(m_nodes) + 1);
    m_nodes.push_back(std::make_unique<TreeNode>(m_tree, nIndex, parent, Text(sKey)));
    m_tree.Changed(u"Nodes");
    TreeNode& node = *m_nodes.back();
    node.SetText(sText);
    node.SetImage(nImage);
    return node;
}

void TreeNodes::Clear() {
    if (m_nodes.empty()) return;
    m_tree.Select(nullptr);
    m_nodes.clear();
    m_tree.Changed(u"Nodes");
}

void TreeView::Select(TreeNode* node) {
    Assign(m_selected, node, u"SelectedItem");
}

void TreeView::SetImageList(TextView sImageList) {
    Assign(m_sImageList, sImageList, u"ImageList");
}

void TreeView::UserSelect(TreeNode& node) {
    if (ReachedByUser()) node.SetSelected(true);
}

void TreeView::UserExpand(TreeNode& node, bool bExpanded) {
    if (ReachedByUser()) node.SetExpanded(bExpanded);
}

std::int16_t TreeView::UserKeyDown(std::int16_t nKeyCode, std::int16_t nShift) {
    if (ReachedByUser()) Fire(onKeyDown, nKeyCode, nShift);
    return nKeyCode;
}

}  // namespace nomira
