// Code pages by their Windows numbers, made from the system's own conversion (iconv).
#pragma once

#include <memory>

#include "langtools/CodePage.h"

namespace nomira::posix {

// The page of this number: 1252 is the built-in table, any other single-byte page a table filled
// by iconv, the rest a page that calls iconv each time. nullptr if the system doesn't know it.
//
// In the Windows pages (1250 to 1258, 874) a byte from 80 to 9F without a character stands for the
// C1 character of its number, as Windows has it, so that such bytes survive a round trip.
std::unique_ptr<CodePage> MakeCodePage(int nCodePage);

}  // namespace nomira::posix
