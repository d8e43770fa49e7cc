#include "apps/nomiractl/DatabaseRows.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "apps/nomiractl/ItemName.h"
#include "database/OpenRecordset.h"
#include "database/adoModul.h"
#include "langtools/BasicText.h"
#include "langtools/Utf8.h"

namespace nomira::companion {
namespace {

constexpr std::size_t kIdsInStatement = 200;

using Name = std::pair<std::optional<Text>, std::optional<Text>>;

Name NameOf(const ItemRow& row) {
    return {row.sModule, row.sKey};
}

std::optional<Text> TextOrNull(const FieldValue& value) {
    if (IsNull(value)) return std::nullopt;
    return ToText(value);
}

template <typename Take>
void ForEachRow(TextView sQuery, Take take) {
    const OpenRecordset rows(sQuery, g_Connection.get(), CursorKind::Static, LockKind::ReadOnly);
    for (; !rows->Eof(); rows->MoveNext())
        take(rows);
}

void Append(std::string& bytes, std::int64_t nNumber) {
    bytes.append(std::to_string(nNumber)).append(";");
}

void Append(std::string& bytes, const std::optional<Text>& sText) {
    if (!sText) {
        bytes.append("-;");
        return;
    }
    const std::string sUtf8 = ToUtf8(*sText);
    Append(bytes, static_cast<std::int64_t>(sUtf8.size()));
    bytes.append(sUtf8);
}

void Run(const Text& sStatement) {
    // Gives no rows, so that the recordset stays closed.
    const OpenRecordset none(sStatement, g_Connection.get(), CursorKind::Static,
                             LockKind::Pessimistic);
}

void Delete(TextView sTable, const std::vector<std::int64_t>& ids) {
    for (std::size_t nFrom = 0; nFrom < ids.size(); nFrom += kIdsInStatement) {
        const std::size_t nTo = std::min(ids.size(), nFrom + kIdsInStatement);
        Text sList;
        for (std::size_t n = nFrom; n < nTo; ++n)
            sList += (sList.empty() ? u"" : u",") + FromAscii(std::to_string(ids[n]));
        Run(u"DELETE FROM " + Text(sTable) + u" WHERE Key_id IN (" + sList + u")");
    }
}

FieldValue ValueOf(const std::optional<Text>& sText) {
    return sText ? FieldValue(*sText) : FieldValue();
}

void InsertItems(const std::vector<const ItemRow*>& rows) {
    const OpenRecordset items(u"Items", g_Connection.get(), CursorKind::Keyset,
                              LockKind::Optimistic);
    for (const ItemRow* row : rows) {
        items->AddNew();
        items->SetField(u"Key_id", row->nKeyId);
        items->SetField(u"Module", ValueOf(row->sModule));
        items->SetField(u"KeyString", ValueOf(row->sKey));
        items->Update();
    }
}

void InsertMessages(const std::vector<const ItemRow*>& rows) {
    const OpenRecordset messages(u"Messages", g_Connection.get(), CursorKind::Keyset,
                                 LockKind::Optimistic);
    for (const ItemRow* row : rows) {
        for (const MessageRow& message : row->messages) {
            messages->AddNew();
            messages->SetField(u"Key_id", row->nKeyId);
            messages->SetField(u"Language_id", message.nLanguage);
            messages->SetField(u"String", ValueOf(message.sText));
            messages->Update();
        }
    }
}

bool IsSameItem(const ItemChange& change) {
    return change.before && change.after && NameOf(*change.before) == NameOf(*change.after);
}

using Side = std::optional<ItemRow> ItemChange::*;

// Whether the rows have that side of the changes, and no others of the names that come or go with
// them. Where only texts change, an item may have a twin that had its text already.
bool Hold(const std::vector<ItemChange>& changes, const Rows& rows, Side side) {
    std::set<Name> names;
    std::unordered_map<std::int64_t, const ItemRow*> expected;  // nullptr: no such row
    for (const ItemChange& change : changes) {
        if (!IsSameItem(change))
            for (const auto& row : {change.before, change.after})
                if (row) names.insert(NameOf(*row));
        const auto& row = change.*side;
        const std::int64_t nId = (change.before ? change.before : change.after)->nKeyId;
        expected[nId] = row ? &*row : nullptr;
    }
    std::size_t nFound = 0;
    for (const ItemRow& row : rows) {
        const auto place = expected.find(row.nKeyId);
        if (place != expected.end()) {
            if (!place->second || *place->second != row) return false;
            ++nFound;
        } else if (names.contains(NameOf(row))) {
            return false;
        }
    }
    return nFound == static_cast<std::size_t>(
                         std::count_if(expected.begin(), expected.end(),
                                       [](const auto& entry) { return entry.second != nullptr; }));
}

}  // namespace

Rows ReadRows() {
    Rows rows;
    std::unordered_map<std::int64_t, std::size_t> placeOfId;
    ForEachRow(
        u"SELECT Items.Key_id, Items.Module, Items.KeyString FROM Items ORDER BY Key_id",
        [&](const OpenRecordset& row) {
            const std::int64_t nId = ToKeyId(row->Field(u"Key_id"));
            placeOfId[nId] = rows.size();
            rows.push_back(
                {nId, TextOrNull(row->Field(u"Module")), TextOrNull(row->Field(u"KeyString")), {}});
        });
    ForEachRow(u"SELECT Messages.Key_id, Messages.Language_id, Messages.String FROM Messages",
               [&](const OpenRecordset& row) {
                   const auto place = placeOfId.find(ToKeyId(row->Field(u"Key_id")));
                   if (place == placeOfId.end()) return;
                   rows[place->second].messages.push_back(
                       {ToKeyId(row->Field(u"Language_id")), TextOrNull(row->Field(u"String"))});
               });
    return rows;
}

Fingerprint FingerprintOf(const Rows& rows) {
    std::string bytes;
    for (const ItemRow& row : rows) {
        Append(bytes, row.nKeyId);
        Append(bytes, row.sModule);
        Append(bytes, row.sKey);
        for (const MessageRow& message : row.messages) {
            Append(bytes, message.nLanguage);
            Append(bytes, message.sText);
        }
        bytes.append("\n");
    }
    return FingerprintOf(bytes);
}

LongTexts GroupByName(const Rows& rows) {
    LongTexts texts;
    for (const ItemRow& row : rows) {
        auto& ofName = texts[{row.sModule.value_or(Text()), row.sKey.value_or(Text())}];
        for (const MessageRow& message : row.messages)
            if (message.nLanguage == kLongTextLanguage) ofName.push_back(message.sText);
    }
    return texts;
}

ByClass<ClassChanges> Unchanged(const Rows& rows) {
    ByClass<ClassChanges> changes{};
    std::unordered_set<ItemName, HashItemName> names;
    names.reserve(rows.size());
    for (const ItemRow& row : rows) {
        const ItemName name{row.sModule ? *row.sModule : TextView(),
                            row.sKey ? *row.sKey : TextView()};
        if (names.insert(name).second) ++changes[ClassRow(name.sModule, name.sKey)].nUnchanged;
    }
    return changes;
}

std::vector<ItemChange> Difference(const Rows& before, const Rows& after) {
    std::vector<ItemChange> changes;
    auto old = before.begin();
    auto now = after.begin();
    while (old != before.end() || now != after.end()) {
        if (now == after.end() || (old != before.end() && old->nKeyId < now->nKeyId)) {
            changes.push_back({*old++, std::nullopt, 0});
        } else if (old == before.end() || now->nKeyId < old->nKeyId) {
            changes.push_back({std::nullopt, *now++, 0});
        } else {
            if (*old != *now) changes.push_back({*old, *now, 0});
            ++old;
            ++now;
        }
    }
    return changes;
}

bool AreBefore(const std::vector<ItemChange>& changes, const Rows& rows) {
    return Hold(changes, rows, &ItemChange::before);
}

bool AreAfter(const std::vector<ItemChange>& changes, const Rows& rows) {
    return Hold(changes, rows, &ItemChange::after);
}

void ChangeRows(const std::vector<ItemChange>& changes) {
    std::vector<std::int64_t> oldMessages, oldItems;
    std::vector<const ItemRow*> newItems, newMessages;
    for (const ItemChange& change : changes) {
        if (change.before) oldMessages.push_back(change.before->nKeyId);
        if (change.after) newMessages.push_back(&*change.after);
        if (IsSameItem(change)) continue;
        if (change.before) oldItems.push_back(change.before->nKeyId);
        if (change.after) newItems.push_back(&*change.after);
    }
    Delete(u"Messages", oldMessages);
    Delete(u"Items", oldItems);
    InsertItems(newItems);
    InsertMessages(newMessages);
}

}  // namespace nomira::companion
