#include "resize/classify.h"

#include <algorithm>
#include <cmath>

#include "resize/engine_math.h"

namespace fennick {

// Overwritten by every BuildRegions before GrowRegion reads it.
int32_t Sensitivity = 16;

namespace {

constexpr uint32_t kModelFlags = 15;

double Degrees(int32_t dy, int32_t dx, double factor) {
  return FullCircleDegrees(static_cast<double>(dy), static_cast<double>(dx), factor);
}

// The shorter arc between two directions, 0 to 180.
double Arc(double a, double b) {
  const double d = std::fabs(a - b);
  return d > 180 ? 360 - d : d;
}

// Whether some point of the run lies more than 5 units off its chord. A
// point behind the chord's start is folded onto it, not clipped.
bool IsBent(const StitchRun& run) {
  double x = 0, y = 0;
  for (const StitchNode* node = run.firstNode; node != nullptr && node != run.lastNode; node = node->Next()) {
    x += node->dx;
    y += node->dy;
    double t = FullCircleDegrees(y, x, kRunDegrees) - run.angle;
    if (t < 0) t += 360;
    if (t > 90 && t < 270) t -= 180;
    if (t > 270) t = 360 - t;
    if (std::fabs(std::cos((90 - t) * kRadiansPerDegree) * std::sqrt(x * x + y * y)) > 5) return true;
  }
  return false;
}

}  // namespace

void MarkTurns(StitchList& stitches) {
  if (stitches.Size() < 4) return;
  StitchNode* node = stitches.Head();
  double previous = Degrees(node->dy, node->dx, kTurnDegrees);
  for (node = node->Next(); node != nullptr; node = node->Next()) {
    node->flags &= kModelFlags;
    // A zero stitch gets its mark from atan2(0, 0) = 0 but sets no direction.
    const double direction = Degrees(node->dy, node->dx, kTurnDegrees);
    if (Arc(direction, previous) > 90) node->flags |= STITCH_TURN;
    if (node->HasMove()) previous = direction;
  }
}

StitchNode* BuildRun(StitchNode* start, StitchRun& run, int32_t& x, int32_t& y) {
  if (run.stitchList == nullptr || start == nullptr) return nullptr;
  run.startX = x;
  run.startY = y;
  run.firstNode = run.lastNode = start;
  run.stitchCount = 1;
  run.hasJump = start->IsJump() ? 1 : 0;
  int32_t ax = start->dx, ay = start->dy;
  int32_t kind = (start->flags & STITCH_TURN) != 0 ? -1 : RUN_STRAIGHT;
  // A run that begins at a colour stop is that node alone; the next run
  // begins after it.
  StitchNode* read = start;
  StitchNode* next = nullptr;
  uint32_t flagsInHand = start->flags;
  while (read->Next() != nullptr && (flagsInHand & STITCH_COLORSTOP) == 0) {
    StitchNode* test = read->Next();
    flagsInHand = test->flags;
    while (!test->HasMove() && !test->IsColorStop() && test->Next() != nullptr) {
      StitchNode* further = test->Next();
      if (further->IsColorStop()) {
        // Taken back: the run ends and the next begins at the zero stitch.
        flagsInHand = further->flags;
        break;
      }
      ++run.stitchCount;
      test = further;
      flagsInHand = test->flags;
    }
    if ((flagsInHand & (STITCH_TURN | STITCH_COLORSTOP)) != 0 ||
        Arc(Degrees(test->dy, test->dx, kRunDegrees), Degrees(ay, ax, kRunDegrees)) > 90) {
      next = test;
      break;
    }
    ax = Wrap32(int64_t{ax} + test->dx);
    ay = Wrap32(int64_t{ay} + test->dy);
    ++run.stitchCount;
    kind = RUN_STRAIGHT;
    run.lastNode = test;
    if (test->IsJump()) run.hasJump = 1;
    read = test;
  }
  if (next == nullptr) next = read->Next();
  // A lone stitch that begins at a turn: a satin leg.
  run.kind = kind == -1 ? RUN_SINGLE : kind;
  run.endX = Wrap32(int64_t{x} + ax);
  run.endY = Wrap32(int64_t{y} + ay);
  x = run.endX;
  y = run.endY;
  run.length = std::sqrt(static_cast<double>(ax) * ax + static_cast<double>(ay) * ay);
  run.angle = Degrees(ay, ax, kRunDegrees);
  run.bent = run.stitchCount >= 3 && IsBent(run) ? 1 : 0;
  return next;
}

void BuildRunList(StitchList& stitches, std::vector<StitchRun>& runs) {
  runs.clear();
  StitchRun run;
  run.stitchList = &stitches;
  int32_t x = 0, y = 0;
  for (StitchNode* node = stitches.Head(); node != nullptr;) {
    node = BuildRun(node, run, x, y);
    runs.push_back(run);
  }
}

double AngleDifferenceSigned(double p, double q) {
  if (p > q) {
    const double r = p - q;
    return r > 180 ? r - 360 : r;
  }
  const double r = (q - p) * -1;
  return r <= -180 ? (r + 360) * -1 : r;
}

int32_t RunSpacing(const StitchRun& a, const StitchRun& b) {
  const double difference = AngleDifferenceSigned(a.angle, b.angle + 180) * kRadiansPerDegree;
  return CutToInt(std::fabs(std::sin(difference)) * std::min(a.length, b.length) + 0.5);
}

bool RunsRetrace(StitchRun& a, StitchRun& b) {
  if (a.kind > RUN_STRAIGHT || b.kind > RUN_STRAIGHT) return true;
  if (a.kind == RUN_SINGLE || b.kind == RUN_SINGLE) return false;
  if (b.endX == a.startX && b.endY == a.startY && b.startX == a.endX && b.startY == a.endY) {
    a.kind = b.kind = RUN_RETRACE;  // sticky: nothing joins a retrace again
    return true;
  }
  return false;
}

StitchRun* GrowRegion(StitchRun* start, StitchRegion& region) {
  StitchRun* const end = region.runList->data() + region.runList->size();
  region.elementCount = 1;
  region.firstRun = region.lastRun = start;
  start->sourceRun = start;
  start->side = 0;
  region.kind = start->kind;
  region.stitchTotal = start->stitchCount;
  const int32_t bent = start->bent, hasJump = start->hasJump;
  StitchRun* next = nullptr;
  for (StitchRun *p = start, *c = start + 1; c != end; p = c++) {
    c->sourceRun = c;
    const int32_t spacing = RunSpacing(*p, *c);
    if (c->bent != bent || c->hasJump != hasJump || c->firstNode->IsColorStop() || spacing >= Sensitivity ||
        RunsRetrace(*p, *c)) {
      next = c;
      break;
    }
    StitchRun* const after = c + 1 != end ? c + 1 : nullptr;
    if (after != nullptr && c->kind != region.kind) {
      // An odd one out stays when the run after it fits the region again.
      // A zero-length p gives no ratio below 0.1, which ends the region.
      const int32_t spacingAfter = RunSpacing(*c, *after);
      const double lengthChange = std::fabs(p->length - c->length) / p->length;
      if (!(after->bent == bent && after->hasJump == hasJump && lengthChange < 0.1 && spacingAfter <= Sensitivity &&
            after->kind == region.kind)) {
        next = c;
        break;
      }
      c->kind = region.kind;
    }
    c->spacing = spacing;
    c->side = region.elementCount & 1;
    ++region.elementCount;
    region.lastRun = c;
    region.stitchTotal += c->stitchCount;
  }
  region.runCount = region.elementCount;
  if (region.runCount < 3) return next;
  for (StitchNode* node = region.firstRun->firstNode; node != nullptr && node != region.lastRun->lastNode;
       node = node->Next()) {
    node->flags |= STITCH_REGION;
  }
  return next;
}

void BuildRegions(std::vector<StitchRun>& runs, StitchList& stitches, int32_t sensitivity,
                  std::vector<StitchRegion>& regions) {
  regions.clear();
  Sensitivity = sensitivity >= 6 && sensitivity <= 16 ? sensitivity : 11;
  StitchRegion region;
  region.runList = &runs;
  region.stitchList = &stitches;
  for (StitchRun* start = runs.empty() ? nullptr : runs.data(); start != nullptr;) {
    start = GrowRegion(start, region);
    if (region.runCount > 2) regions.push_back(region);
  }
}

}  // namespace fennick
