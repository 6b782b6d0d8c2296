// The needle path: a doubly linked list of relative moves whose nodes live in
// one address range reserved by the list. A node keeps its address while
// neighbours are inserted and removed, so passes can edit the list as they walk
// it. Links are 32-bit node offsets, which keeps a node at 20 bytes: a
// million-stitch design is 20 MB of nodes, and a copy is one block copy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace fennick {

// From this node on the next thread sews. The normal form is a pure stop: (0, 0, 1).
inline constexpr uint32_t STITCH_COLORSTOP = 1;
// The needle travels this move without stitching.
inline constexpr uint32_t STITCH_JUMP = 2;

struct StitchNode {
  int32_t dx = 0;  // stitch units of 0.1 mm
  int32_t dy = 0;  // positive is up
  uint32_t flags = 0;

  StitchNode* Next() const { return Linked(next_); }
  StitchNode* Prev() const { return Linked(prev_); }
  bool IsJump() const { return (flags & STITCH_JUMP) != 0; }
  bool IsColorStop() const { return (flags & STITCH_COLORSTOP) != 0; }
  bool HasMove() const { return dx != 0 || dy != 0; }
  bool IsPureStop() const { return dx == 0 && dy == 0 && flags == STITCH_COLORSTOP; }

 private:
  friend class StitchList;
  StitchNode* Linked(int32_t offset) const {
    return offset == 0 ? nullptr : const_cast<StitchNode*>(this) + offset;
  }
  int32_t OffsetTo(const StitchNode* to) const { return to == nullptr ? 0 : static_cast<int32_t>(to - this); }
  // Offsets in nodes from this one; 0 is no neighbour.
  int32_t prev_ = 0;
  int32_t next_ = 0;
};

class StitchList {
 public:
  StitchList() = default;
  StitchList(const StitchList& other);
  StitchList(StitchList&& other) noexcept;
  StitchList& operator=(const StitchList& other);
  StitchList& operator=(StitchList&& other) noexcept;
  ~StitchList();

  StitchNode* Head() const { return head_; }
  StitchNode* Tail() const { return tail_; }
  size_t Size() const { return size_; }
  bool Empty() const { return size_ == 0; }

  StitchNode* PushBack(int32_t dx, int32_t dy, uint32_t flags);
  StitchNode* PushFront(int32_t dx, int32_t dy, uint32_t flags);
  StitchNode* InsertBefore(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags);
  StitchNode* InsertAfter(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags);
  // Unlinks `node` and returns the node that followed it.
  StitchNode* Remove(StitchNode* node);
  // Empties the list and hands its memory back.
  void Clear();
  // Makes room for `count` more nodes, so that a reader that knows its record
  // count grows the list once. Room costs no memory until a node uses it.
  void Reserve(size_t count);
  // Nodes the list holds or can take without growing.
  size_t Capacity() const { return committed_; }

  template <typename Node>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = StitchNode;
    using difference_type = std::ptrdiff_t;
    using pointer = Node*;
    using reference = Node&;
    Iterator() = default;
    explicit Iterator(Node* node) : node_(node) {}
    Node& operator*() const { return *node_; }
    Node* operator->() const { return node_; }
    Iterator& operator++() {
      node_ = node_->Next();
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      node_ = node_->Next();
      return before;
    }
    bool operator==(const Iterator& other) const = default;

   private:
    Node* node_ = nullptr;
  };
  Iterator<StitchNode> begin() { return Iterator<StitchNode>(head_); }
  Iterator<StitchNode> end() { return Iterator<StitchNode>(); }
  Iterator<const StitchNode> begin() const { return Iterator<const StitchNode>(head_); }
  Iterator<const StitchNode> end() const { return Iterator<const StitchNode>(); }

 private:
  StitchNode* Allocate(int32_t dx, int32_t dy, uint32_t flags);
  void Grow(size_t count);
  void Release();

  StitchNode* head_ = nullptr;
  StitchNode* tail_ = nullptr;
  size_t size_ = 0;
  // The range: `reserved_` nodes of address space from `base_`, of which the
  // first `committed_` are usable and the first `used_` have been handed out;
  // nodes removed since are chained through their next link.
  StitchNode* base_ = nullptr;
  size_t reserved_ = 0;
  size_t committed_ = 0;
  size_t used_ = 0;
  StitchNode* freeNodes_ = nullptr;
};

// Appending is what every reader does per record, so it stays inline.
inline StitchNode* StitchList::Allocate(int32_t dx, int32_t dy, uint32_t flags) {
  StitchNode* node = freeNodes_;
  if (node != nullptr) {
    freeNodes_ = node->Next();
  } else {
    if (used_ == committed_) Grow(1);
    node = base_ + used_++;
  }
  node->dx = dx;
  node->dy = dy;
  node->flags = flags;
  node->prev_ = 0;
  node->next_ = 0;
  ++size_;
  return node;
}

inline StitchNode* StitchList::PushBack(int32_t dx, int32_t dy, uint32_t flags) {
  StitchNode* node = Allocate(dx, dy, flags);
  if (tail_ != nullptr) {
    node->prev_ = node->OffsetTo(tail_);
    tail_->next_ = tail_->OffsetTo(node);
  } else {
    head_ = node;
  }
  tail_ = node;
  return node;
}

}  // namespace fennick
