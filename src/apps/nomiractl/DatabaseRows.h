// The rows of the message database at one moment, and a plan's change of them. All of it works
// through the core's connection, which must be open (g_Connection), and raises RuntimeErrors.
#pragma once

#include <vector>

#include "apps/nomiractl/LongTexts.h"
#include "apps/nomiractl/Plan.h"

namespace nomira::companion {

// All items with their messages, by key id; messages without an item are not told.
using Rows = std::vector<ItemRow>;
Rows ReadRows();

// Over all that is in them.
Fingerprint FingerprintOf(const Rows& rows);
// The texts in the long-text language by module and key, as of the rows of ReadItems.
LongTexts GroupByName(const Rows& rows);
// What Compare gives for the texts of rows that have not changed.
ByClass<ClassChanges> Unchanged(const Rows& rows);

// What makes the second out of the first.
std::vector<ItemChange> Difference(const Rows& before, const Rows& after);

// Whether the rows that the changes are about, and all others with their names, are as they were
// before the changes; as they are behind them.
bool AreBefore(const std::vector<ItemChange>& changes, const Rows& rows);
bool AreAfter(const std::vector<ItemChange>& changes, const Rows& rows);

// Makes the changes, in rows that are as they were before them.
void ChangeRows(const std::vector<ItemChange>& changes);

}  // namespace nomira::companion
