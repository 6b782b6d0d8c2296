#include "tools/sample_design.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace fennick {
namespace {

constexpr int32_t kSatinSpacing = 4;  // stitch units between satin passes
constexpr int32_t kFillSpacing = 4;   // between fill rows
constexpr int32_t kFillStitch = 40;   // longest fill stitch
constexpr int32_t kRunStitch = 25;    // running stitch length

ThreadColor Thread(const char* name, uint8_t r, uint8_t g, uint8_t b) {
  ThreadColor thread;
  thread.colorName = name;
  thread.rgb = ColorRef(r, g, b);
  return thread;
}

// Emits absolute positions as relative nodes.
class Sewer {
 public:
  explicit Sewer(Design& design) : design_(design) {}

  void StitchTo(double x, double y) { Move(x, y, 0); }
  // A jump and a stitch on the spot that anchors its landing.
  void JumpTo(double x, double y) {
    Move(x, y, STITCH_JUMP);
    design_.stitches.PushBack(0, 0, 0);
  }
  void NewColor(const ThreadColor& thread) {
    if (design_.threads.empty()) {
      design_.threads.push_back(thread);
    } else {
      design_.AppendThread(thread);
    }
  }

  // Zigzag between the two edges of a straight column from (x0, y0) to (x1, y1).
  void SatinColumn(double x0, double y0, double x1, double y1, double width) {
    const double length = std::hypot(x1 - x0, y1 - y0);
    const double ux = (x1 - x0) / length, uy = (y1 - y0) / length;
    const double nx = -uy * width / 2, ny = ux * width / 2;
    JumpTo(x0 + nx, y0 + ny);
    const int passes = static_cast<int>(length / kSatinSpacing);
    for (int i = 1; i <= passes; ++i) {
      const double side = (i % 2 == 0) ? 1.0 : -1.0;
      const double along = i * kSatinSpacing;
      StitchTo(x0 + ux * along + nx * side, y0 + uy * along + ny * side);
    }
  }

  // A satin column bent along an arc around (cx, cy).
  void SatinArc(double cx, double cy, double radius, double width, double from, double to) {
    const double step = kSatinSpacing / radius;
    bool outside = true;
    JumpTo(cx + (radius + width / 2) * std::cos(from), cy + (radius + width / 2) * std::sin(from));
    for (double angle = from + step; angle <= to; angle += step) {
      outside = !outside;
      const double r = outside ? radius + width / 2 : radius - width / 2;
      StitchTo(cx + r * std::cos(angle), cy + r * std::sin(angle));
    }
  }

  // Back-and-forth rows over a rectangle, stitches no longer than kFillStitch,
  // staggered from row to row so that the needle holes don't line up. Each
  // row's first stitch climbs from the end of the row before.
  void Fill(double x0, double y0, double width, double height) {
    JumpTo(x0, y0);
    const int rows = static_cast<int>(height / kFillSpacing);
    for (int row = 0; row <= rows; ++row) {
      const double y = y0 + row * kFillSpacing;
      auto across = [&](double x) { return row % 2 == 0 ? x0 + x : x0 + width - x; };
      const double shift = (row % 3) * kFillStitch / 3.0;
      for (double x = shift > 0 ? shift : kFillStitch; x < width; x += kFillStitch) StitchTo(across(x), y);
      StitchTo(across(width), y);
    }
  }

  void RunningCircle(double cx, double cy, double radius) {
    const int steps = static_cast<int>(2 * std::numbers::pi * radius / kRunStitch);
    JumpTo(cx + radius, cy);
    for (int i = 1; i <= steps; ++i) {
      const double angle = 2 * std::numbers::pi * i / steps;
      StitchTo(cx + radius * std::cos(angle), cy + radius * std::sin(angle));
    }
  }

 private:
  void Move(double x, double y, uint32_t flags) {
    const int32_t ax = static_cast<int32_t>(std::lround(x)), ay = static_cast<int32_t>(std::lround(y));
    design_.stitches.PushBack(ax - x_, ay - y_, flags);
    x_ = ax;
    y_ = ay;
  }

  Design& design_;
  int32_t x_ = 0;
  int32_t y_ = 0;
};

// A design of one colour that `sew` makes, centred.
template <typename Sew>
Design Piece(const char* name, const ThreadColor& thread, Sew sew) {
  Design design;
  design.name = name;
  Sewer sewer(design);
  sewer.NewColor(thread);
  sew(sewer);
  design.Centre();
  return design;
}

}  // namespace

Design SampleDesign() {
  Design design;
  design.name = "fennick-demo.dst";
  Sewer sewer(design);
  sewer.NewColor(Thread("Navy", 20, 40, 120));
  sewer.SatinColumn(-300, -250, -300, 250, 40);
  sewer.NewColor(Thread("Leaf Green", 60, 160, 60));
  sewer.Fill(-200, -150, 300, 300);
  sewer.NewColor(Thread("Crimson", 200, 20, 50));
  sewer.RunningCircle(-50, 0, 230);
  sewer.NewColor(Thread("Gold", 230, 180, 30));
  sewer.SatinArc(-50, 0, 300, 36, 0.25 * std::numbers::pi, 0.75 * std::numbers::pi);
  design.Centre();
  return design;
}

Design SatinColumnSample(int32_t length, int32_t width) {
  return Piece("satin-column.dst", Thread("Navy", 20, 40, 120),
               [&](Sewer& sewer) { sewer.SatinColumn(0, 0, 0, length, width); });
}

Design FillSample(int32_t width, int32_t height) {
  return Piece("fill.dst", Thread("Leaf Green", 60, 160, 60), [&](Sewer& sewer) { sewer.Fill(0, 0, width, height); });
}

Design LargeSampleDesign(size_t stitchCount, int32_t fitWidth, int32_t fitHeight) {
  static const ThreadColor kColors[] = {Thread("Navy", 20, 40, 120), Thread("Leaf Green", 60, 160, 60),
                                        Thread("Crimson", 200, 20, 50), Thread("Gold", 230, 180, 30)};
  constexpr double kTile = 260;   // stitch units from one tile to the next
  constexpr int kColumns = 40;
  constexpr int kTilesPerColor = 60;
  // A tile's extent: the satin's half width left of its column, the fill to its right.
  constexpr double kTileWidth = 258, kTileHeight = 220;
  int columns = kColumns;
  int places = 0;  // 0: every tile has a place of its own
  if (fitWidth > 0 && fitHeight > 0) {
    columns = std::max(1, static_cast<int>((fitWidth - kTileWidth) / kTile) + 1);
    places = columns * std::max(1, static_cast<int>((fitHeight - kTileHeight) / kTile) + 1);
  }
  Design design;
  design.name = "large-sample.dst";
  design.stitches.Reserve(stitchCount + 2048);
  Sewer sewer(design);
  for (int tile = 0; design.stitches.Size() < stitchCount; ++tile) {
    if (tile % kTilesPerColor == 0) sewer.NewColor(kColors[(tile / kTilesPerColor) % 4]);
    const int place = places > 0 ? tile % places : tile;
    const double x = (place % columns) * kTile, y = (place / columns) * kTile;
    sewer.SatinColumn(x, y, x, y + 220, 36);
    sewer.Fill(x + 40, y, 200, 220);
  }
  design.Centre();
  return design;
}

}  // namespace fennick
