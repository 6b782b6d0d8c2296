// PES files of every version and stand-alone PEC files. Stitches and palette
// colours always come from the PEC blocks; the PES header adds the hoop, the
// metadata and, from version 50 on, the real thread records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Fails on
// fewer than 512 bytes, a wrong signature, a PEC offset at or past the end, or
// a block whose stitches reach past the end; the design may then hold part of
// a block. A file of no blocks, or none with stitches, gives a design without
// stitches.
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

struct PesWriteOptions {
  bool pes5 = false;         // version 5 and 6 headers with the real thread colours
  bool ensureTrims = false;  // has no effect on the bytes; kept for the settings' sake
  bool trailingPad = false;  // versions 5 and 6: two zero bytes at the end (the settings' 14th word)
};

// Replaces `out` with a PES file: "#PES0001", "#PES0020" or "#PES0040" by the
// design's size, or with pes5 one of "#PES0050", "#PES0055", "#PES0056" and
// "#PES0060". The design is changed on the way (turned back from its fit,
// split, merged, centred). Returns 0, with nothing written when the design
// has no colours; -1 when it has no stitches.
int WritePesFile(Design& design, std::vector<uint8_t>& out, const PesWriteOptions& options);

// Maps every thread to the record a version 5 and 6 header keeps (brand,
// catalogue number, kind; chart colours may replace the thread's) and fills
// fileThreads with one record per distinct colour. Returns each thread's
// position in fileThreads.
std::vector<int> BuildHeaderThreads(Design& design);

}  // namespace fennick
