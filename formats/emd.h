// EMD: pairs of signed byte moves behind a 50-byte header. The colours stand
// in a text file beside it with the extension "col". Read only.
#pragma once

#include <cstdint>
#include <span>

#include "core/design.h"

namespace fennick {

// `bytes` are the file's bytes and the zero byte ReadDesignFile adds. The
// colour file is found from `name` (beside a ZIP member it is a member of the
// same archive); without it the colours come from FormatDefaultPalette.
// Returns false only when there are no bytes.
bool ReadEmd(Design& design, std::span<const uint8_t> bytes);

}  // namespace fennick
