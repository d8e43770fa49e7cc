// A tree of nodes, each with a key, a text and a picture.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

class TreeView;

class TreeNode {
  public:
    // `nIndex` is the node's place in the order of addition, one-based.
    TreeNode(TreeView& tree, std::int16_t nIndex, TreeNode* parent, nomira::Text sKey);

    std::int16_t Index() const { return m_nIndex; }
    const nomira::Text& Key() const { return m_sKey; }
    const nomira::Text& Text() const { return m_sText; }
    void SetText(TextView sText);
    // Place in the tree's picture list, one-based; 0 is no picture.
    std::int16_t Image() const { return m_nImage; }
    void SetImage(std::int16_t nImage);
    // At most one node of a tree is selected.
    bool Selected() const;
    void SetSelected(bool bSelected);
    bool Expanded() const { return m_bExpanded; }
    void SetExpanded(bool bExpanded);

    // nullptr for a node of the top level.
    TreeNode* Parent() const { return m_parent; }
    // The node of the top level above this one, or itself.
    TreeNode& Root();
    // The first child, nullptr if there is none.
    TreeNode* Child() const;
    // The node ahead under the same parent, nullptr if there is none.
    TreeNode* Previous() const;
    // The texts from the root to this node, with the tree's path separator between them.
    nomira::Text FullPath() const;

  private:
    template <typename Held, typename Given>
    void Assign(Held& held, const Given& value, TextView sProperty);

    TreeView& m_tree;
    std::int16_t m_nIndex;
    TreeNode* m_parent;
    nomira::Text m_sKey;
    nomira::Text m_sText;
    std::int16_t m_nImage = 0;
    bool m_bExpanded = false;
};

// The nodes of a tree, by number or by key. Item raises IndexOutOfBounds for a number that no node
// has, ElementNotFound for such a key; a new node raises KeyNotUnique for a key that another node
// has (an empty one is no key).
class TreeNodes {
  public:
    explicit TreeNodes(TreeView& tree) : m_tree(tree) {}

    // One-based, in the order of addition.
    TreeNode& Item(std::int16_t nIndex) const;
    TreeNode& Item(TextView sKey) const;
    std::int16_t Count() const;
    // A new last node of the top level.
    TreeNode& Add(TextView sKey, TextView sText, std::int16_t nImage);
    // A new last child of the parent.
    TreeNode& AddChild(TreeNode& parent, TextView sKey, TextView sText, std::int16_t nImage);
    void Clear();

  private:
    TreeNode& AddUnder(TreeNode* parent, TextView sKey, TextView sText, std::int16_t nImage);
    TreeNode* Find(TextView sKey) const;

    TreeView& m_tree;
    std::vector<std::unique_ptr<TreeNode>> m_nodes;
};

class TreeView : public Control {
  public:
    using Control::Control;

    static constexpr TextView kPathSeparator = u"\\";

    // Gets the code of a key before the tree acts on it, and may change it; the second is the state
    // of the shift keys.
    std::function<void(std::int16_t& nKeyCode, std::int16_t nShift)> onKeyDown;

    TreeNodes& Nodes() { return m_nodes; }
    const TreeNodes& Nodes() const { return m_nodes; }
    // nullptr if no node is selected.
    TreeNode* SelectedItem() const { return m_selected; }

    // The name of the picture list on the same form from which the nodes' pictures are; empty for
    // none.
    const Text& ImageList() const { return m_sImageList; }
    void SetImageList(TextView sImageList);

    // The user has selected a node, or opened or closed it.
    void UserSelect(TreeNode& node);
    void UserExpand(TreeNode& node, bool bExpanded);
    // The user has pressed a key; the result is the code on which the tree then acts.
    std::int16_t UserKeyDown(std::int16_t nKeyCode, std::int16_t nShift);

  protected:
    bool TakesFocus() const override { return true; }

  private:
    friend class TreeNode;
    friend class TreeNodes;
    void Select(TreeNode* node);

    TreeNodes m_nodes{*this};
    TreeNode* m_selected = nullptr;
    Text m_sImageList;
};

}  // namespace nomira
