#include "formats/jef.h"

#include <gtest/gtest.h>

#include <tuple>

#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

// A file as the layout gives it: only the fields the reader looks at are
// filled, the rest of the header stays zero.
Bytes JefFile(const std::vector<uint32_t>& palette, const Bytes& stream) {
  Bytes bytes(116, 0);
  ByteWriter(bytes).PatchU32LE(0, 116 + 8 * static_cast<uint32_t>(palette.size()));
  ByteWriter(bytes).PatchU32LE(24, static_cast<uint32_t>(palette.size()));
  for (const uint32_t index : palette) ByteWriter(bytes).U32LE(index);
  for (size_t i = 0; i < palette.size(); ++i) ByteWriter(bytes).U32LE(13);
  bytes.insert(bytes.end(), stream.begin(), stream.end());
  return bytes;
}

TEST(JefWriter, GoldenBytes) {
  // Red is 10; (0, 0, 10) is nearest to 1, Black; (250, 250, 250) to 51,
  // Ivory White, by 13, before 2, White, by 15.
  Design design = test::DesignOf({{10, 20, 0},
                                  {0, 0, STITCH_COLORSTOP},
                                  {300, 0, STITCH_JUMP},  // a chain of two clamped jumps and a stitch of 48
                                  {20, 0, STITCH_JUMP},   // a run of two jumps: only the last is anchored
                                  {20, 0, STITCH_JUMP},
                                  {-5, 3, 0},
                                  {2, 1, STITCH_COLORSTOP | STITCH_JUMP}},  // a stop with a move
                                 {ColorRef(255, 0, 0), ColorRef(0, 0, 10), ColorRef(250, 250, 250)});
  // The writer takes the bounds as they stand; x reaching 600 needs the big hoop.
  design.maxX = 600, design.minX = -20, design.maxY = 30, design.minY = -40;

  Bytes out;
  ASSERT_EQ(WriteJef(design, out), 0);

  // Nodes: stitch, stop, jump, jump, stitch, jump, jump, anchor, stitch, stop,
  // zero stitch, jump, anchor: N 13, J 5, so W = 3 * 3 + 13 + 5 = 27 words.
  Bytes expected;
  ByteWriter words(expected);
  for (const uint32_t value : {140u, 10u, 0u, 0u, 0u, 0u, 3u, 27u, 2u, 20u, 40u, 600u, 30u}) words.U32LE(value);
  expected.insert(expected.end(), 32, 0xFF);
  for (int copy = 0; copy < 2; ++copy) {
    for (const uint32_t value : {680u, 960u, 100u, 970u}) ByteWriter(expected).U32LE(value);
  }
  for (const uint32_t value : {10u, 1u, 51u, 13u, 13u, 13u}) ByteWriter(expected).U32LE(value);
  const Bytes stream = {
      0x80, 0x02, 0x00, 0x00,                          // opening jump
      0x0A, 0x14,                                      // (10, 20)
      0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x00, 0x00,  // pure stop
      0x80, 0x02, 0x7E, 0x00,                          // jump (126, 0)
      0x80, 0x02, 0x7E, 0x00,                          // jump (126, 0)
      0x30, 0x00,                                      // (48, 0)
      0x80, 0x02, 0x14, 0x00,                          // jump (20, 0)
      0x80, 0x02, 0x14, 0x00,                          // jump (20, 0)
      0x00, 0x00,                                      // the run's anchor
      0xFB, 0x03,                                      // (-5, 3)
      0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x00, 0x00,  // the stop split off the move
      0x00, 0x00,                                      // zero stitch behind it
      0x80, 0x02, 0x02, 0x01,                          // the stop's move, still a jump
      0x00, 0x00,                                      // its anchor
      0x80, 0x10,
  };
  expected.insert(expected.end(), stream.begin(), stream.end());
  EXPECT_EQ(out, expected);
  EXPECT_EQ(design.threads[1].chartIndex, 1);

  Design noThreads = test::DesignOf({{1, 1, 0}});
  EXPECT_EQ(WriteJef(noThreads, out), -1);
  EXPECT_TRUE(out.empty());
}

TEST(JefWriter, HoopCodeFromTheBoundsAndZerosAfterTheEnd) {
  // Centred widths of 1100 and 1098 units, in either axis; two threads and no
  // stop size the stream for one stop more than is written.
  for (const auto& [minX, maxY, hoopCode] : {std::tuple{-550, 5, 2u}, {-549, 5, 0u}, {-5, 550, 2u}, {-5, 549, 0u}}) {
    Design design = test::DesignOf({{4, 5, 0}}, {0, 0});
    design.minX = minX;
    design.maxX = -minX;
    design.minY = -maxY;
    design.maxY = maxY;
    Bytes out;
    ASSERT_EQ(WriteJef(design, out), 0);
    EXPECT_EQ(ByteReader(out, 32).U32LE(), hoopCode) << minX << ", " << maxY;
    // W = 3 * 2 + 1 node = 7 words: the opening jump, the stitch and the end take 4.
    EXPECT_EQ(ByteReader(out, 28).U32LE(), 7u);
    EXPECT_EQ(Bytes(out.begin() + 132, out.end()), (Bytes{0x80, 0x02, 0, 0, 0x04, 0x05, 0x80, 0x10, 0, 0, 0, 0, 0, 0}));
  }
}

TEST(JefReader, StreamCommandsThreadsAndEndSteps) {
  const Bytes stream = {
      0x80, 0x02, 0x05, 0x00,  // jump (5, 0), dropped as a leading move once merged
      0x03, 0x04,              // its landing stitch, swallowed by the jump
      0x02, 0x00,              // (2, 0)
      0x80, 0x01, 0x80, 0x02,  // colour change; the escape behind it is a move of (-128, 2)
      0x80, 0x03, 0x01, 0x01,  // no command: the pair is used up, (1, 1) is a stitch
      0x80, 0x01, 0x00, 0x00,  // colour change on the spot
      0x80, 0x02, 0x0A, 0x00,  // jump (10, 0) and the landing (1, 0) it swallows
      0x01, 0x00,
      0x80, 0x10,  // end
      0x7F, 0x7F,  // not read
  };
  const Design design = test::ReadBytes(ReadJef, JefFile({10, 1}, stream));
  // Two colour changes and two table entries: a third thread, "Unknown".
  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[0].colorName, "Red");
  EXPECT_EQ(design.threads[0].rgb, ColorRef(255, 0, 0));
  EXPECT_EQ(design.threads[1].colorName, "Black");
  EXPECT_EQ(design.threads[2].colorName, "Unknown");
  EXPECT_EQ(design.threads[2].rgb, 0u);
  EXPECT_FALSE(design.defaultColors);
  // After stripping, positions are (2,0) (-126,2) (-125,3) (-125,3) (-114,3):
  // centre (-62, 1), and the odd height's extra unit goes below.
  const std::vector<test::Node> expected = {{62, -2, STITCH_JUMP},        {2, 0, 0},
                                            {-128, 2, STITCH_COLORSTOP},  {1, 1, 0},
                                            {0, 0, STITCH_COLORSTOP},     {11, 0, STITCH_JUMP}};
  EXPECT_EQ(test::Nodes(design), expected);
  EXPECT_EQ((std::array{design.minX, design.maxX, design.minY, design.maxY}), (std::array{-64, 64, -2, 1}));
}

TEST(JefReader, ThreadTableMeetsTheColourChanges) {
  struct Case {
    const char* what;
    std::vector<uint32_t> palette;
    Bytes stream;
    size_t threads;
    size_t nodes;
  };
  const Case cases[] = {
      {"table longer than the changes", {10, 1, 2}, {0x01, 0x01, 0x02, 0x02, 0x80, 0x10}, 1, 3},
      {"no end mark: the pairs run to the file's end", {2}, {0x01, 0x01, 0x02, 0x02}, 1, 3},
      {"command in the last pair takes (0, 0)", {2}, {0x01, 0x01, 0x80, 0x01}, 2, 3},
      {"index outside the palette", {0}, {0x01, 0x01}, 1, 2},
  };
  for (const Case& c : cases) {
    const Design design = test::ReadBytes(ReadJef, JefFile(c.palette, c.stream), c.what);
    EXPECT_EQ(design.threads.size(), c.threads) << c.what;
    EXPECT_EQ(design.stitches.Size(), c.nodes) << c.what;
  }
  Design design;
  ReadJef(design, test::AsReaderInput(JefFile({0}, {0x01, 0x01})));
  EXPECT_EQ(design.threads[0].colorName, "");  // left as a blank thread

  // A change before the first stitch goes with its thread, so the stitches keep their own colour.
  ReadJef(design, test::AsReaderInput(JefFile({10, 1}, {0x80, 0x01, 0x00, 0x00, 0x01, 0x01, 0x02, 0x02, 0x80, 0x10})));
  ASSERT_EQ(design.threads.size(), 1u);
  EXPECT_EQ(design.threads[0].colorName, "Black");
}

TEST(JefReader, BadOffsetsAndCountsStopCleanly) {
  Bytes bytes = JefFile({10, 1}, {0x01, 0x01, 0x80, 0x01, 0x02, 0x02, 0x80, 0x10});
  Bytes farOffset = bytes;
  ByteWriter(farOffset).PatchU32LE(0, 0xFFFFFFF0u);
  Design design;
  ASSERT_TRUE(ReadJef(design, test::AsReaderInput(farOffset)));
  EXPECT_TRUE(design.stitches.Empty());
  EXPECT_EQ(design.threads.size(), 1u);

  Bytes hugeCount = bytes;
  hugeCount[24] = 0xFF;
  hugeCount[25] = 0x7F;
  ASSERT_TRUE(ReadJef(design, test::AsReaderInput(hugeCount)));
  EXPECT_EQ(design.threads.size(), 2u);

  EXPECT_FALSE(ReadJef(design, {}));
}

}  // namespace
}  // namespace fennick
