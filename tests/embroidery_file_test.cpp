#include "core/embroidery_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "tests/test_support.h"

namespace fennick {
namespace {

// Expected blocks are spelled out field by field, little-endian.
struct Bytes {
  std::vector<uint8_t> v;
  Bytes& U32(uint32_t value) {
    for (int i = 0; i < 4; ++i) v.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return *this;
  }
  Bytes& Raw(std::initializer_list<uint8_t> bytes) {
    v.insert(v.end(), bytes);
    return *this;
  }
  Bytes& Raw(const std::vector<uint8_t>& bytes) {
    v.insert(v.end(), bytes.begin(), bytes.end());
    return *this;
  }
  // The text, then zeros up to `width` (at least one zero).
  Bytes& Text(const std::string& text, size_t width = 0) {
    v.insert(v.end(), text.begin(), text.end());
    v.insert(v.end(), std::max(width, text.size() + 1) - text.size(), 0);
    return *this;
  }
};

// `strings` are chart, brand, catalogNumber and description.
ThreadColor Thread(const std::string& colorName, const std::array<std::string, 4>& strings = {}, uint32_t rgb = 0,
                   int32_t chartIndex = 0, int32_t stitchCount = 0, int32_t threadLength = 0) {
  ThreadColor thread;
  thread.colorName = colorName, thread.rgb = rgb, thread.chartIndex = chartIndex;
  thread.chart = strings[0], thread.brand = strings[1], thread.catalogNumber = strings[2], thread.description = strings[3];
  thread.stitchCount = stitchCount, thread.threadLength = threadLength;
  return thread;
}

// Two colours, one pure stop, moves of both signs.
Design SmallDesign() {
  Design design;
  design.name = "rose.jef";
  design.formatVersion = 1;
  design.blobWord = 7;
  design.maxX = 25, design.maxY = 8, design.minX = -25, design.minY = -300;
  design.threads = {Thread("Scarlet", {"Madeira", "Rayon 40", "1147", "Scarlet"}, 0x112233, 5, 3, 7650),
                    Thread("White", {"", "", "", "White"}, 0xABCDEF, -1, 2, 7520)};
  design.threads[1].startX = 44;  // not part of the block
  test::SetNodes(design, {{-10, 5, 2}, {20, -3, 0}, {15, 0, 0}, {0, 0, 1}, {-5, 300, 0}, {0, -2, 0}});
  return design;
}

const std::string kSmallTrailer = "1ThreadColors\n07Madeira08Rayon 40041147" "07Scarlet\n000000" "05White\n";

std::vector<uint8_t> SmallDesignBlock() {
  return Bytes()
      .U32(102).U32(7).Text("rose.jef")  // JEF is code 2, plus 100 for version 1
      .U32(25).U32(8).U32(static_cast<uint32_t>(-25)).U32(static_cast<uint32_t>(-300))
      .U32(2)
      .U32(3).U32(7650).U32(0x112233).U32(5).Text("Scarlet", 30)
      .U32(2).U32(7520).U32(0xABCDEF).U32(0xFFFFFFFF).Text("White", 30)
      .U32(6)
      .Raw({2, 0xF6, 0xFF, 0x05, 0x00, 0, 0x14, 0x00, 0xFD, 0xFF, 0, 0x0F, 0, 0, 0})
      .Raw({1, 0, 0, 0, 0, 0, 0xFB, 0xFF, 0x2C, 0x01, 0, 0, 0, 0xFE, 0xFF})
      .Text(kSmallTrailer)
      .v;
}

// What a thread record and the trailer carry.
auto BlockFields(const ThreadColor& t) {
  return std::tuple(t.rgb, t.chartIndex, t.stitchCount, t.threadLength, t.colorName, t.chart, t.brand,
                    t.catalogNumber, t.description);
}

// Both words, an empty name and zero bounds: 25 bytes.
Bytes EmptyHeader() { return Bytes().U32(0).U32(0).Text("").U32(0).U32(0).U32(0).U32(0); }

// A block with `threads` empty records, no stitch and `text` as its trailer.
std::vector<uint8_t> TrailerBlock(uint32_t threads, const std::string& text) {
  Bytes block = EmptyHeader().U32(threads);
  for (uint32_t i = 0; i < threads; ++i) block.U32(0).U32(0).U32(0).U32(0).Text("", 30);
  return block.U32(0).Text(text).v;
}

TEST(EmbroideryFile, BuildsTheBlockLayoutAndParsingRefillsThreadsAndStitchesOnly) {
  Design original = SmallDesign();
  const GlobalHandle handle = BuildEmbroideryFile(original);
  EXPECT_EQ(GlobalCopyOut(handle), SmallDesignBlock());
  EXPECT_EQ(original.sourceFormat, 102);
  EXPECT_EQ(original.notes, kSmallTrailer);
  Design parsed;
  parsed.formatVersion = 9;
  parsed.hoopWidth = 130;
  parsed.threads.resize(5);
  parsed.stitches.PushBack(1, 1, 0);
  ParseEmbroideryFile(parsed, handle);
  // Neither building nor parsing keeps a lock.
  ASSERT_NE(GlobalLock(handle), nullptr);
  EXPECT_FALSE(GlobalUnlock(handle));
  EXPECT_EQ(GlobalFree(handle), 0u);

  EXPECT_EQ(parsed.name, "rose.jef");
  EXPECT_EQ(parsed.sourceFormat, 102);
  EXPECT_EQ(parsed.blobWord, 7);
  EXPECT_EQ((std::array{parsed.maxX, parsed.maxY, parsed.minX, parsed.minY}), (std::array{25, 8, -25, -300}));
  EXPECT_EQ(parsed.formatVersion, 9);
  EXPECT_EQ(parsed.hoopWidth, 130);
  EXPECT_EQ(parsed.notes, kSmallTrailer);
  EXPECT_EQ(test::Nodes(parsed), test::Nodes(original));
  ASSERT_EQ(parsed.threads.size(), 2u);
  EXPECT_EQ(BlockFields(parsed.threads[0]), BlockFields(original.threads[0]));
  EXPECT_EQ(BlockFields(parsed.threads[1]), BlockFields(original.threads[1]));
  EXPECT_EQ(parsed.threads[1].startX, 0);

  ParseEmbroideryFile(parsed, 0);  // a null handle leaves everything
  EXPECT_EQ(parsed.threads.size(), 2u);
}

TEST(EmbroideryFile, NotesSurviveOnlyWithoutThreads) {
  Design empty;
  EXPECT_TRUE(EncodeEmbroideryFile(empty).empty());
  EXPECT_EQ(BuildEmbroideryFile(empty), 0u);

  Design notesOnly;
  notesOnly.notes = "hoop 5x7";
  EXPECT_EQ(EncodeEmbroideryFile(notesOnly), TrailerBlock(0, "hoop 5x7"));

  Design withStitches = notesOnly;
  withStitches.stitches.PushBack(3, 4, 0);
  Design parsed;
  DecodeEmbroideryFile(parsed, EncodeEmbroideryFile(withStitches));
  EXPECT_EQ(parsed.notes, "hoop 5x7");
  EXPECT_EQ(parsed.stitches.Size(), 1u);

  Design withThreads = withStitches;
  withThreads.threads.push_back(Thread("Black"));
  DecodeEmbroideryFile(parsed, EncodeEmbroideryFile(withThreads));
  EXPECT_EQ(parsed.notes, "1ThreadColors\n00000000\n");
}

TEST(EmbroideryFile, MovesKeepTheirLow16BitsAndFlagsTheirLowBits) {
  // No thread, so normalizing leaves the nodes as they are.
  const std::vector<std::array<int32_t, 4>> cases = {
      // dx, flags written, dx read, flags read
      {70000, 0, 4464, 0}, {-40000, 2, 25536, 2}, {32768, 0x106, -32768, 2}, {65535, 1, -1, 1}, {-1, 0x103, -1, 3}};
  Design design;
  for (const auto& c : cases) design.stitches.PushBack(c[0], -c[0], static_cast<uint32_t>(c[1]));
  Design parsed;
  DecodeEmbroideryFile(parsed, EncodeEmbroideryFile(design));
  std::vector<test::Node> expected;
  for (const auto& c : cases) {
    expected.emplace_back(c[2], static_cast<int16_t>(-c[0]), static_cast<uint32_t>(c[3]));
  }
  EXPECT_EQ(test::Nodes(parsed), expected);
}

TEST(EmbroideryFile, SourceFormatComesFromExtensionAndVersion) {
  const std::vector<std::tuple<std::string, int32_t, int32_t>> cases = {
      {"rose.pes", 6, 600}, {"/home/a/rose.DST", 0, 5},          {"rose.Phd", 1, 114},
      {"rose.abc", 2, 200}, {"rose", 0, 0},                      {"Zip:/d/set.zip:rose.exp\tCARD", 0, 7},
      {"rose.txt", -1, -84}};
  for (const auto& [name, version, expected] : cases) {
    Design design;
    design.name = name;
    design.formatVersion = version;
    design.notes = "x";
    const std::vector<uint8_t> block = EncodeEmbroideryFile(design);
    EXPECT_EQ(design.sourceFormat, expected) << name;
    EXPECT_EQ(std::vector<uint8_t>(block.begin(), block.begin() + 4), Bytes().U32(static_cast<uint32_t>(expected)).v);
  }
}

TEST(EmbroideryFile, TrailerDecodingStaysInsideTheText) {
  using Strings = std::array<std::string, 4>;
  const std::vector<std::tuple<std::string, Strings, Strings>> cases = {
      {"1ThreadColors\n02ab03cde01f00\n01x0002yz01w", {"ab", "cde", "f", ""}, {"x", "", "yz", "w"}},
      {"1threadColors\n02ab03cde01f00\n01x0002yz01w", {}, {}},
      {"1ThreadColors", {}, {}},
      {"1ThreadColors\n 2ab-1x", {"ab", "", "", ""}, {}},
      {"1ThreadColors\n02ab+1c09xyz", {"ab", "c", "xyz", ""}, {}},
      {"1ThreadColors\nx2ab", {"", "", "", ""}, {"", "", "", ""}},
      {"1ThreadColors\n00000000", {"", "", "", ""}, {}},
  };
  for (const auto& [text, first, second] : cases) {
    Design parsed;
    DecodeEmbroideryFile(parsed, TrailerBlock(2, text));
    ASSERT_EQ(parsed.threads.size(), 2u) << text;
    EXPECT_EQ(parsed.notes, text);
    for (size_t i = 0; i < 2; ++i) {
      const ThreadColor& got = parsed.threads[i];
      EXPECT_EQ((Strings{got.chart, got.brand, got.catalogNumber, got.description}), i == 0 ? first : second)
          << text << " thread " << i;
    }
  }
}

TEST(EmbroideryFile, AHundredCharacterStringSpoilsTheTrailerFromThere) {
  Design design = SmallDesign();
  design.threads[0].description = std::string(120, 'd');
  const std::vector<uint8_t> block = EncodeEmbroideryFile(design);
  EXPECT_NE(design.notes.find("041147120" + std::string(120, 'd') + "\n"), std::string::npos);
  Design parsed;
  DecodeEmbroideryFile(parsed, block);
  ASSERT_EQ(parsed.threads.size(), 2u);
  EXPECT_EQ(parsed.threads[0].catalogNumber, "1147");
  // "12" is read as the length, so the field starts at the "0".
  EXPECT_EQ(parsed.threads[0].description, "0" + std::string(11, 'd'));
}

TEST(EmbroideryFile, ShortBlocksAndLongCountsStopAtTheFirstFieldThatDoesNotFit) {
  const std::vector<uint8_t> block = SmallDesignBlock();
  const size_t threadsEnd = 8 + 9 + 16 + 4 + 2 * 46;
  const size_t stitchesEnd = threadsEnd + 4 + 6 * 5;
  for (size_t length = 0; length <= block.size(); ++length) {
    Design parsed;
    DecodeEmbroideryFile(parsed, std::span(block).first(length));
    EXPECT_EQ(parsed.threads.size(), length >= threadsEnd ? 2u : 0u) << length;
    EXPECT_EQ(parsed.stitches.Size(), length >= stitchesEnd ? 6u : 0u) << length;
    EXPECT_EQ(parsed.notes, length > stitchesEnd + 1 ? kSmallTrailer.substr(0, length - stitchesEnd) : "") << length;
  }
  // Counts beyond the block are refused; 5 * 0x33333334 wraps to 4 in 32 bits.
  for (uint32_t stitches : {0xFFFFFFFFu, 0x33333334u, 7u}) {
    Design parsed;
    DecodeEmbroideryFile(parsed, EmptyHeader().U32(0).U32(stitches).Raw({0, 1, 0, 1, 0, 0, 0, 0, 0, 0}).v);
    EXPECT_EQ(parsed.stitches.Size(), 0u) << stitches;
  }
  Design parsed;
  DecodeEmbroideryFile(parsed, EmptyHeader().U32(0xFFFFFFFF).U32(0).Text("1ThreadColors\n").v);
  EXPECT_TRUE(parsed.threads.empty());
  EXPECT_EQ(parsed.notes, "");
}

}  // namespace
}  // namespace fennick
