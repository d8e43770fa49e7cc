// A second reader of Access files: the command mdb-export of the Debian package mdbtools.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "adapters/jet/AccessFile.h"

namespace nomira::jet::testing {

// Whether the command is there.
bool HasSecondReader();

// The fields of each row as the second reader prints them.
using PrintedRows = std::vector<std::vector<std::string>>;
PrintedRows PrintTable(const std::filesystem::path& file, const std::string& sTable);

// What is different between the table and what the second reader prints of it; empty if nothing is.
std::string DifferenceOf(Table& table, const PrintedRows& printed);

std::string Utf8(std::u16string_view sText);

}  // namespace nomira::jet::testing
