#include "core/stitch_list.h"

#include <algorithm>
#include <utility>

namespace fennick {
namespace {

// Blocks grow from a small first one, so that tiny designs stay small and big
// ones need few allocations.
constexpr size_t kFirstBlock = 256;
constexpr size_t kLargestBlock = 1 << 16;

}  // namespace

StitchList::StitchList(const StitchList& other) { *this = other; }

StitchList::StitchList(StitchList&& other) noexcept { *this = std::move(other); }

StitchList& StitchList::operator=(const StitchList& other) {
  if (this == &other) return *this;
  Clear();
  Reserve(other.size_);
  for (const StitchNode& node : other) PushBack(node.dx, node.dy, node.flags);
  return *this;
}

StitchList& StitchList::operator=(StitchList&& other) noexcept {
  if (this == &other) return *this;
  head_ = std::exchange(other.head_, nullptr);
  tail_ = std::exchange(other.tail_, nullptr);
  size_ = std::exchange(other.size_, 0);
  blocks_ = std::move(other.blocks_);
  other.blocks_.clear();
  blockCursor_ = std::exchange(other.blockCursor_, nullptr);
  blockEnd_ = std::exchange(other.blockEnd_, nullptr);
  freeNodes_ = std::exchange(other.freeNodes_, nullptr);
  return *this;
}

void StitchList::AddBlock(size_t count) {
  blocks_.push_back(std::make_unique_for_overwrite<StitchNode[]>(count));
  blockCursor_ = blocks_.back().get();
  blockEnd_ = blockCursor_ + count;
}

void StitchList::Reserve(size_t count) {
  const size_t spare = static_cast<size_t>(blockEnd_ - blockCursor_);
  if (count > spare) AddBlock(count);
}

StitchNode* StitchList::Allocate(int32_t dx, int32_t dy, uint32_t flags) {
  StitchNode* node = freeNodes_;
  if (node != nullptr) {
    freeNodes_ = node->next_;
  } else {
    if (blockCursor_ == blockEnd_) {
      AddBlock(std::clamp(size_, kFirstBlock, kLargestBlock));
    }
    node = blockCursor_++;
  }
  node->dx = dx;
  node->dy = dy;
  node->flags = flags;
  node->prev_ = nullptr;
  node->next_ = nullptr;
  ++size_;
  return node;
}

StitchNode* StitchList::PushBack(int32_t dx, int32_t dy, uint32_t flags) {
  StitchNode* node = Allocate(dx, dy, flags);
  node->prev_ = tail_;
  if (tail_ != nullptr) {
    tail_->next_ = node;
  } else {
    head_ = node;
  }
  tail_ = node;
  return node;
}

StitchNode* StitchList::PushFront(int32_t dx, int32_t dy, uint32_t flags) {
  return head_ == nullptr ? PushBack(dx, dy, flags) : InsertBefore(head_, dx, dy, flags);
}

StitchNode* StitchList::InsertBefore(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags) {
  if (position == nullptr) return PushBack(dx, dy, flags);
  StitchNode* node = Allocate(dx, dy, flags);
  node->next_ = position;
  node->prev_ = position->prev_;
  if (position->prev_ != nullptr) {
    position->prev_->next_ = node;
  } else {
    head_ = node;
  }
  position->prev_ = node;
  return node;
}

StitchNode* StitchList::InsertAfter(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags) {
  if (position == nullptr || position == tail_) return PushBack(dx, dy, flags);
  return InsertBefore(position->next_, dx, dy, flags);
}

StitchNode* StitchList::Remove(StitchNode* node) {
  StitchNode* after = node->next_;
  if (node->prev_ != nullptr) {
    node->prev_->next_ = after;
  } else {
    head_ = after;
  }
  if (after != nullptr) {
    after->prev_ = node->prev_;
  } else {
    tail_ = node->prev_;
  }
  --size_;
  if (size_ == 0) {
    Clear();
  } else {
    node->next_ = freeNodes_;
    freeNodes_ = node;
  }
  return after;
}

void StitchList::Clear() {
  head_ = tail_ = nullptr;
  size_ = 0;
  blocks_.clear();
  blockCursor_ = blockEnd_ = nullptr;
  freeNodes_ = nullptr;
}

}  // namespace fennick
