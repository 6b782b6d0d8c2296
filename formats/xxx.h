// Singer XXX: a 256-byte header, a stream of byte-pair stitch codes with
// escapes for jumps, long moves and colour changes, and a 96-byte trailer
// holding up to 15 colours.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Colours
// are matched to the reference thread chart. A trailer offset that does not
// point past the stitch data is not followed: the stream then ends by its own
// codes. False only for no bytes at all.
bool ReadXxx(Design& design, std::span<const uint8_t> bytes);
// Writes the design as it stands: no centring, no splitting. Stitches of 124
// units or more in an axis become long stitches and are marked as jumps in
// the design. Returns 0.
int WriteXxx(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
