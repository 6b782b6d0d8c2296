// Reading and writing the million-stitch sample design as XXX.
#include "bench/bench_support.h"
#include "formats/xxx.h"

namespace fennick {
namespace {

void BM_XxxWrite(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WriteXxx); }
BENCHMARK(BM_XxxWrite)->Unit(benchmark::kMillisecond);

void BM_XxxRead(benchmark::State& state) { bench::ReadLoop(state, bench::MillionStitchDesign(), WriteXxx, ReadXxx); }
BENCHMARK(BM_XxxRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
