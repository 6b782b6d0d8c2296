#include "formats/ph.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "core/byte_cursor.h"
#include "formats/pec.h"
#include "threads/palettes.h"

namespace fennick {
namespace {

// Where the two header layouts keep the block list and the colour list.
struct HeaderLayout {
  size_t blockListField;   // 4 bytes, S
  int64_t blockListStart;  // the first block lies at S plus this
  size_t colorCountField;  // 2 bytes, then one PecPalette index a colour
};
constexpr HeaderLayout kPhcLayout{48, 46, 77};  // PHC and PHD
constexpr HeaderLayout kPhbLayout{84, 82, 113};
constexpr size_t kLayoutLetter = 3;  // 'B' for the PHB layout
constexpr size_t kVersionText = 4;   // decimal digits

// Block header, from the block's first byte.
constexpr int64_t kMirrorByte = 10;
constexpr int64_t kOffsetX = 13;
constexpr int64_t kOffsetY = 15;
constexpr int64_t kBoxX1 = 18;
constexpr int64_t kBoxX2 = 20;
constexpr int64_t kBoxY1 = 22;
constexpr int64_t kBoxY2 = 24;
constexpr int64_t kAngle = 28;  // whole degrees
// Second part of the block header.
constexpr int64_t kScaleX = 20;  // steps of 2 percent above 100 percent
constexpr int64_t kScaleY = 22;
// Marker area.
constexpr int64_t kOpenMarker = 9;    // '<'
constexpr int64_t kDashMarker = 10;   // '-'
constexpr int64_t kTextLength = 14;   // signed; the text that follows is skipped
constexpr int64_t kAfterText = 15;    // the data length follows the text
constexpr int64_t kFirstStitch = 13;  // from the data length field
// A marker area nearer the end of the file than this means the file was cut.
constexpr int64_t kMarkerRoom = 90;

// Single precision on purpose: these are the constants the files were made with.
constexpr float kScaleStep = 0.02f;
constexpr float kFullScale = 1.0f;
constexpr double kRadiansPerDegree = 0.017453292;

// Reads fields at positions that hostile headers may put anywhere, before the
// start too. A read outside the bytes fails the reader for good.
class FieldReader {
 public:
  explicit FieldReader(std::span<const uint8_t> bytes) : reader_(bytes) {}
  bool Ok() const { return reader_.Ok(); }
  uint8_t U8(int64_t at) { return Seek(at).U8(); }
  int16_t S16(int64_t at) { return Seek(at).S16LE(); }
  int32_t S32(int64_t at) { return Seek(at).S32LE(); }

 private:
  ByteReader& Seek(int64_t at) {
    reader_.Seek(at < 0 ? SIZE_MAX : static_cast<size_t>(at));
    return reader_;
  }
  ByteReader reader_;
};

// Moves are narrowed to signed 16 bits on purpose, wrapping as they always did.
int32_t Narrow16(int64_t value) { return static_cast<int16_t>(value); }

// The digits at offset 4, up to the first byte that is no digit. Saturates
// rather than overflow on a long run of digits.
int64_t ReadVersion(std::span<const uint8_t> bytes) {
  ByteReader reader(bytes, kVersionText);
  int64_t version = 0;
  while (reader.Has(1)) {
    const uint8_t c = reader.U8();
    if (c < '0' || c > '9') break;
    version = std::min<int64_t>(version * 10 + (c - '0'), INT32_MAX);
  }
  return version;
}

void ReadColors(Design& design, std::span<const uint8_t> bytes, const HeaderLayout& layout) {
  ByteReader reader(bytes, layout.colorCountField);
  const int count = reader.S16LE();
  for (int i = 0; i < count && reader.Has(1); ++i) {
    ThreadColor thread;
    thread.chartIndex = reader.U8();
    PecPaletteColor(thread);
    design.threads.push_back(std::move(thread));
  }
}

// Pairs opened by 0xB0 or 0xE0 ahead of the first stitch are no stitches.
void SkipLeadInPairs(ByteReader& reader) {
  while (reader.Has(1)) {
    const size_t at = reader.Offset();
    const uint8_t byte = reader.U8();
    if (byte != 0xB0 && byte != 0xE0) {
      reader.Seek(at);
      return;
    }
    reader.Skip(1);
  }
}

// Cuts `value` plus the carry towards zero; the carry keeps what was cut off,
// so that scaled moves do not drift across a block.
int32_t CutWithCarry(float value, float& carry) {
  value += carry;
  const float cut = std::trunc(value);
  carry = value - cut;
  // |value| stays below 2 million: a 12-bit move times the largest scale, turned.
  return Narrow16(static_cast<int64_t>(cut));
}

struct BlockTransform {
  int32_t mirror = 1;  // -1 mirrors x
  float scaleX = kFullScale;
  float scaleY = kFullScale;
  int32_t angle = 0;  // whole degrees
};

void Transform(StitchNode& node, const BlockTransform& transform, float& carryX, float& carryY) {
  float fx = static_cast<float>(node.dx * transform.mirror) * transform.scaleX;
  float fy = static_cast<float>(node.dy) * transform.scaleY;
  // An angle of 0 skips the polar step, so scaling alone keeps every sign.
  if (transform.angle != 0) {
    const double x = fx, y = fy;
    const double radius = std::sqrt(y * y + x * x);
    const double turned = std::atan2(y, x) - transform.angle * kRadiansPerDegree;
    fx = static_cast<float>(std::cos(turned) * radius);
    fy = static_cast<float>(std::sin(turned) * radius);
  }
  node.dx = CutWithCarry(fx, carryX);
  node.dy = CutWithCarry(fy, carryY);
}

// The block's first node: the one after the tail the list had before it.
StitchNode* BlockHead(const Design& design, StitchNode* before) {
  return before != nullptr ? before->Next() : design.stitches.Head();
}

// Reads the block at `block` and appends it, centred on its box and closed by a
// jump back to the origin. Returns where the next block lies, or nothing when
// the block list ends here.
std::optional<int64_t> ReadBlock(Design& design, std::span<const uint8_t> bytes, int64_t block,
                                 bool phbLayout, int64_t version) {
  const int64_t size = static_cast<int64_t>(bytes.size());
  FieldReader field(bytes);
  const int64_t headerLength = field.S16(block);
  const uint8_t mirrorByte = field.U8(block + kMirrorByte);
  const int64_t offsetX = field.S16(block + kOffsetX);
  const int64_t offsetY = -int64_t{field.S16(block + kOffsetY)};
  const int64_t boxX1 = field.S16(block + kBoxX1);
  const int64_t boxX2 = field.S16(block + kBoxX2);
  const int64_t boxY1 = -int64_t{field.S16(block + kBoxY1)};
  const int64_t boxY2 = -int64_t{field.S16(block + kBoxY2)};
  BlockTransform transform;
  transform.angle = field.S16(block + kAngle);
  // Later versions flag mirroring with bit 0x20 beside other bits.
  if (mirrorByte == 1 || (version > 6 && (mirrorByte & 0x20) != 0)) transform.mirror = -1;

  const int64_t second = block + headerLength + 2;
  const int64_t markers = second + field.S16(second);
  if (!field.Ok() || markers > size - kMarkerRoom) return std::nullopt;
  transform.scaleX = static_cast<float>(field.S16(second + kScaleX)) * kScaleStep + kFullScale;
  transform.scaleY = static_cast<float>(field.S16(second + kScaleY)) * kScaleStep + kFullScale;

  // One matching marker is enough, on purpose.
  const uint8_t open = field.U8(markers + kOpenMarker);
  const uint8_t dash = field.U8(markers + kDashMarker);
  if (!field.Ok() || (open != '<' && dash != '-')) return std::nullopt;
  const int64_t dataField = markers + kAfterText + static_cast<int8_t>(field.U8(markers + kTextLength));
  const int64_t dataEnd = dataField + 4 + field.S32(dataField);
  if (!field.Ok()) return std::nullopt;

  ByteReader reader(bytes);
  const int64_t cursor = dataField + kFirstStitch + (!phbLayout && version > 3 ? 2 : 0);
  reader.Seek(static_cast<size_t>(cursor));
  SkipLeadInPairs(reader);
  const int64_t available = std::min(dataEnd, size) - static_cast<int64_t>(reader.Offset());
  if (available > 0) design.stitches.Reserve(static_cast<size_t>(available / 2 + 2));

  StitchNode* const before = design.stitches.Tail();
  bool pendingStop = before != nullptr;
  float carryX = 0, carryY = 0;
  while (reader.Ok() && static_cast<int64_t>(reader.Offset()) < dataEnd) {
    const PecStitch stitch = DecodePecStitch(reader);
    if (!reader.Ok()) break;  // cut inside a stitch
    StitchNode* node = design.stitches.PushBack(stitch.dx, stitch.dy, stitch.flags);
    if (pendingStop) node->flags |= STITCH_COLORSTOP;
    pendingStop = false;
    Transform(*node, transform, carryX, carryY);
  }

  // Front: drop jumps and empty moves up to the first real stitch, keeping stops.
  for (StitchNode* node = BlockHead(design, before); node != nullptr;) {
    if (!node->IsColorStop() && !node->IsJump() && node->HasMove()) break;
    node = node->IsColorStop() ? node->Next() : design.stitches.Remove(node);
  }
  // Back: trailing jumps, the bogus one of the end mark among them, never
  // past the block's start.
  while (StitchNode* tail = design.stitches.Tail()) {
    if (tail == before || !tail->IsJump() || tail->IsColorStop()) break;
    design.stitches.Remove(tail);
  }

  // The first block is centred as the whole list, so that an odd size is
  // balanced on the jump that centring puts in front; later blocks from their
  // own first node.
  StitchPoint end;
  if (StitchNode* head = BlockHead(design, before)) end = design.Centre(before != nullptr ? head : nullptr);
  const int64_t placeX = (boxX1 + boxX2) / 2 + offsetX + (int64_t{design.minX} + design.maxX) / 2;
  const int64_t placeY = (boxY1 + boxY2) / 2 + offsetY + (int64_t{design.minY} + design.maxY) / 2;
  if (StitchNode* head = BlockHead(design, before)) {
    head->dx = Wrap32(head->dx + placeX);
    head->dy = Wrap32(head->dy + placeY);
  }
  design.stitches.PushBack(Narrow16(-(end.x + placeX)), Narrow16(-(end.y + placeY)), STITCH_JUMP);
  return dataEnd;
}

}  // namespace

bool ReadPhFile(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty()) return false;
  const bool phbLayout = ByteReader(bytes, kLayoutLetter).U8() == 'B';
  const HeaderLayout& layout = phbLayout ? kPhbLayout : kPhcLayout;
  const int64_t version = ReadVersion(bytes);
  design.stitches.Clear();
  design.threads.clear();
  // As a new design has them: an empty first block is placed by these.
  design.minX = design.maxX = design.minY = design.maxY = 0;
  ReadColors(design, bytes, layout);

  ByteReader header(bytes, layout.blockListField);
  int64_t block = header.S32LE() + layout.blockListStart;
  const int64_t size = static_cast<int64_t>(bytes.size());
  while (header.Ok() && block >= 0 && block < size) {
    const std::optional<int64_t> next = ReadBlock(design, bytes, block, phbLayout, version);
    if (!next || *next <= block) break;  // a block that does not move on ends the list
    block = *next;
  }

  design.formatVersion = 1;
  design.MergeJumps(true);
  design.CentreOnCurrentBounds();
  return true;
}

}  // namespace fennick
