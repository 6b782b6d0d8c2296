// The needle path: a doubly linked list of relative moves whose nodes come from
// a pool owned by the list. A node keeps its address while neighbours are
// inserted and removed, so passes can edit the list as they walk it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <vector>

namespace fennick {

// From this node on the next thread sews. The normal form is a pure stop: (0, 0, 1).
inline constexpr uint32_t STITCH_COLORSTOP = 1;
// The needle travels this move without stitching.
inline constexpr uint32_t STITCH_JUMP = 2;

struct StitchNode {
  int32_t dx = 0;  // stitch units of 0.1 mm
  int32_t dy = 0;  // positive is up
  uint32_t flags = 0;

  StitchNode* Next() const { return next_; }
  StitchNode* Prev() const { return prev_; }
  bool IsJump() const { return (flags & STITCH_JUMP) != 0; }
  bool IsColorStop() const { return (flags & STITCH_COLORSTOP) != 0; }
  bool HasMove() const { return dx != 0 || dy != 0; }
  bool IsPureStop() const { return dx == 0 && dy == 0 && flags == STITCH_COLORSTOP; }

 private:
  friend class StitchList;
  StitchNode* prev_ = nullptr;
  StitchNode* next_ = nullptr;
};

class StitchList {
 public:
  StitchList() = default;
  StitchList(const StitchList& other);
  StitchList(StitchList&& other) noexcept;
  StitchList& operator=(const StitchList& other);
  StitchList& operator=(StitchList&& other) noexcept;
  ~StitchList() = default;

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
  // Empties the list and hands its pool back.
  void Clear();
  // Makes room for `count` more nodes in one block, so that a reader that knows
  // its record count allocates once.
  void Reserve(size_t count);

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
  void AddBlock(size_t count);

  StitchNode* head_ = nullptr;
  StitchNode* tail_ = nullptr;
  size_t size_ = 0;
  // The pool: blocks of nodes, the unused rest of the newest block, and the
  // nodes removed since, chained through their next pointer.
  std::vector<std::unique_ptr<StitchNode[]>> blocks_;
  StitchNode* blockCursor_ = nullptr;
  StitchNode* blockEnd_ = nullptr;
  StitchNode* freeNodes_ = nullptr;
};

}  // namespace fennick
