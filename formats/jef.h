// Janome JEF: a fixed header, a table of palette numbers and a stream of
// signed byte pairs with 0x80 escapes. Colours are JEF palette entries.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/byte_cursor.h"
#include "core/design.h"

namespace fennick {

// The stitch stream JEF and SEW share: signed byte pairs, and a command pair
// behind an escape byte.
inline constexpr uint8_t kJefEscape = 0x80;
inline constexpr uint8_t kJefColorChange = 1;
inline constexpr uint8_t kJefJump = 2;
inline constexpr uint8_t kJefEnd = 16;

// Appends the stream's stitches from the reader's place up to `end` or the end
// code. Returns the number of colour changes.
size_t ReadJefStitches(ByteReader& stream, size_t end, StitchList& stitches);

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// thread list is brought into line with the colour changes of the stream.
bool ReadJef(Design& design, std::span<const uint8_t> bytes);
// Maps the threads to the palette, splits moves over 126 units into jump
// chains and anchors jumps, then writes with the bounds as they stand.
// Returns 0, or -1 with no stitches or no threads.
int WriteJef(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
