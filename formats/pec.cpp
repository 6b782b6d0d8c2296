#include "formats/pec.h"

#include <algorithm>

#include "threads/palettes.h"

namespace fennick {
namespace {

constexpr uint8_t kLongForm = 0x80;
constexpr uint8_t kJumpForm = 0x90;  // 0x90 and 0xA0 both read as a jump
constexpr uint8_t kTrimForm = 0xA0;
constexpr uint8_t kEndMark = 0xFF;

// Block layout, offsets from the block's first byte.
constexpr size_t kLabelLength = 8;        // characters of the file stem that are kept
constexpr size_t kLabelFieldEnd = 19;     // the label's blanks run up to here
constexpr size_t kWriterMark = 31;
constexpr size_t kColorCountOffset = 48;  // colours less one, then the colour list
constexpr size_t kColorListEnd = 512;
constexpr size_t kMaxColors = kColorListEnd - kColorCountOffset - 1;
constexpr size_t kStitchLengthOffset = 514;
constexpr size_t kStitchesOffset = 528;
// L counts from offset 512, so the end mark stands at L + 511. Decoding goes on
// while the position is at most L + 513, which always takes the end mark and
// the first thumbnail bytes for a last, bogus stitch.
constexpr size_t kLastStitchPosition = 513;
constexpr uint32_t kShortestStitchLength = 15;  // L - 4 must reach 11
constexpr uint32_t kStitchHeaderLength = 16;    // offsets 512 to 527 count in L

int32_t Wrap(int64_t value) { return static_cast<int32_t>(value); }

// One axis: a short byte, or a long pair of 12 bits whose marker may make the
// stitch a jump.
int32_t DecodeAxis(ByteReader& reader, bool& jump) {
  const uint8_t first = reader.U8();
  if (first < kLongForm) return first <= 63 ? first : first - 128;
  const int32_t value = ((first & 0x0F) << 8) | reader.U8();
  if (first >= kJumpForm) jump = true;
  return value > 2047 ? value - 4096 : value;
}

void EncodeAxis(std::vector<uint8_t>& out, int32_t value, bool isLong, uint8_t marker) {
  if (!isLong) {
    out.push_back(static_cast<uint8_t>(value >= 0 ? value : value + 128));
    return;
  }
  const int32_t v = value < 0 ? value + 4096 : value;
  out.push_back(static_cast<uint8_t>(((v >> 8) & 0xFF) | marker));
  out.push_back(static_cast<uint8_t>(v & 0xFF));
}

bool NeedsLong(int32_t value) { return value >= 64 || value < -64; }

uint32_t ReadU24(ByteReader& reader) {
  const uint32_t low = reader.U16LE();
  return low | static_cast<uint32_t>(reader.U8()) << 16;
}

void AppendBlockThreads(Design& design, ByteReader& reader, int colorCount) {
  for (int i = 0; i < colorCount; ++i) {
    const uint8_t index = reader.U8();
    if (!reader.Ok()) break;
    ThreadColor thread;
    thread.chartIndex = index;
    thread.colorName = PecColorName(index);
    design.threads.push_back(std::move(thread));
  }
  // Every thread, older blocks' too, takes its colour from the palette again.
  for (ThreadColor& thread : design.threads) {
    uint8_t r, g, b;
    thread.rgb = PecColorRgb(thread.chartIndex, r, g, b);
  }
}

}  // namespace

PecStitch DecodePecStitch(ByteReader& reader) {
  const size_t start = reader.Offset();
  if (reader.U8() == 0xFE && reader.U8() == 0xB0) {
    reader.Skip(1);  // the alternating third byte means nothing to a reader
    return {0, 0, STITCH_COLORSTOP};
  }
  reader.Seek(start);
  bool jump = false;
  const int32_t x = DecodeAxis(reader, jump);
  const int32_t y = DecodeAxis(reader, jump);
  return {x, -y, jump ? STITCH_JUMP : 0u};
}

size_t EncodePecStitch(std::vector<uint8_t>& out, const StitchNode& node, int changeCount) {
  const size_t start = out.size();
  uint8_t marker = kLongForm;
  bool longX = false, longY = false;
  if (node.flags & STITCH_COLORSTOP) {
    out.insert(out.end(), {0xFE, 0xB0, static_cast<uint8_t>(changeCount % 2 == 0 ? 2 : 1)});
    if (node.dx == 0 && node.dy == 0) return out.size() - start;  // the change alone
    marker = kJumpForm;
    longX = longY = true;
  }
  if (changeCount == 0) {
    marker = kJumpForm;
    longX = longY = true;
  }
  const int32_t x = node.dx, y = -node.dy;
  longX = longX || NeedsLong(x);
  longY = longY || NeedsLong(y);
  if (node.flags & STITCH_JUMP) {
    marker = kTrimForm;
    longX = longY = true;
  }
  EncodeAxis(out, x, longX, marker);
  EncodeAxis(out, y, longY, marker);
  return out.size() - start;
}

PecBlockInfo ReadPecBlock(Design& design, std::span<const uint8_t> bytes, size_t blockOffset, int32_t& sumX,
                          int32_t& sumY) {
  PecBlockInfo info;
  if (blockOffset >= bytes.size()) return info;
  ByteReader reader(bytes, blockOffset);
  reader.Skip(kColorCountOffset);
  const uint8_t lastColor = reader.U8();
  if (!reader.Ok()) return info;
  info.colorCount = lastColor + 1;
  AppendBlockThreads(design, reader, info.colorCount);

  reader.Seek(blockOffset + kStitchLengthOffset);
  info.stitchLength = ReadU24(reader);
  if (!reader.Ok() || bytes.size() < blockOffset + info.stitchLength) return info;

  int64_t x = sumX, y = sumY;
  if (info.stitchLength >= kShortestStitchLength) {
    const size_t lastPosition = blockOffset + info.stitchLength + kLastStitchPosition;
    reader.Seek(blockOffset + kStitchesOffset);
    design.stitches.Reserve(std::min<size_t>(reader.Remaining(), info.stitchLength) / 2);
    // Runs on L alone, deliberately with no test for the end mark: the last
    // node is always a bogus jump, which the closing step below turns into
    // the way back to the block's start. The end of the data stops it too.
    while (reader.Offset() <= lastPosition && !reader.AtEnd()) {
      const PecStitch stitch = DecodePecStitch(reader);
      if (!reader.Ok()) break;  // a stitch cut short by the end of the data
      x += stitch.dx;
      y += stitch.dy;
      design.stitches.PushBack(stitch.dx, stitch.dy, stitch.flags);
    }
  }
  sumX = Wrap(x);
  sumY = Wrap(y);
  if (StitchNode* tail = design.stitches.Tail()) {
    if (tail->IsJump()) {
      tail->dx = Wrap(int64_t{tail->dx} - sumX);
      tail->dy = Wrap(int64_t{tail->dy} - sumY);
    } else {
      design.stitches.PushBack(Wrap(-int64_t{sumX}), Wrap(-int64_t{sumY}), STITCH_JUMP);
    }
    sumX = sumY = 0;
  }
  return info;
}

size_t AppendPecBlock(std::vector<uint8_t>& out, const Design& design, const PecBlockSettings& settings) {
  const size_t block = out.size();
  const size_t colors = settings.colorIndices.size();
  const int32_t width = design.maxX - design.minX;
  const int32_t height = design.maxY - design.minY;

  // The stream begins at the top left corner of the design's box.
  std::vector<uint8_t> stream;
  stream.reserve(3 * design.stitches.Size() + 4);
  int changeCount = 0;
  bool first = true;
  StitchNode node;
  for (const StitchNode& source : design.stitches) {
    node.dx = source.dx;
    node.dy = source.dy;
    node.flags = source.flags;
    if (first) {
      node.flags &= ~STITCH_COLORSTOP;
      if (!settings.startAtCorner) {
        node.dx = Wrap(int64_t{node.dx} + width / 2);
        node.dy = Wrap(int64_t{node.dy} - height / 2);
      }
      first = false;
    }
    if (node.flags & STITCH_COLORSTOP) ++changeCount;
    EncodePecStitch(stream, node, changeCount);
    if (changeCount == 0) changeCount = 1;
  }
  stream.push_back(kEndMark);
  const uint32_t stitchLength = static_cast<uint32_t>(stream.size()) + kStitchHeaderLength;

  out.reserve(block + kStitchesOffset + stream.size() + kPecThumbnailSize * (colors + 1));
  ByteWriter writer(out);
  writer.Text("LA:");
  writer.Text(std::string(settings.labelStem.substr(0, kLabelLength)));
  writer.Fill(' ', block + kLabelFieldEnd - out.size());
  writer.U8(0x0D);
  writer.Fill(' ', kWriterMark - kLabelFieldEnd - 1);
  writer.U8(settings.realColorWriter ? 0xFF : 0x20);
  writer.U8(0xFF);
  writer.U8(0x00);
  writer.U8(6);     // bytes per thumbnail row
  writer.U8(0x26);  // thumbnail rows
  writer.Fill(' ', kColorCountOffset - kPecPiecePosition);
  writer.U8(static_cast<uint8_t>(colors - 1));
  // Room for 463 colours; a longer list would run into the stitch header.
  writer.Bytes(settings.colorIndices.first(std::min(colors, kMaxColors)));
  writer.Fill(' ', block + kColorListEnd - out.size());

  writer.U16LE(0);
  writer.U16LE(static_cast<uint16_t>(stitchLength));  // L, unsigned 24-bit
  writer.U8(static_cast<uint8_t>(stitchLength >> 16));
  writer.U8(0x31);
  writer.U8(0xFF);
  writer.U8(0xF0);
  writer.U16LE(static_cast<uint16_t>(width));
  writer.U16LE(static_cast<uint16_t>(height));
  writer.U16LE(0x01E0);
  writer.U16LE(0x01B0);
  writer.Bytes(stream);

  const size_t thumbnails = out.size();
  writer.Fill(0, kPecThumbnailSize * (colors + 1));
  return thumbnails;
}

}  // namespace fennick
