// The 48 by 24 pixel label a version 5 and 6 PES file keeps for each thread:
// its catalogue number over the brand's logo, or a picture of an applique part.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/design.h"

namespace fennick {

inline constexpr size_t kPesLabelSize = 144;  // 24 rows of 6 bytes, least significant bit leftmost

std::array<uint8_t, kPesLabelSize> DrawPesLabel(const ThreadColor& thread);

}  // namespace fennick
