#include "formats/ph.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint32_t J = STITCH_JUMP, S = STITCH_COLORSTOP;

struct Block {
  Bytes stream;  // from the stitch cursor on
  uint8_t mirror = 0;
  int16_t offsetX = 0, offsetY = 0, boxX1 = 0, boxX2 = 0, boxY1 = 0, boxY2 = 0, angle = 0, scaleX = 0, scaleY = 0;
  std::string markers = "<-";
};

// A file laid out from the header and block tables: block header parts of 30
// and 24 bytes, no text in the marker area, and 90 bytes of zeros at the end
// so that the last marker area is not taken for a cut file.
Bytes PhFile(char layout, const std::string& version, const Bytes& colors, const std::vector<Block>& blocks) {
  const bool phb = layout == 'B';
  const size_t countField = phb ? 113 : 77;
  Bytes file{'#', 'P', 'H', static_cast<uint8_t>(layout)};
  file.insert(file.end(), version.begin(), version.end());
  file.resize(countField + 2);
  auto put = [&file](size_t at, int64_t value, int width) {
    for (int i = 0; i < width; ++i) file[at + i] = static_cast<uint8_t>(value >> (8 * i));
  };
  put(countField, static_cast<int64_t>(colors.size()), 2);
  file.insert(file.end(), colors.begin(), colors.end());
  put(phb ? 84 : 48, static_cast<int64_t>(file.size()) - (phb ? 82 : 46), 4);
  for (const Block& block : blocks) {
    const size_t b = file.size(), h = b + 32, e = h + 24, q = e + 15;
    const size_t lead = 9 + (!phb && std::stoi(version) > 3 ? 2 : 0);
    file.resize(q + 4 + lead);
    put(b, 30, 2), put(h, 24, 2), put(q, static_cast<int64_t>(lead + block.stream.size()), 4);
    file[b + 10] = block.mirror;
    put(b + 13, block.offsetX, 2), put(b + 15, block.offsetY, 2), put(b + 28, block.angle, 2);
    put(b + 18, block.boxX1, 2), put(b + 20, block.boxX2, 2), put(b + 22, block.boxY1, 2), put(b + 24, block.boxY2, 2);
    put(h + 20, block.scaleX, 2), put(h + 22, block.scaleY, 2);
    file[e + 9] = static_cast<uint8_t>(block.markers[0]);
    file[e + 10] = static_cast<uint8_t>(block.markers[1]);
    file.insert(file.end(), block.stream.begin(), block.stream.end());
  }
  file.resize(file.size() + 90);
  return file;
}

Design Read(const Bytes& file) { return test::ReadBytes(ReadPhFile, file); }

TEST(PhReader, PhcBlocksArePlacedOnTheirBoxesAndJoined) {
  Block first{.stream = {0xB0, 0x01, 0xE0, 0x01,  // lead-in pairs: skipped
                         0x90, 0x05, 0x90, 0x00,  // jump (5, 0): cleaned off the front
                         0x00, 0x00,              // stitch on the spot: cleaned off too
                         0x0A, 0x00, 0x00, 0x14,  // (10, 0), (0, -20)
                         0xFF},                   // end mark: a bogus jump, cleaned off the back
              .offsetX = 3, .offsetY = -2, .boxX1 = -30, .boxX2 = 1, .boxY1 = 7, .boxY2 = 0};
  Block second{.stream = {0x05, 0x03, 0x03, 0x00, 0xFF}, .mirror = 1, .offsetX = 40, .scaleX = 50};
  const Design design = Read(PhFile('C', "0004", {5, 20}, {first, second}));

  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Red");
  EXPECT_EQ(design.threads[0].rgb, ColorRef(237, 23, 31));
  EXPECT_EQ(design.threads[1].chartIndex, 20);
  EXPECT_EQ(design.threads[1].colorName, "Black");
  EXPECT_EQ(design.formatVersion, 1);
  // Block 1 centred: (-10, 10) jump, end (0, -10). Placement, cut towards
  // zero: x = -29/2 + 3 = -11, y = -7/2 + 2 = -1; return jump (11, 11).
  // Block 2 mirrored, x doubled, a stop on its first node: (-10, -3), (-6, 0);
  // centred by a jump (13, 3) plus x = 40; return (-37, 0), which merges with
  // nothing. The return jump of block 1 and the lead jump of block 2 merge.
  // Positions then span x -21..53, y -11..9: centre (16, -1).
  const std::vector<test::Node> expected = {{-37, 10, J}, {10, 0, 0}, {0, -20, 0}, {64, 14, J},
                                            {-10, -3, S}, {-6, 0, 0}, {-37, 0, J}};
  EXPECT_EQ(test::Nodes(design), expected);
}

TEST(PhReader, MirrorScaleAndRotationOfABlock) {
  struct Case {
    const char* what;
    char layout;
    std::string version;
    Block block;
    std::vector<test::Node> moves;  // between the lead and the return jump
  };
  // Odd sizes are balanced on the jump that centring puts in front of the
  // first block, so the stitches themselves come through untouched.
  const Bytes plain = {0x0A, 0x00, 0x05, 0x7D};  // (10, 0), (5, 3)
  const Case cases[] = {
      {"byte 1 mirrors", 'C', "0003", {.stream = plain, .mirror = 1}, {{-10, 0, 0}, {-5, 3, 0}}},
      {"byte 2 does not", 'C', "0003", {.stream = plain, .mirror = 2}, {{10, 0, 0}, {5, 3, 0}}},
      // The PHB layout starts at the cursor whatever its version.
      {"0x22 mirrors after version 6", 'B', "0007", {.stream = plain, .mirror = 0x22}, {{-10, 0, 0}, {-5, 3, 0}}},
      {"0x22 does not up to version 6", 'C', "0006", {.stream = plain, .mirror = 0x22}, {{10, 0, 0}, {5, 3, 0}}},
      // 1.5 and 0.5 times (-7, -7): -10.5 cuts to -10 and carries -0.5 into the next.
      {"scale carries the cut-off parts", 'C', "0003",
       {.stream = {0x79, 0x07, 0x79, 0x07}, .scaleX = 25, .scaleY = -25}, {{-10, -3, 0}, {-11, -4, 0}}},
      {"a positive angle turns clockwise", 'C', "0003",
       {.stream = {0x0A, 0x00, 0x00, 0x7B}, .angle = 90}, {{0, -10, 0}, {5, 0, 0}}},
  };
  for (const Case& c : cases) {
    std::vector<test::Node> nodes = test::Nodes(Read(PhFile(c.layout, c.version, {1}, {c.block})));
    ASSERT_GE(nodes.size(), 2u) << c.what;
    EXPECT_EQ(std::vector<test::Node>(nodes.begin() + 1, nodes.end() - 1), c.moves) << c.what;
  }
}

TEST(PhReader, OneMarkerIsEnoughAndNoBlockLeavesTheColours) {
  const std::pair<std::string, bool> cases[] = {{"<-", true}, {"<x", true}, {"x-", true}, {"xx", false}};
  for (const auto& [markers, read] : cases) {
    const Design design = Read(PhFile('C', "0001", {1, 2}, {{.stream = {0x0A, 0x00}, .markers = markers}}));
    EXPECT_EQ(!design.stitches.Empty(), read) << markers;
  }
  const Design design = Read(PhFile('C', "0001", {1, 2, 3}, {}));
  EXPECT_EQ(design.threads.size(), 3u);
  EXPECT_TRUE(design.stitches.Empty());
}

TEST(PhReader, BlockOfOnlyJumpsKeepsItsStopAndReturnJump) {
  const Block stitches{.stream = {0x04, 0x00, 0x00, 0x7E, 0xFF}};  // (4, 0), (0, 2)
  const Block jumps{.stream = {0x90, 0x06, 0x90, 0x00, 0xA0, 0x02, 0xA0, 0x01, 0xFF},
                    .offsetY = -3, .boxX1 = 10, .boxX2 = 21};
  const Block empty{.stream = {}, .offsetX = 5};
  // The jump (6, 0) carries the stop and stays, centred onto itself and
  // placed at (15, 3); the other jumps go. The empty block cleans nothing of
  // the block before and adds only its return jump (-5, 0), which merges.
  EXPECT_EQ(test::Nodes(Read(PhFile('C', "0001", {1, 2}, {stitches, jumps, empty}))),
            (std::vector<test::Node>{{-9, -2, J}, {4, 0, 0}, {0, 2, 0}, {0, -1, J}, {15, 3, S | J}, {-20, -3, J}}));
}

TEST(PhReader, HostileHeaderFieldsNeverBreakIt) {
  const Bytes file = test::ReadTestFile("Star.phb");
  // Every header field, block fields and the first stitches included, at its extremes.
  for (size_t at = 0; at < 0x300; ++at) {
    for (const uint8_t value : {0x7F, 0x80, 0xFF}) {
      Bytes hostile = file;
      hostile[at] = value;
      Design design;
      ASSERT_TRUE(ReadPhFile(design, test::AsReaderInput(hostile))) << at;
    }
  }
}

}  // namespace
}  // namespace fennick
