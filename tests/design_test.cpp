// Unit tests of the design model's shared operations. Expected values are
// worked out by hand from the operations' rules; each table row names the
// rule it pins down.
#include "core/design.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace fennick {
namespace {

constexpr uint32_t S = STITCH_COLORSTOP;
constexpr uint32_t J = STITCH_JUMP;

// One node as a table entry: (dx, dy, flags).
struct Move {
  int32_t dx = 0;
  int32_t dy = 0;
  uint32_t flags = 0;
  bool operator==(const Move&) const = default;
};
using Moves = std::vector<Move>;

void PrintTo(const Move& move, std::ostream* os) {
  *os << "(" << move.dx << ", " << move.dy << ", ";
  if (move.flags == 0) {
    *os << "stitch";
  } else {
    const char* separator = "";
    if ((move.flags & J) != 0) {
      *os << "J";
      separator = "|";
    }
    if ((move.flags & S) != 0) *os << separator << "S";
    if ((move.flags & ~(J | S)) != 0) *os << "|0x" << std::hex << move.flags << std::dec;
  }
  *os << ")";
}

Design MakeDesign(const Moves& moves) {
  Design design;
  for (const Move& move : moves) design.stitches.PushBack(move.dx, move.dy, move.flags);
  return design;
}

// Reads the list back and checks that the links agree in both directions, so
// that an operation that breaks a prev link or the tail fails here too.
Moves ReadMoves(const Design& design) {
  Moves moves;
  const StitchNode* previous = nullptr;
  for (const StitchNode* node = design.stitches.Head(); node != nullptr; node = node->Next()) {
    if (node->Prev() != previous) ADD_FAILURE() << "prev link broken at node " << moves.size();
    moves.push_back({node->dx, node->dy, node->flags});
    previous = node;
  }
  EXPECT_EQ(design.stitches.Tail(), previous) << "tail is not the last node";
  EXPECT_EQ(design.stitches.Size(), moves.size()) << "size disagrees with the links";
  return moves;
}

StitchNode* NodeAt(Design& design, size_t index) {
  StitchNode* node = design.stitches.Head();
  for (size_t i = 0; i < index && node != nullptr; ++i) node = node->Next();
  return node;
}

std::vector<uint32_t> ReadFlags(const Design& design) {
  std::vector<uint32_t> flags;
  for (const Move& move : ReadMoves(design)) flags.push_back(move.flags);
  return flags;
}

// Bounds in the field order of Design.
struct Bounds {
  int32_t maxX = 0;
  int32_t maxY = 0;
  int32_t minX = 0;
  int32_t minY = 0;
  bool operator==(const Bounds&) const = default;
};

void PrintTo(const Bounds& b, std::ostream* os) {
  *os << "{maxX " << b.maxX << ", maxY " << b.maxY << ", minX " << b.minX << ", minY " << b.minY
      << "}";
}

Bounds BoundsOf(const Design& design) {
  return {design.maxX, design.maxY, design.minX, design.minY};
}

void SetBounds(Design& design, const Bounds& bounds) {
  design.maxX = bounds.maxX;
  design.maxY = bounds.maxY;
  design.minX = bounds.minX;
  design.minY = bounds.minY;
}

// Colours are 0x00BBGGRR: red in the low byte.
constexpr uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b) { return r | (g << 8) | (b << 16); }

ThreadColor NamedThread(const std::string& name, uint32_t rgb = 0) {
  ThreadColor thread;
  thread.colorName = name;
  thread.rgb = rgb;
  return thread;
}

// Threads "T0", "T1", ... whose rgb is their index, so copies can be told apart.
std::vector<ThreadColor> NumberedThreads(int count) {
  std::vector<ThreadColor> threads;
  for (int i = 0; i < count; ++i) {
    std::string name = std::to_string(i);
    name.insert(0, 1, 'T');
    threads.push_back(NamedThread(name, static_cast<uint32_t>(i)));
  }
  return threads;
}

std::vector<std::string> ThreadNames(const Design& design) {
  std::vector<std::string> names;
  for (const ThreadColor& thread : design.threads) names.push_back(thread.colorName);
  return names;
}

// Table rows print as their name in test listings.
template <typename Case>
  requires std::is_same_v<decltype(Case::name), const char*>
void PrintTo(const Case& row, std::ostream* os) {
  *os << row.name;
}

// Names table rows after their `name` field.
struct CaseName {
  template <typename Case>
  std::string operator()(const testing::TestParamInfo<Case>& row) const {
    return row.param.name;
  }
};

// ---------------------------------------------------------------------------
// ComputeBounds

TEST(ComputeBounds, EmptyListResetsBoundsToStartingValuesAndReturnsOrigin) {
  Design design;
  SetBounds(design, {1, 2, 3, 4});
  EXPECT_EQ(design.ComputeBounds(), (StitchPoint{0, 0}));
  EXPECT_EQ(BoundsOf(design), (Bounds{-10000, -10000, 10000, 10000}));
}

TEST(ComputeBounds, OriginIsNotASample) {
  Design design = MakeDesign({{5, 7, 0}});
  EXPECT_EQ(design.ComputeBounds(), (StitchPoint{5, 7}));
  EXPECT_EQ(BoundsOf(design), (Bounds{5, 7, 5, 7}));
}

TEST(ComputeBounds, JumpsAndStopsCountAsSamples) {
  // Positions (10, 0), (-20, 5), (-20, -15).
  Design design = MakeDesign({{10, 0, J}, {-30, 5, 0}, {0, -20, S}});
  EXPECT_EQ(design.ComputeBounds(), (StitchPoint{-20, -15}));
  EXPECT_EQ(BoundsOf(design), (Bounds{10, 5, -20, -15}));
}

TEST(ComputeBounds, StartingValuesAreNotWidenedBeyondTenThousand) {
  // A single point far out: the untouched side keeps its starting value.
  Design design = MakeDesign({{20000, -20000, 0}});
  EXPECT_EQ(design.ComputeBounds(), (StitchPoint{20000, -20000}));
  EXPECT_EQ(BoundsOf(design), (Bounds{20000, -10000, 10000, -20000}));
}

TEST(ComputeBounds, StartNodeCountsFromTheOrigin) {
  Design design = MakeDesign({{10, 0, J}, {-30, 5, 0}, {0, -20, S}});
  // From the second node: (-30, 5), (-30, -15).
  EXPECT_EQ(design.ComputeBounds(NodeAt(design, 1)), (StitchPoint{-30, -15}));
  EXPECT_EQ(BoundsOf(design), (Bounds{-30, 5, -30, -15}));
}

// ---------------------------------------------------------------------------
// Centre

TEST(Centre, EmptyDesignReturnsOriginAndKeepsBounds) {
  Design design;
  SetBounds(design, {1, 2, 3, 4});
  EXPECT_EQ(design.Centre(), (StitchPoint{0, 0}));
  EXPECT_EQ(BoundsOf(design), (Bounds{1, 2, 3, 4}));
  EXPECT_TRUE(design.stitches.Empty());
}

struct CentreCase {
  const char* name;
  Moves input;
  std::optional<size_t> start;
  Moves expected;
  Bounds bounds;
  StitchPoint end;
};

class CentreTest : public testing::TestWithParam<CentreCase> {};

TEST_P(CentreTest, MovesDesignOntoOrigin) {
  const CentreCase& c = GetParam();
  Design design = MakeDesign(c.input);
  StitchNode* start = c.start ? NodeAt(design, *c.start) : nullptr;
  EXPECT_EQ(design.Centre(start), c.end);
  EXPECT_EQ(ReadMoves(design), c.expected);
  EXPECT_EQ(BoundsOf(design), c.bounds);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CentreTest,
    testing::Values(
        // x 10..15, y 20..25: cx 12, cy 22. The head jump takes the shift;
        // the odd height puts its extra unit below (dy -1). The end point
        // is not moved by that balancing step.
        CentreCase{"HeadJumpOddSizePositive",
                   {{10, 20, J}, {5, 0, 0}, {0, 5, 0}},
                   std::nullopt,
                   {{-2, -3, J}, {5, 0, 0}, {0, 5, 0}},
                   {3, 2, -2, -3},
                   {3, 3}},
        // x -15..-10, y -25..-20: cx -12 and cy -22 (truncated towards zero),
        // so x needs the balancing +1 and y none. A head stitch gets a new
        // head jump, which is then the balancing node.
        CentreCase{"HeadStitchOddSizeNegative",
                   {{-10, -20, 0}, {-5, 0, 0}, {0, -5, 0}},
                   std::nullopt,
                   {{13, 22, J}, {-10, -20, 0}, {-5, 0, 0}, {0, -5, 0}},
                   {3, 2, -2, -3},
                   {-3, -3}},
        // x 10..30, y -20..10: even, no balancing.
        CentreCase{"HeadStitchEvenSize",
                   {{10, 10, 0}, {20, 0, 0}, {0, -30, 0}},
                   std::nullopt,
                   {{-20, 5, J}, {10, 10, 0}, {20, 0, 0}, {0, -30, 0}},
                   {10, 15, -10, -15},
                   {10, -15}},
        // With a start node that is a stitch, the new jump goes before it but
        // the start node itself is the balancing node; the head is untouched.
        CentreCase{"StartNodeStitchIsBalancingNode",
                   {{7, 7, 0}, {-10, -20, 0}, {-5, 0, 0}, {0, -5, 0}},
                   1,
                   {{7, 7, 0}, {12, 22, J}, {-9, -20, 0}, {-5, 0, 0}, {0, -5, 0}},
                   {3, 2, -2, -3},
                   {-3, -3}},
        CentreCase{"StartNodeJumpTakesShiftAndBalance",
                   {{7, 7, 0}, {10, 20, J}, {5, 0, 0}, {0, 5, 0}},
                   1,
                   {{7, 7, 0}, {-2, -3, J}, {5, 0, 0}, {0, 5, 0}},
                   {3, 2, -2, -3},
                   {3, 3}}),
    CaseName());

// ---------------------------------------------------------------------------
// MergeJumps

struct MergeCase {
  const char* name;
  bool keepStitches;
  Moves input;
  Moves expected;
};

class MergeJumpsTest : public testing::TestWithParam<MergeCase> {};

TEST_P(MergeJumpsTest, FoldsJumpRuns) {
  const MergeCase& c = GetParam();
  Design design = MakeDesign(c.input);
  design.MergeJumps(c.keepStitches);
  EXPECT_EQ(ReadMoves(design), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MergeJumpsTest,
    testing::Values(
        MergeCase{"RunSwallowsLandingStitch",
                  false,
                  {{1, 2, J}, {3, 4, J}, {5, 6, 0}, {7, 8, 0}},
                  {{9, 12, J}, {7, 8, 0}}},
        MergeCase{"RunKeepsLandingStitch",
                  true,
                  {{1, 2, J}, {3, 4, J}, {5, 6, 0}, {7, 8, 0}},
                  {{4, 6, J}, {5, 6, 0}, {7, 8, 0}}},
        // After swallowing a stitch the walk goes on with the next node, so
        // the following jump starts a run of its own.
        MergeCase{"WalkResumesAfterSwallowedStitch",
                  false,
                  {{1, 0, J}, {2, 0, 0}, {0, 3, J}, {0, 4, 0}, {5, 5, 0}},
                  {{3, 0, J}, {0, 7, J}, {5, 5, 0}}},
        MergeCase{"SingleJumpsUntouchedWhenKeepingStitches",
                  true,
                  {{1, 0, J}, {2, 0, 0}, {0, 3, J}, {0, 4, 0}, {5, 5, 0}},
                  {{1, 0, J}, {2, 0, 0}, {0, 3, J}, {0, 4, 0}, {5, 5, 0}}},
        MergeCase{"StitchIsNeverTheRunHead",
                  true,
                  {{1, 0, 0}, {2, 0, J}, {3, 0, J}, {4, 0, 0}},
                  {{1, 0, 0}, {5, 0, J}, {4, 0, 0}}},
        MergeCase{"TrailingJumpSwallowsLastStitch",
                  false,
                  {{1, 0, 0}, {2, 0, J}, {3, 0, 0}},
                  {{1, 0, 0}, {5, 0, J}}},
        MergeCase{"NoMergeAcrossPureStop",
                  false,
                  {{1, 1, J}, {0, 0, S}, {2, 2, J}, {3, 3, 0}},
                  {{1, 1, J}, {0, 0, S}, {5, 5, J}}},
        MergeCase{"JumpCarryingStopIsNeitherMergedNorMerging",
                  false,
                  {{1, 1, J}, {2, 2, J | S}, {3, 3, J}, {4, 4, 0}},
                  {{1, 1, J}, {2, 2, J | S}, {7, 7, J}}},
        MergeCase{"TailStopCleared",
                  false,
                  {{5, 5, 0}, {0, 0, S}},
                  {{5, 5, 0}, {0, 0, 0}}},
        MergeCase{"TailJumpStopLosesOnlyStopBit",
                  true,
                  {{5, 5, 0}, {1, 1, J}, {2, 2, J | S}},
                  {{5, 5, 0}, {1, 1, J}, {2, 2, J}}}),
    CaseName());

TEST(MergeJumps, EmptyDesignStaysEmpty) {
  Design design;
  design.MergeJumps(false);
  design.MergeJumps(true);
  EXPECT_TRUE(design.stitches.Empty());
  EXPECT_EQ(design.stitches.Head(), nullptr);
}

// ---------------------------------------------------------------------------
// SplitLongStitches

struct SplitCase {
  const char* name;
  int32_t maxStep;
  bool pureJumps;
  Moves input;
  Moves expected;
};

class SplitLongStitchesTest : public testing::TestWithParam<SplitCase> {};

TEST_P(SplitLongStitchesTest, CutsLongMoves) {
  const SplitCase& c = GetParam();
  Design design = MakeDesign(c.input);
  design.SplitLongStitches(c.maxStep, 0, c.pureJumps);
  EXPECT_EQ(ReadMoves(design), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SplitLongStitchesTest,
    testing::Values(
        SplitCase{"AxisMoveLeavesZeroStitch", 121, false,
                  {{300, 0, 0}},
                  {{100, 0, J}, {100, 0, J}, {100, 0, J}, {0, 0, 0}}},
        SplitCase{"AxisMovePureJumpsDropsNode", 121, true,
                  {{300, 0, 0}},
                  {{100, 0, J}, {100, 0, J}, {100, 0, J}}},
        SplitCase{"ExactMultipleNeedsNoExtraStep", 121, false,
                  {{242, 0, 0}},
                  {{121, 0, J}, {121, 0, J}, {0, 0, 0}}},
        SplitCase{"OneUnitOverLimit", 121, false,
                  {{122, 0, 0}},
                  {{61, 0, J}, {61, 0, J}, {0, 0, 0}}},
        SplitCase{"AtLimitUntouched", 121, false,
                  {{121, -121, 0}, {-121, 121, J}},
                  {{121, -121, 0}, {-121, 121, J}}},
        // 250/3 and 130/3 truncate to 83 and 43; the rest (1, 1) goes to the
        // last step.
        SplitCase{"DiagonalRemainderOnLastStep", 121, false,
                  {{250, 130, 0}},
                  {{83, 43, J}, {83, 43, J}, {84, 44, J}, {0, 0, 0}}},
        // Truncation is towards zero, so the remainder is negative too; the
        // split jump becomes a zero stitch.
        SplitCase{"NegativeDiagonalTruncatesTowardZero", 121, false,
                  {{-250, -130, J}},
                  {{-83, -43, J}, {-83, -43, J}, {-84, -44, J}, {0, 0, 0}}},
        // Only dy is over the limit, but both axes are stepped.
        SplitCase{"OneAxisOverLimitStepsBoth", 121, false,
                  {{50, 301, 0}},
                  {{16, 100, J}, {16, 100, J}, {18, 101, J}, {0, 0, 0}}},
        SplitCase{"EveryNodeIsVisited", 121, false,
                  {{300, 0, 0}, {5, 5, 0}, {0, -250, J}},
                  {{100, 0, J}, {100, 0, J}, {100, 0, J}, {0, 0, 0}, {5, 5, 0},
                   {0, -83, J}, {0, -83, J}, {0, -84, J}, {0, 0, 0}}},
        SplitCase{"LongStopBecomesPureStopThenSplit", 121, false,
                  {{10, 0, 0}, {300, 0, S | J}},
                  {{10, 0, 0}, {0, 0, S}, {100, 0, J}, {100, 0, J}, {100, 0, J}, {0, 0, 0}}},
        SplitCase{"ShortStopStitchSplitOff", 121, false,
                  {{10, 0, 0}, {50, 0, S}},
                  {{10, 0, 0}, {0, 0, S}, {50, 0, 0}}},
        SplitCase{"ShortStopJumpKeepsJumpBit", 121, false,
                  {{10, 0, 0}, {50, 0, S | J}},
                  {{10, 0, 0}, {0, 0, S}, {50, 0, J}}},
        SplitCase{"EmptyStopLosesJumpBit", 121, false,
                  {{10, 0, 0}, {0, 0, S | J}, {5, 0, 0}},
                  {{10, 0, 0}, {0, 0, S}, {5, 0, 0}}},
        SplitCase{"PureJumpsMovesStopToFirstStep", 121, true,
                  {{10, 0, 0}, {300, 0, S}},
                  {{10, 0, 0}, {100, 0, J | S}, {100, 0, J}, {100, 0, J}}},
        SplitCase{"PureJumpsLeavesShortStopsAlone", 121, true,
                  {{10, 0, 0}, {50, 0, S | J}, {0, 0, S}},
                  {{10, 0, 0}, {50, 0, S | J}, {0, 0, S}}},
        // 29 at 10: three steps of 9, the last grows to 11 and is over the
        // limit. With pureJumps it is checked again and split into 5 and 6.
        SplitCase{"PureJumpsRechecksLastStep", 10, true,
                  {{29, 0, 0}},
                  {{9, 0, J}, {9, 0, J}, {5, 0, J}, {6, 0, J}}},
        SplitCase{"InsertedStepsNotRecheckedOtherwise", 10, false,
                  {{29, 0, 0}},
                  {{9, 0, J}, {9, 0, J}, {11, 0, J}, {0, 0, 0}}},
        // A step of 50000 narrowed to 16 bits is -15536; the last step takes
        // the whole rest so that the sum of the moves is kept.
        SplitCase{"StepsNarrowedTo16Bits", 50000, false,
                  {{100000, 0, 0}},
                  {{-15536, 0, J}, {115536, 0, J}, {0, 0, 0}}}),
    CaseName());

// ---------------------------------------------------------------------------
// RotateQuarter

TEST(RotateQuarter, TurnsMovesAndSwapsBoundsWithoutRecomputing) {
  struct Case {
    int32_t direction;
    Moves expected;
  };
  // s is +1 for direction >= 1, else -1; (dx, dy) becomes (dy * s, -dx * s).
  const Moves clockwise = {{5, -3, 0}, {2, 7, J}, {-4, 0, S}};
  const Moves anticlockwise = {{-5, 3, 0}, {-2, -7, J}, {4, 0, S}};
  for (const Case& c : {Case{1, clockwise}, Case{2, clockwise}, Case{0, anticlockwise},
                        Case{-1, anticlockwise}}) {
    SCOPED_TRACE("direction " + std::to_string(c.direction));
    Design design = MakeDesign({{3, 5, 0}, {-7, 2, J}, {0, -4, S}});
    SetBounds(design, {10, 20, -3, -4});
    design.RotateQuarter(c.direction);
    EXPECT_EQ(ReadMoves(design), c.expected);
    EXPECT_EQ(BoundsOf(design), (Bounds{20, 10, -4, -3}));
  }
}

// ---------------------------------------------------------------------------
// StripLeadingMoves

TEST(StripLeadingMoves, DropsLeadingJumpsAndEmptyMovesThenCentres) {
  Design design = MakeDesign(
      {{100, 100, J}, {0, 0, 0}, {0, 0, S}, {10, 0, 0}, {0, 6, 0}, {50, 0, J}, {1, 0, 0}});
  design.StripLeadingMoves();
  // Left: positions (10, 0), (10, 6), (60, 6), (61, 6); cx 35, cy 3. The
  // dropped moves are not passed on, and the later jump stays.
  EXPECT_EQ(ReadMoves(design),
            (Moves{{-35, -3, J}, {10, 0, 0}, {0, 6, 0}, {50, 0, J}, {1, 0, 0}}));
  EXPECT_EQ(BoundsOf(design), (Bounds{26, 3, -25, -3}));
}

TEST(StripLeadingMoves, DesignOfOnlyMovesEndsEmptyWithBoundsKept) {
  Design design = MakeDesign({{100, 100, J}, {0, 0, 0}, {5, 5, J}});
  SetBounds(design, {1, 2, 3, 4});
  design.StripLeadingMoves();
  EXPECT_TRUE(ReadMoves(design).empty());
  EXPECT_EQ(BoundsOf(design), (Bounds{1, 2, 3, 4}));
}

// ---------------------------------------------------------------------------
// NormalizeColorStops

struct NormalizeCase {
  const char* name;
  Moves input;
  int threadCount;
  Moves expected;
  std::vector<std::string> threads;
};

class NormalizeColorStopsTest : public testing::TestWithParam<NormalizeCase> {};

TEST_P(NormalizeColorStopsTest, MakesStopsPureAndThreadsMatch) {
  const NormalizeCase& c = GetParam();
  Design design = MakeDesign(c.input);
  design.threads = NumberedThreads(c.threadCount);
  EXPECT_EQ(design.NormalizeColorStops(), 0);
  EXPECT_EQ(ReadMoves(design), c.expected);
  EXPECT_EQ(ThreadNames(design), c.threads);
}

const Moves kTwoStops = {{10, 0, 0}, {0, 0, S}, {10, 0, 0}, {0, 0, S}, {10, 0, 0}};

INSTANTIATE_TEST_SUITE_P(
    Cases, NormalizeColorStopsTest,
    testing::Values(
        NormalizeCase{"SurplusThreadsRemovedFromEnd", kTwoStops, 5, kTwoStops, {"T0", "T1", "T2"}},
        NormalizeCase{"MissingThreadsCopyTheLast", kTwoStops, 2, kTwoStops, {"T0", "T1", "T1"}},
        NormalizeCase{"SingleThreadCopied", kTwoStops, 1, kTwoStops, {"T0", "T0", "T0"}},
        NormalizeCase{"StopWithMoveBecomesStopAndStitch", {{10, 0, 0}, {5, 6, S}, {10, 0, 0}}, 2,
                      {{10, 0, 0}, {0, 0, S}, {5, 6, 0}, {10, 0, 0}}, {"T0", "T1"}},
        NormalizeCase{"StopWithJumpBecomesStopAndJump", {{10, 0, 0}, {5, 6, S | J}, {10, 0, 0}}, 2,
                      {{10, 0, 0}, {0, 0, S}, {5, 6, J}, {10, 0, 0}}, {"T0", "T1"}},
        NormalizeCase{"ZeroStitchAnchorsJumpBeforeStop",
                      {{10, 0, 0}, {20, 0, J}, {0, 0, S}, {10, 0, 0}}, 2,
                      {{10, 0, 0}, {20, 0, J}, {0, 0, 0}, {0, 0, S}, {10, 0, 0}}, {"T0", "T1"}},
        // The jump split off the first stop is the previous node of the
        // second stop, so that one gets its anchor stitch too.
        NormalizeCase{"SplitOffJumpAnchoredBeforeNextStop",
                      {{10, 0, 0}, {5, 0, S | J}, {0, 0, S}, {1, 0, 0}}, 3,
                      {{10, 0, 0}, {0, 0, S}, {5, 0, J}, {0, 0, 0}, {0, 0, S}, {1, 0, 0}},
                      {"T0", "T1", "T2"}},
        NormalizeCase{"HeadStopClearedAndNotCounted",
                      {{0, 0, S}, {10, 0, 0}, {0, 0, S}, {1, 0, 0}}, 3,
                      {{0, 0, 0}, {10, 0, 0}, {0, 0, S}, {1, 0, 0}}, {"T0", "T1"}},
        NormalizeCase{"HeadJumpStopKeepsJump", {{5, 5, S | J}, {10, 0, 0}}, 1,
                      {{5, 5, J}, {10, 0, 0}}, {"T0"}},
        NormalizeCase{"TrailingJumpsRemoved", {{10, 0, 0}, {5, 0, J}, {6, 0, J}}, 2,
                      {{10, 0, 0}}, {"T0"}}),
    CaseName());

TEST(NormalizeColorStops, AddedThreadsAreFullCopiesOfTheLast) {
  Design design = MakeDesign(kTwoStops);
  ThreadColor last = NamedThread("Gold", Rgb(200, 160, 20));
  last.brand = "Madeira";
  last.catalogNumber = "1070";
  design.threads = {NamedThread("Black"), last};
  ASSERT_EQ(design.NormalizeColorStops(), 0);
  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[2].colorName, "Gold");
  EXPECT_EQ(design.threads[2].rgb, Rgb(200, 160, 20));
  EXPECT_EQ(design.threads[2].brand, "Madeira");
  EXPECT_EQ(design.threads[2].catalogNumber, "1070");
}

TEST(NormalizeColorStops, ReturnCodes) {
  {
    SCOPED_TRACE("no stitches");
    Design design;
    design.threads = NumberedThreads(2);
    EXPECT_EQ(design.NormalizeColorStops(), 1);
    EXPECT_EQ(design.threads.size(), 2u);
  }
  {
    SCOPED_TRACE("neither stitches nor threads: stitches are checked first");
    Design design;
    EXPECT_EQ(design.NormalizeColorStops(), 1);
  }
  {
    SCOPED_TRACE("no threads: nothing changes, not even the head stop");
    Design design = MakeDesign({{1, 0, S}, {2, 0, 0}, {3, 0, J}});
    EXPECT_EQ(design.NormalizeColorStops(), 2);
    EXPECT_EQ(ReadMoves(design), (Moves{{1, 0, S}, {2, 0, 0}, {3, 0, J}}));
    EXPECT_TRUE(design.threads.empty());
  }
}

// ---------------------------------------------------------------------------
// ComputeThreadStats

struct ThreadStats {
  int32_t stitchCount = 0;
  int32_t threadLength = 0;
  int32_t startX = 0;
  int32_t startY = 0;
  int32_t minX = 0;
  int32_t maxX = 0;
  int32_t minY = 0;
  int32_t maxY = 0;
  bool operator==(const ThreadStats&) const = default;
};

void PrintTo(const ThreadStats& s, std::ostream* os) {
  *os << "{count " << s.stitchCount << ", length " << s.threadLength << ", start (" << s.startX
      << ", " << s.startY << "), x " << s.minX << ".." << s.maxX << ", y " << s.minY << ".."
      << s.maxY << "}";
}

ThreadStats StatsOf(const ThreadColor& t) {
  return {t.stitchCount, t.threadLength, t.startX, t.startY, t.minX, t.maxX, t.minY, t.maxY};
}

void SetStats(ThreadColor& t, const ThreadStats& s) {
  t.stitchCount = s.stitchCount;
  t.threadLength = s.threadLength;
  t.startX = s.startX;
  t.startY = s.startY;
  t.minX = s.minX;
  t.maxX = s.maxX;
  t.minY = s.minY;
  t.maxY = s.maxY;
}

const ThreadStats kUntouched = {99, 99, 99, 99, 99, 99, 99, 99};

TEST(ComputeThreadStats, CountsLengthsStartsAndExtentsPerColour) {
  Design design = MakeDesign({
      {10, 20, J},   // (10, 20)  jump before the first stitch: no extent
      {3, 4, 0},     // (13, 24)  first stitch
      {0, 0, 0},     // (13, 24)
      {-21, 0, J},   // (-8, 24)  jump after a stitch widens the extent
      {1, 1, 0},     // (-7, 25)
      {2, -3, S},    // (-5, 22)  second colour starts at (-7, 25)
      {5, 0, J},     // (0, 22)
      {0, 0, S},     // (0, 22)   third colour starts at (0, 22)
      {4, 3, 0},     // (4, 25)
      {-10, -10, 0}, // (-6, 15)
      {17, 0, J},    // (11, 15)
  });
  design.threads = NumberedThreads(3);
  design.ComputeThreadStats();
  // Lengths are truncated per node: 22 + 5 + 0 + 21 + 1 = 49 (not 49.77),
  // 7500 + trunc(73.5) = 7573.
  EXPECT_EQ(StatsOf(design.threads[0]), (ThreadStats{5, 7573, 0, 0, -8, 13, 24, 25}));
  // The stop itself does not count; 3 + 5 = 8, 7500 + 12. No stitch: the
  // extent keeps its starting values.
  EXPECT_EQ(StatsOf(design.threads[1]),
            (ThreadStats{1, 7512, -7, 25, 10000, -10000, 10000, -10000}));
  // 0 + 5 + 14 + 17 = 36, 7500 + 54.
  EXPECT_EQ(StatsOf(design.threads[2]), (ThreadStats{3, 7554, 0, 22, -6, 11, 15, 25}));
  EXPECT_EQ(design.DisplayedStitchCount(), 9);
}

TEST(ComputeThreadStats, StopsBeyondTheThreadsAreNotStored) {
  Design design = MakeDesign({{1, 0, 0}, {0, 0, S}, {2, 0, 0}});
  design.threads = NumberedThreads(1);
  design.ComputeThreadStats();
  // Only the first colour is stored: 7500 + trunc(1.5).
  EXPECT_EQ(StatsOf(design.threads[0]), (ThreadStats{1, 7501, 0, 0, 1, 1, 0, 0}));
  EXPECT_EQ(design.threads.size(), 1u);
}

TEST(ComputeThreadStats, ThreadsWithoutStopsAreLeftAlone) {
  Design design = MakeDesign({{3, 4, 0}});
  design.threads = NumberedThreads(2);
  SetStats(design.threads[1], kUntouched);
  design.ComputeThreadStats();
  EXPECT_EQ(StatsOf(design.threads[0]), (ThreadStats{1, 7507, 0, 0, 3, 3, 4, 4}));
  EXPECT_EQ(StatsOf(design.threads[1]), kUntouched);
}

TEST(ComputeThreadStats, EmptyStitchesChangeNothing) {
  Design design;
  design.threads = NumberedThreads(1);
  SetStats(design.threads[0], kUntouched);
  design.ComputeThreadStats();
  EXPECT_EQ(StatsOf(design.threads[0]), kUntouched);

  Design noThreads = MakeDesign({{3, 4, 0}});
  noThreads.ComputeThreadStats();
  EXPECT_TRUE(noThreads.threads.empty());
}

// ---------------------------------------------------------------------------
// AssignColorGroups

TEST(AssignColorGroups, EqualBrandAnyCaseAndColourShareAGroup) {
  const uint32_t red = Rgb(255, 0, 0);
  const uint32_t blue = Rgb(0, 0, 255);
  const uint32_t green = Rgb(0, 255, 0);
  struct Entry {
    const char* brand;
    uint32_t rgb;
    int32_t group;
  };
  // A repeat takes the earlier group and does not use up a number.
  const std::vector<Entry> entries = {
      {"Sulky", red, 0},   {"Sulky", blue, 1},  {"SULKY", red, 0},
      {"Madeira", red, 2}, {"sulky", blue, 1},  {"Sulky", green, 3},
      {"madeira", red, 2}, {"", red, 4},        {"", red, 4},
  };
  Design design;
  for (const Entry& e : entries) {
    ThreadColor thread = NamedThread("x", e.rgb);
    thread.brand = e.brand;
    thread.colorGroup = -7;
    design.threads.push_back(thread);
  }
  design.AssignColorGroups();
  for (size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(design.threads[i].colorGroup, entries[i].group) << "thread " << i;
  }
}

// ---------------------------------------------------------------------------
// ReclassifyJumps

// A satin column whose back-and-forth moves a format marked as jumps. The
// first jump of the column follows a plain stitch and has no reverse
// neighbour before it, so it stays a jump.
const Moves kSatinColumn = {{10, 0, 0},   {100, 2, J}, {-100, 2, J},
                            {100, 2, J},  {-100, 2, J}, {10, 0, 0}};
const std::vector<uint32_t> kSatinColumnReclassified = {0, J, 0, 0, 0, 0};

std::vector<uint32_t> FlagsOf(const Moves& moves) {
  std::vector<uint32_t> flags;
  for (const Move& move : moves) flags.push_back(move.flags);
  return flags;
}

TEST(ReclassifyJumps, SatinColumnJumpsBecomeStitchesUnlessFormatIsExempt) {
  struct Case {
    const char* name;
    std::vector<uint32_t> expected;
  };
  const std::vector<uint32_t> unchanged = FlagsOf(kSatinColumn);
  for (const Case& c : {
           Case{"C:\\designs\\column.exp", kSatinColumnReclassified},
           Case{"C:\\designs\\column.dst", kSatinColumnReclassified},
           // Only "phdc" is exempt, not "phd".
           Case{"C:\\designs\\column.phd", kSatinColumnReclassified},
           // Moves of 100 are under the pcs limit of 127: nothing is marked
           // first, and the general pass works as for any other format.
           Case{"C:\\designs\\column.pcs", kSatinColumnReclassified},
           Case{"C:\\designs\\column.pes", unchanged},
           Case{"C:\\designs\\column.pec", unchanged},
           Case{"C:\\designs\\column.phc", unchanged},
           Case{"C:\\designs\\column.phb", unchanged},
           Case{"C:\\designs\\column.phdc", unchanged},
       }) {
    SCOPED_TRACE(c.name);
    Design design = MakeDesign(kSatinColumn);
    design.name = c.name;
    design.ReclassifyJumps();
    EXPECT_EQ(ReadFlags(design), c.expected);
  }
}

TEST(ReclassifyJumps, OnlyMovesLongerThan80AreTurned) {
  struct Case {
    const char* what;
    Moves input;
    std::vector<uint32_t> expected;
  };
  for (const Case& c : {
           Case{"satin of 80 stays",
                {{10, 0, 0}, {80, 0, J}, {-80, 0, J}, {80, 0, J}, {-80, 0, J}, {10, 0, 0}},
                {0, J, J, J, J, 0}},
           Case{"satin of 81 turns",
                {{10, 0, 0}, {81, 0, J}, {-81, 0, J}, {81, 0, J}, {-81, 0, J}, {10, 0, 0}},
                {0, J, 0, 0, 0, 0}},
           Case{"lone jump of 80 in a straight line stays",
                {{10, 0, 0}, {10, 0, 0}, {80, 0, J}, {10, 0, 0}},
                {0, 0, J, 0}},
           Case{"lone jump of 100 in a straight line turns",
                {{10, 0, 0}, {10, 0, 0}, {100, 0, J}, {10, 0, 0}},
                {0, 0, 0, 0}},
       }) {
    SCOPED_TRACE(c.what);
    Design design = MakeDesign(c.input);
    design.name = "a.exp";
    design.ReclassifyJumps();
    EXPECT_EQ(ReadFlags(design), c.expected);
  }
}

TEST(ReclassifyJumps, TravelJumpsStay) {
  struct Case {
    const char* what;
    Moves input;
  };
  for (const Case& c : {
           Case{"jump off the line of its neighbours",
                {{10, 0, 0}, {10, 0, 0}, {300, 400, J}, {10, 0, 0}, {10, 0, 0}}},
           // In line, but a run of jumps is travel, not a long stitch.
           Case{"two jumps in line", {{10, 0, 0}, {100, 0, J}, {100, 0, J}, {10, 0, 0}}},
       }) {
    SCOPED_TRACE(c.what);
    Design design = MakeDesign(c.input);
    design.name = "a.exp";
    design.ReclassifyJumps();
    EXPECT_EQ(ReadFlags(design), FlagsOf(c.input));
  }
}

TEST(ReclassifyJumps, PcsMarksMovesOver127AsJumps) {
  // (127, 0) is exactly 127 and stays; (90, 90) is 127.3 and becomes a jump,
  // which the general pass keeps, as it lies off its neighbours' line.
  const Moves input = {{10, 0, 0}, {127, 0, 0}, {0, 10, 0}, {90, 90, 0}, {0, 10, 0}};
  Design pcs = MakeDesign(input);
  pcs.name = "C:\\designs\\flower.pcs";
  pcs.ReclassifyJumps();
  EXPECT_EQ(ReadMoves(pcs),
            (Moves{{10, 0, 0}, {127, 0, 0}, {0, 10, 0}, {90, 90, J}, {0, 10, 0}}));

  Design other = MakeDesign(input);
  other.name = "C:\\designs\\flower.exp";
  other.ReclassifyJumps();
  EXPECT_EQ(ReadMoves(other), input);
}

TEST(ReclassifyJumps, PcsLongStitchInStraightLineIsTurnedBack) {
  // Marked as a jump first, then found to be a straight long stitch.
  const Moves input = {{10, 0, 0}, {10, 0, 0}, {200, 0, 0}, {10, 0, 0}};
  Design design = MakeDesign(input);
  design.name = "line.pcs";
  design.ReclassifyJumps();
  EXPECT_EQ(ReadMoves(design), input);
}

TEST(ReclassifyJumps, EmptyDesign) {
  Design design;
  design.name = "a.pcs";
  design.ReclassifyJumps();
  EXPECT_TRUE(design.stitches.Empty());
}

// ---------------------------------------------------------------------------
// AnalyseColor

struct AnalyseCase {
  const char* name;
  uint32_t r, g, b;
  int32_t sector, saturation, value, hue;
};

class AnalyseColorTest : public testing::TestWithParam<AnalyseCase> {};

TEST_P(AnalyseColorTest, FillsAnalysisSlots) {
  const AnalyseCase& c = GetParam();
  ThreadColor thread;
  thread.rgb = Rgb(c.r, c.g, c.b);
  thread.AnalyseColor();
  const auto& a = thread.colorAnalysis;
  EXPECT_EQ(a[kRed], static_cast<int32_t>(c.r));
  EXPECT_EQ(a[kGreen], static_cast<int32_t>(c.g));
  EXPECT_EQ(a[kBlue], static_cast<int32_t>(c.b));
  EXPECT_EQ(a[kRgbSum], static_cast<int32_t>(c.r + c.g + c.b));
  EXPECT_EQ(a[kValue], c.value);
  EXPECT_EQ(a[kHueSector], c.sector);
  EXPECT_EQ(a[kSaturation], c.saturation);
  // Without a hue the rules leave the hue slot alone.
  if (c.sector != -1) {
    EXPECT_EQ(a[kHue], c.hue);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AnalyseColorTest,
    testing::Values(
        AnalyseCase{"Black", 0, 0, 0, -1, -1, 0, 0},
        AnalyseCase{"White", 255, 255, 255, -1, -1, 255, 0},
        AnalyseCase{"Grey", 128, 128, 128, -1, -1, 128, 0},
        AnalyseCase{"Red", 255, 0, 0, 1, 255, 255, 0},
        AnalyseCase{"Green", 0, 255, 0, 5, 255, 255, 120},
        AnalyseCase{"Blue", 0, 0, 255, 9, 255, 255, 240},
        AnalyseCase{"Yellow", 255, 255, 0, 3, 255, 255, 60},
        AnalyseCase{"Cyan", 0, 255, 255, 7, 255, 255, 180},
        AnalyseCase{"Magenta", 255, 0, 255, 11, 255, 255, 300},
        // 180/210*255 = 218.57; 70/180*60 = 23.33.
        AnalyseCase{"Orange", 210, 100, 30, 1, 218, 210, 23},
        // Negative hue -23.33 wraps to 336.67; sector (1 + 11) mod 12 = 0.
        AnalyseCase{"Rose", 220, 40, 110, 0, 208, 220, 336},
        // (50/170 + 2) * 60 = 137.65.
        AnalyseCase{"Leaf", 40, 210, 90, 5, 206, 210, 137},
        // (70/190 + 4) * 60 = 262.11.
        AnalyseCase{"Violet", 100, 30, 220, 9, 220, 220, 262},
        // Sum below 20 counts as no colour at all.
        AnalyseCase{"SumBelow20", 10, 0, 5, -1, -1, 10, 0},
        AnalyseCase{"Sum19", 19, 0, 0, -1, -1, 19, 0},
        AnalyseCase{"Sum20", 20, 0, 0, 1, 255, 20, 0},
        // Sum 750 still has a hue; 8/254*255 = 8.03; hue exactly 30 is sector 2.
        AnalyseCase{"Sum750", 254, 250, 246, 2, 8, 254, 30},
        AnalyseCase{"Sum751", 254, 251, 246, -1, -1, 254, 0}),
    CaseName());

TEST(AnalyseColor, RedIsTheLowByte) {
  ThreadColor thread;
  thread.rgb = 0x00C86432;  // blue 0xC8, green 0x64, red 0x32
  thread.AnalyseColor();
  EXPECT_EQ(thread.colorAnalysis[kRed], 0x32);
  EXPECT_EQ(thread.colorAnalysis[kGreen], 0x64);
  EXPECT_EQ(thread.colorAnalysis[kBlue], 0xC8);
}

// ---------------------------------------------------------------------------
// Default palette and AppendThread

struct PaletteEntry {
  int index;
  const char* name;
  uint32_t r, g, b;
};

TEST(DefaultPaletteColor, ListedEntries) {
  const std::vector<PaletteEntry> listed = {
      {0, "Black", 0, 0, 0},
      {1, "Blue", 0, 0, 255},
      {2, "Light Green", 0, 255, 0},
      {3, "Red", 255, 0, 0},
      {4, "Purple", 255, 0, 255},
      {5, "Yellow", 255, 255, 0},
      {6, "Gray", 127, 127, 127},
      {7, "Light Blue", 51, 154, 255},
      {8, "Green", 51, 204, 102},
      {9, "Orange", 255, 127, 0},
      {10, "Pink", 255, 160, 180},
      {11, "Brown", 153, 75, 0},
      {12, "White", 255, 255, 255},
      {13, "Dark Blue", 0, 0, 127},
      {14, "Dark Green", 0, 127, 0},
      {15, "Dark Red", 127, 0, 0},
      {16, "Light Red", 255, 127, 127},
      {17, "Dark Purple", 127, 0, 127},
      {18, "Light Purple", 255, 127, 255},
      {19, "Dark Yellow", 200, 200, 0},
      {20, "Light Yellow", 255, 255, 153},
      {21, "Dark Gray", 60, 60, 60},
      {23, "Dark Orange", 232, 63, 0},
      {24, "Light Orange", 255, 165, 65},
      {25, "Dark Pink", 255, 102, 122},
      {26, "Light Pink", 255, 204, 204},
      {27, "Dark Brown", 115, 40, 0},
      {28, "Light Brown", 175, 90, 10},
      // The second dark set is one step brighter than 13, 14, 15 and 17.
      {33, "Dark Blue", 0, 0, 128},
      {34, "Dark Green", 0, 128, 0},
      {35, "Dark Red", 128, 0, 0},
      {36, "Dark Purple", 128, 0, 128},
      {37, "Dark Yellow", 200, 200, 0},
      {38, "Dark Gray", 60, 60, 60},
      {41, "Dark Orange", 232, 63, 0},
      {42, "Dark Pink", 255, 102, 122},
      {43, "Dark Brown", 115, 40, 0},
  };
  for (const PaletteEntry& e : listed) {
    SCOPED_TRACE("index " + std::to_string(e.index));
    const ThreadColor thread = DefaultPaletteColor(e.index);
    EXPECT_EQ(thread.colorName, e.name);
    EXPECT_EQ(thread.rgb, Rgb(e.r, e.g, e.b));
  }
}

TEST(DefaultPaletteColor, UnlistedIndicesAreLightGray) {
  for (int index : {22, 29, 30, 31, 32, 39, 40, 44, 100, -1}) {
    SCOPED_TRACE("index " + std::to_string(index));
    const ThreadColor thread = DefaultPaletteColor(index);
    EXPECT_EQ(thread.colorName, "Light Gray");
    EXPECT_EQ(thread.rgb, Rgb(192, 192, 192));
  }
}

TEST(DefaultPaletteColor, ColourIsStoredRedLow) {
  EXPECT_EQ(DefaultPaletteColor(3).rgb, 0x000000FFu);   // Red
  EXPECT_EQ(DefaultPaletteColor(1).rgb, 0x00FF0000u);   // Blue
  EXPECT_EQ(DefaultPaletteColor(7).rgb, 0x00FF9A33u);   // Light Blue 51, 154, 255
  EXPECT_NE(DefaultPaletteColor(13).rgb, DefaultPaletteColor(33).rgb);
}

TEST(DefaultPaletteIndex, WrapsAfter27) {
  const std::vector<std::pair<size_t, int>> cases = {
      {0, 0}, {1, 1}, {27, 27}, {28, 0}, {29, 1}, {55, 27}, {56, 0}};
  for (const auto& [count, index] : cases) {
    EXPECT_EQ(DefaultPaletteIndex(count), index) << "thread count " << count;
  }
}

TEST(AppendThread, AddsThreadAndPureStopAtTail) {
  Design design = MakeDesign({{10, 0, 0}, {0, 5, J}});
  design.threads = NumberedThreads(1);
  design.AppendThread(NamedThread("Added", Rgb(1, 2, 3)));
  EXPECT_EQ(ReadMoves(design), (Moves{{10, 0, 0}, {0, 5, J}, {0, 0, S}}));
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[1].colorName, "Added");
  EXPECT_EQ(design.threads[1].rgb, Rgb(1, 2, 3));
}

TEST(AppendThread, TwentyNinthDefaultColourIsBlackAgain) {
  Design design;
  for (int i = 0; i < 29; ++i) {
    design.AppendThread(DefaultPaletteColor(DefaultPaletteIndex(design.threads.size())));
  }
  ASSERT_EQ(design.threads.size(), 29u);
  EXPECT_EQ(design.threads[27].colorName, "Dark Brown");
  EXPECT_EQ(design.threads[28].colorName, "Black");
  EXPECT_EQ(design.threads[28].rgb, 0u);
  EXPECT_EQ(design.stitches.Size(), 29u);
}

// ---------------------------------------------------------------------------
// Clear and assignment

Design FilledDesign() {
  Design design = MakeDesign({{10, 0, J}, {5, 5, 0}, {0, 0, S}, {1, 1, 0}});
  design.name = "C:\\designs\\rose.pes";
  ThreadColor thread = NamedThread("Rose", Rgb(220, 40, 110));
  thread.properties.push_back({"Note", 1, "soft", 7, {1, 2, 3}});
  design.threads = {thread, NamedThread("Leaf")};
  design.fileThreads = {NamedThread("FileThread")};
  SetBounds(design, {11, 12, -13, -14});
  design.notes = "notes";
  design.formatVersion = 6;
  design.hoopWidth = 130;
  design.hoopHeight = 180;
  design.hoopRotation = 1;
  design.fitRotation = -1;
  design.sourceFormat = 600;
  design.blobWord = 77;
  design.properties.push_back({"Author", 0, "Ada", 0, {9, 8}});
  return design;
}

TEST(Clear, EmptiesContentButKeepsBoundsAndFormatFields) {
  Design design = FilledDesign();
  design.Clear();
  EXPECT_TRUE(design.stitches.Empty());
  EXPECT_EQ(design.stitches.Head(), nullptr);
  EXPECT_EQ(design.stitches.Tail(), nullptr);
  EXPECT_TRUE(design.threads.empty());
  EXPECT_TRUE(design.properties.empty());
  EXPECT_TRUE(design.name.empty());
  EXPECT_TRUE(design.notes.empty());
  EXPECT_EQ(design.hoopRotation, 0);
  EXPECT_EQ(design.fitRotation, 0);
  // Left alone on purpose.
  ASSERT_EQ(design.fileThreads.size(), 1u);
  EXPECT_EQ(design.fileThreads[0].colorName, "FileThread");
  EXPECT_EQ(BoundsOf(design), (Bounds{11, 12, -13, -14}));
  EXPECT_EQ(design.formatVersion, 6);
  EXPECT_EQ(design.hoopWidth, 130);
  EXPECT_EQ(design.hoopHeight, 180);
  EXPECT_EQ(design.sourceFormat, 600);
  EXPECT_EQ(design.blobWord, 77);
}

TEST(Assignment, CopiesDesignButNotFileThreadsVersionOrHoop) {
  const Design source = FilledDesign();
  Design target = MakeDesign({{1, 2, 0}, {3, 4, 0}, {5, 6, 0}});
  target.threads = NumberedThreads(4);
  target.fileThreads = {NamedThread("Own1"), NamedThread("Own2")};
  target.formatVersion = 1;
  target.hoopWidth = 100;
  target.hoopHeight = 100;
  target.properties.push_back({"Old", 0, "", 0, {}});

  target = source;

  EXPECT_EQ(ReadMoves(target), ReadMoves(source));
  EXPECT_NE(target.stitches.Head(), source.stitches.Head());
  EXPECT_EQ(ThreadNames(target), (std::vector<std::string>{"Rose", "Leaf"}));
  ASSERT_EQ(target.threads[0].properties.size(), 1u);
  EXPECT_EQ(target.threads[0].properties[0].data, (std::vector<uint8_t>{1, 2, 3}));
  ASSERT_EQ(target.properties.size(), 1u);
  EXPECT_EQ(target.properties[0].label, "Author");
  EXPECT_EQ(target.properties[0].data, (std::vector<uint8_t>{9, 8}));
  EXPECT_EQ(target.name, source.name);
  EXPECT_EQ(BoundsOf(target), BoundsOf(source));
  EXPECT_EQ(target.sourceFormat, 600);
  EXPECT_EQ(target.blobWord, 77);
  EXPECT_EQ(target.fitRotation, -1);
  EXPECT_EQ(target.hoopRotation, 1);
  EXPECT_EQ(target.notes, "notes");
  // Not copied: the target keeps its own.
  ASSERT_EQ(target.fileThreads.size(), 2u);
  EXPECT_EQ(target.fileThreads[0].colorName, "Own1");
  EXPECT_EQ(target.formatVersion, 1);
  EXPECT_EQ(target.hoopWidth, 100);
  EXPECT_EQ(target.hoopHeight, 100);
}

TEST(Assignment, StitchesAreADeepCopy) {
  Design source = MakeDesign({{1, 2, 0}, {3, 4, J}});
  Design target;
  target = source;
  source.stitches.Head()->dx = 50;
  source.stitches.PushBack(9, 9, 0);
  EXPECT_EQ(ReadMoves(target), (Moves{{1, 2, 0}, {3, 4, J}}));
  target.stitches.Remove(target.stitches.Head());
  EXPECT_EQ(ReadMoves(source), (Moves{{50, 2, 0}, {3, 4, J}, {9, 9, 0}}));
}

TEST(Assignment, SelfAssignmentKeepsTheDesign) {
  Design design = FilledDesign();
  const Moves before = ReadMoves(design);
  Design& alias = design;
  design = alias;
  EXPECT_EQ(ReadMoves(design), before);
  EXPECT_EQ(ThreadNames(design), (std::vector<std::string>{"Rose", "Leaf"}));
  EXPECT_EQ(design.properties.size(), 1u);
  EXPECT_EQ(design.name, "C:\\designs\\rose.pes");
}

TEST(Assignment, CopyConstructionStartsFromAnEmptyDesign) {
  const Design source = FilledDesign();
  const Design copy(source);
  EXPECT_EQ(ReadMoves(copy), ReadMoves(source));
  EXPECT_TRUE(copy.fileThreads.empty());
  EXPECT_EQ(copy.formatVersion, 0);
  EXPECT_EQ(copy.hoopWidth, 0);
  EXPECT_EQ(copy.hoopHeight, 0);
  EXPECT_EQ(copy.sourceFormat, 600);
}

}  // namespace
}  // namespace fennick
