#include "formats/emd.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/zip_member.h"
#include "core/format_table.h"
#include "threads/palettes.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

std::vector<uint8_t> EmdFile(const std::vector<uint8_t>& pairs) {
  std::vector<uint8_t> bytes(50, 0x11);
  bytes.insert(bytes.end(), pairs.begin(), pairs.end());
  return bytes;
}

const std::vector<uint8_t> kTwoColours = EmdFile({
    0x05, 0x03,              // stitch (5, 3)
    0x80, 0x2A,              // colour change
    0x80, 0x80, 0x0A, 0xF6,  // jump (10, -10)
    0x80, 0x91,              // jump (0, 0)
    0x02, 0x02,              // the landing stitch, merged into the jump
    0x80, 0x33,              // no meaning: skipped
    0xFE, 0x01,              // (-2, 1)
    0x80, 0xFD,              // end
    0x01, 0x01,
});

TEST(EmdReader, PairsAndEndSteps) {
  const Design design = test::ReadBytes(ReadEmd, kTwoColours);
  // Positions (5,3) (5,3) (17,-5) (15,-4); centring inserts (-11, 1).
  const std::vector<test::Node> expected = {
      {-11, 1, STITCH_JUMP}, {5, 3, 0}, {0, 0, STITCH_COLORSTOP}, {12, -8, STITCH_JUMP}, {-2, 1, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Black");
  EXPECT_EQ(design.threads[1].colorName, "Blue");
  EXPECT_TRUE(design.defaultColors);
}

TEST(EmdReader, ThePaletteDoesNotWrap) {
  std::vector<uint8_t> pairs;
  for (int i = 0; i < 29; ++i) pairs.insert(pairs.end(), {0x01, 0x01, 0x80, 0x2A});
  pairs.insert(pairs.end(), {0x01, 0x01});
  const Design design = test::ReadBytes(ReadEmd, EmdFile(pairs));
  ASSERT_EQ(design.threads.size(), 30u);
  EXPECT_EQ(design.threads[28].colorName, "Light Brown");
  EXPECT_EQ(design.threads[29].colorName, "Light Gray");
}

TEST(EmdReader, OnlyWholePairsBehindTheHeaderAreRead) {
  for (const size_t length : {50u, 51u, 52u}) {
    std::vector<uint8_t> bytes = EmdFile({0x03, 0x04});
    bytes.resize(length);
    EXPECT_EQ(test::ReadBytes(ReadEmd, bytes).stitches.Empty(), length < 52) << length;
  }
}

TEST(EmdReader, ColourFileBesideTheDesign) {
  const uint32_t black = ColorRef(0, 0, 0), blue = ColorRef(0, 0, 255);
  const struct {
    const char* text;  // nullptr: no colour file
    uint32_t first, second;
    std::pair<const char*, const char*> names{};  // after the nearest PEC entry; unchecked when null
  } cases[] = {
      {nullptr, black, blue, {"Black", "Blue"}},
      {"2\r\n1,237,23,31\r\n2,0,0,1\r\n", ColorRef(237, 23, 31), ColorRef(0, 0, 1), {"Red", "Black"}},
      {"2\r\n1,0,0,200\r\n2,255,243,128\r\n", ColorRef(0, 0, 200), ColorRef(255, 243, 128)},
      {"1\r\n1,1,2,3\r\n2,4,5,6\r\n", ColorRef(1, 2, 3), blue},                         // the count limits
      {"2\r\n1,10,20\r\n2,4,5,6\r\n", black, blue},                                     // a missing comma stops
      {"2\r\nx,256,-1,300\r\n2,4,5,6", ColorRef(0, 255, 44), ColorRef(4, 5, 6)},        // 8 bits; no last line feed
  };
  for (const auto& c : cases) {
    test::ScratchFolder folder;
    folder.Write("rose.emd", kTwoColours);
    if (c.text != nullptr) folder.Write("rose.col", test::ToBytes(c.text));
    Design design;
    ASSERT_EQ(ReadDesignFile(design, folder.File("rose.emd")), 0);
    const std::string label = c.text != nullptr ? c.text : "no file";
    ASSERT_EQ(design.threads.size(), 2u) << label;
    EXPECT_EQ(design.threads[0].rgb, c.first) << label;
    EXPECT_EQ(design.threads[1].rgb, c.second) << label;
    EXPECT_EQ(design.defaultColors, c.text == nullptr) << label;
    if (c.names.first != nullptr) {
      EXPECT_EQ(design.threads[0].colorName + ", " + design.threads[1].colorName,
                std::string(c.names.first) + ", " + c.names.second) << label;
    }
  }
}

TEST(EmdReader, ColourFileBesideAZipMemberIsAMemberToo) {
  test::ScratchFolder folder;
  const std::string zipFile = folder.File("designs.zip");
  for (const auto& [name, bytes] : {std::pair{"sub/rose.emd", kTwoColours}, std::pair{"sub/rose.col", test::ToBytes("1\r\n1,9,8,7\r\n")}}) {
    DesignPath member;
    member.SetZipFile(zipFile);
    member.SplitName(name);
    ASSERT_EQ(WriteZipMember(member, bytes), 0);
  }
  Design design;
  ASSERT_EQ(ReadDesignFile(design, "Zip:" + zipFile + ":sub/rose.emd"), 0);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].rgb, ColorRef(9, 8, 7));
}

}  // namespace
}  // namespace fennick
