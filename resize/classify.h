// Reading structure out of a bare stitch list: turns, runs (satin legs and fill
// rows) and regions of neighbouring runs, the satin columns and fills that the
// resize engine re-stitches. Positions are absolute, in stitch units of 0.1 mm
// from the design's start; angles are degrees from 0 to below 360.
#pragma once

#include <cstdint>
#include <vector>

#include "core/design.h"

namespace fennick {

// Flags of the engine's own, above the four of the design model.
inline constexpr uint32_t STITCH_TURN = 256;     // turns by more than 90 degrees from the last move
inline constexpr uint32_t STITCH_REGION = 512;   // lies in a region, marked or rebuilt
inline constexpr uint32_t STITCH_SATIN = 1024;   // rebuilt as a satin stitch

enum RunKind : int32_t { RUN_SINGLE = 0, RUN_STRAIGHT = 1, RUN_RETRACE = 2 };
enum RegionKind : int32_t { REGION_SATIN = 0, REGION_FILL = 1 };

// A run of stitches that keeps its direction, or an element rebuilt from runs,
// where `spacing`, `sourcePick`, `sourceRun` and `legAngle` take the senses
// noted (an element's `angle` is left unset: nothing reads it). A fresh
// record is all zero.
struct StitchRun {
  int32_t stitchCount = 0;  // zero-length stitches included
  int32_t endX = 0;
  int32_t endY = 0;
  int32_t hasJump = 0;
  int32_t bent = 0;  // a point lies more than 5 units off the chord
  int32_t side = 0;  // alternates along a region from 0
  int32_t sourcePick = 0;
  int32_t startX = 0;
  int32_t startY = 0;
  int32_t kind = RUN_SINGLE;
  double angle = 0;    // of the chord
  double length = 0;   // of the chord
  double spacing = 0;  // from the region's previous run; an element's walk along its rail
  double legAngle = 0;  // an element's rail direction, radians
  StitchNode* lastNode = nullptr;
  StitchRun* sourceRun = nullptr;  // the run itself once in a region; an element's run to copy
  StitchNode* firstNode = nullptr;
  StitchList* stitchList = nullptr;
};

struct RailPoint {
  double x = 0;
  double y = 0;
};

// A leg of a rail, from one run's end (or the first run's start) to a later
// run's end.
struct RailLeg {
  double length = 0;
  double angle = 0;  // radians
  RailPoint direction;  // cos and sin of the angle
  bool known = false;
};

// A rebuilt stitch: moves are 16-bit, as every rebuilt vector is cut to 16 bits.
struct RegionStitch {
  int16_t dx = 0;
  int16_t dy = 0;
  uint32_t flags = 0;
};

// Three or more neighbouring runs: a satin column (legs) or a fill (rows), and
// the walker's state while it is rebuilt along its two rails.
struct StitchRegion {
  double fillStitchLength = 0;  // a fill's dominant stitch length, 0 for none
  int32_t runCount = 0;
  std::vector<StitchRun>* runList = nullptr;
  std::vector<StitchRun> elements;
  StitchList* stitchList = nullptr;
  std::vector<RegionStitch> newStitches;
  StitchRun* cursorB = nullptr;
  StitchRun* cursorA = nullptr;
  StitchRun* pickEven = nullptr;  // the two runs last passed on the first rail
  StitchRun* pickOdd = nullptr;
  StitchRun* firstRun = nullptr;
  StitchRun* lastRun = nullptr;
  double legLengthB = 0;
  double legLengthA = 0;
  double legAngleB = 0;  // radians
  double legAngleA = 0;
  RailPoint legDirectionB, legDirectionA;  // cos and sin of the leg angles
  // The leg that ends at each run's end, by the run's place in the region,
  // kept while the region is rebuilt: every walk of the rails passes the same legs.
  std::vector<RailLeg> legs;
  double scaleX = 0;  // inverse factors of the resize
  double scaleY = 0;
  int32_t nextOnA = 0;
  StitchPoint prevA, prevB, nextA, nextB;  // the ends of each rail's current leg
  RailPoint pointA, pointB;                // the walker on each rail
  int32_t stepsA = 0;
  int32_t stepsB = 0;
  int32_t elementCount = 0;
  int32_t stitchTotal = 0;
  double legFraction = 0;  // how far along the first rail's leg the walker stands, 0 to 1
  int32_t kind = REGION_SATIN;
};

// The largest spacing of neighbouring runs in one region, 6 to 16 stitch
// units, fixed by each BuildRegions. Shared by the whole program: the engine
// is neither re-entrant nor run on two threads at once.
extern int32_t Sensitivity;

// Marks every stitch that turns by more than 90 degrees from the last move,
// clearing the engine's flags of all but the first node. Lists of fewer than 4
// nodes are left alone.
void MarkTurns(StitchList& stitches);
// Refills `runs` with the runs of `stitches` from the design's start.
void BuildRunList(StitchList& stitches, std::vector<StitchRun>& runs);
// Fills `run` from `start`, which stands at (`x`, `y`), and moves (`x`, `y`)
// to the run's end. Returns the node the next run starts at, or none.
StitchNode* BuildRun(StitchNode* start, StitchRun& run, int32_t& x, int32_t& y);
// The perpendicular distance between two runs, in whole units.
int32_t RunSpacing(const StitchRun& a, const StitchRun& b);
// p - q in degrees, folded the engine's way; neither is reduced to a circle first.
double AngleDifferenceSigned(double p, double q);
// Whether `b` runs back over `a`; marks both as retraces when it does.
bool RunsRetrace(StitchRun& a, StitchRun& b);
// Grows `region` from `start` and marks its stitches when it holds 3 runs or
// more. Returns the run that starts the next region, or none.
StitchRun* GrowRegion(StitchRun* start, StitchRegion& region);
// Refills `regions` from `runs` with the regions of 3 runs or more, with
// `sensitivity` fixed to 6..16 (11 otherwise) as the program-wide Sensitivity.
void BuildRegions(std::vector<StitchRun>& runs, StitchList& stitches, int32_t sensitivity,
                  std::vector<StitchRegion>& regions);

}  // namespace fennick
