// The properties that the maker's program keeps with an object of the catalogue: captions, formats,
// defaults, rules and descriptions of a table and its columns, and the like.
//
// On the disk: four bytes that tell the generation, then blocks. One block names all properties;
// each other one has those of the object itself or of one column.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "adapters/jet/Layout.h"
#include "adapters/jet/Value.h"

namespace nomira::jet {

struct Property {
    std::uint8_t nFlags = 0;
    std::uint8_t nType = 0;   // as ColumnType
    std::uint16_t nName = 0;  // index into Properties::names
    Value value;              // a text of a type of text, else bytes
};
struct PropertyBlock {
    std::uint16_t nKind = 0;  // 0: the object, 1: the column of this name
    std::u16string sName;
    std::vector<Property> properties;
};
struct Properties {
    std::vector<std::u16string> names;
    std::vector<PropertyBlock> blocks;
};

// nullopt for what isn't made as told above.
std::optional<Properties> ReadProperties(ByteView bytes, Generation generation);

// nullopt if the generation can't hold one of the texts.
std::optional<Bytes> WriteProperties(const Properties& properties, Generation generation);

}  // namespace nomira::jet
