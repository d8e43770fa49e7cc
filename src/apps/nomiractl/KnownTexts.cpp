#include "apps/nomiractl/KnownTexts.h"

#include "database/adoModul.h"

namespace nomira::companion {
namespace {

// nullptr unless the item has one message in the long-text language, with a text.
const Text* OneTextOf(const ItemRow& row) {
    const Text* sText = nullptr;
    for (const MessageRow& message : row.messages) {
        if (message.nLanguage != kLongTextLanguage) continue;
        if (sText || !message.sText) return nullptr;
        sText = &*message.sText;
    }
    return sText;
}

}  // namespace

KnownTexts::KnownTexts(const Rows& rows) {
    m_texts.reserve(rows.size());
    for (const ItemRow& row : rows) {
        if (!row.sModule || !row.sKey) continue;  // no look-up finds it
        const Text* sText = OneTextOf(row);
        const auto [place, bNew] = m_texts.try_emplace({*row.sModule, *row.sKey}, sText);
        if (!bNew && (!sText || !place->second || *sText != *place->second))
            place->second = nullptr;
    }
}

bool KnownTexts::Holds(TextView sModule, TextView sKey, TextView sText) const {
    const auto place = m_texts.find({sModule, sKey});
    return place != m_texts.end() && place->second && *place->second == sText;
}

void KnownTexts::Forget(TextView sModule, TextView sKey) {
    m_texts.erase({sModule, sKey});
}

}  // namespace nomira::companion
