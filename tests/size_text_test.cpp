#include "tools/size_text.h"

#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace fennick {
namespace {

TEST(InchText, WholePartsAndSixteenths) {
  const struct {
    double inches;
    const char* text;
  } cases[] = {
      {1.0, "1 "},  // "%-2.0f" pads a single digit; with no fraction nothing follows
      {2.375, "2 (3/8)"},
      {0.5, "0 (1/2)"},
      {0.0, "0 (0)"},   // a zero whole part always shows its fraction
      {-0.25, "-0 (1/4)"},  // the sign goes first when the whole part is 0
      {-1.5, "-1(1/2)"},    // rounded towards zero: -1 and a half
      {12.0625, "12(1/16)"},
      {3.99, "3 (15/16)"},
  };
  for (const auto& c : cases) EXPECT_EQ(InchText(c.inches), c.text) << c.inches;
}

TEST(SizeText, CentimetresWidthFirstInchesHeightFirst) {
  Design design;
  design.minX = -100;
  design.maxX = 156;  // 256 units: one inch by the 1/256 measure
  design.minY = -50;
  design.maxY = 50;
  design.threads.resize(2);
  test::SetNodes(design, {{1, 0, 0}, {0, 0, STITCH_COLORSTOP}, {0, 1, STITCH_JUMP}, {1, 1, 0}});
  EXPECT_EQ(SizeText(design, false, false), "2.56 cm x 1.00 cm");
  // Jump and stop nodes count, less the threads, plus one.
  EXPECT_EQ(SizeText(design, false, true), "2.56 cm x 1.00 cm : 3 Stitches");
  // 100 units is 0.390625 in: six sixteenths, cut.
  EXPECT_EQ(SizeText(design, true, false), "0 (3/8)\" x 1 \"");
  EXPECT_EQ(SizeText(design, true, true), "0 (3/8)\" x 1 \" : 3 Stitches");
}

}  // namespace
}  // namespace fennick
