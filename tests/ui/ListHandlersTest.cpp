#include "ui/ListHandlers.h"

#include "testing/Raised.h"
#include "ui/DesktopFixture.h"

namespace nomira::testing {
namespace {

// Both main forms, as they are designed: their handlers are not attached.
class ListHandlersTest : public DesktopFixture {
  protected:
    NomiraMain desktop;
    StdBofForm pendant;
    const Form* forms[2] = {&desktop, &pendant};

    ListHandlersTest() {
        for (const TextView sName : {u"a.src", u"b.src", u"c.txt", u"d.txt"})
            machine.files.Put(Text(u"C:\\prog\\").append(sName), "x");
        machine.files.PutDirectory(u"C:\\none");
    }
    static FileListBox& File2(const Form& which) { return which.Get<FileListBox>(u"File2"); }
    static ListBox& List1(const Form& which) { return which.Get<ListBox>(u"List1"); }
    static void Check(const Form& which, std::int16_t nValue) {
        which.Get<CheckBox>(u"chkBoxSelAll").SetValue(nValue);
        SelectAll(which);
    }
    static void ShowPrograms(const Form& which) {
        File2(which).SetPattern(u"*.src");
        File2(which).SetPath(u"C:\\prog");
    }
};

TEST_F(ListHandlersTest, ACheckedBoxSelectsEveryEntryOfBothLists) {
    for (const Form* which : forms) {
        ShowPrograms(*which);
        List1(*which).AddItem(u"x.src");
        List1(*which).AddItem(u"y.src");
        File2(*which).SetVisible(false);
        Check(*which, CheckBox::kChecked);
        EXPECT_EQ(Selected(File2(*which)), (Texts{u"a.src", u"b.src"}));
        EXPECT_EQ(Selected(List1(*which)), (Texts{u"x.src", u"y.src"}));
        Check(*which, CheckBox::kCleared);
        EXPECT_EQ(Selected(File2(*which)), Texts{});
        EXPECT_EQ(Selected(List1(*which)), Texts{});
    }
}

TEST_F(ListHandlersTest, TheProgramsOnTheDiskGoFirst) {
    ShowPrograms(desktop);
    List1(desktop).AddItem(u"x.src");
    SetView(&view);
    view.steps.clear();
    Check(desktop, CheckBox::kChecked);
    EXPECT_EQ(view.steps, (Texts{u"chkBoxSelAll.Value", u"File2.Selected", u"File2.Selected",
                                 u"List1.Selected"}));
    view.steps.clear();
    Check(desktop, CheckBox::kCleared);
    EXPECT_EQ(view.steps, (Texts{u"chkBoxSelAll.Value", u"File2.Selected", u"File2.Selected",
                                 u"List1.Selected"}));
}

TEST_F(ListHandlersTest, AGreyBoxChangesNothing) {
    for (const Form* which : forms) {
        ShowPrograms(*which);
        File2(*which).SetSelected(1, true);
        Check(*which, CheckBox::kGrey);
        EXPECT_EQ(Selected(File2(*which)), (Texts{u"b.src"}));
    }
}

TEST_F(ListHandlersTest, EmptyListsAreNoFailure) {
    ShowPrograms(desktop);
    Check(desktop, CheckBox::kChecked);
    EXPECT_EQ(Selected(File2(desktop)).size(), 2U);
    File2(desktop).SetPath(u"C:\\none");
    EXPECT_EQ(Raised([&] { Check(desktop, CheckBox::kChecked); }), std::nullopt);
    EXPECT_EQ(Raised([&] { Check(desktop, CheckBox::kCleared); }), std::nullopt);
}

TEST_F(ListHandlersTest, TheFileListsFollowTheDirectory) {
    for (const Form* which : forms) {
        auto& textFiles = which->Get<FileListBox>(u"File1");
        textFiles.SetPattern(u"*.old");
        File2(*which).SetPattern(u"*.old");
        which->Get<DirListBox>(u"Dir1").SetPath(u"C:\\prog");
        FollowDirectory(*which);
        EXPECT_EQ(textFiles.Pattern(), u"*.txt");
        EXPECT_EQ(textFiles.Path(), u"C:\\prog");
        EXPECT_EQ(Entries(textFiles), (Texts{u"c.txt", u"d.txt"}));
        EXPECT_EQ(Selected(textFiles), Texts{});
        EXPECT_EQ(Entries(File2(*which)), (Texts{u"a.src", u"b.src"}));
        EXPECT_EQ(File2(*which).Path(), u"C:\\prog");
        EXPECT_EQ(Selected(File2(*which)), (Texts{u"a.src"}));
    }
}

TEST_F(ListHandlersTest, PatternsComeAheadOfPaths) {
    desktop.Get<FileListBox>(u"File1").SetPattern(u"*.old");
    File2(desktop).SetPattern(u"*.old");
    desktop.Get<DirListBox>(u"Dir1").SetPath(u"C:\\prog");
    SetView(&view);
    view.steps.clear();
    FollowDirectory(desktop);
    std::erase_if(view.steps, [](TextView s) { return s.starts_with(u"dir "); });
    EXPECT_EQ(view.steps, (Texts{u"File1.Pattern", u"File2.Pattern", u"File1.Path", u"File1.List",
                                 u"File2.Path", u"File2.List", u"File2.Selected"}));
}

TEST_F(ListHandlersTest, ADirectoryWithoutProgramsDropsTheFailure) {
    desktop.Get<DirListBox>(u"Dir1").SetPath(u"C:\\none");
    EXPECT_EQ(Raised([&] { FollowDirectory(desktop); }), std::nullopt);
    EXPECT_EQ(File2(desktop).Path(), u"C:\\none");
    EXPECT_EQ(File2(desktop).ListCount(), 0);
}

TEST_F(ListHandlersTest, ADirectoryThatIsGoneIsAFailure) {
    machine.files.PutDirectory(u"C:\\gone");
    desktop.Get<DirListBox>(u"Dir1").SetPath(u"C:\\gone");
    machine.files.RmDir(u"C:\\gone");
    EXPECT_EQ(Raised([&] { FollowDirectory(desktop); }), ErrorNumber::PathNotFound);
}

}  // namespace
}  // namespace nomira::testing
