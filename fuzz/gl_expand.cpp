// The Gl expander on any stream, at the level the first byte picks.
#include <cstdint>

#include "archive/gl_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  if (size < 1) return 0;
  const int level = data[0] % (kGlMaxLevel + 1);
  std::vector<uint8_t> output;
  // A few bytes can ask for a great deal of output; a cap keeps the run in memory.
  const GlResult result = GlExpand({data + 1, size - 1}, level, -1, output, size_t{1} << 22);
  if (output.size() > (size_t{1} << 22)) __builtin_trap();
  (void)result;
  return 0;
}
