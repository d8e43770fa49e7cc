// How the contracts ask for a failure's number.
#pragma once

#include <optional>
#include <ostream>

#include "langtools/RuntimeError.h"

namespace nomira::testing {

// The number that `call` raises; nullopt if it raises nothing.
template <typename Call>
std::optional<ErrorNumber> NumberRaisedBy(Call call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.Number();
    }
    return std::nullopt;
}

}  // namespace nomira::testing

namespace nomira {
inline void PrintTo(ErrorNumber number, std::ostream* out) {
    *out << "error " << static_cast<int>(number);
}
}  // namespace nomira
