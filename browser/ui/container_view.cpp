#include "browser/ui/container_view.h"

#include "browser/browser_model.h"
#include "browser/ui/drive_tree_view.h"
#include "browser/ui/tick_tree_view.h"
#include "core/preferences.h"

namespace fennick {

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
