// The renderer's bitmaps on screen: their pixels as a Qt image, and drawn
// stretched into a rectangle of a painter.
#pragma once

#include <QImage>
#include <QRect>

#include "tools/render/stitch_bitmap.h"

class QPainter;

namespace fennick {

// An opaque copy of the pixels; a null image when the bitmap has none.
QImage ToQImage(const StitchBitmap& bitmap);

// Draws the bitmap stretched to `target`, smoothed; nothing when it has no pixels.
void Blit(const StitchBitmap& bitmap, QPainter& painter, const QRect& target);

}  // namespace fennick
