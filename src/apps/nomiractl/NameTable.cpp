#include "apps/nomiractl/NameTable.h"

#include <utility>

namespace nomira::companion {

NameTable::NameTable(std::vector<Item> items) : m_items(std::move(items)) {
    m_places.reserve(m_items.size());
    for (const Item& item : m_items)
        m_places.try_emplace({item.sModule, item.sKey}, &item);
    SetLongTextSource(this);
}

NameTable::~NameTable() {
    SetLongTextSource(nullptr);
}

bool NameTable::Read(Text& sText, TextView sModule, TextView sKey) const {
    const auto place = m_places.find({sModule, sKey});
    if (place == m_places.end()) return true;
    const auto& texts = place->second->texts;
    if (!texts.empty() && texts.front()) sText = *texts.front();
    return true;
}

}  // namespace nomira::companion
