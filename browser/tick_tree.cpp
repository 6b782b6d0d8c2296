#include "browser/tick_tree.h"

#include <algorithm>
#include <atomic>

#include "core/text.h"

namespace fennick {
namespace {

// Case-blind order of sorted insertion, as the tree control sorts.
bool SortsAbove(const std::string& a, const std::string& b) { return AsciiLower(a) > AsciiLower(b); }

// Handles are unique across trees, since both trees' items own records of the one list.
TreeItem NewHandle() {
  static std::atomic<TreeItem> next{1};
  TreeItem item = next++;
  while (item == 0) item = next++;
  return item;
}

}  // namespace

TickTree::Node& TickTree::At(TreeItem item) { return items_.at(item); }
const TickTree::Node& TickTree::At(TreeItem item) const { return items_.at(item); }

TreeItem TickTree::Insert(TreeItem parent, const std::string& text, bool sorted, int image, int selectedImage) {
  const std::vector<TreeItem>& siblings = parent == 0 ? roots_ : At(parent).children;
  auto where = siblings.end();
  if (sorted) {
    where = std::find_if(siblings.begin(), siblings.end(),
                         [&](TreeItem sibling) { return SortsAbove(At(sibling).text, text); });
  }
  return InsertAt(parent, static_cast<size_t>(where - siblings.begin()), text, image, selectedImage);
}

TreeItem TickTree::InsertAt(TreeItem parent, size_t index, const std::string& text, int image, int selectedImage) {
  std::vector<TreeItem>& siblings = parent == 0 ? roots_ : At(parent).children;
  const TreeItem item = NewHandle();
  Node node;
  node.text = text;
  node.parent = parent;
  node.image = image;
  node.selectedImage = selectedImage;
  items_.emplace(item, std::move(node));
  siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(std::min(index, siblings.size())), item);
  if (observer_ != nullptr) observer_->ItemInserted(item);
  return item;
}

void TickTree::Delete(TreeItem item) {
  if (!Contains(item)) return;
  if (observer_ != nullptr) observer_->ItemRemoving(item);
  const TreeItem parent = At(item).parent;
  std::vector<TreeItem>& siblings = parent == 0 ? roots_ : At(parent).children;
  siblings.erase(std::find(siblings.begin(), siblings.end(), item));
  Erase(item);
}

void TickTree::Erase(TreeItem item) {
  for (const TreeItem child : At(item).children) Erase(child);
  if (selected_ == item) selected_ = 0;
  items_.erase(item);
}

void TickTree::DeleteAll() {
  while (!roots_.empty()) Delete(roots_.back());
}

const std::vector<TreeItem>& TickTree::Children(TreeItem item) const {
  return item == 0 ? roots_ : At(item).children;
}

int TickTree::Depth(TreeItem item) const {
  int depth = 0;
  for (TreeItem up = At(item).parent; up != 0; up = At(up).parent) ++depth;
  return depth;
}

std::vector<TreeItem> TickTree::DepthFirst() const {
  std::vector<TreeItem> order;
  std::vector<TreeItem> pending(roots_.rbegin(), roots_.rend());
  while (!pending.empty()) {
    const TreeItem item = pending.back();
    pending.pop_back();
    order.push_back(item);
    const std::vector<TreeItem>& children = At(item).children;
    pending.insert(pending.end(), children.rbegin(), children.rend());
  }
  return order;
}

void TickTree::SetText(TreeItem item, const std::string& text) {
  At(item).text = text;
  if (observer_ != nullptr) observer_->ItemChanged(item);
}

void TickTree::SetState(TreeItem item, int state) {
  Node& node = At(item);
  if (node.state == state) return;
  node.state = state;
  if (observer_ != nullptr) observer_->ItemChanged(item);
}

void TickTree::SetExpanded(TreeItem item, bool expanded) {
  Node& node = At(item);
  if (node.expanded == expanded) return;
  node.expanded = expanded;
  if (observer_ != nullptr) observer_->ItemChanged(item);
}

void TickTree::Select(TreeItem item) {
  if (item == selected_ || (item != 0 && !Contains(item))) return;
  selected_ = item;
  if (observer_ != nullptr) observer_->SelectionChanged(item);
}

void TickTree::TickAndAdd(TreeItem item) {
  SetState(item, kTickAll);
  AddToList(item);
}

void TickTree::UntickAndRemove(TreeItem item) {
  SetState(item, kTickNone);
  RemoveFromList(item);
}

void TickTree::RemoveFromList(TreeItem item) {
  if (sink_ != nullptr) sink_->RemoveOwner(item);
}

void TickTree::ClearOtherTree() {
  if (other_ != nullptr) other_->ClearTicks();
}

void TickTree::EnableTree(bool enabled) {
  if (observer_ != nullptr) observer_->TreeEnabled(enabled);
}

void TickTree::RedrawList() {
  if (observer_ != nullptr) observer_->ListRedraw();
}

void TickTree::SetCategory(TreeItem item, int mode) {
  if (!Contains(item)) return;
  const int state = State(item);
  bool tick = false;
  bool branch = true;  // modes 1 to 3 carry the item's new tick into its whole subtree
  switch (mode) {
    case 1: tick = true; break;
    case 2: tick = false; break;
    case 3: tick = state == kTickNone; break;
    case 5:
      tick = !IsTicked(state);
      branch = false;
      break;
    default: return;
  }
  const bool updateParents = mode == 3 || mode == 5;

  // Even an untick by mode 5 counts: the list then holds this tree's designs.
  if (tick || mode == 5) {
    anyTicked_ = true;
    ClearOtherTree();
  }
  if (mode == 3) EnableTree(false);
  if (tick) {
    TickAndAdd(item);
  } else {
    UntickAndRemove(item);
  }
  if (branch) {
    if (tick) FillBeforeTick(item);
    // A copy: the hooks may change the tree under the walk.
    const std::vector<TreeItem> children = Children(item);
    for (const TreeItem child : children) SetCategory(child, tick ? 1 : 2);
  }
  if (updateParents) {
    UpdateParents(item);
    RedrawList();
    EnableTree(true);
  }
}

void TickTree::UpdateParents(TreeItem item) {
  for (TreeItem up = item; up != 0 && Contains(up); up = Parent(up)) {
    bool all = true;   // every child has state 5, as it has with no children
    bool some = false; // some child has a state other than 1
    for (const TreeItem child : Children(up)) {
      all = all && State(child) == kTickAll;
      some = some || State(child) != kTickNone;
    }
    int state = kTickNone;
    if (IsTicked(State(up))) {
      state = all ? kTickAll : some ? kTickSome : kTickSelf;
    } else if (some) {
      state = all ? kTickChildrenAll : kTickChildrenSome;
    }
    SetState(up, state);
  }
}

void TickTree::ClearTicks() {
  if (!anyTicked_) return;
  EnableTree(false);
  for (const TreeItem item : DepthFirst()) {
    if (Contains(item) && State(item) != kTickNone) SetCategory(item, 2);
  }
  anyTicked_ = false;
  if (sink_ != nullptr) sink_->ClearAll();
  EnableTree(true);
}

bool TickTree::Click(TreeItem item, TreeHit hit, bool ctrl) {
  if (hit == TreeHit::kTickBox && Contains(item) && !ConfirmBoxTick(item)) return true;
  if (ctrl) ClearTicks();
  if (hit == TreeHit::kElsewhere || !Contains(item)) return false;
  SetCategory(item, hit == TreeHit::kTickBox && !ctrl ? 3 : 5);
  Select(item);
  return true;
}

int TickTree::SpaceKey() {
  if (selected_ == 0) return 0;
  SetCategory(selected_, 5);
  return State(selected_) - 1;
}

}  // namespace fennick
