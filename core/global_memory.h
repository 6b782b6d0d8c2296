// Blocks that cross the boundary by handle: a process-wide, thread-safe table
// of owned byte buffers with exact sizes, keyed by non-zero 32-bit handles.
// Handle 0 is none. Whoever holds a handle last frees it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fennick {

using GlobalHandle = uint32_t;

inline constexpr uint32_t GMEM_MOVEABLE = 0x0002;
inline constexpr uint32_t GMEM_ZEROINIT = 0x0040;
inline constexpr uint32_t GMEM_DDESHARE = 0x2000;
// The flags every block of designs is made with: moveable and shareable.
inline constexpr uint32_t kDesignBlockFlags = GMEM_MOVEABLE | GMEM_DDESHARE;

// A new zero-filled block of exactly `size` bytes, or 0 when none can be had.
GlobalHandle GlobalAlloc(uint32_t flags, size_t size);
// The block's size; 0 for an unknown handle.
size_t GlobalSize(GlobalHandle handle);
// The block's bytes, valid until the block is freed; null for an unknown handle.
uint8_t* GlobalLock(GlobalHandle handle);
// True while the block stays locked after this call.
bool GlobalUnlock(GlobalHandle handle);
// Returns 0 on success, or the handle itself when it is unknown.
GlobalHandle GlobalFree(GlobalHandle handle);

// A new block holding a copy of `bytes` (0 for an empty span).
GlobalHandle GlobalAllocCopy(std::span<const uint8_t> bytes, uint32_t flags = kDesignBlockFlags);
// A copy of the block's bytes; empty for an unknown handle.
std::vector<uint8_t> GlobalCopyOut(GlobalHandle handle);
// The number of blocks alive.
size_t GlobalBlockCount();

}  // namespace fennick
