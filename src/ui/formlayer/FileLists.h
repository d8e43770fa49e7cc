// The lists through which a user picks directories and files. They read the disk by themselves, as
// the files port shows it, when their path or pattern changes or they are refreshed.
#pragma once

#include <cstdint>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

// The subdirectories of a directory.
class DirListBox : public Control {
  public:
    using Control::Control;

    // The directory; empty, and the list with it, until it is set.
    const Text& Path() const { return m_sPath; }
    // Raises PathNotFound for what is no directory, and what the files port raises for a drive that
    // isn't there; the list stays as it was then.
    void SetPath(TextView sPath);

    // Entries are full paths, counted from 0; entry -1 is the directory itself. List raises
    // SubscriptOutOfRange for any other place.
    std::int16_t ListCount() const;
    const Text& List(std::int16_t nIndex) const;
    // The highlighted entry, -1 at first and after each new path.
    std::int16_t ListIndex() const { return m_nListIndex; }
    // Raises SubscriptOutOfRange like List.
    void SetListIndex(std::int16_t nIndex);

    void Refresh() override;

  private:
    void Fill(const std::vector<Text>& list);

    Text m_sPath;
    std::vector<Text> m_list;
    std::int16_t m_nListIndex = -1;
};

// The files of a directory that match a pattern, in ascending order without regard to case.
class FileListBox : public Control {
  public:
    using Control::Control;

    // The directory; empty, and the list with it, until it is set. Fails as that of a DirListBox.
    const Text& Path() const { return m_sPath; }
    void SetPath(TextView sPath);
    const Text& Pattern() const { return m_sPattern; }
    void SetPattern(TextView sPattern);

    // Entries are names, counted from 0. List, Selected and SetSelected raise SubscriptOutOfRange
    // for a place that has no entry.
    std::int16_t ListCount() const;
    const Text& List(std::int16_t nIndex) const;
    bool Selected(std::int16_t nIndex) const;
    void SetSelected(std::int16_t nIndex, bool bSelected);

    // Whether several entries can be selected at once; of a list where they can't, a new selection
    // ends the one before. Given at design time.
    bool MultiSelect() const { return m_bMultiSelect; }
    void SetMultiSelect(bool bMultiSelect) { m_bMultiSelect = bMultiSelect; }

    void Refresh() override;

  private:
    struct Entry {
        Text sName;
        bool bSelected = false;
        bool operator==(const Entry&) const = default;
    };
    Entry& At(std::int16_t nIndex);
    const Entry& At(std::int16_t nIndex) const;
    // Reads the directory; what was selected is no longer.
    void Fill();

    Text m_sPath;
    Text m_sPattern = u"*.*";
    bool m_bMultiSelect = false;
    std::vector<Entry> m_entries;
};

}  // namespace nomira
