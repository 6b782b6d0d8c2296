#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <set>
#include <string>

#include "formats/dst.h"
#include "tests/test_support.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint32_t kBackground = 0x808080;
using Points = std::set<std::pair<int64_t, int64_t>>;

StitchBitmap Canvas(int32_t width, int32_t height, bool thick = false) {
  StitchBitmap bitmap;
  EXPECT_EQ(bitmap.Create(width, height), 0);
  bitmap.thick = thick;
  bitmap.Clear(kBackground);
  return bitmap;
}

uint32_t Pixel(const StitchBitmap& bitmap, int x, int y) { return bitmap.pixels.at(size_t(y * bitmap.width + x)); }

// The pixels of `color`, or with `drawn` those of any other colour.
Points Where(const StitchBitmap& bitmap, uint32_t color, bool drawn = false) {
  Points points;
  for (int y = 0; y < bitmap.height; ++y) {
    for (int x = 0; x < bitmap.width; ++x) {
      if ((Pixel(bitmap, x, y) == color) != drawn) points.emplace(x, y);
    }
  }
  return points;
}
Points Drawn(const StitchBitmap& bitmap) { return Where(bitmap, kBackground, true); }

TEST(StitchBitmapShades, HandComputed) {
  // L = c*1.1, M = c*0.92, D = c*0.8, E = c*0.6; s = L - E of the brightest channel.
  const struct {
    uint32_t colorref, pen;
    std::array<uint32_t, 4> shades;
  } cases[] = {
      // s = 0: fixed greys 90, 75, 45, 15.
      {0x000000, 0x000000, {0x5A5A5A, 0x4B4B4B, 0x2D2D2D, 0x0F0F0F}},
      // A sum of 716 (and above) is near white: 245, 238, 225, 210.
      {0xECF0F0, 0xF0F0EC, {0xF5F5F5, 0xEEEEEE, 0xE1E1E1, 0xD2D2D2}},
      // Sum 715: L 264, 264, 258.5 held at 255; M 220.8, 220.8, 216.2; D 192, 192, 188; E 144, 144, 141.
      {0xEBF0F0, 0xF0F0EB, {0xFFFFFF, 0xDCDCD8, 0xC0C0BC, 0x90908D}},
      // 128: s = 140.8 - 76.8 = 64; k1 = 16 * 0.0125 + 1 = 1.2, k2 1.1, k3 1.05, k4 1.025:
      // L 168.96, M 117.76 * 1.1 = 129.5, D 102.4 * 1.05 = 107.5, E 76.8 * 1.025 = 78.7.
      {0x808080, 0x808080, {0xA8A8A8, 0x818181, 0x6B6B6B, 0x4E4E4E}},
      // 160: s = 176 - 96 = 80 is not below 80: 176, 147.2, 128, 96 unlifted.
      {0xA0A0A0, 0xA0A0A0, {0xB0B0B0, 0x939393, 0x808080, 0x606060}},
      // Red 255: L 280.5 held at 255; M 234.6, D 204, E 153.
      {0x0000FF, 0xFF0000, {0xFF0000, 0xEA0000, 0xCC0000, 0x990000}},
      // Blue 100: s = 50; k1 = 1.375, k2 1.1875, k3 1.09375, k4 1.046875:
      // L 151.25, M 92 * 1.1875 = 109.25, D 80 * 1.09375 = 87.5, E 60 * 1.046875 = 62.8.
      {0x640000, 0x000064, {0x000097, 0x00006D, 0x000057, 0x00003E}},
  };
  for (const auto& c : cases) {
    StitchBitmap bitmap;
    bitmap.SetColor(c.colorref);
    EXPECT_EQ(bitmap.penColor, c.pen) << std::hex << c.colorref;
    EXPECT_EQ(bitmap.shades, c.shades) << std::hex << c.colorref;
  }
}

TEST(StitchBitmapLines, Line3DShadesAlongTheStitch) {
  // Pixel i of 40: p = 100 i / 40, folded above 50. L at p = 0 or above 40,
  // E below 5, D below 20, M otherwise.
  const std::string look40 = "LEDDDDDDMMMMMMMMMLLLLLLLMMMMMMMMMDDDDDDE";
  StitchBitmap bitmap = Canvas(48, 10);
  bitmap.shades = {'L', 'M', 'D', 'E'};
  bitmap.MoveTo(0, 5);
  bitmap.Line3D(40, 5);
  EXPECT_EQ(Pixel(bitmap, 0, 5), kBackground);  // the pen's own pixel
  for (int x = 1; x <= 40; ++x) EXPECT_EQ(char(Pixel(bitmap, x, 5)), look40[x - 1]) << x;
  // From off the bitmap, pixel 19 of the walk lands on x = 0.
  bitmap.MoveTo(-20, 6);
  bitmap.Line3D(20, 6);
  for (int x = 0; x <= 20; ++x) EXPECT_EQ(char(Pixel(bitmap, x, 6)), look40[x + 19]) << x;
  EXPECT_EQ(bitmap.penX, 20);
}

TEST(StitchBitmapLines, DashesOfTheJumps) {
  // The renderer's jumps use dash index 1, a period of 4: step k of 20 is
  // drawn when 20 - k modulo 4 is above 1.
  StitchBitmap bitmap = Canvas(24, 24);
  bitmap.dashIndex = 1;
  bitmap.MoveTo(0, 2);
  bitmap.LineDashed(20, 2);
  bitmap.MoveTo(22, 20);
  bitmap.LineDashed(22, 0);  // upwards: counted from its own end
  std::string row, column;
  for (int i = 0; i <= 20; ++i) row += Pixel(bitmap, i, 2) == kBackground ? '.' : '#';
  for (int i = 20; i >= 0; --i) column += Pixel(bitmap, 22, i) == kBackground ? '.' : '#';
  EXPECT_EQ(row, ".##..##..##..##..##..");
  EXPECT_EQ(column, row);
}

// The plain walk over every step, to hold the renderer's walk (which skips
// what cannot reach the bitmap) to the same pixels.
Points FullWalk(int64_t x, int64_t y, int64_t x1, int64_t y1, int w, int h) {
  Points plotted;
  const int64_t adx = std::llabs(x1 - x), ady = std::llabs(y1 - y);
  const int64_t longer = std::max(adx, ady), shorter = std::min(adx, ady);
  int64_t error = longer / 2;
  for (int64_t i = 0; i < longer; ++i) {
    error -= shorter;
    const bool minor = error < 0;
    if (minor) error += longer;
    if (adx >= ady || minor) x += x1 < x ? -1 : 1;
    if (adx < ady || minor) y += y1 < y ? -1 : 1;
    if (x >= 0 && x < w && y >= 0 && y < h) plotted.emplace(x, y);
  }
  return plotted;
}

TEST(StitchBitmapLines, FarEndsDrawThePixelsOfTheWholeWalk) {
  const std::array<int32_t, 4> lines[] = {
      {-1000, 3, 1000, 17},
      {1000, 17, -1000, 3},
      {-100000, -99990, 50, 40},
      {7, -300001, 12, 300000},
      {39, 29, -777777, -5555},
      {20, -50000, 21, 50000},
      {2, 2, 5, 3},        // half of 3 is 1: the minor step comes at the second pixel
      {-1002, 5, 998, 8},  // enters after 1,000 of 2,000 steps, where the error is exactly 0
  };
  for (const auto& [x0, y0, x1, y1] : lines) {
    StitchBitmap bitmap = Canvas(40, 30);
    bitmap.MoveTo(x0, y0);
    bitmap.LineFlat(x1, y1);
    const Points drawn = Drawn(bitmap);
    EXPECT_EQ(drawn, FullWalk(x0, y0, x1, y1, 40, 30)) << x0 << "," << y0 << " " << x1 << "," << y1;
    EXPECT_FALSE(drawn.empty());
  }
}

TEST(StitchBitmapLines, ThickBlocksAndAbsurdInput) {
  StitchBitmap bitmap = Canvas(12, 12, true);
  bitmap.MoveTo(3, 3);
  bitmap.LineFlat(4, 3);  // one pixel, as a 2 by 2 block
  EXPECT_EQ(Drawn(bitmap), (Points{{4, 3}, {5, 3}, {4, 4}, {5, 4}}));

  // Nothing lands outside and nothing takes long, whatever the coordinates.
  bitmap = Canvas(16, 12, true);
  bitmap.MoveTo(INT_MIN, 5);
  bitmap.LineFlat(INT_MAX, 5);
  EXPECT_EQ(Drawn(bitmap).size(), 32u);  // rows 5 and 6 whole
  bitmap.Line3D(INT_MIN, INT_MIN);
  bitmap.LineDashed(INT_MAX, INT_MIN);
  bitmap.LineDashed(INT_MIN, INT_MAX);
  EXPECT_EQ(bitmap.pixels.size(), 16u * 12);
  StitchBitmap().LineFlat(10, 10);  // no buffer at all
}

TEST(StitchBitmapCreate, ResultCodes) {
  StitchBitmap bitmap;
  EXPECT_EQ(bitmap.Create(0, 10), -1);
  EXPECT_EQ(bitmap.Create(10, -1), -1);
  EXPECT_FALSE(bitmap.valid);
  ASSERT_EQ(bitmap.Create(16, 8), 0);
  EXPECT_TRUE(bitmap.valid && bitmap.pixels.size() == 128 && bitmap.centreX == 8 && bitmap.centreY == 4);

  bitmap.pixels[5] = 77;
  bitmap.dirty = false;
  EXPECT_EQ(bitmap.Create(16, 8), 0);  // same size: kept as it is
  EXPECT_EQ(bitmap.Create(0, 8), -1);  // a zero size leaves it too
  EXPECT_EQ(bitmap.pixels.at(5), 77u);
  EXPECT_FALSE(bitmap.dirty);

  EXPECT_EQ(bitmap.Create(1 << 20, 1 << 20), 1);
  EXPECT_TRUE(!bitmap.valid && bitmap.pixels.empty());
  EXPECT_EQ(bitmap.Create(16, 8), 0);
  EXPECT_TRUE(bitmap.dirty);
}

TEST(StitchBitmapMapping, FitAndRounding) {
  StitchBitmap bitmap = Canvas(58, 58);
  bitmap.SetWorld(10, -10, -10, 10);  // swapped into order
  EXPECT_EQ(bitmap.worldWidth, 20);
  EXPECT_EQ(bitmap.worldHeight, 20);
  EXPECT_FLOAT_EQ(bitmap.fit, 2.5f);  // (58 - 2 * 4) / (2 * 10)

  // Pixel = units * 2.5 * 0.1 + 29, half away from zero.
  const std::pair<StitchPoint, PixelPoint> cases[] = {
      {{0, 0}, {29, 29}},
      {{2, -2}, {30, 29}},      // 29.5 and 28.5 both round up
      {{-118, 100}, {-1, 54}},  // -0.5 rounds away from zero; 10 mm lands on the margin
      {{-100, -101}, {4, 4}},   // 3.75
  };
  for (const auto& [point, pixel] : cases) EXPECT_EQ(bitmap.WorldToPixel(point.x, point.y), pixel) << point.x;

  // One extent of zero: the other sets the fit. None at all: no scale.
  bitmap.SetWorld(-5, 0, 20, 0);
  EXPECT_FLOAT_EQ(bitmap.fit, 50.0f / 40);
  bitmap.SetWorld(0, 0, 0, 0);
  EXPECT_EQ(bitmap.fit, 0);
}

TEST(DesignRenderer, BlocksTheCornerPenAndOutline) {
  // On 20 by 20 the fit is (20 - 8) / 10 = 1.2: x -50..50 is pixels 4..16, y 0 row 10.
  // Threads 0x0000FF and 0xFF0000 draw with pens 0xFF0000 and 0x0000FF.
  Design design = test::DesignOf({{-50, 0, STITCH_JUMP}, {100, 0, 0}, {0, 0, STITCH_COLORSTOP}, {-100, 0, 0}},
                                 {0x0000FF, 0xFF0000});
  design.minX = -50, design.maxX = 50;
  DesignRenderer renderer;
  ASSERT_EQ(renderer.bitmap.Create(20, 20), 0);
  renderer.design = &design;
  renderer.thick = false;
  auto row10 = [&](int from, int to) {
    Points points;
    for (int x = from; x <= to; ++x) points.emplace(x, 10);
    return points;
  };

  renderer.Render(-1);
  // Red 5..16, then blue back over 15..4; the stop draws no pixel.
  EXPECT_EQ(Drawn(renderer.bitmap), row10(4, 16));
  EXPECT_EQ(Where(renderer.bitmap, 0xFF0000), row10(16, 16));
  std::vector<uint32_t> marks;
  for (const StitchNode& node : design.stitches) marks.push_back(node.flags & STITCH_DRAWN);
  EXPECT_EQ(marks, (std::vector<uint32_t>{0, STITCH_DRAWN, STITCH_DRAWN, STITCH_DRAWN}));

  // Block 1 alone: the pen waited in the corner, so the stop is drawn from
  // (0, 0) to (16, 10), whose first step is (1, 1).
  renderer.Render(1);
  EXPECT_EQ(Where(renderer.bitmap, 0xFF0000), Points{});
  EXPECT_EQ(Pixel(renderer.bitmap, 1, 1), 0x0000FFu);
  EXPECT_TRUE(std::ranges::includes(Drawn(renderer.bitmap), row10(4, 16)));
  renderer.Render(2);  // beyond the stops
  EXPECT_EQ(Drawn(renderer.bitmap), Points{});

  // The outline of the red line x 5..16 alone: black where a pixel differs
  // from its right, lower or lower-right neighbour, so rows 9 and 10, x 4..16.
  design.stitches.Remove(design.stitches.Tail());
  renderer.shaded = renderer.showJumps = renderer.showMarkers = true;
  renderer.RenderOutline();
  EXPECT_FALSE(renderer.thick || renderer.shaded);  // narrower than 250
  Points edges = row10(4, 16);
  for (int x = 4; x <= 16; ++x) edges.emplace(x, 9);
  EXPECT_EQ(Where(renderer.bitmap, 0xFFFFFF, true), edges);
  EXPECT_EQ(Where(renderer.bitmap, 0), edges);
}

TEST(DesignRenderer, RealDesignStaysInsideItsBox) {
  Design design;
  ASSERT_TRUE(test::ReadSample(ReadDst, design, "geometric_objects.dst"));
  DesignRenderer renderer;
  ASSERT_EQ(renderer.bitmap.Create(200, 160), 0);
  renderer.design = &design;
  for (const bool flipY : {false, true}) {
    renderer.flipY = renderer.shaded = flipY;
    renderer.Render(-1);
    const PixelPoint low = renderer.bitmap.WorldToPixel(design.minX, flipY ? -design.maxY : design.minY);
    const PixelPoint high = renderer.bitmap.WorldToPixel(design.maxX, flipY ? -design.minY : design.maxY);
    // Fitted: the box keeps the margin of 4 and reaches it on one side.
    EXPECT_TRUE(low.x >= 4 && low.y >= 4 && high.x <= 196 && high.y <= 156);
    EXPECT_TRUE(low.x == 4 || high.x == 196 || low.y == 4 || high.y == 156);
    const Points drawn = Drawn(renderer.bitmap);
    EXPECT_GT(drawn.size(), 2000u);
    for (const auto& [x, y] : drawn) {  // a thick pixel reaches one beyond its point
      ASSERT_TRUE(x >= low.x && x <= high.x + 1 && y >= low.y && y <= high.y + 1) << x << "," << y;
    }
  }
}

TEST(DesignRenderer, DegenerateDesignsDoNotCrash) {
  Design design;  // zero extent and no threads, then moves that wrap around
  test::SetNodes(design, {{0, 0, 0}, {0, 0, STITCH_JUMP}, {0, 0, 0}});
  DesignRenderer renderer;
  ASSERT_EQ(renderer.bitmap.Create(32, 32), 0);
  renderer.design = &design;
  renderer.showJumps = renderer.shaded = renderer.showMarkers = renderer.flipY = true;
  renderer.Render(-1);
  design.maxX = INT_MAX;
  test::SetNodes(design, {{INT_MAX, INT_MAX, 0}, {INT_MAX, INT_MIN, 0}, {INT_MIN, 5, STITCH_JUMP}, {7, 7, 0}});
  renderer.Render(-1);
  renderer.RenderOutline();
  EXPECT_EQ(renderer.bitmap.pixels.size(), 32u * 32);
}

}  // namespace
}  // namespace fennick
