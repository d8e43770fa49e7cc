#include <typeindex>
#include <typeinfo>

#include "adapters/wx/ButtonPeers.h"
#include "adapters/wx/ListPeers.h"
#include "adapters/wx/PicturePeers.h"
#include "adapters/wx/TextPeers.h"
#include "adapters/wx/TreePeer.h"

namespace nomira::wx {
namespace {

struct Row {
    const std::type_info& kind;
    std::unique_ptr<Peer> (*make)(FormWindow& owner, Control& control, wxWindow& parent);
};

template <typename PeerKind, typename Kind>
std::unique_ptr<Peer> Make(FormWindow& owner, Control& control, wxWindow& parent) {
    return std::make_unique<PeerKind>(owner, static_cast<Kind&>(control), parent);
}

// Frame lines are painted by the ground they lie on; picture lists and pendant keys can't be seen.
const Row kRows[] = {
    {typeid(Button), Make<ButtonPeer, Button>},
    {typeid(RadioButton), Make<RadioPeer, RadioButton>},
    {typeid(CheckBox), Make<CheckPeer, CheckBox>},
    {typeid(TextBox), Make<TextPeer, TextBox>},
    {typeid(Label), Make<LabelPeer, Label>},
    {typeid(Frame), Make<FramePeer, Frame>},
    {typeid(PictureBox), Make<PicturePeer, PictureBox>},
    {typeid(Image), Make<PicturePeer, PictureBox>},
    {typeid(ListBox), Make<SelectionListPeer, SelectionList>},
    {typeid(FileListBox), Make<SelectionListPeer, SelectionList>},
    {typeid(DriveListBox), Make<DriveListPeer, DriveListBox>},
    {typeid(DirListBox), Make<DirListPeer, DirListBox>},
    {typeid(TreeView), Make<TreePeer, TreeView>},
    {typeid(ProgressBar), Make<ProgressPeer, ProgressBar>},
    {typeid(StatusBar), Make<StatusBarPeer, StatusBar>},
};

}  // namespace

std::unique_ptr<Peer> MakePeer(FormWindow& owner, Control& control, wxWindow& parent) {
    for (const Row& row : kRows)
        if (row.kind == typeid(control)) return row.make(owner, control, parent);
    return nullptr;
}

}  // namespace nomira::wx
