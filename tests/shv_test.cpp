#include "formats/shv.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/test_support.h"

namespace fennick {
namespace {

struct ShvColor {
  uint16_t stitchCount;
  uint8_t paletteIndex, chart;
  std::array<uint8_t, 4> code;
};

// Title "ab", a picture of size form (2, 3), which counts as 2 by 4, then the
// colour table and `stream`.
std::vector<uint8_t> ShvFile(const std::vector<ShvColor>& colors, const std::vector<uint8_t>& stream) {
  std::vector<uint8_t> bytes(86, 0);
  bytes.insert(bytes.end(), {2, 'a', 'b', 2, 3});
  bytes.resize(bytes.size() + 2 * 4 / 2 + 6 - 2);  // the rest of the picture
  bytes.push_back(static_cast<uint8_t>(colors.size()));
  // Each record is read from two bytes before the point, which starts 23
  // bytes behind the count and moves 14 a colour.
  const size_t first = bytes.size() - 1 + 23;
  bytes.resize(first + 14 * colors.size() - 4, 0xEE);
  for (size_t i = 0; i < colors.size(); ++i) {
    const ShvColor& c = colors[i];
    const size_t at = first + 14 * i;
    const uint8_t record[] = {static_cast<uint8_t>(c.stitchCount >> 8), static_cast<uint8_t>(c.stitchCount),
                              c.paletteIndex, c.chart, c.code[0], c.code[1], c.code[2], c.code[3]};
    for (size_t k = 0; k < sizeof record; ++k) {
      if (at - 2 + k < bytes.size()) bytes[at - 2 + k] = record[k];
    }
  }
  bytes.insert(bytes.end(), stream.begin(), stream.end());
  return bytes;
}

TEST(ShvReader, ColourTableAndMoves) {
  const std::vector<ShvColor> colors = {
      {9, 3, 1, {0x00, 0x00, 0x10, 0x22}},  // Madeira Rayon 1022
      {0, 5, 0, {0x00, 0x00, 0x10, 0x22}},  // chart 0: the palette colour stays
      {2, 1, 9, {0x12, 0x34, 0x04, 0x51}},  // Alcazar Rayon, three digits: 451
  };
  const std::vector<uint8_t> stream = {
      0x80, 0x01, 0x00, 0x64, 0xFF, 0x9C,  // long jump (100, -100): y points down
      0x05, 0xFB,                          // (5, -5)
      0x80, 0x02, 0x03, 0x80,              // 80 02 is skipped; 128 stays +128
      0x80, 0x01, 0x00, 0x01, 0x80, 0x00,  // 32768 stays +32768 (in x, 0x80 would be an escape)
      0x01, 0xFF, 0x02, 0x02,              // the third colour
      0x7F, 0x7F,                          // beyond the counts: not read
  };
  const Design design = test::ReadBytes(ReadShv, ShvFile(colors, stream), "/d/x.shv");
  std::vector<test::Node> nodes = test::Nodes(design);
  ASSERT_FALSE(nodes.empty());
  nodes.erase(nodes.begin());  // the first jump, moved by centring
  const std::vector<test::Node> expected = {{5, 5, 0},  {3, -128, 0}, {1, -32768, STITCH_JUMP},
                                            {0, 0, STITCH_COLORSTOP}, {0, 0, STITCH_COLORSTOP},
                                            {1, 1, 0},  {2, -2, 0}};
  EXPECT_EQ(nodes, expected);
  EXPECT_EQ(design.stitches.Head()->flags, STITCH_JUMP);
  EXPECT_EQ(design.maxX, -design.minX);

  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[0].colorName, "Madeira Rayon 1022");
  EXPECT_EQ(design.threads[0].rgb, ColorRef(0xFF, 0xF9, 0x89));
  EXPECT_EQ(design.threads[0].chartIndex, 1);
  EXPECT_EQ(design.threads[0].stitchCount, 9);
  EXPECT_EQ(design.threads[1].colorName, "Yellow");
  EXPECT_EQ(design.threads[1].rgb, ColorRef(255, 255, 0));
  EXPECT_EQ(design.threads[2].colorName, "Alcazar Rayon 451");
  EXPECT_EQ(design.threads[2].catalogNumber, "12340451");
}

TEST(ShvReader, RefusedFiles) {
  const std::vector<uint8_t> good = ShvFile({{1, 0, 0, {}}}, {0x01, 0x01});
  Design design;
  EXPECT_FALSE(ReadShv(design, test::AsReaderInput(good))) << "no name";
  design.name = "x.shv";
  EXPECT_TRUE(ReadShv(design, test::AsReaderInput(good)));
  // Below 87 bytes, below 87 + title + 8, and a picture ending past the end.
  const size_t sizes[] = {85, 86 + 2 + 7};
  for (const size_t size : sizes) {
    EXPECT_FALSE(ReadShv(design, {good.begin(), good.begin() + static_cast<ptrdiff_t>(size)})) << size;
  }
  std::vector<uint8_t> bigPicture = good;
  bigPicture[89] = 200;
  bigPicture[90] = 200;
  EXPECT_FALSE(ReadShv(design, test::AsReaderInput(bigPicture)));
}

TEST(ShvReader, LargePictureFormAndTruncatedStream) {
  // 255 255, a byte, then width 4 and height 3 at 90 and 92: the colour
  // count stands (3/2 + 1) * 4 + 10 bytes behind the height, at 110.
  std::vector<uint8_t> bytes(157, 0);
  bytes[87] = bytes[88] = 255;
  bytes[91] = 4;
  bytes[93] = 3;
  bytes[110] = 2;
  bytes[132] = 3;  // records 131 and 145: 3 moves of Gray, 1 of Black
  bytes[133] = 6;
  bytes[146] = 1;
  bytes.insert(bytes.end(), {0x02, 0x02, 0x03});  // the file ends inside the second move
  Design design;
  design.name = "t.shv";
  ASSERT_TRUE(ReadShv(design, test::AsReaderInput(bytes)));
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Gray");
  // The second move reads the added zero byte; the stop of the second colour stays.
  const std::vector<test::Node> nodes = test::Nodes(design);
  ASSERT_EQ(nodes.size(), 4u);
  EXPECT_EQ(nodes[2], test::Node(3, 0, 0));
  EXPECT_EQ(nodes[3], test::Node(0, 0, STITCH_COLORSTOP));
}

}  // namespace
}  // namespace fennick
