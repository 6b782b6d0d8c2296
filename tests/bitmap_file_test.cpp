#include "tools/bitmap_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "core/byte_cursor.h"
#include "core/preferences.h"
#include "formats/dst.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

// Appends little-endian words.
void Words(std::vector<uint8_t>& bytes, std::initializer_list<uint32_t> words) {
  ByteWriter out(bytes);
  for (const uint32_t word : words) out.U32LE(word);
}

TEST(BmpFileImage, HeaderAndPixelWords) {
  StitchBitmap bitmap;
  ASSERT_EQ(bitmap.Create(3, 2), 0);
  bitmap.pixels = {0x00112233, 1, 2, 3, 4, 0x00ABCDEF};

  std::vector<uint8_t> expected = {'B', 'M'};
  // File size, zero, pixel offset, info header size, width, height; then
  // planes 1 and depth 32 as two 16-bit words.
  Words(expected, {3 * 2 * 4 + 58, 0, 58, 40, 3, 2, 1 | 32 << 16});
  expected.resize(58, 0);  // the rest of the info header and the spare word
  for (const uint8_t byte :
       {0x33, 0x22, 0x11, 0x00, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0xEF, 0xCD, 0xAB, 0}) {
    expected.push_back(byte);
  }
  EXPECT_EQ(BmpFileImage(bitmap), expected);
}

// The 14-byte file header and a 40-byte info header, then the palette
// (blue, green, red, spare each) and the pixel rows.
std::vector<uint8_t> BmpFile(int32_t width, int32_t height, uint16_t depth, uint32_t colorsUsed,
                             const std::vector<uint32_t>& palette, const std::vector<uint8_t>& rows) {
  std::vector<uint8_t> bytes = {'B', 'M'};
  const auto pixelOffset = static_cast<uint32_t>(54 + palette.size() * 4);
  Words(bytes, {static_cast<uint32_t>(pixelOffset + rows.size()), 0, pixelOffset, 40, static_cast<uint32_t>(width),
                static_cast<uint32_t>(height), 1 | uint32_t{depth} << 16, 0, 0, 0, 0, colorsUsed, 0});
  for (const uint32_t color : palette) Words(bytes, {color});
  bytes.insert(bytes.end(), rows.begin(), rows.end());
  return bytes;
}

TEST(LoadBmp, EveryDepthByHand) {
  const uint32_t dark = 0x332211, light = 0xCCBBAA;  // palette words: 11 22 33 00 and AA BB CC 00
  const struct {
    const char* name;
    std::vector<uint8_t> file;
    std::vector<uint32_t> pixels;  // rows of 2 to 10 as the file gives them
  } cases[] = {
      {"1-bit, highest bit first",
       BmpFile(10, 2, 1, 0, {dark, light}, {0b10110000, 0b01000000, 0, 0, 0xFF, 0xC0, 0, 0}),
       {light, dark,  light, light, dark,  dark,  dark,  dark,  dark,  light,
        light, light, light, light, light, light, light, light, light, light}},
      {"4-bit, high nibble first", BmpFile(3, 1, 4, 3, {dark, light, 7}, {0x12, 0x00, 0, 0}), {light, 7, dark}},
      {"8-bit, black past the palette", BmpFile(3, 1, 8, 2, {dark, light}, {1, 0, 5, 0}), {light, dark, 0}},
      {"24-bit top-down, in file order",
       BmpFile(2, -2, 24, 0, {}, {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0}),
       {0x030201, 0x060504, 0x090807, 0x0C0B0A}},
      // 0x7C1F: red and blue 31, times 8. The next pixel starts one byte on, at
      // 0x007C: green 3 and blue 28, times 8.
      {"16-bit", BmpFile(2, 1, 16, 0, {}, {0x1F, 0x7C, 0x00, 0x00}), {0xF800F8, 0x0018E0}},
      {"32-bit, as the bitmap file is written", BmpFile(2, 1, 32, 0, {}, {1, 2, 3, 9, 4, 5, 6, 0}), {0x030201, 0x060504}},
  };
  for (const auto& c : cases) {
    StitchBitmap bitmap;
    ASSERT_EQ(bitmap.LoadBmp(c.file), 0) << c.name;
    EXPECT_EQ(int64_t{bitmap.width} * bitmap.height, std::ssize(c.pixels)) << c.name;
    EXPECT_EQ(bitmap.pixels, c.pixels) << c.name;
  }
}

TEST(LoadBmp, BadFilesGiveTheirCodes) {
  const std::vector<uint8_t> good = BmpFile(4, 4, 24, 0, {}, std::vector<uint8_t>(48, 0x40));
  auto with = [&good](size_t offset, std::vector<uint8_t> bytes) {
    std::vector<uint8_t> file = good;
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(offset));
    return file;
  };
  const std::pair<std::vector<uint8_t>, int> cases[] = {
      {{}, 2},
      {{'B', 'M', 0, 0, 0}, 2},
      {std::vector<uint8_t>(good.begin(), good.begin() + 40), 2},  // info header cut
      {with(0, {'M', 'B'}), 3},
      {with(28, {2, 0}), 2},                    // depth 2
      {with(18, {0, 0, 0, 0}), 2},              // width 0
      {with(18, {0, 0, 1, 0, 0, 0, 1, 0}), 4},  // 65536 by 65536
      {with(10, {0xFF, 0xFF, 0xFF, 0xFF}), 0},  // pixels past the end: all black
  };
  for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(StitchBitmap().LoadBmp(cases[i].first), cases[i].second) << i;

  test::ScratchFolder folder;
  StitchBitmap bitmap;
  EXPECT_EQ(bitmap.LoadBmpFile(folder.File("missing.bmp")), 1);
  EXPECT_EQ(bitmap.LoadBmpFile(folder.Path().string()), 1);  // a folder
  folder.Write("good.bmp", good);
  EXPECT_EQ(bitmap.LoadBmpFile(folder.File("good.bmp")), 0);
  EXPECT_EQ(bitmap.pixels, std::vector<uint32_t>(16, 0x404040));

  // A cut pixel area over an older picture of the same size: what is there
  // is read (the fifth pixel has only its blue byte), the rest is black.
  ASSERT_EQ(bitmap.Create(4, 4), 0);
  bitmap.Clear(0x123456);
  ASSERT_EQ(bitmap.LoadBmp(std::vector<uint8_t>(good.begin(), good.end() - 48 + 13)), 0);
  std::vector<uint32_t> expected(16, 0);
  std::fill_n(expected.begin(), 4, 0x404040);
  expected[4] = 0x40;
  EXPECT_EQ(bitmap.pixels, expected);
}

TEST(MakeBitmap, FollowsTheSettings) {
  test::ScratchFolder folder;
  std::vector<uint8_t> file = {1};
  EXPECT_EQ(MakeBitmap(nullptr, file), -1);
  EXPECT_EQ(file, std::vector<uint8_t>{1});

  Design design;
  ASSERT_TRUE(test::ReadSample(ReadDst, design, "geometric_objects.dst"));
  std::set<uint32_t> flatColors = {0xFFFFFF};
  for (const ThreadColor& thread : design.threads) {
    StitchBitmap pen;
    pen.SetColor(thread.rgb);
    flatColors.insert(pen.penColor);
  }
  auto colors = [&file] {
    std::set<uint32_t> found;
    for (ByteReader pixels(file, 58); !pixels.AtEnd();) found.insert(pixels.U32LE());
    return found;
  };

  // Defaults: 400 pixels, 3-D on white.
  ASSERT_EQ(MakeBitmap(&design, file), 0);
  ASSERT_EQ(file.size(), 400u * 400 * 4 + 58);
  EXPECT_EQ(ByteReader(file, 18).U32LE(), 400u);
  EXPECT_EQ(ByteReader(file, 58).U32LE(), 0xFFFFFFu);
  EXPECT_GT(colors().size(), flatColors.size());  // the shades of each thread

  const PreferenceStore store;
  store.SetInt("Settings", "BMP Size", 64);
  store.SetInt("Settings", "Make 3D", 0);
  ASSERT_EQ(MakeBitmap(&design, file), 0);
  ASSERT_EQ(file.size(), 64u * 64 * 4 + 58);
  const std::set<uint32_t> flat = colors();
  EXPECT_TRUE(std::ranges::includes(flatColors, flat));
  EXPECT_GT(flat.size(), 2u);

  store.SetInt("Settings", "Make 3D", 1);
  store.SetInt("Settings", "Outline", 1);  // goes before Make 3D
  ASSERT_EQ(MakeBitmap(&design, file), 0);
  EXPECT_EQ(colors(), (std::set<uint32_t>{0, 0xFFFFFF}));

  store.SetInt("Settings", "BMP Size", 0);
  EXPECT_EQ(MakeBitmap(&design, file), -1);
}

}  // namespace
}  // namespace fennick
