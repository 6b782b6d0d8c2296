#include "formats/pcs.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Rgb = std::array<uint8_t, 3>;
constexpr std::array<Rgb, 16> kDefaultTable{{{0, 0, 0}, {0, 0, 128}, {0, 0, 255}, {0, 128, 128}, {0, 255, 255},
                                             {128, 0, 128}, {255, 0, 255}, {128, 0, 0}, {255, 0, 0}, {0, 128, 0},
                                             {0, 255, 0}, {128, 128, 0}, {255, 255, 0}, {128, 128, 128},
                                             {192, 192, 192}, {255, 255, 255}}};

// Header with the given table, the 16-bit record count, then the records.
struct PcsFile {
  std::vector<uint8_t> bytes;
  PcsFile(uint8_t hoop, const std::array<Rgb, 16>& table, uint16_t count) {
    bytes = {0x32, hoop, 16, 0};
    for (const Rgb& c : table) bytes.insert(bytes.end(), {c[0], c[1], c[2], 0});
    bytes.push_back(static_cast<uint8_t>(count));
    bytes.push_back(static_cast<uint8_t>(count >> 8));
  }
  PcsFile& Position(int32_t x, int32_t y, uint8_t flag = 0) {
    ByteWriter(bytes).S32LE(x);
    ByteWriter(bytes).S32LE(y);
    bytes.push_back(flag);
    return *this;
  }
  PcsFile& Color(uint8_t index) {
    bytes.insert(bytes.end(), {index, 0, 0, 0, 0, 0, 0, 0, 3});
    return *this;
  }
};

// A position in file units (153.5 to a stitch unit), rounded up so that it
// reads back as `stitchUnits`.
constexpr int32_t U(int32_t stitchUnits) { return (stitchUnits * 1535 + 9) / 10; }

TEST(PcsWriter, GoldenBytes) {
  Design design = test::DesignOf({{10, 0, 0}, {0, 2, 0}, {0, 0, STITCH_COLORSTOP}, {-3, -1, 0}},
                                 {ColorRef(10, 20, 30), ColorRef(40, 50, 60)});
  design.ComputeBounds();
  std::vector<uint8_t> out;
  ASSERT_EQ(WritePcs(design, out), 0);

  PcsFile expected(2, kDefaultTable, 4);
  std::copy_n(std::array<uint8_t, 8>{10, 20, 30, 0, 40, 50, 60, 0}.begin(), 8, expected.bytes.begin() + 4);
  // From (61400, 61400), each position cut from the sum of the moves: 10
  // units are 1535, 2 are 307, 7 and 1 are 1074.5 and 153.5, cut to 1074 and
  // 153. The first and last positions carry the flag 4.
  expected.Color(0).Position(62935, 61400, 4).Position(62935, 61707).Color(1).Position(62935, 61707);
  expected.Position(62474, 61553, 4);
  expected.bytes.resize(9 * (2 + 4 + 8));  // the unused end stays zero
  EXPECT_EQ(out, expected.bytes);
  EXPECT_EQ(test::Nodes(design).front(), test::Node(10, 0, STITCH_COLORSTOP));
  EXPECT_EQ(test::Nodes(design).back(), test::Node(-3, -1, STITCH_JUMP));
}

TEST(PcsWriter, HoopCodeAndStartFollowTheBounds) {
  struct Case {
    int32_t width, height;
    uint8_t hoop;
    int32_t startX, startY;
  } cases[] = {{800, 800, 2, 61400, 61400}, {801, 10, 3, 92100, 88262}, {10, 801, 3, 92100, 88262}};
  for (const Case& c : cases) {
    Design design = test::DesignOf({{0, 0, 0}, {c.width, c.height, 0}}, {0});
    design.ComputeBounds();
    std::vector<uint8_t> out;
    ASSERT_EQ(WritePcs(design, out), 0);
    EXPECT_EQ(out[1], c.hoop) << c.width << "x" << c.height;
    ByteReader reader(out, 70 + 9);  // behind the colour record
    EXPECT_EQ(reader.S32LE(), c.startX);
    EXPECT_EQ(reader.S32LE(), c.startY);
  }
}

TEST(PcsWriter, RefusesMoreNodesThanItsSignedCountHolds) {
  for (const size_t nodes : {size_t{32767}, size_t{32768}}) {
    Design design;
    design.name = "big.pcs";
    design.threads.resize(1);
    for (size_t i = 0; i < nodes; ++i) design.stitches.PushBack(1, 0, 0);
    design.ComputeBounds();
    test::Messages messages;
    std::vector<uint8_t> out;
    const int result = WritePcs(design, out);
    if (nodes == 32767) {
      ASSERT_EQ(result, 0);
      EXPECT_EQ(ByteReader(out, 68).S16LE(), 32767);
      EXPECT_TRUE(messages.lines.empty());
    } else {
      EXPECT_EQ(result, -1);
      EXPECT_TRUE(out.empty());
      EXPECT_EQ(design.stitches.Head()->flags, 0u);  // refused before anything is marked
      EXPECT_EQ(messages.lines, std::vector<std::string>{"big.pcs: PCS holds at most 32767 stitches; this design has "
                                                         "32768: split it with --split-stitches 32000"});
    }
  }
}

TEST(PcsWriter, EachChangeNamesTheSlotOfItsColour) {
  struct Case {
    std::vector<uint32_t> colors;  // one thread each
    std::vector<uint8_t> slots;
    size_t exact;  // the leading changes whose slot holds their own colour
  };
  std::vector<Case> cases(2);
  // Eighteen colours: the table holds the first sixteen, and the last two
  // take the nearest entry, (50, 0, 0) and (150, 0, 0).
  for (int i = 0; i < 16; ++i) cases[0].colors.push_back(ColorRef(static_cast<uint8_t>(i * 10), 0, 0));
  cases[0].colors.insert(cases[0].colors.end(), {ColorRef(52, 0, 0), ColorRef(255, 0, 0)});
  cases[0].slots = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 5, 15};
  cases[0].exact = 16;
  // Nineteen changes in eight colours, the eighth first used by the 18th
  // thread: each change names its own colour's slot.
  for (uint8_t i = 0; i < 17; ++i) {
    cases[1].colors.push_back(ColorRef(static_cast<uint8_t>(20 * (i % 7)), 7, 9));
    cases[1].slots.push_back(i % 7);
  }
  cases[1].colors.insert(cases[1].colors.end(), {ColorRef(1, 200, 3), ColorRef(0, 7, 9), ColorRef(1, 200, 3)});
  cases[1].slots.insert(cases[1].slots.end(), {7, 0, 7});
  cases[1].exact = 20;
  for (const Case& c : cases) {
    Design design = test::StitchPerColour(c.colors);
    design.ComputeBounds();
    std::vector<uint8_t> out;
    ASSERT_EQ(WritePcs(design, out), 0);
    std::vector<uint8_t> slots;
    for (size_t at = 70; at + 9 <= out.size(); at += 9) {
      if (out[at + 8] == 3) slots.push_back(out[at]);
    }
    EXPECT_EQ(slots, c.slots) << c.colors.size() << " threads";
    for (size_t change = 0; change < c.exact && change < slots.size(); ++change) {
      const size_t entry = 4 + 4 * size_t{slots[change]};
      EXPECT_EQ(ColorRef(out[entry], out[entry + 1], out[entry + 2]), c.colors[change]) << change;
    }
  }
}

TEST(PcsReader, RecordsColourChangesAndEndSteps) {
  // Seven stitch records: colour records are not counted, a (0, 0) is.
  PcsFile file(2, kDefaultTable, 7);
  file.Color(2).Position(U(100), 0, 4).Position(U(200), 0).Position(U(200), U(100));
  file.Color(20).Position(U(200), U(200));           // beyond the table: no thread, no stop
  file.Color(3).Position(U(150), U(200));            // a stop with a move
  file.Position(0, 0).Position(U(150), U(190));      // (0, 0) takes the next record
  file.Position(U(400), 0);                          // past the count: not read
  const Design design = test::ReadBytes(ReadPcs, file.bytes, "/designs/a.PCS");
  // Positions (100,0) (200,0) (200,100) (200,200) (150,200) (150,190). The
  // stop is made pure, and centring moves the head jump by (150, 100).
  const std::vector<test::Node> expected = {{-50, -100, STITCH_JUMP}, {100, 0, 0},   {0, 100, 0}, {0, 100, 0},
                                            {0, 0, STITCH_COLORSTOP}, {-50, 0, 0}, {0, -10, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Blue");
  EXPECT_EQ(design.threads[0].rgb, ColorRef(0, 0, 255));
  EXPECT_EQ(design.threads[0].chartIndex, 2);
  EXPECT_EQ(design.threads[1].colorName, "Dark Cyan");
  EXPECT_EQ(design.threads[1].chartIndex, 3);
}

TEST(PcsReader, EmptyCountsAndShortFiles) {
  for (const uint16_t count : {uint16_t{0}, uint16_t{0x8000}}) {
    PcsFile file(2, kDefaultTable, count);
    file.Color(0).Position(U(10), 0);
    const Design design = test::ReadBytes(ReadPcs, file.bytes);
    EXPECT_TRUE(design.stitches.Empty());
    EXPECT_TRUE(design.threads.empty());
  }
  // A colour record whose position record is cut off ends the reading; the
  // thread it added has no stop and goes again when the stops are counted.
  PcsFile file(2, kDefaultTable, 6);
  file.Color(0).Position(U(10), 0).Position(U(20), 0).Color(1);
  file.bytes.insert(file.bytes.end(), {1, 2, 3});
  const Design design = test::ReadBytes(ReadPcs, file.bytes);
  EXPECT_EQ(test::Nodes(design), (std::vector<test::Node>{{-5, 0, STITCH_JUMP}, {10, 0, 0}}));
  EXPECT_EQ(design.threads.size(), 1u);
}

}  // namespace
}  // namespace fennick
