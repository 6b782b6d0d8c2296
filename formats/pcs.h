// Pfaff PCS: a header of 16 colours and 9-byte records of absolute positions
// in file units (153.5 to a stitch unit), with colour changes between them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Keeps
// `name`, whose "pcs" extension makes ReclassifyJumps mark every move over
// 127 units a jump. Returns false only when there are no bytes.
bool ReadPcs(Design& design, std::span<const uint8_t> bytes);
// Marks the tail a jump and the head a stop, then writes with the bounds as
// they stand. The colour table holds the design's distinct colours. Returns
// 0, or -1 with no stitches or, reported to the user, past 32767 nodes.
int WritePcs(Design& design, std::vector<uint8_t>& out);

}  // namespace fennick
