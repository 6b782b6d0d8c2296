// The design commands on a million-stitch page: the tool's own work plus the
// design's way out of the host and back as blocks.
#include <benchmark/benchmark.h>

#include "bench/bench_support.h"
#include "control/design_commands.h"
#include "control/page_host.h"

namespace fennick {
namespace {

void CommandLoop(benchmark::State& state, int32_t command) {
  DesignPageHost host;
  host.hoopWidth = host.hoopHeight = 1000;
  for (auto _ : state) {
    state.PauseTiming();
    host.page = bench::MillionStitchDesign();
    host.calls.clear();
    state.ResumeTiming();
    RunDesignCommand(command);
    benchmark::DoNotOptimize(host.page.stitches.Size());
  }
}

void BM_AutoBasteCommand(benchmark::State& state) { CommandLoop(state, kCommandAutoBaste); }
BENCHMARK(BM_AutoBasteCommand)->Unit(benchmark::kMillisecond);

void BM_FitHoopCommand(benchmark::State& state) { CommandLoop(state, kCommandFitHoop); }
BENCHMARK(BM_FitHoopCommand)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
