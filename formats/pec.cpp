#include "formats/pec.h"

namespace fennick {
namespace {

constexpr uint8_t kLongForm = 0x80;
constexpr uint8_t kJumpForm = 0x90;  // 0x90 and 0xA0 both read as a jump
constexpr uint8_t kTrimForm = 0xA0;

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

}  // namespace fennick
