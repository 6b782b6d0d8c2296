// Janome SEW: the colour and byte-pair stitch coding of JEF behind a fixed
// 7544-byte header, most of which holds monochrome pictures of the design for
// the machine's display.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// pictures are skipped. False only for no bytes at all.
bool ReadSew(Design& design, std::span<const uint8_t> bytes);
// Centres the design, moves it 17.5 mm right and 10 mm down, splits moves
// over 127 units, then writes the stream and draws the pictures with the
// renderer. Returns -1, writing nothing, for no stitches, no threads or more
// than 12 (which the user is told); otherwise 0.
int WriteSew(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
