// A design built from the input (see moves_design.h), written to one writable
// format and read back.
#include <cstdint>
#include <cstdio>

#include "core/format_table.h"
#include "core/text.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/moves_design.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  Design design;
  if (!fuzz::DesignFromMoves({data, size}, design)) return 0;
  const int code = fuzz::MovesFormat({data, size});
  const FormatEntry* format = FindFormat(code);

  std::vector<uint8_t> out;
  if (WriteDesignFile(design, out, code) == 0) return 0;
  out.push_back(0);
  Design back;
  back.name = (fuzz::ScratchFolder() / ("back." + AsciiLower(format->extension))).string();
  if (!format->read(back, out)) {
    std::fprintf(stderr, "%s: the reader refused what the writer made\n", format->extension);
    __builtin_trap();
  }
  fuzz::CheckWellFormed(back, format->extension);
  return 0;
}
