// The preference sheet: tabs for Color Sort, Baste, Conversion and Tessimo
// over the window-free pages, with OK, Cancel and Apply. The views show what
// the pages hold and pass the user's input on; every correction of a value
// comes from its page. Each control's object name is its control id.
#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "control/preference_pages.h"

class QPushButton;
class QTabWidget;

namespace fennick {

class SPropSheet : public QDialog {
  Q_OBJECT

 public:
  // `title` is "Fennick Preferences" or "Fennick Properties", as the caller
  // asks. The pages are loaded from the store here.
  explicit SPropSheet(const QString& title, QWidget* parent = nullptr);

  PreferenceSheet& Pages() { return pages_; }
  QTabWidget& Tabs() { return *tabs_; }
  QPushButton& ApplyButton() { return *apply_; }

  // OK: every page writes its values, then the sheet closes.
  void accept() override;
  // Cancel, Escape or the close box: the pages take back what they loaded and
  // nothing is written.
  void reject() override;

 private:
  // Command 12321: every page writes and leaves its modified state.
  void OnApply();
  // Every view from its page, and the Apply button from the pages' marks.
  void Refresh();

  PreferenceSheet pages_;
  QTabWidget* tabs_;
  QPushButton* apply_;
  std::vector<std::function<void()>> refreshViews_;
};

}  // namespace fennick
