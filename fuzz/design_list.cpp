// The multi-design payload parser, then the list encoded again and parsed once
// more: the same designs come back.
#include <cstdint>
#include <vector>

#include "core/embroidery_file.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  std::vector<Design> designs = DecodeDesignList({data, size});
  if (designs.size() > size / 4) __builtin_trap();
  // Encoding normalizes each design in place first.
  const std::vector<uint8_t> again = EncodeDesignList(designs);
  const std::vector<Design> second = DecodeDesignList(again);
  if (second.size() != designs.size()) __builtin_trap();
  for (size_t i = 0; i < second.size(); ++i) {
    if (second[i].stitches.Size() != designs[i].stitches.Size()) __builtin_trap();
  }
  return 0;
}
