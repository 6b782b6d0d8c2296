// Re-stitching a region so that a plain scale afterwards keeps its density.
// The region is rebuilt at the old size with the inverse factors: more
// stitches, closer together, when the design will grow, fewer when it will
// shrink. A walker steps along the region's two rails (the edges of a column
// or fill) and makes an element from each point to the next; the first and
// last runs of the region stay as they were.
#pragma once

#include <vector>

#include "resize/classify.h"

namespace fennick {

// Lengthens the closing legs of a column that is to grow, which would end
// short as the walker's steps shrink. Does nothing when both axes shrink.
void StretchRegionEnd(StitchRegion& region, double inverseX, double inverseY);
// Rebuilds the region's stitches in its stitch list; a region that cannot be
// rebuilt stays as it stood. `inverseX` is |1 / x factor|, `inverseY` likewise.
void RestitchRegion(StitchRegion& region, double inverseX, double inverseY);

// The steps of the rebuild, in the order they run.
void InitRails(StitchRegion& region);
int AdvanceA(StitchRegion& region);
int AdvanceB(StitchRegion& region);
int StepRailA(StitchRegion& region);
int StepRailB(StitchRegion& region);
int GenerateStep(StitchRegion& region);
int GenerateElements(StitchRegion& region);
int FitParity(StitchRegion& region);
void FindFillStitchLength(StitchRegion& region);
void EmitSatin(StitchRegion& region);
void EmitFill(StitchRegion& region);
// A point of a source row, with whether the needle jumps to it.
struct RowPoint {
  int16_t x = 0;
  int16_t y = 0;
  bool jump = false;
};

// Lays a fill row along the source's points: the points themselves, or
// stitches of the fill's length when it has one.
void SplitRow(StitchRegion& region, const StitchRun& element, const std::vector<RowPoint>& points);
void SplitRowFixed(StitchRegion& region, const StitchRun& element, const std::vector<RowPoint>& points);

// The one record every step of the walker writes, shared by all regions for
// the life of the program: an element of a later step carries what an earlier
// step left in it (a rail-B element has the last rail-A leg angle).
StitchRun& ScratchRun();

}  // namespace fennick
