#include "core/stitch_list.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace fennick {
namespace {

// Address space a list asks for at first: 214 million nodes, far beyond any
// design, and free until used. Where the system allows less (a lowered
// address-space limit), the list settles for less.
constexpr size_t kReservedBytes = size_t{4} << 30;
static_assert(kReservedBytes / sizeof(StitchNode) < (size_t{1} << 31), "links are 32-bit offsets");

size_t PageBytes() {
  static const size_t bytes = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return bytes;
}

}  // namespace

StitchList::StitchList(const StitchList& other) { *this = other; }

StitchList::StitchList(StitchList&& other) noexcept { *this = std::move(other); }

StitchList::~StitchList() { Release(); }

StitchList& StitchList::operator=(const StitchList& other) {
  if (this == &other) return *this;
  Clear();
  if (other.Empty()) return *this;
  // Links are relative, so the used nodes copy as one block, holes and all.
  Grow(other.used_);
  std::memcpy(static_cast<void*>(base_), other.base_, other.used_ * sizeof(StitchNode));
  const auto moved = [&](const StitchNode* node) { return node == nullptr ? nullptr : base_ + (node - other.base_); };
  head_ = moved(other.head_);
  tail_ = moved(other.tail_);
  freeNodes_ = moved(other.freeNodes_);
  size_ = other.size_;
  used_ = other.used_;
  return *this;
}

StitchList& StitchList::operator=(StitchList&& other) noexcept {
  if (this == &other) return *this;
  Release();
  head_ = std::exchange(other.head_, nullptr);
  tail_ = std::exchange(other.tail_, nullptr);
  size_ = std::exchange(other.size_, 0);
  base_ = std::exchange(other.base_, nullptr);
  reserved_ = std::exchange(other.reserved_, 0);
  committed_ = std::exchange(other.committed_, 0);
  used_ = std::exchange(other.used_, 0);
  freeNodes_ = std::exchange(other.freeNodes_, nullptr);
  return *this;
}

// Makes at least `count` nodes past `used_` usable: reserves the range on first
// use, then opens it page by page, at least doubling what is open.
void StitchList::Grow(size_t count) {
  const size_t needed = used_ + count;
  if (needed <= committed_) return;
  if (base_ == nullptr) {
    for (size_t bytes = kReservedBytes; bytes / sizeof(StitchNode) >= needed; bytes /= 2) {
      void* range = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
      if (range == MAP_FAILED) continue;
      // Large lists fault in 2 MB at a time instead of 4 kB.
      madvise(range, bytes, MADV_HUGEPAGE);
      base_ = static_cast<StitchNode*>(range);
      reserved_ = bytes / sizeof(StitchNode);
      break;
    }
    if (base_ == nullptr) throw std::bad_alloc();
  }
  if (needed > reserved_) throw std::bad_alloc();
  const size_t page = PageBytes();
  const size_t openBytes = committed_ * sizeof(StitchNode) / page * page;
  size_t bytes = std::max(needed * sizeof(StitchNode), 2 * openBytes);
  bytes = std::min((bytes + page - 1) / page * page, reserved_ * sizeof(StitchNode));
  auto* start = reinterpret_cast<char*>(base_);
  if (mprotect(start + openBytes, bytes - openBytes, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  committed_ = bytes / sizeof(StitchNode);
}

void StitchList::Release() {
  if (base_ != nullptr) munmap(base_, reserved_ * sizeof(StitchNode));
  head_ = tail_ = nullptr;
  size_ = 0;
  base_ = nullptr;
  reserved_ = committed_ = used_ = 0;
  freeNodes_ = nullptr;
}

void StitchList::Reserve(size_t count) { Grow(count); }

StitchNode* StitchList::PushFront(int32_t dx, int32_t dy, uint32_t flags) {
  return head_ == nullptr ? PushBack(dx, dy, flags) : InsertBefore(head_, dx, dy, flags);
}

StitchNode* StitchList::InsertBefore(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags) {
  if (position == nullptr) return PushBack(dx, dy, flags);
  StitchNode* node = Allocate(dx, dy, flags);
  StitchNode* before = position->Prev();
  node->next_ = node->OffsetTo(position);
  node->prev_ = node->OffsetTo(before);
  if (before != nullptr) {
    before->next_ = before->OffsetTo(node);
  } else {
    head_ = node;
  }
  position->prev_ = position->OffsetTo(node);
  return node;
}

StitchNode* StitchList::InsertAfter(StitchNode* position, int32_t dx, int32_t dy, uint32_t flags) {
  if (position == nullptr || position == tail_) return PushBack(dx, dy, flags);
  return InsertBefore(position->Next(), dx, dy, flags);
}

StitchNode* StitchList::Remove(StitchNode* node) {
  StitchNode* before = node->Prev();
  StitchNode* after = node->Next();
  if (before != nullptr) {
    before->next_ = before->OffsetTo(after);
  } else {
    head_ = after;
  }
  if (after != nullptr) {
    after->prev_ = after->OffsetTo(before);
  } else {
    tail_ = before;
  }
  --size_;
  if (size_ == 0) {
    Clear();
  } else {
    node->prev_ = 0;
    node->next_ = node->OffsetTo(freeNodes_);
    freeNodes_ = node;
  }
  return after;
}

void StitchList::Clear() { Release(); }

}  // namespace fennick
