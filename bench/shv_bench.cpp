// Reading an SHV file of a million short moves in sixteen colours.
#include <benchmark/benchmark.h>

#include "core/byte_cursor.h"
#include "formats/shv.h"

namespace fennick {
namespace {

constexpr size_t kColors = 16;
constexpr uint16_t kMovesPerColor = 62'500;

std::vector<uint8_t> LargeShv() {
  std::vector<uint8_t> bytes(86, 0);
  ByteWriter writer(bytes);
  writer.U8(0);        // no title
  writer.U8(2);        // a picture of size form (2, 2): 8 bytes from here
  writer.U8(2);
  writer.Fill(0, 6);
  writer.U8(kColors);  // the colour count; the first record's count follows 20 bytes on
  writer.Fill(0, 20);
  for (size_t i = 0; i < kColors; ++i) {
    writer.U16BE(kMovesPerColor);
    writer.U8(static_cast<uint8_t>(i));
    writer.Fill(0, i + 1 < kColors ? 11 : 9);  // the last record's tail is the stream
  }
  for (size_t i = 0; i < kColors * kMovesPerColor; ++i) {
    writer.U8(static_cast<uint8_t>(i % 7 + 1));
    writer.U8(i % 2 ? 5 : 0xFB);
  }
  writer.U8(0);  // as ReadDesignFile hands files to readers
  return bytes;
}

void BM_ShvRead(benchmark::State& state) {
  const std::vector<uint8_t> bytes = LargeShv();
  size_t nodes = 0;
  for (auto _ : state) {
    Design design;
    design.name = "large.shv";
    ReadShv(design, bytes);
    nodes = design.stitches.Size();
    benchmark::DoNotOptimize(nodes);
  }
  state.counters["nodes"] = static_cast<double>(nodes);
}
BENCHMARK(BM_ShvRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
