#include "tools/auto_baste.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace fennick {
namespace {

using test::Node;

constexpr uint32_t kJ = STITCH_JUMP;
constexpr uint32_t kGreen = 0x00FF00;

// Each test gets empty preferences, so the built-in hoops apply.
class AutoBasteTest : public ::testing::Test {
 protected:
  test::ScratchFolder folder_;
};

// A centred width x height outline (both even, stitch units) in black.
Design Box(int32_t width, int32_t height, const std::string& name = "box.dst") {
  Design design = test::DesignOf({{-width / 2, -height / 2, kJ}, {width, 0, 0}, {0, height, 0}}, {0});
  design.name = name;
  return design;
}

// The 100 x 60 box, edge 1 mm: the rectangle runs from (-60, -40) to (60, 40)
// and S = 96, so a tick is 9 and the crosshairs cut a 6 mm length to 24.
const std::vector<Node> kLock = {{-60, 40, kJ}, {0, 0, 0}, {10, 0, 0}, {-10, 0, 0}};

std::vector<Node> Joined(std::vector<Node> nodes, const std::vector<Node>& more) {
  nodes.insert(nodes.end(), more.begin(), more.end());
  return nodes;
}

TEST_F(AutoBasteTest, NodeSequenceOfASmallBaste) {
  struct Case {
    const char* what;
    BasteSettings settings;
    std::vector<Node> sides;  // after the lock
  };
  const Case cases[] = {
      {"crosshairs: runs of 24 to each middle, ticks of 9 inwards", BasteSettings{0, 6, 1, 1},
       {{24, 0, 0},  {24, 0, 0},  {12, 0, 0},  {0, 0, 0}, {0, -9, 0}, {0, 9, 0},  {0, 0, 0},   {24, 0, 0},
        {24, 0, 0},  {12, 0, 0},  {0, 0, 0},   {0, -24, 0}, {0, -16, 0}, {0, 0, 0}, {-9, 0, 0}, {9, 0, 0},
        {0, 0, 0},   {0, -24, 0}, {0, -16, 0}, {0, 0, 0}, {-24, 0, 0}, {-24, 0, 0}, {-12, 0, 0}, {0, 0, 0},
        {0, 9, 0},   {0, -9, 0},  {0, 0, 0},   {-24, 0, 0}, {-24, 0, 0}, {-12, 0, 0}, {0, 0, 0}, {0, 24, 0},
        {0, 16, 0},  {0, 0, 0},   {9, 0, 0},   {-9, 0, 0}, {0, 0, 0},  {0, 24, 0},  {0, 16, 0}}},
      {"a side of exactly twice the length: two stitches, no empty remainder", BasteSettings{0, 6, 0, 1},
       {{60, 0, 0}, {60, 0, 0}, {0, 0, 0}, {0, -60, 0}, {0, -20, 0}, {0, 0, 0}, {-60, 0, 0}, {-60, 0, 0},
        {0, 0, 0}, {0, 60, 0}, {0, 20, 0}}},
      {"a side shorter than the length is one stitch", BasteSettings{0, 10, 0, 1},
       {{96, 0, 0}, {24, 0, 0}, {0, 0, 0}, {0, -80, 0}, {0, 0, 0}, {-96, 0, 0}, {-24, 0, 0}, {0, 0, 0},
        {0, 80, 0}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Design design = Box(100, 60);
    AutoBaste(design, c.settings);
    EXPECT_EQ(test::Nodes(design), Joined(kLock, c.sides));
    ASSERT_EQ(design.threads.size(), 1u);
    EXPECT_EQ(design.threads[0].rgb, 0xFF0000u);  // alone on a black design: blue, not black
  }
}

TEST_F(AutoBasteTest, CombinedFileHasTheBasteThenAStopThenTheDesignFromTheCorner) {
  Design alone = Box(100, 60);
  AutoBaste(alone, BasteSettings{0, 6, 1, 1});
  Design design = Box(100, 60);
  design.threads.emplace_back().rgb = 0x0000FF;
  design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
  design.stitches.PushBack(-100, 0, 0);
  AutoBaste(design, BasteSettings{1, 6, 1, 1});
  // The design's head jump (-50, -30) now starts from the corner (-60, 40) and stays a jump.
  EXPECT_EQ(test::Nodes(design), Joined(test::Nodes(alone), {{0, 0, STITCH_COLORSTOP}, {10, -70, kJ}, {100, 0, 0},
                                                             {0, 60, 0}, {0, 0, STITCH_COLORSTOP}, {-100, 0, 0}}));
  EXPECT_EQ(test::Rgbs(design.threads), (std::vector<uint32_t>{0, 0, 0x0000FF}));  // the baste stays black
}

TEST_F(AutoBasteTest, MarginIsDroppedWhenItWouldLeaveTheHoop) {
  // A PCS hoop is 110 x 112 mm: the rectangle may reach 550 units left and right of the centre.
  struct Case {
    const char* name;
    int32_t width, edge;
    int32_t basteWidth;
  };
  const Case cases[] = {
      {"box.dst", 1000, 1, 1020},  // 300 mm hoop: margin kept
      {"box.dst", 1000, 0, 1000},  // edge 0: on the design's bounds
      {"box.pcs", 1080, 1, 1100},  // reaches 550: kept
      {"box.pcs", 1082, 1, 1082},  // passes 550: dropped
      {"box.pcs", 2000, 1, 2000},  // the design itself is too big: still basted, on its bounds
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << " " << c.width);
    Design design = Box(c.width, c.width, c.name);  // square, so that the ticks stay inside
    AutoBaste(design, BasteSettings{0, 6, 1, c.edge});
    EXPECT_EQ(design.maxX - design.minX, c.basteWidth);
    EXPECT_EQ(design.maxY - design.minY, c.basteWidth);
  }
}

TEST_F(AutoBasteTest, TinyDesignsCutTheLengthAndNeverLoopAndEmptyOnesAreLeftAlone) {
  struct Case {
    int32_t width, height, cross;
    int32_t longestStep;
    size_t nodes;
  };
  const Case cases[] = {
      {40, 20, 1, 9, 43},   // S = 36: length S / 4
      {40, 20, 0, 36, 13},  // length S
      {0, 0, 1, 10, 31},    // S = -4, length -1: each run one stitch
      {0, 0, 0, 20, 11},    // length -4
      {4, 2, 1, 12, 31},    // length 0
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << " cross " << c.cross);
    Design design = test::DesignOf({{-c.width / 2, -c.height / 2, kJ}, {c.width, c.height, 0}}, {kGreen});
    AutoBaste(design, BasteSettings{0, 6, c.cross, c.width == 40 ? 0 : 1});
    const std::vector<Node> nodes = test::Nodes(design);
    int32_t longest = 0;  // of the runs, past the head jump and the lock
    for (auto node = nodes.begin() + 4; node < nodes.end(); ++node) {
      longest = std::max({longest, std::abs(std::get<0>(*node)), std::abs(std::get<1>(*node))});
    }
    EXPECT_EQ(longest, c.longestStep);
    EXPECT_EQ(design.stitches.Size(), c.nodes);
    EXPECT_EQ(design.threads[0].rgb, 0u);  // a design that is not black gets a black baste
  }
  Design empty = test::DesignOf({}, {kGreen});  // nothing to baste: left alone
  AutoBaste(empty, BasteSettings{});
  EXPECT_TRUE(empty.stitches.Empty());
  EXPECT_EQ(test::Rgbs(empty.threads), std::vector<uint32_t>{kGreen});
}

}  // namespace
}  // namespace fennick
