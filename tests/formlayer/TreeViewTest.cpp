#include "ui/formlayer/TreeView.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;

class TreeViewTest : public ::testing::Test {
  protected:
    TreeViewTest() { SetView(&view); }
    ~TreeViewTest() override { SetView(nullptr); }

    class SampleForm : public Form {
      public:
        SampleForm() : Form(u"Sample") {}
        TreeView& tree = Add<TreeView>(u"Tree");
    };

    // Two nodes at the top, two children of the second, a grandchild.
    void Fill() {
        nodes.Add(u"T", u"TQX:\\", 1);
        TreeNode& second = nodes.Add(u"T_1", u"R1", 2);
        TreeNode& program = nodes.AddChild(second, u"R1_1", u"Program", 3);
        nodes.AddChild(program, u"R11_1", u"Deep", 3);
        nodes.AddChild(second, u"R1_2", u"System", 2);
    }

    memory::RecordingView view;
    SampleForm form;
    TreeView& tree = form.tree;
    TreeNodes& nodes = tree.Nodes();
};

TEST_F(TreeViewTest, NodesAreFoundByNumberInTheOrderOfAdditionAndByKey) {
    EXPECT_EQ(nodes.Count(), 0);
    Fill();
    EXPECT_EQ(nodes.Count(), 5);
    EXPECT_EQ(nodes.Item(1).Key(), u"T");
    EXPECT_EQ(nodes.Item(4).Text(), u"Deep");
    EXPECT_EQ(nodes.Item(4).Index(), 4);
    EXPECT_EQ(&nodes.Item(u"R1_2"), &nodes.Item(5));
    EXPECT_EQ(nodes.Item(u"R1_1").Image(), 3);
}

TEST_F(TreeViewTest, MissingNodesRaise) {
    Fill();
    for (const int nIndex : {-1, 0, 6})
        EXPECT_EQ(Raised([&] { nodes.Item(static_cast<std::int16_t>(nIndex)); }),
                  ErrorNumber::IndexOutOfBounds)
            << nIndex;
    for (const TextView sKey : {u"t", u"R1", u""})
        EXPECT_EQ(Raised([&] { nodes.Item(sKey); }), ErrorNumber::ElementNotFound)
            << testing::Printable(sKey);
}

TEST_F(TreeViewTest, AKeyIsUsedOnceAndAnEmptyOneIsNone) {
    Fill();
    EXPECT_EQ(Raised([&] { nodes.Add(u"R1_1", u"x", 1); }), ErrorNumber::KeyNotUnique);
    EXPECT_EQ(Raised([&] { nodes.AddChild(nodes.Item(1), u"T", u"x", 1); }),
              ErrorNumber::KeyNotUnique);
    EXPECT_EQ(nodes.Count(), 5);
    nodes.Add(u"", u"x", 1);
    nodes.Add(u"", u"y", 1);
    EXPECT_EQ(nodes.Count(), 7);
}

TEST_F(TreeViewTest, ANodeKnowsItsPlace) {
    Fill();
    EXPECT_EQ(nodes.Item(1).Child(), nullptr);
    EXPECT_EQ(nodes.Item(2).Child(), &nodes.Item(3));
    EXPECT_EQ(nodes.Item(3).Child(), &nodes.Item(4));
    EXPECT_EQ(nodes.Item(1).Previous(), nullptr);
    EXPECT_EQ(nodes.Item(2).Previous(), &nodes.Item(1));
    EXPECT_EQ(nodes.Item(3).Previous(), nullptr);
    EXPECT_EQ(nodes.Item(5).Previous(), &nodes.Item(3));
    EXPECT_EQ(&nodes.Item(2).Root(), &nodes.Item(2));
    EXPECT_EQ(&nodes.Item(4).Root(), &nodes.Item(2));
    EXPECT_EQ(nodes.Item(2).Parent(), nullptr);
    EXPECT_EQ(nodes.Item(4).Parent(), &nodes.Item(3));
}

TEST_F(TreeViewTest, AFullPathHasTheTextsFromTheRoot) {
    Fill();
    EXPECT_EQ(nodes.Item(1).FullPath(), u"TQX:\\");
    EXPECT_EQ(nodes.Item(2).FullPath(), u"R1");
    EXPECT_EQ(nodes.Item(3).FullPath(), u"R1\\Program");
    EXPECT_EQ(nodes.Item(4).FullPath(), u"R1\\Program\\Deep");
}

TEST_F(TreeViewTest, OneNodeIsSelected) {
    Fill();
    EXPECT_EQ(tree.SelectedItem(), nullptr);
    nodes.Item(1).SetSelected(true);
    nodes.Item(3).SetSelected(true);
    EXPECT_FALSE(nodes.Item(1).Selected());
    EXPECT_EQ(tree.SelectedItem(), &nodes.Item(3));
    nodes.Item(1).SetSelected(false);
    EXPECT_TRUE(nodes.Item(3).Selected());
    nodes.Item(3).SetSelected(false);
    EXPECT_EQ(tree.SelectedItem(), nullptr);
}

TEST_F(TreeViewTest, AClearedTreeHasNoNodeAndNoSelection) {
    Fill();
    nodes.Item(2).SetSelected(true);
    nodes.Clear();
    EXPECT_EQ(nodes.Count(), 0);
    EXPECT_EQ(tree.SelectedItem(), nullptr);
    Fill();
    EXPECT_EQ(nodes.Item(u"T_1").Index(), 2);
}

TEST_F(TreeViewTest, TheViewHearsWhatIsNew) {
    Fill();
    EXPECT_EQ(view.CountChanges(u"Tree", u"Nodes"), 5);
    for (int i = 0; i < 2; ++i) {
        nodes.Item(4).SetImage(1);
        nodes.Item(4).SetText(u"new");
        nodes.Item(4).SetExpanded(true);
        nodes.Item(4).SetSelected(true);
        tree.SetImageList(u"ImageList1");
    }
    EXPECT_TRUE(nodes.Item(4).Expanded());
    EXPECT_FALSE(nodes.Item(3).Expanded());
    EXPECT_EQ(tree.ImageList(), u"ImageList1");
    EXPECT_EQ(view.CountChanges(u"Tree", u"Nodes(4).Image"), 2);  // 3 at first
    EXPECT_EQ(view.CountChanges(u"Tree", u"Nodes(4).Text"), 2);
    EXPECT_EQ(view.CountChanges(u"Tree", u"Nodes(4).Expanded"), 1);
    EXPECT_EQ(view.CountChanges(u"Tree", u"SelectedItem"), 1);
    EXPECT_EQ(view.CountChanges(u"Tree", u"ImageList"), 1);
    nodes.Clear();
    nodes.Clear();
    EXPECT_EQ(view.CountChanges(u"Tree", u"Nodes"), 6);
}

TEST_F(TreeViewTest, AKeyReachesTheHandlerWhichMayChangeIt) {
    Fill();
    EXPECT_EQ(tree.UserKeyDown(40, 0), 40);
    std::vector<int> seen;
    tree.onKeyDown = [&](std::int16_t& nKeyCode, std::int16_t nShift) {
        seen = {nKeyCode, nShift};
        nKeyCode = 0;
    };
    EXPECT_EQ(tree.UserKeyDown(38, 1), 0);
    EXPECT_EQ(seen, (std::vector<int>{38, 1}));
    EXPECT_TRUE(tree.HasFocus());
}

TEST_F(TreeViewTest, TheUserActsOnNodesWhereTheTreeCanBeReached) {
    Fill();
    tree.UserSelect(nodes.Item(2));
    tree.UserExpand(nodes.Item(2), true);
    EXPECT_TRUE(nodes.Item(2).Selected());
    EXPECT_TRUE(nodes.Item(2).Expanded());
    tree.SetVisible(false);
    bool bKey = false;
    tree.onKeyDown = [&](std::int16_t&, std::int16_t) { bKey = true; };
    tree.UserSelect(nodes.Item(1));
    tree.UserExpand(nodes.Item(2), false);
    tree.UserKeyDown(38, 0);
    EXPECT_TRUE(nodes.Item(2).Selected());
    EXPECT_TRUE(nodes.Item(2).Expanded());
    EXPECT_FALSE(bKey);
}

}  // namespace
}  // namespace nomira
