// The names by which a user calls an 8-bit code page.
#pragma once

#include <optional>
#include <string_view>

namespace nomira::companion {

// The Windows number of a page that is called "1252", "cp1252", "windows-1252", "8859-15",
// "iso-8859-15", "latin1" or "latin9", in any case; nullopt for what is no 8-bit page of this
// system. UTF-8 is an encoding of the text file and no such page.
std::optional<int> CodePageOfName(std::string_view sName);

}  // namespace nomira::companion
