// All long texts of the database at one moment, and what has changed between two.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "conversion/KeyScheme.h"
#include "langtools/Text.h"

namespace nomira::companion {

// A row per class, and one for keys that belong to none (the bare numbers under which a standard
// installation stores process parameters, and whatever else the database holds).
inline constexpr std::size_t kOtherKeys = kSignalClassCount;
template <typename Row>
using ByClass = std::array<Row, kSignalClassCount + 1>;

std::size_t ClassRow(TextView sModule, TextView sKey);
// The name of a row, for people.
TextView ClassRowName(std::size_t nRow);

// One row of Items with its texts in the long-text language: usually one. Null is nullopt, and an
// item without a message has none.
struct Item {
    Text sModule;
    Text sKey;
    std::vector<std::optional<Text>> texts;
};

// In the database's order, through the core's connection, which must be open (g_Connection).
// Raises a RuntimeError, such as EngineFailure for a database without the two tables.
std::vector<Item> ReadItems();

// The texts by module and key; items of the same name come together.
using LongTexts = std::map<std::pair<Text, Text>, std::vector<std::optional<Text>>>;
LongTexts GroupByName(const std::vector<Item>& items);

struct ClassChanges {
    int nAdded = 0;
    int nChanged = 0;
    int nUnchanged = 0;  // there before and after, with the same text
    int nRemoved = 0;
};

ByClass<ClassChanges> Compare(const LongTexts& before, const LongTexts& after);

}  // namespace nomira::companion
