// Module and key, under which a text is looked up. The views' texts belong to somebody else.
#pragma once

#include <cstddef>
#include <functional>

#include "langtools/Text.h"

namespace nomira::companion {

struct ItemName {
    TextView sModule;
    TextView sKey;

    bool operator==(const ItemName&) const = default;
};

struct HashItemName {
    std::size_t operator()(const ItemName& name) const {
        const std::hash<TextView> hash;
        return hash(name.sKey) * 31 + hash(name.sModule);
    }
};

}  // namespace nomira::companion
