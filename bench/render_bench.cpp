// The software renderer: a million-stitch design at preview size, flat and
// shaded, and batches of browser thumbnails at the usual icon sizes.
#include "bench/bench_support.h"
#include "core/design.h"
#include "tools/render/design_renderer.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr int kThumbnails = 200;

Design& LargeDesign() {
  static Design design = LargeSampleDesign(bench::kMillion);
  return design;
}

// About 3,000 stitches each, a little different in size and count.
std::vector<Design>& ThumbnailDesigns() {
  static std::vector<Design> designs = [] {
    std::vector<Design> made;
    made.reserve(kThumbnails);
    for (int i = 0; i < kThumbnails; ++i) made.push_back(LargeSampleDesign(2500 + static_cast<size_t>(i) * 5));
    return made;
  }();
  return designs;
}

void BM_RenderLarge(benchmark::State& state) {
  DesignRenderer renderer;
  renderer.bitmap.Create(400, 400);
  renderer.design = &LargeDesign();
  renderer.shaded = state.range(0) != 0;
  renderer.thick = renderer.shaded;
  for (auto _ : state) {
    renderer.Render(-1);
    benchmark::DoNotOptimize(renderer.bitmap.pixels.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(LargeDesign().stitches.Size()));
}
BENCHMARK(BM_RenderLarge)->ArgName("shaded")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Each thumbnail gets a fresh bitmap, as the browser's picture threads do.
void BM_Thumbnails(benchmark::State& state) {
  const auto size = static_cast<int32_t>(state.range(0));
  std::vector<Design>& designs = ThumbnailDesigns();
  for (auto _ : state) {
    for (Design& design : designs) {
      DesignRenderer renderer;
      renderer.bitmap.Create(size, size);
      renderer.bitmap.background = 0xFFFFFF;
      renderer.design = &design;
      renderer.shaded = true;
      renderer.Render(-1);
      benchmark::DoNotOptimize(renderer.bitmap.pixels.data());
    }
  }
  state.counters["per_thumbnail"] =
      benchmark::Counter(kThumbnails, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Thumbnails)->ArgName("px")->Arg(128)->Arg(200)->Arg(400)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
