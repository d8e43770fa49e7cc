// The lists through which a user picks drives, directories and files. They read the disk by
// themselves, as the files port shows it, when their path or pattern changes or they are refreshed.
//
// A path may be a drive alone (its root is meant), and one without a drive counts from the root of
// the drive that the list shows, of drive C: in a list without a path.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"
#include "ui/formlayer/ListBox.h"

namespace nomira {

// The drives of the system.
class DriveListBox : public Control {
  public:
    using Control::Control;

    // Runs at each new drive, set by the program or the user.
    std::function<void()> onChange;

    // In small letters, as u"c:". Until one is set, c: or, without that, the first of the system;
    // empty without any.
    Text Drive() const;
    // Takes the first character of the text as the drive's letter. Raises DeviceUnavailable for a
    // drive that the system doesn't have, and keeps the old one; what is in the drive isn't looked
    // at.
    void SetDrive(TextView sDrive);

    // In alphabetical order, as u"c:".
    std::vector<Text> Drives() const;

    // The user has picked a drive.
    void UserPick(TextView sDrive);

  protected:
    bool TakesFocus() const override { return true; }

  private:
    Text m_sDrive;
};

// The subdirectories of a directory.
class DirListBox : public Control {
  public:
    using Control::Control;

    // Runs at each new path, set by the program or the user.
    std::function<void()> onChange;
    // Gets the character of a key.
    std::function<void(std::int16_t nKeyAscii)> onKeyPress;

    // The directory; empty, and the list with it, until it is set.
    const Text& Path() const { return m_sPath; }
    // Raises PathNotFound for what is no directory, and what the files port raises for a drive that
    // isn't there; the list stays as it was then.
    void SetPath(TextView sPath);

    // Entries are full paths, counted from 0; entry -1 is the directory itself, -2 the one above it
    // and so on up to the root. List raises SubscriptOutOfRange for any other place.
    std::int16_t ListCount() const;
    Text List(std::int16_t nIndex) const;
    // The highlighted entry, -1 at first and after each new path.
    std::int16_t ListIndex() const { return m_nListIndex; }
    // Raises SubscriptOutOfRange like List.
    void SetListIndex(std::int16_t nIndex);

    void Refresh() override;

    // The user has highlighted an entry, has opened one, has pressed the key of a character.
    void UserHighlight(std::int16_t nIndex);
    void UserOpen(std::int16_t nIndex);
    void UserKeyPress(std::int16_t nKeyAscii);

  protected:
    bool TakesFocus() const override { return true; }

  private:
    void Fill(const std::vector<Text>& list);

    Text m_sPath;
    std::vector<Text> m_list;
    std::int16_t m_nListIndex = -1;
};

// The files of a directory that match a pattern, in ascending order without regard to case.
class FileListBox : public SelectionList {
  public:
    using SelectionList::SelectionList;

    // The directory; empty, and the list with it, until it is set. Fails as that of a DirListBox.
    const Text& Path() const { return m_sPath; }
    void SetPath(TextView sPath);
    // Names with the wildcards `*` and `?`, and `;` between several.
    const Text& Pattern() const { return m_sPattern; }
    void SetPattern(TextView sPattern);

    void Refresh() override;

  private:
    // Reads the directory; what was selected is no longer.
    void Fill();

    Text m_sPath;
    Text m_sPattern = u"*.*";
};

}  // namespace nomira
