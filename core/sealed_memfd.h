// Byte blocks as sealed memory files, the way blocks cross between processes:
// a sealed memfd can change neither size nor content once made, so the
// receiver maps it instead of copying it through a socket, without fearing
// that it shrinks under the map.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fennick {

// A sealed memfd holding exactly `bytes`, close-on-exec; -1 when none can be
// made, with the cause in `error`.
int MakeSealedMemfd(std::span<const uint8_t> bytes, std::string& error);

// The bytes of a sealed memfd, mapped read-only for the object's lifetime.
class SealedBytes {
 public:
  SealedBytes() = default;
  SealedBytes(SealedBytes&& other) noexcept;
  SealedBytes& operator=(SealedBytes&& other) noexcept;
  ~SealedBytes();

  // False, with the cause in `error`, for a descriptor that is no memfd
  // sealed against writing, growing and shrinking.
  bool Map(int fd, std::string& error);
  std::span<const uint8_t> Bytes() const { return {data_, size_}; }

 private:
  void Unmap();

  const uint8_t* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace fennick
