#include "browser/ui/fennick_frame.h"

#include <QFontMetrics>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

#include "browser/ui/container_view.h"
#include "core/preferences.h"

namespace fennick {
namespace {

// A pane as wide as the text it was measured by.
QLabel* AddPane(QStatusBar& bar, const QString& measure) {
  auto* pane = new QLabel(&bar);
  pane->setMinimumWidth(QFontMetrics(pane->font()).horizontalAdvance(measure) + 8);
  bar.addPermanentWidget(pane);
  return pane;
}

}  // namespace

FennickFrame::FennickFrame(QWidget* parent)
    : QMainWindow(parent),
      workspaceOn(PreferenceStore().GetInt("Workspace", "workspace", 1)),
      view_(new BrowserView(list_)),
      container_(new SContainerView(list_.Model())),
      splitter_(new QSplitter(Qt::Horizontal)) {
  // A main window is a window of its own whatever it is given; this one lives inside the dialog.
  setWindowFlags(Qt::Widget);
  show();
  auto* tools = addToolBar(QStringLiteral("Browser"));
  tools->setMovable(false);
  tools->setIconSize({30, 30});
  tools->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
  for (const auto& [text, image, command] : {std::tuple{"Size", "size", kSizeCommand}, {"3D", "3d", k3DCommand},
                                             {"Close", "close", kCloseCommand}, {"Import", "import", kImportCommand}}) {
    QAction* action = tools->addAction(QIcon(QStringLiteral(":/browser/%1.png").arg(image)), QString(text));
    action->setObjectName(QString(text));
    connect(action, &QAction::triggered, this, [this, command = command] { emit Command(command); });
    if (auto* button = qobject_cast<QToolButton*>(tools->widgetForAction(action))) button->setMinimumSize(50, 30);
  }

  splitter_->addWidget(container_);
  splitter_->addWidget(view_);
  splitter_->setChildrenCollapsible(false);
  container_->setMinimumWidth(20);
  splitter_->setStretchFactor(1, 1);
  setCentralWidget(splitter_);

  QStatusBar& bar = *statusBar();
  workspacePane_ = AddPane(bar, QStringLiteral("TMP"));
  filesPane_ = AddPane(bar, QStringLiteral("Selected: 0       "));
  selectedPane_ = AddPane(bar, QStringLiteral("Selected: 0       "));
  connect(view_, &BrowserView::StatusMessage, &bar, [&bar](const QString& text) { bar.showMessage(text); });
  connect(container_, &SContainerView::StatusMessage, &bar, [&bar](const QString& text) { bar.showMessage(text); });
  connect(view_, &BrowserView::SelectionCountChanged, this, &FennickFrame::UpdateStatus);
  connect(view_, &BrowserView::ImportRequested, this, [this] { emit Command(kImportCommand); });
  connect(&list_, &QAbstractItemModel::rowsInserted, this, &FennickFrame::UpdateStatus);
  connect(&list_, &QAbstractItemModel::rowsRemoved, this, &FennickFrame::UpdateStatus);
  connect(this, &FennickFrame::Command, this, [this](int command) {
    if (command == k3DCommand) list_.Model().Toggle3D();
    if (command == kSizeCommand) list_.Model().NextPreviewSize();
  });
  UpdateStatus();
}

FennickFrame::~FennickFrame() = default;

void FennickFrame::UpdateStatus() {
  workspacePane_->setText(QString::fromStdString(BrowserModel::WorkspaceText(workspaceOn != 0)));
  filesPane_->setText(QString::fromStdString(list_.Model().FilesText()));
  const auto selected = static_cast<size_t>(view_->selectionModel()->selectedIndexes().size());
  selectedPane_->setText(QString::fromStdString(BrowserModel::SelectedText(selected)));
}

}  // namespace fennick
