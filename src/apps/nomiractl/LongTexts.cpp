#include "apps/nomiractl/LongTexts.h"

#include <unordered_map>

#include "database/OpenRecordset.h"
#include "database/adoModul.h"

namespace nomira::companion {
namespace {

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

LongTexts ReadLongTexts() {
    LongTexts texts;
    std::unordered_map<std::int64_t, std::vector<std::optional<Text>>*> byKeyId;
    ForEachRow(u"SELECT Items.Key_id, Items.Module, Items.KeyString FROM Items",
               [&](const OpenRecordset& row) {
                   auto& ofItem = texts[{TextOrEmpty(row->Field(u"Module")),
                                         TextOrEmpty(row->Field(u"KeyString"))}];
                   byKeyId[ToKeyId(row->Field(u"Key_id"))] = &ofItem;
               });
    ForEachRow(u"SELECT Messages.Key_id, Messages.String FROM Messages"
               u" WHERE Messages.Language_id=99",
               [&](const OpenRecordset& row) {
                   const auto item = byKeyId.find(ToKeyId(row->Field(u"Key_id")));
                   if (item == byKeyId.end()) return;
                   const FieldValue text = row->Field(u"String");
                   item->second->push_back(IsNull(text) ? std::nullopt
                                                        : std::optional(ToText(text)));
               });
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
