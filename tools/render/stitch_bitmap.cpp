#include "tools/render/stitch_bitmap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "core/byte_cursor.h"
#include "core/file_io.h"

namespace fennick {
namespace {

int32_t ClampToInt32(int64_t value) {
  return static_cast<int32_t>(
      std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

void PlotPixel(StitchBitmap& bitmap, int64_t x, int64_t y, uint32_t color) {
  if (x < 0 || x >= bitmap.width || y < 0 || y >= bitmap.height) return;
  const size_t index = static_cast<size_t>(y * bitmap.width + x);
  if (index < bitmap.pixels.size()) bitmap.pixels[index] = color;
}

// Every pixel is bounds-tested here, so no drawing clips before it.
void Plot(StitchBitmap& bitmap, int64_t x, int64_t y, uint32_t color) {
  // A thick pixel wholly inside, the common case: one test for all four.
  const int64_t width = bitmap.width;
  if (bitmap.thick && x >= 0 && y >= 0 && x + 1 < width && y + 1 < bitmap.height) {
    const auto index = static_cast<size_t>(y * width + x);
    if (index + static_cast<size_t>(width) + 1 < bitmap.pixels.size()) {
      uint32_t* pixel = bitmap.pixels.data() + index;
      pixel[0] = pixel[1] = pixel[width] = pixel[width + 1] = color;
      return;
    }
  }
  PlotPixel(bitmap, x, y, color);
  if (bitmap.thick) {
    PlotPixel(bitmap, x, y + 1, color);
    PlotPixel(bitmap, x + 1, y + 1, color);
    PlotPixel(bitmap, x + 1, y, color);
  }
}

// The steps k = first..last (of 1..longer) whose coordinate on the major axis,
// start + step * k, lies where a plot can still touch the bitmap: a thick
// pixel reaches one to the right and down. first > last when none does.
std::pair<int64_t, int64_t> VisibleSteps(int64_t start, int64_t step, int64_t longer, int64_t size) {
  if (step > 0) return {std::max<int64_t>(1, -1 - start), std::min(longer, size - 1 - start)};
  return {std::max<int64_t>(1, start - size + 1), std::min(longer, start + 1)};
}

// The Bresenham walk from the pen to (x, y): the error starts at half the
// longer extent, and each step moves before it plots, so the first pixel is
// one step from the pen. colorAt(i, longer) gives the colour of pixel i.
// Only the steps that can reach the bitmap are walked; the error at the first
// of them is worked out directly, so the pixels are those of the whole walk.
template <typename ColorAt>
void WalkLine(StitchBitmap& bitmap, int32_t x, int32_t y, ColorAt colorAt) {
  const int64_t x0 = bitmap.penX, y0 = bitmap.penY;
  bitmap.penX = x;
  bitmap.penY = y;
  const int64_t dx = int64_t{x} - x0, dy = int64_t{y} - y0;
  const bool xMajor = std::llabs(dx) >= std::llabs(dy);
  const int64_t majorDelta = xMajor ? dx : dy, minorDelta = xMajor ? dy : dx;
  // Below 2^32 each, so products of the two fit in 64 unsigned bits.
  const uint64_t longer = static_cast<uint64_t>(std::llabs(majorDelta));
  const uint64_t shorter = static_cast<uint64_t>(std::llabs(minorDelta));
  if (longer == 0) return;
  const int64_t majorStep = majorDelta < 0 ? -1 : 1, minorStep = minorDelta < 0 ? -1 : 1;
  const int64_t majorStart = xMajor ? x0 : y0, minorStart = xMajor ? y0 : x0;
  const auto [first, last] =
      VisibleSteps(majorStart, majorStep, static_cast<int64_t>(longer), xMajor ? bitmap.width : bitmap.height);
  if (first > last) return;

  // After k steps the error is half - k * shorter + m * longer, with m the
  // minor steps taken: the one m that puts it in [0, longer).
  const uint64_t half = longer / 2;
  const uint64_t skipped = static_cast<uint64_t>(first - 1);
  const uint64_t owed = skipped * shorter;
  const uint64_t minorSteps = owed <= half ? 0 : (owed - half + longer - 1) / longer;
  int64_t error = static_cast<int64_t>(minorSteps * longer + half - owed);
  int64_t major = majorStart + majorStep * static_cast<int64_t>(skipped);
  int64_t minor = minorStart + minorStep * static_cast<int64_t>(minorSteps);
  const auto shorterStep = static_cast<int64_t>(shorter), longerStep = static_cast<int64_t>(longer);
  for (int64_t k = first; k <= last; ++k) {
    major += majorStep;
    error -= shorterStep;
    if (error < 0) {
      minor += minorStep;
      error += longerStep;
    }
    const uint32_t color = colorAt(k - 1, longerStep);
    if (xMajor) {
      Plot(bitmap, major, minor, color);
    } else {
      Plot(bitmap, minor, major, color);
    }
  }
}

uint32_t PackColor(const float (&channel)[3]) {
  // channel[] is blue, green, red.
  auto byte = [](float value) { return static_cast<uint32_t>(static_cast<int32_t>(value)) & 0xFF; };
  return byte(channel[2]) << 16 | byte(channel[1]) << 8 | byte(channel[0]);
}

// Periods of the jump dashes by dashIndex.
constexpr int64_t kDashPeriods[3] = {10, 4, 15};

constexpr size_t kFileHeaderSize = 14;
constexpr size_t kInfoHeaderSize = 40;
// The info header and its palette: no more than this is looked at.
constexpr size_t kMaxInfoBlock = 1068;

// Five bits a channel of 16-bit pixels, scaled to a byte as multiples of 8.
constexpr std::array<uint32_t, 32> kFiveBitScale = [] {
  std::array<uint32_t, 32> table{};
  for (uint32_t i = 0; i < 32; ++i) table[i] = i * 8;
  return table;
}();

}  // namespace

int StitchBitmap::Create(int32_t newWidth, int32_t newHeight) {
  if (newWidth <= 0 || newHeight <= 0) return -1;
  if (valid && newWidth == width && newHeight == height) return 0;
  pixels = {};
  valid = false;
  width = height = 0;
  const int64_t count = int64_t{newWidth} * newHeight;
  if (count > kMaxPixels) return 1;
  try {
    pixels.assign(static_cast<size_t>(count), 0);
  } catch (const std::bad_alloc&) {
    return 1;
  }
  width = newWidth;
  height = newHeight;
  valid = true;
  UpdatePan();
  UpdateFit();
  dirty = true;
  return 0;
}

void StitchBitmap::Clear(uint32_t color) { std::fill(pixels.begin(), pixels.end(), color); }

void StitchBitmap::UpdatePan() {
  centreX = static_cast<float>(width) * 0.5f;
  centreY = static_cast<float>(height) * 0.5f;
  // Deliberately rounded towards zero here, unlike every other position.
  auto towardsZero = [](float value) { return HoldInRange(value >= 0 ? value - 0.5 : value + 0.5); };
  const int32_t newPanX = towardsZero((static_cast<float>(width) * panFractionX - centreX) * zoom);
  const int32_t newPanY = towardsZero((static_cast<float>(height) * panFractionY - centreY) * zoom);
  if (newPanX != panX || newPanY != panY) dirty = true;
  panX = newPanX;
  panY = newPanY;
}

void StitchBitmap::UpdateFit() {
  const float halfX = std::max(std::fabs(worldLeft), std::fabs(worldRight));
  const float halfY = std::max(std::fabs(worldTop), std::fabs(worldBottom));
  const float keep = zoom <= 1 ? 2.0f * static_cast<float>(margin) : 0.0f;
  fit = std::min((static_cast<float>(width) - keep) / (2 * halfX), (static_cast<float>(height) - keep) / (2 * halfY));
  // A design of no extent has no scale: every point lands on the centre.
  if (!std::isfinite(fit)) fit = 0;
}

void StitchBitmap::SetZoom(float newZoom) {
  if (!(newZoom > 0) || !std::isfinite(newZoom)) return;
  zoom = newZoom;
  UpdatePan();
  UpdateFit();
}

void StitchBitmap::SetWorld(float left, float top, float right, float bottom) {
  if (right < left) std::swap(left, right);
  if (bottom < top) std::swap(top, bottom);
  if (left == worldLeft && right == worldRight && top == worldTop && bottom == worldBottom && right != left &&
      bottom != top) {
    return;
  }
  worldLeft = left;
  worldRight = right;
  worldTop = top;
  worldBottom = bottom;
  worldWidth = std::fabs(right - left);
  worldHeight = std::fabs(bottom - top);
  UpdateFit();
  dirty = true;
}

void StitchBitmap::MoveTo(int32_t x, int32_t y) {
  penX = x;
  penY = y;
}

void StitchBitmap::LineFlat(int32_t x, int32_t y) {
  const uint32_t color = penColor;
  WalkLine(*this, x, y, [color](int64_t, int64_t) { return color; });
}

void StitchBitmap::Line3D(int32_t x, int32_t y) {
  const std::array<uint32_t, 4> shade = shades;
  // i * 100 / longer, carried from pixel to pixel instead of divided anew.
  int64_t next = -1, quotient = 0, remainder = 0, stepQuotient = 0, stepRemainder = 0;
  WalkLine(*this, x, y, [&](int64_t i, int64_t longer) {
    if (i != next) {
      quotient = i * 100 / longer;
      remainder = i * 100 % longer;
      stepQuotient = 100 / longer;
      stepRemainder = 100 % longer;
    } else {
      quotient += stepQuotient;
      remainder += stepRemainder;
      if (remainder >= longer) {
        remainder -= longer;
        ++quotient;
      }
    }
    next = i + 1;
    int64_t percent = quotient;
    if (percent > 50) percent = 100 - percent;
    uint32_t color = shade[1];
    if (percent > 40) color = shade[0];
    if (percent < 20) color = shade[2];
    if (percent < 5) color = shade[3];
    if (percent == 0) color = shade[0];
    return color;
  });
}

void StitchBitmap::LineDashed(int32_t x, int32_t y) {
  const double dx = static_cast<double>(x) - penX, dy = static_cast<double>(y) - penY;
  if (dx == 0 && dy == 0) return;
  dashIndex = (dashIndex % 3 + 3) % 3;
  const int64_t period = kDashPeriods[dashIndex];
  const bool xMajor = std::fabs(dx) >= std::fabs(dy);
  const double longer = std::max(std::fabs(dx), std::fabs(dy));
  const auto steps = static_cast<int64_t>(longer);
  const double stepX = dx / longer, stepY = dy / longer;
  const double startX = penX, startY = penY;
  const auto [first, last] = xMajor ? VisibleSteps(penX, stepX < 0 ? -1 : 1, steps, width)
                                    : VisibleSteps(penY, stepY < 0 ? -1 : 1, steps, height);
  // Positions come from the step count, not a running sum, so a walk that
  // starts part way along lands where the whole walk would.
  for (int64_t k = first; k <= last; ++k) {
    const int64_t left = steps - k;
    if (left % period <= 1) continue;
    const double along = static_cast<double>(k);
    Plot(*this, RoundHalfAway(startX + along * stepX), RoundHalfAway(startY + along * stepY), penColor);
  }
  MoveTo(x, y);
}

void StitchBitmap::SetColor(uint32_t colorref) {
  const uint32_t red = colorref & 0xFF, green = (colorref >> 8) & 0xFF, blue = (colorref >> 16) & 0xFF;
  penColor = red << 16 | green << 8 | blue;

  // Single precision throughout; channels in the order blue, green, red.
  const float channel[3] = {static_cast<float>(blue), static_cast<float>(green), static_cast<float>(red)};
  float light[3], mid[3], dim[3], dark[3];
  for (size_t c = 0; c < 3; ++c) {
    light[c] = channel[c] * 1.1f;
    mid[c] = channel[c] * 0.92f;
    dim[c] = channel[c] * 0.8f;
    dark[c] = channel[c] * 0.6f;
  }
  size_t brightest = 0;
  for (size_t c = 1; c < 3; ++c) {
    if (light[c] > light[brightest]) brightest = c;
  }
  const float spread = light[brightest] - dark[brightest];
  if (spread < 80) {
    if (spread != 0) {
      // Dark colours are lifted, their light shade most.
      const float k1 = (80 - spread) * 0.0125f + 1;
      const float k2 = (k1 + 1) * 0.5f, k3 = (k2 + 1) * 0.5f, k4 = (k3 + 1) * 0.5f;
      for (size_t c = 0; c < 3; ++c) {
        light[c] *= k1;
        mid[c] *= k2;
        dim[c] *= k3;
        dark[c] *= k4;
      }
    } else {
      std::fill(std::begin(light), std::end(light), 90.0f);
      std::fill(std::begin(mid), std::end(mid), 75.0f);
      std::fill(std::begin(dim), std::end(dim), 45.0f);
      std::fill(std::begin(dark), std::end(dark), 15.0f);
    }
  }
  if (red + green + blue < 716) {
    for (float& value : light) value = std::clamp(value, 0.0f, 255.0f);
  } else {
    // Near white keeps a fixed grey relief.
    std::fill(std::begin(light), std::end(light), 245.0f);
    std::fill(std::begin(mid), std::end(mid), 238.0f);
    std::fill(std::begin(dim), std::end(dim), 225.0f);
    std::fill(std::begin(dark), std::end(dark), 210.0f);
  }
  shades = {PackColor(light), PackColor(mid), PackColor(dim), PackColor(dark)};
}

void StitchBitmap::BoxFilled(int32_t x, int32_t y, int32_t r) {
  if (r < 0) return;
  // Rows and columns off the bitmap are skipped; a thick plot reaches one back.
  const int64_t top = std::max<int64_t>(int64_t{y} - r, -1), bottom = std::min<int64_t>(int64_t{y} + r, height - 1);
  const int64_t left = std::max<int64_t>(int64_t{x} - r, -1), right = std::min<int64_t>(int64_t{x} + r, width - 1);
  for (int64_t row = top; row <= bottom; ++row) {
    for (int64_t column = left; column <= right; ++column) Plot(*this, column, row, markerColor);
  }
}

void StitchBitmap::BoxOutline(int32_t x, int32_t y, int32_t r) {
  const uint32_t keptColor = penColor;
  penColor = markerColor;
  const int32_t left = ClampToInt32(int64_t{x} - r), right = ClampToInt32(int64_t{x} + r);
  const int32_t top = ClampToInt32(int64_t{y} - r), bottom = ClampToInt32(int64_t{y} + r);
  MoveTo(left, top);
  LineFlat(right, top);
  LineFlat(right, bottom);
  LineFlat(left, bottom);
  LineFlat(left, top);
  penColor = keptColor;
  MoveTo(x, y);
}

int StitchBitmap::LoadBmpFile(const std::string& path) {
  std::vector<uint8_t> bytes;
  // No file of a bitmap we would accept is larger than its pixels and a header.
  const size_t maxSize = static_cast<size_t>(kMaxPixels) * 4 + 65536;
  if (ReadWholeFile(path, bytes, maxSize) != FileRead::kOk) return 1;
  return LoadBmp(bytes);
}

int StitchBitmap::LoadBmp(std::span<const uint8_t> bytes) {
  if (bytes.size() < kFileHeaderSize) return 2;
  ByteReader fileHeader(bytes);
  if (fileHeader.U8() != 'B' || fileHeader.U8() != 'M') return 3;
  fileHeader.Skip(8);  // file size and two reserved words
  const uint32_t pixelOffset = fileHeader.U32LE();

  const std::span<const uint8_t> info =
      bytes.subspan(kFileHeaderSize, std::min(bytes.size() - kFileHeaderSize, kMaxInfoBlock));
  if (info.size() < kInfoHeaderSize) return 2;
  ByteReader header(info);
  const uint32_t headerSize = header.U32LE();
  const int32_t fileWidth = header.S32LE();
  const int32_t fileHeight = header.S32LE();
  header.Skip(2);  // planes
  const uint16_t depth = header.U16LE();
  header.Skip(16);  // compression, image size, resolution
  const uint32_t colorsUsed = header.U32LE();
  if (headerSize < kInfoHeaderSize) return 2;
  if (depth != 1 && depth != 4 && depth != 8 && depth != 16 && depth != 24 && depth != 32) return 2;
  // A negative height is a top-down file; rows are taken in file order all the same.
  const int64_t rows = std::llabs(int64_t{fileHeight});
  if (fileWidth <= 0 || rows == 0) return 2;
  if (int64_t{fileWidth} * rows > kMaxPixels) return 4;
  if (Create(fileWidth, static_cast<int32_t>(rows)) != 0) return 5;
  Clear(0);

  // Palette entries are blue, green, red, spare: the low three bytes of a
  // little-endian word are already 0x00RRGGBB.
  std::array<uint32_t, 256> palette{};
  if (depth <= 8) {
    const uint32_t entries = colorsUsed != 0 && colorsUsed < (1u << depth) ? colorsUsed : 1u << depth;
    ByteReader colors(info, std::min<size_t>(headerSize, info.size()));
    for (uint32_t i = 0; i < entries; ++i) palette[i] = colors.U32LE() & 0xFFFFFF;
  }

  const size_t stride = (static_cast<size_t>(fileWidth) * depth + 31) / 32 * 4;
  const auto columns = static_cast<size_t>(fileWidth);
  for (size_t row = 0; row < static_cast<size_t>(rows); ++row) {
    const size_t rowStart = pixelOffset + row * stride;
    if (rowStart >= bytes.size()) break;
    // A truncated last row reads as zeros past the end.
    ByteReader source(bytes.subspan(rowStart, std::min(stride, bytes.size() - rowStart)));
    const std::span<uint32_t> out = std::span<uint32_t>(pixels).subspan(row * columns, columns);
    switch (depth) {
      case 1:
        for (size_t column = 0; column < columns; column += 8) {
          const uint8_t bits = source.U8();
          for (size_t bit = 0; bit < 8 && column + bit < columns; ++bit) {
            out[column + bit] = palette[(bits >> (7 - bit)) & 1];
          }
        }
        break;
      case 4:
        for (size_t column = 0; column < columns; column += 2) {
          const uint8_t pair = source.U8();
          out[column] = palette[pair >> 4];
          if (column + 1 < columns) out[column + 1] = palette[pair & 15];
        }
        break;
      case 8:
        for (size_t column = 0; column < columns; ++column) out[column] = palette[source.U8()];
        break;
      case 16:
        for (size_t column = 0; column < columns; ++column) {
          // Deliberately kept: the source advances one byte per pixel, not two.
          source.Seek(column);
          const uint16_t value = source.U16LE();
          out[column] = kFiveBitScale[(value >> 10) & 31] << 16 | kFiveBitScale[(value >> 5) & 31] << 8 |
                        kFiveBitScale[value & 31];
        }
        break;
      case 24:
        for (size_t column = 0; column < columns; ++column) {
          const uint32_t blue = source.U8(), green = source.U8(), red = source.U8();
          out[column] = red << 16 | green << 8 | blue;
        }
        break;
      default:  // 32
        for (size_t column = 0; column < columns; ++column) out[column] = source.U32LE() & 0xFFFFFF;
        break;
    }
  }
  dirty = true;
  return 0;
}

}  // namespace fennick
