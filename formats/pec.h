// The PEC block: the machine-facing part of every PES file and the whole of
// a stand-alone PEC file. Stitches are coded in one or two bytes an axis.
#pragma once

#include <cstdint>
#include <vector>

#include "core/byte_cursor.h"
#include "core/stitch_list.h"

namespace fennick {

struct PecStitch {
  int32_t dx = 0;
  int32_t dy = 0;
  uint32_t flags = 0;  // STITCH_COLORSTOP or STITCH_JUMP
};

// Decodes the stitch at the reader's offset and moves past it. The stream's
// y runs upwards, so dy is negated. Past the end the bytes read as 0.
PecStitch DecodePecStitch(ByteReader& reader);

// Appends the stitch and returns the count of bytes written (at most 7).
// `changeCount` is the number of colour changes so far, this node included;
// it is 0 only for the first node of the stream, which is always long.
size_t EncodePecStitch(std::vector<uint8_t>& out, const StitchNode& node, int changeCount);

}  // namespace fennick
