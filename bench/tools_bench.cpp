// The design tools: Auto-Baste on the million-stitch design, which is one walk
// to centre it, the baste, and one more to centre the result; and Reduce
// Needles taking a hundred colours down to eight, the quadratic search run
// ninety-two times.
#include "bench/bench_support.h"
#include "tools/auto_baste.h"
#include "tools/reduce_needles.h"

namespace fennick {
namespace {

void BM_AutoBasteLarge(benchmark::State& state) {
  const BasteSettings settings;  // the defaults: combined, crosshairs, 6 mm, 1 mm edge
  bench::ChangeLoop(state, bench::MillionStitchDesign(), [&settings](Design& design) { AutoBaste(design, settings); });
}
BENCHMARK(BM_AutoBasteLarge)->Unit(benchmark::kMillisecond);

// A hundred colours spread over the cone, distinct by their red alone, each a
// stop of ten stitches, measured as the dialog measures them.
Design HundredColours() {
  Design design;
  for (int i = 0; i < 100; ++i) {
    if (i != 0) design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
    for (int s = 0; s < 10; ++s) design.stitches.PushBack(10 + i % 7, s % 3, 0);
    design.threads.emplace_back().rgb = ColorRef(static_cast<uint8_t>(50 + 2 * i), static_cast<uint8_t>(i * 37 % 256),
                                                 static_cast<uint8_t>(i * 91 % 256));
  }
  design.ComputeThreadStats();
  return design;
}

void BM_ReduceNeedles100To8(benchmark::State& state) {
  const Design source = HundredColours();
  int removed = 0;
  bench::ChangeLoop(state, source, [&removed](Design& design) { removed = ReduceNeedles(design, 8); });
  state.counters["colours"] = CountDistinctColors(source);
  state.counters["removed"] = removed;
}
BENCHMARK(BM_ReduceNeedles100To8)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace fennick
