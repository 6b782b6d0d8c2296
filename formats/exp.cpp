#include "formats/exp.h"

#include <algorithm>

#include "core/byte_cursor.h"

namespace fennick {
namespace {

constexpr int8_t kEscape = -128;
constexpr uint8_t kColorChange = 0x01;
constexpr uint8_t kJump = 0x04;
constexpr int32_t kSplitStep = 121;
constexpr int64_t kLongestMove = 123;

// The part of `d` beyond the longest move; `d` keeps the rest.
int64_t ClampMove(int32_t& d) {
  const int64_t clamped = std::clamp<int64_t>(d, -kLongestMove, kLongestMove);
  const int64_t rest = int64_t{d} - clamped;
  d = static_cast<int32_t>(clamped);
  return rest;
}

void PrepareStitches(Design& design) {
  design.SplitLongStitches(kSplitStep, 0, false);
  StitchList& stitches = design.stitches;
  for (StitchNode* p = stitches.Head(); p != nullptr; p = p->Next()) {
    if (p->IsColorStop()) {
      const uint32_t jump = p->flags & STITCH_JUMP;
      p->flags &= ~STITCH_JUMP;
      if (p->HasMove()) {
        stitches.InsertBefore(p, 0, 0, STITCH_COLORSTOP);
        p->flags = (p->flags & ~STITCH_COLORSTOP) | jump;
      }
    }
    const int64_t restX = ClampMove(p->dx);
    const int64_t restY = ClampMove(p->dy);
    if (restX != 0 || restY != 0) {
      p->flags |= STITCH_JUMP;
      stitches.InsertAfter(p, static_cast<int32_t>(restX), static_cast<int32_t>(restY), 0);
    } else if (p->IsJump()) {
      p = stitches.InsertAfter(p, 0, 0, 0);
    }
  }
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
    if (flags & STITCH_COLORSTOP) {
      design.AppendThread(DefaultPaletteColor(DefaultPaletteIndex(design.threads.size())));
      flags &= ~STITCH_COLORSTOP;
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
