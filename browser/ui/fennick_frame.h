// The frame inside the browser dialog: the tool bar (Size, 3D, Close,
// Import), the splitter with the trees on the left and the thumbnails on the
// right, and the status bar's four panes.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QSplitter>

#include "browser/ui/browser_list_model.h"
#include "browser/ui/browser_view.h"

namespace fennick {

class SContainerView;

// The tool bar's commands.
inline constexpr int kImportCommand = 32775;
inline constexpr int kCloseCommand = 57602;
inline constexpr int k3DCommand = 32774;
inline constexpr int kSizeCommand = 32784;

class FennickFrame : public QMainWindow {
  Q_OBJECT

 public:
  explicit FennickFrame(QWidget* parent = nullptr);
  ~FennickFrame() override;

  BrowserListModel& List() { return list_; }
  BrowserView& View() { return *view_; }
  SContainerView& Container() { return *container_; }
  QSplitter& Splitter() { return *splitter_; }
  // Rewrites panes 1 to 3.
  void UpdateStatus();

  int32_t workspaceOn;  // "workspace" of the "Workspace" preferences

 signals:
  void Command(int command);

 private:
  BrowserListModel list_;
  BrowserView* view_;
  SContainerView* container_;
  QSplitter* splitter_;
  QLabel* workspacePane_;
  QLabel* filesPane_;
  QLabel* selectedPane_;
};

}  // namespace fennick
