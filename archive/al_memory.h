// Storages on a block of memory: ALMemory on a heap block or a buffer of the
// caller's, ALWinMemory on a handle of the block table (core/global_memory.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "archive/al_storage.h"
#include "core/global_memory.h"

namespace fennick {

// What the two memory kinds share: the block is read and written through the
// storage buffer, and grows on writing unless it belongs to the user.
class ALMemoryBase : public ALStorage {
 public:
  int Open() override;
  // Starts empty; an owned block is released, a user buffer is written over.
  int Create() override;
  int Close() override;
  int LoadBuffer(long position) override;
  int FlushBuffer() override;
  // Releases an owned block; a user buffer is left alone.
  int Delete() override;

  // The block's size in memory, which may exceed the storage's size.
  size_t GetBlockSize() const { return blockSize_; }

 protected:
  ALMemoryBase(std::string objectName, size_t bufferSize, ALStorageType type, ALCase nameCase);

  // The block kinds: its bytes (null when there is none), a resize that keeps
  // the contents (false on failure), and its release.
  virtual uint8_t* BlockBytes() = 0;
  virtual bool ResizeBlock(size_t newSize) = 0;
  virtual void FreeBlock() = 0;
  // The class name in the failure texts.
  virtual const char* KindName() const = 0;

  bool userOwned_ = false;
  size_t blockSize_ = 0;

 private:
  int GrowTo(size_t needed);
};

class ALMemory : public ALMemoryBase {
 public:
  // With an empty `userBuffer` the object owns a block that grows. Otherwise
  // it works on the caller's buffer, which must outlive it and never grows;
  // the buffer's whole length is the storage's size until Create.
  explicit ALMemory(std::string objectName = "AL.TMP", std::span<uint8_t> userBuffer = {},
                    ALCase nameCase = AL_EXACT_CASE, size_t bufferSize = kALDefaultBufferSize);
  ~ALMemory() override;

  // The stored bytes, after any pending writes are flushed.
  std::span<const uint8_t> Contents();
  // Takes the stored bytes out; the object is left without a block. A user
  // buffer is copied.
  std::vector<uint8_t> ReleaseBytes();

 protected:
  uint8_t* BlockBytes() override;
  bool ResizeBlock(size_t newSize) override;
  void FreeBlock() override;
  const char* KindName() const override { return "ALMemory"; }

 private:
  std::vector<uint8_t> owned_;
  std::span<uint8_t> user_;
};

class ALWinMemory : public ALMemoryBase {
 public:
  // With a `userHandle` of 0 the object owns a block that grows. Otherwise
  // it works on the caller's block, which stays the caller's and never grows.
  explicit ALWinMemory(std::string objectName = "AL.TMP", GlobalHandle userHandle = 0,
                       ALCase nameCase = AL_EXACT_CASE, size_t bufferSize = kALDefaultBufferSize);
  ~ALWinMemory() override;

  GlobalHandle GetHandle() const { return handle_; }
  // A block of exactly the stored bytes, now the caller's; the object is
  // left without a block. 0 when there is nothing to give.
  GlobalHandle ReleaseHandle();

 protected:
  uint8_t* BlockBytes() override;
  bool ResizeBlock(size_t newSize) override;
  void FreeBlock() override;
  const char* KindName() const override { return "ALWinMemory"; }

 private:
  GlobalHandle handle_ = 0;
};

}  // namespace fennick
