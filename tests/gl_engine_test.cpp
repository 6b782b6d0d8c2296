#include "archive/gl_engine.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "archive/gl_codes.h"
#include "core/byte_cursor.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

// Builds an expected stream bit by bit, most significant bit first.
class Bits {
 public:
  Bits& Put(int count, uint32_t value) {
    for (int i = count - 1; i >= 0; --i) bits_.push_back(((value >> i) & 1) != 0);
    return *this;
  }
  // The closing zero bits complete the last byte.
  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> bytes((bits_.size() + 7) / 8, 0);
    for (size_t i = 0; i < bits_.size(); ++i) {
      if (bits_[i]) bytes[i / 8] |= static_cast<uint8_t>(0x80 >> (i % 8));
    }
    return bytes;
  }

 private:
  std::vector<bool> bits_;
};

std::vector<uint8_t> Pack(std::span<const uint8_t> input, int level = 0) {
  std::vector<uint8_t> out;
  int usedLevel = -1;
  EXPECT_TRUE(GlCompress(input, level, false, out, usedLevel).Ok());
  EXPECT_EQ(usedLevel, level);
  return out;
}

TEST(GlCompress, HandBuiltStreams) {
  // Empty input: one block of the single symbol 510, no symbol bits.
  EXPECT_EQ(Pack({}), Bits().Put(16, 1).Put(5, 0).Put(5, 0).Put(9, 0).Put(9, 510).Put(5, 0).Put(5, 0).Bytes());

  {
    // "aaaa": literal, match of 3 at d = 0, end. C lengths 97:2, 256:1,
    // 510:2 (codes 10, 0, 11). T lengths T2:1, T3:2, T4:2 (codes 0, 10, 11).
    // Only P symbol 0 occurs (the end symbol counts as d = 0): no P bits.
    Bits bits;
    bits.Put(16, 3);
    bits.Put(5, 5).Put(3, 0).Put(3, 0).Put(3, 1).Put(2, 0).Put(3, 2).Put(3, 2);
    bits.Put(9, 511).Put(1, 0).Put(9, 97 - 20).Put(2, 3).Put(1, 0).Put(9, 158 - 20).Put(2, 2).Put(1, 0).Put(9, 253 - 20).Put(2, 3);
    bits.Put(5, 0).Put(5, 0);
    bits.Put(2, 2).Put(1, 0).Put(2, 3);
    EXPECT_EQ(Pack(test::ToBytes("aaaa")), bits.Bytes());
  }
  {
    // 300 x: a literal, a match of 256 (509), then of 43 (296), all d = 0.
    Bits bits;
    // T lengths 0, 0, 1, (skip 1 zero), 1: T 2 is code 0 and T 4 code 1.
    bits.Put(16, 4);
    bits.Put(5, 5).Put(3, 0).Put(3, 0).Put(3, 1).Put(2, 1).Put(3, 1);
    bits.Put(9, 511).Put(1, 0).Put(9, 120 - 20).Put(1, 1).Put(1, 0).Put(9, 175 - 20).Put(1, 1);
    bits.Put(1, 0).Put(9, 212 - 20).Put(1, 1).Put(1, 1);
    bits.Put(5, 0).Put(5, 0);
    bits.Put(2, 0).Put(2, 2).Put(2, 1).Put(2, 3);
    const std::vector<uint8_t> input(300, 'x');
    const std::vector<uint8_t> packed = Pack(input);
    EXPECT_EQ(packed, bits.Bytes());
    std::vector<uint8_t> out;
    EXPECT_TRUE(GlExpand(packed, 0, -1, out).Ok());
    EXPECT_EQ(out, input);
  }
}

TEST(GlCodes, DepthCappedAt16AndKraftRestored) {
  // Fibonacci counts make a chain 19 deep. Capping leaves depths 1..15 once
  // and 16 five times (sum 65,539); three fix-ups move the codes at 15 and 14
  // down, and the first-met leaves (the rarest) take the longest codes.
  std::vector<uint16_t> counts = {1, 1};
  while (counts.size() < 20) counts.push_back(static_cast<uint16_t>(counts[counts.size() - 1] + counts[counts.size() - 2]));
  std::vector<uint8_t> lengths(counts.size());
  uint16_t rootCount = 0;
  EXPECT_GE(GlMakeCodeLengths(counts, lengths, rootCount), 20);
  EXPECT_EQ(rootCount, 17710);  // F(22) - 1
  EXPECT_EQ(lengths, (std::vector<uint8_t>{16, 16, 16, 16, 16, 16, 15, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}));

  std::vector<uint32_t> codes(lengths.size());
  EXPECT_EQ(GlCanonicalCodes(lengths, codes), 65536u);
  EXPECT_EQ(codes[19], 0u);       // the one 1-bit code
  EXPECT_EQ(codes[18], 0b10u);    // then 2 bits
  EXPECT_EQ(codes[0], 0xFFFAu);   // six 16-bit codes close the space
  EXPECT_EQ(codes[5], 0xFFFFu);

  const std::vector<uint16_t> single = {0, 0, 7, 0};
  std::vector<uint8_t> singleLengths(single.size(), 9);
  EXPECT_EQ(GlMakeCodeLengths(single, singleLengths, rootCount), 2);
  EXPECT_EQ(rootCount, 7);
  EXPECT_EQ(singleLengths, (std::vector<uint8_t>{0, 0, 0, 0}));
}

std::vector<uint8_t> MakeData(int kind, size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<uint8_t> data(size);
  for (size_t i = 0; i < size; ++i) {
    switch (kind) {
      case 0: data[i] = static_cast<uint8_t>(random()); break;
      case 1: data[i] = static_cast<uint8_t>("embroidery "[i % 11] + (random() % 50 == 0)); break;
      default: {
        // Skewed like stitch moves: small values common, long codes for rare ones.
        const int value = static_cast<int>(std::geometric_distribution<int>(0.3)(random));
        data[i] = static_cast<uint8_t>(random() % 2 ? value : -value);
      }
    }
  }
  return data;
}

TEST(GlCompress, ExpandsToTheInputAtEverySize) {
  // Sizes around the first-stage margin, the symbol buffer's limit for
  // literals (about 7,255 bytes), and the window of level 0, packed and read
  // at the levels the HUS and VIP streams use: 0 and the widest, 4.
  const size_t sizes[] = {0, 1, 2, 3, 4, 259, 260, 261, 262, 517, 1023, 1024, 1025, 1300, 7250, 7256, 7262,
                          16383, 16384, 16385, 16644, 40000};
  for (int kind = 0; kind < 3; ++kind) {
    for (const size_t size : sizes) {
      const std::vector<uint8_t> input = MakeData(kind, size, static_cast<uint32_t>(size));
      const std::vector<uint8_t> packed = Pack(input);
      std::vector<uint8_t> out;
      const GlResult result = GlExpand(packed, 4, -1, out);
      EXPECT_TRUE(result.Ok()) << result.text;
      EXPECT_EQ(out, input) << "kind " << kind << ", size " << size;
      // Random bytes pack to more than they are: the file takes them as packed all the same.
      if (kind == 0 && size > 1000) {
        EXPECT_GT(packed.size(), size);
      }
    }
  }
}

TEST(GlExpand, DamagedStreamsStopCleanly) {
  const std::string internal1 = "Internal 1 error in Greenleaf Decompression routine";
  const std::string internal2 = "Internal 2 error in Greenleaf Decompression routine";
  struct Case {
    const char* what;
    std::vector<uint8_t> stream;
    int code;
    std::string text;
  };
  const Case cases[] = {
      {"T count above 19", Bits().Put(16, 1).Put(5, 20).Bytes(), -1989, internal1},
      {"T lengths that don't fill the code", Bits().Put(16, 1).Put(5, 1).Put(3, 1).Bytes(), -1989, internal1},
      {"C length above 16", Bits().Put(16, 1).Put(5, 1).Put(14, 0x3FFE).Bytes(), -1989, internal1},
      // One T symbol (length 1, no bits), four C lengths of 1: the sum is 2^17,
      // which passes the 16-bit check and overruns the table.
      {"overfull C code", Bits().Put(16, 1).Put(5, 0).Put(5, 3).Put(9, 4).Bytes(), -1989, internal2},
      {"single C symbol beyond the alphabet", Bits().Put(16, 1).Put(5, 0).Put(5, 0).Put(9, 0).Put(9, 511).Bytes(), -1989,
       internal2},
      {"nothing at all", {}, 0, ""},
      {"zeros only", std::vector<uint8_t>(64, 0), 0, ""},
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> out;
    const GlResult result = GlExpand(c.stream, 0, -1, out, 1 << 20);
    EXPECT_EQ(result.code, c.code) << c.what;
    EXPECT_EQ(result.text, c.text) << c.what;
  }

  // A limit on the output is kept to.
  const std::vector<uint8_t> input = MakeData(2, 5000, 3);
  const std::vector<uint8_t> packed = Pack(input);
  std::vector<uint8_t> out;
  const GlResult capped = GlExpand(packed, 0, -1, out, 1000);
  EXPECT_EQ(capped.code, kGlWriteError);
  EXPECT_EQ(out, std::vector<uint8_t>(input.begin(), input.begin() + 1000));
}

TEST(GlEngine, RealFilesExpandAndRepackExactly) {
  // Streams packed by another program at level 0: each unpacks to one byte
  // per stitch, and packing that again gives the same bytes.
  for (const char* name : {"geometric_objects.hus", "Star.vip"}) {
    const std::vector<uint8_t> file = test::ReadTestFile(name);
    ByteReader header(file, 4);
    const uint32_t stitches = header.U32LE();
    header.Seek(20);
    const size_t offsets[] = {header.U32LE(), header.U32LE(), header.U32LE(), file.size()};
    for (int stream = 0; stream < 3; ++stream) {
      const std::span<const uint8_t> packed =
          std::span<const uint8_t>(file).subspan(offsets[stream], offsets[stream + 1] - offsets[stream]);
      std::vector<uint8_t> out;
      ASSERT_TRUE(GlExpand(packed, 4, -1, out, stitches + 10).Ok()) << name;
      ASSERT_EQ(out.size(), stitches) << name << " stream " << stream;
      if (stream == 0) {
        EXPECT_EQ(out[0] & 0xF0, 0x80) << name;  // command bytes start from 0x80
      }
      EXPECT_EQ(Pack(out, 0), std::vector<uint8_t>(packed.begin(), packed.end())) << name << " stream " << stream;
    }
  }
}

}  // namespace
}  // namespace fennick
