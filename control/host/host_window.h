// The reference host: one design page in a window with the control's tool
// bar docked at the top, a menu of the control's methods and design
// commands, and the host's automation answered from the page. It embeds the
// control through its C interface alone, as any host would.
#pragma once

#include <QMainWindow>
#include <string>

#include "control/page_host.h"
#include "fennick/fennickaddin.h"

class QLabel;

namespace fennick {

class PageView;

class HostWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit HostWindow(QWidget* parent = nullptr);
  // Revokes the host and destroys the control.
  ~HostWindow() override;

  // Reads a design file onto the page; false, with the page unchanged, when
  // it holds no stitches.
  bool OpenFile(const std::string& path);
  const Design& Page() const { return page_.page; }
  // Hoop of the page, tenths of a millimetre.
  void SetHoop(int32_t width, int32_t height);
  FennickControl* Control() const { return control_; }
  QWidget* ToolBar() const { return toolBar_; }
  PageView& View() const { return *view_; }

  // The host's automation, as the control calls it back.
  bool GetDesign(int32_t& hDesign);
  bool PutDesign(int32_t hDesign);
  DesignPageHost& Automation() { return page_; }

 signals:
  void PageChanged();

 private:
  void BuildMenus();
  void ShowPage();
  // Calls a method of the control that takes the page's block and gives a
  // new one; the page takes the result when there is one.
  void RunOnPage(int32_t dispatchId);
  void Import();

  DesignPageHost page_;  // the page, and the answers that need only it
  FennickControl* control_ = nullptr;
  QWidget* toolBar_ = nullptr;
  PageView* view_ = nullptr;
  QLabel* status_ = nullptr;
};

}  // namespace fennick
