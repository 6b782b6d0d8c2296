// Packing and unpacking with the Gl engine: stitch streams as HUS and VIP
// files hold them, and English-like text, at 1 MB and 10 MB.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "archive/gl_engine.h"
#include "core/design.h"
#include "tools/sample_design.h"

namespace fennick {
namespace {

// The command, dx and dy bytes of the large sample design, one after another.
// Its tiles repeat exactly, which real designs never do, so each move gets a
// unit of jitter as a digitizer's hand would give it.
std::vector<uint8_t> StitchBytes(size_t size) {
  const Design design = LargeSampleDesign(size / 3 + 1);
  std::mt19937 random(7);
  std::vector<uint8_t> commands, xs, ys;
  for (const StitchNode& node : design.stitches) {
    commands.push_back(static_cast<uint8_t>(0x80 | (node.IsJump() ? 1 : 0) | (node.IsColorStop() ? 4 : 0)));
    xs.push_back(static_cast<uint8_t>(node.dx + static_cast<int>(random() % 3) - 1));
    ys.push_back(static_cast<uint8_t>(node.dy + static_cast<int>(random() % 3) - 1));
  }
  std::vector<uint8_t> bytes = commands;
  bytes.insert(bytes.end(), xs.begin(), xs.end());
  bytes.insert(bytes.end(), ys.begin(), ys.end());
  bytes.resize(size);
  return bytes;
}

// Words drawn with a skewed distribution from a fixed list, with punctuation.
std::vector<uint8_t> TextBytes(size_t size) {
  static const char* const kWords[] = {
      "the", "of", "and", "to", "in", "a", "is", "that", "for", "it", "as", "was", "with", "be", "by", "on", "not",
      "he", "this", "are", "or", "his", "from", "at", "which", "but", "have", "an", "had", "they", "you", "were",
      "thread", "needle", "hoop", "stitch", "satin", "colour", "design", "fabric", "machine", "pattern", "border"};
  constexpr size_t kWordCount = sizeof kWords / sizeof kWords[0];
  std::mt19937 random(42);
  std::geometric_distribution<size_t> pick(0.08);
  std::vector<uint8_t> bytes;
  size_t sentence = 0;
  while (bytes.size() < size) {
    const std::string word = kWords[pick(random) % kWordCount];
    bytes.insert(bytes.end(), word.begin(), word.end());
    if (++sentence % 12 == 0) bytes.push_back('.');
    bytes.push_back(sentence % 60 == 0 ? '\n' : ' ');
  }
  bytes.resize(size);
  return bytes;
}

std::vector<uint8_t> Data(bool text, size_t size) { return text ? TextBytes(size) : StitchBytes(size); }

// Arguments: 0 stitch data or 1 text, size in bytes, level.
void BM_GlCompress(benchmark::State& state) {
  const std::vector<uint8_t> input = Data(state.range(0) != 0, static_cast<size_t>(state.range(1)));
  std::vector<uint8_t> out;
  int usedLevel = 0;
  for (auto _ : state) {
    GlCompress(input, static_cast<int>(state.range(2)), false, out, usedLevel);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.size()));
  state.counters["ratio"] = static_cast<double>(out.size()) / static_cast<double>(input.size());
}

void BM_GlExpand(benchmark::State& state) {
  const std::vector<uint8_t> input = Data(state.range(0) != 0, static_cast<size_t>(state.range(1)));
  const int level = static_cast<int>(state.range(2));
  std::vector<uint8_t> packed, out;
  int usedLevel = 0;
  GlCompress(input, level, false, packed, usedLevel);
  for (auto _ : state) {
    GlExpand(packed, level, -1, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.size()));
}

void GlArguments(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"text", "bytes", "level"});
  for (const int64_t text : {0, 1}) {
    for (const int64_t size : {1'000'000, 10'000'000}) {
      for (const int64_t level : {0, 4}) bench->Args({text, size, level});
    }
  }
  bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_GlCompress)->Apply(GlArguments);
BENCHMARK(BM_GlExpand)->Apply(GlArguments);

}  // namespace
}  // namespace fennick
