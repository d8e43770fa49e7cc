#include "ui/formlayer/ListBox.h"

#include "adapters/memory/MemoryMachine.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;
using Texts = std::vector<Text>;

class ListBoxTest : public ::testing::Test {
  protected:
    ListBoxTest() { SetView(&view); }
    ~ListBoxTest() override { SetView(nullptr); }

    class SampleForm : public Form {
      public:
        SampleForm() : Form(u"Sample") {}
        ListBox& list = Add<ListBox>(u"List");
    };

    void Fill(std::initializer_list<TextView> texts) {
        for (const TextView sText : texts)
            list.AddItem(sText);
    }
    Texts Entries() const {
        Texts entries;
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            entries.push_back(list.List(n));
        return entries;
    }
    std::vector<bool> Selections() const {
        std::vector<bool> selections;
        for (std::int16_t n = 0; n < list.ListCount(); ++n)
            selections.push_back(list.Selected(n));
        return selections;
    }

    memory::RecordingView view;
    SampleForm form;
    ListBox& list = form.list;
};

TEST_F(ListBoxTest, EntriesStandInTheOrderOfTheirAddition) {
    EXPECT_EQ(list.ListCount(), 0);
    Fill({u"b", u"a", u"b"});
    EXPECT_EQ(Entries(), (Texts{u"b", u"a", u"b"}));
    list.Clear();
    EXPECT_EQ(list.ListCount(), 0);
    EXPECT_EQ(view.CountChanges(u"List", u"List"), 4);
}

TEST_F(ListBoxTest, ASortedListSortsWithoutRegardToCase) {
    list.SetSorted(true);
    Fill({u"b", u"C", u"a", u"B", u"c", u""});
    EXPECT_EQ(Entries(), (Texts{u"", u"a", u"b", u"B", u"C", u"c"}));
}

TEST_F(ListBoxTest, ANewEntryLeavesTheSelections) {
    list.SetSorted(true);
    Fill({u"b", u"d"});
    list.SetSelected(1, true);
    list.AddItem(u"c");
    EXPECT_EQ(Selections(), (std::vector<bool>{false, false, true}));
}

TEST_F(ListBoxTest, OneOrSeveralSelectionsByTheKindOfTheList) {
    Fill({u"a", u"b", u"c"});
    list.SetSelected(0, true);
    list.SetSelected(2, true);
    EXPECT_EQ(Selections(), (std::vector<bool>{false, false, true}));
    for (const std::int16_t nKind : {SelectionList::kSimple, SelectionList::kExtended}) {
        list.SetMultiSelect(nKind);
        list.SetSelected(0, true);
        EXPECT_EQ(Selections(), (std::vector<bool>{true, false, true}));
        list.SetSelected(0, false);
        EXPECT_EQ(Selections(), (std::vector<bool>{false, false, true}));
    }
}

TEST_F(ListBoxTest, TheUserSelectsWhereTheListCanBeReached) {
    Fill({u"a", u"b"});
    list.UserSelect(1, true);
    EXPECT_EQ(Selections(), (std::vector<bool>{false, true}));
    EXPECT_TRUE(list.HasFocus());
    list.UserSelect(1, false);
    list.SetEnabled(false);
    list.UserSelect(0, true);
    EXPECT_EQ(Selections(), (std::vector<bool>{false, false}));
    EXPECT_EQ(view.CountChanges(u"List", u"Selected"), 2);
}

TEST_F(ListBoxTest, APlaceWithoutAnEntryRaises) {
    Fill({u"a"});
    for (const int nPlace : {-1, 1}) {
        const auto nIndex = static_cast<std::int16_t>(nPlace);
        EXPECT_EQ(Raised([&] { list.List(nIndex); }), ErrorNumber::SubscriptOutOfRange);
        EXPECT_EQ(Raised([&] { list.Selected(nIndex); }), ErrorNumber::SubscriptOutOfRange);
        EXPECT_EQ(Raised([&] { list.SetSelected(nIndex, true); }),
                  ErrorNumber::SubscriptOutOfRange);
    }
}

TEST_F(ListBoxTest, AListTakesNoMoreThanA16BitCount) {
    for (int n = 0; n < 32767; ++n)
        list.AddItem(u"x");
    EXPECT_EQ(list.ListCount(), 32767);
    EXPECT_EQ(Raised([&] { list.AddItem(u"x"); }), ErrorNumber::Overflow);
    EXPECT_EQ(list.ListCount(), 32767);
}

}  // namespace
}  // namespace nomira
