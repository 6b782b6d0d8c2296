#include "formats/dst.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/text.h"

namespace fennick {
namespace {

constexpr size_t kHeaderSize = 512;
constexpr size_t kRecordSize = 3;
constexpr uint8_t kEndMarker = 0xF3;
constexpr uint8_t kJumpBit = 0x80;
constexpr uint8_t kColorChangeBit = 0x40;
constexpr uint8_t kAlwaysSet = 0x03;
constexpr int32_t kLongestMove = 121;
// Byte 125 always becomes a space, which removes the formatted text's
// terminator when the fields have their normal widths.
constexpr size_t kForcedSpace = 125;

// Where each power of three of one axis lives in the record.
struct AxisBit {
  uint8_t byte;
  uint8_t mask;
};
struct AxisBits {
  AxisBit plus[5];   // +1, +3, +9, +27, +81
  AxisBit minus[5];  // -1, -3, -9, -27, -81
};
constexpr AxisBits kXBits{{{0, 0x01}, {1, 0x01}, {0, 0x04}, {1, 0x04}, {2, 0x04}},
                          {{0, 0x02}, {1, 0x02}, {0, 0x08}, {1, 0x08}, {2, 0x08}}};
constexpr AxisBits kYBits{{{0, 0x80}, {1, 0x80}, {0, 0x20}, {1, 0x20}, {2, 0x20}},
                          {{0, 0x40}, {1, 0x40}, {0, 0x10}, {1, 0x10}, {2, 0x10}}};
constexpr int32_t kPowers[5] = {1, 3, 9, 27, 81};

// Each bit counts on its own, so a plus and a minus bit of one power cancel:
// what a byte adds to an axis is therefore a function of that byte alone, and
// a record decodes by three look-ups an axis.
using ByteValues = std::array<std::array<std::array<int8_t, 256>, kRecordSize>, 2>;  // [axis][byte][value]
constexpr ByteValues MakeByteValues() {
  ByteValues values{};
  const AxisBits* axes[2] = {&kXBits, &kYBits};
  for (size_t axis = 0; axis < 2; ++axis) {
    for (size_t byte = 0; byte < kRecordSize; ++byte) {
      for (int value = 0; value < 256; ++value) {
        int sum = 0;
        for (int i = 0; i < 5; ++i) {
          const AxisBit plus = axes[axis]->plus[i], minus = axes[axis]->minus[i];
          if (plus.byte == byte && (value & plus.mask) != 0) sum += kPowers[i];
          if (minus.byte == byte && (value & minus.mask) != 0) sum -= kPowers[i];
        }
        values[axis][byte][static_cast<size_t>(value)] = static_cast<int8_t>(sum);
      }
    }
  }
  return values;
}
constexpr ByteValues kByteValues = MakeByteValues();

int32_t DecodeAxis(const uint8_t record[3], size_t axis) {
  const auto& values = kByteValues[axis];
  return values[0][record[0]] + values[1][record[1]] + values[2][record[2]];
}

constexpr void EncodeAxis(int32_t d, uint8_t record[3], const AxisBits& bits) {
  auto set = [record](const AxisBit& bit) { record[bit.byte] |= bit.mask; };
  // Works on the negated value, taking the largest power first.
  int64_t v = -int64_t{d};
  while (v != 0) {
    if (v >= 41) { v -= 81; set(bits.minus[4]); }
    if (v > 13) { v -= 27; set(bits.minus[3]); }
    if (v > 4) { v -= 9; set(bits.minus[2]); }
    if (v > 1) { v -= 3; set(bits.minus[1]); }
    if (v == 1) { set(bits.minus[0]); return; }
    if (v <= -41) { v += 81; set(bits.plus[4]); }
    if (v < -13) { v += 27; set(bits.plus[3]); }
    if (v < -4) { v += 9; set(bits.plus[2]); }
    if (v < -1) { v += 3; set(bits.plus[1]); }
    if (v == -1) { set(bits.plus[0]); return; }
  }
}

// Every move that cutting leaves, coded ahead of time: a record is then three
// look-ups an axis instead of a loop of tests.
using AxisCodes = std::array<std::array<uint8_t, kRecordSize>, 2 * kLongestMove + 1>;
constexpr AxisCodes MakeAxisCodes(const AxisBits& bits) {
  AxisCodes codes{};
  for (int32_t d = -kLongestMove; d <= kLongestMove; ++d) {
    EncodeAxis(d, codes[static_cast<size_t>(d + kLongestMove)].data(), bits);
  }
  return codes;
}
constexpr AxisCodes kXCodes = MakeAxisCodes(kXBits);
constexpr AxisCodes kYCodes = MakeAxisCodes(kYBits);

void EncodeMove(int32_t d, uint8_t record[3], const AxisBits& bits, const AxisCodes& codes) {
  if (d < -kLongestMove || d > kLongestMove) return EncodeAxis(d, record, bits);
  const auto& code = codes[static_cast<size_t>(d + kLongestMove)];
  for (size_t i = 0; i < kRecordSize; ++i) record[i] |= code[i];
}

// The 512 header bytes: spaces, overwritten by the formatted text and its
// terminator. A long label pushes the fields on; what would pass the header is
// cut, as the records would overwrite it anyway.
std::vector<uint8_t> Header(const Design& design) {
  const std::string label = DesignPath(design.name).GetStem();
  std::string text = FormatText("LA:%-16s\rST:%7zu\rCO:%3zu\r+X:%5d\r-X:%5lld\r+Y:%5d\r-Y:%5lld\r"
                                "AX:+    0\rAY:+    0\rMX:+    0\rMY:+    0\rPD:******\r%c",
                                label.c_str(), design.stitches.Size(), design.threads.size(), design.maxX,
                                std::llabs(design.minX), design.maxY, std::llabs(design.minY), 26);
  text.push_back('\0');  // the terminator lands in the header too
  std::vector<uint8_t> header(kHeaderSize, ' ');
  std::copy_n(text.begin(), std::min(text.size(), kHeaderSize), header.begin());
  header[kForcedSpace] = ' ';
  return header;
}

}  // namespace

bool ReadDst(Design& design, std::span<const uint8_t> bytes) {
  design.Clear();
  design.defaultColors = true;
  design.threads.push_back(DefaultPaletteColor(0));
  if (bytes.size() > kHeaderSize + kRecordSize) {
    design.stitches.Reserve((bytes.size() - kHeaderSize) / kRecordSize);
    ByteReader reader(bytes, kHeaderSize);
    // Records stop where the next one would reach the added zero byte.
    while (reader.Offset() < bytes.size() - kRecordSize) {
      const std::span<const uint8_t> view = reader.Bytes(kRecordSize);
      const uint8_t record[3] = {view[0], view[1], view[2]};
      if (record[2] == kEndMarker) break;
      if (record[2] & kColorChangeBit) {
        design.AppendThread(DefaultPaletteColor(DefaultPaletteIndex(design.threads.size())));
      }
      design.stitches.PushBack(DecodeAxis(record, 0), DecodeAxis(record, 1),
                               (record[2] & kJumpBit) ? STITCH_JUMP : 0);
    }
  }
  if (StitchNode* tail = design.stitches.Tail()) tail->flags &= ~STITCH_COLORSTOP;
  design.MergeJumps(false);
  design.CentreOnCurrentBounds();
  return true;
}

int WriteDst(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.stitches.Empty()) return -1;
  design.Centre();
  design.SplitLongStitches(kLongestMove, 0, false);
  design.stitches.PushFront(0, 0, 0);

  out.reserve(kRecordSize * design.stitches.Size() + kHeaderSize + kRecordSize);
  ByteWriter writer(out);
  writer.Bytes(Header(design));
  for (const StitchNode& node : design.stitches) {
    uint8_t record[3] = {0, 0, 0};
    EncodeMove(node.dx, record, kXBits, kXCodes);
    EncodeMove(node.dy, record, kYBits, kYCodes);
    if (node.flags & STITCH_JUMP) record[2] |= kJumpBit;
    if (node.flags & STITCH_COLORSTOP) record[2] |= kJumpBit | kColorChangeBit;
    record[2] |= kAlwaysSet;
    // Byte by byte: a three-byte insert costs a copy call per record.
    for (const uint8_t byte : record) writer.U8(byte);
  }
  const uint8_t end[3] = {0, 0, kEndMarker};
  writer.Bytes(end);
  return 0;
}

}  // namespace fennick
