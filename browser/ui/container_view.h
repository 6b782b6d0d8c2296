// The left pane of the browser: the tabs "Browse" (the drive and folder tree)
// and, when a catalog has categories, "Catalog"; only the current tab's tree
// shows.
#pragma once

#include <QTabWidget>
#include <memory>
#include <string>

#include "browser/catalog_tree.h"
#include "browser/drive_tree.h"

namespace fennick {

class BrowserModel;
class TickTreeView;

class SContainerView : public QTabWidget {
  Q_OBJECT

 public:
  // Builds the drives and loads the catalog; the tab of "tabSel" shows.
  explicit SContainerView(BrowserModel& list, QWidget* parent = nullptr);
  // Keeps "tabSel" and the drive tree's selected path as "Last path".
  ~SContainerView() override;

  DriveTree& Drives() { return drives_; }
  SCatalogTree& Catalog() { return catalog_; }
  TickTreeView& DriveView() { return *driveView_; }
  TickTreeView* CatalogView() { return catalogView_; }
  // Opens the drive tree to `path` and selects its folder.
  void OpenPath(const std::string& path);

 signals:
  void StatusMessage(const QString& text);

 private:
  DriveTree drives_;
  SCatalogTree catalog_;
  TickTreeView* driveView_;
  TickTreeView* catalogView_ = nullptr;
};

}  // namespace fennick
