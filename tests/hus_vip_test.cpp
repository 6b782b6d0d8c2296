#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>

#include "archive/gl_engine.h"
#include "core/byte_cursor.h"
#include "formats/hus.h"
#include "formats/hus_vip_streams.h"
#include "formats/vip.h"
#include "tests/test_support.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

using Reader = bool (*)(Design&, std::span<const uint8_t>);
using Writer = int (*)(Design&, std::vector<uint8_t>&);

bool ReadNamed(Reader read, Design& design, std::span<const uint8_t> bytes, const std::string& name) {
  design.name = name;
  return read(design, bytes);
}

// The three streams of a written file, unpacked.
std::vector<std::vector<uint8_t>> Streams(const std::vector<uint8_t>& file) {
  ByteReader header(file, 20);
  const size_t offsets[] = {header.U32LE(), header.U32LE(), header.U32LE(), file.size()};
  std::vector<std::vector<uint8_t>> streams(3);
  for (size_t i = 0; i < 3; ++i) {
    const std::span<const uint8_t> packed = std::span(file).subspan(offsets[i], offsets[i + 1] - offsets[i]);
    EXPECT_TRUE(GlExpand(packed, 0, -1, streams[i]).Ok());
  }
  return streams;
}

// A one-colour HUS file of `count` stitches around streams packed at level 0.
std::vector<uint8_t> HandMadeHus(uint32_t count, const std::vector<std::vector<uint8_t>>& streams) {
  std::vector<uint8_t> file;
  WriteHusVipHeader(file, 0x00C8AF5B, 1, Design());
  ByteWriter writer(file);
  writer.PatchU32LE(4, count);
  writer.U16LE(0);
  for (size_t i = 0; i < 3; ++i) {
    std::vector<uint8_t> packed;
    int level = 0;
    EXPECT_TRUE(GlCompress(streams[i], 0, false, packed, level).Ok());
    writer.PatchU32LE(20 + 4 * i, static_cast<uint32_t>(file.size()));
    writer.Bytes(packed);
  }
  return file;
}

TEST(HusWriter, GoldenHeaderStreamsAndNodes) {
  Design design = test::DesignOf({{5, -3, 0}, {10, 0, STITCH_JUMP}, {2, 2, STITCH_COLORSTOP}, {300, 0, 0}, {-130, -1, 0}});
  design.name = "rose.hus";
  design.threads = {DefaultPaletteColor(3), ThreadColor{}};
  design.threads[1].rgb = ColorRef(0, 0, 250);  // nearest: 1, Blue
  design.maxX = 100, design.maxY = 50, design.minX = -100, design.minY = -50;
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteHusFile(design, out), 0);
  // Jump anchored by a zero stitch; the moving change split into a stop and
  // its move; 300 cut into 127, 127 (jumps) and 46; -130 into -127 and -3.
  const std::vector<test::Node> nodes = {{5, -3, 0},    {10, 0, STITCH_JUMP},   {0, 0, 0},
                                         {0, 0, STITCH_COLORSTOP}, {2, 2, 0},  {127, 0, STITCH_JUMP},
                                         {127, 0, STITCH_JUMP},    {46, 0, 0}, {-127, -1, STITCH_JUMP},
                                         {-3, 0, 0}};
  EXPECT_EQ(test::Nodes(design), nodes);
  const std::vector<uint8_t> head = {0x5B, 0xAF, 0xC8, 0x00, 10, 0, 0, 0, 2, 0, 0, 0,
                                     100, 0, 50, 0, 0x9C, 0xFF, 0xCE, 0xFF, 46, 0, 0, 0};
  ASSERT_GT(out.size(), 46u);
  EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 24), head);
  EXPECT_EQ(std::vector<uint8_t>(out.begin() + 32, out.begin() + 46),
            (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 1, 0}));
  const auto streams = Streams(out);
  EXPECT_EQ(streams[0], (std::vector<uint8_t>{0x80, 0x81, 0x80, 0x84, 0x80, 0x81, 0x81, 0x80, 0x81, 0x80}));
  EXPECT_EQ(streams[1], (std::vector<uint8_t>{5, 10, 0, 0, 2, 127, 127, 46, 0x81, 0xFD}));
  EXPECT_EQ(streams[2], (std::vector<uint8_t>{0xFD, 0, 0, 0, 2, 0, 0, 0, 0xFF, 0}));
}

TEST(VipWriter, GoldenHeaderTablesAndSplit) {
  const ThreadColor row = ChartByNumber(3)[5];
  Design design;
  design.name = "rose.vip";
  design.threads = {row};
  design.threads[0].chartIndex = 3;
  design.threads[0].rgb = row.rgb;
  test::SetNodes(design, {{300, 0, 0}, {1, 1, 0}});
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteVipFile(design, out), 0);
  // 300 splits at 120 into three jumps of 100, and stays as a zero stitch.
  EXPECT_EQ(test::Nodes(design),
            (std::vector<test::Node>{
                {100, 0, STITCH_JUMP}, {100, 0, STITCH_JUMP}, {100, 0, STITCH_JUMP}, {0, 0, 0}, {1, 1, 0}}));
  ASSERT_GE(out.size(), 60u);
  ByteReader reader(out);
  EXPECT_EQ(reader.U32LE(), 0x0190FC5Du);
  EXPECT_EQ(reader.U32LE(), 5u);
  EXPECT_EQ(reader.U32LE(), 1u);
  reader.Seek(20);
  EXPECT_EQ(reader.U32LE(), 60u);  // one thread: 52 + 8
  reader.Seek(42);
  EXPECT_EQ(reader.U32LE(), 54u);  // 46 + 8
  // Scrambled by hand: key bytes 2E AC 48 27, running xor of r, g, b.
  const uint8_t r = row.rgb & 0xFF, g = (row.rgb >> 8) & 0xFF, b = (row.rgb >> 16) & 0xFF;
  const std::vector<uint8_t> table = {static_cast<uint8_t>(r ^ 0x2E), static_cast<uint8_t>(g ^ 0xAC ^ r),
                                      static_cast<uint8_t>(b ^ 0x48 ^ r ^ g), static_cast<uint8_t>(0x27 ^ r ^ g ^ b),
                                      2, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(std::vector<uint8_t>(out.begin() + 46, out.begin() + 60), table);
  EXPECT_EQ(Streams(out)[0], (std::vector<uint8_t>{0x81, 0x81, 0x81, 0x80, 0x80}));
}

TEST(HusVipWriter, RefusalsAndTheirMessages) {
  test::Messages messages;
  Design design;
  design.name = "C:\\designs\\rose.pes";
  test::SetNodes(design, {{1, 1, 0}});
  std::vector<uint8_t> out{1};
  EXPECT_EQ(WriteHusFile(design, out), -1);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(WriteVipFile(design, out), -1);
  EXPECT_EQ(messages.lines,
            std::vector<std::string>{"C:\\designs\\rose.pes: Could not create HUS file due to lack of color information."});
  design.threads.resize(1);
  design.stitches.Clear();
  EXPECT_EQ(WriteVipFile(design, out), -1);
}

// One stitch repeated packs best of all: far more stitches than file bytes,
// which the stitch count of the header must allow. (Other designs are held to
// their bytes by the golden tests and the sample conversions.)
TEST(HusVipRoundTrip, ARepeatedStitchPacksFarBelowItsCountAndReadsBack) {
  std::vector<test::Node> nodes(60000, test::Node{2, 1, 0});
  nodes[30000] = {0, 0, STITCH_COLORSTOP};
  nodes.push_back({0, 0, STITCH_COLORSTOP});
  for (const auto& [read, write, name] : {std::tuple<Reader, Writer, const char*>{ReadHusFile, WriteHusFile, "a.hus"},
                                          {ReadVipFile, WriteVipFile, "a.vip"}}) {
    Design design = test::DesignOf(nodes);
    design.name = name;
    design.threads.resize(3, DefaultPaletteColor(12));
    design.ComputeBounds();
    std::vector<uint8_t> out;
    ASSERT_EQ(write(design, out), 0);
    ASSERT_LT(out.size() * 64, nodes.size()) << "expected a file that packs well, got " << out.size();
    const Design back = test::ReadBytes(read, out, name);
    EXPECT_EQ(test::NeedlePath(back).size(), 59999u) << name;
    EXPECT_EQ(back.threads.size(), 3u) << name;
  }
}

TEST(HusReader, ColoursAfterThe28thReadAsBlackAndLateBitsMakeJumps) {
  Design design;
  design.name = "many.hus";
  design.threads.assign(30, DefaultPaletteColor(12));
  for (int i = 0; i < 29; ++i) design.stitches.PushBack(0, 0, STITCH_COLORSTOP), design.stitches.PushBack(1, 0, 0);
  std::vector<uint8_t> out;
  ASSERT_EQ(WriteHusFile(design, out), 0);
  const Design read = test::ReadBytes(ReadHusFile, out, "many.hus");
  ASSERT_EQ(read.threads.size(), 30u);
  EXPECT_EQ(read.threads[27].colorName, "White");
  EXPECT_EQ(read.threads[28].colorName, "Black");
  EXPECT_EQ(read.threads[29].colorName, "Black");

  // Bits 1 and 3, which this writer never sets, make the next node a jump.
  for (const uint8_t bit : {0x02, 0x08}) {
    const std::vector<uint8_t> file =
        HandMadeHus(3, {{0x80, static_cast<uint8_t>(0x80 | bit), 0x80}, {1, 2, 90}, {0, 0, 0}});
    const Design bits = test::ReadBytes(ReadHusFile, file, "bits.hus");
    // (1, 0), (2, 0), jump (90, 0); centring puts a jump in front.
    const std::vector<test::Node> nodes = test::Nodes(bits);
    ASSERT_EQ(nodes.size(), 4u) << int{bit};
    EXPECT_EQ(nodes[3], (test::Node{90, 0, STITCH_JUMP})) << int{bit};
  }
}

TEST(VipColours, KeyMatchesItsSourceAndScrambleRoundTrips) {
  // Scrambling zeros leaves the key itself.
  std::vector<uint8_t> zeros(400, 0);
  ScrambleVipColors(zeros);
  EXPECT_EQ(zeros, test::ReadTestFile("vip_colour_key.bin"));
  std::mt19937 random(7);
  for (const size_t size : {0u, 1u, 4u, 399u, 400u, 420u}) {
    std::vector<uint8_t> bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    std::vector<uint8_t> scrambled = bytes;
    ScrambleVipColors(scrambled);
    UnscrambleVipColors(scrambled);
    EXPECT_EQ(scrambled, bytes) << size;
  }
}

TEST(HusVipReader, DamagedFilesFailCleanlyWithTheirMessage) {
  test::Messages messages;
  std::vector<uint8_t> file = test::ReadTestFile("geometric_objects.hus");
  Design design;
  EXPECT_FALSE(ReadNamed(ReadHusFile, design, test::AsReaderInput(file), ""));  // a name is needed

  struct Case {
    size_t offset;  // u32 field to overwrite
    uint32_t value;
    std::string message;
  };
  const Case cases[] = {
      {20, 0xFFFFFF, "x.hus: Failure processing command data."},
      {28, 60, "x.hus: Failure processing x-stitch data."},  // y stream before the x stream
      {4, 0x7FFFFFFF, "x.hus: The stitch count of 2147483647 is more than the file can hold."},
      {4, 100, "x.hus: Failure processing command data."},  // more output than the room for it
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> damaged = file;
    ByteWriter(damaged).PatchU32LE(c.offset, c.value);
    messages.lines.clear();
    Design read;
    EXPECT_FALSE(ReadNamed(ReadHusFile, read, test::AsReaderInput(damaged), "x.hus")) << c.message;
    EXPECT_EQ(messages.lines, std::vector<std::string>{c.message});
    EXPECT_TRUE(read.stitches.Empty() && read.threads.empty()) << c.message;
  }
  // A stream that unpacks to more than the stitch count and 10 bytes of room.
  const std::vector<uint8_t> small = {0x80, 0x80, 0x80}, large(14, 1);
  const std::pair<std::vector<std::vector<uint8_t>>, std::string> streamCases[] = {
      {{small, large, small}, "x.hus: Failure processing x-stitch data."},
      {{small, small, large}, "x.hus: Failure processing y-stitch data."},
  };
  for (const auto& [streams, message] : streamCases) {
    messages.lines.clear();
    Design read;
    EXPECT_FALSE(ReadNamed(ReadHusFile, read, test::AsReaderInput(HandMadeHus(3, streams)), "x.hus"));
    EXPECT_EQ(messages.lines, std::vector<std::string>{message});
  }
}

}  // namespace
}  // namespace fennick
