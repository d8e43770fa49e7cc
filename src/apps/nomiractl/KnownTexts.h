// The texts that the message database is known to hold, for a pass that stores thousands of them
// over what is there: most of an import stands in the database already, and need not be looked up,
// and written, once more.
#pragma once

#include <unordered_map>

#include "apps/nomiractl/DatabaseRows.h"
#include "apps/nomiractl/ItemName.h"

namespace nomira::companion {

class KnownTexts {
  public:
    // `rows` must stay as long as this, unchanged.
    explicit KnownTexts(const Rows& rows);

    // Whether every item of this name has the text, and no other, in the long-text language, so
    // that storing it would leave each row as it is. False also for what isn't known for sure.
    bool Holds(TextView sModule, TextView sKey, TextView sText) const;

    // The name is about to be stored.
    void Forget(TextView sModule, TextView sKey);

  private:
    // The one text of each name; nullptr where the items have none, several, or different ones.
    std::unordered_map<ItemName, const Text*, HashItemName> m_texts;
};

}  // namespace nomira::companion
