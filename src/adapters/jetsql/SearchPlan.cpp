#include "adapters/jetsql/SearchPlan.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "adapters/jet/KeyCodes.h"
#include "adapters/jetsql/AccessSession.h"
#include "adapters/jetsql/ColumnValues.h"
#include "langtools/Utf8.h"

namespace nomira::jetsql {
namespace {

// idxNum: these two, or kFirstIndex and up for the index of that number.
constexpr int kAllRows = 0;
constexpr int kOneRow = 1;
constexpr int kFirstIndex = 2;

// idxStr: what each argument is for, in the order of the index's columns; behind a blank stands the
// index's name, for whoever reads a query's plan.
constexpr char kEquals = '=';
constexpr char kLower = '>';
constexpr char kUpper = '<';
constexpr char kBeginsWith = '%';

// Estimates, in rows that are looked at one after the other.
constexpr double kCostOfSearch = 4;        // down a tree
constexpr double kCostOfIndexedRow = 2;    // an entry, and then the row elsewhere
constexpr double kRowsPerValue = 2;        // of a column that isn't unique, all columns given
constexpr double kShareOfColumn = 0.05;    // rows that one of several columns leaves
constexpr double kShareOfBound = 0.3;      // that a bound leaves
constexpr double kShareOfBeginning = 0.1;  // that the beginning of a text leaves

// A statement that was prepared for a small table may be kept until the table is large.
constexpr double kFewestRows = 1000;

double RowsOf(const jet::Table& table) {
    return std::max<double>(kFewestRows, table.RowCount());
}

struct UsedConstraint {
    int nConstraint;
    char cUse;
    bool bExact = false;  // SQLite need not look at the rows once more
};

struct Plan {
    int nNumber = kAllRows;
    std::vector<UsedConstraint> uses{};
    double nRows = 0;
    double nCost = 0;
    bool bUnique = false;
    std::string sName{};
};

struct Question {
    const jet::Table& table;
    jet::Generation generation;
    sqlite3_index_info& info;
};

// A key treats texts as equal that are equal by any of these.
bool IsFoldedCollation(const char* sName) {
    constexpr const char* kNames[]{"BINARY", "NOCASE", "RTRIM"};
    return sName == nullptr || std::any_of(std::begin(kNames), std::end(kNames), [&](auto* known) {
               return sqlite3_stricmp(known, sName) == 0;
           });
}

// The usable constraint on a column (-1: the row's number) by one of these operators; -1 without.
int FindConstraint(const Question& question, int nColumn, std::initializer_list<int> operators) {
    for (int n = 0; n < question.info.nConstraint; ++n) {
        const auto& constraint = question.info.aConstraint[n];
        const bool bFits =
            constraint.usable != 0 && constraint.iColumn == nColumn &&
            std::find(operators.begin(), operators.end(), constraint.op) != operators.end();
        if (bFits && IsFoldedCollation(sqlite3_vtab_collation(&question.info, n))) return n;
    }
    return -1;
}

void AddUse(const Question& question, Plan& plan, int nColumn, std::initializer_list<int> operators,
            char cUse, double nShare) {
    const int nConstraint = FindConstraint(question, nColumn, operators);
    if (nConstraint < 0) return;
    plan.uses.push_back({nConstraint, cUse});
    plan.nRows *= nShare;
}

// What narrows the rows down behind the columns whose values are given.
void AddRange(const Question& question, Plan& plan, const jet::IndexColumn& indexed) {
    const jet::TableDefinition& definition = question.table.Definition();
    const std::size_t nPlace = definition.ColumnOfNumber(indexed.nColumn);
    const jet::Column& column = definition.columns[nPlace];
    const int nColumn = static_cast<int>(nPlace);
    if (!jet::KnowsKeysOf(column, question.generation)) return;
    if (CanBeCompared(column)) {
        AddUse(question, plan, nColumn, {SQLITE_INDEX_CONSTRAINT_GT, SQLITE_INDEX_CONSTRAINT_GE},
               kLower, kShareOfBound);
        AddUse(question, plan, nColumn, {SQLITE_INDEX_CONSTRAINT_LT, SQLITE_INDEX_CONSTRAINT_LE},
               kUpper, kShareOfBound);
    } else if (column.IsText() && indexed.bAscending) {
        AddUse(question, plan, nColumn, {SQLITE_INDEX_CONSTRAINT_LIKE}, kBeginsWith,
               kShareOfBeginning);
    }
}

// Without uses if the index is of no use.
Plan PlanForIndex(const Question& question, std::size_t nIndex) {
    const jet::TableDefinition& definition = question.table.Definition();
    const jet::RealIndex& index = definition.realIndexes[nIndex];
    Plan plan{.nNumber = kFirstIndex + static_cast<int>(nIndex)};
    plan.nRows = RowsOf(question.table);
    std::size_t nGiven = 0;
    bool bExact = true;
    for (const jet::IndexColumn& indexed : index.columns) {
        const std::size_t nPlace = definition.ColumnOfNumber(indexed.nColumn);
        const jet::Column& column = definition.columns[nPlace];
        const bool bFindable = CanBeFound(column) && jet::KnowsKeysOf(column, question.generation);
        const int nConstraint = bFindable ? FindConstraint(question, static_cast<int>(nPlace),
                                                           {SQLITE_INDEX_CONSTRAINT_EQ})
                                          : -1;
        if (nConstraint < 0) break;
        bExact = bExact && IsFoundExactly(column);
        plan.uses.push_back({nConstraint, kEquals, bExact});
        plan.nRows *= kShareOfColumn;
        ++nGiven;
    }
    if (nGiven == index.columns.size())
        plan.nRows = index.IsUnique() ? 1 : kRowsPerValue;
    else
        AddRange(question, plan, index.columns[nGiven]);
    plan.nCost = kCostOfSearch + std::log2(RowsOf(question.table)) + plan.nRows * kCostOfIndexedRow;
    for (const jet::LogicalIndex& logical : definition.logicalIndexes)
        if (logical.nRealIndex == nIndex && logical.side != jet::RelatedSide::Primary)
            plan.sName = ToUtf8(logical.sName);
    return plan;
}

Plan BestPlan(const Question& question) {
    Plan best;
    best.nRows = RowsOf(question.table);
    best.nCost = kCostOfSearch + best.nRows;
    const int nRowId = FindConstraint(question, -1, {SQLITE_INDEX_CONSTRAINT_EQ});
    if (nRowId >= 0)
        return {.nNumber = kOneRow,
                .uses = {{nRowId, kEquals}},
                .nRows = 1,
                .nCost = 1,
                .bUnique = true,
                .sName = "row"};
    const auto& indexes = question.table.Definition().realIndexes;
    for (std::size_t n = 0; n < indexes.size(); ++n) {
        if (indexes[n].columns.empty()) continue;
        Plan plan = PlanForIndex(question, n);
        if (!plan.uses.empty() && plan.nCost < best.nCost) best = std::move(plan);
    }
    return best;
}

// Appends the column's part of a key. False if the value has no key: a character's code isn't
// known.
bool TryAppendKey(jet::Bytes& key, const jet::Value& value, const jet::Column& column,
                  bool bAscending, jet::Generation generation) {
    const std::size_t nBefore = key.size();
    try {
        jet::AppendKey(key, value, column, bAscending, generation);
    } catch (const jet::Failure& failure) {
        key.resize(nBefore);
        if (failure.Kind() != jet::FailureKind::Unsupported) throw;
        return false;
    }
    return true;
}

bool IsPlain(char16_t c) {
    return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

// What every text that fits the pattern begins with, as far as it is made of letters and digits
// without accents. Those have their codes at the front of a key, one behind the other, whatever
// follows them; punctuation may have its code behind all letters.
std::u16string PlainBeginning(sqlite3_value* pattern) {
    const auto* sBytes = reinterpret_cast<const char*>(sqlite3_value_text(pattern));
    std::u16string sBeginning;
    for (; sBytes != nullptr && IsPlain(static_cast<unsigned char>(*sBytes)); ++sBytes)
        sBeginning += static_cast<char16_t>(*sBytes);
    return sBeginning;
}

// The bytes that the keys of all texts with this beginning share: what the keys of two of them,
// one a letter longer, have in common.
bool TryAppendBeginning(jet::Bytes& key, const std::u16string& sBeginning,
                        const jet::Column& column, jet::Generation generation) {
    jet::Bytes shorter;
    jet::Bytes longer;
    if (sBeginning.empty() || !TryAppendKey(shorter, sBeginning, column, true, generation) ||
        !TryAppendKey(longer, sBeginning + u'a', column, true, generation))
        return false;
    const auto end = std::mismatch(shorter.begin(), shorter.end(), longer.begin(), longer.end());
    key.insert(key.end(), shorter.begin(), end.first);
    return true;
}

// Makes the range of keys out of a plan's arguments.
class RangeMaker {
  public:
    RangeMaker(Search& search, const jet::Table& table, jet::Generation generation,
               std::size_t nIndex)
        : m_definition(table.Definition()), m_generation(generation), m_search(search) {
        if (nIndex >= m_definition.realIndexes.size())
            jet::Fail(jet::FailureKind::Damaged, "an index that is gone");
        m_search.way = Search::Way::Index;
        m_search.range.nIndex = nIndex;
        m_search.range.lower.clear();
    }

    // False once nothing narrows the range any further.
    bool Take(char cUse, sqlite3_value* argument) {
        const auto& columns = m_definition.realIndexes[m_search.range.nIndex].columns;
        if (m_nColumn >= columns.size()) return false;
        m_indexed = columns[m_nColumn];
        const jet::Column& column =
            m_definition.columns[m_definition.ColumnOfNumber(m_indexed.nColumn)];
        switch (cUse) {
            case kEquals:
                return TakeValue(argument, column);
            case kBeginsWith:
                return TakeBeginning(argument, column);
            default:
                return TakeBound(cUse == kLower, argument, column);
        }
    }

    void Finish() {
        m_search.range.upper = m_search.range.lower;
        // The lower end must come before the upper one in the tree.
        jet::Append(m_search.range.lower, m_low);
        jet::Append(m_search.range.upper, m_high);
        if (m_search.way == Search::Way::Index && m_search.range.upper.empty() &&
            m_search.range.lower.empty())
            m_search.way = Search::Way::AllRows;
    }

  private:
    bool TakeValue(sqlite3_value* argument, const jet::Column& column) {
        const KeyValue value = ValueToFind(argument, column);
        if (!IsKnown(value)) return false;
        if (!TryAppendKey(m_search.range.lower, value.value, column, m_indexed.bAscending,
                          m_generation))
            return false;
        ++m_nColumn;
        return true;
    }
    bool TakeBeginning(sqlite3_value* argument, const jet::Column& column) {
        jet::Bytes part;
        if (TryAppendBeginning(part, PlainBeginning(argument), column, m_generation))
            m_low = m_high = part;
        return false;
    }
    // In a column that is kept in descending order the ends change places.
    bool TakeBound(bool bLower, sqlite3_value* argument, const jet::Column& column) {
        const KeyValue value = BoundToFind(argument, column, bLower);
        if (IsKnown(value))
            TryAppendKey(bLower == m_indexed.bAscending ? m_low : m_high, value.value, column,
                         m_indexed.bAscending, m_generation);
        return m_search.way == Search::Way::Index;
    }
    bool IsKnown(const KeyValue& value) {
        if (value.kind == KeyValue::Kind::NoRow) m_search.way = Search::Way::NoRow;
        return value.kind == KeyValue::Kind::Known;
    }

    const jet::TableDefinition& m_definition;
    jet::Generation m_generation;
    Search& m_search;
    std::size_t m_nColumn = 0;
    jet::IndexColumn m_indexed;
    jet::Bytes m_low;
    jet::Bytes m_high;
};

void MakeSearchForRow(Search& search, sqlite3_value* argument) {
    search.way = Search::Way::NoRow;
    if (sqlite3_value_numeric_type(argument) == SQLITE_FLOAT) {
        search.way = Search::Way::AllRows;
    } else if (sqlite3_value_numeric_type(argument) == SQLITE_INTEGER &&
               PlaceOf(sqlite3_value_int64(argument), search.place)) {
        search.way = Search::Way::OneRow;
    }
}

}  // namespace

int ChoosePlan(const jet::Table& table, jet::Generation generation, sqlite3_index_info& info) {
    const Plan plan = BestPlan({table, generation, info});
    std::string sUse;
    for (const UsedConstraint& use : plan.uses) {
        sUse += use.cUse;
        info.aConstraintUsage[use.nConstraint].argvIndex = static_cast<int>(sUse.size());
        info.aConstraintUsage[use.nConstraint].omit = use.bExact ? 1 : 0;
    }
    info.idxNum = plan.nNumber;
    info.estimatedCost = plan.nCost;
    info.estimatedRows = static_cast<sqlite3_int64>(std::max(1.0, plan.nRows));
    if (plan.bUnique) info.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
    if (sUse.empty()) return SQLITE_OK;
    info.idxStr = sqlite3_mprintf("%s %s", sUse.c_str(), plan.sName.c_str());
    info.needToFreeIdxStr = 1;
    return info.idxStr == nullptr ? SQLITE_NOMEM : SQLITE_OK;
}

void MakeSearch(Search& search, const jet::Table& table, jet::Generation generation, int nPlan,
                const char* sUse, std::span<sqlite3_value*> arguments) {
    search.way = Search::Way::AllRows;
    if (nPlan == kAllRows || sUse == nullptr || arguments.empty()) return;
    if (nPlan == kOneRow) return MakeSearchForRow(search, arguments.front());
    RangeMaker maker(search, table, generation, static_cast<std::size_t>(nPlan - kFirstIndex));
    for (sqlite3_value* argument : arguments)
        if (!maker.Take(*sUse++, argument)) break;
    maker.Finish();
}

}  // namespace nomira::jetsql
