#include "adapters/jet/AccessFile.h"

#include <utility>

#include "adapters/jet/Catalogue.h"
#include "adapters/jet/DefinitionPages.h"
#include "adapters/jet/Names.h"

namespace nomira::jet {

AccessFile::AccessFile(std::unique_ptr<PageStore> pages) : m_pages(std::move(pages)) {
    Entries();
}

AccessFile::~AccessFile() = default;

std::vector<CatalogueEntry> AccessFile::Catalogue() {
    return Entries();
}

const std::vector<CatalogueEntry>& AccessFile::Entries() {
    if (!m_entries || m_entries->nChanges != m_pages->Changes()) {
        auto entries = std::make_unique<KnownEntries>();
        entries->entries = ReadCatalogue(*this);
        entries->nChanges = m_pages->Changes();
        m_entries = std::move(entries);
    }
    return m_entries->entries;
}

Table* AccessFile::FindTable(std::u16string_view sName) {
    for (const CatalogueEntry& entry : Entries())
        if (entry.IsTable() && SameName(entry.sName, sName))
            return &TableAt(static_cast<std::uint32_t>(entry.nId));
    return nullptr;
}

Table& AccessFile::TableAt(std::uint32_t nDefinitionPage) {
    const auto found = m_tables.find(nDefinitionPage);
    if (found != m_tables.end()) {
        found->second->Refresh();
        return *found->second;
    }
    auto table = std::make_unique<Table>(*this, ReadDefinition(*m_pages, nDefinitionPage));
    return *m_tables.emplace(nDefinitionPage, std::move(table)).first->second;
}

}  // namespace nomira::jet
