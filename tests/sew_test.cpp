#include "formats/sew.h"

#include <gtest/gtest.h>

#include <utility>

#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

// Offsets of the picture blocks: the whole design, then per colour the small
// and the large one, and the outline.
constexpr size_t kWhole = 74, kSmall = 268, kLarge = 1084, kOutline = 6102, kStream = 7544;

TEST(SewWriter, GoldenHeaderAndStream) {
  // Janome 10, Red and Janome 1, Black.
  Design design = test::DesignOf({{10, 0, 0}, {0, 0, STITCH_COLORSTOP}, {200, 0, 0}}, {ColorRef(255, 0, 0), 0});
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteSew(design, out), 0);

  // Positions x 10..210: centring puts a jump (-110, 0) at the head, the move
  // to the start point makes it (65, -100), and it gets its anchor. The long
  // stitch becomes a jump of 127 and a stitch of 73.
  const std::vector<test::Node> nodes = {{65, -100, STITCH_JUMP}, {0, 0, 0},   {10, 0, 0}, {0, 0, STITCH_COLORSTOP},
                                         {127, 0, STITCH_JUMP},    {73, 0, 0}};
  EXPECT_EQ(test::Nodes(design), nodes);
  EXPECT_EQ(design.threads[0].chartIndex, 10);
  EXPECT_EQ(design.threads[1].chartIndex, 1);

  // 2 * (2 threads + 6 nodes + 2 jumps) bytes of stream.
  ASSERT_EQ(out.size(), kStream + 20);
  std::vector<uint8_t> header(74, 0);
  ByteWriter patch(header);
  patch.PatchU16LE(0, 2);
  patch.PatchU16LE(2, 10);
  patch.PatchU16LE(4, 1);
  patch.PatchU16LE(50, 3);  // jump, anchor, stitch
  patch.PatchU16LE(52, 4);  // stop, jump, stitch, and one more
  EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 74), header);
  const std::vector<uint8_t> stream = {0x80, 0x02, 0x41, 0x9C, 0x00, 0x00, 0x0A, 0x00, 0x80, 0x01,
                                       0x00, 0x00, 0x80, 0x02, 0x7F, 0x00, 0x49, 0x00, 0x80, 0x10};
  EXPECT_EQ(std::vector<uint8_t>(out.begin() + kStream, out.end()), stream);

  // Every block drawn carries its row length and height.
  const std::vector<std::pair<size_t, std::pair<int, int>>> blocks = {
      {kWhole, {6, 32}}, {kSmall, {3, 22}}, {kSmall + 68, {3, 22}}, {kLarge, {8, 48}}, {kLarge + 386, {8, 48}},
      {kOutline, {15, 80}}};
  for (const auto& [offset, size] : blocks) {
    EXPECT_EQ(out[offset], size.first) << offset;
    EXPECT_EQ(out[offset + 1], size.second) << offset;
  }
  // The third colour's places stay empty, and nothing lies between the
  // outline and the stream.
  for (size_t i = kSmall + 2 * 68; i < kSmall + 3 * 68; ++i) EXPECT_EQ(out[i], 0) << i;
  for (size_t i = kOutline + 1200; i < kStream; ++i) EXPECT_EQ(out[i], 0) << i;
  // The renderer's marks don't stay in the design.
  for (const StitchNode& node : design.stitches) EXPECT_EQ(node.flags & ~3u, 0u);
}

// Pixel (x, y) of a picture block, most significant bit leftmost.
bool Pixel(const std::vector<uint8_t>& file, size_t block, int x, int y) {
  const size_t rowBytes = file[block];
  return (file[block + 2 + static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x / 8)] & (0x80 >> (x % 8))) != 0;
}

TEST(SewWriter, PicturesShowTheTopOfTheDesignAtTheTop) {
  // One colour: a run along the top, then down the right side. The pictures
  // keep the bounds of the centred design, so the move to the start point
  // shifts the drawing by 100 of 2000 units down.
  Design design = test::DesignOf({{0, 2000, STITCH_JUMP}, {100, 0, 0}, {100, 0, 0}, {100, 0, 0}, {100, 0, 0},
                                  {100, 0, 0}, {0, -1000, 0}, {0, -1000, 0}}, {0});
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteSew(design, out), 0);
  int top = 0, bottom = 0;
  for (int y = 0; y < 48; ++y) {
    for (int x = 0; x < 64; ++x) (y < 24 ? top : bottom) += Pixel(out, kLarge, x, y);
  }
  EXPECT_GT(top, 0);
  EXPECT_GT(top, bottom);
  // The shared block holds the same drawing.
  int whole = 0;
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 48; ++x) whole += Pixel(out, kWhole, x, y);
  }
  EXPECT_GT(whole, 0);
}

TEST(SewWriter, RefusesDesignsItCannotHold) {
  std::vector<uint8_t> out{1, 2, 3};
  Design design;
  design.threads.resize(1);
  EXPECT_EQ(WriteSew(design, out), -1);  // no stitches
  EXPECT_TRUE(out.empty());
  test::SetNodes(design, {{1, 1, 0}});
  design.threads.clear();
  EXPECT_EQ(WriteSew(design, out), -1);
  design.threads.resize(13);
  EXPECT_EQ(WriteSew(design, out), -1);
  EXPECT_EQ(test::Nodes(design), (std::vector<test::Node>{{1, 1, 0}}));
  design.threads.resize(12);
  EXPECT_EQ(WriteSew(design, out), 0);
}

std::vector<uint8_t> SewFile(const std::vector<int16_t>& palette, const std::vector<uint8_t>& stream) {
  std::vector<uint8_t> bytes(kStream, 0);
  ByteWriter patch(bytes);
  patch.PatchU16LE(0, static_cast<uint16_t>(palette.size()));
  for (size_t i = 0; i < palette.size(); ++i) patch.PatchU16LE(2 + 2 * i, static_cast<uint16_t>(palette[i]));
  bytes.insert(bytes.end(), stream.begin(), stream.end());
  return bytes;
}

TEST(SewReader, PairCodesAndEndSteps) {
  // Stitch, jump and its landing, stop, stitch, an unknown code whose pair
  // is still a move, end; the pair after the end is not read.
  const std::vector<uint8_t> bytes = SewFile(
      {10, 1, 2}, {0x0A, 0x00, 0x80, 0x02, 0x05, 0x00, 0x02, 0x00, 0x80, 0x01, 0x00, 0x00, 0x03, 0x00, 0x80, 0x07,
                   0x04, 0x00, 0x80, 0x10, 0x09, 0x09});
  const Design design = test::ReadBytes(ReadSew, bytes);
  // Positions x 10..24: the head jump is (-17, 0).
  const std::vector<test::Node> expected = {{-17, 0, STITCH_JUMP},    {10, 0, 0}, {7, 0, STITCH_JUMP},
                                            {0, 0, STITCH_COLORSTOP}, {3, 0, 0},  {4, 0, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  // Threads stay as the header lists them, one stop or not.
  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[0].colorName, "Red");
  EXPECT_EQ(design.threads[1].colorName, "Black");
  EXPECT_EQ(design.threads[2].rgb, ColorRef(255, 255, 255));

  // A change before the first stitch goes with its thread, so the stitches keep their own colour.
  const Design changed = test::ReadBytes(ReadSew, SewFile({10, 1, 2}, {0x80, 0x01, 0x00, 0x00, 0x0A, 0x00, 0x80, 0x10}));
  ASSERT_EQ(changed.threads.size(), 2u);
  EXPECT_EQ(changed.threads[0].colorName, "Black");
}

TEST(SewReader, ShortFilesHaveThreadsButNoStitches) {
  // The buffer counts the added zero: one pair is read only from a file of
  // 7546 bytes on. The stitch count shown never goes below 0, though the
  // threads outnumber the nodes.
  const struct {
    size_t length, nodes;
    int64_t shown;
  } cases[] = {{7544, 0, 0}, {7545, 0, 0}, {7546, 2, 0}, {7548, 3, 1}};
  for (const auto& [length, nodes, shown] : cases) {
    std::vector<uint8_t> bytes = SewFile({10, 1, 2}, {0x05, 0x00, 0x06, 0x00, 0x07, 0x00});
    bytes.resize(length);
    const Design design = test::ReadBytes(ReadSew, bytes);
    EXPECT_EQ(design.threads.size(), 3u) << length;
    EXPECT_EQ(design.stitches.Size(), nodes) << length;
    EXPECT_EQ(design.DisplayedStitchCount(), shown) << length;
  }
}

}  // namespace
}  // namespace fennick
