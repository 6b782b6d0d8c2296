// The design's preview saved as a Windows bitmap file: 32-bit pixels after a
// 58-byte header, drawn by the renderer with the "Settings" bitmap options.
#pragma once

#include <cstdint>
#include <vector>

#include "core/design.h"
#include "tools/render/stitch_bitmap.h"

namespace fennick {

// The file's bytes: a 14-byte file header, a 40-byte info header, a spare
// zero word, then the pixels as they lie in memory, first row first.
std::vector<uint8_t> BmpFileImage(const StitchBitmap& bitmap);
// Renders `design` at "BMP Size" square on white, shaded and thick with
// "Make 3D", or as its outline with "Outline" (which wins), and fills `file`.
// -1 for a null design or a size no bitmap can have; 0 on success.
int MakeBitmap(Design* design, std::vector<uint8_t>& file);

}  // namespace fennick
