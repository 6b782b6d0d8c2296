#include "browser/ui/container_view.h"

#include "browser/browser_model.h"
#include "browser/ui/tick_tree_view.h"
#include "core/preferences.h"

namespace fennick {
namespace {

// The drive tree reads and forgets folders as its items open and close.
class DriveTreeView : public TickTreeView {
 public:
  DriveTreeView(DriveTree& drives, QWidget* parent)
      : TickTreeView(drives, TreeImages(), kDriveStatusText, parent), drives_(drives) {}

 protected:
  void Expanding(TreeItem item, bool expand) override {
    // A refused expansion leaves the item as the model has it.
    if (!drives_.Expanding(item, expand)) ItemChanged(item);
  }

 private:
  static std::vector<QPixmap> TreeImages() {
    std::vector<QPixmap> images;
    for (const char* name : {"drive_fixed", "drive_removable", "drive_cdrom", "drive_network", "drive_ram",
                             "folder_closed", "folder_open"}) {
      images.emplace_back(QStringLiteral(":/browser/%1.png").arg(name));
    }
    return images;
  }

  DriveTree& drives_;
};

}  // namespace

SContainerView::SContainerView(BrowserModel& list, QWidget* parent)
    : QTabWidget(parent), drives_(&list), catalog_(&list) {
  drives_.SetOtherTree(&catalog_);
  catalog_.SetOtherTree(&drives_);
  drives_.BuildDrives();
  catalog_.LoadCatalog();
  driveView_ = new DriveTreeView(drives_, this);
  addTab(driveView_, QStringLiteral("Browse"));
  connect(driveView_, &TickTreeView::StatusMessage, this, &SContainerView::StatusMessage);
  if (catalog_.HasCatalogTab()) {
    catalogView_ = new TickTreeView(catalog_, {}, kCatalogStatusText, this);
    addTab(catalogView_, QStringLiteral("Catalog"));
    connect(catalogView_, &TickTreeView::StatusMessage, this, &SContainerView::StatusMessage);
  }
  // Without the catalog tab the selection falls back to the first.
  const int tab = PreferenceStore().GetInt(kBrowserSection, "tabSel", 0);
  setCurrentIndex(tab < count() ? tab : 0);
}

SContainerView::~SContainerView() {
  const PreferenceStore store;
  store.SetInt(kBrowserSection, "tabSel", currentIndex());
  if (drives_.Selected() != 0) store.SetString(kBrowserSection, "Last path", drives_.ItemPath(drives_.Selected()));
  // The views go before the trees they watch, which are members.
  delete driveView_;
  delete catalogView_;
}

void SContainerView::OpenPath(const std::string& path) { drives_.OpenPath(path, true); }

}  // namespace fennick
