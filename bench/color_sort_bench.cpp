// Color Sort: the million-stitch design, and a design of 250 colour blocks in
// twelve colours, where many blocks of a colour can fuse.
#include "bench/bench_support.h"
#include "core/user_interface.h"
#include "tools/color_sort.h"

namespace fennick {
namespace {

// 250 blocks of fill rows, 2,400 stitches each, on a grid of 100 places: a
// block lies over the one 100 blocks before it, and every twelfth block has
// the same colour.
const Design& BlocksDesign() {
  static const Design design = [] {
    constexpr int kBlocks = 250, kColors = 12, kPlaces = 100, kGrid = 10;
    constexpr int32_t kPlaceStep = 300, kRows = 60, kRowStep = 4, kStitches = 40, kStitchStep = 6;
    Design made;
    made.name = "blocks-250.dst";
    int32_t x = 0, y = 0;
    auto moveTo = [&](int32_t toX, int32_t toY, uint32_t flags) {
      made.stitches.PushBack(toX - x, toY - y, flags);
      x = toX;
      y = toY;
    };
    for (int block = 0; block < kBlocks; ++block) {
      ThreadColor thread;
      thread.rgb = 0x0F0F0Fu * static_cast<uint32_t>(block % kColors + 1);
      if (block == 0) {
        made.threads.push_back(thread);
      } else {
        made.AppendThread(thread);
      }
      const int place = (block * 37) % kPlaces;
      const int32_t left = place % kGrid * kPlaceStep, bottom = place / kGrid * kPlaceStep;
      moveTo(left, bottom, STITCH_JUMP);
      for (int32_t row = 0; row < kRows; ++row) {
        for (int32_t i = 1; i <= kStitches; ++i) {
          const int32_t along = i * kStitchStep;
          moveTo(row % 2 == 0 ? left + along : left + kStitches * kStitchStep - along, bottom + row * kRowStep, 0);
        }
      }
    }
    made.Centre();
    return made;
  }();
  return design;
}

void SortLoop(benchmark::State& state, const Design& source) {
  QuietUserInterface quiet;
  int saved = 0;
  bench::ChangeLoop(state, source, [&saved](Design& design) { saved = ColorSort(design, 5); });
  state.counters["saved"] = saved;
  state.counters["colors"] = static_cast<double>(source.threads.size());
}

void BM_ColorSortLarge(benchmark::State& state) { SortLoop(state, bench::MillionStitchDesign()); }
BENCHMARK(BM_ColorSortLarge)->Unit(benchmark::kMillisecond);

void BM_ColorSort250(benchmark::State& state) { SortLoop(state, BlocksDesign()); }
BENCHMARK(BM_ColorSort250)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
