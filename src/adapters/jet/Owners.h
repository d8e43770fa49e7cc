// Who owns the objects of a file, or may use them. Jet 3 stores these identities plain. Jet 4 hides
// each of them by a cipher that starts over, with a key that stands nowhere: the header tells most
// of its bits, and what is known of some identities the others.
#pragma once

#include <array>
#include <optional>

#include "adapters/jet/Catalogue.h"

namespace nomira::jet {

class OwnerCipher {
  public:
    // Looks for the file's key.
    explicit OwnerCipher(AccessFile& file);

    // A stored identity made plain, or a plain one as it is stored. Those of two bytes, which all
    // files share, always; nullopt for a longer one where the key wasn't found.
    std::optional<Bytes> Apply(ByteView identity) const;

  private:
    bool m_bHides = false;
    std::array<std::uint8_t, 2> m_mask{};  // of the first bytes
    std::optional<std::uint32_t> m_nKey;
};

}  // namespace nomira::jet
