#include "formats/pec.h"

#include <gtest/gtest.h>

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
      {0, 0, STITCH_JUMP, 1, {0xA0, 0x00, 0xA0, 0x00}},
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
    EXPECT_EQ(stitch.dx, c.stitch.dx);
    EXPECT_EQ(stitch.dy, c.stitch.dy);
    EXPECT_EQ(stitch.flags, c.stitch.flags);
    EXPECT_EQ(reader.Offset(), c.length);
  }
}

TEST(PecStitchTest, EncodedStreamDecodesToTheSameMoves) {
  const std::vector<test::Node> nodes = {{100, -40, 0},           {3, 4, 0},          {-70, 64, 0},
                                         {2000, -2000, STITCH_JUMP}, {0, 0, STITCH_COLORSTOP},
                                         {-1, 1, 0},              {0, 0, STITCH_JUMP}};
  Design design;
  test::SetNodes(design, nodes);
  Bytes stream;
  int changes = 0;
  for (const StitchNode& node : design.stitches) {
    if (node.IsColorStop()) ++changes;
    EncodePecStitch(stream, node, changes);
    if (changes == 0) changes = 1;
  }
  ByteReader reader(stream);
  std::vector<test::Node> decoded;
  while (!reader.AtEnd()) {
    const PecStitch stitch = DecodePecStitch(reader);
    decoded.emplace_back(stitch.dx, stitch.dy, stitch.flags);
  }
  // The first node reads back as a jump.
  std::vector<test::Node> expected = nodes;
  std::get<2>(expected[0]) = STITCH_JUMP;
  EXPECT_EQ(decoded, expected);
}

TEST(PecStitchTest, TruncatedStreamStopsAtTheEnd) {
  const Bytes bytes = {0x90};
  ByteReader reader(bytes);
  DecodePecStitch(reader);
  EXPECT_TRUE(reader.AtEnd());
  EXPECT_FALSE(reader.Ok());
}

}  // namespace
}  // namespace fennick
