#include "archive/crc32.h"

#include <zlib.h>

namespace fennick {

uint32_t Crc32Update(uint32_t running, std::span<const uint8_t> bytes) {
  // A null buffer asks zlib for its start value, so an empty span stops here.
  if (bytes.empty()) return running;
  // zlib complements the register on the way in and out; undoing both gives
  // the bare running value with zlib's fast table-driven loop.
  return ~static_cast<uint32_t>(crc32_z(uLong{~running}, bytes.data(), bytes.size()));
}

}  // namespace fennick
