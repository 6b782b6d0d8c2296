#include "resize/restitch.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <unordered_map>
#include <utility>

#include "resize/engine_math.h"

namespace fennick {
namespace {

double Distance(double x0, double y0, double x1, double y1) {
  const double x = x1 - x0, y = y1 - y0;
  return std::sqrt(x * x + y * y);
}

// Sets a rail's current leg, from `from` to the end of `to`. A leg ending at a
// given run always starts at the same point, so it is worked out once a region.
void SetLeg(StitchRegion& region, StitchPoint from, const StitchRun& to, double& length, double& angle,
            RailPoint& direction) {
  const auto place = static_cast<size_t>(&to - region.firstRun);
  if (place < region.legs.size() && region.legs[place].known) {
    const RailLeg& leg = region.legs[place];
    length = leg.length;
    angle = leg.angle;
    direction = leg.direction;
    return;
  }
  length = Distance(from.x, from.y, to.endX, to.endY);
  angle = std::atan2(static_cast<double>(to.endY) - from.y, static_cast<double>(to.endX) - from.x);
  direction = {std::cos(angle), std::sin(angle)};
  if (place < region.legs.size()) region.legs[place] = {length, angle, direction, true};
}

// Length and direction of a run's chord, as a moved run gets them.
void MeasureChord(StitchRun& run) {
  run.length = Distance(run.startX, run.startY, run.endX, run.endY);
  run.angle = FullCircleDegrees(static_cast<double>(run.endY) - run.startY, static_cast<double>(run.endX) - run.startX,
                                kRebuiltDegrees);
}

// The scratch's chord from (start) to (end). An element's angle is never
// read, so the walker, which runs up to some twenty times a region, leaves it.
void SetScratchChord(StitchRun& scratch, RailPoint start, RailPoint end) {
  scratch.startX = Cut16(start.x);
  scratch.startY = Cut16(start.y);
  scratch.endX = Cut16(end.x);
  scratch.endY = Cut16(end.y);
  scratch.length = Distance(scratch.startX, scratch.startY, scratch.endX, scratch.endY);
}

void ClearLists(StitchRegion& region) {
  region.elements.clear();
  region.newStitches.clear();
}

StitchRun* RunListEnd(const StitchRegion& region) { return region.runList->data() + region.runList->size(); }

StitchPoint RunStart(const StitchRun& run) { return {run.startX, run.startY}; }
StitchPoint RunEnd(const StitchRun& run) { return {run.endX, run.endY}; }

// Moves a rail's cursor two runs on to the rail's next leg; what it did
// before meeting the region's end stays done, the leg's start included.
int AdvanceRail(StitchRegion& region, StitchRun*& cursor, StitchPoint& previous, StitchPoint& next, int32_t& steps,
                double& length, double& angle, RailPoint& direction, bool picks, int failure) {
  previous = next;
  StitchRun* const end = RunListEnd(region);
  if (cursor == region.lastRun) return failure;
  StitchRun* const n = cursor + 1;
  if (n == end || n == region.lastRun) return failure;
  cursor = n;
  if (picks) region.pickEven = n;
  StitchRun* const m = n + 1;
  if (m == end || m == region.lastRun) return failure;
  cursor = m;
  if (picks) region.pickOdd = m;
  next = RunEnd(*m);
  ++steps;
  SetLeg(region, previous, *m, length, angle, direction);
  return 0;
}

// One walk of the rails at the current scale, from fresh rails.
void Regenerate(StitchRegion& region) {
  ClearLists(region);
  InitRails(region);
  GenerateElements(region);
}

int32_t LastSide(const StitchRegion& region) { return region.elements.back().side; }

}  // namespace

StitchRun& ScratchRun() {
  static StitchRun scratch;
  return scratch;
}

void StretchRegionEnd(StitchRegion& region, double inverseX, double inverseY) {
  if (region.runCount < 4) return;
  const auto fromEnd = [&region](int k) -> StitchRun& { return *(region.lastRun - k); };
  const double average = (Distance(fromEnd(1).endX, fromEnd(1).endY, fromEnd(3).endX, fromEnd(3).endY) +
                          Distance(fromEnd(1).startX, fromEnd(1).startY, fromEnd(3).startX, fromEnd(3).startY)) *
                         0.5;
  const int32_t wholeAverage = RoundAway(average);
  // A shrinking axis has no budget.
  const double growX = std::max(1 / inverseX - 1, 0.0);
  const double growY = std::max(1 / inverseY - 1, 0.0);
  int16_t budgetX = static_cast<int16_t>(std::llabs(RoundAway(growX * wholeAverage)));
  int16_t budgetY = static_cast<int16_t>(std::llabs(RoundAway(growY * wholeAverage)));
  if (budgetX == 0 && budgetY == 0) return;
  int32_t movedX = 0, movedY = 0;
  // Each stretch lengthens one run by a unit in the direction from an earlier
  // run's start to a later one's, and moves the runs from `to` to the
  // region's end along; R4 is left out of every move on purpose.
  struct Stretch {
    int moreRunsThan, moved, from, to;
  };
  static constexpr Stretch kStretches[] = {{6, 5, 6, 3}, {5, 3, 5, 2}, {4, 2, 3, 1},
                                           {7, 6, 7, 5}, {8, 7, 8, 6}, {9, 8, 9, 7}};
  for (const Stretch& stretch : kStretches) {
    if (region.runCount <= stretch.moreRunsThan || (budgetX == 0 && budgetY == 0)) continue;
    StitchRun& moved = fromEnd(stretch.moved);
    if (moved.bent != 0) continue;
    const StitchRun& from = fromEnd(stretch.from);
    const StitchRun& to = fromEnd(stretch.to);
    const double u = std::atan2(static_cast<double>(to.startY) - from.startY, static_cast<double>(to.startX) - from.startX);
    const int32_t mx = RoundAway(std::cos(u)), my = RoundAway(std::sin(u));
    moved.lastNode->dx = Wrap32(int64_t{moved.lastNode->dx} + mx);
    moved.lastNode->dy = Wrap32(int64_t{moved.lastNode->dy} + my);
    movedX += mx;
    movedY += my;
    budgetX = static_cast<int16_t>(budgetX - std::abs(mx));
    budgetY = static_cast<int16_t>(budgetY - std::abs(my));
    moved.endX = Wrap32(int64_t{moved.endX} + mx);
    moved.endY = Wrap32(int64_t{moved.endY} + my);
    MeasureChord(moved);
    for (int k = stretch.to; k >= 0; --k) {
      if (k == 4) continue;
      StitchRun& run = fromEnd(k);
      run.startX = Cut16(run.startX) + mx;
      run.startY = Cut16(run.startY) + my;
      run.endX = Cut16(run.endX) + mx;
      run.endY = Cut16(run.endY) + my;
      MeasureChord(run);
    }
  }
  // What follows the region stays in place.
  if (StitchNode* after = fromEnd(0).lastNode->Next()) {
    after->dx = Wrap32(int64_t{after->dx} - movedX);
    after->dy = Wrap32(int64_t{after->dy} - movedY);
  }
}

void InitRails(StitchRegion& region) {
  region.cursorA = region.cursorB = nullptr;
  if (region.runList == nullptr || region.elementCount < 3) return;
  if (region.kind == REGION_FILL && region.elementCount < 5) return;
  StitchRun* const r0 = region.firstRun;
  region.pickEven = r0;
  region.pickOdd = r0 + 1;
  region.cursorA = r0 + 1;
  region.cursorB = r0 + 2;
  region.prevA = RunStart(*r0);
  region.prevB = RunEnd(*r0);
  region.nextA = RunEnd(*(r0 + 1));
  region.nextB = RunEnd(*(r0 + 2));
  region.pointA = {static_cast<double>(region.prevA.x), static_cast<double>(region.prevA.y)};
  region.pointB = {static_cast<double>(region.prevB.x), static_cast<double>(region.prevB.y)};
  SetLeg(region, region.prevB, *region.cursorB, region.legLengthB, region.legAngleB, region.legDirectionB);
  SetLeg(region, region.prevA, *region.cursorA, region.legLengthA, region.legAngleA, region.legDirectionA);
  region.stepsA = region.stepsB = 0;
  region.nextOnA = 1;
}

int AdvanceA(StitchRegion& region) {
  return AdvanceRail(region, region.cursorA, region.prevA, region.nextA, region.stepsA, region.legLengthA,
                     region.legAngleA, region.legDirectionA, true, 1);
}

int AdvanceB(StitchRegion& region) {
  return AdvanceRail(region, region.cursorB, region.prevB, region.nextB, region.stepsB, region.legLengthB,
                     region.legAngleB, region.legDirectionB, false, 2);
}

int StepRailA(StitchRegion& region) {
  const double walked = Distance(region.prevA.x, region.prevA.y, region.pointA.x, region.pointA.y);
  // One old rail step in the inverse scale.
  const double stepX = (static_cast<double>(region.nextA.x) - region.prevA.x) * region.scaleX;
  const double stepY = (static_cast<double>(region.nextA.y) - region.prevA.y) * region.scaleY;
  double step = std::sqrt(stepX * stepX + stepY * stepY);
  if (step < 1) step = RoundAway(step);
  const double target = walked + step;
  const double over = target - region.legLengthA;
  double position = target;
  if (step == 0 || !(over <= 0)) {
    double leg = region.legLengthA;
    if (const int failed = AdvanceA(region); failed != 0) return failed;
    position = leg == 0 ? 0 : over * region.legLengthA / leg;
    // Only a reduction can carry a step over several legs.
    if (region.scaleX > 1 || region.scaleY > 1) {
      position = region.legLengthA / (leg == 0 ? 1 : leg) * over;
      while (!(position < region.legLengthA)) {
        leg = region.legLengthA;
        if (const int failed = AdvanceA(region); failed != 0) return failed;
        position = (position - leg) * region.legLengthA / (leg == 0 ? 1 : leg);
      }
    }
  }
  if (position < 0) position = -position;
  region.pointA = {region.prevA.x + position * region.legDirectionA.x,
                   region.prevA.y + position * region.legDirectionA.y};
  StitchRun& scratch = ScratchRun();
  SetScratchChord(scratch, region.pointB, region.pointA);
  scratch.spacing = position;
  scratch.legAngle = region.legAngleA;
  region.legFraction = region.legLengthA == 0 ? 0
                                                : Distance(region.prevA.x, region.prevA.y, region.pointA.x,
                                                           region.pointA.y) /
                                                      region.legLengthA;
  return 0;
}

int StepRailB(StitchRegion& region) {
  while (region.stepsB < region.stepsA) {
    if (const int failed = AdvanceB(region); failed != 0) return failed;
  }
  const double along = region.legFraction * region.legLengthB;
  // Rail B lands on whole units while rail A stays fractional.
  region.pointB = {static_cast<double>(RoundAway(region.prevB.x + along * region.legDirectionB.x)),
                   static_cast<double>(RoundAway(region.prevB.y + along * region.legDirectionB.y))};
  StitchRun& scratch = ScratchRun();
  SetScratchChord(scratch, region.pointA, region.pointB);
  scratch.spacing = along;
  return 0;
}

int GenerateStep(StitchRegion& region) {
  StitchRun& scratch = ScratchRun();
  scratch.side = region.nextOnA;
  const auto source = [&scratch](int32_t pick, StitchRun* run) {
    scratch.sourcePick = pick;
    scratch.sourceRun = run;
  };
  const bool onA = region.nextOnA == 1;
  int result;
  RailPoint railPoint;
  StitchPoint railEnd;
  if (onA) {
    result = StepRailA(region);
    region.nextOnA = 0;
    if (region.elements.empty()) source(0, region.pickEven);
    railPoint = region.pointB;
    railEnd = region.nextA;
  } else {
    result = StepRailB(region);
    region.nextOnA = 1;
    if (region.elements.empty()) source(1, region.pickOdd);
    railPoint = region.pointA;
    railEnd = region.nextB;
  }
  if (result == 0) {
    // Which of the two runs last passed the element copies, by how far along
    // its leg the walker stands; the other rail picks the other way round.
    const double fraction = region.legFraction;
    const bool odd = !(fraction > 0 && fraction < 0.5);
    if (odd == onA) {
      source(1, region.pickOdd);
    } else {
      source(0, region.pickEven);
    }
    region.elements.push_back(scratch);
    return 0;
  }
  if (!region.elements.empty()) {
    StitchRun& last = region.elements.back();
    const StitchRun& lastRun = *region.lastRun;
    // One sum, not two comparisons: deliberate.
    if (Wrap32(int64_t{lastRun.startX} - last.endY - last.endX + lastRun.startY) == 0) {
      last.endX = lastRun.startX;
      last.endY = lastRun.startY;
      return result;
    }
  }
  scratch.startX = Cut16(railPoint.x);
  scratch.startY = Cut16(railPoint.y);
  scratch.endX = railEnd.x;
  scratch.endY = railEnd.y;
  region.elements.push_back(scratch);
  return result;
}

int GenerateElements(StitchRegion& region) {
  while (GenerateStep(region) == 0) {
  }
  const int64_t count = static_cast<int64_t>(region.elements.size());
  const double scaleSum = region.scaleX + region.scaleY;
  // A shrinking region must come out shorter by more than two runs, a growing
  // one longer; at a sum of exactly 2 nothing passes.
  if ((scaleSum >= 2 && count + 2 >= region.runCount) || (scaleSum <= 2 && region.runCount >= count + 2)) {
    region.elements.clear();
    return 1;
  }
  return 0;
}

int FitParity(StitchRegion& region) {
  const int32_t lastSide = region.lastRun->side;
  const double scaleX0 = region.scaleX, scaleY0 = region.scaleY;
  const auto towards = [](double scale, double sign) { return scale < 1 ? -sign * 0.005 : scale > 1 ? sign * 0.005 : 0; };
  double stepX = towards(scaleX0, 1), stepY = towards(scaleY0, 1);
  GenerateElements(region);
  if (region.elements.empty()) return 1;
  int32_t side = LastSide(region);
  for (int attempt = 0; attempt < 10 && side == lastSide; ++attempt) {
    ClearLists(region);
    InitRails(region);
    region.scaleX += stepX;
    region.scaleY += stepY;
    GenerateElements(region);
    if (region.elements.empty()) break;
    side = LastSide(region);
  }
  // The tuned scale stays in the region.
  if (!region.elements.empty() && side != lastSide) return 0;

  region.scaleX = scaleX0;
  region.scaleY = scaleY0;
  stepX = towards(scaleX0, -1);
  stepY = towards(scaleY0, -1);
  Regenerate(region);
  if (region.elements.empty()) return 1;
  side = LastSide(region);
  for (int attempt = 0; attempt < 10 && side == lastSide; ++attempt) {
    ClearLists(region);
    InitRails(region);
    region.scaleX += stepX;
    region.scaleY += stepY;
    if (region.scaleX == 1) stepX = 0;
    if (region.scaleY == 1) stepY = 0;
    if (region.scaleX == 1) break;  // only this axis, deliberately
    GenerateElements(region);
    if (region.elements.empty()) break;
    side = LastSide(region);
  }
  region.scaleX = scaleX0;
  region.scaleY = scaleY0;
  if (side == lastSide) {
    Regenerate(region);
    if (region.elements.empty()) return 1;
    // A closing element to the right rail.
    StitchRun closing;
    closing.side = lastSide == 0 ? 1 : 0;
    closing.sourcePick = lastSide;
    closing.sourceRun = region.lastRun;
    closing.startX = region.elements.back().endX;
    closing.startY = region.elements.back().endY;
    closing.endX = region.lastRun->startX;
    closing.endY = region.lastRun->startY;
    MeasureChord(closing);
    region.elements.push_back(closing);
  }
  return 0;
}

void FindFillStitchLength(StitchRegion& region) {
  if (region.kind != REGION_FILL) return;
  std::vector<std::pair<int32_t, int64_t>> histogram;  // length, count, in order of first appearance
  std::unordered_map<int32_t, size_t> entryOf;
  int64_t total = 0;
  const auto count = [&](const StitchNode& node) {
    const int32_t length =
        RoundAway(std::sqrt(static_cast<double>(node.dx) * node.dx + static_cast<double>(node.dy) * node.dy));
    const auto [found, added] = entryOf.try_emplace(length, histogram.size());
    if (added) histogram.emplace_back(length, 0);
    ++histogram[found->second].second;
    ++total;
  };
  for (const StitchRun* run = region.firstRun; run != region.lastRun + 1; ++run) {
    if (run->stitchCount != 1 && run->stitchCount < 4) continue;
    const StitchNode* node = run->firstNode->Next();
    if (node == nullptr) continue;
    // A lone stitch counts the first stitch of the next run; so does a run of
    // zero stitches that ends where it began.
    if (run->stitchCount == 1 || run->lastNode == run->firstNode) {
      count(*node);
      continue;
    }
    for (; node != nullptr; node = node->Next()) {
      count(*node);
      if (node == run->lastNode) break;
    }
  }
  // The mode among lengths of 16 and more; of equal counts the later wins.
  size_t mode = histogram.size();
  for (size_t i = 0; i < histogram.size(); ++i) {
    if (histogram[i].first >= 16 && (mode == histogram.size() || histogram[i].second >= histogram[mode].second)) mode = i;
  }
  if (mode == histogram.size()) return;
  const int32_t modeLength = histogram[mode].first;
  int64_t sum = histogram[mode].second * modeLength;
  int64_t n = histogram[mode].second;
  for (size_t i = 0; i < histogram.size(); ++i) {
    if (i != mode && histogram[i].first >= modeLength - 5 && histogram[i].first <= modeLength + 5) {
      sum += histogram[i].second * histogram[i].first;
      n += histogram[i].second;
    }
  }
  if (n > total / 2) region.fillStitchLength = RoundAway(static_cast<double>(sum) / static_cast<double>(n));
}

void EmitSatin(StitchRegion& region) {
  // Never reset: once a jump is added every later stitch of the region bears it.
  uint32_t flags = STITCH_TURN | STITCH_SATIN;
  for (size_t i = 0; i < region.elements.size(); ++i) {
    const StitchRun& element = region.elements[i];
    const int32_t dx = Wrap32(int64_t{element.endX} - element.startX);
    const int32_t dy = Wrap32(int64_t{element.endY} - element.startY);
    const int32_t squares = Wrap32(int64_t{dx} * dx + int64_t{dy} * dy);
    if (i + 1 == region.elements.size() && std::sqrt(static_cast<double>(squares)) > 100) flags |= STITCH_JUMP;
    if (element.sourceRun != nullptr && element.sourceRun->hasJump != 0) flags |= STITCH_JUMP;
    region.newStitches.push_back({static_cast<int16_t>(dx), static_cast<int16_t>(dy), flags});
  }
}

void RestitchRegion(StitchRegion& region, double inverseX, double inverseY) {
  // Factors are cut to hundredths.
  region.scaleX = CutToInt(inverseX * 100) * 0.01;
  region.scaleY = CutToInt(inverseY * 100) * 0.01;
  if (region.runCount < 3) return;
  region.legs.assign(static_cast<size_t>(region.runCount), {});
  InitRails(region);
  if (region.cursorA == nullptr) return;
  region.stepsA = region.stepsB = 0;
  region.nextOnA = 1;
  const int parity = FitParity(region);
  region.legs.clear();
  if (parity != 0) {
    ClearLists(region);
    return;
  }
  FindFillStitchLength(region);
  if (region.kind == REGION_SATIN) {
    EmitSatin(region);
  } else if (region.kind == REGION_FILL) {
    EmitFill(region);
  }
  StitchList& stitches = *region.stitchList;
  StitchNode* const keep = region.firstRun->lastNode;
  for (StitchNode* node = keep->Next(); node != nullptr && node != region.lastRun->firstNode;) {
    node = stitches.Remove(node);
  }
  StitchNode* at = keep;
  for (const RegionStitch& stitch : region.newStitches) {
    at = stitches.InsertAfter(at, stitch.dx, stitch.dy, stitch.flags | STITCH_REGION);
  }
  region.elementCount = static_cast<int32_t>(region.elements.size()) + 2;
  region.stitchTotal = static_cast<int32_t>(region.newStitches.size()) + region.firstRun->stitchCount +
                       region.lastRun->stitchCount;
  ClearLists(region);
}

}  // namespace fennick
