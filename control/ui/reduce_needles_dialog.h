// The Reduce Needles dialog: the design as it came and reduced side by side,
// the needle maximum in an edit with a spin, and the thread lists below. It
// only shows ReduceNeedlesModel, which corrects the number and decides what OK gives.
#pragma once

#include <QDialog>
#include <array>

#include "tools/reduce_needles.h"

class QLineEdit;
class QListWidget;
class QToolButton;

namespace fennick {

class SVReduceNeedleDlg : public QDialog {
  Q_OBJECT

 public:
  explicit SVReduceNeedleDlg(const Design& design, QWidget* parent = nullptr);
  ~SVReduceNeedleDlg() override;

  const ReduceNeedlesModel& Model() const { return model_; }

  // Runs the dialog modally over a copy of `design`. On OK with a colour
  // removed, `result` is the reduced design and the answer true.
  static bool Run(const Design& design, Design& result, QWidget* parent = nullptr);

 private:
  class Preview;
  using Pane = ReduceNeedlesModel::Pane;

  void EditChanged(const QString& text);
  void Step(int by);
  void ToggleList(Pane pane);
  void ShowLists();

  ReduceNeedlesModel model_;
  QLineEdit* edit_ = nullptr;
  std::array<Preview*, 2> previews_{};  // left Original, right Modified
  std::array<QListWidget*, 2> lists_{};
  std::array<QToolButton*, 2> listButtons_{};
};

}  // namespace fennick
