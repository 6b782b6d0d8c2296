#include "formats/exp.h"

#include <algorithm>

#include "core/byte_cursor.h"
#include "formats/long_moves.h"

namespace fennick {
namespace {

constexpr int8_t kEscape = -128;
constexpr uint8_t kColorChange = 0x01;
constexpr uint8_t kJump = 0x04;
constexpr int32_t kSplitStep = 121;
constexpr int32_t kLongestMove = 123;

void PrepareStitches(Design& design) {
  design.SplitLongStitches(kSplitStep, 0, false);
  ChainLongMoves(design, kLongestMove, false);
}

}  // namespace

bool ReadExp(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty()) return false;
  design.Clear();
  design.defaultColors = true;
  design.threads.push_back(DefaultPaletteColor(0));
  design.stitches.Reserve(bytes.size() / 2 + 2);

  // A pair that starts on the last byte has no second byte in the data; it
  // reads as 0. A file of even length thus ends in a pair (0, 0), which the
  // tail cleaning removes.
  ByteReader reader(bytes);
  while (!reader.AtEnd()) {
    int8_t a = reader.S8();
    int8_t b = reader.S8();
    uint32_t flags = 0;
    // Control pairs in a row add up; 80 80 skips itself and the pair behind.
    while (a == kEscape && !reader.AtEnd()) {
      if (b == kEscape) {
        reader.Skip(2);
      } else {
        flags |= (b % 2 == 0) ? STITCH_JUMP : STITCH_COLORSTOP;
      }
      a = reader.S8();
      b = reader.S8();
    }
    if (a == kEscape) break;  // the data ended inside the control pairs
    // The pair behind a colour change is the change's own (00 00 in real
    // files), not a stitch of the new colour.
    if (flags & STITCH_COLORSTOP) {
      design.threads.push_back(DefaultPaletteColor(DefaultPaletteIndex(design.threads.size())));
    }
    design.stitches.PushBack(a, b, flags);
  }

  StitchList& stitches = design.stitches;
  while (StitchNode* tail = stitches.Tail()) {
    if (tail->HasMove() && !tail->IsJump()) break;
    if (tail->IsColorStop() && !design.threads.empty()) design.threads.pop_back();
    stitches.Remove(tail);
  }
  // Deliberately kept: one unit back at the end of every design.
  stitches.PushBack(-1, -1, 0);
  design.MergeJumps(false);
  design.ReclassifyJumps();
  design.Centre();
  return true;
}

int WriteExp(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.stitches.Empty()) return -1;
  PrepareStitches(design);

  size_t pairs = 0;
  for (const StitchNode& node : design.stitches) {
    pairs += 1 + (node.IsColorStop() ? 1 : 0) + (node.IsJump() ? 1 : 0);
  }
  out.reserve(2 * pairs);
  ByteWriter writer(out);
  for (const StitchNode& node : design.stitches) {
    if (node.IsColorStop()) {
      writer.U8(0x80);
      writer.U8(kColorChange);
    }
    if (node.IsJump()) {
      writer.U8(0x80);
      writer.U8(kJump);
    }
    writer.U8(static_cast<uint8_t>(node.dx));
    writer.U8(static_cast<uint8_t>(node.dy));
  }
  return 0;
}

}  // namespace fennick
