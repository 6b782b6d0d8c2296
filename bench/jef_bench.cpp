// Writing the million-stitch design as JEF and reading it back.
#include "bench/bench_support.h"
#include "formats/jef.h"

namespace fennick {
namespace {

void BM_JefWrite(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WriteJef); }
BENCHMARK(BM_JefWrite)->Unit(benchmark::kMillisecond);

void BM_JefRead(benchmark::State& state) { bench::ReadLoop(state, bench::MillionStitchDesign(), WriteJef, ReadJef); }
BENCHMARK(BM_JefRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
