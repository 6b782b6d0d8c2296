#include "control/ui/tool_bar_dialog.h"

#include <QAction>
#include <QHBoxLayout>
#include <QPixmap>
#include <QToolButton>
#include <algorithm>
#include <cstdio>
#include <string>

#include "control/addin_app.h"
#include "control/addin_ctrl.h"
#include "control/bus/bus_transport.h"
#include "control/design_commands.h"
#include "control/ui/blit.h"

namespace fennick {
namespace {

// The dialog's 130 by 23 dialog units at the default font's base units.
constexpr int kDialogWidth = 195;
constexpr int kDialogHeight = 37;
// The bar has no buttons of its own, so its image list starts with the tools'.
constexpr int32_t kOwnImages = 0;

// A tool's bitmap with its mask colour made transparent.
QPixmap ToolIcon(const StitchBitmap& bitmap) {
  QImage image = ToQImage(bitmap).convertToFormat(QImage::Format_ARGB32);
  const QRgb mask = 0xFF000000u | kToolImageMask;
  for (int y = 0; y < image.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      if (line[x] == mask) line[x] = 0;
    }
  }
  return QPixmap::fromImage(image);
}

}  // namespace

ToolBarDialog::ToolBarDialog(CFennickAddinCtrl& control, QWidget* parent, ToolStarter starter)
    : QWidget(parent), model_(kDialogWidth, kOwnImages, std::move(starter)), bar_(new QToolBar(this)) {
  // The subscription to the messages lives as long as this window.
  transport_ = std::make_unique<BusTransport>();
  if (std::string error; transport_->Start(error)) {
    TheApp().SetTransport(transport_.get());
  } else {
    std::fprintf(stderr, "Fennick: tool packs cannot talk to this control: %s\n", error.c_str());
    transport_.reset();
  }
  model_.LoadTools();
  bar_->setIconSize(QSize(kToolImageWidth, kToolImageHeight));
  bar_->setMovable(false);
  bar_->setFloatable(false);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(bar_);
  layout->addStretch();
  AddToolButtons();
  const int height = std::max(kDialogHeight, bar_->sizeHint().height());
  setFixedSize(model_.Width(), height);
  control.SetToolBarSize(model_.Width(), height);
}

ToolBarDialog::~ToolBarDialog() {
  if (transport_ != nullptr && TheApp().Transport() == transport_.get()) TheApp().SetTransport(nullptr);
}

void ToolBarDialog::AddToolButtons() {
  if (model_.HasSeparator()) bar_->addSeparator();
  for (const ToolButton& button : model_.Buttons()) {
    const StitchBitmap& image = model_.Images()[static_cast<size_t>(button.image - kOwnImages)];
    QAction* action = bar_->addAction(ToolIcon(image), QString());
    action->setToolTip(QString::fromStdString(model_.ToolTipText(button.command)));
    action->setStatusTip(QString::fromUtf8(kToolStatusText));
    action->setObjectName(QString::number(button.command));
    connect(action, &QAction::triggered, this, [this, command = button.command] { Command(command); });
    if (QWidget* widget = bar_->widgetForAction(action)) widget->setFixedSize(kToolButtonWidth, kToolButtonHeight);
  }
}

bool ToolBarDialog::Command(int32_t id) {
  if (RunDesignCommand(id)) return true;
  if (id < kFirstToolCommand || id > kLastToolCommand) return false;
  model_.LaunchTool(id);
  return true;
}

}  // namespace fennick
