// The hot paths over a design of a million stitches: reading and writing DST,
// and the passes every reader and writer runs.
#include <benchmark/benchmark.h>

#include "core/design.h"
#include "formats/dst.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = LargeSampleDesign(kStitches);
  return design;
}

const std::vector<uint8_t>& LargeDstFile() {
  static const std::vector<uint8_t> bytes = [] {
    Design design = LargeDesign();
    std::vector<uint8_t> out;
    WriteDst(design, out);
    out.push_back(0);  // as ReadDesignFile hands files to readers
    return out;
  }();
  return bytes;
}

void BM_DstRead(benchmark::State& state) {
  const std::vector<uint8_t>& bytes = LargeDstFile();
  for (auto _ : state) {
    Design design;
    ReadDst(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}
BENCHMARK(BM_DstRead)->Unit(benchmark::kMillisecond);

// Runs `pass` on a fresh copy of the large design each time; the copy is not timed.
template <typename Pass>
void OnFreshCopy(benchmark::State& state, Pass pass) {
  for (auto _ : state) {
    state.PauseTiming();
    Design design = LargeDesign();
    state.ResumeTiming();
    pass(design);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}

void BM_DstWrite(benchmark::State& state) {
  std::vector<uint8_t> out;
  OnFreshCopy(state, [&](Design& design) { WriteDst(design, out); });
}
BENCHMARK(BM_DstWrite)->Unit(benchmark::kMillisecond);

void BM_Centre(benchmark::State& state) {
  OnFreshCopy(state, [](Design& design) { design.Centre(); });
}
BENCHMARK(BM_Centre)->Unit(benchmark::kMillisecond);

void BM_MergeJumps(benchmark::State& state) {
  OnFreshCopy(state, [](Design& design) { design.MergeJumps(false); });
}
BENCHMARK(BM_MergeJumps)->Unit(benchmark::kMillisecond);

void BM_NormalizeColorStops(benchmark::State& state) {
  OnFreshCopy(state, [](Design& design) { design.NormalizeColorStops(); });
}
BENCHMARK(BM_NormalizeColorStops)->Unit(benchmark::kMillisecond);

void BM_ComputeThreadStats(benchmark::State& state) {
  OnFreshCopy(state, [](Design& design) { design.ComputeThreadStats(); });
}
BENCHMARK(BM_ComputeThreadStats)->Unit(benchmark::kMillisecond);

void BM_CopyDesign(benchmark::State& state) {
  for (auto _ : state) {
    Design design = LargeDesign();
    benchmark::DoNotOptimize(design.stitches.Size());
  }
}
BENCHMARK(BM_CopyDesign)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
