// Writing the million-stitch design as EXP and reading it back.
#include <benchmark/benchmark.h>

#include "formats/exp.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = LargeSampleDesign(kStitches);
  return design;
}

void BM_ExpWrite(benchmark::State& state) {
  std::vector<uint8_t> out;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = LargeDesign();
    state.ResumeTiming();
    WriteExp(design, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_ExpWrite)->Unit(benchmark::kMillisecond);

void BM_ExpRead(benchmark::State& state) {
  Design written = LargeDesign();
  std::vector<uint8_t> bytes;
  WriteExp(written, bytes);
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    design.name = "large.exp";
    ReadExp(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_ExpRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
