// Color Sort: fewer colour stops by moving a later block of a colour up behind
// an earlier block of the same colour, where the blocks it jumps over cover
// little enough of it that what lies on top stays on top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/design.h"

namespace fennick {

// The side of a layer in pixels, and its bytes: one bit a pixel, the lowest
// bit of a byte being the leftmost of its eight pixels, rows from the top.
inline constexpr int32_t kLayerSide = 400;
inline constexpr size_t kLayerBytes = kLayerSide * kLayerSide / 8;

// The most blocks a design is split into; what lies beyond is lost.
inline constexpr size_t kMaxColorBlocks = 250;

// One move of a block, as the stitch list holds it.
struct BlockNode {
  int32_t dx = 0;
  int32_t dy = 0;
  uint32_t flags = 0;
};

// The nodes of a design between two colour stops, with where they start.
struct ColorBlock {
  int32_t startX = 0;  // absolute, stitch units
  int32_t startY = 0;
  ThreadColor thread;
  std::vector<BlockNode> nodes;
};

// The share of layer j's pixels that layer k covers too, in whole percent (0
// when j is empty). `layers` holds the layers of side `side` back to back.
int BlockOverlap(std::span<const uint8_t> layers, int32_t side, size_t j, size_t k);

// The layers of colour blocks 0 to count - 1 as the colour-block render draws
// them: 400 by 400, white background, thick flat lines, no jumps, fitted to the
// design's current bounds. A bit is set where the block's pixel is not white.
// The design comes back as it was but for STITCH_DRAWN, which is cleared.
std::vector<uint8_t> DrawColorLayers(Design& design, size_t count);

// Centres the design and fuses what colour blocks it can within `threshold`
// percent of overlap. Returns the number of colours saved; with none saved the
// design is left as it was. Tells the user how many were saved.
int ColorSort(Design& design, int threshold);
// The same with the threshold of the preferences ("Color Sort Threshold").
int ColorSort(Design& design);

}  // namespace fennick
