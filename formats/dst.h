// Tajima DST: a 512-byte text header and 3-byte records of balanced-ternary
// moves, at most 121 units an axis. The file carries no colours.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// header is not looked at. Threads come from FormatDefaultPalette.
bool ReadDst(Design& design, std::span<const uint8_t> bytes);
// Centres the design, splits moves over 121 units and prepends a zero node,
// then writes; `name` gives the label. Returns 0, or -1 with no stitches.
int WriteDst(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
