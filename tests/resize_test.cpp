#include "resize/resize_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "resize/classify.h"
#include "resize/restitch.h"
#include "tests/test_support.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

using test::DesignOf;
using test::Node;
using test::Nodes;
using test::Point;

constexpr uint32_t T = STITCH_TURN, R = STITCH_REGION, S = STITCH_REGION | STITCH_SATIN;
constexpr uint32_t J = STITCH_JUMP, C = STITCH_COLORSTOP;

// The three classification passes over a design of its own. Regions point
// into the runs and the stitches, so it stays where it was made.
struct Classified {
  explicit Classified(Design from, int32_t sensitivity = 11) : design(std::move(from)) {
    MarkTurns(design.stitches);
    BuildRunList(design.stitches, runs);
    BuildRegions(runs, design.stitches, sensitivity, regions);
  }
  Classified(const Classified&) = delete;
  Design design;
  std::vector<StitchRun> runs;
  std::vector<StitchRegion> regions;
};

// A jump in, then satin legs 40 wide, each `rise` higher; leg `at` (from 1)
// may be replaced by other stitches.
std::vector<Node> Legs(int count, int32_t rise = 4, size_t at = 0, const std::vector<Node>& leg = {}) {
  std::vector<Node> nodes{{-20, -30, J}};
  for (int i = 0; i < count; ++i) nodes.emplace_back(i % 2 == 0 ? 40 : -40, rise, 0);
  if (at != 0) nodes.insert(nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(at)), leg.begin(), leg.end());
  return nodes;
}

// Fill rows of two stitches each, from their moves.
std::vector<Node> Rows(const std::vector<std::pair<int32_t, int32_t>>& rows) {
  std::vector<Node> nodes;
  for (const auto& [dx, dy] : rows) nodes.insert(nodes.end(), 2, Node(dx / 2, dy / 2, 0));
  return nodes;
}

Design Resized(const Design& design, float fx, float fy, const ResizeSettings& settings = kDefaultResizeSettings) {
  ResizeEngine engine;
  engine.ApplySettings(settings);
  engine.LoadDesign(design);
  engine.ResizeWorking(0, fx, fy);
  return engine.working;
}

Design PlainScaled(const Design& design, double fx, double fy) {
  ResizeEngine engine;
  engine.working = design;
  engine.ScaleStitches(fx, fy);
  return engine.working;
}

// The nodes with the engine's own marks taken off.
std::vector<Node> Moves(const Design& design) {
  std::vector<Node> nodes = Nodes(design);
  for (Node& node : nodes) std::get<2>(node) &= ~(T | S);
  return nodes;
}

TEST(ResizeClassify, TurnsPastARightAngleAreMarkedOnListsOfFourOrMore) {
  const std::pair<std::vector<Node>, std::vector<uint32_t>> cases[] = {
      {{{10, 0, 0}, {-10, 0, R}, {10, 0, 0}}, {0, R, 0}},  // too short: left alone
      {{{10, 0, S}, {-10, 0, R}, {10, 0, 0}, {10, 0, 0}}, {S, T, T, 0}},
      {{{100, 0, 0}, {100, 0, 0}, {1, 100, 0}, {100, 0, 0}}, {0, 0, 0, 0}},  // 89.4 degrees
      {{{100, 0, 0}, {100, 0, 0}, {-1, 100, 0}, {100, 0, 0}}, {0, 0, T, T}},  // 90.6 degrees
      // A zero stitch is marked by atan2(0, 0) but leaves the direction as it was.
      {{{-10, 0, 0}, {0, 0, 0}, {-10, 0, 0}, {10, 0, 0}}, {0, T, 0, T}},
  };
  for (const auto& [nodes, want] : cases) {
    Design design = DesignOf(nodes);
    MarkTurns(design.stitches);
    std::vector<uint32_t> flags;
    for (const StitchNode& node : design.stitches) flags.push_back(node.flags);
    EXPECT_EQ(flags, want) << ::testing::PrintToString(nodes);
  }
}

TEST(ResizeClassify, RunsFollowTheirChordAndCountZeroStitches) {
  using Run = std::pair<long, int32_t>;  // index of the first node, stitchCount
  struct Case {
    const char* name;
    std::vector<Node> nodes;  // turns marked by hand
    std::vector<Run> runs;
  };
  const Case cases[] = {
      {"exact right angle joins", {{100, 0, 0}, {0, 100, 0}}, {{0, 2}}},
      {"just past it ends", {{100, 0, 0}, {-1, 100, 0}}, {{0, 1}, {1, 1}}},
      {"chord decides, not the last stitch", {{100, 0, 0}, {0, 100, 0}, {-60, 10, 0}}, {{0, 2}, {2, 1}}},
      {"chord decides, not the last stitch, joining", {{100, 0, 0}, {0, 100, 0}, {77, -64, 0}}, {{0, 3}}},
      {"zero stitch counts, never starts", {{-10, 0, 0}, {0, 0, T}, {-10, 0, 0}, {10, 0, T}}, {{0, 3}, {3, 1}}},
      {"stop stands alone", {{10, 0, 0}, {10, 0, 0}, {0, 0, C}, {10, 0, 0}, {10, 0, 0}}, {{0, 2}, {2, 1}, {3, 2}}},
      {"zero stitch before a stop starts a run", {{10, 0, 0}, {0, 0, 0}, {0, 0, C}, {10, 0, 0}},
       {{0, 1}, {1, 1}, {2, 1}, {3, 1}}},
  };
  for (const Case& c : cases) {
    Design design = DesignOf(c.nodes);
    std::vector<const StitchNode*> order;
    for (const StitchNode& node : design.stitches) order.push_back(&node);
    std::vector<StitchRun> runs;
    BuildRunList(design.stitches, runs);
    std::vector<Run> got;
    for (const StitchRun& run : runs) {
      got.emplace_back(std::find(order.begin(), order.end(), run.firstNode) - order.begin(), run.stitchCount);
    }
    EXPECT_EQ(got, c.runs) << c.name;
  }
}

TEST(ResizeClassify, RegionsHoldThreeOrMoreCloseLikeRunsWithNoStopOrRetrace) {
  struct Case {
    const char* name;
    std::vector<Node> nodes;
    std::vector<int32_t> runCounts;  // of each region
    int32_t sensitivity = 11;
  };
  const Case cases[] = {
      {"three legs", Legs(3), {3}},
      {"two legs", Legs(2), {}},
      {"jump on the middle leg", Legs(5, 4, 3, {{40, 4, J}}), {}},
      {"bent middle leg", Legs(5, 4, 3, {{15, 10, 0}, {15, 0, 0}, {10, -6, 0}}), {}},
      {"straight three-stitch leg fits in", Legs(5, 4, 3, {{15, 2, 0}, {15, 1, 0}, {10, 1, 0}}), {5}},
      {"stop on the fourth leg", Legs(6, 4, 4, {{-40, 4, C}}), {3, 3}},
      {"rows", Rows({{40, 0}, {-40, 4}, {40, 4}, {-40, 4}, {40, 4}, {-40, 4}, {40, 4}}), {7}},
      {"a row back over the one before", Rows({{40, 0}, {-40, 4}, {40, 4}, {-40, -4}, {40, 2}, {-40, 4}, {40, 4}}),
       {3, 3}},
      // Legs rising 6 lie 12 apart, rising 5 lie 10 apart.
      {"12 apart at 13", Legs(4, 6), {4}, 13},
      {"12 apart at 12", Legs(4, 6), {}, 12},
      {"12 apart at 17, taken as 11", Legs(4, 6), {}, 17},
      {"10 apart at 5, taken as 11", Legs(4, 5), {4}, 5},
  };
  for (const Case& c : cases) {
    Classified classified(DesignOf(c.nodes), c.sensitivity);
    std::vector<int32_t> runCounts;
    for (const StitchRegion& region : classified.regions) runCounts.push_back(region.runCount);
    EXPECT_EQ(runCounts, c.runCounts) << c.name;
    size_t marked = 0;
    for (const StitchNode& node : classified.design.stitches) marked += (node.flags & R) != 0 ? 1 : 0;
    EXPECT_EQ(marked == 0, runCounts.empty()) << c.name;
  }
}

TEST(ResizeRestitch, RegionsAreRebuiltOnlyWhenTheScaleAsksForIt) {
  enum Change { kKept, kMore, kFewer, kMoved };
  struct Case {
    const char* name;
    Design design;
    double inverseX, inverseY;
    Change change;
    bool stretch = false;  // StretchRegionEnd instead
  };
  const Design satin = SatinColumnSample(200, 40), longSatin = SatinColumnSample(2000, 40);
  const Case cases[] = {
      {"inverse 1.009 is cut to 1.00", longSatin, 1.009, 1.009, kKept},
      {"inverse 1.01", longSatin, 1.01, 1.01, kFewer},
      {"inverses summing to 2", satin, 0.5, 1.5, kKept},
      {"inverses summing to 2, crossed", satin, 1.5, 0.5, kKept},
      {"satin to grow", satin, 1 / 1.5, 1 / 1.5, kMore},
      {"satin to shrink", satin, 1 / 0.7, 1 / 0.7, kFewer},
      {"fill of 3 rows", FillSample(100, 8), 0.5, 0.5, kKept},
      {"fill of 4 rows", FillSample(100, 12), 0.5, 0.5, kKept},
      {"fill of 5 rows", FillSample(100, 16), 0.5, 0.5, kMore},
      {"stretch to shrink", satin, 1 / 0.7, 1 / 0.7, kKept, true},
      {"stretch to grow", satin, 1 / 1.5, 1 / 1.5, kMoved, true},
  };
  for (const Case& c : cases) {
    Classified classified(c.design);
    ASSERT_EQ(classified.regions.size(), 1u) << c.name;
    const std::vector<Node> before = Nodes(classified.design);
    StitchRegion& region = classified.regions.front();
    c.stretch ? StretchRegionEnd(region, c.inverseX, c.inverseY) : RestitchRegion(region, c.inverseX, c.inverseY);
    const std::vector<Node> after = Nodes(classified.design);
    const Change got = after == before                ? kKept
                       : after.size() > before.size() ? kMore
                       : after.size() < before.size() ? kFewer
                                                      : kMoved;
    EXPECT_EQ(got, c.change) << c.name;
  }
}

TEST(ResizeEngine, UnscaledTinyOrMirroredDesignsTakeThePlainTransform) {
  ResizeSettings settings = kDefaultResizeSettings;
  settings.MaxSL = settings.MaxSatinSL = 25;  // any clean-up would split the satin legs
  const Design sample = SampleDesign();
  for (const auto& [fx, fy] : {std::pair{1.0f, 1.0f}, {0.0f, 1.5f}, {1.5f, 0.0f}, {0.0f, 0.0f}}) {
    EXPECT_EQ(Moves(Resized(sample, fx, fy, settings)), Nodes(sample)) << fx << " x " << fy;
  }
  // Three nodes are only scaled; a fourth brings the clean-up, which merges
  // the stitch that comes out 2.8 long.
  EXPECT_EQ(Nodes(Resized(DesignOf({{10, 0, 0}, {-1, 1, 0}, {10, 0, 0}}), 2, 2)),
            (std::vector<Node>{{20, 0, 0}, {-2, 2, 0}, {20, 0, 0}}));
  EXPECT_EQ(Resized(DesignOf({{10, 0, J}, {10, 0, 0}, {-1, 1, 0}, {10, 0, 0}}), 2, 2).stitches.Size(), 3u);
  // A negative factor re-stitches as its positive one and mirrors. No splits:
  // a piece is cut from the sine and cosine of its move, which may fall a unit
  // apart on the two sides of a whole number.
  settings.ApplyMax = settings.ApplyMaxSL = 0;
  for (const auto& [fx, fy] : {std::pair{-1.5f, 1.5f}, {0.7f, -0.7f}}) {
    const std::vector<Node> mirrored = Nodes(Resized(sample, fx, fy, settings));
    std::vector<Node> want = Nodes(Resized(sample, std::fabs(fx), std::fabs(fy), settings));
    for (auto& [dx, dy, flags] : want) dx = fx < 0 ? -dx : dx, dy = fy < 0 ? -dy : dy;
    EXPECT_EQ(mirrored, want) << fx << " x " << fy;
  }
}

TEST(ResizeEngine, RotationScalesThenTurnsCounterClockwiseWithoutDrift) {
  const Design design = DesignOf({{100, 0, 0}, {0, 50, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}});
  const std::pair<std::array<double, 3>, std::vector<Node>> cases[] = {
      {{90, 1, 1}, {{0, 100, 0}, {-50, 0, 0}, {-1, 1, 0}, {-1, 1, 0}, {-1, 1, 0}}},
      {{180, 2, 1}, {{-200, 0, 0}, {0, -50, 0}, {-2, -1, 0}, {-2, -1, 0}, {-2, -1, 0}}},
      // Rounded points, not rounded moves: the 0.5 steps alternate.
      {{0, 1.5, 0.5}, {{150, 0, 0}, {0, 25, 0}, {2, 1, 0}, {1, 0, 0}, {2, 1, 0}}},
  };
  for (const auto& [turn, want] : cases) {
    Design turned = design;
    RotateAndScale(turned, turn[0], turn[1], turn[2]);
    EXPECT_EQ(Nodes(turned), want) << turn[0];
  }
}

TEST(ResizeEngine, CleanUpLimitsAreExclusive) {
  // Fill stitches 3 to 60 long are kept, satin ones 5 to 80.
  ResizeSettings settings = kDefaultResizeSettings;
  settings.MinSatin = 5;
  settings.MaxSatinSL = 80;
  const std::pair<Node, size_t> cases[] = {
      // The tested node and the count with the three around it.
      {{60, 0, R}, 4}, {{36, 48, R}, 4}, {{61, 0, R}, 5}, {{121, 0, R}, 6}, {{61, 0, R | J}, 4},
      {{80, 0, S}, 4}, {{81, 0, S}, 5},  {{5, 0, S}, 4},  {{3, 4, S}, 4},   {{4, 0, S}, 3},
      {{3, 0, R}, 4},  {{2, 0, R}, 3},   {{2, 0, R | J}, 4}, {{3, 0, 0}, 4}, {{2, 0, 0}, 3},
  };
  for (const auto& [tested, count] : cases) {
    ResizeEngine engine;
    engine.ApplySettings(settings);
    engine.working = DesignOf({{10, 0, R | J}, {10, 0, R}, tested, {10, 0, R}});
    engine.MergeShortRegionStitches();
    engine.MergeShortPlainStitches();
    engine.SplitLongRegionStitches();
    EXPECT_EQ(engine.working.stitches.Size(), count) << ::testing::PrintToString(tested);
    // Pieces and merges keep where the needle ends; the first node takes the centring.
    EXPECT_EQ(test::FromFirst(test::NeedlePath(engine.working, test::Landing::kAny)).back(),
              Point(std::get<0>(tested) + 20, std::get<1>(tested)))
        << ::testing::PrintToString(tested);
  }
}

TEST(ResizeEngine, FitToHoopCrossesTheAxesUnlessAspectIsKept) {
  const Design outline = DesignOf({{50, 0, 0}, {50, 0, 0}, {50, 0, 0}, {50, 0, 0}, {0, 50, 0}, {0, 50, 0},
                                    {-50, 0, 0}, {-50, 0, 0}, {-50, 0, 0}, {-50, 0, 0}, {0, -50, 0}, {0, -50, 0}});
  // Hoop width, height (mm), keep; the design's width and height after.
  const std::tuple<int32_t, int32_t, int32_t, int32_t, int32_t> cases[] = {
      {50, 30, 0, 580, 245},  // x by (30 - 1) / 10, y by (50 - 1) / 20
      {30, 50, 0, 980, 145},
      {50, 30, 1, 490, 245},
      {30, 50, 1, 290, 145},
  };
  for (const auto& [width, height, keep, designWidth, designHeight] : cases) {
    Design design = outline;
    ResizeEngine().FitToHoop(width, height, keep, design);
    design.ComputeBounds();
    EXPECT_NEAR(design.maxX - design.minX, designWidth, 1) << width << " x " << height << " keep " << keep;
    EXPECT_NEAR(design.maxY - design.minY, designHeight, 1) << width << " x " << height << " keep " << keep;
  }
}

// The sewn stitches (jumps aside) as lines between absolute points.
std::vector<std::array<double, 4>> Sewn(const Design& design) {
  std::vector<std::array<double, 4>> lines;
  double x = 0, y = 0;
  for (const StitchNode& node : design.stitches) {
    if (!node.IsJump()) lines.push_back({x, y, x + node.dx, y + node.dy});
    x += node.dx, y += node.dy;
  }
  return lines;
}

// Mean distance between the heights at which the sewn stitches cross the
// vertical line through the design's middle: one crossing per leg or row.
double PassSpacing(const Design& design) {
  const auto lines = Sewn(design);
  double low = 1e9, high = -1e9;
  for (const auto& line : lines) low = std::min(low, line[2]), high = std::max(high, line[2]);
  const double middle = (low + high) / 2 + 0.25;
  std::vector<double> heights;
  for (const auto& [x0, y0, x1, y1] : lines) {
    if ((x0 < middle) != (x1 < middle)) heights.push_back(y0 + (y1 - y0) * (middle - x0) / (x1 - x0));
  }
  if (heights.size() < 2) return 0;
  const auto [bottom, top] = std::minmax_element(heights.begin(), heights.end());
  return (*top - *bottom) / static_cast<double>(heights.size() - 1);
}

// How many of the 1 mm cells that the sewn stitches of `a` pass through have
// no such cell of `b` within one cell.
size_t CellsApart(const Design& a, const Design& b) {
  const auto cells = [](const Design& design) {
    std::set<Point> set;
    for (const auto& [x0, y0, x1, y1] : Sewn(design)) {
      for (double k = 0; k <= 1; k += 0.5 / (1 + std::hypot(x1 - x0, y1 - y0))) {
        set.emplace(std::floor((x0 + (x1 - x0) * k) / 10), std::floor((y0 + (y1 - y0) * k) / 10));
      }
    }
    return set;
  };
  const std::set<Point> near = cells(b);
  size_t apart = 0;
  for (const auto& [x, y] : cells(a)) {
    bool found = false;
    for (int64_t i = 0; i < 9 && !found; ++i) found = near.count({x + i % 3 - 1, y + i / 3 - 1}) != 0;
    apart += found ? 0 : 1;
  }
  return apart;
}

// Boxes (min x, max x, min y, max y) the same within 1 mm on each side.
void ExpectSameBox(const std::array<int32_t, 4>& got, const std::array<int32_t, 4>& want, const std::string& what) {
  for (size_t side = 0; side < 4; ++side) EXPECT_NEAR(got[side], want[side], 10) << what << ", side " << side;
}

TEST(ResizeDensity, SatinAndFillKeepTheirSpacingAndTheirShape) {
  const std::tuple<const char*, Design, float> cases[] = {
      {"satin column at 150 %", SatinColumnSample(300, 40), 1.5f},
      {"fill at 70 %", FillSample(300, 200), 0.7f},
  };
  for (const auto& [name, design, factor] : cases) {
    Design resized = Resized(design, factor, factor), plain = PlainScaled(design, factor, factor);
    ASSERT_NEAR(PassSpacing(plain), 4 * factor, 0.2) << name;  // 0.4 mm apart before
    EXPECT_NEAR(PassSpacing(resized), 4, 0.6) << name;
    resized.ComputeBounds();
    plain.ComputeBounds();
    ExpectSameBox({resized.minX, resized.maxX, resized.minY, resized.maxY},
                  {plain.minX, plain.maxX, plain.minY, plain.maxY}, name);
    EXPECT_EQ(CellsApart(resized, plain), 0u) << name;
    EXPECT_EQ(CellsApart(plain, resized), 0u) << name;
  }
}

TEST(ResizeDensity, EveryColourBlockSurvivesInItsPlace) {
  const Design sample = SampleDesign();
  for (const float factor : {1.5f, 0.7f}) {
    Design resized = Resized(sample, factor, factor), plain = PlainScaled(sample, factor, factor);
    EXPECT_EQ(test::Rgbs(resized.threads), test::Rgbs(sample.threads)) << factor;
    EXPECT_EQ(test::CountStops(resized), test::CountStops(sample)) << factor;
    resized.ComputeThreadStats();
    plain.ComputeThreadStats();
    for (size_t i = 0; i < sample.threads.size(); ++i) {
      const ThreadColor &got = resized.threads[i], &want = plain.threads[i];
      EXPECT_GT(got.stitchCount, 10) << factor << " thread " << i;
      ExpectSameBox({got.minX, got.maxX, got.minY, got.maxY}, {want.minX, want.maxX, want.minY, want.maxY},
                    ::testing::PrintToString(factor) + " thread " + std::to_string(i));
    }
  }
}

TEST(ResizeDensity, RunningStitchesChangeOnlyByTheCleanUp) {
  // A running circle with a stitch of 1 unit after every third point.
  std::vector<Node> nodes{{150, 0, J}};
  for (int32_t i = 1, x = 150, y = 0; i <= 40; ++i) {
    const auto tx = static_cast<int32_t>(std::lround(150 * std::cos(i * 0.157)));
    const auto ty = static_cast<int32_t>(std::lround(150 * std::sin(i * 0.157)));
    nodes.emplace_back(tx - x, ty - y, 0);
    x = tx, y = ty;
    if (i % 3 == 0) nodes.emplace_back(1, 0, 0), ++x;
  }
  const Design circle = DesignOf(nodes);
  ResizeSettings off = kDefaultResizeSettings;
  off.ApplyMinFill = off.ApplyMax = off.ApplyMinSatin = off.ApplyMaxSL = 0;
  for (const float factor : {1.5f, 0.7f}) {
    const Design plain = PlainScaled(circle, factor, factor), cleaned = Resized(circle, factor, factor);
    EXPECT_EQ(Moves(Resized(circle, factor, factor, off)), Nodes(plain)) << factor;
    // With the defaults each stitch under 3 units merges into the one before
    // (none follows a jump); no other point goes, and the end stays.
    size_t merges = 0;
    for (const auto& [dx, dy, flags] : Nodes(plain)) merges += flags == 0 && std::hypot(dx, dy) < 3 ? 1 : 0;
    EXPECT_GT(merges, 0u);
    EXPECT_EQ(cleaned.stitches.Size(), plain.stitches.Size() - merges) << factor;
    const std::vector<Point> path = test::FromFirst(test::NeedlePath(cleaned, test::Landing::kAny));
    const std::vector<Point> plainPath = test::FromFirst(test::NeedlePath(plain, test::Landing::kAny));
    EXPECT_EQ(test::CountMissing(path, std::set<Point>(plainPath.begin(), plainPath.end())), 0u) << factor;
    EXPECT_EQ(path.back(), plainPath.back()) << factor;
  }
}

}  // namespace
}  // namespace fennick
