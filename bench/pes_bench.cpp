// Writing the million-stitch design as PES on both paths, thumbnails included,
// and reading it back.
#include "bench/bench_support.h"
#include "formats/pes.h"

namespace fennick {
namespace {

int WritePlain(Design& design, std::vector<uint8_t>& out) { return WritePesFile(design, out, {false, false, false}); }
int WriteRealColors(Design& design, std::vector<uint8_t>& out) { return WritePesFile(design, out, {true, false, false}); }

void BM_PesWritePlain(benchmark::State& state) { bench::WriteLoop(state, bench::MillionStitchDesign(), WritePlain); }
BENCHMARK(BM_PesWritePlain)->Unit(benchmark::kMillisecond);

void BM_PesWriteRealColors(benchmark::State& state) {
  bench::WriteLoop(state, bench::MillionStitchDesign(), WriteRealColors);
}
BENCHMARK(BM_PesWriteRealColors)->Unit(benchmark::kMillisecond);

void BM_PesRead(benchmark::State& state) {
  bench::ReadLoop(state, bench::MillionStitchDesign(), WriteRealColors, ReadPesFile);
}
BENCHMARK(BM_PesRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
