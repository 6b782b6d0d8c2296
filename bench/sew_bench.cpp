// Reading and writing a million-stitch design as SEW, pictures included. The
// design fits the SEW hoop of 126 by 90 mm and its twelve colours.
#include "bench/bench_support.h"
#include "formats/sew.h"

namespace fennick {
namespace {

// Four colours of serpentine fill rows, 120 by 86 mm, sewn over and over.
const Design& HoopDesign() {
  static const Design design = [] {
    Design built;
    built.name = "hoop-sample.sew";
    built.stitches.Reserve(bench::kMillion + 16);
    built.threads.push_back(ThreadColor{});
    built.threads.back().rgb = ColorRef(20, 40, 120);
    const uint32_t colors[] = {ColorRef(60, 160, 60), ColorRef(200, 20, 50), ColorRef(230, 180, 30)};
    int32_t direction = 40;
    for (size_t i = 0; built.stitches.Size() < bench::kMillion; ++i) {
      if (i > 0 && i % (bench::kMillion / 4) == 0) {
        ThreadColor thread;
        thread.rgb = colors[(i / (bench::kMillion / 4) - 1) % 3];
        built.AppendThread(thread);
      }
      if (i % 30 == 29) {
        built.stitches.PushBack(0, (i / 30) % 430 < 215 ? 4 : -4, 0);
        direction = -direction;
      } else {
        built.stitches.PushBack(direction, 0, 0);
      }
    }
    built.Centre();
    return built;
  }();
  return design;
}

void BM_SewWrite(benchmark::State& state) { bench::WriteLoop(state, HoopDesign(), WriteSew); }
BENCHMARK(BM_SewWrite)->Unit(benchmark::kMillisecond);

void BM_SewRead(benchmark::State& state) { bench::ReadLoop(state, HoopDesign(), WriteSew, ReadSew); }
BENCHMARK(BM_SewRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
