// The list of thumbnails: icon mode, arranged as its width allows, items
// selected with the mouse or by dragging a frame. It tells its model which
// rows are in view, so that only they are drawn.
#pragma once

#include <QListView>
#include <string>
#include <vector>

#include "browser/ui/browser_list_model.h"

namespace fennick {

class BrowserView : public QListView {
  Q_OBJECT

 public:
  explicit BrowserView(BrowserListModel& model, QWidget* parent = nullptr);

  // Icon size and spacing for the model's thumbnail size.
  void ApplyPreviewSize();
  // The selected designs in list order, in text form.
  std::vector<std::string> SelectedPaths() const;
  // Pane 0's text for the item under a point of the viewport.
  QString PointerText(const QPoint& point) const;

 signals:
  void StatusMessage(const QString& text);
  void SelectionCountChanged(int count);
  void ImportRequested();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void UpdateRowsInView();

  BrowserListModel& model_;
};

}  // namespace fennick
