// The design a write round-trip input describes, shared by the fuzz target and
// the crash replay of the tests. Input: format byte, scale byte, then records
// of dx, dy (signed bytes shifted left by the scale, so moves reach past 16
// bits) and a flag byte: bit 0 starts a new thread whose colour is the
// record's three bytes, bit 1 makes a jump.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "core/design.h"
#include "core/format_table.h"

namespace fennick::fuzz {

inline constexpr size_t kMaxMoveRecords = 4000;

// The writable format the input picks.
inline int MovesFormat(std::span<const uint8_t> input) {
  return input.empty() ? kFormatPes : kFormatPes + input[0] % (kFormatVip - kFormatPes + 1);
}

// False when the input is too short or its stops cannot be normalized.
// Designs reach the writers in normal form (the block form normalizes); a
// leading stop would otherwise leave a thread that no stop starts.
inline bool DesignFromMoves(std::span<const uint8_t> input, Design& design) {
  if (input.size() < 2) return false;
  const int scale = input[1] % 12;
  design.name = "fuzz.dst";
  ThreadColor first;
  first.rgb = ColorRef(200, 30, 30);
  first.colorName = "Red";
  design.threads.push_back(first);
  const size_t records = std::min((input.size() - 2) / 3, kMaxMoveRecords);
  for (size_t r = 0; r < records; ++r) {
    const uint8_t* record = &input[2 + 3 * r];
    if ((record[2] & 1) != 0) {
      ThreadColor thread;
      thread.rgb = ColorRef(record[0], record[1], record[2]);
      thread.colorName = "Colour";
      design.AppendThread(thread);
    }
    const int32_t dx = static_cast<int32_t>(static_cast<int8_t>(record[0])) * (1 << scale);
    const int32_t dy = static_cast<int32_t>(static_cast<int8_t>(record[1])) * (1 << scale);
    design.stitches.PushBack(dx, dy, (record[2] & 2) != 0 ? STITCH_JUMP : 0);
  }
  if (design.NormalizeColorStops() != 0) return false;
  design.ComputeBounds();
  return true;
}

}  // namespace fennick::fuzz
