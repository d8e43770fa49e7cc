// JSON on the standard output.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

namespace nomira::companion {

// On several lines. Bytes that are no UTF-8, as a file's name may have, become U+FFFD.
inline void WriteJson(std::ostream& out, const nlohmann::ordered_json& json) {
    constexpr int kIndent = 2;
    out << json.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

}  // namespace nomira::companion
