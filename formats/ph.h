// The card and pattern files PHC, PHB and PHD: a colour list, then blocks of
// PEC-coded stitches, each placed, mirrored, scaled and rotated. Read only.
#pragma once

#include <cstdint>
#include <span>

#include "core/design.h"

namespace fennick {

// One reader serves all three extensions. `bytes` are the file's bytes and the
// zero byte ReadDesignFile adds. Returns false only when there are no bytes; a
// file cut short gives the colours and blocks read before the cut.
bool ReadPhFile(Design& design, std::span<const uint8_t> bytes);

}  // namespace fennick
