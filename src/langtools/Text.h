// The program's text: 16-bit characters, as the controller software's own strings are.
// Bytes become Text only at the edges (files, registry, database), by CodePage.h or UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace nomira {

using Text = std::u16string;
using TextView = std::u16string_view;

}  // namespace nomira
