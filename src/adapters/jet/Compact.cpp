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
#include "adapters/jet/MemoryPages.h"
#include "adapters/jet/Names.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/TablePages.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kQueriesTable = 4;
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
    {-32757, "the document", Fate::Made},
    {-32756, "the data access page", Fate::LeftOut},
};

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
        : m_source(source), m_target(target), m_leftOut(leftOut), m_entries(source.Catalogue()) {}

    void Run() {
        for (const CatalogueEntry& entry : m_entries)
            if (entry.IsTable()) TakeTable(entry);
        for (const auto& [nPage, table] : m_tables)
            CopyRows(table);
        for (const auto& [nPage, table] : m_tables)
            CopyRelationships(table);
        for (const CatalogueEntry& entry : m_entries)
            if (!entry.IsTable()) TakeObject(entry);
        CopyRowsOf(kRelationshipsTable, [this](const RowReader& row) {
            return HasTable(TextIn(row(u"szObject"))) &&
                   HasTable(TextIn(row(u"szReferencedObject")));
        });
        CopyRowsOf(kQueriesTable, [this](const RowReader& row) {
            return m_copied.contains(static_cast<std::int32_t>(IntegerIn(row(u"ObjectId"))));
        });
    }

  private:
    using RowReader = std::function<Value(std::u16string_view)>;

    void TakeTable(const CatalogueEntry& entry) {
        if (entry.nId <= static_cast<std::int32_t>(kSystemTables)) return;
        if (entry.IsSystem()) {
            if (!IsMadeAnew(entry.sName) &&
                m_source.TableAt(static_cast<std::uint32_t>(entry.nId)).RowCount() > 0)
                m_leftOut.push_back("the table " + Narrow(entry.sName) +
                                    ", which is the maker's program's own");
            return;
        }
        InWords(entry.sName, [&] { CopyDefinition(entry); });
    }

    // Whose table it is belongs to what goes wrong with it.
    template <typename Work>
    static void InWords(std::u16string_view sTable, Work work) {
        try {
            work();
        } catch (const Failure& failure) {
            Fail(failure.Kind(), Narrow(sTable) + ": " + failure.what());
        }
    }

    void CopyDefinition(const CatalogueEntry& entry) {
        const auto nPage = static_cast<std::uint32_t>(entry.nId);
        CopiedTable copied{&m_source.TableAt(nPage), {}, 0};
        SystemTable objects(m_target, kObjectsTable);
        const Column pattern = objects.Rows().Definition().columns[objects.Column(u"Name")];
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
        m_names.emplace(nPage, entry.sName);
        m_tables.emplace(nPage, std::move(copied));
    }

    void CopyRows(const CopiedTable& table) {
        InWords(NameOf(table), [&] {
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

    void TakeObject(const CatalogueEntry& entry) {
        const auto* kind =
            std::find_if(std::begin(kObjectKinds), std::end(kObjectKinds),
                         [&](const ObjectKind& known) { return known.nType == entry.nType; });
        const bool bKnown = kind != std::end(kObjectKinds);
        if (bKnown && kind->fate == Fate::Made) return;
        const std::string sWord = bKnown ? kind->sWord : "the object";
        if (!bKnown || kind->fate == Fate::LeftOut) {
            m_leftOut.push_back(sWord + ' ' + Narrow(entry.sName));
            return;
        }
        m_copied.insert(entry.nId);
        AddEntry(entry, entry);
    }

    // Enters the object, with what the source's catalogue says of it.
    void AddEntry(const CatalogueEntry& made, const CatalogueEntry& from) {
        AddObject(m_target, made);
        SystemTable source(m_source, kObjectsTable);
        SystemTable target(m_target, kObjectsTable);
        const auto placeFrom = FindEntry(source, from);
        const auto placeMade = FindEntry(target, made);
        if (!placeFrom || !placeMade) return;
        Row row = target.Rows().Read(*placeMade);
        for (const std::u16string_view sColumn : kCarriedColumns)
            row[target.Column(sColumn)] = source.Read(*placeFrom, sColumn);
        const Value properties = source.Read(*placeFrom, u"LvProp");
        if (m_source.Kind() == m_target.Kind())
            row[target.Column(u"LvProp")] = properties;
        else if (!IsNull(properties))
            m_leftOut.push_back("the captions, formats and rules of " + Narrow(from.sName));
        target.Rows().Update(*placeMade, row);
    }

    static std::optional<RowPlace> FindEntry(SystemTable& objects, const CatalogueEntry& entry) {
        for (auto scan = objects.Rows().Rows(); !scan.AtEnd(); scan.Next())
            if (IntegerIn(objects.Read(scan.Place(), u"Id")) == entry.nId) return scan.Place();
        return std::nullopt;
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

    bool HasTable(std::u16string_view sName) const {
        return std::any_of(m_names.begin(), m_names.end(),
                           [&](const auto& name) { return SameName(name.second, sName); });
    }
    std::u16string_view NameOf(const CopiedTable& table) const {
        return m_names.at(table.source->Definition().nPage);
    }

    static constexpr std::uint32_t kSystemTables = 5;  // their definitions' pages end there
    static constexpr std::u16string_view kCarriedColumns[]{
        u"DateCreate",  u"DateUpdate",   u"Database",    u"Connect",
        u"ForeignName", u"RmtInfoShort", u"RmtInfoLong", u"Lv"};

    AccessFile& m_source;
    AccessFile& m_target;
    std::vector<std::string>& m_leftOut;
    std::vector<CatalogueEntry> m_entries;
    std::map<std::uint32_t, CopiedTable> m_tables;  // by the page of the source's definition
    std::map<std::uint32_t, std::u16string> m_names;
    std::set<std::int32_t> m_copied;  // objects that are no tables, by their ids
};

}  // namespace

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
