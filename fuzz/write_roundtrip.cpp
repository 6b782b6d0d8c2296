// A design built from the input, written to one writable format and read back.
// Input: format byte, scale byte, then records of dx, dy (signed bytes shifted
// left by the scale, so moves reach past 16 bits) and a flag byte: bit 0 starts
// a new thread whose colour is the record's three bytes, bit 1 makes a jump.
#include <cstdint>
#include <cstdio>

#include "core/format_table.h"
#include "core/text.h"
#include "fuzz/fuzz_support.h"

namespace {

constexpr size_t kMaxRecords = 4000;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  if (size < 2) return 0;
  const int code = kFormatPes + data[0] % (kFormatVip - kFormatPes + 1);
  const int scale = data[1] % 12;
  const FormatEntry* format = FindFormat(code);

  Design design;
  design.name = "fuzz.dst";
  ThreadColor first;
  first.rgb = ColorRef(200, 30, 30);
  first.colorName = "Red";
  design.threads.push_back(first);
  for (size_t i = 2, records = 0; i + 3 <= size && records < kMaxRecords; i += 3, ++records) {
    const uint8_t flags = data[i + 2];
    if ((flags & 1) != 0) {
      ThreadColor thread;
      thread.rgb = ColorRef(data[i], data[i + 1], flags);
      thread.colorName = "Colour";
      design.AppendThread(thread);
    }
    const int32_t dx = static_cast<int32_t>(static_cast<int8_t>(data[i])) * (1 << scale);
    const int32_t dy = static_cast<int32_t>(static_cast<int8_t>(data[i + 1])) * (1 << scale);
    design.stitches.PushBack(dx, dy, (flags & 2) != 0 ? STITCH_JUMP : 0);
  }
  // Designs reach the writers in normal form (the block form normalizes); a
  // leading stop would otherwise leave a thread that no stop starts.
  if (design.NormalizeColorStops() != 0) return 0;
  design.ComputeBounds();

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
