#include "control/host/page_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "control/ui/blit.h"
#include "core/preferences.h"

namespace fennick {
namespace {

constexpr float kWheelStep = 1.25f;
constexpr float kMaxZoom = 64.0f;

bool HasStitches(const Design* design) { return design != nullptr && !design->stitches.Empty(); }

}  // namespace

PageView::PageView(QWidget* parent) : QWidget(parent) {
  renderer_.flipY = true;  // the bitmap's rows run from the top down
  renderer_.shaded = true;
  setMouseTracking(false);
  setFocusPolicy(Qt::WheelFocus);
}

void PageView::SetDesign(Design* design) {
  renderer_.design = design;
  stale_ = true;
  update();
}

void PageView::SetHoop(int32_t width, int32_t height) {
  hoopWidth_ = width;
  hoopHeight_ = height;
  stale_ = true;
  update();
}

void PageView::SetShaded(bool shaded) {
  renderer_.shaded = shaded;
  stale_ = true;
  update();
}

void PageView::SetShowJumps(bool show) {
  renderer_.showJumps = show;
  stale_ = true;
  update();
}

void PageView::ZoomBy(float factor) {
  zoom_ = std::clamp(zoom_ * factor, 1.0f / kMaxZoom, kMaxZoom);
  stale_ = true;
  update();
}

void PageView::ResetView() {
  zoom_ = 1.0f;
  renderer_.bitmap.panFractionX = renderer_.bitmap.panFractionY = 0.5f;
  stale_ = true;
  update();
}

// The renderer fits the design; the zoom it is given shrinks that fit until
// the whole hoop is in view, then takes the user's zoom.
void PageView::Render() {
  stale_ = false;
  StitchBitmap& bitmap = renderer_.bitmap;
  if (bitmap.Create(std::max(width(), 1), std::max(height(), 1)) > 0) return;
  bitmap.background = GetBackgroundColor();
  if (!HasStitches(renderer_.design)) {
    bitmap.Clear(bitmap.background);
    return;
  }
  const Design& design = *renderer_.design;
  bitmap.SetZoom(1.0f);
  bitmap.SetWorld(design.minX * 0.1f, design.maxY * 0.1f, design.maxX * 0.1f, design.minY * 0.1f);
  // Pixels per millimetre that would fit the hoop; a hoop of 0 gives infinity, so the design's fit.
  const float hoopFit = std::min((bitmap.width - 2.0f * bitmap.margin) / (hoopWidth_ * 0.1f),
                                 (bitmap.height - 2.0f * bitmap.margin) / (hoopHeight_ * 0.1f));
  float base = std::min(1.0f, hoopFit / bitmap.fit);
  if (!(base > 0)) base = 1.0f;  // a window too small for a margin, or no fit
  bitmap.SetZoom(base * zoom_);
  renderer_.Render(-1);
}

void PageView::paintEvent(QPaintEvent*) {
  if (stale_) Render();
  QPainter painter(this);
  const StitchBitmap& bitmap = renderer_.bitmap;
  if (!bitmap.valid) return;
  Blit(bitmap, painter, rect());
  if (!HasStitches(renderer_.design)) return;
  // The hoop: a rectangle about the design's origin.
  const PixelPoint corner = bitmap.WorldToPixel(-hoopWidth_ / 2, -hoopHeight_ / 2);
  const PixelPoint opposite = bitmap.WorldToPixel(hoopWidth_ / 2, hoopHeight_ / 2);
  painter.setPen(QPen(QColor(0x30, 0x60, 0xC0), 2, Qt::DashLine));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRect(QPoint(corner.x, corner.y), QPoint(opposite.x, opposite.y)).normalized(), 12, 12);
}

void PageView::resizeEvent(QResizeEvent*) { stale_ = true; }

void PageView::wheelEvent(QWheelEvent* event) {
  const int steps = event->angleDelta().y() / 120;
  if (steps != 0) ZoomBy(std::pow(kWheelStep, static_cast<float>(steps)));
  event->accept();
}

void PageView::mousePressEvent(QMouseEvent* event) { dragFrom_ = event->position().toPoint(); }

// Dragging moves the view by the pixels the mouse moved.
void PageView::mouseMoveEvent(QMouseEvent* event) {
  if (!(event->buttons() & Qt::LeftButton) || width() == 0 || height() == 0) return;
  const QPoint delta = event->position().toPoint() - dragFrom_;
  dragFrom_ = event->position().toPoint();
  StitchBitmap& bitmap = renderer_.bitmap;
  const float scale = std::max(bitmap.zoom, 1e-3f);
  bitmap.panFractionX += static_cast<float>(delta.x()) / (static_cast<float>(width()) * scale);
  bitmap.panFractionY += static_cast<float>(delta.y()) / (static_cast<float>(height()) * scale);
  stale_ = true;
  update();
}

}  // namespace fennick
