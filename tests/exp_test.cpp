#include "formats/exp.h"

#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(ExpWriter, GoldenBytes) {
  Design design = test::DesignOf({{10, 20, 0},
                                  {0, 0, STITCH_COLORSTOP},
                                  {200, 0, STITCH_JUMP},  // split into two jumps of 100 and a zero stitch
                                  {-5, 3, 0},
                                  {2, 1, STITCH_COLORSTOP | STITCH_JUMP}},  // a stop with a move
                                 {0, 0, 0});
  Bytes out;
  ASSERT_EQ(WriteExp(design, out), 0);
  const Bytes expected = {
      0x0A, 0x14,              // (10, 20)
      0x80, 0x01, 0x00, 0x00,  // the stop and its pair 00 00
      0x80, 0x04, 0x64, 0x00,  // jump (100, 0), not anchored: the travel goes on
      0x80, 0x04, 0x64, 0x00,  // jump (100, 0)
      0x00, 0x00,              // the anchor of the run's last jump
      0x00, 0x00,              // the split node, left as a zero stitch
      0xFB, 0x03,              // (-5, 3)
      0x80, 0x01, 0x00, 0x00,  // the stop split off the move
      0x80, 0x04, 0x02, 0x01,  // the move, still a jump
      0x00, 0x00,              // its anchor
  };
  EXPECT_EQ(out, expected);

  Design empty;
  EXPECT_EQ(WriteExp(empty, out), -1);
  EXPECT_TRUE(out.empty());
}

TEST(ExpReader, ControlPairsThreadsAndTheTail) {
  const Bytes file = {
      0x80, 0x04, 0x05, 0x00,              // jump (5, 0)
      0x03, 0x04,                          // its landing stitch, swallowed
      0x80, 0x01, 0x80, 0x04, 0x02, 0x00,  // a colour change and a jump add up; the pair is theirs
      0x80, 0x80, 0x7F, 0x7F, 0x01, 0x01,  // 80 80 skips itself and the pair behind
      0x80, 0x03, 0x00, 0x00,              // odd: a colour change, its pair no stitch of its own
      0x05, 0x05,                          // (5, 5)
      0x80, 0x02, 0x06, 0x00,              // even: a jump at the end, cleaned away
      0x80, 0x01, 0x00, 0x00,              // a closing colour change takes its thread back
  };
  const Design design = test::ReadBytes(ReadExp, file);
  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[0].colorName, "Black");
  EXPECT_EQ(design.threads[1].colorName, "Blue");
  EXPECT_EQ(design.threads[2].colorName, "Light Green");
  EXPECT_TRUE(design.defaultColors);
  // Positions (8,4) (10,4) (11,5) (11,5) (16,10) (15,9): centre (12, 7).
  const std::vector<test::Node> expected = {{-4, -3, STITCH_JUMP}, {2, 0, STITCH_COLORSTOP | STITCH_JUMP},
                                            {1, 1, 0},           {0, 0, STITCH_COLORSTOP},
                                            {5, 5, 0},           {-1, -1, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  EXPECT_EQ((std::array{design.minX, design.maxX, design.minY, design.maxY}), (std::array{-4, 4, -3, 3}));
}

TEST(ExpReader, ShortAndBrokenEnds) {
  struct Case {
    const char* what;
    Bytes file;
    std::vector<test::Node> nodes;  // before centring, as the tail cleaning leaves them
  };
  const Case cases[] = {
      {"empty file: only the step back", {}, {{-1, -1, 0}}},
      {"odd length: the last byte pairs with the added zero", {0x05, 0x05, 0x07}, {{5, 5, 0}, {7, 0, 0}, {-1, -1, 0}}},
      {"data ends inside a control pair", {0x05, 0x05, 0x80}, {{5, 5, 0}, {-1, -1, 0}}},
      {"80 80 running past the end", {0x05, 0x05, 0x80, 0x80, 0x01}, {{5, 5, 0}, {-1, -1, 0}}},
      {"stops and jumps only", {0x80, 0x01, 0x00, 0x00, 0x80, 0x04, 0x09, 0x09}, {{-1, -1, 0}}},
  };
  for (const Case& c : cases) {
    const Design design = test::ReadBytes(ReadExp, c.file, c.what);
    EXPECT_EQ(design.threads.size(), 1u) << c.what;
    // Every node list here centres through a new head jump.
    std::vector<test::Node> nodes = test::Nodes(design);
    ASSERT_FALSE(nodes.empty()) << c.what;
    EXPECT_EQ(std::get<2>(nodes.front()), STITCH_JUMP) << c.what;
    nodes.erase(nodes.begin());
    EXPECT_EQ(nodes, c.nodes) << c.what;
  }
  Design design;
  EXPECT_FALSE(ReadExp(design, {}));
}

}  // namespace
}  // namespace fennick
