// The control's window: a narrow tool bar with a button for each tool pack
// installed, which also answers the design commands a host sends it. While
// it lives the control speaks the tool protocol on the session bus.
#pragma once

#include <QToolBar>
#include <QWidget>
#include <memory>

#include "control/tool_bar.h"

namespace fennick {

class BusTransport;
class CFennickAddinCtrl;

class ToolBarDialog : public QWidget {
  Q_OBJECT

 public:
  // Lays out the tool buttons and tells `control` the window's size. The
  // starter starts tool packs (DesignPath::Execute by default).
  explicit ToolBarDialog(CFennickAddinCtrl& control, QWidget* parent = nullptr, ToolStarter starter = {});
  // Deletes the designs handed to tools and leaves the bus.
  ~ToolBarDialog() override;

  // A command sent to the window: a design command or a tool button's. False
  // for an id the window does not answer.
  bool Command(int32_t id);

  const ToolBarModel& Model() const { return model_; }
  QToolBar& Bar() { return *bar_; }
  // Whether the protocol runs on the bus (false without a session bus, or
  // when another control of this session serves it).
  bool OnBus() const { return transport_ != nullptr; }

 private:
  void AddToolButtons();

  ToolBarModel model_;
  QToolBar* bar_;
  std::unique_ptr<BusTransport> transport_;
};

}  // namespace fennick
