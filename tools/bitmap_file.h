// The design's preview saved as a Windows bitmap file: 32-bit pixels after a
// 58-byte header, drawn by the renderer with the "Settings" bitmap options.
#pragma once

#include <cstdint>
#include <vector>

#include "core/design.h"
#include "tools/render/design_renderer.h"

namespace fennick {

// How a design is drawn into a picture of its own.
struct BitmapOptions {
  int32_t size = 400;  // edge of the square, in pixels
  bool shaded = true;  // the 3-D look, drawn thick
  bool outline = false;  // the outline alone; wins over `shaded`
  bool showJumps = false;
  bool flipY = false;  // true for pictures stored from the top row down
  uint32_t background = 0xFFFFFF;  // 0x00RRGGBB
};

// "BMP Size", "Make 3D" and "Outline" of the "Settings" preferences.
BitmapOptions BitmapOptionsFromPreferences();
// Draws the design into `renderer.bitmap`; false when no bitmap of that size
// can be had.
bool RenderBitmap(Design& design, const BitmapOptions& options, DesignRenderer& renderer);

// The file's bytes: a 14-byte file header, a 40-byte info header, a spare
// zero word, then the pixels as they lie in memory, first row first.
std::vector<uint8_t> BmpFileImage(const StitchBitmap& bitmap);
// Renders `design` with the preference options on white and fills `file`.
// -1 for a null design or a size no bitmap can have; 0 on success.
int MakeBitmap(Design* design, std::vector<uint8_t>& file);

}  // namespace fennick
