// What the Gl compressor and expander share: the format's constants, the level
// check, and canonical Huffman codes (lengths from counts, codes from lengths).
#pragma once

#include <cstdint>
#include <span>

#include "archive/gl_engine.h"

namespace fennick {

inline constexpr int kGlMaxCodeLength = 16;
inline constexpr int kGlMaxAlphabet = 511;

// The three alphabets of a block. C: literals 0-255, matches of length
// symbol - 253 (3 to 256), 510 ends the stream. P: bit length of a distance.
// T: code lengths of C, where 0 to 2 are zero runs.
inline constexpr int kGlCSymbols = 511;
inline constexpr int kGlPSymbols = 15;
inline constexpr int kGlTSymbols = 19;
inline constexpr int kGlEndSymbol = 510;
inline constexpr int kGlMatchOffset = 253;  // C symbol - length
inline constexpr int kGlCountBits = 9;      // C length count and single symbol
inline constexpr int kGlPtCountBits = 5;    // T and P length counts
inline constexpr int kGlTSpecialIndex = 3;  // a 2-bit skip of zeros follows T entry 2

// Success for levels 0 to 4, kGlIllegalParameter with its text otherwise.
GlResult GlCheckLevel(int level);

// Gives each symbol of the alphabet (at most kGlMaxAlphabet) its code length
// from its count. With two or more used symbols the lengths form a complete
// code no longer than 16 bits and the result is a value >= counts.size() (the
// root); `rootCount` is the sum of the counts in 16 bits. With fewer than two,
// every length is 0 and the result is the one used symbol (0 when none is),
// with its count in `rootCount`.
int GlMakeCodeLengths(std::span<const uint16_t> counts, std::span<uint8_t> lengths, uint16_t& rootCount);

// Canonical codes: for each length from 1 to 16, symbols in rising order take
// consecutive codes. Returns the Kraft sum in units of 2^-16, which is 65,536
// for a complete code. Lengths above 16 must have been refused by the caller.
uint32_t GlCanonicalCodes(std::span<const uint8_t> lengths, std::span<uint32_t> codes);

}  // namespace fennick
