// The save pipeline on the million-stitch design: a whole conversion (read the
// file, fit, split, write, save) DST to PES and PES to DST, and the fit and
// split alone at JEF's limits.
#include "bench/bench_support.h"
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "archive/file_operations.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "tools/sample_design.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

// A private folder for the files and the preferences that reading touches,
// removed when the program ends.
struct BenchFolderOwner {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("fennick-save-bench-" + std::to_string(getpid()));
  BenchFolderOwner() {
    std::filesystem::create_directories(path);
    setenv("XDG_CONFIG_HOME", (path / "config").c_str(), 1);
  }
  ~BenchFolderOwner() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
};

const std::filesystem::path& BenchFolder() {
  static const BenchFolderOwner owner;
  return owner.path;
}

// The large design written once in `extension`; returns its path.
std::string LargeFile(const std::string& extension) {
  const std::string path = (BenchFolder() / ("big." + extension)).string();
  if (!std::filesystem::exists(path)) {
    Design design = LargeSampleDesign(bench::kMillion);
    design.name = path;
    std::vector<uint8_t> bytes;
    WriteDesignFile(design, bytes, FormatFromExtension(extension));
    DesignPath target(path);
    WriteFileBlock(bytes, target, kWriteNoDialog);
  }
  return path;
}

void Convert(benchmark::State& state, const std::string& from, const std::string& to) {
  const std::string input = LargeFile(from);
  const std::string output = (BenchFolder() / ("out." + to)).string();
  ConversionSettings settings;
  ReadConversion(to, settings);
  // The design is 1.5 m square: a hoop that takes it lets the whole pipeline run.
  settings.hoopWidth = settings.hoopHeight = 1600;
  int files = 0;
  for (auto _ : state) {
    Design design;
    ReadDesignFile(design, input);
    design.name = output;
    files = SaveDesign(design, nullptr, 1, &settings);
    benchmark::DoNotOptimize(files);
  }
  state.counters["files"] = files;
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bench::kMillion));
}

void BM_SaveConvertDstToPes(benchmark::State& state) { Convert(state, "dst", "pes"); }
BENCHMARK(BM_SaveConvertDstToPes)->Unit(benchmark::kMillisecond);

void BM_SaveConvertPesToDst(benchmark::State& state) { Convert(state, "pes", "dst"); }
BENCHMARK(BM_SaveConvertPesToDst)->Unit(benchmark::kMillisecond);

void BM_SaveFitAndSplitAtJefLimits(benchmark::State& state) {
  const Design large = LargeSampleDesign(bench::kMillion);
  const ConversionSettings& jef = BuiltInConversion(kFormatJef);
  int pieces = 0;
  for (auto _ : state) {
    state.PauseTiming();
    Design design = large;
    state.ResumeTiming();
    FitDesignToHoop(design, jef);
    for (pieces = 1;; ++pieces) {
      Design rest = SplitDesign(design, jef.stitchLimit, jef.colorLimit);
      if (rest.stitches.Empty()) break;
      design = std::move(rest);
    }
    benchmark::DoNotOptimize(pieces);
  }
  state.counters["pieces"] = pieces;
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(bench::kMillion));
}
BENCHMARK(BM_SaveFitAndSplitAtJefLimits)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
