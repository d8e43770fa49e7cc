#include "ui/ProgramTree.h"

#include "testing/Raised.h"
#include "ui/DesktopFixture.h"
#include "ui/formlayer/TreeView.h"

namespace nomira::testing {
namespace {

constexpr std::int16_t kUp = 38;
constexpr std::int16_t kDown = 40;

// As u"R1_1|Program|3|TQX_1": key, text, picture, and the key of the node above it.
Texts Nodes(const TreeView& tree) {
    Texts nodes;
    for (std::int16_t n = 1; n <= tree.Nodes().Count(); ++n) {
        const TreeNode& node = tree.Nodes().Item(n);
        nodes.push_back(node.Key() + u"|" + node.Text() + u"|" + DecimalText(node.Image()) + u"|" +
                        (node.Parent() ? node.Parent()->Key() : Text()));
    }
    return nodes;
}

Texts Joined(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

const Texts kRoots{u"TQX|TQX:\\|1|", u"TQX_1|R1|2|"};

class ProgramTreeTest : public DesktopFixture {
  protected:
    ProgramTreeTest() { Show(); }

    static TreeView& Tree(const Form& which) { return which.Get<TreeView>(u"TreeView1"); }
    static ListBox& List1(const Form& which) { return which.Get<ListBox>(u"List1"); }
    TreeView& Tree() const { return Tree(*form); }
    ListBox& List1() const { return List1(*form); }
    // The pendant form, its controls as designed.
    static Form& Pendant() {
        Form* loaded = FindForm(kStdBofFormClass);
        return loaded ? *loaded : LoadForm(std::make_unique<StdBofForm>());
    }
    static Text Selected(const TreeView& tree) {
        return tree.SelectedItem() ? tree.SelectedItem()->Key() : Text(u"<none>");
    }
    static void Fill(const Form& which, Text sDirList) { FillRobotTree(which, sDirList); }
};

// ---- FillRobotTree ----

TEST_F(ProgramTreeTest, TheRootsStandSideBySide) {
    Fill(*form, u"");
    EXPECT_EQ(Nodes(Tree()), kRoots);
    EXPECT_EQ(Selected(Tree()), u"TQX");
    EXPECT_EQ(Tree().ImageList(), u"ImageList1");
    EXPECT_FALSE(Tree().Nodes().Item(u"TQX_1").Expanded());
}

TEST_F(ProgramTreeTest, TheDirectoryOfProgramsIsOpenedAndSelected) {
    Fill(*form, u"Program\n");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|Program|3|TQX_1"}));
    EXPECT_EQ(Selected(Tree()), u"R1_1");
    EXPECT_TRUE(Tree().Nodes().Item(u"TQX_1").Expanded());
    EXPECT_FALSE(Tree().Nodes().Item(u"TQX").Expanded());
}

TEST_F(ProgramTreeTest, OtherDirectoriesRest) {
    Fill(*form, u"System\nprogram\nProgram \n");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|System|2|TQX_1", u"R1_2|program|2|TQX_1",
                                             u"R1_3|Program |2|TQX_1"}));
    EXPECT_EQ(Selected(Tree()), u"TQX");
    EXPECT_FALSE(Tree().Nodes().Item(u"TQX_1").Expanded());
}

TEST_F(ProgramTreeTest, AnEntryWithoutItsLineFeedDoesNotCount) {
    Fill(*form, u"Program");
    EXPECT_EQ(Nodes(Tree()), kRoots);
    Fill(*form, u"System\nProgram");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|System|2|TQX_1"}));
}

TEST_F(ProgramTreeTest, EmptyLinesDoNotMoveTheNumbers) {
    Fill(*form, u"\nA\n\n\nB\n");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|A|2|TQX_1", u"R1_2|B|2|TQX_1"}));
}

TEST_F(ProgramTreeTest, TheListComesBackEmpty) {
    for (const TextView sGiven : {u"A\nB\n", u"A\nrest", u"rest", u"\n"}) {
        Text sDirList(sGiven);
        FillRobotTree(*form, sDirList);
        EXPECT_EQ(sDirList, u"");
    }
    Text sDirList = u"None\\Such\n";
    EXPECT_EQ(Raised([&] { FillRobotTree(*form, sDirList); }), ErrorNumber::IndexOutOfBounds);
    EXPECT_EQ(sDirList, u"");
}

TEST_F(ProgramTreeTest, TheTreeIsFilledAnew) {
    Fill(*form, u"A\nB\n");
    Tree().SetImageList(u"");
    Tree().Nodes().Item(u"TQX").SetText(u"changed");
    Fill(*form, u"C\n");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|C|2|TQX_1"}));
    EXPECT_EQ(Tree().ImageList(), u"ImageList1");
    EXPECT_EQ(Selected(Tree()), u"TQX");
}

TEST_F(ProgramTreeTest, NestedEntriesMoveBehindTheOthers) {
    Form& pendant = Pendant();
    Fill(pendant, u"Program\\Sub\nProgram\nSystem\n");
    EXPECT_EQ(Nodes(Tree(pendant)), Joined(kRoots, {u"R1_1|Program|3|TQX_1", u"R1_2|System|2|TQX_1",
                                                    u"R11_3|Sub|3|R1_1"}));
}

// The second of two neighbours slides into the place of the first and is passed over, so that the
// directory behind it stands in the way of a number, not the nested ones.
TEST_F(ProgramTreeTest, ANestedEntryBehindAnotherStaysAheadOfDirectories) {
    Form& pendant = Pendant();
    Fill(pendant, u"R1\\First\nTQX:\\\nProgram\n");
    EXPECT_EQ(Nodes(Tree(pendant)),
              Joined(kRoots, {u"R1_2|Program|3|TQX_1", u"R11_2|First|3|TQX_1"}));
}

// Of four in a row the second and the fourth stay at first; the third is moved behind the first,
// and the first once more when the index comes to its new place.
TEST_F(ProgramTreeTest, AMovedEntryIsMovedAgainWhenTheIndexReachesIt) {
    Form& pendant = Pendant();
    Tree(pendant).Nodes().Clear();
    Fill(pendant, u"A\nB\nC\nD\nA\\1\nB\\2\nC\\3\nD\\4\n");
    EXPECT_EQ(Nodes(Tree(pendant)),
              Joined(kRoots,
                     {u"R1_1|A|2|TQX_1", u"R1_2|B|2|TQX_1", u"R1_3|C|2|TQX_1", u"R1_4|D|2|TQX_1",
                      u"R11_4|2|3|R1_2", u"R11_6|4|3|R1_4", u"R11_5|3|3|R1_3", u"R11_3|1|3|R1_1"}));
}

TEST_F(ProgramTreeTest, NestedEntriesOfTheDesktopFormGoToThePendantsTree) {
    Form& pendant = Pendant();
    Fill(pendant, u"Program\n");
    Fill(*form, u"Program\nProgram\\Sub\n");
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|Program|3|TQX_1"}));
    EXPECT_EQ(Nodes(Tree(pendant)), Joined(kRoots, {u"R1_1|Program|3|TQX_1", u"R11_3|Sub|3|R1_1"}));
}

TEST_F(ProgramTreeTest, ThePendantFormIsCreatedUnseenForThem) {
    Fill(*form, u"Program\n");
    EXPECT_EQ(FindForm(kStdBofFormClass), nullptr);
    EXPECT_EQ(Raised([&] { Fill(*form, u"Program\nProgram\\Sub\n"); }),
              ErrorNumber::IndexOutOfBounds);
    const Form* pendant = FindForm(kStdBofFormClass);
    ASSERT_NE(pendant, nullptr);
    EXPECT_FALSE(pendant->Visible());
    EXPECT_FALSE(pendant->IsLive());
    EXPECT_EQ(pendant->Get<Button>(u"SoftKey", 3).Caption(), u"Soft-Key 3") << "as designed";
    EXPECT_EQ(Nodes(Tree()), Joined(kRoots, {u"R1_1|Program|3|TQX_1"}));
}

TEST_F(ProgramTreeTest, AnUnknownFirstPartLooksBehindTheLastNode) {
    Form& pendant = Pendant();
    EXPECT_EQ(Raised([&] { Fill(pendant, u"Program\nNone\\Sub\n"); }),
              ErrorNumber::IndexOutOfBounds);
    EXPECT_EQ(Raised([&] { Fill(pendant, u"Program\nprogram\\Sub\n"); }),
              ErrorNumber::IndexOutOfBounds);
    EXPECT_EQ(Nodes(Tree(pendant)), Joined(kRoots, {u"R1_1|Program|3|TQX_1"}));
}

TEST_F(ProgramTreeTest, TheFirstNodeOfTheTextTakesTheEntry) {
    Form& pendant = Pendant();
    Fill(pendant, u"R1\nR1\\Sub\n");
    EXPECT_EQ(Nodes(Tree(pendant)), Joined(kRoots, {u"R1_1|R1|2|TQX_1", u"R11_2|Sub|3|TQX_1"}));
}

TEST_F(ProgramTreeTest, AThirdPartRepeatsTheKeyOfTheSecond) {
    Form& pendant = Pendant();
    EXPECT_EQ(Raised([&] { Fill(pendant, u"Program\nProgram\\Sub\\Deep\n"); }),
              ErrorNumber::KeyNotUnique);
    EXPECT_EQ(Nodes(Tree(pendant)), Joined(kRoots, {u"R1_1|Program|3|TQX_1", u"R11_3|Sub|3|R1_1"}));
}

TEST_F(ProgramTreeTest, ASecondEntryBelowTheSameNodeRepeatsTheKey) {
    EXPECT_EQ(Raised([&] { Fill(Pendant(), u"Program\nProgram\\A\nProgram\\B\n"); }),
              ErrorNumber::KeyNotUnique);
}

TEST_F(ProgramTreeTest, AnEntryOfOnePartWithABackslashAddsNothing) {
    EXPECT_EQ(Raised([&] { Fill(*form, u"None\\\n\\None\n\\\n"); }), std::nullopt);
    EXPECT_EQ(Nodes(Tree()), kRoots);
}

TEST_F(ProgramTreeTest, ABlankDoesNotCutAnEntry) {
    Form& pendant = Pendant();
    Fill(pendant, u"My Dir\nMy Dir\\Sub Dir\n");
    EXPECT_EQ(Nodes(Tree(pendant)),
              Joined(kRoots, {u"R1_1|My Dir|2|TQX_1", u"R11_3|Sub Dir|3|R1_1"}));
}

// ---- ShowRobotPrograms ----

TEST_F(ProgramTreeTest, ProgramsAreKnownByTheirEndingInAnyCase) {
    Text sNames = u"A.SRC\nb.src\nc.dat\n.SRC\nsrc\nd.src2\nE.Src\n";
    ShowRobotPrograms(*form, sNames);
    EXPECT_EQ(Entries(List1()), (Texts{u"A.SRC", u"b.src", u".SRC", u"E.Src"}));
    EXPECT_EQ(sNames, u"");
}

TEST_F(ProgramTreeTest, ASecondListIsAddedToTheFirst) {
    for (int n = 0; n < 2; ++n) {
        Text sNames = u"a.src\n";
        ShowRobotPrograms(*form, sNames);
    }
    EXPECT_EQ(Entries(List1()), (Texts{u"a.src", u"a.src"}));
}

TEST_F(ProgramTreeTest, ALastNameWithoutItsLineFeedFails) {
    Text sNames = u"a.src\nb.src";
    EXPECT_EQ(Raised([&] { ShowRobotPrograms(*form, sNames); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(Entries(List1()), (Texts{u"a.src"}));
    EXPECT_EQ(sNames, u"b.src");
}

TEST_F(ProgramTreeTest, EmptyLinesAreNoPrograms) {
    Text sNames = u"\n\na.src\n\n";
    ShowRobotPrograms(*form, sNames);
    EXPECT_EQ(Entries(List1()), (Texts{u"a.src"}));
}

TEST_F(ProgramTreeTest, TheDesktopFormShowsTreeAndList) {
    SetVisible(*form, {u"chkBoxAdd", u"Text1", u"txtboxView", u"File1", u"File2"}, true);
    Get<CheckBox>(u"chkBoxSelAll").SetValue(CheckBox::kChecked);
    Tree().SetEnabled(false);
    Text sNames = u"a.src\n";
    ShowRobotPrograms(*form, sNames);
    EXPECT_EQ(Seen(),
              (Texts{u"TreeView1", u"Option1", u"Option2", u"Option3", u"List1", u"chkBoxSelAll",
                     u"cmdStart", u"cmdExit", u"cmdView", u"StatusBar1", u"Picture1"}));
    EXPECT_EQ(Get<CheckBox>(u"chkBoxSelAll").Value(), CheckBox::kCleared);
    EXPECT_TRUE(Tree().Enabled());
    EXPECT_TRUE(Tree().HasFocus());
}

TEST_F(ProgramTreeTest, TheDesktopFormShowsThemInOrder) {
    SetVisible(*form, {u"chkBoxAdd", u"Text1", u"txtboxView", u"File1", u"File2"}, true);
    Get<CheckBox>(u"chkBoxSelAll").SetValue(CheckBox::kChecked);
    Tree().SetEnabled(false);
    view.steps.clear();
    Text sNames = u"a.src\n";
    ShowRobotPrograms(*form, sNames);
    EXPECT_EQ(view.steps,
              (Texts{u"chkBoxAdd.Visible=False", u"chkBoxSelAll.Value",
                     u"chkBoxSelAll.Visible=True", u"cmdStart.Visible=True",
                     u"Picture1.Visible=True", u"List1.Visible=True", u"Text1.Visible=False",
                     u"txtboxView.Visible=False", u"File1.Visible=False", u"File2.Visible=False",
                     u"Dir1.Visible=False", u"Drive1.Visible=False", u"TreeView1.Visible=True",
                     u"TreeView1.Enabled=True", u"TreeView1.Focus", u"List1.List"}));
}

TEST_F(ProgramTreeTest, ThePendantFormKeepsItsPicture) {
    Form& pendant = Pendant();
    SetVisible(pendant, {u"Picture1", u"TreeView1", u"List1"}, false);
    Text sNames = u"a.src\n";
    ShowRobotPrograms(pendant, sNames);
    EXPECT_FALSE(pendant.Get<Control>(u"Picture1").Visible());
    EXPECT_TRUE(Tree(pendant).HasFocus());
    EXPECT_EQ(Entries(List1(pendant)), (Texts{u"a.src"}));
}

// ---- WalkTree ----

// The pendant form's tree: TQX, TQX_1 with the children R1_1 (A), R1_2 (Program), R1_3 (C).
class WalkTreeTest : public ProgramTreeTest {
  protected:
    Form& pendant = Pendant();
    Text sPrevNodeKey;

    WalkTreeTest() {
        Fill(pendant, u"A\nProgram\nC\n");
        Tree(pendant).Nodes().Item(u"R1_2").SetImage(2);
        g_Comm().ConnectingVexon(kStdBofFormClass, &pendant);
        library.calls.clear();
    }
    TreeNode& Node(TextView sKey) const { return Tree(pendant).Nodes().Item(sKey); }
    void Walk(TextView sTo, std::int16_t nKeyCode) {
        Node(sTo).SetSelected(true);
        WalkTree(pendant, nKeyCode, sPrevNodeKey);
    }
    // As u"12222": the pictures of TQX, TQX_1 and the three children.
    Text Pictures() const {
        Text sPictures;
        for (const TextView sKey : {u"TQX", u"TQX_1", u"R1_1", u"R1_2", u"R1_3"})
            sPictures += DecimalText(Node(sKey).Image());
        return sPictures;
    }
};

TEST_F(WalkTreeTest, OtherKeysDoNothing) {
    for (const std::int16_t nKeyCode : std::initializer_list<std::int16_t>{13, 37, 39, 41, 0}) {
        Walk(u"R1_1", nKeyCode);
        EXPECT_EQ(sPrevNodeKey, u"");
    }
    Tree(pendant).Nodes().Clear();
    EXPECT_EQ(Raised([&] { WalkTree(pendant, 39, sPrevNodeKey); }), std::nullopt);
    EXPECT_TRUE(library.calls.empty());
}

TEST_F(WalkTreeTest, WithoutASelectedNodeThereIsNoObject) {
    Tree(pendant).Nodes().Clear();
    EXPECT_EQ(Raised([&] { WalkTree(pendant, kDown, sPrevNodeKey); }), ErrorNumber::ObjectNotSet);
}

TEST_F(WalkTreeTest, TheFirstWalkDownRestsTheNodeAhead) {
    Node(u"R1_1").SetImage(3);
    Walk(u"R1_2", kDown);
    EXPECT_EQ(Pictures(), u"12232");
    EXPECT_EQ(sPrevNodeKey, u"R1_2");
}

TEST_F(WalkTreeTest, TheFirstWalkDownFromAFirstNodeRestsNothing) {
    Node(u"TQX_1").SetImage(3);
    Walk(u"R1_1", kDown);
    EXPECT_EQ(Pictures(), u"13322");
}

TEST_F(WalkTreeTest, TheFirstWalkUpRestsTheFirstChild) {
    Node(u"R1_1").SetImage(3);
    Node(u"R1_2").SetImage(3);
    Node(u"TQX").SetImage(3);
    Walk(u"TQX_1", kUp);
    EXPECT_EQ(Pictures(), u"31232");
}

TEST_F(WalkTreeTest, TheFirstWalkUpToANodeWithoutChildrenRestsNothing) {
    Node(u"R1_1").SetImage(3);
    Walk(u"R1_2", kUp);
    EXPECT_EQ(Pictures(), u"12332");
}

TEST_F(WalkTreeTest, ARootIsMarkedAsRoot) {
    Walk(u"TQX_1", kDown);
    EXPECT_EQ(Pictures(), u"21222");
    Walk(u"TQX", kUp);
    EXPECT_EQ(Pictures(), u"12222");
}

TEST_F(WalkTreeTest, TheNodeLeftBehindRests) {
    Walk(u"R1_1", kDown);
    Walk(u"R1_2", kDown);
    EXPECT_EQ(Pictures(), u"12232");
    Walk(u"R1_3", kDown);
    EXPECT_EQ(Pictures(), u"12223");
    Walk(u"R1_2", kUp);
    EXPECT_EQ(Pictures(), u"12232");
    EXPECT_EQ(sPrevNodeKey, u"R1_2");
}

TEST_F(WalkTreeTest, GoingDownTheRootKeepsItsPicture) {
    Walk(u"TQX_1", kDown);
    Walk(u"R1_1", kDown);
    EXPECT_EQ(Pictures(), u"21322");
}

TEST_F(WalkTreeTest, GoingUpTheRootRests) {
    Walk(u"TQX_1", kUp);
    Walk(u"R1_1", kUp);
    EXPECT_EQ(Pictures(), u"12322");
}

TEST_F(WalkTreeTest, AnotherRootThanTheNodesOwnRestsGoingDown) {
    Walk(u"TQX", kDown);
    Walk(u"R1_1", kDown);
    EXPECT_EQ(Pictures(), u"22322");
}

TEST_F(WalkTreeTest, ASecondKeyOnTheSameNodeDoesNothing) {
    Walk(u"R1_1", kDown);
    const auto nCalls = library.calls.size();
    Node(u"R1_1").SetImage(2);
    List1(pendant).AddItem(u"kept");
    Walk(u"R1_1", kDown);
    Walk(u"R1_1", kUp);
    EXPECT_EQ(library.calls.size(), nCalls);
    EXPECT_EQ(Node(u"R1_1").Image(), 2);
    EXPECT_EQ(Entries(List1(pendant)), (Texts{u"kept"}));
}

TEST_F(WalkTreeTest, ANodeWithoutATextEndsTheFirstWalkAfterItsNeighbour) {
    Node(u"R1_1").SetImage(3);
    Node(u"R1_2").SetText(u"");
    Walk(u"R1_2", kDown);
    EXPECT_EQ(Pictures(), u"12222");
    EXPECT_EQ(sPrevNodeKey, u"R1_2");
    EXPECT_TRUE(library.calls.empty());
}

TEST_F(WalkTreeTest, ANodeWithoutATextLeavesTheMemoryOfTheLast) {
    Walk(u"R1_1", kDown);
    Node(u"R1_2").SetText(u"");
    Walk(u"R1_2", kDown);
    EXPECT_EQ(Pictures(), u"12322");
    EXPECT_EQ(sPrevNodeKey, u"R1_1");
}

TEST_F(WalkTreeTest, TheProgramsOfTheNodesDirectoryReplaceTheList) {
    library.listings[u"TQX:\\\\R1\\Program"] = {u"a.src", u"b.dat", u"C.SRC"};
    List1(pendant).AddItem(u"old");
    Walk(u"R1_2", kDown);
    EXPECT_EQ(library.calls, (Texts{u"ListDirectory(TQX:\\\\R1\\Program, 0, 5)"}));
    EXPECT_EQ(Entries(List1(pendant)), (Texts{u"a.src", u"C.SRC"}));
    Walk(u"R1_1", kUp);
    EXPECT_EQ(Entries(List1(pendant)), Texts{});
}

TEST_F(WalkTreeTest, EachLevelAsksForItsOwnPath) {
    Walk(u"TQX_1", kDown);
    Walk(u"TQX", kUp);
    EXPECT_EQ(library.calls, (Texts{u"ListDirectory(TQX:\\\\R1\\R1\\, 0, 5)",
                                    u"ListDirectory(TQX:\\\\R1\\TQX:\\\\, 0, 5)"}));
}

TEST_F(WalkTreeTest, AFailedListIsAnEmptyOne) {
    library.Fail(u"ListDirectory");
    List1(pendant).AddItem(u"old");
    Walk(u"R1_2", kDown);
    EXPECT_EQ(Entries(List1(pendant)), Texts{});
    EXPECT_EQ(Node(u"R1_2").Image(), 3);
}

TEST_F(WalkTreeTest, TheFocusGoesBackToTheTree) {
    pendant.Get<Control>(u"List1").SetFocus();
    Walk(u"R1_2", kDown);
    EXPECT_TRUE(Tree(pendant).HasFocus());
    Tree(pendant).SetVisible(false);
    EXPECT_EQ(Raised([&] { Walk(u"R1_1", kUp); }), ErrorNumber::InvalidProcedureCall);
    EXPECT_EQ(sPrevNodeKey, u"R1_2");
}

TEST_F(WalkTreeTest, WithoutALinkThereIsNoObject) {
    g_Comm().ExitVexonComm();
    Node(u"R1_2").SetImage(3);
    EXPECT_EQ(Raised([&] { Walk(u"R1_2", kDown); }), ErrorNumber::ObjectNotSet);
    EXPECT_EQ(Pictures(), u"12232") << "the node itself is none that is left behind";
}

TEST_F(WalkTreeTest, TheNodeLeftBehindMayBeGone) {
    Walk(u"R1_3", kDown);
    Fill(pendant, u"A\n");
    EXPECT_EQ(Raised([&] { Walk(u"R1_1", kUp); }), ErrorNumber::ElementNotFound);
}

}  // namespace
}  // namespace nomira::testing
