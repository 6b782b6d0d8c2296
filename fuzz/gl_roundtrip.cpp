// GlCompress then GlExpand gives the input back, at every level.
#include <cstdint>
#include <cstdio>

#include "archive/gl_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  if (size < 1) return 0;
  const int level = data[0] % (kGlMaxLevel + 1);
  const bool failUncompressible = (data[0] & 0x80) != 0;
  const std::span<const uint8_t> input(data + 1, size - 1);
  std::vector<uint8_t> packed;
  int usedLevel = -1;
  const GlResult packedResult = GlCompress(input, level, failUncompressible, packed, usedLevel);
  if (!packedResult.Ok()) {
    std::fprintf(stderr, "GlCompress failed: %s\n", packedResult.text.c_str());
    __builtin_trap();
  }
  if (usedLevel == kGlCopyLevel) {
    if (!std::equal(packed.begin(), packed.end(), input.begin(), input.end())) __builtin_trap();
    return 0;
  }
  std::vector<uint8_t> unpacked;
  const GlResult unpackedResult = GlExpand(packed, usedLevel, -1, unpacked);
  if (!unpackedResult.Ok()) {
    std::fprintf(stderr, "GlExpand failed: %s\n", unpackedResult.text.c_str());
    __builtin_trap();
  }
  if (!std::equal(unpacked.begin(), unpacked.end(), input.begin(), input.end())) __builtin_trap();
  return 0;
}
