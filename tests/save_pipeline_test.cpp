#include "tools/save_pipeline.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/format_table.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

// A centred w by h rectangle (stitch units, both even), one thread.
Design Rectangle(int32_t width, int32_t height) {
  Design design = test::DesignOf({{-width / 2, -height / 2, STITCH_JUMP}, {width, 0, 0}, {0, height, 0}}, {0});
  design.name = "rect.dst";
  design.ComputeBounds();
  return design;
}

// Colours A and B of three (1, 1) stitches each, then C of `lastStitches`:
// stops at nodes 3 and 7.
Design ThreeColours(int lastStitches) {
  Design design;
  design.name = "rose.pes";
  design.threads.resize(3);
  for (int i = 0; i < 3; ++i) design.threads[static_cast<size_t>(i)].rgb = ColorRef(static_cast<uint8_t>(60 * i), 0, 0);
  for (int i = 0; i < 3; ++i) design.stitches.PushBack(1, 1, 0);
  design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
  for (int i = 0; i < 3; ++i) design.stitches.PushBack(1, 1, 0);
  design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
  for (int i = 0; i < lastStitches; ++i) design.stitches.PushBack(1, 1, 0);
  design.ComputeThreadStats();
  return design;
}

ConversionSettings Hoop(int32_t width, int32_t height, int32_t rotate, int32_t both, int32_t shrink,
                        int32_t shrinkPercent) {
  ConversionSettings settings;
  settings.hoopWidth = width;
  settings.hoopHeight = height;
  settings.rotate = rotate;
  settings.bothOrientations = both;
  settings.shrink = shrink;
  settings.shrinkPercent = shrinkPercent;
  return settings;
}

TEST(FitDesignToHoop, TurnsShrinksOrRefuses) {
  struct Case {
    const char* what;
    int32_t width, height;  // design, stitch units
    ConversionSettings settings;
    int result;
    int32_t rotation;
    int32_t fittedWidth, fittedHeight;  // exact, or at most when shrunk
  };
  const Case cases[] = {
      {"301 x 100 mm, 300 x 200 hoop: turning is worse", 3010, 1000, Hoop(300, 200, 1, 0, 0, 10), 1, 0, 0, 0},
      {"the same shrunk by 1 percent at most", 3010, 1000, Hoop(300, 200, 1, 0, 1, 10), 0, 0, 3000, 1000},
      {"turning helps but is not enough", 4000, 2500, Hoop(300, 350, 1, 0, 0, 10), 1, 0, 0, 0},
      {"turned, then shrunk by 12.5 percent", 4000, 2500, Hoop(300, 350, 1, 0, 15, 10), 0, 1, 2188, 3500},
      {"unturned it needs 25 percent", 4000, 2500, Hoop(300, 350, 0, 0, 15, 10), 1, 0, 0, 0},
      {"both orientations turn the hoop", 4000, 2500, Hoop(250, 400, 0, 1, 0, 0), 0, 0, 4000, 2500},
      {"a wide design turns clockwise", 4000, 2500, Hoop(250, 400, 1, 0, 0, 0), 0, 1, 2500, 4000},
      {"a tall design turns the other way", 2500, 4000, Hoop(400, 250, 1, 0, 0, 0), 0, -1, 4000, 2500},
      {"0.5 percent too big, shrink 1", 2010, 200, Hoop(200, 100, 0, 0, 1, 10), 0, 0, 2000, 200},
      {"0.5 percent too big, no shrink", 2010, 200, Hoop(200, 100, 0, 0, 0, 10), 1, 0, 0, 0},
      {"2 percent too big: shrinkPercent is not the limit", 2040, 200, Hoop(200, 100, 0, 0, 1, 50), 1, 0, 0, 0},
      {"10 percent too big, shrink 10", 1000, 200, Hoop(90, 100, 0, 0, 10, 0), 0, 0, 900, 200},
      {"10 percent too big, shrink 9", 1000, 200, Hoop(90, 100, 0, 0, 9, 10), 1, 0, 0, 0},
      {"a hoop word of 0 takes nothing", 100, 100, Hoop(0, 200, 1, 0, 1, 10), 1, 0, 0, 0},
  };
  for (const Case& c : cases) {
    Design design = Rectangle(c.width, c.height);
    const std::vector<test::Node> before = test::Nodes(design);
    EXPECT_EQ(FitDesignToHoop(design, c.settings), c.result) << c.what;
    EXPECT_EQ(design.fitRotation, c.rotation) << c.what;
    if (c.result != 0) {
      EXPECT_EQ(test::Nodes(design), before) << c.what;
      continue;
    }
    const int32_t width = design.maxX - design.minX, height = design.maxY - design.minY;
    if (c.settings.shrink == 0) {
      EXPECT_EQ(width, c.fittedWidth) << c.what;
      EXPECT_EQ(height, c.fittedHeight) << c.what;
    } else {
      EXPECT_LE(width, c.fittedWidth) << c.what;
      EXPECT_LE(height, c.fittedHeight) << c.what;
      EXPECT_LT(width, c.width) << c.what;
    }
  }
}

TEST(FitDesignToHoop, CentresAFittingDesign) {
  // Stands at x 10, y 0 to 4: a jump to (-10, -2) goes in front.
  Design design = test::DesignOf({{10, 0, 0}, {0, 4, 0}});
  ASSERT_EQ(FitDesignToHoop(design, Hoop(1, 1, 0, 0, 0, 0)), 0);
  EXPECT_EQ(test::Nodes(design), (std::vector<test::Node>{{-10, -2, STITCH_JUMP}, {10, 0, 0}, {0, 4, 0}}));
  EXPECT_EQ(design.minY, -2);
}

TEST(FitDesignToHoop, ShrinkCarriesTheErrorAndNarrowsTo16Bits) {
  // Both shrink by a quarter: f = 0.75 is exact in single precision.
  struct Case {
    const char* what;
    std::vector<test::Node> nodes;
    ConversionSettings settings;
    std::vector<test::Node> expected;
  };
  const Case cases[] = {
      // x: -15 | 18.75 -> 18, carry .75 | -2.25 + .75 = -1.5 -> -1 (towards zero), carry -.5 | 13.5 - .5 = 13
      // y: -3 | .75 -> 0, carry .75 | 3.75 + .75 = 4.5 -> 4, carry .5 | .75 + .5 = 1.25 -> 1
      {"error carried, cut towards zero",
       {{-20, -4, STITCH_JUMP}, {25, 1, 0}, {-3, 5, 0}, {18, 1, 0}},
       Hoop(3, 1, 0, 0, 25, 0),
       {{-15, -3, STITCH_JUMP}, {18, 0, 0}, {-1, 4, 0}, {13, 1, 0}}},
      // 50000 * 0.75 = 37500, which as a signed 16-bit move is 37500 - 65536.
      {"moves narrowed to 16 bits",
       {{-25000, 0, STITCH_JUMP}, {50000, 0, 0}},
       Hoop(3750, 1, 0, 0, 25, 0),
       {{-18750, 0, STITCH_JUMP}, {-28036, 0, 0}}},
  };
  for (const Case& c : cases) {
    Design design = test::DesignOf(c.nodes);
    ASSERT_EQ(FitDesignToHoop(design, c.settings), 0) << c.what;
    EXPECT_EQ(test::Nodes(design), c.expected) << c.what;
  }
}

TEST(SplitDesign, KeepsColoursWholeAndStartsThePieceFromTheOrigin) {
  struct Case {
    const char* what;
    int lastStitches;
    int32_t stitchLimit, colorLimit;
    size_t keptNodes;  // all 8 + lastStitches: no split
    size_t keptThreads;
    test::Node firstMoved;
  };
  const Case cases[] = {
      // C (5 stitches) would end at node 12: it goes whole, its stop becoming a jump to (6, 6).
      {"a colour that would not fit goes whole", 5, 10, 0, 7, 2, {6, 6, STITCH_JUMP}},
      {"a colour too big for any piece is cut", 12, 10, 0, 10, 2, {9, 9, STITCH_JUMP}},
      {"the colour limit splits at its stop", 5, 0, 2, 7, 2, {6, 6, STITCH_JUMP}},
      {"as many colours as the limit", 5, 0, 3, 13, 3, {}},
      {"fewer nodes than the limit", 5, 13, 0, 13, 3, {}},
      {"both limits off", 5, 0, 0, 13, 3, {}},
  };
  for (const Case& c : cases) {
    Design design = ThreeColours(c.lastStitches);
    const size_t total = design.stitches.Size();
    Design rest = SplitDesign(design, c.stitchLimit, c.colorLimit);
    EXPECT_EQ(design.stitches.Size(), c.keptNodes) << c.what;
    EXPECT_EQ(design.threads.size(), c.keptThreads) << c.what;
    if (c.keptNodes == total) {
      EXPECT_TRUE(rest.stitches.Empty()) << c.what;
      continue;
    }
    EXPECT_EQ(rest.name, "rose.pes") << c.what;
    EXPECT_EQ(rest.stitches.Size(), total - c.keptNodes) << c.what;
    ASSERT_EQ(rest.threads.size(), 1u) << c.what;
    EXPECT_EQ(rest.threads[0].rgb, ColorRef(120, 0, 0)) << c.what;
    EXPECT_EQ(test::Nodes(rest).front(), c.firstMoved) << c.what;
    EXPECT_EQ(test::Nodes(rest).back(), (test::Node{1, 1, 0})) << c.what;
  }
}

class SaveDesignTest : public ::testing::Test {
 protected:
  test::Messages messages;
  test::ScratchFolder folder;

  std::vector<std::string> Save(Design design, int flag, const ConversionSettings* settings, int expected) {
    std::vector<DesignPath> written;
    EXPECT_EQ(SaveDesign(design, &written, flag, settings), expected) << design.name;
    std::vector<std::string> names;
    for (const DesignPath& path : written) {
      EXPECT_TRUE(std::filesystem::exists(path.FullName())) << path.FullName();
      names.push_back(path.GetFileName());
    }
    return names;
  }
};

TEST_F(SaveDesignTest, ExtensionDecidesTheFileWritten) {
  const struct {
    const char* name;
    int flag;
    std::vector<std::string> expected;
  } cases[] = {
      {"card.phc", 1, {"card.pes"}},
      {"card.PHB", 1, {"card.pes"}},
      {"stick.shv", 1, {"stick.vip"}},
      {"rose.txt", 1, {"rose.Txt"}},
      {"rose.dst", 1, {"rose.dst"}},
      {"rose.dst", 1, {"rose.dst"}},  // overwritten
      {"rose.dst", 0, {"rose(2).dst"}},
  };
  for (const auto& c : cases) {
    Design design = ThreeColours(5);
    design.name = folder.File(c.name);
    EXPECT_EQ(Save(design, c.flag, nullptr, 1), c.expected) << c.name;
  }
  const std::vector<uint8_t> notes = folder.Read("rose.Txt");
  EXPECT_EQ(std::string(notes.begin(), notes.end()).rfind(folder.File("rose.txt") + "\r\n", 0), 0u);
  EXPECT_EQ(folder.Read("card.pes").at(0), '#');
  EXPECT_TRUE(messages.lines.empty());
}

TEST_F(SaveDesignTest, FailuresShowASaveErrorAndAStoredShrinkLetsTenPercentThrough) {
  ConversionSettings small = Hoop(10, 10, 1, 0, 1, 10);
  Design big = Rectangle(200, 200);
  big.name = folder.File("big.pes");
  Save(big, 1, &small, 0);
  Design picture = Rectangle(200, 200);
  picture.name = folder.File("rose.bmp");
  Save(picture, 1, nullptr, 0);
  // DST's built-in hoop is 300 mm; 333 mm overshoots it by 9.9 percent of the design.
  Design wide = Rectangle(3330, 1000);
  wide.name = folder.File("wide.dst");
  Save(wide, 1, nullptr, 0);
  PreferenceStore().SetInt("Conversion", "dstsh", 10);
  EXPECT_EQ(Save(wide, 1, nullptr, 1), (std::vector<std::string>{"wide.dst"}));
  EXPECT_EQ(messages.lines, (std::vector<std::string>{folder.File("big.pes") + " is too big for the current hoop.",
                                                       folder.File("rose.bmp") + " could not be saved.",
                                                       folder.File("wide.dst") + " is too big for the current hoop."}));
  EXPECT_EQ(messages.captions, std::vector<std::string>(3, "Save Error"));
  EXPECT_FALSE(std::filesystem::exists(folder.File("big.pes")));
}

}  // namespace
}  // namespace fennick
