#include "formats/xxx.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "core/byte_cursor.h"
#include "tests/test_support.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

std::vector<uint8_t> Hex(const std::string& text) {
  std::vector<uint8_t> bytes;
  std::istringstream in(text);
  for (std::string byte; in >> byte;) bytes.push_back(static_cast<uint8_t>(std::stoul(byte, nullptr, 16)));
  return bytes;
}

// The trailer every writer starts from.
const std::vector<uint8_t> kTrailer = Hex(
    "7f 7f 03 14 00 00 00 da 5d 7e 00 00 80 00 00 00 80 80 00 80 00 00 00 c8 00 c8 00 e8 e4 00 00 40 c4 50 00 "
    "ff ff 00 00 00 00 ff 00 00 ff 00 00 ff 00 80 00 00 ff ff 00 40 6c d8 00 38 bc 40 00 40 a4 b0 00 e8 74 50 "
    "00 b8 28 b8 00 d0 bc 70 00 b8 d8 28 00 70 44 d0 00 83 83 83 00 ff ff ff 00 01");

// A file of the given stream whose trailer follows the stream directly and
// holds the given colours in its first slots.
std::vector<uint8_t> XxxFile(const std::string& stream, const std::vector<uint32_t>& colors) {
  std::vector<uint8_t> bytes(256, 0);
  const std::vector<uint8_t> codes = Hex(stream);
  bytes.insert(bytes.end(), codes.begin(), codes.end());
  const size_t trailer = bytes.size();
  ByteWriter(bytes).PatchU16LE(252, static_cast<uint16_t>(trailer));
  bytes.insert(bytes.end(), kTrailer.begin(), kTrailer.end());
  for (size_t i = 0; i < colors.size(); ++i) {
    for (size_t c = 0; c < 3; ++c) bytes[trailer + 7 + 4 * i + c] = static_cast<uint8_t>(colors[i] >> (8 * c));
  }
  return bytes;
}

TEST(XxxWriter, GoldenBytes) {
  Design design = test::DesignOf({{5, -3, STITCH_JUMP}, {10, 20, 0}, {0, 0, STITCH_COLORSTOP}, {200, 0, 0},
                                  {130, -1, STITCH_JUMP}, {3, 4, STITCH_COLORSTOP | STITCH_JUMP},
                                  {3, 4, STITCH_COLORSTOP}, {-5, 3, 0}},
                                 {ColorRef(1, 2, 3), ColorRef(250, 251, 252)});
  design.minX = -7, design.maxX = 20, design.minY = -4, design.maxY = 9;
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteXxx(design, out), 0);

  const std::vector<uint8_t> stream = Hex(
      "7f 01 05 fd  0a 14  7f 08 00 00  7d c8 00 00 00  7e 82 00 ff ff  7f 08 00 00 7f 01 03 04  "
      "7f 08 00 00  fb 03");
  std::vector<uint8_t> expected(256, 0);
  ByteWriter patch(expected);
  patch.PatchU16LE(23, 8);   // nodes
  patch.PatchU16LE(39, 2);   // threads
  patch.PatchU16LE(45, 27);  // 7 + 20
  patch.PatchU16LE(47, 13);  // 4 + 9
  patch.PatchU16LE(252, static_cast<uint16_t>(256 + stream.size()));
  expected.insert(expected.end(), stream.begin(), stream.end());
  std::vector<uint8_t> trailer = kTrailer;
  trailer[7] = 1, trailer[8] = 2, trailer[9] = 3;
  trailer[11] = 250, trailer[12] = 251, trailer[13] = 252;
  expected.insert(expected.end(), trailer.begin(), trailer.end());
  EXPECT_EQ(out, expected);
  // The long stitch is a jump from now on.
  EXPECT_EQ(test::Nodes(design)[3], (test::Node{200, 0, STITCH_JUMP}));
}

TEST(XxxWriter, OnlyFifteenColoursButEveryChange) {
  Design design;
  for (uint8_t i = 0; i < 16; ++i) {
    ThreadColor thread;
    thread.rgb = ColorRef(i, i, i);
    design.AppendThread(thread);
  }
  std::vector<uint8_t> out;
  WriteXxx(design, out);
  const size_t trailer = out.size() - 96;
  EXPECT_EQ(trailer, 256u + 16 * 4);
  EXPECT_EQ(out[trailer + 7 + 4 * 14], 14);
  // The sixteenth slot keeps the template's colour.
  EXPECT_EQ(std::vector<uint8_t>(out.begin() + trailer + 67, out.begin() + trailer + 71), Hex("e8 74 50 00"));
}

TEST(XxxReader, CodesAndEndSteps) {
  const ThreadChart chart = ReferenceChart();
  ASSERT_GE(chart.size(), 6u);
  // Stitch, short jump, long jump, landing stitch, colour change with its
  // zero pair, long stitch, end; the pair after the end is not read.
  const std::vector<uint8_t> bytes = XxxFile(
      "0a 00  7f 01 00 05  7e 00 00 c8 00  01 00  7f 08 00 00  7d 2c 01 00 00  7f 18  05 05  00 00 00 00",
      {chart[3].rgb, chart[5].rgb});
  const Design design = test::ReadBytes(ReadXxx, bytes);
  // The jumps and their landing merge into (1, 205); positions span x 10..311
  // and y 0..205, so the head jump is (-160, -102), one lower for the odd height.
  const std::vector<test::Node> expected = {{-160, -103, STITCH_JUMP}, {10, 0, 0}, {1, 205, STITCH_JUMP},
                                            {0, 0, STITCH_COLORSTOP},   {0, 0, 0},  {300, 0, 0}};
  EXPECT_EQ(test::Nodes(design), expected);
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, chart[3].colorName);
  EXPECT_EQ(design.threads[1].colorName, chart[5].colorName);
}

TEST(XxxReader, ColourSlotOfLateChanges) {
  const ThreadChart chart = ReferenceChart();
  ASSERT_GE(chart.size(), 15u);
  std::vector<uint32_t> colors;
  for (size_t i = 0; i < 15; ++i) colors.push_back(chart[i].rgb);
  // The 16th change: (16 + 1) % 8 = 1 unless the code names its slot.
  const std::vector<std::pair<std::string, size_t>> cases = {{"08", 1}, {"16", 1}, {"09", 0}, {"0c", 3},
                                                             {"13", 10}, {"19", 11}, {"1b", 13}};
  for (const auto& [code, slot] : cases) {
    std::string stream = "01 01 ";
    // Changes 1 to 14 take their own slot; the 15th, code 0a, slot 1.
    for (int i = 0; i < 15; ++i) stream += "7f 0a 00 00 ";
    stream += "7f " + code + " 00 00  01 01  00 00 00 00";
    const Design design = test::ReadBytes(ReadXxx, XxxFile(stream, colors), code);
    ASSERT_EQ(design.threads.size(), 17u) << code;
    EXPECT_EQ(design.threads[14].colorName, chart[14].colorName);
    EXPECT_EQ(design.threads[16].colorName, chart[slot].colorName) << code;
  }
}

TEST(XxxReader, ColourTableBeyondTheEndRepeatsTheLastValue) {
  const ThreadChart chart = ReferenceChart();
  std::vector<uint8_t> bytes = XxxFile("01 01 7f 08 00 00 02 02 00 00 00 00", {chart[4].rgb, chart[6].rgb});
  // Cut inside the second slot: it and all later ones repeat the first.
  const size_t trailer = bytes.size() - 96;
  bytes.resize(trailer + 7 + 4 + 2);
  const Design cut = test::ReadBytes(ReadXxx, bytes);
  ASSERT_EQ(cut.threads.size(), 2u);
  EXPECT_EQ(cut.threads[1].colorName, chart[4].colorName);
  // No table at all: every colour is the nearest to black.
  bytes.resize(trailer);
  const Design design = test::ReadBytes(ReadXxx, bytes);
  const Design black = test::ReadBytes(ReadXxx, XxxFile("01 01 7f 08 00 00 02 02 00 00 00 00", {0, 0}));
  EXPECT_EQ(design.threads[1].colorName, black.threads[1].colorName);
  EXPECT_EQ(design.stitches.Size(), black.stitches.Size());
}

TEST(XxxSamples, AnOffsetThatDoesNotPointPastTheStitchDataIsNotFollowed) {
  // Geometric_objects ends its stream with the end code, Star with the trailer.
  for (const char* name : {"geometric_objects.xxx", "Star.xxx"}) {
    const std::vector<uint8_t> file = test::ReadTestFile(name);
    const Design original = test::ReadBytes(ReadXxx, file, name);
    // None at all, into the stitch data, beyond the file.
    for (const size_t offset : {size_t{0}, size_t{300}, file.size() + 4}) {
      std::vector<uint8_t> bytes = file;
      ByteWriter(bytes).PatchU32LE(252, static_cast<uint32_t>(offset));
      const Design design = test::ReadBytes(ReadXxx, bytes, name);
      ASSERT_EQ(design.threads.size(), original.threads.size()) << name << " " << offset;
      for (size_t i = 0; i < design.threads.size(); ++i) {
        EXPECT_EQ(design.threads[i].colorName, original.threads[i].colorName) << name << " " << offset;
      }
      EXPECT_EQ(test::FromFirst(test::NeedlePath(design)), test::FromFirst(test::NeedlePath(original)))
          << name << " " << offset;
    }
  }
}

}  // namespace
}  // namespace fennick
