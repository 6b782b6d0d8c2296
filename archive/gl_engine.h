// The Gl engine that packs HUS and VIP stitch streams: a sliding-window coder
// followed by block-wise canonical Huffman coding, as pure functions over bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick {

// Levels 0 to 4 give windows of 1,024 to 16,384 bytes. The level is not kept
// in the stream; kGlCopyLevel marks a stream that is the data itself.
inline constexpr int kGlMinLevel = 0;
inline constexpr int kGlMaxLevel = 4;
inline constexpr int kGlCopyLevel = 0xFFFF;

inline constexpr int kGlIllegalParameter = -1990;
inline constexpr int kGlInternalError = -1989;
inline constexpr int kGlWriteError = -1992;

// Code 0 is success; a negative code comes with its detail text.
struct GlResult {
  int code = 0;
  std::string text;
  bool Ok() const { return code == 0; }
};

// Packs `input` into `output` (replaced). `usedLevel` is the level the stream
// was made at: `level`, or kGlCopyLevel when `level` asked for copying or when
// `failUncompressible` found the packed form no smaller than the input.
GlResult GlCompress(std::span<const uint8_t> input, int level, bool failUncompressible, std::vector<uint8_t>& output,
                    int& usedLevel);

// Unpacks a stream into `output` (replaced). `compressedLength` -1 reads to the
// end of `compressed`, otherwise at most that many bytes. The window of
// `level` must be at least the one the stream was made with. A truncated or
// damaged stream stops cleanly, keeping what was unpacked; output beyond
// `maxOutput` bytes fails with kGlWriteError.
GlResult GlExpand(std::span<const uint8_t> compressed, int level, long compressedLength, std::vector<uint8_t>& output,
                  size_t maxOutput = SIZE_MAX);

}  // namespace fennick
