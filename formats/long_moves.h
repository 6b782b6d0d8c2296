// How writers keep every move within what their records hold: one byte an
// axis for EXP, JEF, SEW, HUS and VIP, 500 units for PES.
#pragma once

#include <cstdint>

#include "core/design.h"

namespace fennick {

// The longest move a signed byte holds on both sides.
inline constexpr int32_t kByteMoveLimit = 127;

// Cuts the node's move to `limit` units an axis: the node becomes a jump and a
// node with the rest and `restFlags` follows it. Returns that node, or nullptr
// when the move was within reach.
StitchNode* CutLongMove(StitchList& stitches, StitchNode* node, int32_t limit, uint32_t restFlags = 0);

// A stop that moves gets a pure stop of its own before it (and, with
// `anchorStop`, a zero stitch after that) and keeps its move as a plain node
// or a jump; every move is cut to `limit`, its rest in turn; the last jump of
// a run, when it needs no cut, is anchored by a zero stitch after it.
void ChainLongMoves(Design& design, int32_t limit, bool anchorStop);

}  // namespace fennick
