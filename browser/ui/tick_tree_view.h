// A tick tree on screen: a Qt tree that mirrors a TickTree item for item and
// hands clicks, the space key and expansion to it. Each item shows its tick
// state's picture before its own image.
#pragma once

#include <QTreeWidget>
#include <unordered_map>

#include "browser/tick_tree.h"

namespace fennick {

class TickTreeView : public QTreeWidget, public TickTreeObserver {
  Q_OBJECT

 public:
  // `images` are the item images by number; `pointerText` goes to pane 0
  // while the pointer moves over the tree.
  TickTreeView(TickTree& tree, std::vector<QPixmap> images, QString pointerText, QWidget* parent = nullptr);
  ~TickTreeView() override;

  QTreeWidgetItem* ViewItem(TreeItem item) const;
  TreeItem ModelItem(const QTreeWidgetItem* item) const;
  // Where a point of the viewport lies on an item.
  TreeHit HitTest(const QPoint& point, TreeItem& item) const;

  void ItemInserted(TreeItem item) override;
  void ItemRemoving(TreeItem item) override;
  void ItemChanged(TreeItem item) override;
  void SelectionChanged(TreeItem item) override;
  void TreeEnabled(bool enabled) override;

 signals:
  void StatusMessage(const QString& text);
  // The tree gave up the focus while it works.
  void FocusToFrame();

 protected:
  // An item opens or closes; the drive tree reads or forgets its folders here.
  virtual void Expanding(TreeItem item, bool expand);
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

  TickTree& tree_;

 private:
  QIcon IconOf(TreeItem item) const;
  void Forget(QTreeWidgetItem* viewItem);

  std::vector<QPixmap> images_;
  std::vector<QPixmap> ticks_;
  QString pointerText_;
  std::unordered_map<TreeItem, QTreeWidgetItem*> viewItems_;
  bool mirroring_ = false;  // expansion changes made here are not the user's
};

}  // namespace fennick
