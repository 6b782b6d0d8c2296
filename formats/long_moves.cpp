#include "formats/long_moves.h"

#include <algorithm>

namespace fennick {

StitchNode* CutLongMove(StitchList& stitches, StitchNode* node, int32_t limit, uint32_t restFlags) {
  const int32_t dx = std::clamp(node->dx, -limit, limit);
  const int32_t dy = std::clamp(node->dy, -limit, limit);
  if (dx == node->dx && dy == node->dy) return nullptr;
  StitchNode* rest = stitches.InsertAfter(node, Wrap32(int64_t{node->dx} - dx), Wrap32(int64_t{node->dy} - dy), restFlags);
  node->dx = dx;
  node->dy = dy;
  node->flags |= STITCH_JUMP;
  return rest;
}

void ChainLongMoves(Design& design, int32_t limit, bool anchorStop) {
  StitchList& stitches = design.stitches;
  for (StitchNode* node = stitches.Head(); node != nullptr; node = node->Next()) {
    if (node->IsColorStop()) {
      const uint32_t jump = node->flags & STITCH_JUMP;
      node->flags &= ~STITCH_JUMP;
      if (node->HasMove()) {
        stitches.InsertBefore(node, 0, 0, STITCH_COLORSTOP);
        if (anchorStop) stitches.InsertBefore(node, 0, 0, 0);
        node->flags = (node->flags & ~STITCH_COLORSTOP) | jump;
      }
    }
    // A cut node goes on with its rest, which may need cutting again. Only the
    // last jump of a run is anchored: a stitch between the pieces of one travel
    // would sew it down where a trimmable jump was meant.
    if (CutLongMove(stitches, node, limit) == nullptr && node->IsJump() &&
        (node->Next() == nullptr || !node->Next()->IsJump())) {
      node = stitches.InsertAfter(node, 0, 0, 0);
    }
  }
}

}  // namespace fennick
