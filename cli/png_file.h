// PNG images of rendered bitmaps, for the command line's pictures.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick::cli {

// Encodes 0x00RRGGBB pixels, rows from the top, as an 8-bit RGB PNG. Returns
// false with `error` set when the encoder fails.
bool EncodePng(int32_t width, int32_t height, std::span<const uint32_t> pixels,
               std::vector<uint8_t>& png, std::string& error);

}  // namespace fennick::cli
