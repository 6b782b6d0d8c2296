// EmbroideryFile: the block form of a Design that crosses between the control,
// the host and tool packs. Little-endian, no padding: two words, the name, the
// bounds, 46-byte thread records, 5-byte stitch records and a text trailer that
// carries the thread strings.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"
#include "core/global_memory.h"

namespace fennick {

// The block's bytes; empty when the design has no thread, no stitch and no
// notes. Building normalizes the colour stops, sets `sourceFormat` and, when
// there are threads, replaces `notes` with the thread trailer.
std::vector<uint8_t> EncodeEmbroideryFile(Design& design);
// Refills threads and stitches from a block; every count is checked against
// the block's size and a short block ends the reading quietly.
void DecodeEmbroideryFile(Design& design, std::span<const uint8_t> block);

// The multi-design payload: a count of designs, then each design's block
// behind its size, every integer 32-bit little-endian.
std::vector<uint8_t> EncodeDesignList(std::vector<Design>& designs);
// A design for every block the payload holds whole: a count or a size that
// runs past the payload ends the list there, with the designs before kept.
std::vector<Design> DecodeDesignList(std::span<const uint8_t> payload);

// The same through the handle table: a new block the caller owns, or 0.
GlobalHandle BuildEmbroideryFile(Design& design);
// A null handle does nothing; an empty or unknown block only empties threads
// and stitches. The caller keeps the block.
void ParseEmbroideryFile(Design& design, GlobalHandle block);

}  // namespace fennick
