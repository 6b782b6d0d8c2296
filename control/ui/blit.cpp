#include "control/ui/blit.h"

#include <QPainter>
#include <algorithm>

namespace fennick {

QImage ToQImage(const StitchBitmap& bitmap) {
  if (bitmap.width <= 0 || bitmap.height <= 0) return {};
  const auto width = static_cast<size_t>(bitmap.width);
  if (bitmap.pixels.size() != width * static_cast<size_t>(bitmap.height)) return {};
  QImage image(bitmap.width, bitmap.height, QImage::Format_RGB32);
  if (image.isNull()) return {};
  // The renderer leaves the top byte 0; Qt wants it 0xFF in an opaque image.
  const uint32_t* row = bitmap.pixels.data();
  for (int y = 0; y < bitmap.height; ++y, row += width) {
    std::transform(row, row + width, reinterpret_cast<uint32_t*>(image.scanLine(y)),
                   [](uint32_t pixel) { return pixel | 0xFF000000u; });
  }
  return image;
}

void Blit(const StitchBitmap& bitmap, QPainter& painter, const QRect& target) {
  const QImage image = ToQImage(bitmap);
  if (image.isNull() || target.isEmpty()) return;
  painter.save();
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(target, image);
  painter.restore();
}

}  // namespace fennick
