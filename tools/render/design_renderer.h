// Walks a design's stitch list through a StitchBitmap: the one way every
// preview, thumbnail and exported picture of a design is drawn.
#pragma once

#include <cstdint>
#include <span>

#include "core/design.h"
#include "tools/render/stitch_bitmap.h"

namespace fennick {

// Set in a node's flags while the node was drawn by the last render, cleared
// when it was skipped as off the bitmap or as an undrawn jump.
inline constexpr uint32_t STITCH_DRAWN = 64;

struct DesignRenderer {
  StitchBitmap bitmap;       // Create it at the wanted size before rendering
  Design* design = nullptr;  // not owned; rendering sets STITCH_DRAWN in its nodes
  bool showJumps = false;
  bool shaded = false;  // the 3-D thread look
  bool showMarkers = false;
  bool thick = true;  // copied to the bitmap
  bool flipY = false;

  // Draws colour block `color` alone, or every block for -1, fitted to the
  // design's bounds. A block beyond the colour stops draws nothing.
  void Render(int color);
  // Black edges of the flat drawing on white; turns jumps, shading and markers
  // off for good, and draws thick only on bitmaps 250 pixels wide or more.
  void RenderOutline();
};

// Draws colour blocks firstColor to firstColor + colors - 1 of the design into
// a canvas each, all in one walk: `canvases` holds sets of `colors` canvases,
// one set per picture size, and canvas i of a set ends up as
// `Render(firstColor + i)` with thin flat lines, no jumps and no markers would
// leave it, each keeping its own pen. The canvases must be created, those of a
// set at one size and margin; they are cleared to their backgrounds and fitted
// here. Every node loses STITCH_DRAWN and takes
// `drawnMark` (STITCH_DRAWN, or 0 for no marks) when its own colour's canvas
// of the last set drew it.
void RenderBlocksApart(Design& design, std::span<StitchBitmap> canvases, size_t colors, bool flipY,
                       uint32_t drawnMark, size_t firstColor = 0);

}  // namespace fennick
