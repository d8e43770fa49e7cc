#include "adapters/jet/Catalogue.h"

#include <algorithm>
#include <ctime>
#include <limits>

#include "adapters/jet/Names.h"

namespace nomira::jet {
namespace {

constexpr std::size_t kMostNameCharacters = 64;

// Who owns or uses an object. Jet 4 masks them, with bytes that start over for each.
constexpr std::array<std::uint8_t, 2> kAdmin = {0x03, 0x01};
constexpr std::array<std::uint8_t, 2> kUsers = {0x02, 0x01};
constexpr std::array<std::uint8_t, 2> kEngine = {0x02, 0x03};

// What they may do with an object.
struct Rights {
    std::int32_t nAdmin;
    std::int32_t nUsers;
};
constexpr Rights kTableRights{0xFFEFF, 0xFFEFF};
constexpr Rights kRelationshipRights{0xF00FE, 0xFFFFF};

std::int64_t IntegerOr0(const Value& value) {
    const auto* pValue = std::get_if<std::int64_t>(&value);
    return pValue == nullptr ? 0 : *pValue;
}

Bytes BytesOf(const Value& value) {
    const auto* pValue = std::get_if<Bytes>(&value);
    return pValue == nullptr ? Bytes() : *pValue;
}

// Days since 1899-12-30, in the time of this place.
double Now() {
    constexpr double kDaysTo1970 = 25569;
    constexpr double kSecondsOfDay = 86400;
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    return kDaysTo1970 + static_cast<double>(::timegm(&local)) / kSecondsOfDay;
}

Bytes Masked(std::array<std::uint8_t, 2> owner, std::array<std::uint8_t, 2> mask) {
    return {static_cast<std::uint8_t>(owner[0] ^ mask[0]),
            static_cast<std::uint8_t>(owner[1] ^ mask[1])};
}

// What objects inherit from their parent, for those whom the file alone knows: the others'
// identities are two bytes long in every file.
std::vector<Grant> InheritedGrants(AccessFile& file, std::int32_t nParent) {
    std::vector<Grant> grants = GrantsOf(file, nParent);
    std::erase_if(grants, [](const Grant& grant) {
        return !grant.bInheritable || grant.who.size() <= kAdmin.size();
    });
    for (Grant& grant : grants)
        grant.bInheritable = false;
    return grants;
}

void AddGrants(AccessFile& file, std::int32_t nObject, const std::vector<Grant>& grants) {
    SystemTable rights(file, kRightsTable);
    for (const Grant& grant : grants)
        rights.Insert({{u"ObjectId", std::int64_t{nObject}},
                       {u"SID", grant.who},
                       {u"ACM", grant.nRights},
                       {u"FInheritable", grant.bInheritable}});
}

}  // namespace

std::size_t SystemTable::Column(std::u16string_view sName) const {
    const int nColumn = m_table.Definition().FindColumn(sName);
    if (nColumn < 0) Fail(FailureKind::Damaged, "a table of the system lacks a column");
    return static_cast<std::size_t>(nColumn);
}

void SystemTable::Insert(std::initializer_list<std::pair<std::u16string_view, Value>> values) {
    Row row(m_table.Definition().columns.size());
    for (const auto& [sName, value] : values)
        row[Column(sName)] = value;
    m_table.Insert(row);
}

std::vector<CatalogueEntry> ReadCatalogue(AccessFile& file) {
    SystemTable objects(file, kObjectsTable);
    std::vector<CatalogueEntry> entries;
    for (auto scan = objects.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
        const RowPlace place = scan.Place();
        CatalogueEntry& entry = entries.emplace_back();
        entry.nId = static_cast<std::int32_t>(IntegerOr0(objects.Read(place, u"Id")));
        entry.nParent = static_cast<std::int32_t>(IntegerOr0(objects.Read(place, u"ParentId")));
        entry.nType = static_cast<std::int16_t>(IntegerOr0(objects.Read(place, u"Type")));
        entry.nFlags = static_cast<std::uint32_t>(IntegerOr0(objects.Read(place, u"Flags")));
        Value name = objects.Read(place, u"Name");
        if (auto* psName = std::get_if<std::u16string>(&name)) entry.sName = std::move(*psName);
    }
    return entries;
}

std::int32_t NextObjectId(const std::vector<CatalogueEntry>& entries) {
    std::int32_t nNext = std::numeric_limits<std::int32_t>::min();
    for (const CatalogueEntry& entry : entries)
        if (entry.nId < 0) nNext = std::max(nNext, entry.nId + 1);
    return nNext;
}

std::array<std::uint8_t, 2> OwnerMask(AccessFile& file) {
    SystemTable objects(file, kObjectsTable);
    for (auto scan = objects.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
        if (IntegerOr0(objects.Read(scan.Place(), u"Id")) != kObjectsTable) continue;
        // It is the engine's own.
        const Bytes owner = BytesOf(objects.Read(scan.Place(), u"Owner"));
        if (owner.size() != kEngine.size()) break;
        return {static_cast<std::uint8_t>(owner[0] ^ kEngine[0]),
                static_cast<std::uint8_t>(owner[1] ^ kEngine[1])};
    }
    return {};
}

std::vector<Grant> GrantsOf(AccessFile& file, std::int32_t nObject) {
    SystemTable rights(file, kRightsTable);
    std::vector<Grant> grants;
    for (auto scan = rights.Rows().Rows(); !scan.AtEnd(); scan.Next()) {
        const RowPlace place = scan.Place();
        if (IntegerOr0(rights.Read(place, u"ObjectId")) != nObject) continue;
        grants.push_back({BytesOf(rights.Read(place, u"SID")),
                          IntegerOr0(rights.Read(place, u"ACM")),
                          rights.Read(place, u"FInheritable") == Value(true)});
    }
    return grants;
}

void SetGrants(AccessFile& file, std::int32_t nObject, const std::vector<Grant>& grants) {
    SystemTable rights(file, kRightsTable);
    for (auto scan = rights.Rows().Rows(); !scan.AtEnd(); scan.Next())
        if (IntegerOr0(rights.Read(scan.Place(), u"ObjectId")) == nObject)
            rights.Rows().Delete(scan.Place());
    AddGrants(file, nObject, grants);
}

std::vector<Grant> UsualGrants(AccessFile& file, const CatalogueEntry& entry) {
    const auto mask = OwnerMask(file);
    const Rights& given = entry.IsTable() ? kTableRights : kRelationshipRights;
    std::vector<Grant> grants{{Masked(kAdmin, mask), given.nAdmin},
                              {Masked(kUsers, mask), given.nUsers}};
    const std::vector<Grant> inherited = InheritedGrants(file, entry.nParent);
    grants.insert(grants.end(), inherited.begin(), inherited.end());
    return grants;
}

void AddObject(AccessFile& file, const CatalogueEntry& entry) {
    AddObject(file, entry, UsualGrants(file, entry));
}

void AddObject(AccessFile& file, const CatalogueEntry& entry, const std::vector<Grant>& grants) {
    SystemTable objects(file, kObjectsTable);
    const double dNow = Now();
    objects.Insert(
        {{u"Id", std::int64_t{entry.nId}},
         {u"ParentId", std::int64_t{entry.nParent}},
         {u"Name", entry.sName},
         {u"Type", std::int64_t{entry.nType}},
         {u"DateCreate", dNow},
         {u"DateUpdate", dNow},
         {u"Owner", Masked(kAdmin, OwnerMask(file))},
         {u"Flags", static_cast<std::int64_t>(static_cast<std::int32_t>(entry.nFlags))}});
    AddGrants(file, entry.nId, grants);
}

void RequireName(std::u16string_view sName) {
    constexpr std::u16string_view kNotInNames = u".!`[]";
    const bool bWrong = std::any_of(sName.begin(), sName.end(), [&](char16_t c) {
        return c < u' ' || kNotInNames.find(c) != std::u16string_view::npos;
    });
    if (bWrong || sName.empty() || sName.size() > kMostNameCharacters || sName.front() == u' ')
        Fail(FailureKind::Constraint, "a name is one that the file can't have");
}

}  // namespace nomira::jet
