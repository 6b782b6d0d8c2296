// What the benchmarks share: the million-stitch sample design and the loops
// that time a change, a writer and a reader on a design.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "core/design.h"
#include "tools/sample_design.h"

namespace fennick::bench {

inline constexpr size_t kMillion = 1'000'000;

inline const Design& MillionStitchDesign() {
  static const Design design = LargeSampleDesign(kMillion);
  return design;
}

// Times `change` on a fresh copy of `source` (the copy is not timed): writers
// and tools change the design they are given.
template <typename Change>
void ChangeLoop(benchmark::State& state, const Design& source, Change change) {
  for (auto _ : state) {
    state.PauseTiming();
    Design design = source;
    state.ResumeTiming();
    change(design);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(source.stitches.Size()));
}

// Times `write` as ChangeLoop does, keeping the bytes.
template <typename Write>
void WriteLoop(benchmark::State& state, const Design& source, Write write) {
  std::vector<uint8_t> out;
  ChangeLoop(state, source, [&](Design& design) {
    write(design, out);
    benchmark::DoNotOptimize(out.data());
  });
  state.counters["bytes"] = static_cast<double>(out.size());
}

// Times `read` on what `write` makes of `source`, with the zero byte that
// ReadDesignFile adds; the design read keeps the source's name, as some
// readers need one.
template <typename Write, typename Read>
void ReadLoop(benchmark::State& state, const Design& source, Write write, Read read) {
  Design written = source;
  std::vector<uint8_t> bytes;
  write(written, bytes);
  bytes.push_back(0);
  for (auto _ : state) {
    Design design;
    design.name = source.name;
    read(design, bytes);
    benchmark::DoNotOptimize(design.stitches.Size());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(source.stitches.Size()));
}

}  // namespace fennick::bench
