#include "formats/pes.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "formats/pec.h"
#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Bytes = std::vector<uint8_t>;

// A PEC block as the layout gives it: blanks up to offset 512 but for the
// piece position and the colour list, L, the stream, and zero thumbnails.
Bytes PecBlock(const Bytes& colors, const Bytes& stream, uint8_t piece = 0x20) {
  Bytes block(528, 0x20);
  block[36] = piece;
  block[48] = static_cast<uint8_t>(colors.size() - 1);
  std::copy(colors.begin(), colors.end(), block.begin() + 49);
  ByteWriter(block).PatchU32LE(512, static_cast<uint32_t>(stream.size() + 16) << 16);  // L from 514, 3 bytes
  block[516] = 0;
  block.insert(block.end(), stream.begin(), stream.end());
  block.resize(block.size() + 228 * (colors.size() + 1), 0);
  return block;
}

// The first long node of a stream, a jump (0, 0), then one stitch and the end mark.
Bytes OneStitch(uint8_t x, uint8_t y) { return {0x90, 0x00, 0x90, 0x00, x, y, 0xFF}; }

// Header bytes of the given size starting with the signature; the blocks
// follow, and offset 8 holds where the first begins.
Bytes PesFile(const std::string& signature, Bytes header, const std::vector<Bytes>& blocks) {
  std::copy(signature.begin(), signature.end(), header.begin());
  ByteWriter(header).PatchU32LE(8, static_cast<uint32_t>(header.size()));
  for (const Bytes& block : blocks) header.insert(header.end(), block.begin(), block.end());
  return header;
}

TEST(PesReader, RealVersion70File) {
  // star.pes: PEC block at 613 with colours 5 and 29, width 591 and height
  // 623 at block offsets 520 and 522, hoop 100 by 100. Header records "800"
  // (237, 23, 31) numbered 5 and "001" (240, 240, 240) numbered 29, both
  // EMBROIDERY; the real colour list at 7353 repeats both colours.
  Design design;
  ASSERT_TRUE(test::ReadSample(ReadPesFile, design, "star.pes"));
  EXPECT_EQ(design.formatVersion, 70);
  EXPECT_EQ(std::make_pair(design.hoopWidth, design.hoopHeight), std::make_pair(100, 100));
  EXPECT_EQ(std::make_pair(design.maxX - design.minX, design.maxY - design.minY), std::make_pair(591, 623));
  EXPECT_EQ(test::CountStops(design), 1u);
  ASSERT_EQ(design.threads.size(), 2u);
  const ThreadColor &red = design.threads[0], &white = design.threads[1];
  EXPECT_EQ(std::tie(red.rgb, red.colorName, red.catalogNumber, red.brand),
            std::make_tuple(ColorRef(237, 23, 31), "Red", "800", "Embroidery"));
  EXPECT_EQ(std::tie(white.rgb, white.colorName), std::make_tuple(ColorRef(240, 240, 240), "White"));
}

TEST(PecBlockReader, EndsOnTheClosingJumpBackToTheStart) {
  // The decoder runs on past the end mark: FF and the first thumbnail byte
  // read as a long jump x of 0xF00 - 4096 = -256, the next byte as y 0. The
  // moves before it sum to (15, -5), so it becomes (-15, 5).
  const Bytes block = PecBlock({5, 29}, {0x90, 0x00, 0x90, 0x00, 0x0A, 0x05, 0x05, 0x00, 0xFF});
  Design design;
  design.threads.resize(1);
  design.threads[0].chartIndex = 13;  // an earlier block's thread takes its palette colour again
  int32_t sumX = 0, sumY = 0;
  const PecBlockInfo info = ReadPecBlock(design, test::AsReaderInput(block), 0, sumX, sumY);
  EXPECT_EQ(std::make_tuple(info.colorCount, info.stitchLength, info.closed), std::make_tuple(2, 25u, true));
  EXPECT_EQ(test::Nodes(design),
            (std::vector<test::Node>{{0, 0, STITCH_JUMP}, {10, -5, 0}, {5, 0, 0}, {-15, 5, STITCH_JUMP}}));
  EXPECT_EQ(std::make_pair(sumX, sumY), std::make_pair(0, 0));
  ASSERT_EQ(design.threads.size(), 3u);
  EXPECT_EQ(design.threads[0].rgb, ColorRef(255, 255, 0));  // 13, Yellow
  EXPECT_EQ(design.threads[1].rgb, ColorRef(237, 23, 31));
  EXPECT_EQ(design.threads[2].colorName, "White");
}

TEST(PecBlockReader, StitchesNeedALongEnoughLAndTheBytesItClaims) {
  struct Case {
    const char* what;
    void (*change)(Bytes&);
    size_t nodes;
  };
  const Case cases[] = {
      {"L past the end", [](Bytes& b) { b[515] = 0x10; }, 0},       // L of 4096 + 23
      {"cut inside a stitch", [](Bytes& b) { b.resize(533); }, 1},  // the first jump closes the block
      {"cut after a stitch", [](Bytes& b) { b.resize(534); }, 3},   // two nodes and a closing jump
  };
  for (const Case& c : cases) {
    Bytes block = PecBlock({1}, OneStitch(10, 5));
    c.change(block);
    Design design;
    int32_t sumX = 0, sumY = 0;
    ReadPecBlock(design, block, 0, sumX, sumY);
    EXPECT_EQ(design.stitches.Size(), c.nodes) << c.what;
    EXPECT_EQ(design.threads.size(), 1u) << c.what;
  }
}

TEST(PesReader, JoinsBlocksAtTheirPiecePositions) {
  Bytes header(16, 0);
  header[12] = 2;  // blocks
  const Bytes file =
      PesFile("#PES0030", header, {PecBlock({5}, OneStitch(0x0A, 0x00), 0), PecBlock({29}, OneStitch(0x00, 0x0A), 2)});
  const Design design = test::ReadBytes(ReadPesFile, file);
  // Piece 0 lifts the first block by 600: jump (0, 600), stitch (10, 0),
  // then the join's stop. The second block starts with the first one's
  // closing move (-10, 0), 600 down to undo piece 0 and 600 more for its own
  // piece 2: jump (-10, -1200), then (0, -10), then a stop that ends up as
  // the tail and loses its flag. Positions span x 0..10 and y -610..600, so
  // centring moves everything by (-5, 5).
  EXPECT_EQ(test::Nodes(design), (std::vector<test::Node>{{-5, 605, STITCH_JUMP}, {10, 0, 0}, {0, 0, STITCH_COLORSTOP},
                                                          {-10, -1200, STITCH_JUMP}, {0, -10, 0}, {0, 0, 0}}));
  ASSERT_EQ(design.threads.size(), 2u);
  EXPECT_EQ(design.threads[0].colorName, "Red");
  EXPECT_EQ(design.threads[1].colorName, "White");
}

TEST(PesReader, HoopFieldsTurnTheDesign) {
  struct Case {
    const char* signature;
    size_t hoopOffset;
    uint16_t width, height;
    int rotation;
    bool hoopRead;
  };
  // Versions 40 and on keep the hoop behind five empty strings and one (or,
  // from 60, two) skipped words. Version 10 has no hoop.
  const Case cases[] = {
      {"#PES0020", 12, 180, 130, -1, true}, {"#PES0030", 16, 130, 180, 0, true}, {"#PES0040", 23, 200, 300, 1, true},
      {"#PES0040", 23, 130, 50, 0, true},   {"#PES0060", 25, 200, 300, 1, true}, {"#PES0010", 12, 180, 130, 0, false},
  };
  for (const Case& c : cases) {
    Bytes header(100, 0);
    header[12] = 1;  // blocks, for versions 25 and on
    ByteWriter(header).PatchU16LE(c.hoopOffset, c.width);
    ByteWriter(header).PatchU16LE(c.hoopOffset + 2, c.height);
    const Design design = test::ReadBytes(ReadPesFile, PesFile(c.signature, header, {PecBlock({1}, OneStitch(10, 0))}));
    EXPECT_EQ(design.hoopRotation, c.rotation) << c.signature << " " << c.width << "x" << c.height;
    // The stitch (10, 0) after the head jump, turned by the rotation.
    const test::Node turned = c.rotation == 0 ? test::Node{10, 0, 0} : test::Node{0, -10 * c.rotation, 0};
    EXPECT_EQ(test::Nodes(design).at(1), turned) << c.signature << " " << c.width << "x" << c.height;
    EXPECT_EQ(design.hoopWidth + design.hoopHeight, c.hoopRead ? c.width + c.height : 0) << c.signature;
  }
}

TEST(PesReader, HeaderStringsAreWalkedWithAWrappingCursor) {
  Bytes header(300, 0);
  header[12] = 1;
  // "File Name" is 240 bytes from 17 on, so the cursor wraps to 1: "Category"
  // takes its length from the signature's "P" (80) and its text from 2 on,
  // "ES0040..."; it ends at 82, inside the first string, where "Author" and
  // "Search Keys" are empty and "Comment" is "hi". The hoop follows two
  // skipped bytes later, at 89.
  header[16] = 240;
  const std::string rose = "Rose";
  std::copy(rose.begin(), rose.end(), header.begin() + 17);
  header[84] = 2;
  header[85] = 'h';
  header[86] = 'i';
  ByteWriter(header).PatchU16LE(89, 200);
  ByteWriter(header).PatchU16LE(91, 300);
  const Design design = test::ReadBytes(ReadPesFile, PesFile("#PES0040", header, {PecBlock({1}, OneStitch(1, 1))}));
  auto number = [](const char* text) {
    return static_cast<uint32_t>(text[0]) | static_cast<uint32_t>(text[1]) << 8 | static_cast<uint32_t>(text[2]) << 16 |
           static_cast<uint32_t>(text[3]) << 24;
  };
  using Property = std::tuple<std::string, uint8_t, std::string, uint32_t>;
  std::vector<Property> properties;
  for (const DesignProperty& p : design.properties) properties.emplace_back(p.label, p.kind, p.value, p.number);
  EXPECT_EQ(properties, (std::vector<Property>{{"File Name", 0x28, "", number("Rose")},
                                               {"Category", 0x28, "", number("ES00")},
                                               {"Comment", 0x28, "", 'h' | 'i' << 8}}));
  EXPECT_EQ(std::make_tuple(design.hoopWidth, design.hoopHeight, design.hoopRotation), std::make_tuple(200, 300, 1));
}

TEST(PesReader, SignaturesVersionsAndOffsets) {
  const Bytes block = PecBlock({1}, OneStitch(1, 1));
  Bytes pec = {'#', 'P', 'E', 'C', '0', '0', '0', '1'};
  pec.insert(pec.end(), block.begin(), block.end());
  Bytes atLength = PesFile("#PES0001", Bytes(16, 0), {block});
  ByteWriter(atLength).PatchU16LE(8, static_cast<uint16_t>(atLength.size()));
  Bytes twoBlocks(16, 0);
  twoBlocks[12] = 2;
  Bytes longSecondBlock = block;
  longSecondBlock[515] = 0x10;  // its L reaches past the end of the file
  Bytes fourthOffsetByte = PesFile("#PES0001", Bytes(16, 0), {block});
  fourthOffsetByte[11] = 0x7F;  // the writer stores 4 bytes of the offset; 3 are read
  // Blocks without stitches: the end mark alone, or an L too short for the loop.
  const Bytes endMarkOnly = PecBlock({1}, {0xFF});
  Bytes shortL = block;
  shortL[514] = 14;
  struct Case {
    const char* what;
    Bytes bytes;
    bool read;
    int version;
    bool stitches = true;
  };
  const Case cases[] = {
      {"pec file", pec, true, 1},
      {"digits as far as they go", PesFile("#PES00A0", Bytes(16, 0), {block}), true, 0},
      {"no digits", PesFile("#PESabcd", Bytes(16, 0), {block}), true, 0},
      {"unknown signature", PesFile("#PEZ0001", Bytes(16, 0), {block}), false, 0},
      {"PEC offset at the file's length", atLength, false, 0},
      {"second block's L past the end", PesFile("#PES0030", twoBlocks, {block, longSecondBlock}), false, 0},
      {"two whole blocks", PesFile("#PES0030", twoBlocks, {block, block}), true, 30},
      {"fourth offset byte", fourthOffsetByte, true, 1},
      {"under 512 bytes", Bytes(pec.begin(), pec.begin() + 510), false, 0},
      {"no blocks", PesFile("#PES0030", Bytes(16, 0), {block}), true, 30, false},  // byte 12 counts none
      {"only the end mark", PesFile("#PES0001", Bytes(16, 0), {endMarkOnly}), true, 1, false},
      {"L too short for a stitch", PesFile("#PES0001", Bytes(16, 0), {shortL}), true, 1, false},
      {"two blocks without stitches", PesFile("#PES0030", twoBlocks, {endMarkOnly, shortL}), true, 30, false},
  };
  for (const Case& c : cases) {
    Design design;
    EXPECT_EQ(ReadPesFile(design, test::AsReaderInput(c.bytes)), c.read) << c.what;
    if (c.read) {
      EXPECT_EQ(design.formatVersion, c.version) << c.what;
      EXPECT_EQ(design.stitches.Empty(), !c.stitches) << c.what;
    }
  }
}

struct Record {
  std::string catalogNumber;
  uint8_t r, g, b;
  uint8_t kind;
  std::string description, brand, chart;
};

Bytes ThreadList(uint8_t countLow, uint8_t countHigh, const std::vector<Record>& records) {
  Bytes bytes = {countLow, countHigh};
  auto text = [&bytes](const std::string& s) {
    bytes.push_back(static_cast<uint8_t>(s.size()));
    bytes.insert(bytes.end(), s.begin(), s.end());
  };
  for (const Record& record : records) {
    text(record.catalogNumber);
    bytes.insert(bytes.end(), {record.r, record.g, record.b, 0x00, record.kind, 0x00, 0x00, 0x00});
    text(record.description);
    text(record.brand);
    text(record.chart);
  }
  return bytes;
}

TEST(PesHeaderThreads, BrandTableNamesTheRecords) {
  struct Case {
    Record record;
    const char* brand;
    int32_t chartIndex;
    const char* colorName;
  };
  const Case cases[] = {
      {{"800", 1, 2, 3, 10, "5", "embroidery", ""}, "Embroidery", 0x100, "Red"},
      {{"900", 1, 2, 3, 11, "20", "COUNTRY", ""}, "Country", 0x200, "Country Black"},
      {{"", 1, 2, 3, 10, "29", "Option Color", ""}, "PES v.4 Color", 0x100, "White"},
      {{"1001", 1, 2, 3, 1, "Pink", "SU RAYON", ""}, "Sulky Rayon", 0x1100, "Sulky Rayon 1001 Pink"},
      {{"", 1, 2, 3, 10, "Peach", "Flesh Tone(EMBROIDERY)", ""}, "Flesh Tone", 0x1200, "Flesh Tone Peach"},
      {{"101", 1, 2, 3, 10, "", "", ""}, "", 63, "Applique Pos. 101"},
      {{"7", 1, 2, 3, 0xFF, "Moss", "", ""}, "", 0, "7 Moss"},
      {{"", 1, 2, 3, 0, "Moss", "Acme", "Acme Chart"}, "Acme", 0, "Acme Moss"},
  };
  std::vector<Record> records;
  for (const Case& c : cases) records.push_back(c.record);
  Bytes bytes = {0xEE};                          // the list need not start the buffer
  const Bytes list = ThreadList(3, 5, records);  // the two count bytes are added: 8
  bytes.insert(bytes.end(), list.begin(), list.end());
  Design design;
  ReadHeaderThreads(design, bytes, 1);
  ASSERT_EQ(design.fileThreads.size(), std::size(cases));
  for (size_t i = 0; i < std::size(cases); ++i) {
    const ThreadColor& thread = design.fileThreads[i];
    EXPECT_EQ(thread.brand, cases[i].brand) << i;
    EXPECT_EQ(thread.chartIndex, cases[i].chartIndex) << i;
    EXPECT_EQ(thread.colorName, cases[i].colorName) << i;
  }
  EXPECT_EQ(design.fileThreads[6].rgb, ColorRef(1, 2, 3));
  EXPECT_EQ(design.fileThreads[6].threadKind, -1);

  // A count of 256, bytes 00 01, reads one record; a record cut short by the
  // end of the bytes is not kept.
  ReadHeaderThreads(design, ThreadList(0, 1, records), 0);
  EXPECT_EQ(design.fileThreads.size(), 1u);
  Bytes cut = ThreadList(2, 0, {records[0], records[1]});
  cut.resize(cut.size() - 5);
  ReadHeaderThreads(design, cut, 0);
  EXPECT_EQ(design.fileThreads.size(), 1u);
}

TEST(PesHeaderThreads, RealColorsTrustOnlyAListThatStartsWithTheFirstRecord) {
  const uint32_t red = ColorRef(237, 23, 31);
  struct Case {
    const char* what;
    int version;
    Bytes list;
    uint32_t first, second;
  };
  const Case cases[] = {
      {"matching list", 50, {237, 23, 31, 1, 2, 3}, red, ColorRef(1, 2, 3)},
      {"first colour differs", 60, {9, 9, 9, 1, 2, 3}, 100, 200},
      {"version below 50", 40, {237, 23, 31, 1, 2, 3}, 100, 200},
      {"list cut short", 50, {237, 23, 31, 1, 2}, red, 200},
  };
  for (const Case& c : cases) {
    Design design;
    design.formatVersion = c.version;
    design.fileThreads.resize(1);
    design.fileThreads[0].rgb = red;
    design.threads.resize(2);
    design.threads[0].rgb = 100;
    design.threads[1].rgb = 200;
    ReadRealColors(design, c.list, 0);
    EXPECT_EQ(design.threads[0].rgb, c.first) << c.what;
    EXPECT_EQ(design.threads[1].rgb, c.second) << c.what;
  }
}

TEST(PesHeaderThreads, MatchCopiesTheFirstRecordOfTheSameColour) {
  Design design;
  design.fileThreads.resize(2);
  for (ThreadColor& record : design.fileThreads) {
    record.rgb = ColorRef(1, 2, 3);
    record.brand = "Sulky Rayon";
    record.threadKind = 1;
  }
  design.fileThreads[0].colorName = "first";
  design.fileThreads[0].catalogNumber = "1001";
  design.fileThreads[1].colorName = "second";
  design.threads.resize(4);
  design.threads[0].rgb = design.threads[1].rgb = ColorRef(1, 2, 3);
  design.threads[2].colorName = "applique POS.";
  design.threads[3].colorName = "Red";
  MatchHeaderThreads(design);
  using Fields = std::tuple<std::string, std::string, std::string, int32_t, int32_t>;
  std::vector<Fields> fields;
  for (const ThreadColor& t : design.threads) {
    fields.emplace_back(t.colorName, t.catalogNumber, t.brand, t.chartIndex, t.threadKind);
  }
  // Both threads of the colour take the first record; the applique name,
  // without a record, takes its palette entry.
  EXPECT_EQ(fields, (std::vector<Fields>{{"first", "1001", "Sulky Rayon", 0, 1},
                                         {"first", "1001", "Sulky Rayon", 0, 1},
                                         {"applique POS.", "101", "EMBROIDERY", 63, 10},
                                         {"Red", "", "", 0, 0}}));
}

}  // namespace
}  // namespace fennick
