// Trees.
#pragma once

#include <wx/treebase.h>

#include <vector>

#include "adapters/wx/Peer.h"
#include "ui/formlayer/TreeView.h"

class wxKeyEvent;
class wxTreeCtrl;
class wxTreeEvent;

namespace nomira::wx {

class TreePeer : public PeerOf<TreeView> {
  public:
    TreePeer(FormWindow& owner, TreeView& control, wxWindow& parent);

  private:
    void SyncOwn() override;
    void ShowPictures();
    int ImageOf(const TreeNode& node) const;
    void Rebuild();
    bool HasSameNodes() const;
    // The control's node of the item, nullptr for none.
    TreeNode* NodeOf(const wxTreeItemId& item) const;
    void OnSelected(const wxTreeEvent& event);
    void OnExpanded(const wxTreeEvent& event, bool bExpanded);
    void OnKey(wxKeyEvent& event);

    wxTreeCtrl* m_tree;
    Text m_sPictures;  // the picture list that is shown
    struct Item {
        wxTreeItemId id;
        std::int16_t nParent;  // number of the parent's node, 0 for none
        Text sKey;
    };
    std::vector<Item> m_items;  // by the number of the node, less one
};

}  // namespace nomira::wx
