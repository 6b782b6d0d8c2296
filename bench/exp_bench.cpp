// Writing the million-stitch design as EXP and reading it back.
#include "bench/bench_support.h"
#include "formats/exp.h"

namespace fennick {
namespace {

void BM_ExpWrite(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WriteExp); }
BENCHMARK(BM_ExpWrite)->Unit(benchmark::kMillisecond);

void BM_ExpRead(benchmark::State& state) { bench::ReadLoop(state, bench::MillionStitchDesign(), WriteExp, ReadExp); }
BENCHMARK(BM_ExpRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
