#include "browser/ui/drive_tree_view.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSocketNotifier>
#include <QWheelEvent>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace fennick {
namespace {

constexpr int kWheelLine = 120;  // wheel delta of one notch

std::vector<QPixmap> TreeImages() {
  std::vector<QPixmap> images;
  for (const char* name : {"drive_fixed", "drive_removable", "drive_cdrom", "drive_network", "drive_ram",
                           "folder_closed", "folder_open"}) {
    images.emplace_back(QStringLiteral(":/browser/%1.png").arg(name));
  }
  return images;
}

}  // namespace

DriveTreeView::DriveTreeView(DriveTree& drives, QWidget* parent)
    : TickTreeView(drives, TreeImages(), kDriveStatusText, parent),
      drives_(drives),
      mounts_(MountSnapshot::Read(drives.Sources())),
      mountFile_(::open(drives.Sources().MountTable().c_str(), O_RDONLY | O_CLOEXEC)),
      menu_(new QMenu(this)) {
  // Labels are edited through Rename and New Folder only, never by a click.
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  // A wheel notch moves one line, so a step must be an item.
  setVerticalScrollMode(QAbstractItemView::ScrollPerItem);

  for (const auto& [text, command] : {std::pair{"Explore...", kExploreCommand},
                                      {"New Folder", kNewFolderCommand},
                                      {"Rename Folder", kRenameFolderCommand},
                                      {"Delete Folder", kDeleteFolderCommand}}) {
    menu_->addAction(QString(text))->setData(command);
  }
  connect(menu_, &QMenu::triggered, this, [this](QAction* action) { RunCommand(action->data().toInt()); });
  connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) { LabelEdited(item); });

  // The mount table reports a change as an exceptional condition on an open
  // descriptor; its content is read through a fresh open each time.
  if (mountFile_.Get() >= 0) {
    mountNotifier_ = new QSocketNotifier(static_cast<qintptr>(mountFile_.Get()), QSocketNotifier::Exception, this);
    connect(mountNotifier_, &QSocketNotifier::activated, this, &DriveTreeView::MountsChanged);
  }
}

DriveTreeView::~DriveTreeView() {
  // The notifier must let go of the descriptor before it closes.
  delete mountNotifier_;
}

void DriveTreeView::Expanding(TreeItem item, bool expand) {
  // A refused expansion leaves the item as the model has it.
  if (!drives_.Expanding(item, expand)) ItemChanged(item);
}

void DriveTreeView::RunCommand(int command) {
  const TreeItem item = drives_.Selected();
  if (item == 0) return;
  switch (command) {
    case kExploreCommand:
      drives_.Explore(item);
      break;
    case kNewFolderCommand:
      if (const TreeItem made = drives_.NewFolder(item); made != 0) BeginRename(made);
      break;
    case kRenameFolderCommand:
      BeginRename(item);
      break;
    case kDeleteFolderCommand:
      drives_.DeleteFolder(item);
      break;
    default:
      break;
  }
}

void DriveTreeView::BeginRename(TreeItem item) {
  QTreeWidgetItem* viewItem = ViewItem(item);
  // A root is a place, not a folder of its own to rename.
  if (viewItem == nullptr || drives_.Parent(item) == 0 || drives_.ItemPath(item).size() < 4) return;
  setFocus();
  renaming_ = item;
  viewItem->setFlags(viewItem->flags() | Qt::ItemIsEditable);
  scrollToItem(viewItem);
  editItem(viewItem);
}

void DriveTreeView::LabelEdited(QTreeWidgetItem* viewItem) {
  // The tree's own text changes come here too; only an edited label differs from it.
  const TreeItem item = ModelItem(viewItem);
  if (renaming_ == 0 || item != renaming_ || !drives_.Contains(item)) return;
  const std::string text = viewItem->text(0).toStdString();
  if (text == drives_.Text(item)) return;
  renaming_ = 0;
  // On failure the tree sets the old label back, and the view follows it.
  drives_.RenameFolder(item, text);
}

void DriveTreeView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  TickTreeView::closeEditor(editor, hint);
  const TreeItem item = std::exchange(renaming_, 0);
  if (QTreeWidgetItem* viewItem = ViewItem(item)) viewItem->setFlags(viewItem->flags() & ~Qt::ItemIsEditable);
}

void DriveTreeView::contextMenuEvent(QContextMenuEvent* event) {
  QTreeWidgetItem* viewItem = nullptr;
  QPoint place = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    viewItem = currentItem();
    if (viewItem != nullptr) place = viewport()->mapToGlobal(visualItemRect(viewItem).center());
  } else {
    viewItem = itemAt(event->pos());
  }
  if (viewItem == nullptr) return;
  drives_.Select(ModelItem(viewItem));
  menu_->exec(place);
}

void DriveTreeView::wheelEvent(QWheelEvent* event) {
  // A line per notch; a touchpad's small deltas add up to one.
  wheelRest_ += event->angleDelta().y();
  QScrollBar* bar = verticalScrollBar();
  for (; wheelRest_ >= kWheelLine; wheelRest_ -= kWheelLine) bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
  for (; wheelRest_ <= -kWheelLine; wheelRest_ += kWheelLine) bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  event->accept();
}

void DriveTreeView::MountsChanged() {
  MountSnapshot now = MountSnapshot::Read(drives_.Sources());
  const RootChanges changes = CompareSnapshots(mounts_, now);
  mounts_ = std::move(now);
  if (!changes.added.empty() || !changes.removed.empty()) drives_.SyncRoots();
  for (const std::string& root : changes.changed) drives_.RefreshDrive(root);
}

}  // namespace fennick
