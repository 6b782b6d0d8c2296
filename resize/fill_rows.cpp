// Fill rows of a rebuilt region: each element copies the stitches of a source
// row, laid along the element and straightened onto it.
#include <cmath>

#include "resize/engine_math.h"
#include "resize/restitch.h"

namespace fennick {
namespace {

double Distance(double x0, double y0, double x1, double y1) {
  const double x = x1 - x0, y = y1 - y0;
  return std::sqrt(x * x + y * y);
}

double ChordLength(const StitchRun& run) { return Distance(run.startX, run.startY, run.endX, run.endY); }

uint32_t JumpFlag(bool jump) { return jump ? STITCH_JUMP : 0; }

// The source row's points from its start, walked backwards (moves negated,
// from its last stitch to its first) when the element crosses the other way.
void SourcePoints(const StitchRun& source, bool reversed, std::vector<RowPoint>& points) {
  double x = reversed ? source.endX : source.startX;
  double y = reversed ? source.endY : source.startY;
  points.clear();
  const auto add = [&](double dx, double dy, bool jump) {
    x += dx;
    y += dy;
    points.push_back({Cut16(x), Cut16(y), jump});
  };
  if (reversed) {
    for (const StitchNode* node = source.lastNode; node != nullptr; node = node->Prev()) {
      add(-node->dx, -node->dy, node->IsJump());
      if (node == source.firstNode) break;
    }
  } else {
    for (const StitchNode* node = source.firstNode; node != nullptr; node = node->Next()) {
      add(node->dx, node->dy, node->IsJump());
      if (node == source.lastNode) break;
    }
  }
}

// Bends the row laid after `rowBegin` onto the straight line from the
// element's start towards the middle of the previous element, and ends it
// exactly at the element's end.
void Straighten(std::vector<RegionStitch>& stitches, size_t rowBegin, const StitchRun& element,
                const StitchRun& previous) {
  const double targetX = (static_cast<double>(element.endX) - previous.startX) * 0.5 + previous.startX;
  const double targetY = (static_cast<double>(element.endY) - previous.startY) * 0.5 + previous.startY;
  const double angle = std::atan2(targetY - element.startY, targetX - element.startX);
  double x = element.startX, y = element.startY;
  for (size_t i = rowBegin; i < stitches.size(); ++i) {
    RegionStitch& stitch = stitches[i];
    x += stitch.dx;
    y += stitch.dy;
    const double r = Distance(element.startX, element.startY, x, y);
    const int32_t cx = RoundAway(element.startX + r * std::cos(angle) - x);
    const int32_t cy = RoundAway(element.startY + r * std::sin(angle) - y);
    stitch.dx = static_cast<int16_t>(stitch.dx + cx);
    stitch.dy = static_cast<int16_t>(stitch.dy + cy);
    x += cx;
    y += cy;
  }
  if (rowBegin == stitches.size()) return;
  RegionStitch& last = stitches.back();
  x -= last.dx;
  y -= last.dy;
  last.dx = static_cast<int16_t>(static_cast<int16_t>(element.endX) - Cut16(x));
  last.dy = static_cast<int16_t>(static_cast<int16_t>(element.endY) - Cut16(y));
}

// Takes out stitches of the row that reach beyond the element's length, each
// passing its move to the next. The running point is not put back after a
// removal, so the moved vector counts twice on the next round: deliberate.
void TrimRow(std::vector<RegionStitch>& stitches, size_t rowBegin, const StitchRun& element) {
  const double length = ChordLength(element);
  double x = element.startX, y = element.startY;
  size_t kept = rowBegin;
  for (size_t i = rowBegin; i < stitches.size(); ++i) {
    const RegionStitch stitch = stitches[i];
    x += stitch.dx;
    y += stitch.dy;
    if (i + 1 < stitches.size() && Distance(element.startX, element.startY, x, y) > length) {
      stitches[i + 1].dx = static_cast<int16_t>(stitches[i + 1].dx + stitch.dx);
      stitches[i + 1].dy = static_cast<int16_t>(stitches[i + 1].dy + stitch.dy);
      continue;
    }
    stitches[kept++] = stitch;
  }
  stitches.resize(kept);
}

}  // namespace

void EmitFill(StitchRegion& region) {
  std::vector<RowPoint> points;
  std::vector<RegionStitch>& stitches = region.newStitches;
  for (size_t i = 0; i < region.elements.size(); ++i) {
    StitchRun& element = region.elements[i];
    const StitchRun* previous = i == 0 ? nullptr : &region.elements[i - 1];
    element.length = element.endX < element.startX ? -ChordLength(element) : ChordLength(element);
    const StitchRun& source = *element.sourceRun;
    SourcePoints(source, element.side != source.side, points);
    const bool first = stitches.empty();
    const size_t rowBegin = stitches.size();
    SplitRow(region, element, points);
    if (first || previous == nullptr) continue;
    if (source.bent != 0) {
      // A curved row keeps its shape; the joint to the row before moves half way.
      if (previous->sourceRun == element.sourceRun) {
        const int16_t hx = Round16((static_cast<double>(element.endX) - previous->startX) * 0.5);
        const int16_t hy = Round16((static_cast<double>(element.endY) - previous->startY) * 0.5);
        RegionStitch& before = stitches[rowBegin - 1];
        before.dx = static_cast<int16_t>(before.dx + hx);
        before.dy = static_cast<int16_t>(before.dy + hy);
        stitches.back().dx = static_cast<int16_t>(stitches.back().dx - hx);
        stitches.back().dy = static_cast<int16_t>(stitches.back().dy - hy);
      }
    } else {
      Straighten(stitches, rowBegin, element, *previous);
    }
    TrimRow(stitches, rowBegin, element);
  }
}

void SplitRow(StitchRegion& region, const StitchRun& element, const std::vector<RowPoint>& points) {
  if (region.fillStitchLength != 0) {
    SplitRowFixed(region, element, points);
    return;
  }
  uint32_t flags = STITCH_TURN | STITCH_REGION;
  int16_t previousX = Cut16(element.startX), previousY = Cut16(element.startY);
  for (size_t i = 0; i < points.size(); ++i) {
    const RowPoint& point = points[i];
    flags = point.jump ? flags | STITCH_JUMP : flags & ~STITCH_JUMP;
    // The row ends exactly at the element's end.
    const int16_t toX = i + 1 == points.size() ? static_cast<int16_t>(element.endX) : point.x;
    const int16_t toY = i + 1 == points.size() ? static_cast<int16_t>(element.endY) : point.y;
    // A row of one point loses its turn mark.
    if (i + 1 == points.size()) flags &= ~STITCH_TURN;
    region.newStitches.push_back(
        {static_cast<int16_t>(toX - previousX), static_cast<int16_t>(toY - previousY), flags});
    flags &= ~STITCH_TURN;
    previousX = point.x;
    previousY = point.y;
  }
}

void SplitRowFixed(StitchRegion& region, const StitchRun& element, const std::vector<RowPoint>& points) {
  if (points.empty()) return;
  const double length = region.fillStitchLength;
  std::vector<RegionStitch>& stitches = region.newStitches;
  double x = element.startX, y = element.startY;
  size_t current = 0;
  double angle = std::atan2(points[0].y - y, points[0].x - x);
  int16_t stepX = Cut16(std::cos(angle) * region.scaleX * length);
  int16_t stepY = Cut16(std::sin(angle) * length * region.scaleY);
  double stepLength = Distance(0, 0, stepX, stepY);
  uint32_t lastJump = 0;
  const auto lay = [&](int16_t dx, int16_t dy, uint32_t flags) {
    stitches.push_back({dx, dy, flags});
    lastJump = flags & STITCH_JUMP;
    x += dx;
    y += dy;
  };
  const auto newStep = [&] {
    const double across = std::cos(angle) * region.scaleX * length, up = std::sin(angle) * length * region.scaleY;
    const double m = std::sqrt(across * across + up * up);
    stepX = Round16(std::cos(angle) * m);
    stepY = Round16(std::sin(angle) * m);
    stepLength = Distance(0, 0, stepX, stepY);
  };
  // The first stitch keeps the needle pattern in phase from row to row.
  const double scaledX = (points[0].x - x) * region.scaleX, scaledY = (points[0].y - y) * region.scaleY;
  const double toFirst = std::sqrt(scaledX * scaledX + scaledY * scaledY);
  const double steps = toFirst / stepLength;
  int64_t whole = CutToInt(steps);
  if (!(steps * toFirst - stepLength < 0)) --whole;  // q x d, deliberately
  const double rest = toFirst - whole * stepLength;
  const int16_t firstX = Round16(std::cos(angle) * rest), firstY = Round16(std::sin(angle) * rest);
  if (firstX != 0 || firstY != 0) lay(firstX, firstY, STITCH_TURN);
  double left = Distance(x, y, points[current].x, points[current].y);
  if (left == 0 && current + 1 < points.size()) {
    const RowPoint& from = points[current++];
    angle = std::atan2(points[current].y - from.y, points[current].x - from.x);
    left = Distance(x, y, points[current].x, points[current].y);
    newStep();
  }
  while (left != 0) {
    if (stepLength != 0 && left > stepLength) {
      lay(stepX, stepY, JumpFlag(points[current].jump));
      left -= stepLength;
      continue;
    }
    if (current + 1 == points.size()) break;
    const RowPoint& corner = points[current];
    const RowPoint& next = points[current + 1];
    const int16_t toCornerX = static_cast<int16_t>(corner.x - Cut16(x));
    const int16_t toCornerY = static_cast<int16_t>(corner.y - Cut16(y));
    angle = std::atan2(next.y - corner.y, next.x - corner.x);
    const double over = stepLength - left;
    ++current;
    // The stitch rounds the corner when it lands on the next segment.
    if (!(over > Distance(corner.x, corner.y, next.x, next.y))) {
      lay(static_cast<int16_t>(toCornerX + Cut16(std::cos(angle) * over)),
          static_cast<int16_t>(toCornerY + Cut16(std::sin(angle) * over)), JumpFlag(next.jump));
    }
    left = Distance(x, y, next.x, next.y);
    newStep();
  }
  const int16_t endX = static_cast<int16_t>(static_cast<int16_t>(element.endX) - Cut16(x));
  const int16_t endY = static_cast<int16_t>(static_cast<int16_t>(element.endY) - Cut16(y));
  if (endX != 0 || endY != 0) stitches.push_back({endX, endY, lastJump});
}

}  // namespace fennick
