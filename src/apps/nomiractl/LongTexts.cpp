#include "apps/nomiractl/LongTexts.h"

#include <unordered_map>

#include "database/OpenRecordset.h"
#include "database/adoModul.h"

namespace nomira::companion {
namespace {

constexpr TextView kMessagesQuery =
    u"SELECT Messages.Key_id, Messages.String FROM Messages WHERE Messages.Language_id=99";

Text TextOrEmpty(const FieldValue& value) {
    return IsNull(value) ? Text() : ToText(value);
}

template <typename Take>
void ForEachRow(TextView sQuery, Take take) {
    const OpenRecordset rows(sQuery, g_Connection.get(), CursorKind::Static, LockKind::ReadOnly);
    for (; !rows->Eof(); rows->MoveNext())
        take(rows);
}

}  // namespace

std::size_t ClassRow(TextView sModule, TextView sKey) {
    const SignalClass* signalClass = ClassOfKey(sKey);
    if (!signalClass || signalClass->sModule != sModule) return kOtherKeys;
    return static_cast<std::size_t>(signalClass - SignalClasses().data());
}

TextView ClassRowName(std::size_t nRow) {
    return nRow == kOtherKeys ? TextView(u"other keys") : SignalClasses()[nRow].sName;
}

std::vector<Item> ReadItems() {
    std::vector<Item> items;
    std::unordered_map<std::int32_t, std::size_t> placeOfKeyId;
    ForEachRow(
        u"SELECT Items.Key_id, Items.Module, Items.KeyString FROM Items",
        [&](const OpenRecordset& row) {
            placeOfKeyId[ToKeyId(row->Field(u"Key_id"))] = items.size();
            items.push_back(
                {TextOrEmpty(row->Field(u"Module")), TextOrEmpty(row->Field(u"KeyString")), {}});
        });
    ForEachRow(kMessagesQuery, [&](const OpenRecordset& row) {
        const auto place = placeOfKeyId.find(ToKeyId(row->Field(u"Key_id")));
        if (place == placeOfKeyId.end()) return;
        const FieldValue text = row->Field(u"String");
        items[place->second].texts.push_back(IsNull(text) ? std::nullopt
                                                          : std::optional(ToText(text)));
    });
    return items;
}

LongTexts GroupByName(const std::vector<Item>& items) {
    LongTexts texts;
    for (const Item& item : items) {
        auto& ofName = texts[{item.sModule, item.sKey}];
        ofName.insert(ofName.end(), item.texts.begin(), item.texts.end());
    }
    return texts;
}

ByClass<ClassChanges> Compare(const LongTexts& before, const LongTexts& after) {
    ByClass<ClassChanges> changes{};
    for (const auto& [name, texts] : after) {
        ClassChanges& ofClass = changes[ClassRow(name.first, name.second)];
        const auto old = before.find(name);
        if (old == before.end())
            ++ofClass.nAdded;
        else
            ++(old->second == texts ? ofClass.nUnchanged : ofClass.nChanged);
    }
    for (const auto& [name, texts] : before)
        if (!after.contains(name)) ++changes[ClassRow(name.first, name.second)].nRemoved;
    return changes;
}

}  // namespace nomira::companion
