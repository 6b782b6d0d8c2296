#include "formats/dst.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/test_support.h"

namespace fennick {
namespace {

using test::AsReaderInput;
using test::Node;
using test::Nodes;
using test::SetNodes;

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
  Design design;
  design.name = "/designs/rose.pes";
  design.threads.resize(2);
  // A stitch and a stop, then a 122-unit jump that must be split in two.
  SetNodes(design, {{10, 20, 0}, {-5, 3, 0}, {0, 0, STITCH_COLORSTOP}, {122, 0, STITCH_JUMP}, {1, 1, 0}});

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
  EXPECT_EQ(out.size(), 3u * 9 + 515);
}

TEST(DstWriter, LongLabelPushesFieldsOnAndSpaceFallsInside) {
  Design design;
  design.name = "twenty-one-characters.dst";
  design.threads.resize(1);
  SetNodes(design, {{0, 0, STITCH_JUMP}, {2, 2, 0}});
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

TEST(DstWriter, EmptyDesignWritesNothing) {
  Design design;
  std::vector<uint8_t> out{1, 2, 3};
  EXPECT_EQ(WriteDst(design, out), -1);
  EXPECT_TRUE(out.empty());
}

TEST(DstWriter, EveryWritePrependsAZeroNode) {
  Design design;
  design.threads.resize(1);
  SetNodes(design, {{0, 0, STITCH_JUMP}, {3, 4, 0}});
  std::vector<uint8_t> out;
  WriteDst(design, out);
  EXPECT_EQ(Nodes(design), (std::vector<Node>{{0, 0, 0}, {-1, -2, STITCH_JUMP}, {3, 4, 0}}));
  // The second write finds a stitch at the head, so centring adds a jump too.
  WriteDst(design, out);
  EXPECT_EQ(Nodes(design),
            (std::vector<Node>{{0, 0, 0}, {0, 0, STITCH_JUMP}, {0, 0, 0}, {-1, -2, STITCH_JUMP}, {3, 4, 0}}));
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
  Design design;
  ASSERT_TRUE(ReadDst(design, AsReaderInput(bytes)));
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Black");
  EXPECT_EQ(design.threads[1].colorName, "Blue");
  EXPECT_TRUE(design.defaultColors);
  // Positions after merging: (1,0) (1,0) (10,3) (11,3). Centre subtracts
  // (6, 1) through a new head jump; the odd height then puts its extra unit
  // on the minus side of y.
  const std::vector<Node> expected = {{-6, -2, STITCH_JUMP}, {1, 0, 0},  {0, 0, STITCH_COLORSTOP},
                                      {9, 3, STITCH_JUMP},   {1, 0, 0}};
  EXPECT_EQ(Nodes(design), expected);
  EXPECT_EQ(design.minX, -5);
  EXPECT_EQ(design.maxX, 5);
  EXPECT_EQ(design.minY, -2);
  EXPECT_EQ(design.maxY, 1);
}

TEST(DstReader, OppositeBitsOfOnePowerCancel) {
  Design design;
  ASSERT_TRUE(ReadDst(design, AsReaderInput(DstFile({{0x03, 0xC0, 0x03}, {0x02, 0x00, 0x03}}))));
  // x+1 and x-1, y+3 and y-3 cancel: the first record is a stitch on the
  // spot. x spans -1..0, so the odd width's extra unit goes to the plus side.
  EXPECT_EQ(Nodes(design), (std::vector<Node>{{1, 0, STITCH_JUMP}, {0, 0, 0}, {-1, 0, 0}}));
}

TEST(DstReader, ColourChangeAtTheEndIsClearedFromTheTail) {
  Design design;
  ASSERT_TRUE(ReadDst(design, AsReaderInput(DstFile({{0x01, 0x00, 0x03}, {0x00, 0x00, 0xC3}}))));
  // The change record gives a stop and a jump; the jump is the tail.
  ASSERT_FALSE(design.stitches.Empty());
  EXPECT_FALSE(design.stitches.Tail()->IsColorStop());
  EXPECT_EQ(design.threads.size(), 2u);
}

TEST(DstReader, TwentyNinthColourTakesPaletteEntryZeroAgain) {
  std::vector<std::vector<uint8_t>> records;
  for (int i = 0; i < 28; ++i) {
    records.push_back({0x01, 0x00, 0x03});
    records.push_back({0x00, 0x00, 0xC3});
  }
  records.push_back({0x01, 0x00, 0x03});
  Design design;
  ASSERT_TRUE(ReadDst(design, AsReaderInput(DstFile(records))));
  ASSERT_EQ(design.threads.size(), 29u);
  EXPECT_EQ(design.threads[27].colorName, "Dark Brown");
  EXPECT_EQ(design.threads[28].colorName, "Black");
  EXPECT_EQ(design.threads[28].rgb, 0u);
}

TEST(DstReader, ShortFilesAndPartialRecords) {
  Design design;
  // Header and one whole record: it is read.
  std::vector<uint8_t> bytes = DstFile({{0x01, 0x00, 0x03}});
  ASSERT_TRUE(ReadDst(design, AsReaderInput(bytes)));
  EXPECT_EQ(design.stitches.Size(), 2u);  // head jump and the stitch
  // Two bytes of a record are no record.
  bytes.pop_back();
  ASSERT_TRUE(ReadDst(design, AsReaderInput(bytes)));
  EXPECT_TRUE(design.stitches.Empty());
  EXPECT_EQ(design.threads.size(), 1u);
  // A trailing partial record is ignored.
  bytes = DstFile({{0x01, 0x00, 0x03}, {0x01, 0x00, 0x03}});
  bytes.push_back(0x01);
  ASSERT_TRUE(ReadDst(design, AsReaderInput(bytes)));
  EXPECT_EQ(design.stitches.Size(), 3u);  // head jump and two stitches
}

TEST(DstRoundTrip, EveryMoveUpTo121SurvivesAndLongerOnesAreSplit) {
  // The stitch on the spot after the head jump anchors it: the reader folds
  // it into the jump instead of the first real stitch.
  for (int32_t d = -121; d <= 121; ++d) {
    Design design;
    design.threads.resize(1);
    SetNodes(design, {{0, 0, STITCH_JUMP}, {0, 0, 0}, {d, -d, 0}, {d / 2, 121, 0}});
    std::vector<uint8_t> out;
    ASSERT_EQ(WriteDst(design, out), 0);
    Design read;
    ReadDst(read, AsReaderInput(out));
    // A new head jump from centring, the writer's zero node, the old head jump.
    const std::vector<Node> nodes = Nodes(read);
    ASSERT_EQ(nodes.size(), 5u) << d;
    EXPECT_EQ(nodes[3], Node(d, -d, 0)) << d;
    EXPECT_EQ(nodes[4], Node(d / 2, 121, 0)) << d;
  }
  // 122 units: two jumps and a zero stitch in the file, one jump after reading.
  Design design;
  design.threads.resize(1);
  SetNodes(design, {{0, 0, STITCH_JUMP}, {0, 0, 0}, {5, 5, 0}, {122, 0, 0}, {1, 0, 0}});
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteDst(design, out), 0);
  EXPECT_EQ(out.size(), 3u * 8 + 515);
  Design read;
  ReadDst(read, AsReaderInput(out));
  const std::vector<Node> nodes = Nodes(read);
  ASSERT_EQ(nodes.size(), 6u);
  EXPECT_EQ(nodes[3], Node(5, 5, 0));
  EXPECT_EQ(nodes[4], Node(122, 0, STITCH_JUMP));
  EXPECT_EQ(nodes[5], Node(1, 0, 0));
}

// Where the needle goes down in a DST file, decoded plainly: a stitch record
// right after a jump or colour record is folded into the jump by the reader.
struct SampleExpectation {
  std::vector<std::pair<int, int>> stitches;
  int minX = 0, maxX = 0, minY = 0, maxY = 0, colourChanges = 0;
};

SampleExpectation DecodePlainly(const std::vector<uint8_t>& file) {
  auto value = [](uint8_t byte, int bit, int weight) { return (byte >> bit & 1) ? weight : 0; };
  SampleExpectation result;
  int x = 0, y = 0;
  bool afterJump = false;
  for (size_t i = 512; i + 3 <= file.size(); i += 3) {
    const uint8_t b0 = file[i], b1 = file[i + 1], b2 = file[i + 2];
    if (b2 == 0xF3) break;
    x += value(b0, 0, 1) - value(b0, 1, 1) + value(b0, 2, 9) - value(b0, 3, 9) + value(b1, 0, 3) -
         value(b1, 1, 3) + value(b1, 2, 27) - value(b1, 3, 27) + value(b2, 2, 81) - value(b2, 3, 81);
    y += value(b0, 7, 1) - value(b0, 6, 1) + value(b0, 5, 9) - value(b0, 4, 9) + value(b1, 7, 3) -
         value(b1, 6, 3) + value(b1, 5, 27) - value(b1, 4, 27) + value(b2, 5, 81) - value(b2, 4, 81);
    result.minX = std::min(result.minX, x);
    result.maxX = std::max(result.maxX, x);
    result.minY = std::min(result.minY, y);
    result.maxY = std::max(result.maxY, y);
    if (b2 & 0x40) ++result.colourChanges;
    if (b2 & 0x80) {
      afterJump = true;
    } else if (afterJump) {
      afterJump = false;
    } else {
      result.stitches.emplace_back(x, y);
    }
  }
  return result;
}

TEST(DstReader, RealSampleFile) {
  const std::vector<uint8_t> file = test::ReadTestFile("geometric_objects.dst");
  ASSERT_EQ((file.size() - 512) / 3, 8330u);
  const SampleExpectation expected = DecodePlainly(file);
  ASSERT_EQ(expected.colourChanges, 3);

  Design design;
  ASSERT_TRUE(ReadDst(design, AsReaderInput(file)));
  EXPECT_EQ(design.threads.size(), 4u);
  const char* const names[] = {"Black", "Blue", "Light Green", "Red"};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(design.threads[i].colorName, names[i]);
  // The origin before the first record is no sample, so the extents are
  // those of the records alone, moved to the centre.
  EXPECT_EQ(design.maxX - design.minX, expected.maxX - expected.minX);
  EXPECT_EQ(design.maxY - design.minY, expected.maxY - expected.minY);
  // An odd width keeps its extra unit on the plus side of x, an odd height on
  // the minus side of y.
  EXPECT_EQ(design.maxX + design.minX, (expected.maxX - expected.minX) % 2);
  EXPECT_EQ(design.maxY + design.minY, -((expected.maxY - expected.minY) % 2));

  std::vector<std::pair<int, int>> stitches;
  int x = 0, y = 0;
  for (const StitchNode& node : design.stitches) {
    x += node.dx;
    y += node.dy;
    if (node.flags == 0) stitches.emplace_back(x, y);
  }
  ASSERT_EQ(stitches.size(), expected.stitches.size());
  const int shiftX = stitches[0].first - expected.stitches[0].first;
  const int shiftY = stitches[0].second - expected.stitches[0].second;
  for (size_t i = 0; i < stitches.size(); ++i) {
    ASSERT_EQ(stitches[i].first - shiftX, expected.stitches[i].first) << "stitch " << i;
    ASSERT_EQ(stitches[i].second - shiftY, expected.stitches[i].second) << "stitch " << i;
  }
  EXPECT_FALSE(design.stitches.Tail()->IsColorStop());
}

TEST(DstReader, ArbitraryBytesNeverBreakIt) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 300; ++round) {
    std::vector<uint8_t> bytes(random() % 2000);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    Design design;
    ASSERT_TRUE(ReadDst(design, bytes));
    ASSERT_FALSE(design.threads.empty());
    if (!design.stitches.Empty()) {
      EXPECT_FALSE(design.stitches.Tail()->IsColorStop());
    }
  }
}

}  // namespace
}  // namespace fennick
