// PCS writing of the million-stitch design, and reading. The record count a
// reader takes holds 16 bits and a sign, so reading is timed on the largest
// design it can take whole: 32,000 nodes.
#include "bench/bench_support.h"
#include "formats/pcs.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

constexpr size_t kReadableNodes = 32'000;

// The sample design shrunk to a 25th, needle point by needle point, so that
// it fits the large PCS hoop (about 1200 by 1150 units).
Design ShrunkDesign(size_t stitches) {
  Design large = LargeSampleDesign(stitches);
  int64_t x = 0, y = 0, shrunkX = 0, shrunkY = 0;
  for (StitchNode& node : large.stitches) {
    x += node.dx;
    y += node.dy;
    node.dx = static_cast<int32_t>(x / 25 - shrunkX);
    node.dy = static_cast<int32_t>(y / 25 - shrunkY);
    shrunkX = x / 25;
    shrunkY = y / 25;
  }
  large.ComputeBounds();
  return large;
}

const Design& LargeDesign() {
  static const Design design = ShrunkDesign(bench::kMillion);
  return design;
}

void BM_PcsWrite(benchmark::State& state) { bench::WriteLoop(state, LargeDesign(), WritePcs); }
BENCHMARK(BM_PcsWrite)->Unit(benchmark::kMillisecond);

void BM_PcsRead(benchmark::State& state) {
  Design written = ShrunkDesign(kReadableNodes);
  while (written.stitches.Size() > kReadableNodes) written.stitches.Remove(written.stitches.Tail());
  std::vector<uint8_t> bytes;
  WritePcs(written, bytes);
  bytes.push_back(0);  // as ReadDesignFile hands files to readers
  for (auto _ : state) {
    Design design;
    design.name = "large.pcs";
    ReadPcs(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kReadableNodes));
}
BENCHMARK(BM_PcsRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
