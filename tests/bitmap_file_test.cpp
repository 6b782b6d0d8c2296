#include "tools/bitmap_file.h"

#include <gtest/gtest.h>

#include <set>

#include "core/byte_cursor.h"
#include "core/preferences.h"
#include "formats/dst.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

TEST(BmpFileImage, HeaderAndPixelWords) {
  StitchBitmap bitmap;
  ASSERT_EQ(bitmap.Create(3, 2), 0);
  bitmap.pixels = {0x00112233, 1, 2, 3, 4, 0x00ABCDEF};

  std::vector<uint8_t> expected = {'B', 'M'};
  // File size, zero, pixel offset, info header size, width, height; then
  // planes 1 and depth 32 as two 16-bit words.
  ByteWriter words(expected);
  for (const uint32_t word : {3 * 2 * 4 + 58, 0, 58, 40, 3, 2, 1 | 32 << 16}) words.U32LE(word);
  expected.resize(58, 0);  // the rest of the info header and the spare word
  for (const uint8_t byte :
       {0x33, 0x22, 0x11, 0x00, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0xEF, 0xCD, 0xAB, 0}) {
    expected.push_back(byte);
  }
  EXPECT_EQ(BmpFileImage(bitmap), expected);
}

TEST(RenderBitmap, SettingsGiveTheOptionsAndTheOutlineWinsOver3D) {
  test::ScratchFolder folder;
  Design design;
  ASSERT_TRUE(test::ReadSample(ReadDst, design, "geometric_objects.dst"));
  const PreferenceStore store;
  store.SetInt("Settings", "BMP Size", 64);
  store.SetInt("Settings", "Outline", 1);
  const BitmapOptions options = BitmapOptionsFromPreferences();
  EXPECT_TRUE(options.size == 64 && options.shaded && options.outline);
  DesignRenderer renderer;
  ASSERT_TRUE(RenderBitmap(design, options, renderer));
  EXPECT_EQ(std::set<uint32_t>(renderer.bitmap.pixels.begin(), renderer.bitmap.pixels.end()),
            (std::set<uint32_t>{0, 0xFFFFFF}));
  EXPECT_FALSE(RenderBitmap(design, BitmapOptions{.size = 0}, renderer));
}

}  // namespace
}  // namespace fennick
