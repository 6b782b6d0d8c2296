// The one software renderer's canvas: a 32-bit pixel buffer with the mapping
// from design millimetres to pixels and the line and box primitives of stitches.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick {

struct PixelPoint {
  int32_t x = 0;
  int32_t y = 0;
  bool operator==(const PixelPoint&) const = default;
};

struct StitchBitmap {
  // The largest bitmap Create makes: 64 Mi pixels, 256 MiB.
  static constexpr int64_t kMaxPixels = int64_t{1} << 26;
  // Pixel positions are held within this distance of the origin, so that
  // differences and box edges never overflow. Anything this far out is off any
  // bitmap by a wide margin.
  static constexpr int32_t kFarOutside = int32_t{1} << 30;
  static int32_t HoldInRange(double value) {
    if (!(value > -kFarOutside)) return -kFarOutside;  // NaN lands here too
    if (value > kFarOutside) return kFarOutside;
    return static_cast<int32_t>(value);
  }
  // Half away from zero, the rounding of every pixel position.
  static int32_t RoundHalfAway(double value) { return HoldInRange(value >= 0 ? value + 0.5 : value - 0.5); }

  std::vector<uint32_t> pixels;  // 0x00RRGGBB, row-major from the top
  uint32_t background = 0x808080;
  uint32_t markerColor = 0;
  int32_t margin = 4;  // pixels kept free at each edge
  float centreX = 0;
  float centreY = 0;
  bool dirty = true;   // the picture changed and must be shown anew
  bool valid = false;  // a pixel buffer exists
  // The design's bounds in millimetres, ordered as a screen rectangle: right
  // and bottom hold the larger values.
  float worldRight = 0;
  float worldBottom = 0;
  float worldLeft = 0;
  float worldTop = 0;
  float worldWidth = 0;
  float worldHeight = 0;
  int32_t panX = 0;  // pixels
  int32_t panY = 0;
  float panFractionX = 0.5f;
  float panFractionY = 0.5f;
  float fit = 0;  // pixels per millimetre at zoom 1
  int32_t width = 0;
  int32_t height = 0;
  float zoom = 1.0f;
  int32_t penX = 0;  // pixel position of the last point drawn
  int32_t penY = 0;
  uint32_t penColor = 0;             // 0x00RRGGBB
  bool thick = true;                 // every pixel is drawn as a 2 by 2 block
  int32_t dashIndex = 0;             // selects the dash period of jump lines
  std::array<uint32_t, 4> shades{};  // light, mid, dim, dark of the pen colour

  // -1 for a width or height of 0 or less (the old bitmap stays), 1 when the
  // buffer can't be had (valid is then false), else 0. An unchanged size
  // keeps the buffer and its pixels.
  int Create(int32_t newWidth, int32_t newHeight);
  void Clear(uint32_t color);
  // Millimetres; the design's centre is (0, 0) and the fit is symmetrical about it.
  void SetWorld(float left, float top, float right, float bottom);
  // Stitch units of 0.1 mm to a pixel, half away from zero.
  PixelPoint WorldToPixel(int32_t x, int32_t y) const { return {PixelX(x), PixelY(y)}; }
  int32_t PixelX(int32_t x) const {
    return RoundHalfAway(static_cast<double>(static_cast<float>(x) * fit) * 0.1 * zoom + panX + centreX);
  }
  int32_t PixelY(int32_t y) const {
    return RoundHalfAway(static_cast<double>(static_cast<float>(y) * fit) * 0.1 * zoom + panY + centreY);
  }
  // UpdatePan after changing panFractionX/Y, UpdateFit after changing the
  // margin; SetZoom sets the zoom (finite, above 0) and does both.
  void UpdatePan();
  void UpdateFit();
  void SetZoom(float newZoom);

  void MoveTo(int32_t x, int32_t y);
  void LineFlat(int32_t x, int32_t y);
  // The thread look: light at the first pixel and the middle, dark at the ends.
  void Line3D(int32_t x, int32_t y);
  // Jump lines, dashed by dashIndex modulo 3 with periods 10, 4 and 15.
  void LineDashed(int32_t x, int32_t y);
  // From 0x00BBGGRR: sets penColor and the four shades.
  void SetColor(uint32_t colorref);
  // Both plot in markerColor; BoxOutline leaves the pen at the box's centre.
  void BoxFilled(int32_t x, int32_t y, int32_t r);
  void BoxOutline(int32_t x, int32_t y, int32_t r);

  // Windows bitmap files of depth 1, 4, 8, 16, 24 or 32, rows kept in file
  // order. 0 done, 1 can't open, 2 short or unusable header, 3 bad magic,
  // 4 larger than a bitmap may be, 5 out of memory.
  int LoadBmpFile(const std::string& path);
  int LoadBmp(std::span<const uint8_t> bytes);
};

}  // namespace fennick
