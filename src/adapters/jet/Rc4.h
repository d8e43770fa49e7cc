// The stream cipher that hides the header and the pages of encrypted files. It keeps no secret: its
// keys stand in the file.
#pragma once

#include "adapters/jet/Bytes.h"

namespace nomira::jet {

// Puts the cipher on bytes from its start on, or takes it off again. Keys are four bytes, as a
// little-endian number.
void ApplyRc4(std::uint32_t nKey, ByteSpan bytes);

}  // namespace nomira::jet
