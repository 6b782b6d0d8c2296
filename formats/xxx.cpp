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

// One code of the stream, as the reader takes it.
struct Code {
  enum Kind { kNode, kColorChange, kEnd, kCutOff } kind = kNode;
  int32_t dx = 0, dy = 0;
  uint32_t flags = 0;
  int second = 0;  // a colour change's number
};

// Reads the code at the cursor; a long move cut off by the end of the data
// takes (0, 0), as the reading always has.
Code NextCode(ByteReader& reader) {
  Code code;
  const int8_t a = reader.S8();
  const int8_t second = reader.S8();
  code.dx = a;
  code.dy = second;
  code.second = second;
  if (a == kLongStitch || a == kLongJump) {
    if (a == kLongJump) code.flags = STITCH_JUMP;
    // The code takes one byte; the two 16-bit values follow it.
    reader.Seek(reader.Offset() - 1);
    if (reader.Offset() + 2 >= reader.Size()) {
      code.dx = code.dy = 0;
      reader.Skip(2);
    } else {
      code.dx = reader.S16LE();
      code.dy = reader.S16LE();
      if (!reader.Ok()) code.kind = Code::kCutOff;
    }
  } else if (a == kEscape && second == kEndCode) {
    code.kind = Code::kEnd;
  } else if (a == kEscape && IsColorChange(second)) {
    code.kind = Code::kColorChange;
    code.flags = STITCH_COLORSTOP;
    code.dx = code.dy = 0;
  } else if (a == kEscape && (second & kJumpCodeMask) != 0) {
    code.flags = STITCH_JUMP;
    if (!reader.Has(2)) return Code{Code::kCutOff};
    code.dx = reader.S8();
    code.dy = reader.S8();
  }
  return code;
}

// Where the stream ends by its own codes: at its end code, at the 7F 7F that
// starts the trailer, or where the codes run out.
size_t OwnStreamEnd(std::span<const uint8_t> bytes) {
  ByteReader reader(bytes, kHeaderSize);
  while (reader.Ok() && reader.Has(2)) {
    const size_t at = reader.Offset();
    if (bytes[at] == kEscape && (bytes[at + 1] == kEndCode || bytes[at + 1] == kEscape)) return at;
    if (NextCode(reader).kind == Code::kCutOff) return at;
  }
  return reader.Offset();
}

// The first 7F 7F from `from` on, or the end of the data.
size_t TrailerFrom(std::span<const uint8_t> bytes, size_t from) {
  for (size_t at = from; at + 1 < bytes.size(); ++at) {
    if (bytes[at] == kEscape && bytes[at + 1] == kEscape) return at;
  }
  return bytes.size();
}

}  // namespace

bool ReadXxx(Design& design, std::span<const uint8_t> bytes) {
  design.Clear();
  if (bytes.empty()) return false;
  ByteReader reader(bytes, kTrailerOffsetField);
  const int64_t trailerField = reader.U32LE();
  // An offset that does not point past the stitch data inside the file (some
  // writers leave it 0) is deliberately not followed: the stream then ends by
  // its own codes, and the colours come from the trailer that follows it.
  const size_t ownEnd = OwnStreamEnd(bytes);
  const bool trusted =
      trailerField >= static_cast<int64_t>(ownEnd) && trailerField <= static_cast<int64_t>(bytes.size());
  const int64_t trailer = trusted ? trailerField : static_cast<int64_t>(TrailerFrom(bytes, ownEnd));

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

  // The last four bytes before a trusted trailer are deliberately never read.
  const int64_t streamEnd = trusted ? trailer - 4 : static_cast<int64_t>(ownEnd);
  const int64_t size = static_cast<int64_t>(bytes.size());
  if (size > static_cast<int64_t>(kHeaderSize)) {
    design.stitches.Reserve(static_cast<size_t>(size - static_cast<int64_t>(kHeaderSize)) / 2);
  }
  int counter = 0;
  reader.Seek(kHeaderSize);
  while (reader.Ok() && static_cast<int64_t>(reader.Offset()) < streamEnd && reader.Has(2)) {
    const Code code = NextCode(reader);
    if (code.kind == Code::kCutOff || code.kind == Code::kEnd) break;
    if (code.kind == Code::kColorChange) {
      ++counter;
      design.threads.push_back(colors[ColorSlot(counter, code.second)]);
    }
    design.stitches.PushBack(code.dx, code.dy, code.flags);
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
