// Exact decimal numbers as text: Currency (ten-thousandths in 64 bits) and Numeric (28 digits and
// a scale) columns.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/jet/Bytes.h"

namespace nomira::jetsql {

inline constexpr int kCurrencyScale = 4;

// "-12.34" for -123400: without zeros at the end of the fraction.
std::string TextOfCurrency(std::int64_t nTenThousandths);
// nullopt for what is no decimal number, has more than four digits behind the point that count, or
// is too large.
std::optional<std::int64_t> CurrencyOfText(std::string_view sText);

// Of a Numeric column's 17 bytes: the sign, then four words with the most significant one first.
// nullopt for other bytes.
std::optional<std::string> TextOfNumeric(jet::ByteView bytes, int nScale);
// nullopt as with CurrencyOfText, for up to `nPrecision` digits of which `nScale` stand behind the
// point.
std::optional<jet::Bytes> NumericOfText(std::string_view sText, int nPrecision, int nScale);

}  // namespace nomira::jetsql
