#include "browser/ui/browser_view.h"

#include <QItemSelectionModel>
#include <QMouseEvent>

namespace fennick {
namespace {

// Room around a thumbnail for its name.
constexpr int kIconSpacing = 43;

}  // namespace

BrowserView::BrowserView(BrowserListModel& model, QWidget* parent) : QListView(parent), model_(model) {
  setModel(&model);
  setViewMode(QListView::IconMode);
  setResizeMode(QListView::Adjust);
  setMovement(QListView::Static);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setUniformItemSizes(true);
  setWordWrap(true);
  setMouseTracking(true);
  ApplyPreviewSize();
  connect(&model, &BrowserListModel::PicturesCleared, this, &BrowserView::ApplyPreviewSize);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this] { emit SelectionCountChanged(static_cast<int>(selectionModel()->selectedIndexes().size())); });
}

void BrowserView::ApplyPreviewSize() {
  const int size = model_.Model().PreviewSize();
  setIconSize({size, size});
  setGridSize({size + kIconSpacing, size + kIconSpacing});
  viewport()->update();
}

std::vector<std::string> BrowserView::SelectedPaths() const {
  std::vector<std::string> paths;
  for (int row = 0; row < model_.rowCount(); ++row) {
    const QModelIndex item = model_.index(row);
    if (selectionModel()->isSelected(item)) paths.push_back(item.data(Qt::UserRole).toString().toStdString());
  }
  return paths;
}

QString BrowserView::PointerText(const QPoint& point) const {
  const QModelIndex item = indexAt(point);
  if (!item.isValid()) return {};
  const BrowserRecord& record = model_.Model().Records()[static_cast<size_t>(item.row())];
  return QString::fromStdString(BrowserModel::PointerText(record.path));
}

void BrowserView::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  UpdateRowsInView();
}

void BrowserView::UpdateRowsInView() {
  // The items in view are one run of rows: the list flows line after line, so
  // the tops of the rows never decrease. Halving finds the first row below
  // the view's top; the line before it may still reach into view.
  const QRect shown = viewport()->rect();
  const auto top = [this](int row) { return visualRect(model_.index(row)).top(); };
  int low = 0, high = model_.rowCount();
  while (low < high) {
    const int middle = low + (high - low) / 2;
    if (top(middle) <= shown.top()) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  while (low > 0 && visualRect(model_.index(low - 1)).bottom() >= shown.top()) --low;
  int first = -1, last = -2;
  for (int row = low; row < model_.rowCount(); ++row) {
    if (!visualRect(model_.index(row)).intersects(shown)) {
      if (first >= 0) break;
      continue;
    }
    if (first < 0) first = row;
    last = row;
  }
  // The row after the last one shown counts as in view, as the list's page count has it.
  model_.SetRowsInView(first, last + 1);
}

void BrowserView::mouseMoveEvent(QMouseEvent* event) {
  QListView::mouseMoveEvent(event);
  if (event->buttons() == Qt::NoButton) {
    const QString text = PointerText(event->position().toPoint());
    if (!text.isEmpty()) emit StatusMessage(text);
  }
}

void BrowserView::mouseDoubleClickEvent(QMouseEvent* event) {
  QListView::mouseDoubleClickEvent(event);
  if (indexAt(event->position().toPoint()).isValid()) emit ImportRequested();
}

}  // namespace fennick
