// Janome JEF: a fixed header, a table of palette numbers and a stream of
// signed byte pairs with 0x80 escapes. Colours are JEF palette entries.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// thread list is brought into line with the colour changes of the stream.
bool ReadJef(Design& design, std::span<const uint8_t> bytes);
// Maps the threads to the palette, splits moves over 126 units into jump
// chains and anchors jumps, then writes with the bounds as they stand.
// Returns 0, or -1 with no stitches or no threads.
int WriteJef(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
