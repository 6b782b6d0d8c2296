// Every input that once broke a reader or parser, kept under data/crash with a
// name saying what it broke; the extension picks the way in: a design format's
// reader, .blk the block form, .list the multi-design payload, .gl the Gl
// expander, .zip the ZIP directory and extraction, .reg the preference file,
// .moves a design written and read back (fuzz/moves_design.h).
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "archive/al_pk_archive.h"
#include "archive/gl_engine.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "fuzz/moves_design.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

// What a reader leaves must survive the passes every command runs first.
void ExpectUsable(Design& design, const std::string& file) {
  if (design.stitches.Empty()) return;
  EXPECT_LE(design.minX, design.maxX) << file;
  EXPECT_LE(design.minY, design.maxY) << file;
  design.ComputeThreadStats();
  if (design.NormalizeColorStops() == 0) {
    EXPECT_EQ(design.threads.size(), test::CountStops(design) + 1) << file;
  }
  EncodeEmbroideryFile(design);
}

// A writer may refuse the design; what it does write reads back with a
// thread for every stop plus one.
void ExpectRoundTrip(std::span<const uint8_t> input, const std::string& file, const test::ScratchFolder& scratch) {
  Design design;
  if (!fuzz::DesignFromMoves(input, design)) return;
  const int code = fuzz::MovesFormat(input);
  std::vector<uint8_t> written;
  if (WriteDesignFile(design, written, code) == 0) return;
  written.push_back(0);
  const FormatEntry* format = FindFormat(code);
  Design back;
  back.name = scratch.File("back." + AsciiLower(format->extension));
  ASSERT_TRUE(format->read(back, written)) << file;
  EXPECT_GE(back.threads.size(), test::CountStops(back) + 1) << file;
}

void Replay(const fs::path& file, const test::ScratchFolder& scratch) {
  const std::string name = file.filename().string();
  const std::string extension = AsciiLower(file.extension().string().substr(1));
  std::vector<uint8_t> bytes;
  ASSERT_EQ(ReadWholeFile(file.string(), bytes), FileRead::kOk) << name;

  if (extension == "blk") {
    Design design;
    DecodeEmbroideryFile(design, bytes);
    ExpectUsable(design, name);
  } else if (extension == "moves") {
    ExpectRoundTrip(bytes, name, scratch);
  } else if (extension == "list") {
    for (Design& design : DecodeDesignList(bytes)) ExpectUsable(design, name);
  } else if (extension == "gl") {
    std::vector<uint8_t> output;
    for (int level = kGlMinLevel; level <= kGlMaxLevel; ++level) {
      GlExpand(bytes, level, -1, output, size_t{1} << 22);
      EXPECT_LE(output.size(), size_t{1} << 22) << name;
    }
  } else if (extension == "zip") {
    ALPkArchive archive(file.string());
    ALEntryList list;
    if (archive.ReadDirectory(list) > 0) archive.Extract(list);
  } else if (extension == "reg") {
    const PreferenceStore store;
    fs::create_directories(store.FilePath().parent_path());
    WriteFileAtomic(store.FilePath().string(), bytes);
    for (const PreferenceValue& value : store.Values("Settings")) store.GetString("Settings", value.name, "");
    store.SetInt("Settings", "After", 7);
    EXPECT_EQ(store.GetInt("Settings", "After", 0), 7) << name;
  } else {
    const FormatEntry* format = FindFormat(FormatFromExtension(extension));
    ASSERT_TRUE(format != nullptr && format->read != nullptr) << name << ": no reader for its extension";
    Design design;
    design.name = scratch.File(name);
    bytes.push_back(0);
    if (format->read(design, bytes)) ExpectUsable(design, name);
  }
}

TEST(CrashRegression, EveryKeptInputReadsCleanly) {
  const fs::path folder = fs::path(FENNICK_TEST_DATA) / "crash";
  if (!fs::is_directory(folder)) GTEST_SKIP() << "no input has broken anything yet";
  size_t count = 0;
  for (const auto& item : fs::directory_iterator(folder)) {
    if (!item.is_regular_file()) continue;
    test::ScratchFolder scratch;
    Replay(item.path(), scratch);
    ++count;
  }
  if (count == 0) GTEST_SKIP() << "no input has broken anything yet";
}

}  // namespace
}  // namespace fennick
