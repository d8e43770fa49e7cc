// An Access file: its tables by name, and new ones.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "adapters/jet/PageStore.h"
#include "adapters/jet/Table.h"

namespace nomira::jet {

inline constexpr std::int16_t kLocalTable = 1;

// A row of the file's catalogue.
struct CatalogueEntry {
    std::int32_t nId = 0;  // of a local table: the page of its definition
    std::int32_t nParent = 0;
    std::u16string sName;
    std::int16_t nType = 0;  // kLocalTable, or something else
    std::uint32_t nFlags = 0;

    bool IsTable() const { return nType == kLocalTable; }
    // Of the engine or the surface of the maker's program: left alone.
    bool IsSystem() const { return (nFlags & 0x80000002U) != 0; }
};

// What CreateTable makes; numbers, offsets and pages of the definitions are given by it.
struct NewColumn {
    std::u16string sName;
    ColumnType type = ColumnType::Long;
    std::uint16_t nCharacters = 0;  // of Text (characters) and Binary (bytes)
    bool bAutonumber = false;
    bool bCompressed = true;  // Jet 4: texts as one byte per character where they can be
};
struct NewIndex {
    std::u16string sName;
    std::vector<std::u16string> columns;
    bool bPrimary = false;
    bool bUnique = false;
};
struct NewTable {
    std::u16string sName;
    std::vector<NewColumn> columns;
    std::vector<NewIndex> indexes;
};
// One column of each side. The primary side's column must have a unique index of its own.
struct NewRelationship {
    std::u16string sName;
    std::u16string sPrimaryTable;
    std::u16string sPrimaryColumn;
    std::u16string sForeignTable;
    std::u16string sForeignColumn;
    bool bCascadeDelete = false;
};

class AccessFile {
  public:
    // Takes a store that holds a file, and looks into it. Raises Damaged, or Unsupported.
    explicit AccessFile(std::unique_ptr<PageStore> pages);
    ~AccessFile();

    // Fills an empty store with a database that has nothing but the system's tables.
    static void CreateEmpty(PageStore& pages);

    PageStore& Pages() { return *m_pages; }
    Generation Kind() const { return m_pages->Format().generation; }

    std::vector<CatalogueEntry> Catalogue();
    // By name, without regard to case; nullptr without one. Lives as long as this object, and stays
    // the same one.
    Table* FindTable(std::u16string_view sName);
    // By the page of its definition. Raises Damaged without one.
    Table& TableAt(std::uint32_t nDefinitionPage);

    // Raise Constraint for a name that is taken, or a column that isn't there.
    Table& CreateTable(const NewTable& table);
    void CreateRelationship(const NewRelationship& relationship);

  private:
    struct KnownEntries {
        std::vector<CatalogueEntry> entries;
        std::uint64_t nChanges = 0;  // of the pages, when they were read
    };

    const std::vector<CatalogueEntry>& Entries();

    std::unique_ptr<PageStore> m_pages;
    std::unordered_map<std::uint32_t, std::unique_ptr<Table>> m_tables;
    std::unique_ptr<KnownEntries> m_entries;
};

}  // namespace nomira::jet
