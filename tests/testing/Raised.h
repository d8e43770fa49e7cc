// What a call raises, so that a test can compare it: EXPECT_EQ(Raised([&] { ... }), Overflow).
#pragma once

#include <optional>
#include <ostream>

#include "langtools/RuntimeError.h"

namespace nomira::testing {

// The number of the RuntimeError that `call` raises; nullopt if it comes back.
template <typename Call>
std::optional<ErrorNumber> Raised(Call call) {
    try {
        call();
        return std::nullopt;
    } catch (const RuntimeError& error) {
        return error.Number();
    }
}

}  // namespace nomira::testing

namespace nomira {
inline void PrintTo(ErrorNumber number, std::ostream* out) {
    *out << "run-time error " << static_cast<std::int32_t>(number);
}
}  // namespace nomira
