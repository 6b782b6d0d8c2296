// CRC-32 of IEEE 802.3, as storages keep it on the fly and ZIP records store it.
#pragma once

#include <cstdint>
#include <span>

namespace fennick {

// The running register before any byte: all ones.
inline constexpr uint32_t kCrc32Start = 0xFFFFFFFF;

// Moves the running register over `bytes`. The register is not inverted at
// either end; the final CRC is its complement.
uint32_t Crc32Update(uint32_t running, std::span<const uint8_t> bytes);
// The finished CRC-32 of `bytes` ("123456789" gives 0xCBF43926).
inline uint32_t Crc32(std::span<const uint8_t> bytes) { return ~Crc32Update(kCrc32Start, bytes); }

}  // namespace fennick
