// The design browser as a modal dialog, "Import Design": the user ticks
// folders or catalog categories, picks designs among their thumbnails, and
// Import gives them back in list order.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "browser/ui/fennick_frame.h"

namespace fennick {

class ImportDesignDialog : public QDialog {
  Q_OBJECT

 public:
  // Opens the drive tree at `startPath`, or at "Last path" when it is empty.
  explicit ImportDesignDialog(const std::string& startPath = "", QWidget* parent = nullptr);
  // Keeps the window's place and the splitter's position.
  ~ImportDesignDialog() override;

  FennickFrame& Frame() { return *frame_; }
  // The designs picked, in text form; empty after Close.
  std::vector<std::string> selected;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void OnCommand(int command);

  FennickFrame* frame_;
};

}  // namespace fennick
