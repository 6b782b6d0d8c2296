// What the HUS and VIP formats share: the common header fields, and the three Gl-packed byte streams
// (command, x and y, one byte per stitch).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/design.h"

namespace fennick {

// Bytes 0 to 41 of both formats.
struct HusVipHeader {
  uint32_t signature = 0;
  uint32_t stitchCount = 0;
  uint32_t colorCount = 0;
  int16_t maxX = 0, maxY = 0, minX = 0, minY = 0;
  uint32_t streamOffsets[3] = {0, 0, 0};  // command, x, y
};
inline constexpr size_t kHusVipFixedHeader = 42;

// Writes the 42 fixed bytes with the stream offsets left 0; the design's
// bounds are taken as they stand, narrowed to 16 bits.
void WriteHusVipHeader(std::vector<uint8_t>& out, uint32_t signature, uint32_t colorCount, const Design& design);

// Packs the design's nodes into the three streams at level 0 and appends
// them, setting their offsets in the header. Every move must already lie in
// -127..127. False when the engine failed; `out` is then as it was.
bool AppendHusVipStreams(const Design& design, std::vector<uint8_t>& out);

// Clears the design, keeping its name, which both readers need, and reads the
// fixed header. False for a design without a name or bytes too short.
bool ReadHusVipHeader(Design& design, std::span<const uint8_t> bytes, HusVipHeader& header);

// Unpacks the streams and appends their nodes to the design (which holds its
// threads), then ends as these readers do: MergeJumps(false),
// ReclassifyJumps, Centre. On failure the user gets a line naming the
// design, the design is cleared and the result is false.
bool ReadHusVipStitches(Design& design, std::span<const uint8_t> bytes, const HusVipHeader& header);

}  // namespace fennick
