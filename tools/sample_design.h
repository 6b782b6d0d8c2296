// Designs made in code: the demo's sample and the benchmarks' large design.
// Both are sewn the way digitizers sew: satin columns, fill rows, a running
// outline, colour stops, and jumps anchored by a stitch on the spot.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/design.h"

namespace fennick {

// Four colours: a satin column, a fill, a running outline and a satin arc,
// with jumps between the objects. About 1,000 stitches.
Design SampleDesign();
// The resize engine's test pieces, in one colour each: a straight satin
// column `length` long and `width` wide, passes 0.4 mm apart; and a
// rectangle of fill rows 0.4 mm apart. Sizes in stitch units of 0.1 mm.
Design SatinColumnSample(int32_t length, int32_t width);
Design FillSample(int32_t width, int32_t height);
// Tiles of satin columns and fill rows until the design holds at least
// `stitchCount` nodes, in rows of 40 tiles, so that it grows without bound.
// With a fit of `fitWidth` by `fitHeight` stitch units (both above 0) the tiles
// wrap round and lie over each other within that area: the same stitches, in a
// design that a hoop takes.
Design LargeSampleDesign(size_t stitchCount, int32_t fitWidth = 0, int32_t fitHeight = 0);

}  // namespace fennick
