#include "core/design.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace fennick {
namespace {

using NodeList = std::vector<test::Node>;
using Bounds = std::array<int32_t, 4>;  // maxX, maxY, minX, minY: the field order
using Point = std::pair<int32_t, int32_t>;

constexpr uint32_t S = STITCH_COLORSTOP;
constexpr uint32_t J = STITCH_JUMP;
constexpr int kNoStart = -1;

StitchNode* NodeAt(Design& design, int index) {
  if (index < 0) return nullptr;
  StitchNode* node = design.stitches.Head();
  for (int i = 0; i < index; ++i) node = node->Next();
  return node;
}

Bounds BoundsOf(const Design& d) { return {d.maxX, d.maxY, d.minX, d.minY}; }

void SetBounds(Design& d, const Bounds& b) { d.maxX = b[0], d.maxY = b[1], d.minX = b[2], d.minY = b[3]; }

Point AsPair(StitchPoint p) { return {p.x, p.y}; }

std::vector<uint32_t> Flags(const Design& design) {
  std::vector<uint32_t> flags;
  for (const StitchNode& node : design.stitches) flags.push_back(node.flags);
  return flags;
}

// Threads "T0", "T1", ... so that copies and removals can be told apart.
std::vector<ThreadColor> NumberedThreads(int count) {
  std::vector<ThreadColor> threads(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) threads[static_cast<size_t>(i)].colorName = "T" + std::to_string(i);
  return threads;
}

TEST(DesignBounds, ComputeBounds) {
  struct Case {
    const char* name;
    NodeList nodes;
    int start;
    Point end;
    Bounds bounds;
  };
  const NodeList mixed = {{10, 0, J}, {-30, 5, 0}, {0, -20, S}};
  for (const Case& c : {
           Case{"empty list: starting values", {}, kNoStart, {0, 0}, {-10000, -10000, 10000, 10000}},
           Case{"jumps and stops are samples", mixed, kNoStart, {-20, -15}, {10, 5, -20, -15}},
           // Neither the origin nor a widening beyond the starting values.
           Case{"far point", {{20000, -20000, 0}}, kNoStart, {20000, -20000}, {20000, -10000, 10000, -20000}},
           Case{"start node counts from the origin", mixed, 1, {-30, -15}, {-30, 5, -30, -15}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    SetBounds(design, {1, 2, 3, 4});
    EXPECT_EQ(AsPair(design.ComputeBounds(NodeAt(design, c.start))), c.end);
    EXPECT_EQ(BoundsOf(design), c.bounds);
  }
}

TEST(DesignCentre, MovesDesignOntoOriginAndBalancesOddSizes) {
  struct Case {
    const char* name;
    NodeList nodes;
    int start;
    NodeList expected;
    Bounds bounds;
    Point end;
  };
  for (const Case& c : {
           Case{"empty: nothing changes", {}, kNoStart, {}, {1, 2, 3, 4}, {0, 0}},
           // x 10..14 (even), y 20..25: cy 22, the odd height puts its extra
           // unit below; the end point is not balanced. A head jump takes the shift.
           Case{"head jump, odd height",
                {{10, 20, J}, {4, 0, 0}, {0, 5, 0}}, kNoStart,
                {{-2, -3, J}, {4, 0, 0}, {0, 5, 0}}, {2, 2, -2, -3}, {2, 3}},
           // x -15..-10: cx -12 truncated towards zero, so the odd width needs
           // +1 on x. y -24..-20 is even. A head stitch gets a new head jump.
           Case{"head stitch, odd width",
                {{-10, -20, 0}, {-5, 0, 0}, {0, -4, 0}}, kNoStart,
                {{13, 22, J}, {-10, -20, 0}, {-5, 0, 0}, {0, -4, 0}}, {3, 2, -2, -2}, {-3, -2}},
           // The new jump goes before the start node, but the start node itself
           // balances; the head is untouched.
           Case{"start node balances",
                {{7, 7, 0}, {-10, -20, 0}, {-5, 0, 0}, {0, -5, 0}}, 1,
                {{7, 7, 0}, {12, 22, J}, {-9, -20, 0}, {-5, 0, 0}, {0, -5, 0}}, {3, 2, -2, -3}, {-3, -3}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    SetBounds(design, {1, 2, 3, 4});
    EXPECT_EQ(AsPair(design.Centre(NodeAt(design, c.start))), c.end);
    EXPECT_EQ(test::Nodes(design), c.expected);
    EXPECT_EQ(BoundsOf(design), c.bounds);
  }
}

TEST(DesignMergeJumps, FoldsJumpRuns) {
  struct Case {
    const char* name;
    bool keepStitches;
    NodeList nodes;
    NodeList expected;
  };
  // A leading stitch, a run landing on a stitch, then a single jump and landing.
  const NodeList runs = {{1, 1, 0}, {1, 2, J}, {3, 4, J}, {5, 6, 0}, {0, 3, J}, {0, 4, 0}, {7, 8, 0}};
  for (const Case& c : {
           // The run swallows its landing stitch, and the walk resumes after it.
           Case{"swallow landing", false, runs, {{1, 1, 0}, {9, 12, J}, {0, 7, J}, {7, 8, 0}}},
           Case{"keep landing", true, runs,
                {{1, 1, 0}, {4, 6, J}, {5, 6, 0}, {0, 3, J}, {0, 4, 0}, {7, 8, 0}}},
           // A jump carrying a stop neither merges nor is merged; the tail loses
           // only its stop bit.
           Case{"stops", false, {{1, 1, J}, {2, 2, J | S}, {3, 3, J}, {4, 4, 0}, {6, 0, J | S}},
                {{1, 1, J}, {2, 2, J | S}, {7, 7, J}, {6, 0, J}}},
           Case{"tail stop after kept stitch", true, {{5, 5, 0}, {0, 0, S}}, {{5, 5, 0}, {0, 0, 0}}},
           Case{"empty", false, {}, {}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    design.MergeJumps(c.keepStitches);
    EXPECT_EQ(test::Nodes(design), c.expected);
  }
}

TEST(DesignSplitLongStitches, CutsMovesLongerThanMaxStep) {
  struct Case {
    const char* name;
    int32_t maxStep;
    bool pureJumps;
    NodeList nodes;
    NodeList expected;
  };
  for (const Case& c : {
           // (300, 0) leaves a zero stitch; a move at the limit stays; 242 is an
           // exact multiple and needs no extra step.
           Case{"axis moves", 121, false, {{300, 0, 0}, {121, -121, 0}, {0, -242, J}},
                {{100, 0, J}, {100, 0, J}, {100, 0, J}, {0, 0, 0}, {121, -121, 0},
                 {0, -121, J}, {0, -121, J}, {0, 0, 0}}},
           // Only dy is over; both axes step by trunc(-16.67), trunc(-100.33), the
           // rest (-2, -1) goes to the last step and the jump becomes a zero stitch.
           Case{"diagonal", 121, false, {{-50, -301, J}},
                {{-16, -100, J}, {-16, -100, J}, {-18, -101, J}, {0, 0, 0}}},
           // A stop with a move gets a pure stop before it and keeps its jump
           // bit; an empty stop loses it.
           Case{"stops", 121, false, {{10, 0, 0}, {50, 0, S | J}, {0, 0, S | J}, {300, 0, S}},
                {{10, 0, 0}, {0, 0, S}, {50, 0, J}, {0, 0, S}, {0, 0, S},
                 {100, 0, J}, {100, 0, J}, {100, 0, J}, {0, 0, 0}}},
           // The split node is gone and its stop moves to the first step; short
           // stops are left alone.
           Case{"pure jumps with stop", 121, true, {{10, 0, 0}, {50, 0, S | J}, {300, 0, S}},
                {{10, 0, 0}, {50, 0, S | J}, {100, 0, J | S}, {100, 0, J}, {100, 0, J}}},
           // 29 at 10: steps of 9, the last grows to 11. pureJumps checks it
           // again; otherwise it is shared out over two jumps, and a split
           // move never passes maxStep either way.
           Case{"pure jumps recheck", 10, true, {{29, 0, 0}}, {{9, 0, J}, {9, 0, J}, {5, 0, J}, {6, 0, J}}},
           Case{"long rest shared out", 10, false, {{29, 0, 0}}, {{9, 0, J}, {9, 0, J}, {5, 0, J}, {6, 0, J}, {0, 0, 0}}},
           // 50000 narrowed to 16 bits is -15536; the rest of 115536 keeps the sum.
           Case{"16-bit steps", 50000, false, {{100000, 0, 0}},
                {{-15536, 0, J}, {38512, 0, J}, {38512, 0, J}, {38512, 0, J}, {0, 0, 0}}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    design.SplitLongStitches(c.maxStep, 0, c.pureJumps);
    EXPECT_EQ(test::Nodes(design), c.expected);
  }
}

TEST(DesignRotateQuarter, TurnsMovesAndSwapsBoundsWithoutRecomputing) {
  const NodeList clockwise = {{5, -3, 0}, {2, 7, J}, {-4, 0, S}};
  const NodeList anticlockwise = {{-5, 3, 0}, {-2, -7, J}, {4, 0, S}};
  for (const auto& [direction, expected] : std::vector<std::pair<int32_t, NodeList>>{{1, clockwise}, {-1, anticlockwise}}) {
    SCOPED_TRACE("direction " + std::to_string(direction));
    Design design = test::DesignOf({{3, 5, 0}, {-7, 2, J}, {0, -4, S}});
    SetBounds(design, {10, 20, -3, -4});
    design.RotateQuarter(direction);
    EXPECT_EQ(test::Nodes(design), expected);
    EXPECT_EQ(BoundsOf(design), (Bounds{20, 10, -4, -3}));
  }
}

TEST(DesignStripLeadingMoves, DropsLeadingJumpsAndEmptyMovesThenCentres) {
  Design design = test::DesignOf({{100, 100, J}, {0, 0, 0}, {0, 0, S}, {10, 0, 0}, {0, 6, 0}, {50, 0, J}, {1, 0, 0}});
  design.StripLeadingMoves();
  // Positions left: (10, 0) to (61, 6), cx 35, cy 3. The dropped moves are
  // not passed on; the later jump stays.
  EXPECT_EQ(test::Nodes(design), (NodeList{{-35, -3, J}, {10, 0, 0}, {0, 6, 0}, {50, 0, J}, {1, 0, 0}}));
  EXPECT_EQ(BoundsOf(design), (Bounds{26, 3, -25, -3}));

  // Each stop that goes takes the first thread with it; the last thread stays.
  Design coloured = test::DesignOf({{0, 0, S}, {5, 5, J}, {0, 0, S}, {10, 0, 0}, {0, 0, S}, {1, 0, 0}});
  for (uint32_t rgb : {1u, 2u, 3u, 4u}) coloured.threads.emplace_back().rgb = rgb;
  coloured.StripLeadingMoves();
  ASSERT_EQ(coloured.threads.size(), 2u);
  EXPECT_EQ(coloured.threads[0].rgb, 3u);
  Design stopsOnly = test::DesignOf({{0, 0, S}, {0, 0, S}}, {0, 0});
  stopsOnly.StripLeadingMoves();
  EXPECT_EQ(stopsOnly.threads.size(), 1u);

  Design onlyMoves = test::DesignOf({{100, 100, J}, {0, 0, 0}, {5, 5, J}});
  SetBounds(onlyMoves, {1, 2, 3, 4});
  onlyMoves.StripLeadingMoves();
  EXPECT_TRUE(onlyMoves.stitches.Empty());
  EXPECT_EQ(BoundsOf(onlyMoves), (Bounds{1, 2, 3, 4}));
}

TEST(DesignNormalizeColorStops, MakesStopsPureAndThreadsMatch) {
  struct Case {
    const char* name;
    NodeList nodes;
    int threadCount;
    int result;
    NodeList expected;
    std::vector<std::string> threads;
  };
  const NodeList twoStops = {{10, 0, 0}, {0, 0, S}, {10, 0, 0}, {0, 0, S}, {10, 0, 0}};
  for (const Case& c : {
           Case{"surplus threads go from the end", twoStops, 5, 0, twoStops, {"T0", "T1", "T2"}},
           // Stops with a move split into a pure stop and the move with its
           // other flags; the split-off jump then needs an anchor stitch before
           // the next stop. Missing threads copy the last.
           Case{"split, anchor, copy", {{10, 0, 0}, {5, 6, S}, {5, 0, S | J}, {0, 0, S}, {1, 0, 0}}, 2, 0,
                {{10, 0, 0}, {0, 0, S}, {5, 6, 0}, {0, 0, S}, {5, 0, J}, {0, 0, 0}, {0, 0, S}, {1, 0, 0}},
                {"T0", "T1", "T1", "T1"}},
           // The head's stop is cleared and not counted; trailing jumps go.
           Case{"head stop, trailing jumps", {{5, 5, S | J}, {0, 0, S}, {1, 0, 0}, {5, 0, J}, {6, 0, J}}, 3, 0,
                {{5, 5, J}, {0, 0, 0}, {0, 0, S}, {1, 0, 0}}, {"T0", "T1"}},
           // Stitches are checked first; with no threads nothing changes.
           Case{"no stitches", {}, 2, 1, {}, {"T0", "T1"}},
           Case{"no threads", {{1, 0, S}, {2, 0, 0}, {3, 0, J}}, 0, 2, {{1, 0, S}, {2, 0, 0}, {3, 0, J}}, {}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    design.threads = NumberedThreads(c.threadCount);
    EXPECT_EQ(design.NormalizeColorStops(), c.result);
    EXPECT_EQ(test::Nodes(design), c.expected);
    EXPECT_EQ(test::Names(design.threads), c.threads);
  }
}

// stitchCount, threadLength, startX, startY, minX, maxX, minY, maxY
using Stats = std::array<int32_t, 8>;

Stats StatsOf(const ThreadColor& t) {
  return {t.stitchCount, t.threadLength, t.startX, t.startY, t.minX, t.maxX, t.minY, t.maxY};
}

TEST(DesignComputeThreadStats, CountsLengthStartAndExtentPerColour) {
  struct Case {
    const char* name;
    NodeList nodes;
    int threadCount;
    std::vector<Stats> expected;  // threads past these must stay untouched
  };
  constexpr Stats kUntouched = {99, 99, 99, 99, 99, 99, 99, 99};
  const NodeList threeColours = {
      {10, 20, J},    // (10, 20)  jump before the first stitch: no extent
      {3, 4, 0},      // (13, 24)
      {0, 0, 0},      // (13, 24)
      {-21, 0, J},    // (-8, 24)  a jump after a stitch widens
      {1, 1, 0},      // (-7, 25)
      {2, -3, S},     // (-5, 22)  second colour starts at (-7, 25)
      {5, 0, J},      // (0, 22)
      {0, 0, S},      // (0, 22)   third colour starts at (0, 22)
      {4, 3, 0},      // (4, 25)
      {-10, -10, 0},  // (-6, 15)
      {17, 0, J},     // (11, 15)
  };
  for (const Case& c : {
           // Lengths truncate per node: 22 + 5 + 0 + 21 + 1 = 49, 7500 + trunc(73.5).
           // The stop itself does not count. A colour without a stitch keeps
           // its starting extent.
           Case{"three colours", threeColours, 3,
                {{5, 7573, 0, 0, -8, 13, 24, 25},
                 {1, 7512, -7, 25, 10000, -10000, 10000, -10000},
                 {3, 7554, 0, 22, -6, 11, 15, 25}}},
           Case{"more stops than threads", {{1, 0, 0}, {0, 0, S}, {2, 0, 0}}, 1, {{1, 7501, 0, 0, 1, 1, 0, 0}}},
           Case{"more threads than stops", {{3, 4, 0}}, 2, {{1, 7507, 0, 0, 3, 3, 4, 4}}},
           Case{"no stitches", {}, 1, {}},
           Case{"no threads", {{3, 4, 0}}, 0, {}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    design.threads = NumberedThreads(c.threadCount);
    for (ThreadColor& t : design.threads) {
      t.stitchCount = t.threadLength = t.startX = t.startY = 99;
      t.minX = t.maxX = t.minY = t.maxY = 99;
    }
    design.ComputeThreadStats();
    ASSERT_EQ(design.threads.size(), static_cast<size_t>(c.threadCount));
    for (size_t i = 0; i < design.threads.size(); ++i) {
      EXPECT_EQ(StatsOf(design.threads[i]), i < c.expected.size() ? c.expected[i] : kUntouched) << i;
    }
  }
}

TEST(DesignReclassifyJumps, TurnsLongSatinAndStraightJumpsIntoStitches) {
  struct Case {
    const char* name;
    NodeList nodes;
    std::vector<uint32_t> expected;
  };
  // A satin column marked as jumps. Its first jump follows a plain stitch and
  // has no reverse neighbour before it, so it stays a jump.
  const NodeList satin = {{10, 0, 0}, {100, 2, J}, {-100, 2, J}, {100, 2, J}, {-100, 2, J}, {10, 0, 0}};
  const std::vector<uint32_t> turned = {0, J, 0, 0, 0, 0};
  const std::vector<uint32_t> kept = {0, J, J, J, J, 0};
  // Row names serve as the design's name: only their extension matters.
  for (const Case& c : {
           Case{"c:\\a\\column.exp", satin, turned},
           Case{"c:\\a\\column.phd", satin, turned},  // only "phdc" is exempt
           Case{"c:\\a\\column.pcs", satin, turned},  // 100 is under the pcs limit
           Case{"column.pes", satin, kept},
           Case{"column.phdc", satin, kept},
           Case{"satin of 80 stays", {{10, 0, 0}, {80, 0, J}, {-80, 0, J}, {80, 0, J}, {-80, 0, J}, {10, 0, 0}}, kept},
           Case{"straight.exp", {{10, 0, 0}, {10, 0, 0}, {100, 0, J}, {10, 0, 0}}, {0, 0, 0, 0}},
           Case{"travel off the line.exp", {{10, 0, 0}, {10, 0, 0}, {300, 400, J}, {10, 0, 0}}, {0, 0, J, 0}},
           // After a colour change the travel is measured against itself, not
           // against the tie-in stitch beyond it that points back along it.
           Case{"travel after a change.exp", {{10, 0, 0}, {0, 0, S}, {200, 0, J}, {-10, 0, 0}}, {0, S, J, 0}},
           // In line, but a run of jumps is travel.
           Case{"two jumps in line.exp", {{10, 0, 0}, {100, 0, J}, {100, 0, J}, {10, 0, 0}}, {0, J, J, 0}},
           // (127, 0) is not over 127; (90, 90) is 127.3 and off its neighbours' line.
           Case{"marks.pcs", {{10, 0, 0}, {127, 0, 0}, {0, 10, 0}, {90, 90, 0}, {0, 10, 0}}, {0, 0, 0, J, 0}},
           // Marked first, then found to be a straight long stitch.
           Case{"straight.pcs", {{10, 0, 0}, {10, 0, 0}, {200, 0, 0}, {10, 0, 0}}, {0, 0, 0, 0}},
           Case{"empty.pcs", {}, {}},
       }) {
    SCOPED_TRACE(c.name);
    Design design = test::DesignOf(c.nodes);
    design.name = c.name;
    design.ReclassifyJumps();
    EXPECT_EQ(Flags(design), c.expected);
  }
}

TEST(DesignAnalyseColor, FillsAnalysisSlots) {
  struct Case {
    const char* name;
    int32_t r, g, b, sector, saturation, value, hue;
  };
  for (const Case& c : {
           Case{"sum 19: no colour", 19, 0, 0, -1, -1, 19, 0},
           Case{"sum 20", 20, 0, 0, 1, 255, 20, 0},
           Case{"grey: no chroma", 128, 128, 128, -1, -1, 128, 0},
           // 180/210*255 = 218.57; 70/180*60 = 23.33.
           Case{"orange, red largest", 210, 100, 30, 1, 218, 210, 23},
           // -23.33 wraps to 336.67; sector (1 + 11) mod 12.
           Case{"rose, negative hue", 220, 40, 110, 0, 208, 220, 336},
           // (50/170 + 2) * 60 = 137.65.
           Case{"leaf, green largest", 40, 210, 90, 5, 206, 210, 137},
           // (70/190 + 4) * 60 = 262.11.
           Case{"violet, blue largest", 100, 30, 220, 9, 220, 220, 262},
           // Sum 750 still has a hue; exactly 30 degrees is sector 2.
           Case{"sum 750", 254, 250, 246, 2, 8, 254, 30},
           Case{"sum 751", 254, 251, 246, -1, -1, 254, 0},
       }) {
    SCOPED_TRACE(c.name);
    ThreadColor thread;
    thread.rgb = ColorRef(static_cast<uint8_t>(c.r), static_cast<uint8_t>(c.g), static_cast<uint8_t>(c.b));
    thread.AnalyseColor();
    // Without a hue the hue slot is left alone, so it stays 0 here.
    EXPECT_EQ(thread.colorAnalysis,
              (std::array<int32_t, 8>{c.sector, c.saturation, c.value, c.hue, c.r, c.g, c.b, c.r + c.g + c.b}));
  }
}

TEST(DesignDefaultPalette, ColoursGapsAndWrapping) {
  // 33 to 36 differ from 13, 14, 15 and 17 by one step on purpose; gaps and
  // indices past the table are "Light Gray".
  const std::vector<std::tuple<int, const char*, uint32_t>> listed = {
      {0, "Black", ColorRef(0, 0, 0)},           {13, "Dark Blue", ColorRef(0, 0, 127)},
      {33, "Dark Blue", ColorRef(0, 0, 128)},    {43, "Dark Brown", ColorRef(115, 40, 0)},
      {22, "Light Gray", ColorRef(192, 192, 192)}, {44, "Light Gray", ColorRef(192, 192, 192)},
      {-1, "Light Gray", ColorRef(192, 192, 192)},
  };
  for (const auto& [index, name, rgb] : listed) {
    const ThreadColor thread = DefaultPaletteColor(index);
    EXPECT_EQ(thread.colorName, name) << index;
    EXPECT_EQ(thread.rgb, rgb) << index;
  }
  for (const auto& [count, index] : std::vector<std::pair<size_t, int>>{{27, 27}, {28, 0}, {56, 0}}) {
    EXPECT_EQ(DefaultPaletteIndex(count), index) << count;
  }
  // AppendThread adds a pure stop at the tail for each thread.
  Design design = test::DesignOf({{10, 0, 0}});
  design.AppendThread(DefaultPaletteColor(1));
  design.AppendThread(DefaultPaletteColor(2));
  EXPECT_EQ(test::Nodes(design), (NodeList{{10, 0, 0}, {0, 0, S}, {0, 0, S}}));
  EXPECT_EQ(test::Names(design.threads), (std::vector<std::string>{"Blue", "Light Green"}));
  EXPECT_EQ(design.DisplayedStitchCount(), 2);
}

// Copies and Clear leave fileThreads, the bounds' or the format's fields on
// purpose; each check below is one of those rules.
TEST(DesignCopyAndClear, LeaveTheFormatFieldsOnPurpose) {
  Design source = test::DesignOf({{10, 0, J}, {5, 5, 0}});
  source.name = "rose.pes", source.notes = "notes";
  source.threads = NumberedThreads(2);
  source.properties.push_back({"Author", 0, "Ada", 0, {9, 8}});
  source.fileThreads = NumberedThreads(1);
  SetBounds(source, {11, 12, -13, -14});
  source.formatVersion = 6, source.hoopWidth = 130, source.hoopHeight = 180, source.fitRotation = -1;
  source.hoopRotation = source.sourceFormat = source.blobWord = 1;

  Design target = test::DesignOf({{1, 2, 0}});
  target.fileThreads = NumberedThreads(2);
  target.formatVersion = target.hoopWidth = target.hoopHeight = 9;
  target = source;
  const NodeList copied = test::Nodes(source);
  source.stitches.Head()->dx = 50;
  EXPECT_EQ(test::Nodes(target), copied);
  EXPECT_EQ(test::Names(target.threads), (std::vector<std::string>{"T0", "T1"}));
  EXPECT_EQ(target.name + target.notes, "rose.pesnotes");
  EXPECT_EQ(BoundsOf(target), (Bounds{11, 12, -13, -14}));
  EXPECT_EQ((std::array{target.sourceFormat, target.blobWord, target.fitRotation, target.hoopRotation}),
            (std::array{1, 1, -1, 1}));
  EXPECT_EQ(target.fileThreads.size(), 2u);
  EXPECT_EQ((std::array{target.formatVersion, target.hoopWidth, target.hoopHeight}), (std::array{9, 9, 9}));
  const Design copy(source);
  EXPECT_TRUE(copy.fileThreads.empty());
  EXPECT_EQ(copy.formatVersion + copy.hoopWidth + copy.hoopHeight, 0);

  source.Clear();
  EXPECT_TRUE(source.stitches.Empty() && source.threads.empty() && source.properties.empty() && source.name.empty() && source.notes.empty());
  EXPECT_EQ(source.hoopRotation + source.fitRotation, 0);
  EXPECT_EQ(source.fileThreads.size(), 1u);
  EXPECT_EQ(BoundsOf(source), (Bounds{11, 12, -13, -14}));
  EXPECT_EQ((std::array{source.formatVersion, source.hoopWidth, source.sourceFormat}), (std::array{6, 130, 1}));
}

}  // namespace
}  // namespace fennick
