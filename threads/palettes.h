// The fixed palettes of the PEC, JEF and PCS formats and the searches that map
// a colour onto them. The tables are generated from threads/*_palette.csv.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/design.h"

namespace fennick {

// PecPalette, indices 0 to 94: 62 to 65 are the applique entries, 66 to 94 the
// extended ones. Returns 0x00BBGGRR and the channels; index 65 and any index
// outside the table give (225, 225, 225).
uint32_t PecColorRgb(int index, uint8_t& r, uint8_t& g, uint8_t& b);
// "Unknown" outside the table.
std::string_view PecColorName(int index);
// Sets `rgb` and `colorName` from `chartIndex` as the two calls above do.
void PecPaletteColor(ThreadColor& thread);
// The standard thread number, such as "007"; empty for every index but 1 to 61.
std::string_view PecStandardNumber(int index);
// The nearest entry by the sum of channel differences. The standard entries
// are searched in a fixed order that decides ties; the applique entries and
// then 0 and the extended ones follow only when allowed.
int PecNearestColor(uint8_t r, uint8_t g, uint8_t b, bool allowApplique, bool allowExtended);

// JEF palette, 1 to 79. Sets `rgb` and `colorName` from `chartIndex`; an index
// outside 1 to 79 leaves the thread as it is.
void JefPaletteColor(ThreadColor& thread);
// Sets `chartIndex` to the nearest of 1 to 78 by `rgb`; 79 "Other Color" is never chosen.
void JefNearestColor(ThreadColor& thread);

// PCS palette, 0 to 15. Sets `rgb` and `colorName`; any other index leaves the thread as it is.
void PcsPaletteColor(ThreadColor& thread, int index);
// The nearest of the colour table stored in a PCS file: 16 entries of red,
// green, blue and a pad byte. Only whole entries are compared; ties go to the
// lower index.
int PcsNearestIndex(std::span<const uint8_t> entries, uint8_t r, uint8_t g, uint8_t b);
// After a PCS read: names each thread after its nearest standard PecPalette
// entry, or after the PCS colour its `rgb` equals exactly.
void NamePcsColors(Design& design);

}  // namespace fennick
