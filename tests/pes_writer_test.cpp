#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>

#include "core/format_table.h"
#include "formats/pec.h"
#include "formats/pes.h"
#include "formats/pes_labels.h"
#include "threads/palettes.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kBlack = ColorRef(0, 0, 0);
constexpr uint32_t kWhite = ColorRef(255, 255, 255);

struct Builder {
  Bytes bytes;
  Builder& Text(const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    return *this;
  }
  Builder& Word(int value) {
    bytes.push_back(static_cast<uint8_t>(value));
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    return *this;
  }
  Builder& Words(std::initializer_list<int> values) {
    for (const int value : values) Word(value);
    return *this;
  }
  Builder& Zeros(size_t count) {
    bytes.insert(bytes.end(), count, 0);
    return *this;
  }
  Builder& Float(float value) {
    const uint32_t bits = std::bit_cast<uint32_t>(value);
    return Word(static_cast<int>(bits & 0xFFFF)).Word(static_cast<int>(bits >> 16));
  }
};

// One stitch across a box of w by h, in black.
Design Box(int32_t w, int32_t h) { return test::DesignOf({{0, 0, 0}, {w, h, 0}}, {kBlack}); }

Bytes Write(Design& design, bool pes5) {
  Bytes out;
  EXPECT_EQ(WritePesFile(design, out, {pes5, false, false}), 0);
  return out;
}

bool StartsWith(const Bytes& bytes, const Bytes& prefix) {
  return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

uint32_t PecOffset(const Bytes& file) { return file[8] | file[9] << 8 | file[10] << 16 | uint32_t{file[11]} << 24; }

uint8_t Palette(uint32_t rgb, bool extended) {
  return static_cast<uint8_t>(PecNearestColor(static_cast<uint8_t>(rgb), static_cast<uint8_t>(rgb >> 8),
                                              static_cast<uint8_t>(rgb >> 16), false, extended));
}

// The header up to its object block (plain) or thread records (real colour),
// PEC offset left 0.
TEST(PesWriter, HeadersByHoopOnBothPaths) {
  auto version2 = Builder().Text("#PES0020").Zeros(4).Words({180, 130, 1, 7, 19}).Zeros(6).Words({25, 1, 0, 1});
  auto version4 = [](int w, int h) {
    return Builder().Text("#PES0040").Zeros(4).Word(1).Text("01").Zeros(5).Words({0, w, h, w > h, 7, 19}).Zeros(6)
        .Words({25, 1}).Zeros(6).Word(1).bytes;
  };
  auto real = [](const char* signature, const char* code, int w, int h) {
    Builder b;
    b.Text(signature).Zeros(4).Word(1).Text(code).Zeros(5).Word(0);
    const bool six = std::string(signature) == "#PES0060";
    if (six) b.Word(0);
    b.Words({w, h, 0});
    if (six) b.Words({230, 330, w, h, 100});
    return b.Words({7, 19, 0, 0, 0, 25, 1, 0, 0, 0x8000, 0x3F, 0, 0, 0, 0, 0x8000, 0x3F}).Zeros(13).bytes;
  };
  const struct {
    int32_t w, h;
    bool pes5;
    Bytes header;
  } cases[] = {
      {1000, 1000, false, Builder().Text("#PES0001").Zeros(4).Words({0, 1, 1}).bytes},
      {1300, 1800, false, Builder().Text("#PES0001").Zeros(4).Words({1, 1, 1}).bytes},
      {1800, 1300, false, version2.bytes},
      {1600, 2600, false, version4(160, 260)},
      {1301, 1801, false, version4(160, 260)},
      {2600, 1600, false, version4(260, 160)},
      {3000, 3000, false, version4(260, 160)},  // fits no hoop: still written, turned
      {1000, 1000, true, real("#PES0050", "01", 100, 100)}, {1300, 1800, true, real("#PES0050", "01", 130, 180)},
      {1800, 1300, true, real("#PES0050", "01", 180, 130)}, {1600, 2600, true, real("#PES0050", "01", 160, 260)},
      {2600, 1600, true, real("#PES0050", "01", 260, 160)}, {1800, 3000, true, real("#PES0060", "02", 180, 300)},
      {3000, 1800, true, real("#PES0060", "02", 300, 180)}, {3000, 2000, true, real("#PES0055", "10", 300, 200)},
      {3001, 3001, true, real("#PES0055", "10", 200, 300)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.w) + " by " + std::to_string(c.h) + (c.pes5 ? ", pes5" : ", plain"));
    Design design = Box(c.w, c.h);
    Bytes file = Write(design, c.pes5);
    ASSERT_GT(file.size(), c.header.size() + 86);
    std::fill_n(file.begin() + 8, 4, 0);
    EXPECT_TRUE(StartsWith(file, c.header));
    const auto after = file.begin() + static_cast<ptrdiff_t>(c.header.size());
    if (c.pes5) {
      EXPECT_EQ(*after, 1);  // one thread record
    } else {
      EXPECT_EQ(std::string(after + 6, after + 13), "CEmbOne");
    }
  }
}

// Two colours: a stitch right, a stop, a stitch up. Bounds 100 by 50.
Design TwoColors() {
  return test::DesignOf({{0, 0, 0}, {100, 0, 0}, {0, 0, STITCH_COLORSTOP}, {0, 50, 0}}, {kBlack, kWhite});
}

Bytes ObjectBlock(bool withBox, float floatX, float floatY, int offsetX, int offsetY, int segs) {
  Builder b;
  b.Words({0xFFFF, 0, 7}).Text("CEmbOne");
  for (int copy = 0; copy < 2; ++copy) {
    if (withBox) b.Words({950, 975, 1050, 1025});
    else b.Zeros(8);
  }
  b.Float(1).Float(0).Float(0).Float(1).Float(floatX).Float(floatY);
  b.Words({1, offsetX, offsetY, 100, 50}).Zeros(8).Words({segs, 0xFFFF, 0, 7}).Text("CSewSeg");
  return b.bytes;
}

TEST(PesWriter, PlainObjectBlockSegmentsAndColorTable) {
  Design design = TwoColors();
  const Bytes file = Write(design, false);
  // Centred through the first node: (-50, -25). x0 = -50 - 50, y0 = -25 + 25.
  const uint8_t black = Palette(kBlack, false), white = Palette(kWhite, false);
  Builder expected;
  expected.bytes = ObjectBlock(true, 900.0f, 1000.0f, 50, 25, 2);
  expected.Words({0, black, 2, 0, 0, 100, 0});  // stitches from (0, 0)
  expected.Words({0x8003, 0, white, 3, 100, 0, 100, 0, 100, -50});  // the stop opens a segment
  expected.Words({2, 0, black, 1, white, 0, 0});
  ASSERT_GE(file.size(), 18 + expected.bytes.size());
  EXPECT_EQ(Bytes(file.begin() + 18, file.begin() + 18 + static_cast<ptrdiff_t>(expected.bytes.size())),
            expected.bytes);
  const uint32_t pec = PecOffset(file);
  EXPECT_EQ(pec, 18 + expected.bytes.size());
  EXPECT_EQ(std::string(file.begin() + pec, file.begin() + pec + 3), "LA:");
  EXPECT_EQ(file[pec + 31], 0x20);
}

TEST(PesWriter, RealColorObjectBlockSegmentsAndColorTable) {
  Design design = TwoColors();
  const Bytes file = Write(design, true);
  // The stop becomes a jump; the first node, a jump from the box's corner,
  // stands at (0, -50): x0 = 0 - 50, y0 = -50 + 25.
  const Bytes object = ObjectBlock(false, 950.0f, 1025.0f, 0, 0, 4);
  const auto at = std::search(file.begin(), file.end(), object.begin(), object.end());
  ASSERT_NE(at, file.end());
  Builder expected;
  expected.Words({1, 0, 1, 0, 0});                                   // the jump from the corner
  expected.Words({0x8003, 0, 0, 2, 0, 0, 100, 0});                   // stitches
  expected.Words({0x8003, 1, 1, 2, 100, 0, 100, 0});                 // the change, a jump
  expected.Words({0x8003, 0, 1, 2, 100, 0, 100, -50});               // the second colour
  expected.Words({2, 0, 0, 3, 1}).Zeros(12);                          // counter runs one ahead
  expected.bytes.push_back(0);
  expected.Zeros(7);
  expected.bytes.push_back(1);
  expected.Zeros(3);
  const auto segments = at + static_cast<ptrdiff_t>(object.size());
  ASSERT_GE(file.end() - segments, static_cast<ptrdiff_t>(expected.bytes.size()));
  EXPECT_EQ(Bytes(segments, segments + static_cast<ptrdiff_t>(expected.bytes.size())), expected.bytes);
  const uint32_t pec = PecOffset(file);
  EXPECT_EQ(file.begin() + pec, segments + static_cast<ptrdiff_t>(expected.bytes.size()));
  EXPECT_EQ(file[pec + 31], 0xFF);

  // An empty colour block: each change becomes a jump of its own, the second
  // behind a zero stitch, and the last colour starts where the counter says.
  Design empty = test::DesignOf({{0, 0, 0}, {100, 0, 0}, {0, 0, STITCH_COLORSTOP}, {0, 0, STITCH_COLORSTOP}, {0, 50, 0},
                                 {0, 0, STITCH_COLORSTOP}, {-100, 0, 0}},
                                {kBlack, kWhite, ColorRef(237, 23, 31), ColorRef(10, 85, 163)});
  const Bytes withEmpty = Write(empty, true);
  Builder segmentsAndTable;
  segmentsAndTable.bytes = ObjectBlock(false, 950.0f, 1025.0f, 0, 0, 8);
  segmentsAndTable.Words({1, 0, 1, 0, 0, 0x8003, 0, 0, 2, 0, 0, 100, 0});
  segmentsAndTable.Words({0x8003, 1, 1, 2, 100, 0, 100, 0, 0x8003, 0, 1, 2, 100, 0, 100, 0});  // change, zero stitch
  segmentsAndTable.Words({0x8003, 1, 2, 2, 100, 0, 100, 0, 0x8003, 0, 2, 2, 100, 0, 100, -50});
  segmentsAndTable.Words({0x8003, 1, 3, 2, 100, -50, 100, -50, 0x8003, 0, 3, 2, 100, -50, 0, -50});
  segmentsAndTable.Words({4, 0, 0, 3, 1, 5, 2, 7, 3}).Zeros(12);
  for (const uint8_t i : {0, 1, 2}) segmentsAndTable.Word(i).Zeros(6);
  segmentsAndTable.Word(3).Zeros(2);
  const Bytes& wanted = segmentsAndTable.bytes;
  const uint32_t emptyPec = PecOffset(withEmpty);
  ASSERT_TRUE(emptyPec >= wanted.size() && emptyPec + 560 < withEmpty.size());
  EXPECT_EQ(Bytes(withEmpty.begin() + emptyPec - static_cast<ptrdiff_t>(wanted.size()), withEmpty.begin() + emptyPec),
            wanted);
  // From the corner: a jump (0, -50), then (100, 0), a change, the zero
  // stitch, a change, (0, 50), a change, (-100, 0) and the end mark.
  const Bytes stream = {0xA0, 0x00, 0xA0, 0x32, 0x80, 0x64, 0x00, 0xFE, 0xB0, 0x02, 0x00, 0x00, 0xFE,
                        0xB0, 0x01, 0x00, 0x4E, 0xFE, 0xB0, 0x02, 0x8F, 0x9C, 0x00, 0xFF};
  EXPECT_EQ(Bytes(withEmpty.begin() + emptyPec + 528, withEmpty.begin() + emptyPec + 528 + 24), stream);
}

// The edges of a w by h box (both whole hundreds) in stitches of 100.
Design Frame(int32_t w, int32_t h) {
  std::vector<test::Node> nodes{{0, 0, 0}};
  for (const auto& [dx, dy, steps] : {std::tuple{100, 0, w}, {0, 100, h}, {-100, 0, w}, {0, -100, h}}) {
    for (int32_t i = 0; i < steps / 100; ++i) nodes.emplace_back(dx, dy, 0);
  }
  return test::DesignOf(nodes, {kBlack});
}

// The stitches of a design turned to fit the hoop come back upright. (Designs
// that fit unturned are held to their bytes by the sample conversions.)
TEST(PesWriter, DesignsTurnedForTheHoopReadBackUpright) {
  for (const auto& [w, h] : {std::pair{1700, 1200}, {2500, 1500}, {2900, 1800}}) {
    for (const bool pes5 : {false, true}) {
      SCOPED_TRACE(std::to_string(w) + (pes5 ? ", pes5" : ", plain"));
      Design written = Frame(w, h);
      Design read;
      ASSERT_TRUE(ReadPesFile(read, test::AsReaderInput(Write(written, pes5))));
      EXPECT_NE(read.hoopRotation, 0);
      EXPECT_EQ(test::FromFirst(test::NeedlePath(read)), test::FromFirst(test::NeedlePath(Frame(w, h))));
    }
  }
}

// The first byte of the composite follows the stitches' end mark, and readers
// that stop only at FF 00 read on unless it is 0: no picture uses row 0.
TEST(PesWriter, RealSamplesLeaveTheFirstThumbnailRowClear) {
  size_t samples = 0;
  for (const auto& entry : std::filesystem::directory_iterator(FENNICK_TEST_DATA)) {
    const std::string name = entry.path().filename().string(), extension = entry.path().extension().string();
    const FormatEntry* format = FindFormat(FormatFromExtension(extension.empty() ? "" : extension.substr(1)));
    if (!entry.is_regular_file() || format == nullptr || format->read == nullptr) continue;
    ++samples;
    // Turned half round, a design's first stitches lie near the top, where a
    // line from the corner runs flat along row 0.
    for (const int quarters : {0, 2}) {
      for (const bool pes5 : {false, true}) {
        SCOPED_TRACE(name + (quarters != 0 ? " turned" : "") + (pes5 ? ", pes5" : ", plain"));
        Design design;
        ASSERT_TRUE(test::ReadSample(format->read, design, name));
        for (int i = 0; i < quarters; ++i) design.RotateQuarter(1);
        design.ComputeBounds();
        const Bytes file = Write(design, pes5);
        const uint32_t pec = PecOffset(file);
        ASSERT_LT(pec + 528u, file.size());
        const uint32_t length = file[pec + 514] | file[pec + 515] << 8 | file[pec + 516] << 16;
        ASSERT_EQ(file.at(pec + 511 + length), 0xFF);
        for (size_t image = 0; image < file[pec + 48] + 2u; ++image) {
          const auto row = file.begin() + pec + 512 + length + 228 * static_cast<ptrdiff_t>(image);
          ASSERT_LE(row + 6, file.end());
          EXPECT_EQ(Bytes(row, row + 6), Bytes(6, 0)) << "image " << image;
        }
      }
    }
  }
  EXPECT_GT(samples, 20u);
}

TEST(PesWriter, NothingWithoutColoursAndFailureWithoutStitches) {
  Design noColors = test::DesignOf({{0, 0, 0}, {10, 10, 0}});
  Bytes out{1};
  EXPECT_EQ(WritePesFile(noColors, out, {}), 0);
  EXPECT_TRUE(out.empty());
  Design empty = test::DesignOf({}, {kBlack});
  EXPECT_EQ(WritePesFile(empty, out, {true, false, false}), -1);
}

// The PEC colour count is one byte holding the count less one.
TEST(PesWriter, AsManyColoursAsTheCountByteHoldsAndNoMore) {
  for (const bool pes5 : {false, true}) {
    SCOPED_TRACE(pes5 ? "pes5" : "plain");
    Design tooMany = test::StitchPerColour(test::CountingColours(257));
    Bytes out;
    EXPECT_EQ(WritePesFile(tooMany, out, {pes5, false, false}), -1);
    EXPECT_TRUE(out.empty());

    Design most = test::StitchPerColour(test::CountingColours(256));
    const Bytes file = Write(most, pes5);
    Design read;
    ASSERT_TRUE(ReadPesFile(read, test::AsReaderInput(file)));
    EXPECT_EQ(read.threads.size(), 256u);
  }
}

TEST(PesHeaderThreadsWriter, BrandsAppliqueAndSharedRecords) {
  auto thread = [](uint32_t rgb, int32_t chartIndex, const char* brand = "", const char* description = "") {
    ThreadColor t;
    t.rgb = rgb, t.chartIndex = chartIndex, t.brand = brand, t.description = description;
    return t;
  };
  Design design;
  design.formatVersion = 1;
  uint8_t r, g, b;
  const ThreadColor palette = thread(PecColorRgb(5, r, g, b), 5);  // a version 1 thread: palette index, no brand
  ThreadColor applique = thread(ColorRef(1, 2, 3), 0);
  applique.colorName = "Applique Pos.";
  // The branded thread keeps its own colour under a chart brand. Country
  // threads keep the palette position a reader names them by: the description
  // of a read record, or the code of the nearest chart entry. (231, 2, 104) is
  // Country "Red"; the nearest palette colour is Dark Fuschia, 51.
  design.threads = {palette, applique, palette, thread(ColorRef(1, 2, 4), 0x1100, "Sulky Rayon"),
                    thread(ColorRef(231, 2, 104), 0x200, "Country", "5"), thread(ColorRef(230, 5, 100), 0x200)};
  EXPECT_EQ(BuildHeaderThreads(design), (std::vector<int>{0, 1, 0, 2, 3, 3}));
  for (size_t i = 4; i < 6; ++i) {
    const ThreadColor& country = design.threads[i];
    EXPECT_EQ(std::tie(country.description, country.catalogNumber, country.brand, country.rgb, country.threadKind),
              std::make_tuple("5", PecStandardNumber(5), "COUNTRY", ColorRef(231, 2, 104), 11))
        << i;
  }
  using Record = std::tuple<std::string, std::string, std::string, uint32_t, int32_t>;  // brand, description, number
  std::vector<Record> records;
  for (const ThreadColor& t : design.fileThreads) records.emplace_back(t.brand, t.description, t.catalogNumber, t.rgb, t.threadKind);
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[0], Record("EMBROIDERY", "5", PecStandardNumber(5), palette.rgb, 10));
  EXPECT_EQ(std::get<2>(records[1]), "101");
  EXPECT_EQ(std::get<0>(records[1]), "");
  EXPECT_EQ(records[2], Record("SU Rayon", "", "", ColorRef(1, 2, 4), 1));
}

TEST(PesLabels, NumberOverLogoOrAppliquePicture) {
  auto rows = [](const std::array<uint8_t, kPesLabelSize>& label, int first, int last) {
    return std::any_of(label.begin() + 6 * first, label.begin() + 6 * (last + 1), [](uint8_t v) { return v != 0; });
  };
  ThreadColor thread;
  thread.catalogNumber = "123456";
  thread.brand = "EMBROIDERY";
  const auto label = DrawPesLabel(thread);
  EXPECT_FALSE(rows(label, 0, 1));
  EXPECT_TRUE(rows(label, 2, 10));
  EXPECT_TRUE(rows(label, 11, 23));
  thread.brand = "option color";
  EXPECT_EQ(DrawPesLabel(thread), label);  // the same logo, in any case
  thread.brand = "Flesh Tone(EMBROIDERY)";
  EXPECT_FALSE(rows(DrawPesLabel(thread), 11, 23));  // no logo of its own
  thread.catalogNumber = "";
  thread.brand = "";
  EXPECT_FALSE(rows(DrawPesLabel(thread), 0, 23));
  thread.catalogNumber = "100";
  const auto material = DrawPesLabel(thread);
  thread.catalogNumber = "101";
  EXPECT_TRUE(rows(material, 2, 23));
  EXPECT_NE(DrawPesLabel(thread), material);
}

}  // namespace
}  // namespace fennick
