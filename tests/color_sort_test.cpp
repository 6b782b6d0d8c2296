#include "tools/color_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "tests/test_support.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint32_t kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000, kWhite = 0xFFFFFF;

// One colour block: a jump to (-100, y) and one stitch to (x1, y), after a pure stop.
struct Line {
  uint32_t rgb;
  int32_t y;
  int32_t x1 = 100;
};

Design LinesDesign(const std::vector<Line>& lines) {
  std::vector<test::Node> nodes;
  std::vector<uint32_t> colors;
  int32_t x = 0, y = 0;
  for (const Line& line : lines) {
    if (!colors.empty()) nodes.emplace_back(0, 0, STITCH_COLORSTOP);
    nodes.emplace_back(-100 - x, line.y - y, STITCH_JUMP);
    nodes.emplace_back(line.x1 + 100, 0, 0);
    x = line.x1, y = line.y;
    colors.push_back(line.rgb);
  }
  Design design = test::DesignOf(nodes, colors);
  design.name = "/designs/rose.dst";
  return design;
}

TEST(BlockOverlap, SharesOfTheFirstLayerWithoutTheLowBits) {
  struct Case {
    std::vector<std::pair<size_t, uint8_t>> j, k;  // byte offset and value
    int percent;
  };
  const Case cases[] = {
      {{{0, 0xFF}}, {{0, 0x0F}}, 42},                     // 3 of 7: bit 0 counts in neither
      {{{0, 0x01}}, {{0, 0xFF}}, 0},                      // only the uncounted bit: an empty layer
      {{}, {{5, 0xFF}}, 0},                               // an empty layer is covered by nothing
      {{{0, 0xFE}, {19999, 0xFE}}, {{19999, 0xFF}}, 50},  // the last byte counts
      {{{0, 0xFE}}, {{0, 0x01}, {1, 0xFE}}, 0},           // they share the uncounted pixel alone
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> layers(2 * kLayerBytes);
    for (const auto& [at, value] : c.j) layers[at] = value;
    for (const auto& [at, value] : c.k) layers[kLayerBytes + at] = value;
    EXPECT_EQ(BlockOverlap(layers, kLayerSide, 0, 1), c.percent) << c.percent;
  }
  EXPECT_EQ(BlockOverlap(std::vector<uint8_t>(2 * kLayerBytes, 0xFF), kLayerSide, 0, 2), 0);  // beyond the layers
}

TEST(ColorSort, LayersAreTheThickRenderOfEachBlockAlone) {
  // 39 blocks in 38 threads (the last runs on), over three walks, one of them
  // white; some blocks open with a stop that moves.
  std::vector<test::Node> nodes = {{5, 5, STITCH_JUMP}};
  std::vector<uint32_t> colors;
  uint32_t seed = 7;
  auto next = [&](int32_t range) { return static_cast<int32_t>((seed = seed * 1103515245 + 12345) >> 16) % range; };
  for (int block = 0; block < 39; ++block) {
    if (block > 0) nodes.emplace_back(next(200) - 100, 0, STITCH_COLORSTOP | (block % 3 == 0 ? STITCH_JUMP : 0));
    for (int i = 0; i < 6; ++i) nodes.emplace_back(next(300) - 150, next(300) - 150, i == 0 ? STITCH_JUMP : 0);
    if (block < 38) colors.push_back(block == 20 ? kWhite : 0x010101u * static_cast<uint32_t>(block));
  }
  Design design = test::DesignOf(nodes, colors);
  design.Centre();
  const std::vector<test::Node> before = test::Nodes(design);
  const std::vector<uint8_t> layers = DrawColorLayers(design, 38);
  EXPECT_EQ(test::Nodes(design), before);
  ASSERT_EQ(layers.size(), 38 * kLayerBytes);

  DesignRenderer alone;
  ASSERT_EQ(alone.bitmap.Create(kLayerSide, kLayerSide), 0);
  alone.bitmap.background = kWhite;
  alone.design = &design;
  for (size_t block = 0; block < 38; ++block) {
    alone.Render(static_cast<int>(block));
    std::vector<uint8_t> bits(kLayerBytes);
    for (size_t p = 0; p < alone.bitmap.pixels.size(); ++p) {
      if (alone.bitmap.pixels[p] != kWhite) bits[p / 8] |= static_cast<uint8_t>(1 << (p % 8));
    }
    const std::vector<uint8_t> layer(layers.begin() + static_cast<std::ptrdiff_t>(block * kLayerBytes),
                                     layers.begin() + static_cast<std::ptrdiff_t>((block + 1) * kLayerBytes));
    EXPECT_EQ(layer, bits) << "block " << block;
    EXPECT_EQ(block == 20, std::ranges::count(bits, 0) == static_cast<std::ptrdiff_t>(kLayerBytes))
        << "block " << block;
  }
}

TEST(ColorSort, MovesBlocksUpWhereTheyLieOnTop) {
  struct Case {
    const char* name;
    std::vector<Line> lines;
    int threshold;
    std::vector<size_t> order;  // of the lines after sorting
    std::vector<uint32_t> colors;
  };
  const Case cases[] = {
      {"apart", {{kRed, 100}, {kGreen, 0}, {kRed, -100}}, 5, {0, 2, 1}, {kRed, kGreen}},
      {"covered", {{kRed, 100}, {kGreen, 100}, {kRed, 100, 99}}, 5, {0, 1, 2}, {kRed, kGreen, kRed}},
      {"draws nothing", {{kWhite, 100}, {kGreen, 100}, {kWhite, 100, 99}}, 0, {0, 2, 1}, {kWhite, kGreen}},
      {"adjacent", {{kRed, 100}, {kRed, -100}, {kGreen, 0}}, 0, {0, 1, 2}, {kRed, kGreen}},
      {"later ahead",
       {{kRed, -120}, {kGreen, 120}, {kRed, -40}, {kBlue, 40}, {kRed, -80}},
       5,
       {0, 4, 2, 1, 3},
       {kRed, kGreen, kBlue}},
      {"covered after a move",  // the green, moved down one place, still stops the last red
       {{kRed, 100}, {kGreen, 0}, {kRed, -60}, {kBlue, 60}, {kRed, 0, 99}},
       5,
       {0, 2, 1, 3, 4},
       {kRed, kGreen, kBlue, kRed}},
  };
  for (const Case& c : cases) {
    test::Messages ui;
    Design design = LinesDesign(c.lines);
    const int saved = static_cast<int>(c.lines.size() - c.colors.size());
    EXPECT_EQ(ColorSort(design, c.threshold), saved) << c.name;
    EXPECT_EQ(test::Rgbs(design.threads), c.colors) << c.name;
    std::vector<test::Point> expected;
    for (const size_t line : c.order) expected.emplace_back(c.lines[line].x1, c.lines[line].y);
    EXPECT_EQ(test::FromFirst(test::NeedlePath(design)), test::FromFirst(expected)) << c.name;
    EXPECT_EQ(ui.lines.size(), saved > 0 ? 1u : 0u) << c.name;
    // Nothing saved: the design is given back as it came, not even centred.
    if (saved == 0) {
      EXPECT_EQ(test::Nodes(design), test::Nodes(LinesDesign(c.lines))) << c.name;
      EXPECT_EQ((std::array{design.minX, design.maxX, design.minY, design.maxY}), (std::array{0, 0, 0, 0}));
    }
  }
}

TEST(ColorSort, RebuildsWithoutTheStopsOfFusedBlocksAndTellsTheUser) {
  test::Messages ui;
  Design design = LinesDesign({{kRed, 100}, {kGreen, 0}, {kRed, -100}});
  EXPECT_EQ(ColorSort(design, 5), 1);
  // Each block starts where it did, so jumps take the needle there.
  constexpr uint32_t J = STITCH_JUMP;
  const std::vector<test::Node> expected = {{-100, 100, J}, {200, 0, 0}, {0, -100, J}, {-200, -100, J}, {200, 0, 0},
                                            {0, 0, STITCH_COLORSTOP}, {0, 200, J}, {-200, -100, J}, {200, 0, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  EXPECT_EQ(ui.lines, std::vector<std::string>{"rose.dst reduced 1 color."});
  EXPECT_EQ(ui.captions, std::vector<std::string>{"Color Sort"});
}

TEST(ColorSort, ThresholdIsTheShareOfTheMovingBlockCovered) {
  // Both the green and the last red start with a line from the corner to (100,
  // 100): that is most of the short red, and less of the long green.
  const std::vector<Line> lines = {{kRed, 100}, {kGreen, 100}, {kRed, 60, -80}};
  Design centred = LinesDesign(lines);
  centred.Centre();
  const std::vector<uint8_t> layers = DrawColorLayers(centred, 3);
  const int moving = BlockOverlap(layers, kLayerSide, 2, 1), passed = BlockOverlap(layers, kLayerSide, 1, 2);
  ASSERT_GT(moving, 5);
  ASSERT_LT(passed, moving - 1);

  test::Messages ui;
  for (const auto& [threshold, saved] : {std::pair{moving, 1}, std::pair{moving - 1, 0}}) {
    Design design = LinesDesign(lines);
    EXPECT_EQ(ColorSort(design, threshold), saved) << threshold;
  }
}

TEST(ColorSort, KeepsTheFirst250Blocks) {
  test::Messages ui;
  Design design = test::StitchPerColour(test::CountingColours(252));
  design.name = "Zip:/media/sets.zip:/big.pes";
  EXPECT_EQ(ColorSort(design, 5), 2);
  EXPECT_EQ(design.threads.size(), 250u);
  EXPECT_EQ(design.threads.back().rgb, 249u);
  EXPECT_EQ(design.stitches.Size(), 1 + 250 + 249u);  // the centring jump, the stitches, the stops
  EXPECT_EQ(ui.lines, std::vector<std::string>{"big.pes reduced 2 colors."});
}

}  // namespace
}  // namespace fennick
