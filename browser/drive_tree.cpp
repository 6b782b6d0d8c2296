#include "browser/drive_tree.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "archive/file_operations.h"
#include "core/design_path.h"
#include "core/text.h"
#include "core/user_interface.h"

namespace fennick {
namespace {

// A folder name as a label edit may give it: one level, no way up or across.
bool IsFolderName(const std::string& text) {
  return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos;
}

}  // namespace

DriveTree::DriveTree(DesignListSink* sink, DriveSources sources)
    : TickTree(sink), sources_(std::move(sources)), media_({}, sources_) {}

int DriveTree::BuildDrives() {
  ClearTicks();
  DeleteAll();
  std::vector<DriveRoot> roots = BuildDriveRoots(sources_);
  for (const DriveRoot& root : roots) {
    // A root's text is its whole path ("/", "/home/ann/", "/media/ann/CARD/"):
    // ItemPath then needs nothing beside the texts, and the user sees where
    // each root lies, which a volume label alone would not tell.
    const TreeItem item = Insert(0, root.path, false, root.image, root.image);
    if (root.dummyChild) Insert(item, "");
  }
  media_ = MediumState(std::move(roots), sources_);
  return static_cast<int>(Children(0).size());
}

int DriveTree::SyncRoots() {
  std::vector<DriveRoot> roots = BuildDriveRoots(sources_);
  const auto listed = [&roots](const std::string& path) {
    return std::any_of(roots.begin(), roots.end(), [&path](const DriveRoot& root) { return root.path == path; });
  };
  for (const TreeItem item : std::vector<TreeItem>(Children(0))) {
    if (!listed(Text(item))) Drop(item);
  }
  for (size_t index = 0; index < roots.size(); ++index) {
    const std::vector<TreeItem>& shown = Children(0);
    if (std::any_of(shown.begin(), shown.end(), [&](TreeItem item) { return Text(item) == roots[index].path; })) {
      continue;
    }
    const TreeItem item = InsertAt(0, index, roots[index].path, roots[index].image, roots[index].image);
    if (roots[index].dummyChild) Insert(item, "");
  }
  media_ = MediumState(std::move(roots), sources_);
  return static_cast<int>(Children(0).size());
}

std::string DriveTree::ItemPath(TreeItem item) const {
  std::vector<TreeItem> chain;
  for (TreeItem up = item; up != 0 && Contains(up); up = Parent(up)) chain.push_back(up);
  std::string path;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) path = WithSlash(path + Text(*it));
  return path;
}

bool DriveTree::HasDummy(TreeItem item) const {
  const std::vector<TreeItem>& children = Children(item);
  return !children.empty() && Text(children.front()).empty();
}

TreeItem DriveTree::AddFolderItem(TreeItem parent, const std::string& name, const std::string& path, bool sorted) {
  const TreeItem child = Insert(parent, name, sorted, kImageClosedFolder, kImageOpenFolder);
  if (HasSubfolders(path)) Insert(child, "");
  return child;
}

int DriveTree::FillChildren(TreeItem item, const std::string& path) {
  const std::string folder = WithSlash(path);
  const std::vector<std::string> names = ListSubfolders(folder);
  // The names come in the tree's order, so among no real siblings they are
  // appended: a sorted insert into a folder of thousands would take long.
  const bool sorted = !Children(item).empty() && !HasDummy(item);
  for (const std::string& name : names) AddFolderItem(item, name, folder + name, sorted);
  return static_cast<int>(names.size());
}

void DriveTree::DeleteChildren(TreeItem item) {
  while (!Children(item).empty()) Delete(Children(item).back());
}

// Replaces a dummy child with the folders on disk. A root keeps its dummy
// when nothing is there, so that a medium put in later can still be opened.
bool DriveTree::ReadDummy(TreeItem item) {
  const std::string path = ItemPath(item);
  if (Parent(item) == 0) {
    const TreeItem dummy = Children(item).front();
    if (FillChildren(item, path) == 0) return false;
    Delete(dummy);
  } else {
    DeleteChildren(item);
    FillChildren(item, path);
  }
  return true;
}

// The folders of a medium that went are gone with it, from the list as well.
void DriveTree::ResetToDummy(TreeItem item) {
  if (State(item) != kTickNone) SetCategory(item, 2);
  SetExpanded(item, false);
  DeleteChildren(item);
  Insert(item, "");
  UpdateParents(Parent(item));
}

// A folder that went takes its designs out of the list with its item.
void DriveTree::Drop(TreeItem item) {
  if (State(item) != kTickNone) SetCategory(item, 2);
  const TreeItem parent = Parent(item);
  Delete(item);
  UpdateParents(parent);
}

// The item of the medium's root. A volume can also be reached through the
// folders of "/", and then only its own branch goes, not all of "/".
TreeItem DriveTree::MediumItem(TreeItem item, const std::string& path) const {
  const DriveRoot* root = media_.RootOf(path);
  TreeItem up = item;
  while (Parent(up) != 0 && (root == nullptr || ItemPath(up) != root->path)) up = Parent(up);
  return up;
}

bool DriveTree::Expanding(TreeItem item, bool expand) {
  if (!Contains(item)) return false;
  const std::string path = ItemPath(item);
  if (!media_.MediumSame(path)) {
    ResetToDummy(MediumItem(item, path));
    return false;
  }
  if (!media_.PathExists(path)) {
    Drop(item);
    return false;
  }
  if (expand && HasDummy(item)) {
    if (!ReadDummy(item)) {
      SetExpanded(item, false);
      return false;
    }
  } else if (!expand && !Children(item).empty() && !HasDummy(item) && State(item) == kTickNone) {
    // An unticked branch is forgotten, and read afresh when it opens again.
    DeleteChildren(item);
    if (Parent(item) == 0 || HasSubfolders(path)) Insert(item, "");
  }
  SetExpanded(item, expand);
  return true;
}

// Follows the '/'-separated names of `rest` from `item`, opening each level.
TreeItem DriveTree::Descend(TreeItem item, const std::string& rest) {
  for (size_t start = 0; start < rest.size();) {
    const size_t end = std::min(rest.find('/', start), rest.size());
    const std::string name = rest.substr(start, end - start);
    start = end + 1;
    if (name.empty()) continue;
    if (!Expanding(item, true)) return 0;
    const std::vector<TreeItem>& children = Children(item);
    const auto found = std::find_if(children.begin(), children.end(), [&](TreeItem c) { return Text(c) == name; });
    if (found == children.end()) return 0;
    item = *found;
  }
  return item;
}

TreeItem DriveTree::OpenPath(const std::string& path, bool select) {
  if (path.empty() || path.front() != '/') return 0;
  const std::string folder = WithSlash(path);
  // The longest root that holds the path: a volume or the home folder before "/".
  TreeItem root = 0;
  for (const TreeItem candidate : Children(0)) {
    if (folder.starts_with(Text(candidate)) && (root == 0 || Text(candidate).size() > Text(root).size())) {
      root = candidate;
    }
  }
  if (root == 0) return 0;
  // A path followed only part way leaves the selection where it was.
  const TreeItem item = Descend(root, folder.substr(Text(root).size()));
  if (item != 0 && select) Select(item);
  return item;
}

// Brings what the tree has read below `item` in line with the disk.
void DriveTree::Reread(TreeItem item, const std::string& path) {
  const std::vector<TreeItem> children = Children(item);
  if (children.empty()) {
    if (HasSubfolders(path)) Insert(item, "");
    return;
  }
  if (HasDummy(item)) return;
  const std::vector<std::string> names = ListSubfolders(path);
  const std::set<std::string> listed(names.begin(), names.end());
  std::set<std::string> known;
  for (const TreeItem child : children) {
    if (listed.count(Text(child)) == 0) {
      Drop(child);
      continue;
    }
    known.insert(Text(child));
    Reread(child, path + Text(child) + "/");
  }
  for (const std::string& name : names) {
    if (known.count(name) == 0) AddFolderItem(item, name, path + name, true);
  }
  UpdateParents(item);
}

void DriveTree::RefreshDrive(const std::string& rootPath) {
  const std::string folder = WithSlash(rootPath);
  const std::vector<TreeItem>& roots = Children(0);
  const auto found = std::find_if(roots.begin(), roots.end(), [&](TreeItem root) { return Text(root) == folder; });
  if (found == roots.end()) return;
  if (media_.MediumSame(folder)) {
    Reread(*found, folder);
  } else {
    ResetToDummy(*found);
  }
}

TreeItem DriveTree::NewFolder(TreeItem item) {
  if (!Contains(item)) return 0;
  const std::string made = CreateFolderUnique(ItemPath(item) + kNewFolderName);
  if (made.empty()) return 0;
  const std::string name = made.substr(made.rfind('/') + 1);
  // Unread children come from disk when the item opens, the new folder with them.
  if (!HasDummy(item)) AddFolderItem(item, name, made, true);
  const TreeItem child = Descend(item, name);
  if (child != 0) Select(child);
  return child;
}

bool DriveTree::RenameFolder(TreeItem item, const std::string& text) {
  if (!Contains(item) || Parent(item) == 0) return false;
  const std::string old = Text(item);
  const std::string parent = ItemPath(Parent(item));
  if (IsFolderName(text) && fennick::RenameFolder(parent + old, parent + text) == 0) {
    SetText(item, text);
    RelistBranch(item);
    return true;
  }
  SetText(item, old);  // the view's edited label goes back to the folder's name
  return false;
}

void DriveTree::RelistBranch(TreeItem item) {
  if (IsTicked(State(item))) {
    RemoveFromList(item);
    AddToList(item);
  }
  for (const TreeItem child : Children(item)) RelistBranch(child);
}

bool DriveTree::DeleteFolder(TreeItem item) {
  if (!Contains(item) || Parent(item) == 0) return false;
  const std::string path = ItemPath(item);
  if (path.size() < 4) return false;
  const std::string question = FormatText(kDeleteFolderText, Text(item).c_str());
  if (CurrentUserInterface().ShowMessage(question, kDeleteFolderCaption, MessageButtons::kYesNo) != MessageAnswer::kYes ||
      ShellDelete(path) != 0) {
    return false;
  }
  Drop(item);
  return true;
}

bool DriveTree::Explore(TreeItem item) const {
  if (!Contains(item)) return false;
  return CurrentUserInterface().OpenWithDesktop(ItemPath(item));
}

void DriveTree::AddToList(TreeItem item) {
  // A dummy stands for no folder of its own.
  if (Sink() != nullptr && !Text(item).empty()) Sink()->AddFolder(item, ItemPath(item));
}

// A ticked branch lists every folder below it, so they are read from disk first.
void DriveTree::FillBeforeTick(TreeItem item) {
  if (HasDummy(item)) ReadDummy(item);
}

// A whole root may hold a great deal. Every root is asked for: there are no
// floppy drives A: and B: to spare, and even the home folder can be large.
bool DriveTree::ConfirmBoxTick(TreeItem item) {
  if (Parent(item) != 0 || State(item) != kTickNone) return true;
  return CurrentUserInterface().ShowMessage(kLargeDriveText, kLargeDriveCaption, MessageButtons::kYesNo) ==
         MessageAnswer::kYes;
}

// The tree is disabled while a branch is ticked or cleared: the slow part.
void DriveTree::EnableTree(bool enabled) {
  if (enabled) {
    wait_.reset();
  } else {
    wait_.emplace();
  }
  TickTree::EnableTree(enabled);
}

}  // namespace fennick
