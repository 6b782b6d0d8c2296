#include "browser/ui/browser_list_model.h"

#include <QMetaObject>
#include <QPixmap>

#include "control/ui/blit.h"

namespace fennick {

BrowserListModel::BrowserListModel(QObject* parent) : QAbstractListModel(parent) {
  model_.SetListener(this);
  thumbnails_ = std::make_unique<Thumbnails>(
      [this](uint64_t record) {
        const std::lock_guard lock(mutex_);
        return wanted_.count(record) != 0;
      },
      [this](const ThumbnailRequest& request, std::optional<StitchBitmap> picture) {
        QImage image;
        if (picture) image = picture->valid ? ToQImage(*picture) : StockPicture(request.size);
        // The list belongs to the interface thread: the picture goes there queued.
        QMetaObject::invokeMethod(
            this, [this, request, image] { AddPicture(request, image); },
            Qt::QueuedConnection);
      });
}

BrowserListModel::~BrowserListModel() {
  thumbnails_.reset();  // before the records the threads look at
  model_.SetListener(nullptr);
}

int BrowserListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(model_.Records().size());
}

QVariant BrowserListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const BrowserRecord& record = model_.Records()[static_cast<size_t>(index.row())];
  switch (role) {
    case Qt::DisplayRole: return QString::fromStdString(record.path.GetFileName());
    case Qt::UserRole: return QString::fromStdString(record.path.ToString());
    case Qt::DecorationRole:
      // Until its picture comes an item keeps the picture's room, blank.
      if (record.imageIndex < 0) return Blank();
      return QPixmap::fromImage(images_[static_cast<size_t>(record.imageIndex)]);
    default: return {};
  }
}

void BrowserListModel::SetRowsInView(int first, int last) {
  firstInView_ = first;
  lastInView_ = last;
  std::vector<const BrowserRecord*> ask;
  {
    const std::lock_guard lock(mutex_);
    wanted_.clear();
    const auto& records = model_.Records();
    for (int row = std::max(first, 0); row <= last && row < static_cast<int>(records.size()); ++row) {
      const BrowserRecord& record = records[static_cast<size_t>(row)];
      if (record.imageIndex >= 0) continue;
      wanted_.insert(record.id);
      if (asked_.insert(record.id).second) ask.push_back(&record);
    }
  }
  for (const BrowserRecord* record : ask) {
    thumbnails_->Ask({record->id, record->path.ToString(), model_.PreviewSize(), model_.Browse3D()});
  }
}

void BrowserListModel::AddPicture(const ThumbnailRequest& request, const QImage& picture) {
  const uint64_t record = request.record;
  asked_.erase(record);
  BrowserRecord* found = model_.FindRecord(record);
  // Not wanted when its turn came, gone, or of a look that changed since:
  // the record is asked for again when it is next in view.
  if (picture.isNull() || found == nullptr || request.size != model_.PreviewSize() ||
      request.threeD != model_.Browse3D()) {
    return;
  }
  images_.push_back(picture);
  found->imageIndex = static_cast<int32_t>(images_.size()) - 1;
  ++drawn_;
  {
    const std::lock_guard lock(mutex_);
    wanted_.erase(record);
  }
  const int row = RowOf(record);
  emit dataChanged(index(row), index(row), {Qt::DecorationRole});
  emit PictureAdded(row);
}

int BrowserListModel::RowOf(uint64_t record) const {
  const BrowserRecord* found = model_.FindRecord(record);
  return found == nullptr ? -1 : static_cast<int>(found - model_.Records().data());
}

QPixmap BrowserListModel::Blank() const {
  const int size = model_.PreviewSize();
  if (blank_.width() != size) {
    blank_ = QPixmap(size, size);
    blank_.fill(Qt::white);
  }
  return blank_;
}

QImage BrowserListModel::StockPicture(int32_t size) {
  const int32_t stock = size <= 128 ? 128 : size <= 200 ? 200 : 400;
  const QImage image(QStringLiteral(":/browser/stock%1.png").arg(stock));
  return image.width() == size ? image : image.scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void BrowserListModel::BeginAppend(size_t first, size_t count) {
  beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
}

void BrowserListModel::BeginRemove(size_t first, size_t count) {
  beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
}

void BrowserListModel::PicturesReset() {
  // Every record lost its picture: a new image list.
  images_.clear();
  asked_.clear();
  {
    const std::lock_guard lock(mutex_);
    wanted_.clear();
  }
  if (!model_.Records().empty()) emit dataChanged(index(0), index(rowCount() - 1), {Qt::DecorationRole});
  emit PicturesCleared();
  SetRowsInView(firstInView_, lastInView_);
}

}  // namespace fennick
