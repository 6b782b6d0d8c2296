#include "formats/hus.h"

#include "core/byte_cursor.h"
#include "core/user_interface.h"
#include "formats/hus_vip_streams.h"
#include "formats/long_moves.h"

namespace fennick {
namespace {

constexpr uint32_t kSignature = 0x00C8AF5B;
// Colours after this many read as palette entry 0.
constexpr size_t kIndexedColors = 28;

int NearestIndex(uint32_t rgb) {
  const Channels c = SplitColor(rgb);
  return HusNearestColor(c.r, c.g, c.b);
}

}  // namespace

bool ReadHusFile(Design& design, std::span<const uint8_t> bytes) {
  HusVipHeader header;
  if (!ReadHusVipHeader(design, bytes, header)) return false;
  ByteReader reader(bytes, kHusVipFixedHeader);
  if (!reader.Has(2 * static_cast<size_t>(header.colorCount))) return false;
  design.threads.reserve(header.colorCount);
  for (size_t i = 0; i < header.colorCount; ++i) {
    const uint16_t stored = reader.U16LE();
    const int index = i < kIndexedColors ? stored : 0;
    design.threads.push_back(DefaultPaletteColor(index));
    design.threads.back().chartIndex = index;
  }
  return ReadHusVipStitches(design, bytes, header);
}

int WriteHusFile(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.threads.empty()) {
    ReportToUser(design.name + ": Could not create HUS file due to lack of color information.");
    return -1;
  }
  std::vector<uint16_t> colors{static_cast<uint16_t>(NearestIndex(design.threads[0].rgb))};
  size_t thread = 0;
  for (StitchNode* node = design.stitches.Head(); node != nullptr; node = node->Next()) {
    if (node->IsColorStop()) {
      // Stops beyond the thread list keep the last thread.
      if (thread + 1 < design.threads.size()) ++thread;
      colors.push_back(static_cast<uint16_t>(NearestIndex(design.threads[thread].rgb)));
      if (node->HasMove()) {
        design.stitches.InsertBefore(node, 0, 0, STITCH_COLORSTOP);
        node->flags = node->IsJump() ? STITCH_JUMP : 0;
      }
    }
    // A cut node goes on with its rest, which may need cutting again.
    if (CutLongMove(design.stitches, node, kByteMoveLimit) == nullptr && node->IsJump()) {
      node = design.stitches.InsertAfter(node, 0, 0, 0);
    }
  }

  WriteHusVipHeader(out, kSignature, static_cast<uint32_t>(colors.size()), design);
  ByteWriter writer(out);
  for (const uint16_t color : colors) writer.U16LE(color);
  if (!AppendHusVipStreams(design, out)) {
    out.clear();
    return -1;
  }
  return 0;
}

}  // namespace fennick
