// Reading an EMD file of a million stitches (no colour file beside it).
#include "bench/bench_support.h"
#include "formats/emd.h"

namespace fennick {
namespace {

void BM_EmdRead(benchmark::State& state) {
  std::vector<uint8_t> bytes(50, 0);
  for (size_t i = 0; i < bench::kMillion; ++i) {
    bytes.push_back(static_cast<uint8_t>(i % 7 + 1));
    bytes.push_back(i % 2 ? 5 : 0xFB);
  }
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;  // no name: no colour file is looked for
    ReadEmd(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bench::kMillion));
}
BENCHMARK(BM_EmdRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
