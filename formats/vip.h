// VIP: a small header, a scrambled colour table with the chart of each
// thread, and three Gl-packed byte streams of commands and moves.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// design must carry a name, which failure lines start with (see
// formats/hus_vip_streams.h). Colours are read as stored and named from the
// thread's chart.
bool ReadVipFile(Design& design, std::span<const uint8_t> bytes);
// Writes each thread as the nearest colour of its chart (`chartIndex`, 0
// counting as 1), after splitting moves longer than 120 units. Returns 0, or
// -1 with nothing written when there are no threads or stitches or the
// packing failed.
int WriteVipFile(Design& design, std::vector<uint8_t>& out);

// The colour table's scramble, in place, with position 0 at the start of
// `bytes`: each byte is xored with the key at its position and with the xor
// of all plain bytes before it. The key covers 400 bytes (100 threads); it
// is 0 beyond.
void ScrambleVipColors(std::span<uint8_t> bytes);
void UnscrambleVipColors(std::span<uint8_t> bytes);

}  // namespace fennick
