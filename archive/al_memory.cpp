#include "archive/al_memory.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace fennick {
namespace {

constexpr size_t kGrowthStep = 16384;
// Sizes travel in the signed 32-bit fields of archive records.
constexpr size_t kLargestBlock = 0x7FFFFFFF;

}  // namespace

ALMemoryBase::ALMemoryBase(std::string objectName, size_t bufferSize, ALStorageType type, ALCase nameCase)
    : ALStorage(std::move(objectName), bufferSize, type, nameCase) {}

int ALMemoryBase::Open() {
  if (StatusCode() < 0) return StatusCode();
  // A block never made is refused; an empty one (an empty user buffer, or a
  // created storage that got no bytes) opens at its end.
  if (BlockBytes() == nullptr && !userOwned_ && !WasCreated()) {
    return status.SetError(AL_CANT_OPEN_FILE, "Attempt to open %s %s with no buffer allocated", KindName(),
                           name.c_str());
  }
  if (size_ < 0) size_ = static_cast<long>(blockSize_);
  return ALStorage::Open();
}

int ALMemoryBase::Create() {
  if (StatusCode() < 0) return StatusCode();
  if (!userOwned_) {
    FreeBlock();
    blockSize_ = 0;
  }
  return ALStorage::Create();
}

int ALMemoryBase::Close() {
  if (IsOpen()) FlushBuffer();
  return ALStorage::Close();
}

int ALMemoryBase::Delete() {
  if (StatusCode() < 0) return StatusCode();
  if (!userOwned_) {
    FreeBlock();
    blockSize_ = 0;
    size_ = 0;
  }
  return AL_SUCCESS;
}

int ALMemoryBase::LoadBuffer(long position) {
  if (StatusCode() < 0) return StatusCode();
  if (writeIndex_ > 0 && FlushBuffer() < 0) return StatusCode();
  const long end = std::min(size_, static_cast<long>(blockSize_));
  if (position > end) {
    return status.SetError(AL_READ_ERROR, "Attempt to read past end of the buffer in ALMemoryBase %s", name.c_str());
  }
  const std::span<uint8_t> buffer = Buffer();
  const size_t count = std::min(buffer.size(), static_cast<size_t>(end - position));
  if (count == 0) {
    validBytes_ = readIndex_ = 0;
    position_ = position;
    return AL_END_OF_FILE;
  }
  const std::span<const uint8_t> block(BlockBytes(), blockSize_);
  std::ranges::copy(block.subspan(static_cast<size_t>(position), count), buffer.begin());
  return FinishLoad(position, count);
}

int ALMemoryBase::FlushBuffer() {
  if (StatusCode() < 0) return StatusCode();
  if (writeIndex_ == 0) return AL_SUCCESS;
  const size_t start = static_cast<size_t>(position_);
  if (start + writeIndex_ > blockSize_ && GrowTo(start + writeIndex_) < 0) return StatusCode();
  const std::span<const uint8_t> pending = Buffer().first(writeIndex_);
  UpdateCrc(pending);
  std::ranges::copy(pending, std::span<uint8_t>(BlockBytes(), blockSize_).subspan(start).begin());
  FinishFlush();
  return AL_SUCCESS;
}

int ALMemoryBase::GrowTo(size_t needed) {
  if (userOwned_) {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY, "Attempt to write past the end of a user owned buffer for %s %s",
                           KindName(), name.c_str());
  }
  if (needed > kLargestBlock) {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY, "Attempt to allocate a buffer of %ld bytes for %s %s",
                           static_cast<long>(needed), KindName(), name.c_str());
  }
  const size_t grown = std::min(std::max(blockSize_ + kGrowthStep, needed), kLargestBlock);
  if (ResizeBlock(grown)) {
    blockSize_ = grown;
  } else if (ResizeBlock(needed)) {
    blockSize_ = needed;
  } else {
    return status.SetError(AL_CANT_ALLOCATE_MEMORY,
                           "Allocation failure when attempting to allocate a buffer of %ld bytes for %s %s",
                           static_cast<long>(needed), KindName(), name.c_str());
  }
  return AL_SUCCESS;
}

ALMemory::ALMemory(std::string objectName, std::span<uint8_t> userBuffer, ALCase nameCase, size_t bufferSize)
    : ALMemoryBase(std::move(objectName), bufferSize, AL_MEMORY_OBJECT, nameCase), user_(userBuffer) {
  if (userBuffer.empty()) return;
  userOwned_ = true;
  blockSize_ = userBuffer.size();
  size_ = static_cast<long>(userBuffer.size());
}

ALMemory::~ALMemory() { Close(); }

uint8_t* ALMemory::BlockBytes() { return userOwned_ ? user_.data() : owned_.data(); }

bool ALMemory::ResizeBlock(size_t newSize) {
  try {
    owned_.resize(newSize);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {
    return false;
  }
}

void ALMemory::FreeBlock() { std::vector<uint8_t>().swap(owned_); }

std::span<const uint8_t> ALMemory::Contents() {
  if (IsOpen()) FlushBuffer();
  const size_t size = static_cast<size_t>(std::max(size_, 0L));
  return std::span<const uint8_t>(BlockBytes(), blockSize_).first(std::min(size, blockSize_));
}

std::vector<uint8_t> ALMemory::ReleaseBytes() {
  const std::span<const uint8_t> contents = Contents();
  std::vector<uint8_t> bytes;
  if (userOwned_) {
    bytes.assign(contents.begin(), contents.end());
  } else {
    owned_.resize(contents.size());
    bytes.swap(owned_);
  }
  user_ = {};
  userOwned_ = false;
  blockSize_ = 0;
  size_ = 0;
  return bytes;
}

ALWinMemory::ALWinMemory(std::string objectName, GlobalHandle userHandle, ALCase nameCase, size_t bufferSize)
    : ALMemoryBase(std::move(objectName), bufferSize, AL_WIN_MEMORY_OBJECT, nameCase), handle_(userHandle) {
  if (userHandle == 0) return;
  userOwned_ = true;
  blockSize_ = GlobalSize(userHandle);
  size_ = static_cast<long>(blockSize_);
}

ALWinMemory::~ALWinMemory() {
  Close();
  if (!userOwned_) FreeBlock();
}

uint8_t* ALWinMemory::BlockBytes() {
  // The table keeps a block's bytes in place until it is freed, so the
  // pointer outlives the lock.
  uint8_t* bytes = GlobalLock(handle_);
  if (bytes != nullptr) GlobalUnlock(handle_);
  return bytes;
}

bool ALWinMemory::ResizeBlock(size_t newSize) {
  const GlobalHandle grown = GlobalAlloc(GMEM_MOVEABLE, newSize);
  if (grown == 0) return false;
  if (handle_ != 0) {
    const std::span<const uint8_t> old(BlockBytes(), std::min(GlobalSize(handle_), newSize));
    std::ranges::copy(old, GlobalLock(grown));
    GlobalUnlock(grown);
    GlobalFree(handle_);
  }
  handle_ = grown;
  return true;
}

void ALWinMemory::FreeBlock() {
  if (handle_ != 0) GlobalFree(handle_);
  handle_ = 0;
}

GlobalHandle ALWinMemory::ReleaseHandle() {
  if (IsOpen()) FlushBuffer();
  const size_t size = std::min(static_cast<size_t>(std::max(size_, 0L)), blockSize_);
  GlobalHandle result = handle_;
  if (handle_ != 0 && (userOwned_ || size != GlobalSize(handle_))) {
    result = GlobalAllocCopy(std::span<const uint8_t>(BlockBytes(), size));
    if (!userOwned_) FreeBlock();
  }
  handle_ = 0;
  userOwned_ = false;
  blockSize_ = 0;
  size_ = 0;
  return result;
}

}  // namespace fennick
