// The drive and folder tree, window-free: the places a user browses (the
// root, the home folder, mounted volumes) with their folders, read from disk
// as items open and forgotten as unticked ones close. It notices a changed
// or missing medium by its serial, and carries the folder commands. A view
// mirrors it through TickTreeObserver and forwards expansions here.
#pragma once

#include <optional>
#include <string>

#include "browser/drives.h"
#include "browser/tick_tree.h"
#include "core/user_interface.h"

namespace fennick {

inline constexpr char kDriveStatusText[] = "Click on name to select a directory.";
inline constexpr char kLargeDriveText[] =
    "You have selected a large drive to view.\nAre you sure that you want to view the entire contents of this drive?";
inline constexpr char kLargeDriveCaption[] = "Large Drive Selected";
inline constexpr char kNewFolderName[] = "New Folder";
// The shell asked before it deleted a folder; its question stands in here.
inline constexpr char kDeleteFolderText[] = "Are you sure you want to delete the folder '%s' and all of its contents?";
inline constexpr char kDeleteFolderCaption[] = "Confirm Folder Delete";

class DriveTree : public TickTree {
 public:
  explicit DriveTree(DesignListSink* sink = nullptr, DriveSources sources = {});

  // Builds the roots afresh, each with a dummy child (an empty text) where it
  // shows a button before it is read; returns how many.
  int BuildDrives();
  // Takes the roots to the mount table as it now is: a root gone goes with
  // its designs, a new one takes its place; the others keep their branches
  // and ticks. Returns how many roots there are.
  int SyncRoots();
  // The item's folder, ending in '/': the texts from the root down.
  std::string ItemPath(TreeItem item) const;
  // Adds the subfolders of `path` under `item`; returns how many.
  int FillChildren(TreeItem item, const std::string& path);
  // The item opens (expand) or closes. False when that is refused: the
  // medium went or changed (its branch is back to a dummy), or the folder is
  // gone (its item too). The items' expanded flags follow.
  bool Expanding(TreeItem item, bool expand);
  // Opens the tree along `path` from the longest root that holds it. The
  // folder's item, or 0 when the tree cannot follow the path to its end.
  TreeItem OpenPath(const std::string& path, bool select);
  // After a mount change on `rootPath`: re-reads what the tree has read of
  // that root, or takes it back to a dummy when its medium went or changed.
  void RefreshDrive(const std::string& rootPath);

  // Makes a free "New Folder" under the item and selects it; 0 on failure.
  TreeItem NewFolder(TreeItem item);
  // Renames the folder on disk, and the designs of its ticked folders are
  // listed again under their new paths; on failure the label is set back.
  bool RenameFolder(TreeItem item, const std::string& text);
  // Deletes the folder from disk and the tree; never a root.
  bool DeleteFolder(TreeItem item);
  // Opens the folder in the desktop's file manager.
  bool Explore(TreeItem item) const;

  const MediumState& Media() const { return media_; }
  const DriveSources& Sources() const { return sources_; }

 protected:
  void AddToList(TreeItem item) override;
  void FillBeforeTick(TreeItem item) override;
  bool ConfirmBoxTick(TreeItem item) override;
  void EnableTree(bool enabled) override;

 private:
  bool HasDummy(TreeItem item) const;
  TreeItem AddFolderItem(TreeItem parent, const std::string& name, const std::string& path, bool sorted);
  bool ReadDummy(TreeItem item);
  void DeleteChildren(TreeItem item);
  void ResetToDummy(TreeItem item);
  void Drop(TreeItem item);
  void RelistBranch(TreeItem item);
  void Reread(TreeItem item, const std::string& path);
  TreeItem MediumItem(TreeItem item, const std::string& path) const;
  TreeItem Descend(TreeItem item, const std::string& rest);

  DriveSources sources_;
  MediumState media_;
  std::optional<WaitCursor> wait_;
};

}  // namespace fennick
