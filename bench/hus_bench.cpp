// Writing the million-stitch design as HUS (three Gl-packed streams) and
// reading it back.
#include "bench/bench_support.h"
#include "formats/hus.h"

namespace fennick {
namespace {

void BM_HusWrite(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WriteHusFile); }
BENCHMARK(BM_HusWrite)->Unit(benchmark::kMillisecond);

void BM_HusRead(benchmark::State& state) {
  bench::ReadLoop(state, bench::MillionStitchDesign(), WriteHusFile, ReadHusFile);
}
BENCHMARK(BM_HusRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
