// Designs made in code: the demo's sample and the benchmarks' large design.
// Both are sewn the way digitizers sew: satin columns, fill rows, a running
// outline, colour stops, and jumps anchored by a stitch on the spot.
#pragma once

#include <cstddef>

#include "core/design.h"

namespace fennick {

// Four colours: a satin column, a fill, a running outline and a satin arc,
// with jumps between the objects. About 1,000 stitches.
Design SampleDesign();
// Tiles of satin columns and fill rows until the design holds at least
// `stitchCount` nodes.
Design LargeSampleDesign(size_t stitchCount);

}  // namespace fennick
