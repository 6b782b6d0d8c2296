#include "tools/bitmap_file.h"

#include "core/byte_cursor.h"
#include "core/preferences.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kInfoHeaderSize = 40;
// Deliberately kept: a spare word after the info header, so the pixels start at 58.
constexpr uint32_t kPixelOffset = kFileHeaderSize + kInfoHeaderSize + 4;

}  // namespace

std::vector<uint8_t> BmpFileImage(const StitchBitmap& bitmap) {
  const uint32_t pixelBytes = static_cast<uint32_t>(bitmap.pixels.size()) * 4;
  std::vector<uint8_t> file;
  file.reserve(kPixelOffset + pixelBytes);
  ByteWriter out(file);
  out.Text("BM");
  out.U32LE(pixelBytes + kPixelOffset);
  out.U32LE(0);
  out.U32LE(kPixelOffset);
  out.U32LE(kInfoHeaderSize);
  // A positive height: readers show the first row at the bottom, as y grows
  // upwards in the design.
  out.S32LE(bitmap.width);
  out.S32LE(bitmap.height);
  out.U16LE(1);     // planes
  out.U16LE(32);    // bits per pixel
  out.Fill(0, 24);  // no compression; sizes, resolution and palette left to the reader
  out.U32LE(0);     // the spare word
  for (const uint32_t pixel : bitmap.pixels) out.U32LE(pixel);
  return file;
}

BitmapOptions BitmapOptionsFromPreferences() {
  const BitmapSettings settings = GetBitmapSettings();
  BitmapOptions options;
  options.size = settings.size;
  options.shaded = settings.make3D != 0;
  options.outline = settings.outline != 0;
  return options;
}

bool RenderBitmap(Design& design, const BitmapOptions& options, DesignRenderer& renderer) {
  if (renderer.bitmap.Create(options.size, options.size) != 0) return false;
  renderer.design = &design;
  renderer.showJumps = options.showJumps;
  renderer.shaded = options.shaded;
  renderer.showMarkers = false;
  renderer.thick = options.shaded;
  renderer.flipY = options.flipY;
  renderer.bitmap.background = options.background;
  if (options.outline) {
    renderer.RenderOutline();
  } else {
    renderer.Render(-1);
  }
  return true;
}

int MakeBitmap(Design* design, std::vector<uint8_t>& file) {
  if (design == nullptr) return -1;
  DesignRenderer renderer;
  if (!RenderBitmap(*design, BitmapOptionsFromPreferences(), renderer)) return -1;
  file = BmpFileImage(renderer.bitmap);
  return 0;
}

}  // namespace fennick
