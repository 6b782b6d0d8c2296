#include "browser/ui/import_design_dialog.h"

#include <QResizeEvent>
#include <QScreen>

#include "browser/ui/container_view.h"
#include "core/preferences.h"

namespace fennick {
namespace {

constexpr int kImported = 2;
constexpr int kClosed = 1;

}  // namespace

ImportDesignDialog::ImportDesignDialog(const std::string& startPath, QWidget* parent)
    : QDialog(parent), frame_(new FennickFrame(this)) {
  setWindowTitle(QStringLiteral("Import Design"));
  const PreferenceStore store;
  const QRect rect(QPoint(store.GetInt(kBrowserSection, "piLeft", 100), store.GetInt(kBrowserSection, "piTop", 100)),
                   QPoint(store.GetInt(kBrowserSection, "piRight", 900), store.GetInt(kBrowserSection, "piBottom", 660)));
  resize(rect.isValid() ? rect.size() : QSize(800, 560));
  move(rect.topLeft());
  frame_->Splitter().setSizes({std::max(20, store.GetInt(kBrowserSection, "splitPos", 200)), width()});
  connect(frame_, &FennickFrame::Command, this, &ImportDesignDialog::OnCommand);
  const std::string path = startPath.empty() ? store.GetString(kBrowserSection, "Last path", "/") : startPath;
  frame_->Container().OpenPath(path);
}

ImportDesignDialog::~ImportDesignDialog() {
  const PreferenceStore store;
  const QRect rect = geometry();
  store.SetInt(kBrowserSection, "piTop", rect.top());
  store.SetInt(kBrowserSection, "piLeft", rect.left());
  store.SetInt(kBrowserSection, "piRight", rect.right() + 1);
  store.SetInt(kBrowserSection, "piBottom", rect.bottom() + 1);
  store.SetInt(kBrowserSection, "splitPos", frame_->Splitter().sizes().value(0));
}

void ImportDesignDialog::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  frame_->setGeometry(rect());
}

void ImportDesignDialog::OnCommand(int command) {
  if (command == kImportCommand) {
    selected = frame_->View().SelectedPaths();
    done(kImported);
  } else if (command == kCloseCommand) {
    selected.clear();
    done(kClosed);
  }
}

}  // namespace fennick
