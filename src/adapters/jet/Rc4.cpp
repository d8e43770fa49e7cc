#include "adapters/jet/Rc4.h"

#include <array>
#include <numeric>
#include <utility>

namespace nomira::jet {

void ApplyRc4(std::uint32_t nKey, ByteSpan bytes) {
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + (nKey >> i % 4 * 8));
        std::swap(state[i], state[j]);
    }
    std::uint8_t i = 0;
    j = 0;
    for (std::uint8_t& n : bytes) {
        i = static_cast<std::uint8_t>(i + 1);
        j = static_cast<std::uint8_t>(j + state[i]);
        std::swap(state[i], state[j]);
        n ^= state[static_cast<std::uint8_t>(state[i] + state[j])];
    }
}

}  // namespace nomira::jet
