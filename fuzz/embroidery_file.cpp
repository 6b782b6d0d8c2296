// The block form parser, then the block built again from what it read and
// parsed once more.
#include <cstdint>

#include "core/embroidery_file.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  Design design;
  DecodeEmbroideryFile(design, {data, size});
  const std::vector<uint8_t> again = EncodeEmbroideryFile(design);
  Design second;
  DecodeEmbroideryFile(second, again);
  if (second.stitches.Size() != design.stitches.Size()) {
    // Encoding may add one pure stop for a thread that has none; it never loses nodes.
    if (second.stitches.Size() < design.stitches.Size()) __builtin_trap();
  }
  return 0;
}
