#include "browser/ui/tick_tree_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <utility>

namespace fennick {
namespace {

constexpr int kTickWidth = 13;
constexpr int kImageWidth = 16;
constexpr int kGap = 2;
// The model's item handle in a view item.
constexpr int kItemRole = Qt::UserRole;

}  // namespace

TickTreeView::TickTreeView(TickTree& tree, std::vector<QPixmap> images, QString pointerText, QWidget* parent)
    : QTreeWidget(parent), tree_(tree), images_(std::move(images)), pointerText_(std::move(pointerText)) {
  setHeaderHidden(true);
  setRootIsDecorated(true);
  // A tree without item images shows the tick box alone.
  setIconSize({images_.empty() ? kTickWidth : kTickWidth + kGap + kImageWidth, kImageWidth});
  setMouseTracking(true);
  setSelectionMode(QAbstractItemView::SingleSelection);
  for (int state = 1; state <= 6; ++state) ticks_.emplace_back(QStringLiteral(":/browser/tick%1.png").arg(state));
  connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
    if (!mirroring_) Expanding(ModelItem(item), true);
  });
  connect(this, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
    if (!mirroring_) Expanding(ModelItem(item), false);
  });
  connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
    if (ModelItem(current) != tree_.Selected()) tree_.Select(ModelItem(current));
  });
  tree_.SetObserver(this);
  for (TreeItem item : tree_.DepthFirst()) ItemInserted(item);
}

TickTreeView::~TickTreeView() { tree_.SetObserver(nullptr); }

QTreeWidgetItem* TickTreeView::ViewItem(TreeItem item) const {
  const auto found = viewItems_.find(item);
  return found == viewItems_.end() ? nullptr : found->second;
}

TreeItem TickTreeView::ModelItem(const QTreeWidgetItem* item) const {
  return item == nullptr ? 0 : item->data(0, kItemRole).toUInt();
}

QIcon TickTreeView::IconOf(TreeItem item) const {
  QPixmap icon(iconSize());
  icon.fill(Qt::transparent);
  QPainter painter(&icon);
  const size_t state = static_cast<size_t>(std::clamp(tree_.State(item), 1, 6)) - 1;
  painter.drawPixmap(0, (kImageWidth - kTickWidth) / 2, ticks_[state]);
  const size_t image = static_cast<size_t>(tree_.IsExpanded(item) ? tree_.SelectedImage(item) : tree_.Image(item));
  if (image < images_.size()) painter.drawPixmap(kTickWidth + kGap, 0, images_[image]);
  return QIcon(icon);
}

void TickTreeView::ItemInserted(TreeItem item) {
  const TreeItem parent = tree_.Parent(item);
  const std::vector<TreeItem>& siblings = tree_.Children(parent);
  const int place = static_cast<int>(std::find(siblings.begin(), siblings.end(), item) - siblings.begin());
  auto* viewItem = new QTreeWidgetItem(QStringList(QString::fromStdString(tree_.Text(item))));
  viewItem->setData(0, kItemRole, item);
  viewItem->setIcon(0, IconOf(item));
  if (QTreeWidgetItem* parentItem = ViewItem(parent)) {
    parentItem->insertChild(place, viewItem);
  } else {
    insertTopLevelItem(place, viewItem);
  }
  viewItems_[item] = viewItem;
}

void TickTreeView::Forget(QTreeWidgetItem* viewItem) {
  for (int i = 0; i < viewItem->childCount(); ++i) Forget(viewItem->child(i));
  viewItems_.erase(ModelItem(viewItem));
}

void TickTreeView::ItemRemoving(TreeItem item) {
  QTreeWidgetItem* viewItem = ViewItem(item);
  if (viewItem == nullptr) return;
  Forget(viewItem);
  delete viewItem;
}

void TickTreeView::ItemChanged(TreeItem item) {
  QTreeWidgetItem* viewItem = ViewItem(item);
  if (viewItem == nullptr) return;
  viewItem->setText(0, QString::fromStdString(tree_.Text(item)));
  viewItem->setIcon(0, IconOf(item));
  mirroring_ = true;
  viewItem->setExpanded(tree_.IsExpanded(item));
  mirroring_ = false;
}

void TickTreeView::SelectionChanged(TreeItem item) {
  if (QTreeWidgetItem* viewItem = ViewItem(item)) {
    setCurrentItem(viewItem);
    scrollToItem(viewItem);
  }
}

void TickTreeView::TreeEnabled(bool enabled) {
  setEnabled(enabled);
  if (!enabled) emit FocusToFrame();
}

void TickTreeView::Expanding(TreeItem item, bool expand) { tree_.SetExpanded(item, expand); }

TreeHit TickTreeView::HitTest(const QPoint& point, TreeItem& item) const {
  QTreeWidgetItem* viewItem = itemAt(point);
  item = ModelItem(viewItem);
  if (viewItem == nullptr) return TreeHit::kElsewhere;
  // The icon is where the style puts an item's decoration; its first part is the tick box.
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  option.rect = visualItemRect(viewItem);
  option.features |= QStyleOptionViewItem::HasDecoration | QStyleOptionViewItem::HasDisplay;
  option.decorationSize = iconSize();
  option.text = viewItem->text(0);
  const QRect icon = style()->subElementRect(QStyle::SE_ItemViewItemDecoration, &option, this);
  if (point.x() < icon.left()) return TreeHit::kElsewhere;
  return point.x() < icon.left() + kTickWidth ? TreeHit::kTickBox : TreeHit::kLabel;
}

void TickTreeView::mousePressEvent(QMouseEvent* event) {
  TreeItem item = 0;
  const TreeHit hit = HitTest(event->position().toPoint(), item);
  if (event->button() != Qt::LeftButton ||
      !tree_.Click(item, hit, (event->modifiers() & Qt::ControlModifier) != 0)) {
    QTreeWidget::mousePressEvent(event);
  }
}

void TickTreeView::mouseMoveEvent(QMouseEvent* event) {
  QTreeWidget::mouseMoveEvent(event);
  if (event->buttons() == Qt::NoButton) emit StatusMessage(pointerText_);
}

void TickTreeView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space) {
    tree_.Select(ModelItem(currentItem()));
    // Qt's tree does not step the state by itself, so nothing is written back.
    tree_.SpaceKey();
    return;
  }
  QTreeWidget::keyPressEvent(event);
}

}  // namespace fennick
