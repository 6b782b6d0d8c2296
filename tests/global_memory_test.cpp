#include "core/global_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

namespace fennick {
namespace {

TEST(GlobalMemory, BlocksHaveExactSizeAndStartZeroed) {
  for (size_t size : {size_t{0}, size_t{1}, size_t{7}, size_t{4096}, size_t{1} << 20}) {
    const GlobalHandle handle = GlobalAlloc(kDesignBlockFlags, size);
    ASSERT_NE(handle, 0u) << size;
    EXPECT_EQ(GlobalSize(handle), size);
    const std::vector<uint8_t> bytes = GlobalCopyOut(handle);
    EXPECT_EQ(bytes.size(), size);
    EXPECT_TRUE(std::ranges::all_of(bytes, [](uint8_t b) { return b == 0; })) << size;
    EXPECT_EQ(GlobalFree(handle), 0u);
  }
  EXPECT_EQ(GlobalAlloc(kDesignBlockFlags, size_t{1} << 40), 0u);
}

TEST(GlobalMemory, LocksAreCountedAndThePointerNeverMoves) {
  const GlobalHandle handle = GlobalAllocCopy(std::vector<uint8_t>{1, 2, 3});
  uint8_t* const first = GlobalLock(handle);
  ASSERT_NE(first, nullptr);
  first[1] = 9;
  // Many more blocks force the table to grow around the locked one.
  std::vector<GlobalHandle> others;
  for (int i = 0; i < 5000; ++i) others.push_back(GlobalAlloc(0, 8));
  EXPECT_EQ(GlobalLock(handle), first);
  EXPECT_TRUE(GlobalUnlock(handle));
  EXPECT_FALSE(GlobalUnlock(handle));
  EXPECT_FALSE(GlobalUnlock(handle));
  EXPECT_EQ(GlobalCopyOut(handle), (std::vector<uint8_t>{1, 9, 3}));
  for (GlobalHandle other : others) GlobalFree(other);
  GlobalFree(handle);
}

TEST(GlobalMemory, ThreadsAllocateAndFreeConcurrently) {
  const size_t before = GlobalBlockCount();
  constexpr int kThreads = 4;
  constexpr int kRounds = 3000;
  std::vector<std::vector<GlobalHandle>> kept(kThreads);
  std::vector<std::thread> workers;
  for (int t = 0; t < kThreads; ++t) {
    workers.emplace_back([t, &kept] {
      for (int i = 0; i < kRounds; ++i) {
        const size_t size = static_cast<size_t>(i % 61 + 1);
        const GlobalHandle handle = GlobalAlloc(kDesignBlockFlags, size);
        uint8_t* bytes = GlobalLock(handle);
        if (bytes == nullptr) return;
        std::fill_n(bytes, size, static_cast<uint8_t>(t + 1));
        GlobalUnlock(handle);
        // Every other block lives on, so that frees and allocations interleave.
        if (i % 2 == 0) {
          kept[static_cast<size_t>(t)].push_back(handle);
        } else {
          GlobalFree(handle);
        }
      }
    });
  }
  for (std::thread& worker : workers) worker.join();

  std::set<GlobalHandle> distinct;
  for (int t = 0; t < kThreads; ++t) {
    ASSERT_EQ(kept[static_cast<size_t>(t)].size(), size_t{kRounds / 2});
    for (GlobalHandle handle : kept[static_cast<size_t>(t)]) {
      distinct.insert(handle);
      const std::vector<uint8_t> bytes = GlobalCopyOut(handle);
      EXPECT_TRUE(std::ranges::all_of(bytes, [t](uint8_t b) { return b == t + 1; })) << handle;
      EXPECT_EQ(GlobalFree(handle), 0u);
    }
  }
  EXPECT_EQ(distinct.size(), size_t{kThreads * kRounds / 2});
  EXPECT_FALSE(distinct.contains(0));
  EXPECT_EQ(GlobalBlockCount(), before);
}

}  // namespace
}  // namespace fennick
