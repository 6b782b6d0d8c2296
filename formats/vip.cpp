#include "formats/vip.h"

#include <array>

#include "core/byte_cursor.h"
#include "formats/hus_vip_streams.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

constexpr uint32_t kSignature = 0x0190FC5D;
constexpr size_t kColorTableOffset = 46;
constexpr size_t kGapAfterTables = 6;
constexpr int32_t kLongestStitch = 120;

// A constructor rather than a plain aggregate, so the generated flat rows
// need no inner braces.
struct KeyRow {
  template <typename... Byte>
  constexpr KeyRow(int at, Byte... row) : offset(at), bytes{static_cast<uint8_t>(row)...} {
    static_assert(sizeof...(Byte) == 16);
  }
  int offset;
  uint8_t bytes[16];
};
// Generated from formats/vip_colour_key.csv (see formats/vip_colour_key.md).
constexpr KeyRow kKeyRows[] = {
#include "formats/vip_colour_key.inc"
};
constexpr size_t kKeySize = std::size(kKeyRows) * 16;
static_assert([] {
  for (size_t row = 0; row < std::size(kKeyRows); ++row) {
    if (kKeyRows[row].offset != static_cast<int>(row * 16)) return false;
  }
  return true;
}(), "vip_colour_key.csv rows must run 16 bytes apart, in order");

uint8_t Key(size_t position) { return position < kKeySize ? kKeyRows[position / 16].bytes[position % 16] : 0; }

int ChartNumber(const ThreadColor& thread) { return thread.chartIndex == 0 ? 1 : thread.chartIndex; }

}  // namespace

void ScrambleVipColors(std::span<uint8_t> bytes) {
  uint8_t running = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const uint8_t plain = bytes[i];
    bytes[i] = static_cast<uint8_t>(plain ^ Key(i) ^ running);
    running ^= plain;
  }
}

void UnscrambleVipColors(std::span<uint8_t> bytes) {
  uint8_t running = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<uint8_t>(bytes[i] ^ running ^ Key(i));
    running ^= bytes[i];
  }
}

bool ReadVipFile(Design& design, std::span<const uint8_t> bytes) {
  HusVipHeader header;
  if (!ReadHusVipHeader(design, bytes, header)) return false;
  const size_t threads = header.colorCount;
  ByteReader reader(bytes, kColorTableOffset);
  if (!reader.Has(8 * threads)) return false;
  const std::span<const uint8_t> stored = reader.Bytes(4 * threads);
  std::vector<uint8_t> colors(stored.begin(), stored.end());
  UnscrambleVipColors(colors);
  design.threads.reserve(threads);
  for (size_t i = 0; i < threads; ++i) {
    ThreadColor thread;
    thread.rgb = ColorRef(colors[4 * i], colors[4 * i + 1], colors[4 * i + 2]);
    thread.chartIndex = reader.U8() + 1;
    reader.Skip(3);
    thread.colorName = NearestChartName(thread.rgb, thread.chartIndex);
    design.threads.push_back(std::move(thread));
  }
  return ReadHusVipStitches(design, bytes, header);
}

int WriteVipFile(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.threads.empty() || design.stitches.Empty()) return -1;
  design.SplitLongStitches(kLongestStitch, 0, false);

  const size_t threads = design.threads.size();
  std::vector<uint8_t> colors;
  colors.reserve(4 * threads);
  for (const ThreadColor& thread : design.threads) {
    uint32_t nearest = 0;
    NearestChartName(thread.rgb, ChartNumber(thread), &nearest);
    colors.insert(colors.end(), {static_cast<uint8_t>(nearest), static_cast<uint8_t>(nearest >> 8),
                                 static_cast<uint8_t>(nearest >> 16), 0});
  }
  ScrambleVipColors(colors);

  WriteHusVipHeader(out, kSignature, static_cast<uint32_t>(threads), design);
  ByteWriter writer(out);
  writer.U32LE(static_cast<uint32_t>(kColorTableOffset + 8 * threads));
  writer.Bytes(colors);
  for (const ThreadColor& thread : design.threads) {
    writer.U8(static_cast<uint8_t>(ChartNumber(thread) - 1));
    writer.Fill(0, 3);
  }
  writer.Fill(0, kGapAfterTables);
  if (!AppendHusVipStreams(design, out)) {
    out.clear();
    return -1;
  }
  return 0;
}

}  // namespace fennick
