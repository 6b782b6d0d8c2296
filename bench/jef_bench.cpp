// Writing the million-stitch design as JEF and reading it back.
#include <benchmark/benchmark.h>

#include "formats/jef.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = LargeSampleDesign(kStitches);
  return design;
}

void BM_JefWrite(benchmark::State& state) {
  std::vector<uint8_t> out;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = LargeDesign();
    state.ResumeTiming();
    WriteJef(design, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_JefWrite)->Unit(benchmark::kMillisecond);

void BM_JefRead(benchmark::State& state) {
  Design written = LargeDesign();
  std::vector<uint8_t> bytes;
  WriteJef(written, bytes);
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    design.name = "large.jef";
    ReadJef(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_JefRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
