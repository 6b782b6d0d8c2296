// Writing the million-stitch design as HUS (three Gl-packed streams) and
// reading it back.
#include <benchmark/benchmark.h>

#include "formats/hus.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = [] {
    Design large = LargeSampleDesign(kStitches);
    large.name = "large.hus";
    return large;
  }();
  return design;
}

void BM_HusWrite(benchmark::State& state) {
  std::vector<uint8_t> out;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = LargeDesign();
    state.ResumeTiming();
    WriteHusFile(design, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["bytes"] = static_cast<double>(out.size());
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_HusWrite)->Unit(benchmark::kMillisecond);

void BM_HusRead(benchmark::State& state) {
  Design written = LargeDesign();
  std::vector<uint8_t> bytes;
  WriteHusFile(written, bytes);
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    design.name = "large.hus";
    ReadHusFile(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_HusRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
