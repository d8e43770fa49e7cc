// Lets failing tests show 16-bit text, and gives them short ways to make it.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "langtools/Text.h"

namespace nomira::testing {

// UTF-8, control characters escaped.
std::string Printable(TextView sText);

}  // namespace nomira::testing

// GoogleTest prints Text by itself, but not a view of it. It finds printers in the namespace of the
// type; for a standard type that is std.
namespace std {  // NOLINT(cert-dcl58-cpp)
inline void PrintTo(const nomira::TextView& sText, ostream* out) {
    *out << '"' << nomira::testing::Printable(sText) << '"';
}
}  // namespace std
