// The customer's way of keeping long names: as comments in a file of signal assignments, one line
// a signal. HarvestFile reads the file into lists; WriteHarvest, called only if it found something,
// puts the lists into the message database.
//
// The lists are state of the module: empty at start, filled anew by each HarvestFile, and not
// cleared by WriteHarvest. Nothing here shows a message.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

class Form;

// Texts in the order in which they were added, each under a key that no other of the list has.
class KeyedTexts {
  public:
    // False, and the list as it was, if the key is there already.
    bool Add(TextView sItem, TextView sKey);
    void Clear();
    std::size_t Count() const { return m_items.size(); }
    // The text at the place, counted from 0.
    const Text& Item(std::size_t n) const { return m_items.at(n); }

  private:
    std::vector<Text> m_items;
    std::unordered_set<Text> m_keys;
};

// One class of signals that the harvest takes.
struct HarvestClass {
    TextView sClass;  // the letters of its names, as ClassifySignal gives them
    TextView sModule;
    TextView sKeyPrefix;
};

inline constexpr std::size_t kHarvestClassCount = 7;

// In this order the lists are filled and written.
const std::array<HarvestClass, kHarvestClassCount>& HarvestClasses();

// Three parallel lists a class: item n of each belongs to the same signal, and the database key is
// the key in all three, which makes the first line of a signal the one that counts.
using HarvestLists = std::array<KeyedTexts, kHarvestClassCount>;
extern HarvestLists m_colLongText;
extern HarvestLists m_colShortName;  // the names as read, "E12"; nobody reads them
extern HarvestLists m_colKey;        // "IN_12"

// Reads the file into the lists; true if any signal was found. An empty path gives false and
// leaves the lists as they are. Raises the file's RuntimeError if it can't be opened, with the
// lists cleared already, and Overflow for a signal's number of more than 32 bits.
// A comment "symbol ; text" is kept whole if chkBoxSymbol of the pendant form is checked; else
// only the text is. The desktop form has no such box, and the pendant's is read for it as well: if
// that form isn't loaded, the box is as designed, cleared.
bool HarvestFile(TextView sPath);

// Stores the lists in the long-text database, after wiping it, the check box chkBoxAdd of the form
// saying so: on the pendant, where it means "add", if it is cleared; on the desktop, where it means
// "overwrite", if it is checked. Raises NoSuchMember if the form has no such box.
void WriteHarvest(const Form& form);

// One wipe of WriteHarvest: the keys, and the module and the size variable that go with them.
struct HarvestWipe {
    TextView sKeyPrefix;
    TextView sModule;
    const std::int16_t* pSize;
};

inline constexpr std::size_t kHarvestWipeCount = 11;

// In the order in which they are done. Four of the classes are not filled by the harvest: they are
// empty afterwards.
const std::array<HarvestWipe, kHarvestWipeCount>& HarvestWipes();

}  // namespace nomira
