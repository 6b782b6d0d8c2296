// Melco EXP: bare pairs of signed bytes, 0x80 escapes for colour changes and
// jumps, no header and no colours.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Threads
// come from FormatDefaultPalette; the design ends with a step of (-1, -1).
bool ReadExp(Design& design, std::span<const uint8_t> bytes);
// Splits moves over 121 units, makes stops pure and anchors jumps, then
// writes. Returns 0, or -1 with no stitches.
int WriteExp(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
