// Batch conversion of 200 designs of about 3,000 stitches, DST to PES: the
// whole `fennick convert --to pes IN --out OUT` process on every core, and for
// comparison the same reads and saves one after another in this process.
#include <benchmark/benchmark.h>

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

namespace fs = std::filesystem;

constexpr int kDesigns = 200;
constexpr size_t kStitches = 3000;

// The 200 input files in a private folder, with private preferences, made once
// and removed when the program ends.
struct BatchFolder {
  fs::path path = fs::temp_directory_path() / ("fennick-batch-bench-" + std::to_string(getpid()));
  BatchFolder() {
    fs::create_directories(path / "in");
    setenv("XDG_CONFIG_HOME", (path / "config").c_str(), 1);
    const Design design = LargeSampleDesign(kStitches);
    for (int i = 0; i < kDesigns; ++i) {
      Design copy = design;
      copy.name = (path / "in" / ("design" + std::to_string(i) + ".dst")).string();
      std::vector<uint8_t> bytes;
      WriteDesignFile(copy, bytes, kFormatDst);
      DesignPath target(copy.name);
      WriteFileBlock(bytes, target, kWriteNoDialog);
    }
  }
  ~BatchFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
};

const fs::path& Folder() {
  static const BatchFolder folder;
  return folder.path;
}

// The fennick program is built beside this one.
std::string FennickProgram() { return (fs::read_symlink("/proc/self/exe").parent_path() / "fennick").string(); }

void BM_BatchConvertProcess(benchmark::State& state) {
  const fs::path& folder = Folder();
  // Appended piece by piece: GCC 12 warns falsely on a chain of + here.
  std::string command = "'";
  command += FennickProgram();
  command += "' convert --to pes '";
  command += (folder / "in").string();
  command += "' --out '";
  command += (folder / "out").string();
  command += "' >/dev/null";
  for (auto _ : state) {
    state.PauseTiming();
    fs::remove_all(folder / "out");
    state.ResumeTiming();
    if (std::system(command.c_str()) != 0) state.SkipWithError("fennick convert failed");
  }
  state.SetItemsProcessed(state.iterations() * kDesigns);
}
BENCHMARK(BM_BatchConvertProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BatchSerialInProcess(benchmark::State& state) {
  const fs::path& folder = Folder();
  ConversionSettings settings;
  ReadConversion("pes", settings);
  for (auto _ : state) {
    state.PauseTiming();
    fs::remove_all(folder / "serial");
    fs::create_directories(folder / "serial");
    state.ResumeTiming();
    for (int i = 0; i < kDesigns; ++i) {
      const std::string stem = "design" + std::to_string(i);
      Design design;
      ReadDesignFile(design, (folder / "in" / (stem + ".dst")).string(), LastFile::kLeave);
      design.name = (folder / "serial" / (stem + ".pes")).string();
      benchmark::DoNotOptimize(SaveDesign(design, nullptr, 0, &settings));
    }
  }
  state.SetItemsProcessed(state.iterations() * kDesigns);
}
BENCHMARK(BM_BatchSerialInProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace fennick
