#include "adapters/jetsql/AccessSession.h"

#include <algorithm>
#include <utility>

#include "adapters/jet/KeyCodes.h"
#include "adapters/jet/Names.h"

namespace nomira::jetsql {
namespace {

// Tables that go with one another in a circle end somewhere.
constexpr int kMostCascades = 16;

constexpr std::int64_t kRowIdsPerPage = 256;
constexpr std::int64_t kMostPages = 1 << 24;

// Whether the file itself says what becomes of the child's rows.
bool IsRelated(const jet::TableDefinition& parent, const jet::TableDefinition& child) {
    return std::any_of(parent.logicalIndexes.begin(), parent.logicalIndexes.end(),
                       [&](const jet::LogicalIndex& index) {
                           return index.kind == jet::LogicalKind::ForeignKey &&
                                  index.side == jet::RelatedSide::Primary &&
                                  index.nRelatedTable == child.nPage;
                       });
}

// The real index that begins with the column; -1 without one.
int IndexOn(const jet::TableDefinition& definition, const jet::Column& column,
            jet::Generation generation) {
    if (!jet::KnowsKeysOf(column, generation)) return -1;
    const auto& indexes = definition.realIndexes;
    const auto found =
        std::find_if(indexes.begin(), indexes.end(), [&](const jet::RealIndex& index) {
            return !index.columns.empty() && index.columns.front().nColumn == column.nNumber;
        });
    return found == indexes.end() ? -1 : static_cast<int>(found - indexes.begin());
}

std::vector<jet::RowPlace> PlacesByIndex(jet::Table& table, int nIndex, const jet::Column& column,
                                         const jet::Value& value, jet::Generation generation) {
    const auto nPlace = static_cast<std::size_t>(nIndex);
    const bool bAscending = table.Definition().realIndexes[nPlace].columns.front().bAscending;
    jet::Bytes key;
    jet::AppendKey(key, value, column, bAscending, generation);
    std::vector<jet::RowPlace> places;
    auto cursor = table.Index(nPlace).LowerBound(key);
    for (; !cursor.AtEnd(); cursor.Next()) {
        const jet::ByteView found = cursor.Key();
        if (found.size() < key.size() || !std::equal(key.begin(), key.end(), found.begin())) break;
        places.push_back(cursor.Place());
    }
    return places;
}

std::vector<jet::RowPlace> PlacesWith(jet::Table& table, std::size_t nColumn,
                                      const jet::Value& value, jet::Generation generation) {
    const jet::Column& column = table.Definition().columns[nColumn];
    const int nIndex = IndexOn(table.Definition(), column, generation);
    std::vector<jet::RowPlace> places;
    if (nIndex >= 0) {
        places = PlacesByIndex(table, nIndex, column, value, generation);
    } else {
        for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next())
            places.push_back(scan.Place());
    }
    std::erase_if(places, [&](jet::RowPlace place) { return table.Read(place, nColumn) != value; });
    return places;
}

}  // namespace

AccessSession::AccessSession(std::filesystem::path path, std::vector<Cascade> cascades,
                             RestTime restTime)
    : m_path(std::move(path)), m_cascades(std::move(cascades)), m_restTime(restTime) {}

AccessSession::~AccessSession() {
    if (m_file) m_file->End(this);
}

OpenFile& AccessSession::Open() {
    if (!m_file) m_file = OpenFile::At(m_path);
    return *m_file;
}

void AccessSession::Rest() {
    if (!m_file) return;
    End();
    m_file->Rest();
}

void AccessSession::Commit() {
    if (!m_file) return;
    m_nMarks = 0;
    m_file->Commit(this);
}

void AccessSession::End() {
    m_nMarks = 0;
    if (!m_file) return;
    m_file->End(this);
    if (m_restTime == RestTime::EachCommit) m_file->Rest();
}

void AccessSession::Mark(int nMark) {
    if (nMark < m_nMarks) return;
    m_nMarks = nMark + 1;
    File().Pages().Mark(nMark);
}

void AccessSession::Release(int nMark) {
    if (nMark >= m_nMarks) return;
    m_nMarks = nMark;
    File().Pages().Release(nMark);
}

void AccessSession::RollbackTo(int nMark) {
    if (nMark >= m_nMarks) return;
    m_nMarks = nMark + 1;
    File().Pages().RollbackTo(nMark);
}

void AccessSession::DeleteRow(jet::Table& table, std::u16string_view sTable, jet::RowPlace place) {
    DeleteRow(table, sTable, place, 0);
}

void AccessSession::DeleteRow(jet::Table& table, std::u16string_view sTable, jet::RowPlace place,
                              int nDepth) {
    if (nDepth > kMostCascades)
        jet::Fail(jet::FailureKind::Constraint, "tables that go with one another in a circle");
    if (!table.Has(place)) return;
    for (const Cascade& cascade : m_cascades)
        if (jet::SameName(cascade.sParentTable, sTable))
            DeleteChildren(table, cascade, place, nDepth);
    if (table.Has(place)) table.Delete(place);
}

void AccessSession::DeleteChildren(jet::Table& parent, const Cascade& cascade, jet::RowPlace place,
                                   int nDepth) {
    jet::Table* child = File().FindTable(cascade.sChildTable);
    if (child == nullptr || IsRelated(parent.Definition(), child->Definition())) return;
    const int nParent = parent.Definition().FindColumn(cascade.sParentColumn);
    const int nChild = child->Definition().FindColumn(cascade.sChildColumn);
    if (nParent < 0 || nChild < 0) return;
    const jet::Value value = parent.Read(place, static_cast<std::size_t>(nParent));
    if (jet::IsNull(value)) return;
    for (const jet::RowPlace row :
         PlacesWith(*child, static_cast<std::size_t>(nChild), value, File().Kind()))
        DeleteRow(*child, cascade.sChildTable, row, nDepth + 1);
}

std::int64_t RowIdOf(jet::RowPlace place) {
    return static_cast<std::int64_t>(place.nPage) * kRowIdsPerPage + place.nRow;
}

bool PlaceOf(std::int64_t nRowId, jet::RowPlace& place) {
    if (nRowId < 0 || nRowId / kRowIdsPerPage >= kMostPages) return false;
    place = {static_cast<std::uint32_t>(nRowId / kRowIdsPerPage),
             static_cast<std::uint8_t>(nRowId % kRowIdsPerPage)};
    return true;
}

}  // namespace nomira::jetsql
