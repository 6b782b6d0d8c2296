#include "formats/dst.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/test_support.h"

namespace fennick {
namespace {

// The header a writer makes for the given fields, built from the layout.
std::vector<uint8_t> ExpectedHeader(const std::string& text) {
  std::vector<uint8_t> header(512, ' ');
  std::copy(text.begin(), text.end(), header.begin());
  header[125] = ' ';  // where the terminator of the text would stand
  return header;
}

std::vector<uint8_t> DstFile(const std::vector<std::vector<uint8_t>>& records) {
  std::vector<uint8_t> bytes(512, ' ');
  for (const auto& record : records) bytes.insert(bytes.end(), record.begin(), record.end());
  return bytes;
}

TEST(DstWriter, GoldenBytes) {
  // A stitch and a stop, then a 122-unit jump that must be split in two.
  Design design =
      test::DesignOf({{10, 20, 0}, {-5, 3, 0}, {0, 0, STITCH_COLORSTOP}, {122, 0, STITCH_JUMP}, {1, 1, 0}}, {0, 0});
  design.name = "/designs/rose.pes";

  std::vector<uint8_t> out;
  ASSERT_EQ(WriteDst(design, out), 0);

  // Positions span x 5..128 and y 20..24, so the centre is (66, 22): a head
  // jump (-66, -22) goes in, bounds become x -61..62, y -2..2.
  std::vector<uint8_t> expected = ExpectedHeader(
      "LA:rose            \rST:      9\rCO:  2\r+X:   62\r-X:   61\r+Y:    2\r-Y:    2\r"
      "AX:+    0\rAY:+    0\rMX:+    0\rMY:+    0\rPD:******\r\x1a");
  const std::vector<std::vector<uint8_t>> records = {
      {0x00, 0x00, 0x03},  // the zero node put at the head
      {0x68, 0x56, 0x8B},  // jump (-66, -22): x -81 +27 -9 -3, y -27 +9 -3 -1
      {0x55, 0xA0, 0x03},  // (10, 20): x +9 +1, y +27 -9 +3 -1
      {0x09, 0x81, 0x03},  // (-5, 3): x -9 +3 +1, y +3
      {0x00, 0x00, 0xC3},  // pure stop
      {0x05, 0x0A, 0x87},  // jump (61, 0): +81 -27 +9 -3 +1
      {0x05, 0x0A, 0x87},  // the second half of the split
      {0x00, 0x00, 0x03},  // the split node stays as a zero stitch
      {0x81, 0x00, 0x03},  // (1, 1)
      {0x00, 0x00, 0xF3},  // end record
  };
  for (const auto& record : records) expected.insert(expected.end(), record.begin(), record.end());
  EXPECT_EQ(out, expected);

  Design empty;
  EXPECT_EQ(WriteDst(empty, out), -1);
  EXPECT_TRUE(out.empty());
}

TEST(DstWriter, LongLabelPushesFieldsOnAndSpaceFallsInside) {
  Design design = test::DesignOf({{0, 0, STITCH_JUMP}, {2, 2, 0}}, {0});
  design.name = "twenty-one-characters.dst";
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteDst(design, out), 0);
  const std::string text(out.begin(), out.begin() + 140);
  // 21 characters instead of 16 push every field 5 places on, and the
  // forced space at 125 lands in the PD field.
  EXPECT_EQ(text.substr(0, 27), "LA:twenty-one-characters\rST");
  EXPECT_EQ(text.substr(119, 10), "PD:*** **\r");
  EXPECT_EQ(text[129], '\x1a');
  EXPECT_EQ(text[130], '\0');  // the text's own terminator survives
  EXPECT_EQ(text[131], ' ');
}

TEST(DstReader, ColourChangeGivesStopAndJumpThatMergesWithItsLanding) {
  const std::vector<uint8_t> bytes = DstFile({
      {0x01, 0x00, 0x03},  // (1, 0)
      {0x00, 0x00, 0xC3},  // colour change
      {0x00, 0x00, 0x83},  // jump (0, 0)
      {0x04, 0x00, 0x83},  // jump (9, 0)
      {0x00, 0x80, 0x03},  // (0, 3): the landing stitch, swallowed
      {0x01, 0x00, 0x03},  // (1, 0)
      {0x00, 0x00, 0xF3},
      {0x01, 0x00, 0x03},  // after the end record: not read
  });
  const Design design = test::ReadBytes(ReadDst, bytes);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Black");
  EXPECT_EQ(design.threads[1].colorName, "Blue");
  EXPECT_TRUE(design.defaultColors);
  // Positions after merging: (1,0) (1,0) (10,3) (11,3). Centre subtracts
  // (6, 1) through a new head jump; the odd height then puts its extra unit
  // on the minus side of y.
  const std::vector<test::Node> expected = {{-6, -2, STITCH_JUMP}, {1, 0, 0},  {0, 0, STITCH_COLORSTOP},
                                            {9, 3, STITCH_JUMP},   {1, 0, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  EXPECT_EQ((std::array{design.minX, design.maxX, design.minY, design.maxY}), (std::array{-5, 5, -2, 1}));
}

TEST(DstReader, OppositeBitsOfOnePowerCancel) {
  const Design design = test::ReadBytes(ReadDst, DstFile({{0x03, 0xC0, 0x03}, {0x02, 0x00, 0x03}}));
  // x+1 and x-1, y+3 and y-3 cancel: the first record is a stitch on the
  // spot. x spans -1..0, so the odd width's extra unit goes to the plus side.
  EXPECT_EQ(test::Nodes(design), (std::vector<test::Node>{{1, 0, STITCH_JUMP}, {0, 0, 0}, {-1, 0, 0}}));
}

TEST(DstReader, ShortFilesAndPartialRecords) {
  Design design;
  // Header and one whole record: it is read.
  std::vector<uint8_t> bytes = DstFile({{0x01, 0x00, 0x03}});
  ASSERT_TRUE(ReadDst(design, test::AsReaderInput(bytes)));
  EXPECT_EQ(design.stitches.Size(), 2u);  // head jump and the stitch
  // Two bytes of a record are no record.
  bytes.pop_back();
  ASSERT_TRUE(ReadDst(design, test::AsReaderInput(bytes)));
  EXPECT_TRUE(design.stitches.Empty());
  EXPECT_EQ(design.threads.size(), 1u);
  // A trailing partial record is ignored.
  bytes = DstFile({{0x01, 0x00, 0x03}, {0x01, 0x00, 0x03}});
  bytes.push_back(0x01);
  ASSERT_TRUE(ReadDst(design, test::AsReaderInput(bytes)));
  EXPECT_EQ(design.stitches.Size(), 3u);  // head jump and two stitches
  // A closing colour change leaves a stop and a jump; the jump is the tail.
  ASSERT_TRUE(ReadDst(design, test::AsReaderInput(DstFile({{0x01, 0x00, 0x03}, {0x00, 0x00, 0xC3}}))));
  EXPECT_FALSE(design.stitches.Tail()->IsColorStop());
  EXPECT_EQ(design.threads.size(), 2u);
}

TEST(DstRoundTrip, LongJumpsComeBackWhole) {
  // 20 steps of trunc(-119.9) would leave -137 on the last record, beyond
  // what a record holds; every length lands where it was sent.
  for (const int32_t dx : {-2398, -1450, 1450, 4000, -32000}) {
    Design design = test::DesignOf({{10, 0, 0}, {dx, 40, STITCH_JUMP}, {10, 5, 0}}, {0});
    std::vector<uint8_t> out;
    ASSERT_EQ(WriteDst(design, out), 0);
    Design read;
    ReadDst(read, test::AsReaderInput(out));
    std::vector<test::Node> moves;
    for (const test::Node& node : test::Nodes(read)) {
      if (std::get<0>(node) != 0 || std::get<1>(node) != 0) moves.push_back(node);
    }
    ASSERT_GE(moves.size(), 2u) << dx;
    EXPECT_EQ(moves[moves.size() - 2], test::Node(dx, 40, STITCH_JUMP)) << dx;
    EXPECT_EQ(moves.back(), test::Node(10, 5, 0)) << dx;
  }
}

}  // namespace
}  // namespace fennick
