// The reference host's design page: the design drawn by the project's
// renderer with the hoop's outline, zoomed with the wheel, panned by dragging.
#pragma once

#include <QPoint>
#include <QWidget>

#include "tools/render/design_renderer.h"

namespace fennick {

class PageView : public QWidget {
  Q_OBJECT

 public:
  explicit PageView(QWidget* parent = nullptr);

  // The design is not owned; call again whenever it changed.
  void SetDesign(Design* design);
  // Tenths of a millimetre, centred on the design's origin.
  void SetHoop(int32_t width, int32_t height);
  void SetShaded(bool shaded);
  void SetShowJumps(bool show);
  // Zoom relative to the whole hoop in view; 1 shows it all.
  void ZoomBy(float factor);
  void ResetView();
  float Zoom() const { return zoom_; }

  QSize sizeHint() const override { return {640, 480}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  void Render();

  DesignRenderer renderer_;
  int32_t hoopWidth_ = 1000;
  int32_t hoopHeight_ = 1000;
  float zoom_ = 1.0f;
  bool stale_ = true;
  QPoint dragFrom_;
};

}  // namespace fennick
