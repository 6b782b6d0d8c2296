// PES files of every version and stand-alone PEC files. Stitches and palette
// colours always come from the PEC blocks; the PES header adds the hoop, the
// metadata and, from version 50 on, the real thread records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Fails on
// fewer than 512 bytes, a wrong signature, a PEC offset at or past the end, or
// a block without stitches; the design may then hold part of a block.
bool ReadPesFile(Design& design, std::span<const uint8_t> bytes);

// Fills fileThreads from the header's thread list at `listOffset`, naming each
// record by its brand.
void ReadHeaderThreads(Design& design, std::span<const uint8_t> bytes, size_t listOffset);
// Overwrites the rgb of the design's threads from the list of red, green, blue
// triples at `offset`, unless its first colour differs from the first header
// record's. Needs formatVersion 50 or above and a header record.
void ReadRealColors(Design& design, std::span<const uint8_t> bytes, size_t offset);
// Copies onto each thread the first header record of the same colour.
void MatchHeaderThreads(Design& design);

}  // namespace fennick
