#include "formats/xxx.h"

#include <array>
#include <cstdlib>

#include "core/byte_cursor.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

constexpr size_t kHeaderSize = 256;
constexpr size_t kTrailerOffsetField = 252;
constexpr size_t kTrailerColorOffset = 7;  // from the start of the trailer
constexpr size_t kColorSlots = 15;

constexpr int kLongStitch = 0x7D;
constexpr int kLongJump = 0x7E;
constexpr int kEscape = 0x7F;
constexpr int kEndCode = 0x18;
constexpr uint8_t kColorChangeCode = 0x08;
constexpr uint8_t kShortJumpCode = 0x01;
constexpr uint8_t kJumpCodeMask = 0x57;
constexpr int32_t kShortLimit = 124;  // moves below this in both axes fit one byte

constexpr std::array<uint8_t, 96> kTrailerTemplate{
    0x7f, 0x7f, 0x03, 0x14, 0x00, 0x00, 0x00, 0xda, 0x5d, 0x7e, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00,
    0x80, 0x80, 0x00, 0x80, 0x00, 0x00, 0x00, 0xc8, 0x00, 0xc8, 0x00, 0xe8, 0xe4, 0x00, 0x00, 0x40,
    0xc4, 0x50, 0x00, 0xff, 0xff, 0x00, 0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0xff, 0x00, 0x00, 0xff,
    0x00, 0x80, 0x00, 0x00, 0xff, 0xff, 0x00, 0x40, 0x6c, 0xd8, 0x00, 0x38, 0xbc, 0x40, 0x00, 0x40,
    0xa4, 0xb0, 0x00, 0xe8, 0x74, 0x50, 0x00, 0xb8, 0x28, 0xb8, 0x00, 0xd0, 0xbc, 0x70, 0x00, 0xb8,
    0xd8, 0x28, 0x00, 0x70, 0x44, 0xd0, 0x00, 0x83, 0x83, 0x83, 0x00, 0xff, 0xff, 0xff, 0x00, 0x01};


// Which colour slot a change selects: the change's own number up to 14, then
// a cycle of eight unless the code names a slot itself.
size_t ColorSlot(int counter, int code) {
  if (counter < static_cast<int>(kColorSlots)) return static_cast<size_t>(counter);
  if (code >= 9 && code <= 19) return static_cast<size_t>(code - 9);
  if (code >= 25 && code <= 27) return static_cast<size_t>(code - 14);
  return static_cast<size_t>((counter + 1) % 8);
}

bool IsColorChange(int code) { return (code >= 8 && code <= 22) || (code >= 25 && code <= 27); }

}  // namespace

bool ReadXxx(Design& design, std::span<const uint8_t> bytes) {
  design.Clear();
  if (bytes.empty()) return false;
  ByteReader reader(bytes, kTrailerOffsetField);
  const int64_t trailer = reader.U32LE();

  // Slots past the end of the data repeat the last colour read.
  std::array<ThreadColor, kColorSlots> colors;
  uint8_t r = 0, g = 0, b = 0;
  for (size_t i = 0; i < kColorSlots; ++i) {
    ByteReader entry(bytes, static_cast<size_t>(trailer) + kTrailerColorOffset + 4 * i);
    if (entry.Ok() && entry.Has(4)) {
      r = entry.U8();
      g = entry.U8();
      b = entry.U8();
    }
    const ThreadColor* row = NearestChartRow(ReferenceChart(), ColorRef(r, g, b));
    colors[i] = row != nullptr ? *row : ThreadColor{};
  }
  design.threads.push_back(colors[0]);
  design.threads.back().stitchCount = 1;

  // The last four bytes before the trailer are deliberately never read.
  const int64_t streamEnd = trailer - 4;
  const int64_t size = static_cast<int64_t>(bytes.size());
  if (size > static_cast<int64_t>(kHeaderSize)) {
    design.stitches.Reserve(static_cast<size_t>(size - static_cast<int64_t>(kHeaderSize)) / 2);
  }
  int counter = 0;
  reader.Seek(kHeaderSize);
  while (reader.Ok() && static_cast<int64_t>(reader.Offset()) < streamEnd && reader.Has(2)) {
    const int8_t a = reader.S8();
    const int8_t second = reader.S8();
    int32_t dx = a, dy = second;
    uint32_t flags = 0;
    if (a == kLongStitch || a == kLongJump) {
      if (a == kLongJump) flags = STITCH_JUMP;
      // The code takes one byte; the two 16-bit values follow it.
      reader.Seek(reader.Offset() - 1);
      if (static_cast<int64_t>(reader.Offset()) >= size - 2) {
        dx = dy = 0;
        reader.Skip(2);
      } else {
        dx = reader.S16LE();
        dy = reader.S16LE();
        if (!reader.Ok()) break;
      }
    } else if (a == kEscape && second == kEndCode) {
      break;
    } else if (a == kEscape && IsColorChange(second)) {
      ++counter;
      design.threads.push_back(colors[ColorSlot(counter, second)]);
      flags = STITCH_COLORSTOP;
      dx = dy = 0;
    } else if (a == kEscape && (second & kJumpCodeMask) != 0) {
      flags = STITCH_JUMP;
      if (!reader.Has(2)) break;
      dx = reader.S8();
      dy = reader.S8();
    }
    design.stitches.PushBack(dx, dy, flags);
  }
  design.MergeJumps(false);
  design.ReclassifyJumps();
  design.Centre();
  return true;
}

int WriteXxx(Design& design, std::vector<uint8_t>& out) {
  out.reserve(kHeaderSize + 5 * design.stitches.Size() + kTrailerTemplate.size());
  ByteWriter writer(out);
  // Header fields keep the low 16 bits of each value; the rest is zero, the
  // trailer's offset too until the stream is written.
  out.assign(kHeaderSize, 0);
  writer.PatchU16LE(23, static_cast<uint16_t>(design.stitches.Size()));
  writer.PatchU16LE(39, static_cast<uint16_t>(design.threads.size()));
  writer.PatchU16LE(45, static_cast<uint16_t>(std::llabs(design.minX) + design.maxX));
  writer.PatchU16LE(47, static_cast<uint16_t>(std::llabs(design.minY) + design.maxY));

  for (StitchNode& node : design.stitches) {
    const int64_t adx = std::llabs(node.dx), ady = std::llabs(node.dy);
    if (node.IsColorStop()) {
      writer.U8(kEscape);
      writer.U8(kColorChangeCode);
      writer.U16LE(0);
    }
    if (node.IsJump()) {
      if (adx < kShortLimit && ady < kShortLimit) {
        writer.U8(kEscape);
        writer.U8(kShortJumpCode);
        writer.U8(static_cast<uint8_t>(node.dx));
        writer.U8(static_cast<uint8_t>(node.dy));
      } else {
        writer.U8(kLongJump);
        writer.S16LE(static_cast<int16_t>(node.dx));
        writer.S16LE(static_cast<int16_t>(node.dy));
      }
    } else if (!node.IsColorStop()) {
      if (adx >= kShortLimit || ady >= kShortLimit) {
        writer.U8(kLongStitch);
        writer.S16LE(static_cast<int16_t>(node.dx));
        writer.S16LE(static_cast<int16_t>(node.dy));
        node.flags |= STITCH_JUMP;
      } else {
        writer.U8(static_cast<uint8_t>(node.dx));
        writer.U8(static_cast<uint8_t>(node.dy));
      }
    }
  }
  const size_t streamLength = out.size() - kHeaderSize;

  std::array<uint8_t, kTrailerTemplate.size()> trailer = kTrailerTemplate;
  for (size_t i = 0; i < design.threads.size() && i < kColorSlots; ++i) {
    const uint32_t rgb = design.threads[i].rgb;
    for (size_t channel = 0; channel < 3; ++channel) {
      trailer[kTrailerColorOffset + 4 * i + channel] = static_cast<uint8_t>(rgb >> (8 * channel));
    }
  }
  writer.Bytes(trailer);

  writer.PatchU32LE(kTrailerOffsetField, static_cast<uint32_t>(kHeaderSize + streamLength));
  return 0;
}

}  // namespace fennick
