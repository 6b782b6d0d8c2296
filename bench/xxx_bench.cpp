// Reading and writing the million-stitch sample design as XXX.
#include <benchmark/benchmark.h>

#include "formats/xxx.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kStitches = 1'000'000;

const Design& LargeDesign() {
  static const Design design = LargeSampleDesign(kStitches);
  return design;
}

template <typename Write>
void WriteLoop(benchmark::State& state, const Design& source, Write write) {
  std::vector<uint8_t> out;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = source;
    state.ResumeTiming();
    write(design, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}

template <typename Write, typename Read>
void ReadLoop(benchmark::State& state, const Design& source, Write write, Read read) {
  Design written = source;
  std::vector<uint8_t> bytes;
  write(written, bytes);
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    read(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kStitches));
}

void BM_XxxWrite(benchmark::State& state) { WriteLoop(state, LargeDesign(), WriteXxx); }
BENCHMARK(BM_XxxWrite)->Unit(benchmark::kMillisecond);

void BM_XxxRead(benchmark::State& state) { ReadLoop(state, LargeDesign(), WriteXxx, ReadXxx); }
BENCHMARK(BM_XxxRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
