// HUS: a small header, the default-palette index of each colour, and three
// Gl-packed byte streams of commands and moves of at most 127 units.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// design must carry a name, which failure lines start with (see
// formats/hus_vip_streams.h). Colours after the 28th read as black.
bool ReadHusFile(Design& design, std::span<const uint8_t> bytes);
// Inserts a stop before every colour change that moves, cuts moves beyond 127
// units into jumps and a rest, and anchors every other jump with a zero
// stitch; then writes. Returns 0, or -1 with nothing written when the design
// has no threads or the packing failed.
int WriteHusFile(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
