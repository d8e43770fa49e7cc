#include "adapters/jet/TablePages.h"

#include "adapters/jet/IndexTree.h"
#include "adapters/jet/PageAllocator.h"

namespace nomira::jet {

void TakePages(PageStore& store, TableDefinition& table) {
    table.nPage = TakePage(store);
    std::uint32_t nMapPage = 0;
    table.ownedMap = NewMap(store, nMapPage);
    table.freeMap = NewMap(store, nMapPage);
    for (RealIndex& index : table.realIndexes) {
        index.ownedMap = NewMap(store, nMapPage);
        index.nRootPage = MappedPages(store, index.ownedMap).Take();
        WriteEmptyIndex(store, index.nRootPage, table.nPage);
    }
    for (const Column& column : table.columns) {
        if (!column.IsLongValue()) continue;
        const RowPlace owned = NewMap(store, nMapPage);
        table.longColumns.push_back({column.nNumber, owned, NewMap(store, nMapPage)});
    }
}

}  // namespace nomira::jet
