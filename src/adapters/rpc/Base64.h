// Bytes as printable text, three bytes in four characters, with the usual alphabet and padding.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomira::rpc {

std::string ToBase64(std::string_view sBytes);

// nullopt unless the text is exactly what ToBase64 makes of some bytes.
std::optional<std::string> FromBase64(std::string_view sText);

}  // namespace nomira::rpc
