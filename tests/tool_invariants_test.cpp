// What the design tools promise about real designs: Color Sort never changes
// what covers what, and Auto-Baste frames the design without moving it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/format_table.h"
#include "tests/test_support.h"
#include "tools/auto_baste.h"
#include "tools/color_sort.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint32_t kWhite = 0xFFFFFF;

Design ReadSample(const std::string& name) {
  Design design;
  EXPECT_EQ(ReadDesignFile(design, std::string(FENNICK_TEST_DATA) + "/" + name, LastFile::kLeave), 0) << name;
  design.Centre();
  return design;
}

// The design as the layers see it: flat, thick, no jumps, 400 by 400.
std::vector<uint32_t> Picture(Design& design) {
  DesignRenderer renderer;
  EXPECT_EQ(renderer.bitmap.Create(kLayerSide, kLayerSide), 0);
  renderer.bitmap.background = kWhite;
  renderer.design = &design;
  renderer.Render(-1);
  return renderer.bitmap.pixels;
}

TEST(ToolInvariants, ColorSortChangesOnlyPixelsWhereColoursAlreadyOverlapped) {
  test::Messages ui;
  Design original = ReadSample("reorder.pes");
  Design sorted = original;
  ASSERT_GT(ColorSort(sorted, 5), 0);
  ASSERT_EQ((std::vector{sorted.minX, sorted.maxX, sorted.minY, sorted.maxY}),
            (std::vector{original.minX, original.maxX, original.minY, original.maxY}));  // the same fit

  // Moving a block changes only which of two overlapping colours lies on top,
  // so a pixel may change only where blocks of two colours both drew. How many
  // such pixels may change is the threshold's business (5 % of the counted
  // pixels of the moved block, plus the uncounted eighth): the rule's own
  // tests hold that; here no pixel may change anywhere else.
  const std::vector<uint8_t> layers = DrawColorLayers(original, original.threads.size());
  std::vector<uint32_t> firstColour(kLayerBytes * 8, kWhite + 1);
  std::vector<bool> twoColours(firstColour.size());
  for (size_t block = 0; block < original.threads.size(); ++block) {
    for (size_t pixel = 0; pixel < firstColour.size(); ++pixel) {
      if (((layers[block * kLayerBytes + pixel / 8] >> (pixel % 8)) & 1) == 0) continue;
      const uint32_t rgb = original.threads[block].rgb;
      if (firstColour[pixel] == kWhite + 1) firstColour[pixel] = rgb;
      if (firstColour[pixel] != rgb) twoColours[pixel] = true;
    }
  }
  const std::vector<uint32_t> before = Picture(original), after = Picture(sorted);
  size_t changed = 0, elsewhere = 0;
  for (size_t pixel = 0; pixel < before.size(); ++pixel) {
    if (before[pixel] == after[pixel]) continue;
    ++changed;
    elsewhere += twoColours[pixel] ? 0 : 1;
  }
  EXPECT_EQ(elsewhere, 0u) << changed << " pixels changed";
}

TEST(ToolInvariants, BasteFramesTheDesignWithShortStitchesAndLeavesItInPlace) {
  for (const char* name : {"geometric_objects.pes", "star.pes"}) {
    SCOPED_TRACE(name);
    const Design original = ReadSample(name);
    Design basted = original;
    basted.name = "framed.dst";  // a 300 mm hoop: the edge is kept
    BasteSettings settings;       // combined, edge 1 mm, length 6 mm
    settings.cross = 0;           // the ticks are no stitches of the rectangle's runs
    AutoBaste(basted, settings);
    const int32_t edge = 10, length = 60;

    // The baste thread's path, from where its head jump lands to the stop.
    std::vector<test::Point> frame;
    int64_t x = 0, y = 0, longest = 0;
    const StitchNode* node = basted.stitches.Head();
    for (; node != nullptr && !node->IsColorStop(); node = node->Next()) {
      x += node->dx;
      y += node->dy;
      frame.emplace_back(x, y);
      if (node == basted.stitches.Head()) continue;  // the way from the origin
      longest = std::max<int64_t>({longest, std::abs(node->dx), std::abs(node->dy)});
    }
    ASSERT_NE(node, nullptr);
    EXPECT_LE(longest, length);
    const auto byX = [](const test::Point& a, const test::Point& b) { return a.first < b.first; };
    const auto byY = [](const test::Point& a, const test::Point& b) { return a.second < b.second; };
    const auto [left, right] = std::minmax_element(frame.begin(), frame.end(), byX);
    const auto [bottom, top] = std::minmax_element(frame.begin(), frame.end(), byY);
    EXPECT_EQ(right->first - left->first, int64_t{original.maxX} - original.minX + 2 * edge);
    EXPECT_EQ(top->second - bottom->second, int64_t{original.maxY} - original.minY + 2 * edge);

    // Every stitch of the design lies where it did, seen from the frame's top left corner.
    std::vector<test::Point> stitches;
    for (node = node->Next(); node != nullptr; node = node->Next()) {
      x += node->dx;
      y += node->dy;
      if (node->flags == 0 && node->HasMove()) stitches.emplace_back(x - left->first, y - top->second);
    }
    const test::Point corner{original.minX - edge, original.maxY + edge};
    EXPECT_EQ(stitches, test::NeedlePath(original, test::Landing::kStitch, corner));
  }
}

}  // namespace
}  // namespace fennick
