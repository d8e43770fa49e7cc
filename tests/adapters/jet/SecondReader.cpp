#include "SecondReader.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>

namespace nomira::jet::testing {
namespace {

// Strings that no text of the tests holds.
const std::string kFieldEnd = "\x1F|field|";
const std::string kRowEnd = "\x1E|row|";
const std::string kNull = "\x1D|null|";

std::string Quoted(const std::string& s) {
    std::string sQuoted = "'";
    for (const char c : s)
        sQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return sQuoted + '\'';
}

std::string OutputOf(const std::string& sCommand) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(sCommand.c_str(), "r"), pclose);
    if (!pipe) throw std::runtime_error("can't run " + sCommand);
    std::string sOutput;
    std::array<char, 4096> part{};
    while (const std::size_t n = std::fread(part.data(), 1, part.size(), pipe.get()))
        sOutput.append(part.data(), n);
    return sOutput;
}

std::string HexOf(ByteView bytes) {
    std::string sHex;
    for (const std::uint8_t n : bytes) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", n);
        sHex += digits.data();
    }
    return sHex;
}

std::string GuidText(ByteView guid) {
    // It leaves out the last of the dashes.
    constexpr std::array kOrder{3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string sText = "{";
    for (const int n : kOrder)
        sText += n < 0 ? "-" : HexOf(guid.subspan(static_cast<std::size_t>(n), 1));
    return sText + '}';
}

std::string DateText(double nDays) {
    const double nWhole = std::trunc(nDays);
    const long nSeconds = std::lround((nDays - nWhole) * 86400);
    const std::chrono::sys_days day =
        std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) +
        std::chrono::days(static_cast<int>(nWhole) + nSeconds / 86400);
    const std::chrono::year_month_day date(day);
    const long nRest = nSeconds % 86400;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02ld:%02ld:%02ld",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), nRest / 3600, nRest / 60 % 60, nRest % 60);
    return text.data();
}

bool IsNear(double nOwn, const std::string& sPrinted, double nTolerance) {
    char* pEnd = nullptr;
    const double nOther = std::strtod(sPrinted.c_str(), &pEnd);
    return pEnd != sPrinted.c_str() && *pEnd == '\0' &&
           std::abs(nOwn - nOther) <= nTolerance * std::max(1.0, std::abs(nOwn));
}

ByteView BytesOf(const std::string& s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

// The second reader takes short binary values for strings that a zero ends.
ByteView UpToZero(ByteView bytes, ColumnType type) {
    if (type != ColumnType::Binary) return bytes;
    const auto zero = std::ranges::find(bytes, 0);
    return bytes.first(static_cast<std::size_t>(zero - bytes.begin()));
}

struct SameAs {
    ColumnType type;
    const std::string& sPrinted;

    bool operator()(std::monostate) const { return sPrinted == kNull; }
    bool operator()(bool b) const { return sPrinted == (b ? "1" : "0"); }
    bool operator()(std::int64_t n) const {
        if (type != ColumnType::Currency) return sPrinted == std::to_string(n);
        return IsNear(static_cast<double>(n) / 10000, sPrinted, 1e-12);
    }
    bool operator()(double n) const {
        // The second reader knows no days before the first one.
        if (type == ColumnType::DateTime) return n < 0 || sPrinted == DateText(n);
        return IsNear(n, sPrinted, type == ColumnType::Single ? 1e-6 : 1e-12);
    }
    // The second reader takes an empty text for Null, ends at a zero, and may have a question mark
    // for what the code page lacks.
    bool operator()(const std::u16string& s) const {
        std::u16string sKnown = s.substr(0, s.find(u'\0'));
        if (sKnown.empty() && sPrinted == kNull) return true;
        if (sPrinted == Utf8(sKnown)) return true;
        for (char16_t& c : sKnown)
            if (c >= 0x80 && c < 0xA0) c = u'?';
        return sPrinted == Utf8(sKnown);
    }
    bool operator()(const Bytes& bytes) const {
        if (type == ColumnType::Guid) return sPrinted == HexOf(BytesOf(GuidText(bytes)));
        const std::string sHex = HexOf(UpToZero(bytes, type));
        return sPrinted == sHex || (sHex.empty() && sPrinted == kNull);
    }
};

// A kind of bytes that the second reader doesn't know.
constexpr auto kNotPrinted = static_cast<ColumnType>(17);

// The second reader's order: by numbers.
std::vector<std::size_t> OrderOf(const std::vector<Column>& columns) {
    std::vector<std::size_t> order(columns.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t n) { return columns[n].nNumber; });
    return order;
}

bool IsSameRow(const std::vector<Column>& columns, const std::vector<std::size_t>& order,
               const Row& row, const std::vector<std::string>& printed) {
    if (printed.size() != columns.size()) return false;
    for (std::size_t n = 0; n < columns.size(); ++n) {
        const ColumnType type = columns[order[n]].type;
        if (type != kNotPrinted && !std::visit(SameAs{type, printed[n]}, row[order[n]]))
            return false;
    }
    return true;
}

// The place among the printed fields of a column whose numbers are printed as they are; the number
// of columns if there is none.
std::size_t NumberField(const std::vector<Column>& columns, const std::vector<std::size_t>& order) {
    const auto found = std::ranges::find_if(
        order, [&](std::size_t n) { return columns[n].type == ColumnType::Long; });
    return static_cast<std::size_t>(found - order.begin());
}

// Rows by what that field holds, so that each is sought among a few; all of them without a field.
std::string FieldAt(const std::vector<std::string>& printed, std::size_t nField) {
    return nField < printed.size() ? printed[nField] : "";
}
std::string FieldOf(const Row& row, const std::vector<std::size_t>& order, std::size_t nField) {
    if (nField == order.size()) return "";
    const auto* nNumber = std::get_if<std::int64_t>(&row[order[nField]]);
    return nNumber == nullptr ? kNull : std::to_string(*nNumber);
}

std::vector<std::string> Cut(const std::string& s, const std::string& sEnd) {
    std::vector<std::string> parts;
    std::size_t nFrom = 0;
    for (std::size_t n; (n = s.find(sEnd, nFrom)) != std::string::npos; nFrom = n + sEnd.size())
        parts.push_back(s.substr(nFrom, n - nFrom));
    if (nFrom < s.size()) parts.push_back(s.substr(nFrom));
    return parts;
}

}  // namespace

std::string Utf8(std::u16string_view sText) {
    std::string s;
    for (std::size_t n = 0; n < sText.size(); ++n) {
        char32_t c = sText[n];
        if (c >= 0xD800 && c < 0xDC00 && n + 1 < sText.size())
            c = 0x10000 + ((c - 0xD800) << 10U) + (sText[++n] - 0xDC00U);
        if (c < 0x80) {
            s += static_cast<char>(c);
            continue;
        }
        const unsigned nMore = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr std::array<unsigned, 4> kHeads{0, 0xC0, 0xE0, 0xF0};
        s += static_cast<char>(kHeads[nMore] | c >> 6 * nMore);
        for (unsigned i = nMore; i-- > 0;)
            s += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
    }
    return s;
}

bool HasSecondReader() {
    return std::system("command -v mdb-export >/dev/null 2>&1") == 0;
}

PrintedRows PrintTable(const std::filesystem::path& file, const std::string& sTable) {
    const std::string sOutput =
        OutputOf("mdb-export 2>/dev/null -H -Q -b hex -T '%Y-%m-%d %H:%M:%S' -d " +
                 Quoted(kFieldEnd) + " -R " + Quoted(kRowEnd) + " -0 " + Quoted(kNull) + ' ' +
                 Quoted(file.string()) + ' ' + Quoted(sTable));
    PrintedRows rows;
    for (const std::string& sRow : Cut(sOutput, kRowEnd))
        rows.push_back(Cut(sRow + kFieldEnd, kFieldEnd));
    return rows;
}

std::string DifferenceOf(Table& table, const PrintedRows& printed) {
    const std::vector<Column>& columns = table.Definition().columns;
    const std::vector<std::size_t> order = OrderOf(columns);
    const std::size_t nField = NumberField(columns, order);
    std::map<std::string, std::list<std::vector<std::string>>> left;
    for (const std::vector<std::string>& fields : printed)
        left[FieldAt(fields, nField)].push_back(fields);
    for (auto scan = table.Rows(); !scan.AtEnd(); scan.Next()) {
        const Row row = table.Read(scan.Place());
        auto& candidates = left[FieldOf(row, order, nField)];
        const auto same =
            std::ranges::find_if(candidates, [&](const std::vector<std::string>& fields) {
                return IsSameRow(columns, order, row, fields);
            });
        if (same == candidates.end())
            return "not printed: page " + std::to_string(scan.Place().nPage) + ", row " +
                   std::to_string(scan.Place().nRow);
        candidates.erase(same);
    }
    std::string sDifference;
    for (const auto& [sNumber, rows] : left)
        for (const std::vector<std::string>& fields : rows) {
            sDifference += "printed and not there:";
            for (const std::string& sField : fields)
                sDifference += ' ' + sField;
            sDifference += '\n';
        }
    return sDifference;
}

}  // namespace nomira::jet::testing
