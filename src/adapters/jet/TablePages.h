// The pages of a table that is being made.
#pragma once

#include "adapters/jet/Definition.h"
#include "adapters/jet/PageStore.h"

namespace nomira::jet {

// Takes the first page of the table's definition, its maps, an empty tree for each of its indexes
// and the maps of its long columns, and puts all of them into the definition.
void TakePages(PageStore& store, TableDefinition& table);

}  // namespace nomira::jet
