#include "core/global_memory.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

namespace fennick {
namespace {

// Sizes cross the boundary as signed 32-bit lengths; a larger block could
// not be described to the other side, so it is refused rather than tried.
constexpr size_t kLargestBlock = INT32_MAX;

struct Block {
  // A separate allocation, so that a locked pointer survives rehashing of the
  // table and every other allocation until the block itself is freed.
  std::unique_ptr<uint8_t[]> bytes;
  size_t size = 0;
  uint32_t lockCount = 0;
};

class BlockTable {
 public:
  GlobalHandle Allocate(size_t size) {
    if (size > kLargestBlock) return 0;
    Block block;
    try {
      block.bytes.reset(new uint8_t[size]());  // value-initialised: zero-filled
    } catch (const std::bad_alloc&) {
      return 0;
    }
    block.size = size;
    std::lock_guard guard(mutex_);
    const GlobalHandle handle = NextFreeHandle();
    if (handle == 0) return 0;
    try {
      blocks_.emplace(handle, std::move(block));
    } catch (const std::bad_alloc&) {
      return 0;
    }
    return handle;
  }

  // Runs `action` on the live block under the lock; `fallback` for an unknown handle.
  template <typename Action, typename Result>
  Result With(GlobalHandle handle, Result fallback, Action action) {
    std::lock_guard guard(mutex_);
    const auto found = blocks_.find(handle);
    return found == blocks_.end() ? fallback : action(found->second);
  }

  bool Free(GlobalHandle handle) {
    std::lock_guard guard(mutex_);
    return blocks_.erase(handle) != 0;
  }

  size_t Count() {
    std::lock_guard guard(mutex_);
    return blocks_.size();
  }

 private:
  // The next handle not in use. Handles count up and wrap past 0, so that a
  // freed handle is not handed out again soon and a stale one stays unknown.
  GlobalHandle NextFreeHandle() {
    if (blocks_.size() >= UINT32_MAX) return 0;
    for (;;) {
      const GlobalHandle candidate = next_++;
      if (next_ == 0) next_ = 1;
      if (!blocks_.contains(candidate)) return candidate;
    }
  }

  std::mutex mutex_;
  std::unordered_map<GlobalHandle, Block> blocks_;
  GlobalHandle next_ = 1;
};

// Never destroyed: handles may still be freed by other objects' destructors at exit.
BlockTable& Table() {
  static BlockTable* const table = new BlockTable;
  return *table;
}

}  // namespace

// Every block is zero-filled and never moves, so the flags change nothing.
GlobalHandle GlobalAlloc(uint32_t /*flags*/, size_t size) { return Table().Allocate(size); }

size_t GlobalSize(GlobalHandle handle) {
  return Table().With(handle, size_t{0}, [](Block& block) { return block.size; });
}

uint8_t* GlobalLock(GlobalHandle handle) {
  return Table().With(handle, static_cast<uint8_t*>(nullptr), [](Block& block) {
    ++block.lockCount;
    return block.bytes.get();
  });
}

bool GlobalUnlock(GlobalHandle handle) {
  return Table().With(handle, false, [](Block& block) {
    if (block.lockCount > 0) --block.lockCount;
    return block.lockCount > 0;
  });
}

GlobalHandle GlobalFree(GlobalHandle handle) { return Table().Free(handle) ? 0 : handle; }

GlobalHandle GlobalAllocCopy(std::span<const uint8_t> bytes, uint32_t flags) {
  if (bytes.empty()) return 0;
  const GlobalHandle handle = GlobalAlloc(flags, bytes.size());
  if (handle == 0) return 0;
  Table().With(handle, 0, [&](Block& block) {
    std::ranges::copy(bytes, block.bytes.get());
    return 0;
  });
  return handle;
}

std::vector<uint8_t> GlobalCopyOut(GlobalHandle handle) {
  try {
    return Table().With(handle, std::vector<uint8_t>(), [](Block& block) {
      const std::span<const uint8_t> bytes(block.bytes.get(), block.size);
      return std::vector<uint8_t>(bytes.begin(), bytes.end());
    });
  } catch (const std::bad_alloc&) {
    return {};
  }
}

size_t GlobalBlockCount() { return Table().Count(); }

}  // namespace fennick
