// Lists of which entries can be selected.
#pragma once

#include <cstdint>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

// What a list of files and a list of anything have in common. Entries are counted from 0; List,
// Selected, SetSelected and UserSelect raise SubscriptOutOfRange for a place that has no entry.
class SelectionList : public Control {
  public:
    // One entry at a time; several, each click turning one; several, as ranges.
    static constexpr std::int16_t kSingle = 0;
    static constexpr std::int16_t kSimple = 1;
    static constexpr std::int16_t kExtended = 2;

    using Control::Control;

    std::int16_t ListCount() const;
    const Text& List(std::int16_t nIndex) const;
    bool Selected(std::int16_t nIndex) const;
    void SetSelected(std::int16_t nIndex, bool bSelected);

    // One of the three; of a single list, a new selection ends the one before. Given at design
    // time.
    std::int16_t MultiSelect() const { return m_nMultiSelect; }
    void SetMultiSelect(std::int16_t nMultiSelect) { m_nMultiSelect = nMultiSelect; }

    // The user has selected the entry, or has taken its selection away.
    void UserSelect(std::int16_t nIndex, bool bSelected);

  protected:
    struct Entry {
        Text sName;
        bool bSelected = false;
        bool operator==(const Entry&) const = default;
    };
    const std::vector<Entry>& Entries() const { return m_entries; }
    // New entries, of which none is selected.
    void SetEntries(const std::vector<Text>& names);
    // A new entry at the place, the others behind it. Raises Overflow if they become too many.
    void InsertEntry(std::size_t nPlace, TextView sName);
    bool TakesFocus() const override { return true; }

  private:
    const Entry& At(std::int16_t nIndex) const;

    std::int16_t m_nMultiSelect = kSingle;
    std::vector<Entry> m_entries;
};

// A list that the program fills.
class ListBox : public SelectionList {
  public:
    using SelectionList::SelectionList;

    // Behind the others or, in a sorted list, behind those that do not come after it, compared
    // without regard to case.
    void AddItem(TextView sText);
    void Clear();

    // Given at design time.
    bool Sorted() const { return m_bSorted; }
    void SetSorted(bool bSorted) { m_bSorted = bSorted; }

  private:
    bool m_bSorted = false;
};

}  // namespace nomira
