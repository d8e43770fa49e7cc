#include "adapters/jet/Compact.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Header.h"
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/Names.h"
#include "adapters/jet/Owners.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/Properties.h"
#include "adapters/jet/TablePages.h"

namespace nomira::jet {
namespace {

constexpr std::uint16_t kDoubleBytes = 8;
constexpr std::uint16_t kMostBinaryBytes = 255;  // in Jet 3
constexpr std::size_t kNumericBytes = 17;
constexpr std::uint8_t kNegative = 0x80;

// Objects of the catalogue that are no tables.
enum class Fate {
    Copied,   // by its rows in the system's tables
    Made,     // every new file has it, or the maker's program adds it
    LeftOut,  // and told of
};
constexpr std::int16_t kDocument = -32757;
struct ObjectKind {
    std::int16_t nType;
    const char* sWord;
    Fate fate;
};
constexpr ObjectKind kObjectKinds[]{
    {2, "the database's own entry", Fate::Made},
    {3, "the container", Fate::Made},
    {4, "the link to the table", Fate::Copied},
    {5, "the query", Fate::Copied},
    {6, "the link to the table", Fate::Copied},
    {kRelationshipObject, "the relationship", Fate::Copied},
    {9, "the check constraint", Fate::LeftOut},
    {-32768, "the form", Fate::LeftOut},
    {-32766, "the macro", Fate::LeftOut},
    {-32764, "the report", Fate::LeftOut},
    {-32761, "the module", Fate::LeftOut},
    {kDocument, "the document", Fate::Copied},
    {-32756, "the data access page", Fate::LeftOut},
};

// The database itself, and the system's tables and containers, which are in every file.
constexpr std::int32_t kDatabase = 0x10000000;
constexpr std::int32_t kObjectsOfEveryFile[]{static_cast<std::int32_t>(kObjectsTable),
                                             static_cast<std::int32_t>(kRightsTable),
                                             static_cast<std::int32_t>(kQueriesTable),
                                             static_cast<std::int32_t>(kRelationshipsTable),
                                             kTablesParent,
                                             kDatabasesParent,
                                             kRelationshipsParent,
                                             kDatabase};

// Properties of the database by which the maker's program knows what it has put into the file.
constexpr std::u16string_view kProgramsMarks[]{u"AccessVersion", u"Build", u"ProjVer"};

// Tables for forms, modules and the like, which the maker's program adds to each file that it
// opens. What it keeps in them has entries of its own in the catalogue.
constexpr std::u16string_view kMadeAnew[]{u"MSysAccessObjects",
                                          u"MSysAccessStorage",
                                          u"MSysAccessXML",
                                          u"MSysModules",
                                          u"MSysModules2",
                                          u"MSysNameMap",
                                          u"MSysNavPaneGroupCategories",
                                          u"MSysNavPaneGroups",
                                          u"MSysNavPaneGroupToObjects",
                                          u"MSysNavPaneObjectIDs"};

bool IsMadeAnew(std::u16string_view sTable) {
    return std::any_of(std::begin(kMadeAnew), std::end(kMadeAnew),
                       [&](std::u16string_view sKnown) { return SameName(sKnown, sTable); });
}

const ObjectKind* KindOf(const CatalogueEntry& entry) {
    const auto* kind =
        std::find_if(std::begin(kObjectKinds), std::end(kObjectKinds),
                     [&](const ObjectKind& known) { return known.nType == entry.nType; });
    return kind == std::end(kObjectKinds) ? nullptr : kind;
}

// Whether a new file has it without anybody's doing.
bool IsMade(const CatalogueEntry& entry) {
    // Documents of other containers go with what is in those.
    if (entry.nType == kDocument) return entry.nParent != kDatabasesParent;
    const ObjectKind* kind = KindOf(entry);
    return kind != nullptr && kind->fate == Fate::Made;
}

// For words in messages.
std::string Narrow(std::u16string_view sText) {
    std::string sNarrow;
    for (const char16_t c : sText)
        sNarrow += c >= u' ' && c <= u'~' ? static_cast<char>(c) : '?';
    return sNarrow;
}

std::int64_t IntegerIn(const Value& value) {
    const auto* nValue = std::get_if<std::int64_t>(&value);
    return nValue == nullptr ? 0 : *nValue;
}

std::u16string TextIn(const Value& value) {
    const auto* sValue = std::get_if<std::u16string>(&value);
    return sValue == nullptr ? std::u16string() : *sValue;
}

std::string InWords(const CatalogueEntry& entry) {
    const ObjectKind* kind = KindOf(entry);
    return std::string(kind == nullptr ? "the object" : kind->sWord) + ' ' + Narrow(entry.sName);
}

std::string PropertiesInWords(std::u16string_view sObject) {
    return "the captions, formats and rules of " + Narrow(sObject);
}

std::optional<RowPlace> FindEntry(SystemTable& objects, std::int32_t nId) {
    for (auto scan = objects.Rows().Rows(); !scan.AtEnd(); scan.Next())
        if (IntegerIn(objects.Read(scan.Place(), u"Id")) == nId) return scan.Place();
    return std::nullopt;
}

// A Numeric column's value, for a generation that has none.
Value NumericAsDouble(const Value& value, int nScale) {
    const auto* bytes = std::get_if<Bytes>(&value);
    if (bytes == nullptr) return value;
    if (bytes->size() != kNumericBytes) Fail(FailureKind::Damaged, "a number of another length");
    long double nNumber = 0;
    for (std::size_t n = 1; n < kNumericBytes; n += 4)
        nNumber = nNumber * 4294967296.0L + static_cast<long double>(LoadU32(*bytes, n));
    for (; nScale > 0; --nScale)
        nNumber /= 10;
    return static_cast<double>(bytes->front() == kNegative ? -nNumber : nNumber);
}

// --- A table's definition without holes, in the other generation.

// A table of the source, and what its copy is like.
struct CopiedTable {
    std::u16string sName;
    Table* source;
    std::vector<std::size_t> columns;  // of the source's definition, in the order of the copy
    std::uint32_t nPage = 0;           // of the copy's definition
};

class DefinitionMaker {
  public:
    // `pattern`: a text column of the new file's own, for its sort order and code page.
    DefinitionMaker(const TableDefinition& source, const Layout& from, const Layout& to,
                    const Column& pattern)
        : m_source(source), m_from(from), m_to(to), m_pattern(pattern) {}

    TableDefinition Make(std::vector<std::size_t>& order) {
        for (std::size_t n = 0; n < m_source.columns.size(); ++n)
            order.push_back(n);
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return m_source.columns[a].nNumber < m_source.columns[b].nNumber;
        });
        for (const std::size_t n : order)
            AddColumn(m_source.columns[n]);
        m_table.nMostColumns = static_cast<std::uint16_t>(m_table.columns.size());
        m_table.nAutonumberStep = m_source.nAutonumberStep;
        for (const RealIndex& index : m_source.realIndexes)
            AddIndex(index);
        for (const LogicalIndex& index : m_source.logicalIndexes)
            if (index.kind != LogicalKind::ForeignKey) m_table.logicalIndexes.push_back(index);
        return std::move(m_table);
    }

  private:
    void AddColumn(const Column& from) {
        Column column = from;
        column.nNumber = static_cast<std::uint16_t>(m_table.columns.size());
        m_numbers[from.nNumber] = column.nNumber;
        column.nCollation = m_pattern.nCollation;
        column.nSortVersion = m_pattern.nSortVersion;
        column.nCodePage = m_pattern.nCodePage;
        if (from.type != ColumnType::Numeric) column.nSortOrder = m_pattern.nSortOrder;
        ChangeGeneration(column);
        // Whatever its type, a column is stored where its flag says.
        column.nVariableIndex = m_table.nVariableColumns;
        column.nFixedOffset = 0;
        if (!column.IsFixed()) {
            ++m_table.nVariableColumns;
        } else if (column.type != ColumnType::Boolean) {
            column.nFixedOffset = m_nFixedBytes;
            m_nFixedBytes = static_cast<std::uint16_t>(m_nFixedBytes + column.nLength);
        }
        m_table.columns.push_back(std::move(column));
    }

    void ChangeGeneration(Column& column) const {
        if (m_from.generation == m_to.generation) return;
        const bool bToJet3 = m_to.generation == Generation::Jet3;
        column.nExtension = !bToJet3 && column.IsText() ? ColumnCompressed : 0;
        if (column.type == ColumnType::Text)
            column.nLength = static_cast<std::uint16_t>(column.nLength / m_from.nCharacterBytes *
                                                        m_to.nCharacterBytes);
        if (!bToJet3) return;
        if (column.type == ColumnType::Binary)
            column.nLength = std::min(column.nLength, kMostBinaryBytes);
        if (column.type == ColumnType::Numeric) {
            column.type = ColumnType::Double;
            column.nLength = kDoubleBytes;
            column.nSortOrder = m_pattern.nSortOrder;
        }
    }

    void AddIndex(const RealIndex& from) {
        RealIndex& index = m_table.realIndexes.emplace_back();
        for (const IndexColumn& column : from.columns) {
            const auto number = m_numbers.find(column.nColumn);
            if (number == m_numbers.end())
                Fail(FailureKind::Damaged, "an index is of a column that isn't there");
            index.columns.push_back({number->second, column.bAscending});
        }
        index.nFlags = static_cast<std::uint8_t>(from.nFlags & ~unsigned{IndexJet4});
        if (m_to.generation == Generation::Jet4) index.nFlags |= IndexJet4;
    }

    const TableDefinition& m_source;
    const Layout& m_from;
    const Layout& m_to;
    const Column& m_pattern;
    TableDefinition m_table;
    std::map<std::uint16_t, std::uint16_t> m_numbers;  // of columns, old to new
    std::uint16_t m_nFixedBytes = 0;
};

// --- The whole file.

class Compaction {
  public:
    Compaction(AccessFile& source, AccessFile& target, std::vector<std::string>& leftOut)
        : m_source(source),
          m_target(target),
          m_leftOut(leftOut),
          m_entries(source.Catalogue()),
          m_sourceOwners(source),
          m_targetOwners(target) {}

    void Run() {
        TellProtection();
        for (const std::int32_t nId : kObjectsOfEveryFile)
            CarryRights(nId);
        CarryDatabase();
        for (const CatalogueEntry& entry : m_entries)
            if (entry.IsTable()) TakeTable(entry);
        for (const auto& [nPage, table] : m_tables)
            CopyRows(table);
        for (const auto& [nPage, table] : m_tables)
            CopyRelationships(table);
        for (const CatalogueEntry& entry : m_entries)
            if (!entry.IsTable() && entry.nType != kRelationshipObject) TakeObject(entry);
        for (const CatalogueEntry& entry : m_entries)
            if (entry.nType == kRelationshipObject) TakeRelationship(entry);
        CopyRowsOf(kRelationshipsTable, [this](const RowReader& row) { return HasBothSides(row); });
        CopyRowsOf(kQueriesTable, [this](const RowReader& row) {
            return m_copied.contains(static_cast<std::int32_t>(IntegerIn(row(u"ObjectId"))));
        });
    }

  private:
    using RowReader = std::function<Value(std::u16string_view)>;

    void TellProtection() {
        const Header header = ReadHeader(m_source.Pages().Read(0));
        if (header.bHasPassword) m_leftOut.emplace_back("the password");
        if (header.nKey != 0) m_leftOut.emplace_back("the cipher on the file's pages");
    }

    // --- Tables.

    void TakeTable(const CatalogueEntry& entry) {
        if (entry.nId <= static_cast<std::int32_t>(kRelationshipsTable)) return;
        if (entry.IsSystem()) {
            if (!IsMadeAnew(entry.sName) &&
                m_source.TableAt(static_cast<std::uint32_t>(entry.nId)).RowCount() > 0)
                m_leftOut.push_back("the table " + Narrow(entry.sName) +
                                    ", which is the maker's program's own");
            return;
        }
        WithName(entry.sName, [&] { CopyDefinition(entry); });
    }

    // Whose table it is belongs to what goes wrong with it.
    template <typename Work>
    static void WithName(std::u16string_view sTable, Work work) {
        try {
            work();
        } catch (const Failure& failure) {
            Fail(failure.Kind(), Narrow(sTable) + ": " + failure.what());
        }
    }

    void CopyDefinition(const CatalogueEntry& entry) {
        const auto nPage = static_cast<std::uint32_t>(entry.nId);
        CopiedTable copied{entry.sName, &m_source.TableAt(nPage), {}, 0};
        SystemTable objects(m_target, kObjectsTable);
        const Column pattern = objects.Rows().Definition().columns[objects.Column(u"Name")];
        TellSortOrder(copied, pattern);
        DefinitionMaker maker(copied.source->Definition(), m_source.Pages().Format(),
                              m_target.Pages().Format(), pattern);
        TableDefinition definition = maker.Make(copied.columns);
        TakePages(m_target.Pages(), definition);
        WriteDefinition(m_target.Pages(), definition);
        copied.nPage = definition.nPage;
        CatalogueEntry made = entry;
        made.nId = static_cast<std::int32_t>(definition.nPage);
        made.nParent = kTablesParent;
        AddEntry(made, entry);
        m_tables.emplace(nPage, std::move(copied));
    }

    void TellSortOrder(const CopiedTable& table, const Column& pattern) {
        const auto& columns = table.source->Definition().columns;
        if (std::any_of(columns.begin(), columns.end(), [&](const Column& column) {
                return column.IsText() && (column.nSortOrder != pattern.nSortOrder ||
                                           column.nSortVersion != pattern.nSortVersion);
            }))
            m_leftOut.push_back("the sort order of texts in the table " + Narrow(table.sName));
    }

    void CopyRows(const CopiedTable& table) {
        WithName(table.sName, [&] {
            Table& copy = m_target.TableAt(table.nPage);
            for (auto scan = table.source->Rows(); !scan.AtEnd(); scan.Next()) {
                Row row = Converted(table, table.source->Read(scan.Place()));
                copy.Insert(row);
            }
            const auto nLast =
                DefinitionCounters(m_source.Pages(), table.source->Definition().nPage)
                    .LastAutonumber();
            DefinitionCounters(m_target.Pages(), table.nPage).SetLastAutonumber(nLast);
        });
    }

    Row Converted(const CopiedTable& table, const Row& values) const {
        Row row;
        for (const std::size_t nColumn : table.columns) {
            const Column& column = table.source->Definition().columns[nColumn];
            const bool bNumeric = column.type == ColumnType::Numeric;
            row.push_back(bNumeric && m_target.Kind() == Generation::Jet3
                              ? NumericAsDouble(values[nColumn], column.nSortOrder >> 8)
                              : values[nColumn]);
        }
        return row;
    }

    // The sides of relationships keep their numbers, so that they find each other.
    void CopyRelationships(const CopiedTable& table) {
        TableDefinition definition = ReadDefinition(m_target.Pages(), table.nPage);
        const std::size_t nBefore = definition.logicalIndexes.size();
        for (LogicalIndex index : table.source->Definition().logicalIndexes) {
            if (index.kind != LogicalKind::ForeignKey) continue;
            const auto related = m_tables.find(index.nRelatedTable);
            if (related == m_tables.end()) continue;
            index.nRelatedTable = related->second.nPage;
            definition.logicalIndexes.push_back(std::move(index));
        }
        if (definition.logicalIndexes.size() == nBefore) return;
        std::stable_sort(
            definition.logicalIndexes.begin(), definition.logicalIndexes.end(),
            [](const auto& a, const auto& b) { return ComesBefore(a.sName, b.sName); });
        WriteDefinition(m_target.Pages(), definition);
        m_target.TableAt(table.nPage).Refresh();
    }

    // --- Other objects.

    void TakeObject(const CatalogueEntry& entry) {
        if (IsMade(entry)) return;
        const ObjectKind* kind = KindOf(entry);
        if (kind == nullptr || kind->fate == Fate::LeftOut) {
            m_leftOut.push_back(InWords(entry));
            return;
        }
        m_copied.insert(entry.nId);
        AddEntry(entry, entry);
    }

    // One of tables that aren't in the new file isn't either.
    void TakeRelationship(const CatalogueEntry& entry) {
        SystemTable rows(m_source, kRelationshipsTable);
        bool bWhole = false;
        bool bOfSystem = false;
        for (auto scan = rows.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
            const RowReader read = [&](auto sColumn) { return rows.Read(scan.Place(), sColumn); };
            if (!SameName(TextIn(read(u"szRelationship")), entry.sName)) continue;
            bWhole = HasBothSides(read);
            bOfSystem = IsSystemTable(TextIn(read(u"szObject"))) ||
                        IsSystemTable(TextIn(read(u"szReferencedObject")));
        }
        if (bWhole)
            AddEntry(entry, entry);
        else if (!bOfSystem)
            m_leftOut.push_back(InWords(entry));
    }

    bool HasBothSides(const RowReader& relationship) const {
        return IsCopied(TextIn(relationship(u"szObject"))) &&
               IsCopied(TextIn(relationship(u"szReferencedObject")));
    }

    // Tables, queries and links have their names in common.
    bool IsCopied(std::u16string_view sName) const {
        return std::any_of(m_entries.begin(), m_entries.end(), [&](const CatalogueEntry& entry) {
            return SameName(entry.sName, sName) &&
                   (entry.IsTable() ? m_tables.contains(static_cast<std::uint32_t>(entry.nId))
                                    : m_copied.contains(entry.nId));
        });
    }

    bool IsSystemTable(std::u16string_view sName) const {
        return std::any_of(m_entries.begin(), m_entries.end(), [&](const CatalogueEntry& entry) {
            return entry.IsTable() && entry.IsSystem() && SameName(entry.sName, sName);
        });
    }

    // Rows of a table of the system: all columns that both files have.
    template <typename Wanted>
    void CopyRowsOf(std::uint32_t nTable, Wanted wanted) {
        SystemTable source(m_source, nTable);
        Table& target = m_target.TableAt(nTable);
        for (auto scan = source.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
            const RowReader read = [&](std::u16string_view sColumn) {
                return source.Read(scan.Place(), sColumn);
            };
            if (!wanted(read)) continue;
            Row row;
            for (const Column& column : target.Definition().columns) {
                const bool bKnown = source.Rows().Definition().FindColumn(column.sName) >= 0;
                row.push_back(bKnown ? read(column.sName) : Value());
            }
            target.Insert(row);
        }
    }

    // --- What the catalogue says of an object.

    void AddEntry(const CatalogueEntry& made, const CatalogueEntry& from) {
        const std::vector<Grant> grants = CarriedGrants(from);
        if (grants.empty())
            AddObject(m_target, made);
        else
            AddObject(m_target, made, grants);
        SystemTable source(m_source, kObjectsTable);
        SystemTable target(m_target, kObjectsTable);
        const auto placeFrom = FindEntry(source, from.nId);
        const auto placeMade = FindEntry(target, made.nId);
        if (!placeFrom || !placeMade) return;
        Row row = target.Rows().Read(*placeMade);
        for (const std::u16string_view sColumn : kCarriedColumns)
            row[target.Column(sColumn)] = source.Read(*placeFrom, sColumn);
        CarryOwner(source.Read(*placeFrom, u"Owner"), row[target.Column(u"Owner")], from);
        row[target.Column(u"LvProp")] = CarriedProperties(source.Read(*placeFrom, u"LvProp"), from);
        target.Rows().Update(*placeMade, row);
    }

    Value CarriedProperties(const Value& properties, const CatalogueEntry& from) {
        const auto* bytes = std::get_if<Bytes>(&properties);
        if (bytes == nullptr || m_source.Kind() == m_target.Kind()) return properties;
        const auto read = ReadProperties(*bytes, m_source.Kind());
        auto written = read ? WriteProperties(*read, m_target.Kind()) : std::nullopt;
        if (written) return std::move(*written);
        m_leftOut.push_back(PropertiesInWords(from.sName));
        return {};
    }

    std::optional<Bytes> CarriedIdentity(ByteView identity) const {
        const auto plain = m_sourceOwners.Apply(identity);
        return plain ? m_targetOwners.Apply(*plain) : std::nullopt;
    }

    void CarryOwner(const Value& from, Value& to, const CatalogueEntry& entry) {
        const auto* owner = std::get_if<Bytes>(&from);
        if (owner == nullptr) return;
        if (auto carried = CarriedIdentity(*owner))
            to = std::move(*carried);
        else
            m_leftOut.push_back("the owner of " + Narrow(entry.sName));
    }

    std::vector<Grant> CarriedGrants(const CatalogueEntry& from) {
        std::vector<Grant> grants;
        bool bAll = true;
        for (const Grant& grant : GrantsOf(m_source, from.nId)) {
            if (auto who = CarriedIdentity(grant.who))
                grants.push_back({std::move(*who), grant.nRights, grant.bInheritable});
            else
                bAll = false;
        }
        if (!bAll) m_leftOut.push_back("some users' rights to " + Narrow(from.sName));
        return grants;
    }

    void CarryRights(std::int32_t nId) {
        for (const CatalogueEntry& entry : m_entries) {
            if (entry.nId != nId) continue;
            std::vector<Grant> grants = CarriedGrants(entry);
            std::vector<Grant> usual = GrantsOf(m_target, nId);
            std::sort(grants.begin(), grants.end());
            std::sort(usual.begin(), usual.end());
            if (!grants.empty() && grants != usual) SetGrants(m_target, nId, grants);
        }
    }

    // Its owner, and properties like the title of its window.
    void CarryDatabase() {
        SystemTable source(m_source, kObjectsTable);
        SystemTable target(m_target, kObjectsTable);
        const auto placeFrom = FindEntry(source, kDatabase);
        const auto placeMade = FindEntry(target, kDatabase);
        if (!placeFrom || !placeMade) return;
        CatalogueEntry entry;
        entry.sName = TextIn(source.Read(*placeFrom, u"Name"));
        Row row = target.Rows().Read(*placeMade);
        CarryOwner(source.Read(*placeFrom, u"Owner"), row[target.Column(u"Owner")], entry);
        const Value properties = source.Read(*placeFrom, u"LvProp");
        if (const auto* bytes = std::get_if<Bytes>(&properties)) {
            auto carried = DatabaseProperties(*bytes);
            if (carried)
                row[target.Column(u"LvProp")] = std::move(*carried);
            else
                m_leftOut.emplace_back("the properties of the database");
        }
        target.Rows().Update(*placeMade, row);
    }

    std::optional<Bytes> DatabaseProperties(ByteView bytes) const {
        auto properties = ReadProperties(bytes, m_source.Kind());
        if (!properties) return std::nullopt;
        for (PropertyBlock& block : properties->blocks)
            std::erase_if(block.properties, [&](const Property& property) {
                return std::find(std::begin(kProgramsMarks), std::end(kProgramsMarks),
                                 properties->names[property.nName]) != std::end(kProgramsMarks);
            });
        return WriteProperties(*properties, m_target.Kind());
    }

    static constexpr std::u16string_view kCarriedColumns[]{
        u"DateCreate",   u"DateUpdate",  u"Database", u"Connect",  u"ForeignName",
        u"RmtInfoShort", u"RmtInfoLong", u"Lv",       u"LvModule", u"LvExtra"};

    AccessFile& m_source;
    AccessFile& m_target;
    std::vector<std::string>& m_leftOut;
    std::vector<CatalogueEntry> m_entries;
    OwnerCipher m_sourceOwners;
    OwnerCipher m_targetOwners;
    std::map<std::uint32_t, CopiedTable> m_tables;  // by the page of the source's definition
    std::set<std::int32_t> m_copied;                // objects that are no tables, by their ids
};

}  // namespace

std::vector<std::string> TellObjects(AccessFile& file) {
    std::vector<std::string> objects;
    for (const CatalogueEntry& entry : file.Catalogue())
        if (!entry.IsTable() && entry.nType != kRelationshipObject && !IsMade(entry))
            objects.push_back(InWords(entry));
    SystemTable rows(file, kObjectsTable);
    for (const CatalogueEntry& entry : file.Catalogue()) {
        if (!entry.IsTable() || entry.IsSystem()) continue;
        const auto place = FindEntry(rows, entry.nId);
        if (place && !IsNull(rows.Read(*place, u"LvProp")))
            objects.push_back(PropertiesInWords(entry.sName));
    }
    return objects;
}

CompactedFile Compact(AccessFile& source, Generation generation) {
    CompactedFile compacted;
    auto pages = std::make_unique<MemoryPages>(generation);
    MemoryPages& memory = *pages;
    AccessFile::CreateEmpty(memory);
    AccessFile target(std::move(pages));
    Compaction(source, target, compacted.leftOut).Run();
    memory.Commit();
    compacted.bytes = memory.File();
    return compacted;
}

}  // namespace nomira::jet
