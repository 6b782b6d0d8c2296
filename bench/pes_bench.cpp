// Writing the million-stitch design as PES on both paths, thumbnails included,
// and reading it back.
#include <benchmark/benchmark.h>

#include "formats/pes.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = LargeSampleDesign(kStitches);
  return design;
}

void WritePes(benchmark::State& state, bool pes5) {
  std::vector<uint8_t> out;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = LargeDesign();
    state.ResumeTiming();
    WritePesFile(design, out, {pes5, false, false});
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}

void BM_PesWritePlain(benchmark::State& state) { WritePes(state, false); }
BENCHMARK(BM_PesWritePlain)->Unit(benchmark::kMillisecond);

void BM_PesWriteRealColors(benchmark::State& state) { WritePes(state, true); }
BENCHMARK(BM_PesWriteRealColors)->Unit(benchmark::kMillisecond);

void BM_PesRead(benchmark::State& state) {
  Design written = LargeDesign();
  std::vector<uint8_t> bytes;
  WritePesFile(written, bytes, {true, false, false});
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    ReadPesFile(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_PesRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
