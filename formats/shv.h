// SHV: a header with a picture, a table of colours that name palette entries
// and thread chart codes, then each colour's moves. Big-endian. Read only.
#pragma once

#include <cstdint>
#include <span>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. Keeps
// `name`, and fails when it is empty, when the header is short or when the
// picture ends beyond the bytes. A file cut short keeps the moves read.
bool ReadShv(Design& design, std::span<const uint8_t> bytes);

}  // namespace fennick
