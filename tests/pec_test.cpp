#include "formats/pec.h"

#include <gtest/gtest.h>

#include <tuple>

#include "test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Encode(int32_t dx, int32_t dy, uint32_t flags, int changeCount) {
  StitchList list;
  list.PushBack(dx, dy, flags);
  Bytes out;
  const size_t written = EncodePecStitch(out, *list.Head(), changeCount);
  EXPECT_EQ(written, out.size());
  return out;
}

TEST(PecStitchTest, EncodesEachFormAsTheLayoutGivesIt) {
  struct Case {
    int32_t dx, dy;
    uint32_t flags;
    int changeCount;
    Bytes bytes;
  };
  // The stream's y runs upwards: dy = -1 is written as +1.
  const Case cases[] = {
      {63, 0, 0, 1, {0x3F, 0x00}},
      {64, 0, 0, 1, {0x80, 0x40, 0x00}},
      {-64, 0, 0, 1, {0x40, 0x00}},
      {-65, 0, 0, 1, {0x8F, 0xBF, 0x00}},
      {0, -1, 0, 1, {0x00, 0x01}},
      {0, 2047, 0, 1, {0x00, 0x88, 0x01}},  // -2047 + 4096 = 0x801
      {5, 0, STITCH_JUMP, 1, {0xA0, 0x05, 0xA0, 0x00}},
      // The first node of a stream is long on both axes with the jump marker.
      {0, 0, 0, 0, {0x90, 0x00, 0x90, 0x00}},
      {0, 0, STITCH_JUMP, 0, {0xA0, 0x00, 0xA0, 0x00}},
      // Colour changes: the third byte alternates, and a move after it is long.
      {0, 0, STITCH_COLORSTOP, 1, {0xFE, 0xB0, 0x01}},
      {0, 0, STITCH_COLORSTOP, 2, {0xFE, 0xB0, 0x02}},
      {3, 0, STITCH_COLORSTOP, 1, {0xFE, 0xB0, 0x01, 0x90, 0x03, 0x90, 0x00}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Encode(c.dx, c.dy, c.flags, c.changeCount), c.bytes)
        << "dx " << c.dx << " dy " << c.dy << " flags " << c.flags << " change " << c.changeCount;
  }
}

TEST(PecStitchTest, DecodesMarkersAndMixedForms) {
  struct Case {
    Bytes bytes;
    PecStitch stitch;
    size_t length;
  };
  const Case cases[] = {
      {{0x3F, 0x41}, {63, 63, 0}, 2},                       // 0x41 is -63, negated
      {{0x80, 0x40, 0x05}, {64, -5, 0}, 3},                 // long x, short y
      {{0x05, 0x90, 0x10}, {5, -16, STITCH_JUMP}, 3},       // short x, long jump y
      {{0xA0, 0x00, 0x80, 0x00}, {0, 0, STITCH_JUMP}, 4},   // a trim reads as a jump
      {{0x8F, 0xFF, 0x8F, 0xFF}, {-1, 1, 0}, 4},            // 0xFFF is -1
      {{0xFE, 0xB0, 0x77, 0x01}, {0, 0, STITCH_COLORSTOP}, 3},
      {{0xFE, 0x05, 0x01}, {3589 - 4096, -1, STITCH_JUMP}, 3},  // FE without B0 is a long x
  };
  for (const Case& c : cases) {
    ByteReader reader(c.bytes);
    const PecStitch stitch = DecodePecStitch(reader);
    EXPECT_EQ(std::tuple(stitch.dx, stitch.dy, stitch.flags, reader.Offset()),
              std::tuple(c.stitch.dx, c.stitch.dy, c.stitch.flags, c.length));
  }
  // A stream cut inside a long form stops at its end.
  const Bytes cut = {0x90};
  ByteReader reader(cut);
  DecodePecStitch(reader);
  EXPECT_TRUE(reader.AtEnd());
  EXPECT_FALSE(reader.Ok());
}

TEST(PecBlockWriter, GoldenBytes) {
  Design design;
  // Centred: positions (-5, 3), (5, 3), (5, 3), (5, -3); bounds x -5..5, y -3..3.
  test::SetNodes(design, {{-5, 3, STITCH_JUMP}, {10, 0, 0}, {0, 0, STITCH_COLORSTOP}, {0, -6, 0}});
  design.ComputeBounds();
  const Bytes colors = {5, 29};
  Bytes out = {0xAA};  // a block is appended behind what is there
  const size_t thumbnails = AppendPecBlock(out, design, {"ABCDEFGHIJ", colors});

  Bytes expected = {0xAA};
  const std::string label = "LA:ABCDEFGH        \r";
  expected.insert(expected.end(), label.begin(), label.end());
  expected.resize(1 + 31, 0x20);
  expected.insert(expected.end(), {0x20, 0xFF, 0x00, 0x06, 0x26});
  expected.resize(1 + 48, 0x20);
  expected.insert(expected.end(), {0x01, 5, 29});
  expected.resize(1 + 512, 0x20);
  // L = 16 + 12 stream bytes; width 10, height 6.
  expected.insert(expected.end(),
                  {0x00, 0x00, 0x1C, 0x00, 0x00, 0x31, 0xFF, 0xF0, 0x0A, 0x00, 0x06, 0x00, 0xE0, 0x01, 0xB0, 0x01});
  // The first node moves by (+5, -3) to the box's corner: a jump (0, 0).
  // Then (10, 0), a pure stop (second change), (0, -6) written as y 6.
  expected.insert(expected.end(), {0xA0, 0x00, 0xA0, 0x00, 0x0A, 0x00, 0xFE, 0xB0, 0x02, 0x00, 0x06, 0xFF});
  EXPECT_EQ(thumbnails, expected.size());
  expected.resize(expected.size() + 228 * 3, 0);
  EXPECT_EQ(out, expected);

  // The real-colour writer marks offset 31; a first node already in the
  // corner is written as it stands: (-5, 3) is x 0xFFB and y -3, 0xFFD.
  out.clear();
  AppendPecBlock(out, design, {"A", colors, true, true});
  EXPECT_EQ(out[31], 0xFF);
  EXPECT_EQ(Bytes(out.begin() + 528, out.begin() + 532), (Bytes{0xAF, 0xFB, 0xAF, 0xFD}));
}

// The frame the finishing step draws, row by row from its rules.
Bytes FramedThumbnail() {
  Bytes image(228, 0);
  auto row = [&image](int y, Bytes bytes) { std::copy(bytes.begin(), bytes.end(), image.begin() + 6 * y); };
  row(1, {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F});                                // x 4 to 43
  row(2, {0x08, 0x00, 0x00, 0x00, 0x00, 0x10});                                // (3, 2) and (44, 2)
  row(3, {0x04, 0x00, 0x00, 0x00, 0x00, 0x20});                                // (2, 3) and (45, 3)
  for (int y = 4; y <= 33; ++y) row(y, {0x02, 0x00, 0x00, 0x00, 0x00, 0x40});  // x 1 and 46
  row(34, {0x04, 0x00, 0x00, 0x00, 0x00, 0x20});
  row(35, {0x08, 0x00, 0x00, 0x00, 0x00, 0x10});
  row(36, {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F});
  return image;
}

TEST(PecThumbnails, FinishingFramesEveryImageAndOutlinesColoursInTheComposite) {
  Design design;
  design.threads.resize(1);
  Bytes images(2 * 228, 0);
  images[228 + 6] = 0xAA;  // row 1 of the colour's image is replaced by the frame
  for (int y = 10; y <= 17; ++y) images[228 + 6 * y + 2] = 0xFF;  // a solid square, x 16 to 23
  EXPECT_EQ(RenderPecThumbnail(design, -1, images), 456);

  Bytes solid = FramedThumbnail();
  Bytes outline = FramedThumbnail();
  for (int y = 10; y <= 17; ++y) {
    solid[6 * y + 2] = 0xFF;
    outline[6 * y + 2] = (y == 10 || y == 17) ? 0xFF : 0x81;
  }
  EXPECT_EQ(Bytes(images.begin(), images.begin() + 228), outline);
  EXPECT_EQ(Bytes(images.begin() + 228, images.end()), solid);
}

TEST(PecThumbnails, EachColourIsDrawnAloneAndSampledEveryThirdPixel) {
  // Bounds x -10..10, y -53..53: the 144 by 114 canvas with its 4-pixel
  // margin fits 106 / 10.6 = 10 pixels a millimetre, one a stitch unit, so
  // with y flipped a point (x, y) lands on pixel (72 + x, 57 - y).
  Design design;
  design.threads.resize(2);
  test::SetNodes(design, {{3, 53, STITCH_JUMP},  // pixel (75, 4)
                          {0, -106, 0},          // down to (75, 110)
                          {0, 0, STITCH_COLORSTOP},
                          {-13, 50, STITCH_JUMP},  // (62, 60)
                          {20, 0, 0}});            // across to (82, 60)
  design.ComputeBounds();

  // Colour 0: canvas pixels (75, 5) to (75, 110); every third is x 25, y 2 to 36.
  Bytes column(228, 0);
  for (int y = 2; y <= 36; ++y) column[6 * y + 3] |= 0x02;
  Bytes thumbnail(228, 0xEE);
  EXPECT_EQ(RenderPecThumbnail(design, 0, thumbnail), 228);
  EXPECT_EQ(thumbnail, column);

  // Colour 1: canvas pixels (63, 60) to (82, 60) give x 21 to 27 of row 20.
  // The block's stop is drawn from the pen left in the corner, so only that
  // row is checked.
  EXPECT_EQ(RenderPecThumbnail(design, 1, thumbnail), 228);
  EXPECT_EQ(thumbnail[6 * 20 + 2] & 0xE0, 0xE0);  // x 21 to 23
  EXPECT_EQ(thumbnail[6 * 20 + 3], 0x0F);         // x 24 to 27

  // All at once: colour 0's image, framed, behind the composite, which holds
  // it too, as a line one pixel wide is its own outline.
  Bytes area(3 * 228, 0x55);
  RenderPecThumbnails(design, area);
  Bytes framed = FramedThumbnail(), composite(area.begin(), area.begin() + 228);
  for (size_t i = 0; i < 228; ++i) framed[i] |= column[i], composite[i] &= framed[i];
  EXPECT_EQ(Bytes(area.begin() + 228, area.begin() + 456), framed);
  EXPECT_EQ(composite, framed);
}

}  // namespace
}  // namespace fennick
