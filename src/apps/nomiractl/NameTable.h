// All long texts of the database at one moment, in the place of a look-up for each name: a run over
// programs asks for the same names again and again.
#pragma once

#include <unordered_map>
#include <vector>

#include "apps/nomiractl/ItemName.h"
#include "apps/nomiractl/LongTexts.h"
#include "database/adoModul.h"

namespace nomira::companion {

// While it lives, the core's look-ups are answered from it. One of these at a time.
class NameTable : public LongTextSource {
  public:
    // `items` in the database's order: of several with the same name the first counts, and of its
    // texts the first, as for a look-up.
    explicit NameTable(std::vector<Item> items);
    ~NameTable() override;
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    bool Read(Text& sText, TextView sModule, TextView sKey) const override;

  private:
    std::vector<Item> m_items;
    std::unordered_map<ItemName, const Item*, HashItemName> m_places;
};

// While it lives, every look-up of the core fails, as without a database.
class NoNames : public LongTextSource {
  public:
    NoNames() { SetLongTextSource(this); }
    ~NoNames() override { SetLongTextSource(nullptr); }
    NoNames(const NoNames&) = delete;
    NoNames& operator=(const NoNames&) = delete;

    bool Read(Text&, TextView, TextView) const override { return false; }
};

}  // namespace nomira::companion
