// The checks of one table: its definition's pages, its rows, indexes, long values and
// relationships.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "adapters/jet/DataPage.h"
#include "adapters/jet/PageAccounts.h"
#include "adapters/jet/RowCodec.h"

namespace nomira::jet {

class TableChecker {
  public:
    TableChecker(AccessFile& file, PageAccounts& accounts, Table& table, std::string sName);

    void Run();

  private:
    // Of one long column.
    struct LongColumn {
        std::size_t nColumn;  // index into the definition's columns
        std::set<std::uint32_t> pages;
        std::set<RowPlace> used;
    };

    std::string Named(const std::string& sWhat, const std::u16string& sName) const;
    void Report(const std::string& sText, std::uint32_t nPage);

    void CheckDefinitionPages();
    std::vector<std::uint32_t> CheckDataPages(RowPlace owned, RowPlace free, std::uint32_t nOwner,
                                              const std::string& sUser);
    void CheckSlots(std::uint32_t nPage, const std::string& sUser);
    void CheckLongPages();
    void CheckRows();
    void CheckRow(RowPlace place);
    RowPlace Target(RowPlace place);
    void NoteKeys(RowPlace place);
    void CheckLongField(LongColumn& column, ByteView field);
    void CheckLongRow(LongColumn& column, RowPlace place);
    void CheckCounters();
    void CheckUnused();
    void CheckIndex(std::size_t nIndex);
    void CompareEntries(std::size_t nIndex, std::vector<IndexEntry> found);
    void CheckRelationship(const LogicalIndex& own);
    void CheckReferences(const LogicalIndex& own, Table& other, const LogicalIndex& record);

    AccessFile& m_file;
    PageAccounts& m_accounts;
    Table& m_table;
    const TableDefinition& m_definition;
    std::string m_sName;
    PageStore& m_store;

    std::vector<std::uint32_t> m_dataPages;
    std::vector<LongColumn> m_longColumns;
    std::vector<std::vector<IndexEntry>> m_expected;  // of each real index
    std::vector<std::set<RowPlace>> m_unknownKeys;    // rows that have none in m_expected
    std::set<RowPlace> m_hidden;                      // bytes of rows that moved
    std::size_t m_nRows = 0;
    std::int64_t m_nHighestAutonumber = 0;
};

}  // namespace nomira::jet
