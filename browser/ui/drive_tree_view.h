// The drive tree on screen: folders read and forgotten as items open and
// close, the folder commands of its context menu, and roots kept in line with
// the mount table as media come and go.
#pragma once

#include <QAbstractItemDelegate>

#include "browser/drive_tree.h"
#include "browser/drives.h"
#include "browser/ui/tick_tree_view.h"
#include "core/file_io.h"

class QMenu;
class QSocketNotifier;

namespace fennick {

// The context menu's commands, each the data of its action.
inline constexpr int kExploreCommand = 32805;
inline constexpr int kNewFolderCommand = 32850;
inline constexpr int kRenameFolderCommand = 32849;
inline constexpr int kDeleteFolderCommand = 32851;

class DriveTreeView : public TickTreeView {
  Q_OBJECT

 public:
  // Watches the mount table of the tree's own sources.
  explicit DriveTreeView(DriveTree& drives, QWidget* parent = nullptr);
  ~DriveTreeView() override;

  QMenu& ContextMenu() { return *menu_; }

 public slots:
  // A folder command on the selected folder.
  void RunCommand(int command);
  // Reads the mount table again: roots on a changed mount are read again,
  // roots that came or went are added or taken away, the others keep their ticks.
  void MountsChanged();

 protected:
  void Expanding(TreeItem item, bool expand) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

 private:
  void BeginRename(TreeItem item);
  void LabelEdited(QTreeWidgetItem* viewItem);

  DriveTree& drives_;
  MountSnapshot mounts_;
  FileDescriptor mountFile_;
  QSocketNotifier* mountNotifier_ = nullptr;
  QMenu* menu_;
  TreeItem renaming_ = 0;  // the item whose label is being edited
  int wheelRest_ = 0;      // wheel delta short of a whole line
};

}  // namespace fennick
