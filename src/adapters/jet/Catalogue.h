// The tables in which a file keeps what it holds: objects, and who may use them.
#pragma once

#include "adapters/jet/AccessFile.h"

namespace nomira::jet {

// Pages of the system's definitions, the same in every file.
inline constexpr std::uint32_t kObjectsTable = 2;
inline constexpr std::uint32_t kRightsTable = 3;
inline constexpr std::uint32_t kRelationshipsTable = 5;

// Parents of objects.
inline constexpr std::int32_t kTablesParent = 0x0F000001;
inline constexpr std::int32_t kRelationshipsParent = 0x0F000003;

inline constexpr std::int16_t kRelationshipObject = 8;

// A table of the system, its columns by name.
class SystemTable {
  public:
    SystemTable(AccessFile& file, std::uint32_t nDefinitionPage)
        : m_table(file.TableAt(nDefinitionPage)) {}

    Table& Rows() { return m_table; }
    // Index of a column. Raises Damaged without one.
    std::size_t Column(std::u16string_view sName) const;
    Value Read(RowPlace place, std::u16string_view sName) {
        return m_table.Read(place, Column(sName));
    }
    // All columns that aren't named are Null.
    void Insert(std::initializer_list<std::pair<std::u16string_view, Value>> values);

  private:
    Table& m_table;
};

std::vector<CatalogueEntry> ReadCatalogue(AccessFile& file);

// An identity for an object that is no table.
std::int32_t NextObjectId(const std::vector<CatalogueEntry>& entries);

// Enters an object of the user's, and who may use it: everybody. Raises Constraint if its name is
// taken among its parent's.
void AddObject(AccessFile& file, const CatalogueEntry& entry);

// Raises Constraint for a name that no table, column or index can have.
void RequireName(std::u16string_view sName);

}  // namespace nomira::jet
