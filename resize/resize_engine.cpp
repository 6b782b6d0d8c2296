#include "resize/resize_engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/embroidery_file.h"
#include "core/preferences.h"
#include "resize/engine_math.h"
#include "resize/restitch.h"

namespace fennick {
namespace {

double MoveLength(const StitchNode& node) {
  return std::sqrt(static_cast<double>(node.dx) * node.dx + static_cast<double>(node.dy) * node.dy);
}

// p takes on n's move and n goes; returns the node after n.
StitchNode* MergeInto(StitchList& stitches, StitchNode& p, StitchNode* n) {
  p.dx = Wrap32(int64_t{p.dx} + n->dx);
  p.dy = Wrap32(int64_t{p.dy} + n->dy);
  return stitches.Remove(n);
}

}  // namespace

ResizeSettings StoredResizeSettings() {
  const PreferenceStore store(PreferenceTree::kResize);
  const ResizeSettings& defaults = kDefaultResizeSettings;
  const auto get = [&store](const char* name, int32_t defaultValue) { return store.GetInt("", name, defaultValue); };
  ResizeSettings settings;
  settings.MinFill = get("MinFill", defaults.MinFill);
  settings.MaxSL = get("MaxSL", defaults.MaxSL);
  settings.MinSatin = get("MinSatin", defaults.MinSatin);
  settings.MaxSatinSL = get("MaxSatinSL", defaults.MaxSatinSL);
  settings.ApplyMinFill = get("ApplyMinFill", defaults.ApplyMinFill);
  settings.ApplyMax = get("ApplyMax", defaults.ApplyMax);
  settings.ApplyMinSatin = get("ApplyMinSatin", defaults.ApplyMinSatin);
  settings.ApplyMaxSL = get("ApplyMaxSL", defaults.ApplyMaxSL);
  // The slider's value less 6, as a host passes it.
  settings.Sensitivity = get("Sensitivity", defaults.Sensitivity + 6) - 6;
  return settings;
}

void ResizeEngine::ApplySettings(const ResizeSettings& settings) {
  MinFill = settings.MinFill;
  MaxSL = settings.MaxSL;
  MinSatin = settings.MinSatin;
  MaxSatinSL = settings.MaxSatinSL;
  ApplyMinFill = settings.ApplyMinFill;
  ApplyMax = settings.ApplyMax;
  ApplyMinSatin = settings.ApplyMinSatin;
  ApplyMaxSL = settings.ApplyMaxSL;
  Sensitivity = settings.Sensitivity + 6;
}

void ResizeEngine::Load(GlobalHandle blob) {
  if (blob == 0) return;
  ParseEmbroideryFile(source, blob);
  GlobalFree(blob);
  working = source;
}

void ResizeEngine::LoadDesign(const Design& design) {
  source = design;
  working = source;
}

void ResizeEngine::LoadDesign(Design&& design) {
  source = std::move(design);
  working = source;
}

GlobalHandle ResizeEngine::Resize(float rotation, float xFactor, float yFactor) {
  ResizeWorking(rotation, xFactor, yFactor);
  return BuildEmbroideryFile(working);
}

void ResizeEngine::ResizeWorking(float rotation, float xFactor, float yFactor) {
  const double fx = xFactor, fy = yFactor;
  if (fx == 0 || fy == 0) return;
  const bool scaled = fx != 1 || fy != 1;
  if (source.stitches.Size() >= 4) {
    working = source;
    MarkTurns(working.stitches);
    BuildRunList(working.stitches, runs);
    BuildRegions(runs, working.stitches, Sensitivity, regions);
    if (runs.size() > 2 && scaled) {
      // Negative factors mirror in the plain scale; the re-stitching is theirs unmirrored.
      const double inverseX = std::fabs(1 / fx), inverseY = std::fabs(1 / fy);
      for (StitchRegion& region : regions) StretchRegionEnd(region, inverseX, inverseY);
      // The stretch moved stitches: classify anew.
      BuildRunList(working.stitches, runs);
      BuildRegions(runs, working.stitches, Sensitivity, regions);
      for (StitchRegion& region : regions) RestitchRegion(region, inverseX, inverseY);
    }
  }
  if (rotation == 0) {
    ScaleStitches(fx, fy);
  } else {
    RotateAndScale(working, rotation, fx, fy);
  }
  if (source.stitches.Size() > 3 && scaled) {
    MergeShortRegionStitches();
    MergeShortPlainStitches();
    SplitLongRegionStitches();
  }
}

void ResizeEngine::ScaleStitches(double xFactor, double yFactor) {
  // This path cuts where the rotating one rounds; each stays as it is.
  double ax = 0, ay = 0;
  for (StitchNode& node : working.stitches) {
    ax += node.dx * xFactor;
    ay += node.dy * yFactor;
    node.dx = Cut16(ax);
    node.dy = Cut16(ay);
    ax -= node.dx;
    ay -= node.dy;
  }
  working.ComputeBounds();
}

void ResizeEngine::MergeShortRegionStitches() {
  // Changes MinFill for the passes that follow.
  if (ApplyMinFill == 0) MinFill = 0;
  const int32_t satinLimit = ApplyMinSatin != 0 ? MinSatin : 0;
  if ((ApplyMinSatin == 0 || MinSatin == 0) && MinFill == 0) return;
  StitchList& stitches = working.stitches;
  StitchNode* p = stitches.Head();
  if (p == nullptr) return;
  for (StitchNode* n = p->Next(); n != nullptr;) {
    if ((n->flags & STITCH_REGION) != 0 && (n->flags & (STITCH_COLORSTOP | STITCH_JUMP)) == 0 &&
        (p->flags & STITCH_REGION) != 0) {
      // The length of n alone decides, not of the merged move.
      const double length = std::sqrt(static_cast<double>(Wrap32(int64_t{n->dx} * n->dx + int64_t{n->dy} * n->dy)));
      const bool satin = (n->flags & STITCH_SATIN) != 0;
      if ((!satin && length < MinFill) || (satin && length < satinLimit)) {
        n = MergeInto(stitches, *p, n);
        continue;
      }
    }
    p = n;
    n = n->Next();
  }
}

void ResizeEngine::MergeShortPlainStitches() {
  if (ApplyMinFill == 0) return;
  StitchList& stitches = working.stitches;
  int shortRun = 0;
  bool afterJump = false;
  StitchNode* p = nullptr;
  for (StitchNode* n = stitches.Head(); n != nullptr;) {
    if (p != nullptr && (n->flags & (STITCH_REGION | STITCH_JUMP | STITCH_COLORSTOP)) == 0 && MoveLength(*n) < MinFill) {
      // Up to three short stitches after a jump stay, as a tie-off.
      ++shortRun;
      if (afterJump && shortRun <= 3) {
        p = n;
        n = n->Next();
      } else {
        n = MergeInto(stitches, *p, n);
      }
      continue;
    }
    shortRun = 0;
    afterJump = n->IsJump();
    p = n;
    n = n->Next();
  }
}

void ResizeEngine::SplitLongRegionStitches() {
  const int32_t fillLimit = ApplyMax != 0 ? MaxSL : 0;
  const int32_t satinLimit = ApplyMaxSL != 0 ? MaxSatinSL : 0;
  if ((fillLimit == 0 && satinLimit == 0) || working.stitches.Empty()) return;
  working.Centre();
  working.ComputeBounds();
  for (StitchNode* node = working.stitches.Head(); node != nullptr; node = node->Next()) {
    int32_t limit = 0;
    if ((node->flags & STITCH_REGION) != 0) limit = fillLimit;
    if ((node->flags & STITCH_SATIN) != 0) limit = satinLimit;
    // A limit below 0 comes only from a broken setting; it counts as none.
    if (limit <= 0) continue;
    const double length = MoveLength(*node);
    if (!(length > limit) || (node->flags & (STITCH_COLORSTOP | STITCH_JUMP)) != 0) continue;
    int32_t pieces = CutToInt(length / limit);
    if (pieces * static_cast<double>(limit) < length) ++pieces;
    const double angle = std::atan2(static_cast<double>(node->dy), static_cast<double>(node->dx));
    const int16_t pieceX = Cut16(std::cos(angle) * length / pieces);
    const int16_t pieceY = Cut16(std::sin(angle) * length / pieces);
    for (int32_t i = 1; i < pieces; ++i) working.stitches.InsertBefore(node, pieceX, pieceY, node->flags);
    node->dx = Wrap32(node->dx - int64_t{pieceX} * (pieces - 1));
    node->dy = Wrap32(node->dy - int64_t{pieceY} * (pieces - 1));
  }
}

void ResizeEngine::FitToHoop(int32_t width, int32_t height, int32_t keep, Design& design) {
  LoadDesign(design);
  source.Centre();
  // Each limit less 1 mm, in stitch units, in single precision.
  float a = static_cast<float>((height - 1) * 10) / static_cast<float>(source.maxY - source.minY);
  float b = static_cast<float>((width - 1) * 10) / static_cast<float>(source.maxX - source.minX);
  if (keep != 0) a = b = std::min(a, b);
  // a goes to x: with keep 0 the axes cross, deliberately.
  ResizeWorking(0, a, b);
  design = working;
}

void RotateAndScale(Design& design, double degrees, double xFactor, double yFactor) {
  const double turn = degrees * kRadiansPerDegree;
  const double c = std::cos(turn), s = std::sin(turn);
  // Absolute positions, so that rounding never drifts along the design.
  int64_t x = 0, y = 0;
  int32_t placedX = 0, placedY = 0;
  for (StitchNode& node : design.stitches) {
    x += node.dx;
    y += node.dy;
    const double sx = static_cast<double>(x) * xFactor, sy = static_cast<double>(y) * yFactor;
    const int32_t toX = RoundAway(sx * c - sy * s), toY = RoundAway(sx * s + sy * c);
    // Moves are 16-bit, as on the unrotated path.
    node.dx = static_cast<int16_t>(Wrap32(int64_t{toX} - placedX));
    node.dy = static_cast<int16_t>(Wrap32(int64_t{toY} - placedY));
    placedX = Wrap32(int64_t{placedX} + node.dx);
    placedY = Wrap32(int64_t{placedY} + node.dy);
  }
  design.ComputeBounds();
}

}  // namespace fennick
