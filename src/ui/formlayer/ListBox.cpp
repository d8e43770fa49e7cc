#include "ui/formlayer/ListBox.h"

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"

namespace nomira {

std::int16_t SelectionList::ListCount() const {
    return ToInt16(std::ssize(m_entries));
}

const SelectionList::Entry& SelectionList::At(std::int16_t nIndex) const {
    if (nIndex < 0 || nIndex >= std::ssize(m_entries)) Raise(ErrorNumber::SubscriptOutOfRange);
    return m_entries[static_cast<std::size_t>(nIndex)];
}

const Text& SelectionList::List(std::int16_t nIndex) const {
    return At(nIndex).sName;
}

bool SelectionList::Selected(std::int16_t nIndex) const {
    return At(nIndex).bSelected;
}

void SelectionList::SetSelected(std::int16_t nIndex, bool bSelected) {
    At(nIndex);
    const auto nPlace = static_cast<std::size_t>(nIndex);
    bool bChanged = false;
    const auto select = [&bChanged](Entry& entry, bool bNow) {
        bChanged = bChanged || entry.bSelected != bNow;
        entry.bSelected = bNow;
    };
    if (bSelected && m_nMultiSelect == kSingle) {
        for (Entry& entry : m_entries)
            if (&entry != &m_entries[nPlace]) select(entry, false);
    }
    select(m_entries[nPlace], bSelected);
    if (bChanged) Changed(u"Selected");
}

void SelectionList::UserSelect(std::int16_t nIndex, bool bSelected) {
    if (ReachedByUser()) SetSelected(nIndex, bSelected);
}

void SelectionList::SetEntries(const std::vector<Text>& names) {
    std::vector<Entry> entries;
    entries.reserve(names.size());
    for (const Text& sName : names)
        entries.push_back({sName});
    Assign(m_entries, entries, u"List");
}

void SelectionList::InsertEntry(std::size_t nPlace, TextView sName) {
    ToInt16(std::ssize(m_entries) + 1);
    m_entries.insert(m_entries.begin() + static_cast<std::ptrdiff_t>(nPlace), {Text(sName)});
    Changed(u"List");
}

void ListBox::AddItem(TextView sText) {
    std::size_t nPlace = Entries().size();
    if (m_bSorted) {
        const Text sKey = UCase(sText);
        while (nPlace > 0 && UCase(Entries()[nPlace - 1].sName) > sKey)
            --nPlace;
    }
    InsertEntry(nPlace, sText);
}

void ListBox::Clear() {
    SetEntries({});
}

}  // namespace nomira
