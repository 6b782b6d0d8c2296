// The resize engine on the million-stitch design: classification twice (the
// stretch of column ends moves stitches), the rebuild of every column and
// fill, the scale and the three clean-ups. Settings are the preference page's defaults.
#include "bench/bench_support.h"
#include <utility>

#include "resize/resize_engine.h"

namespace fennick {
namespace {

void BM_ResizeLarge(benchmark::State& state) {
  const float factor = static_cast<float>(state.range(0)) / 100;
  size_t nodes = 0;
  bench::ChangeLoop(state, bench::MillionStitchDesign(), [&](Design& design) {
    ResizeEngine engine;
    engine.ApplySettings(kDefaultResizeSettings);
    engine.LoadDesign(std::move(design));
    engine.ResizeWorking(0, factor, factor);
    nodes = engine.working.stitches.Size();
  });
  state.counters["nodes"] = static_cast<double>(nodes);
}
BENCHMARK(BM_ResizeLarge)->Arg(120)->Arg(80)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
