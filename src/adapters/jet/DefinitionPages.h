// Table definitions as a file stores them: one run of bytes on a chain of pages.
#pragma once

#include "adapters/jet/Definition.h"

namespace nomira::jet {

// The run of bytes and what it says. Parsing raises Damaged where the bytes contradict themselves;
// fields without a known meaning are left out of the definition, and zeros when it is built.
TableDefinition ParseDefinition(ByteView bytes, std::uint32_t nPage, Generation generation);
Bytes BuildDefinition(const TableDefinition& table, Generation generation);

// The run of bytes of the definition that starts on the page. Raises Damaged if none does.
Bytes DefinitionBytes(PageStore& store, std::uint32_t nPage);
TableDefinition ReadDefinition(PageStore& store, std::uint32_t nPage);

// Writes the definition to its first page (TableDefinition::nPage), which is its own already, and
// takes or gives back those behind it as it grows or shrinks.
void WriteDefinition(PageStore& store, const TableDefinition& table);

// Whether the definition that starts on the page still is the given run of bytes, but for counters.
// False if none starts there.
bool IsSameDefinition(PageStore& store, std::uint32_t nPage, ByteView bytes);

// The counters of a definition, in their place on its page: all the rest stays as it is.
class DefinitionCounters {
  public:
    DefinitionCounters(PageStore& store, std::uint32_t nPage) : m_store(store), m_nPage(nPage) {}

    std::uint32_t Rows() const;
    void SetRows(std::uint32_t nRows);
    // The number that was handed out last.
    std::uint32_t LastAutonumber() const;
    void SetLastAutonumber(std::uint32_t nLast);

    // Statistics of a real index: keys that differ.
    void CountNewKey(std::size_t nRealIndex);
    // The same after a tree was built anew.
    void SetStatistics(std::size_t nRealIndex, std::uint32_t nEntries, std::uint32_t nDistinct);

  private:
    std::size_t StatisticsPlace(std::size_t nRealIndex) const;

    PageStore& m_store;
    std::uint32_t m_nPage;
};

}  // namespace nomira::jet
