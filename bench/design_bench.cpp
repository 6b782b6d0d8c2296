// The hot paths over a design of a million stitches: reading and writing DST,
// and the passes every reader and writer runs.
#include "bench/bench_support.h"
#include "formats/dst.h"

namespace fennick {
namespace {

void BM_DstRead(benchmark::State& state) { bench::ReadLoop(state, bench::MillionStitchDesign(), WriteDst, ReadDst); }
BENCHMARK(BM_DstRead)->Unit(benchmark::kMillisecond);

void BM_DstWrite(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WriteDst); }
BENCHMARK(BM_DstWrite)->Unit(benchmark::kMillisecond);

// Runs `pass` on a fresh copy of the large design each time; the copy is not timed.
template <typename Pass>
void OnFreshCopy(benchmark::State& state, Pass pass) {
  for (auto _ : state) {
    state.PauseTiming();
    Design design = bench::MillionStitchDesign();
    state.ResumeTiming();
    pass(design);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bench::kMillion));
}

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
    Design design = bench::MillionStitchDesign();
    benchmark::DoNotOptimize(design.stitches.Size());
  }
}
BENCHMARK(BM_CopyDesign)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
