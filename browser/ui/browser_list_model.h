// The browser's records as a Qt list model: a row a record, its file name as
// text and its thumbnail as decoration. The view tells which rows it shows;
// each of them without a picture gets one drawn on a thread of its own, and
// until it comes the row shows none.
#pragma once

#include <QAbstractListModel>
#include <QImage>
#include <QPixmap>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "browser/browser_model.h"
#include "browser/thumbnails.h"

namespace fennick {

class BrowserListModel : public QAbstractListModel, public BrowserModel::Listener {
  Q_OBJECT

 public:
  explicit BrowserListModel(QObject* parent = nullptr);
  ~BrowserListModel() override;

  BrowserModel& Model() { return model_; }
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;

  // The rows the view shows now, both included; only they get pictures drawn.
  void SetRowsInView(int first, int last);
  // The stock picture of a thumbnail size.
  static QImage StockPicture(int32_t size);
  // Counts of what the threads did, for the status and the tests.
  int DrawnCount() const { return drawn_; }

  void BeginAppend(size_t first, size_t count) override;
  void EndAppend() override { endInsertRows(); }
  void BeginRemove(size_t first, size_t count) override;
  void EndRemove() override { endRemoveRows(); }
  void PicturesReset() override;

 signals:
  // A picture arrived: the view redraws that row.
  void PictureAdded(int row);
  // Every picture went: the look or the size changed, or the list was cleared.
  void PicturesCleared();

 private:
  void AddPicture(const ThumbnailRequest& request, const QImage& picture);
  int RowOf(uint64_t record) const;
  QPixmap Blank() const;

  BrowserModel model_;
  std::vector<QImage> images_;
  mutable QPixmap blank_;
  // What the threads may read: the records in view that still want a picture.
  mutable std::mutex mutex_;
  std::unordered_set<uint64_t> wanted_;
  std::unordered_set<uint64_t> asked_;  // a thread is on its way for these
  int firstInView_ = 0;
  int lastInView_ = -1;
  int drawn_ = 0;
  std::unique_ptr<Thumbnails> thumbnails_;
};

}  // namespace fennick
