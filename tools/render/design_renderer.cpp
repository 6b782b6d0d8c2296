#include "tools/render/design_renderer.h"

#include <algorithm>
#include <vector>

namespace fennick {
namespace {

// Highlight rings around a node's marker.
constexpr uint32_t kInnerRing = 32;
constexpr uint32_t kOuterRing = 16;

constexpr uint32_t kWhite = 0xFFFFFF;

bool Outside(int32_t value, int32_t size) { return value < 0 || value >= size; }

// Every render starts alike: cleared, fitted to the design's bounds (given in
// millimetres), the pen in the corner.
void PrepareCanvas(StitchBitmap& canvas, const Design& design, bool thick) {
  canvas.thick = thick;
  canvas.Clear(canvas.background);
  canvas.SetWorld(static_cast<float>(design.minX * 0.1), static_cast<float>(design.maxY * 0.1),
                  static_cast<float>(design.maxX * 0.1), static_cast<float>(design.minY * 0.1));
  canvas.dashIndex = 1;
  canvas.MoveTo(0, 0);
}

// The pixel of every point within the design's bounds, worked out once per
// axis: a design of a million stitches has a few thousand distinct
// coordinates, and the mapping is float arithmetic. A point outside the
// bounds (stale ones) is mapped as it comes.
class PixelMap {
 public:
  PixelMap(const StitchBitmap& canvas, const Design& design, bool flipY) : canvas_(canvas), flipY_(flipY) {
    const int64_t lowY = flipY ? -int64_t{design.maxY} : design.minY;
    const int64_t highY = flipY ? -int64_t{design.minY} : design.maxY;
    Fill(columns_, firstX_, design.minX, design.maxX, [&](int32_t x) { return canvas.PixelX(x); });
    Fill(rows_, firstY_, lowY, highY, [&](int32_t y) { return canvas.PixelY(y); });
  }

  PixelPoint operator()(int32_t x, int32_t y) const {
    if (flipY_) y = Wrap32(-int64_t{y});
    const uint64_t column = static_cast<uint64_t>(int64_t{x} - firstX_);
    const uint64_t row = static_cast<uint64_t>(int64_t{y} - firstY_);
    return {column < columns_.size() ? columns_[column] : canvas_.PixelX(x),
            row < rows_.size() ? rows_[row] : canvas_.PixelY(y)};
  }

 private:
  // Larger spans (a design over 100 m) are mapped point by point.
  static constexpr int64_t kLargestSpan = int64_t{1} << 20;

  template <typename Map>
  static void Fill(std::vector<int32_t>& pixels, int64_t& first, int64_t low, int64_t high, Map map) {
    first = low;
    if (high < low || high - low >= kLargestSpan) return;
    pixels.resize(static_cast<size_t>(high - low + 1));
    for (int64_t v = low; v <= high; ++v) pixels[static_cast<size_t>(v - low)] = map(static_cast<int32_t>(v));
  }

  const StitchBitmap& canvas_;
  bool flipY_;
  std::vector<int32_t> columns_, rows_;
  int64_t firstX_ = 0, firstY_ = 0;
};

}  // namespace

void DesignRenderer::Render(int color) {
  if (design == nullptr) return;
  StitchBitmap& canvas = bitmap;
  PrepareCanvas(canvas, *design, thick);

  const std::vector<ThreadColor>& threads = design->threads;
  if (!threads.empty()) canvas.SetColor(threads[0].rgb);
  // Half the marker's edge: the zoom over 4, rounded, at least 2.
  const double quarterZoom = canvas.zoom * 0.25 + 0.5;
  const int32_t markerHalf = quarterZoom >= 2 ? static_cast<int32_t>(std::min(quarterZoom, 1e6)) : 2;
  size_t block = 0;
  const bool allBlocks = color == -1;

  const PixelMap toPixel(canvas, *design, flipY);
  int32_t x = 0, y = 0;
  for (StitchNode& node : design->stitches) {
    x = Wrap32(int64_t{x} + node.dx);
    y = Wrap32(int64_t{y} + node.dy);
    if (node.IsColorStop() && block + 1 < threads.size()) {
      ++block;
      canvas.SetColor(threads[block].rgb);
    }
    const PixelPoint point = toPixel(x, y);

    // A cheap test, not a clipper: lines that pass through are clipped per
    // pixel. Deliberately kept: the pen's y is tested where the new y belongs.
    const bool penYOutside = Outside(canvas.penY, canvas.height);
    if (Outside(canvas.penX, canvas.width) && penYOutside && Outside(point.x, canvas.width) && penYOutside) {
      canvas.MoveTo(point.x, point.y);
      node.flags &= ~STITCH_DRAWN;
      continue;
    }
    // Deliberately kept: the pen is not moved here, so a block's first stitch
    // is drawn from wherever the pen was left, the corner at first.
    if (!allBlocks && static_cast<int64_t>(block) != color) continue;

    node.flags |= STITCH_DRAWN;
    if (!node.IsJump()) {
      if (shaded) {
        canvas.Line3D(point.x, point.y);
      } else {
        canvas.LineFlat(point.x, point.y);
      }
    } else if (showJumps) {
      canvas.LineDashed(point.x, point.y);
    } else {
      node.flags &= ~STITCH_DRAWN;
      canvas.MoveTo(point.x, point.y);
    }

    if (showMarkers) {
      canvas.BoxFilled(point.x, point.y, markerHalf);
      canvas.BoxOutline(point.x, point.y, markerHalf);
      if (node.flags & kInnerRing) canvas.BoxOutline(point.x, point.y, markerHalf + 2);
      if (node.flags & kOuterRing) canvas.BoxOutline(point.x, point.y, markerHalf + 4);
    }
  }
}

void DesignRenderer::RenderOutline() {
  if (design == nullptr) return;
  showJumps = false;
  shaded = false;
  showMarkers = false;
  thick = bitmap.width >= 250;
  bitmap.background = kWhite;
  Render(-1);

  const std::vector<uint32_t> drawn = bitmap.pixels;
  bitmap.Clear(kWhite);
  const auto width = static_cast<size_t>(bitmap.width), height = static_cast<size_t>(bitmap.height);
  if (drawn.size() != width * height) return;
  // The outermost border is left white.
  for (size_t row = 1; row + 1 < height; ++row) {
    for (size_t column = 1; column + 1 < width; ++column) {
      const size_t i = row * width + column;
      if (drawn[i] != drawn[i + 1] || drawn[i] != drawn[i + width] || drawn[i] != drawn[i + width + 1]) {
        bitmap.pixels[i] = 0;
      }
    }
  }
}

void RenderBlocksApart(Design& design, std::span<StitchBitmap> canvases, size_t colors, bool flipY,
                       uint32_t drawnMark, size_t firstColor) {
  const std::vector<ThreadColor>& threads = design.threads;
  if (colors == 0 || canvases.size() % colors != 0) return;
  for (size_t i = 0; i < canvases.size(); ++i) {
    StitchBitmap& canvas = canvases[i];
    PrepareCanvas(canvas, design, false);
    if (firstColor + i % colors < threads.size()) canvas.SetColor(threads[firstColor + i % colors].rgb);
  }
  // The canvases of a set share their size, and so their mapping.
  std::vector<PixelMap> toPixel;
  for (size_t set = 0; set < canvases.size(); set += colors) toPixel.emplace_back(canvases[set], design, flipY);
  size_t block = 0;
  int32_t x = 0, y = 0;
  for (StitchNode& node : design.stitches) {
    x = Wrap32(int64_t{x} + node.dx);
    y = Wrap32(int64_t{y} + node.dy);
    if (node.IsColorStop() && block + 1 < threads.size()) ++block;
    node.flags &= ~STITCH_DRAWN;
    if (block < firstColor || block - firstColor >= colors) continue;
    for (size_t set = block - firstColor, size = 0; set < canvases.size(); set += colors, ++size) {
      StitchBitmap& canvas = canvases[set];
      const PixelPoint point = toPixel[size](x, y);
      // Render's cheap clip test. Only the sewing colour's pen can be off the
      // bitmap: the others still wait in the corner, or are done.
      if (Outside(point.x, canvas.width) && Outside(canvas.penX, canvas.width) &&
          Outside(canvas.penY, canvas.height)) {
        canvas.MoveTo(point.x, point.y);
        node.flags &= ~STITCH_DRAWN;
      } else if (node.IsJump()) {
        canvas.MoveTo(point.x, point.y);
      } else {
        node.flags |= drawnMark;
        // A stitch within one pixel draws nothing: the walk plots from its first step on.
        if (point.x != canvas.penX || point.y != canvas.penY) canvas.LineFlat(point.x, point.y);
      }
    }
  }
}

}  // namespace fennick
