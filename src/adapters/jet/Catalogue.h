// The tables in which a file keeps what it holds: objects, and who may use them.
#pragma once

#include "adapters/jet/AccessFile.h"

namespace nomira::jet {

// Pages of the system's definitions, the same in every file.
inline constexpr std::uint32_t kObjectsTable = 2;
inline constexpr std::uint32_t kRightsTable = 3;
inline constexpr std::uint32_t kQueriesTable = 4;
inline constexpr std::uint32_t kRelationshipsTable = 5;

// Parents of objects.
inline constexpr std::int32_t kTablesParent = 0x0F000001;
inline constexpr std::int32_t kDatabasesParent = 0x0F000002;
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

// Two bytes that lie over whom all files know, in Jet 4; zeros where nothing does.
std::array<std::uint8_t, 2> OwnerMask(AccessFile& file);

// What somebody may do with an object; who it is, as the file stores it.
struct Grant {
    Bytes who;
    std::int64_t nRights = 0;
    bool bInheritable = false;  // by objects that have this one as their parent

    auto operator<=>(const Grant&) const = default;  // NOLINT(modernize-use-nullptr)
};
std::vector<Grant> GrantsOf(AccessFile& file, std::int32_t nObject);
void SetGrants(AccessFile& file, std::int32_t nObject, const std::vector<Grant>& grants);
// What a new object's are: everybody may use it.
std::vector<Grant> UsualGrants(AccessFile& file, const CatalogueEntry& entry);

// Enters an object of the user's, with UsualGrants. Raises Constraint if its name is taken among
// its parent's.
void AddObject(AccessFile& file, const CatalogueEntry& entry);
void AddObject(AccessFile& file, const CatalogueEntry& entry, const std::vector<Grant>& grants);

// Raises Constraint for a name that no table, column or index can have.
void RequireName(std::u16string_view sName);

}  // namespace nomira::jet
