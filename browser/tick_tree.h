// A tree of items with tick boxes, without a window: the model under both of
// the browser's trees (drives and catalog). Ticking an item adds what it
// stands for to the design list, and each item's tick state also tells how
// many of its children are ticked. A view mirrors the tree through
// TickTreeObserver and forwards clicks and the space key here.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "browser/design_list_sink.h"

namespace fennick {

// Tick states, numbered as the tree's state images.
inline constexpr int kTickNone = 1;           // unticked, no child ticked
inline constexpr int kTickSelf = 2;           // ticked, no child ticked
inline constexpr int kTickSome = 3;           // ticked, some children ticked
inline constexpr int kTickChildrenAll = 4;    // unticked, all children ticked
inline constexpr int kTickAll = 5;            // ticked, all children ticked or none there
inline constexpr int kTickChildrenSome = 6;   // unticked, some children ticked

inline bool IsTicked(int state) { return state == kTickSelf || state == kTickSome || state == kTickAll; }

// Where a click landed on an item.
enum class TreeHit { kTickBox, kLabel, kElsewhere };

// What a view needs to mirror the tree. Every call comes after the change.
class TickTreeObserver {
 public:
  virtual ~TickTreeObserver() = default;
  virtual void ItemInserted(TreeItem /*item*/) {}
  // Comes before the item and its subtree go, while they can still be read.
  virtual void ItemRemoving(TreeItem /*item*/) {}
  virtual void ItemChanged(TreeItem /*item*/) {}  // text, state, expansion
  virtual void SelectionChanged(TreeItem /*item*/) {}
  // A disabled tree gives the focus up to the frame.
  virtual void TreeEnabled(bool /*enabled*/) {}
  virtual void ListRedraw() {}
};

class TickTree {
 public:
  explicit TickTree(DesignListSink* sink = nullptr) : sink_(sink) {}
  virtual ~TickTree() = default;
  TickTree(const TickTree&) = delete;
  TickTree& operator=(const TickTree&) = delete;

  void SetSink(DesignListSink* sink) { sink_ = sink; }
  // The tree whose ticks go when this one ticks, so that the list shows one tree's designs.
  void SetOtherTree(TickTree* other) { other_ = other; }
  void SetObserver(TickTreeObserver* observer) { observer_ = observer; }

  // Adds a child of `parent` (0 for a root): last, or before the first
  // sibling whose text sorts above, without regard to case.
  TreeItem Insert(TreeItem parent, const std::string& text, bool sorted = false, int image = 0,
                  int selectedImage = 0);
  // Adds a child of `parent` at place `index` among its siblings (last when past them).
  TreeItem InsertAt(TreeItem parent, size_t index, const std::string& text, int image, int selectedImage);
  // Deletes the item with its subtree; no tick changes and nothing leaves the list.
  void Delete(TreeItem item);
  void DeleteAll();

  bool Contains(TreeItem item) const { return items_.count(item) != 0; }
  bool empty() const { return items_.empty(); }
  size_t size() const { return items_.size(); }
  // 0 gives the roots.
  const std::vector<TreeItem>& Children(TreeItem item) const;
  TreeItem Parent(TreeItem item) const { return At(item).parent; }
  // 0 for a root.
  int Depth(TreeItem item) const;
  // Every item, each before its children, in sibling order.
  std::vector<TreeItem> DepthFirst() const;

  const std::string& Text(TreeItem item) const { return At(item).text; }
  void SetText(TreeItem item, const std::string& text);
  int Image(TreeItem item) const { return At(item).image; }
  int SelectedImage(TreeItem item) const { return At(item).selectedImage; }
  int State(TreeItem item) const { return At(item).state; }
  void SetState(TreeItem item, int state);
  // The item's catalog entries, in file order.
  std::vector<std::string>& Entries(TreeItem item) { return At(item).entries; }
  const std::vector<std::string>& Entries(TreeItem item) const { return At(item).entries; }
  bool IsExpanded(TreeItem item) const { return At(item).expanded; }
  void SetExpanded(TreeItem item, bool expanded);
  TreeItem Selected() const { return selected_; }
  void Select(TreeItem item);

  // Modes: 1 ticks a branch, 2 unticks a branch, 3 flips a branch by the
  // item's own tick, 5 flips the item alone. Other modes do nothing.
  void SetCategory(TreeItem item, int mode);
  // Recomputes the state of the item and of each of its ancestors from their children.
  void UpdateParents(TreeItem item);
  // Unticks every item and empties the list, if anything was ticked since the last clear.
  void ClearTicks();
  bool anyTicked() const { return anyTicked_; }

  // A left click; Ctrl clears all ticks first. False when the click was not
  // on an item, and the view's default handling applies.
  bool Click(TreeItem item, TreeHit hit, bool ctrl);
  // The space key flips the selected item. The view's tick box steps the
  // state on by one by itself, so it gets the state to write back before that step.
  int SpaceKey();

 protected:
  DesignListSink* Sink() const { return sink_; }

  // What ticking puts into the list: the entries or the folder of the item.
  virtual void AddToList(TreeItem item) = 0;
  virtual void RemoveFromList(TreeItem item);
  virtual void ClearOtherTree();
  // Before a branch is ticked: the drive tree reads the folders below from disk.
  virtual void FillBeforeTick(TreeItem /*item*/) {}
  // A tick on the box may be refused, as for a whole large drive.
  virtual bool ConfirmBoxTick(TreeItem /*item*/) { return true; }
  virtual void EnableTree(bool enabled);
  virtual void RedrawList();

 private:
  struct Node {
    std::string text;
    TreeItem parent = 0;
    std::vector<TreeItem> children;
    int state = kTickNone;
    int image = 0;
    int selectedImage = 0;
    bool expanded = false;
    std::vector<std::string> entries;
  };

  Node& At(TreeItem item);
  const Node& At(TreeItem item) const;
  void TickAndAdd(TreeItem item);
  void UntickAndRemove(TreeItem item);
  void Erase(TreeItem item);

  DesignListSink* sink_;
  TickTree* other_ = nullptr;
  TickTreeObserver* observer_ = nullptr;
  std::unordered_map<TreeItem, Node> items_;
  std::vector<TreeItem> roots_;
  TreeItem selected_ = 0;
  bool anyTicked_ = false;
};

}  // namespace fennick
