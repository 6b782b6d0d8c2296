#include "formats/jef.h"

#include <algorithm>
#include <cstdlib>

#include "core/byte_cursor.h"
#include "formats/long_moves.h"
#include "threads/palettes.h"

namespace fennick {
namespace {

constexpr size_t kStreamOffsetField = 0;
constexpr size_t kThreadCountField = 24;
constexpr size_t kThreadTable = 116;
constexpr size_t kThreadEntrySize = 4;

constexpr int32_t kLongestMove = 126;
constexpr int32_t kSmallHoop = 550;  // the bounds a design may reach for hoop code 0
constexpr int32_t kTypeCode = 13;    // written once per thread after the palette numbers

// Stops become pure and stand before a zero stitch and the stop's own move;
// long moves become chains of clamped jumps; every jump gets an anchoring stitch.
void PrepareStitches(Design& design) { ChainLongMoves(design, kLongestMove, true); }

uint32_t Magnitude(int32_t value) { return static_cast<uint32_t>(std::llabs(int64_t{value})); }

void WriteHeader(const Design& design, uint32_t threadCount, uint32_t words, ByteWriter& writer) {
  writer.U32LE(static_cast<uint32_t>(kThreadTable) + 8 * threadCount);
  writer.U32LE(10);
  writer.Fill(0, 16);
  writer.U32LE(threadCount);
  writer.U32LE(words);
  const bool small = design.maxX < kSmallHoop && design.maxY < kSmallHoop && design.minX > -kSmallHoop &&
                     design.minY > -kSmallHoop;
  writer.U32LE(small ? 0 : 2);
  writer.U32LE(Magnitude(design.minX));
  writer.U32LE(Magnitude(design.minY));
  writer.S32LE(design.maxX);
  writer.S32LE(design.maxY);
  writer.Fill(0xFF, 32);
  // Distances to the edges of a 140 x 200 mm field, twice over. Unsigned
  // arithmetic wraps for designs beyond any hoop instead of overflowing.
  for (int copy = 0; copy < 2; ++copy) {
    writer.U32LE(700u - Magnitude(design.minX));
    writer.U32LE(1000u - Magnitude(design.minY));
    writer.U32LE(700u - static_cast<uint32_t>(design.maxX));
    writer.U32LE(1000u - static_cast<uint32_t>(design.maxY));
  }
}

}  // namespace

size_t ReadJefStitches(ByteReader& stream, size_t end, StitchList& stitches) {
  size_t colorChanges = 0;
  while (stream.Ok() && stream.Offset() < end) {
    uint8_t a = stream.U8();
    uint8_t b = stream.U8();
    uint32_t flags = 0;
    if (a == kJefEscape) {
      if (b == kJefEnd) break;
      if (b == kJefColorChange) {
        flags = STITCH_COLORSTOP;
        ++colorChanges;
      } else if (b == kJefJump) {
        flags = STITCH_JUMP;
      }
      // Any other code still takes its pair; the move follows in the next one,
      // and an escape right behind a command is a move of -128.
      a = 0;
      b = 0;
      if (stream.Offset() < end) {
        a = stream.U8();
        b = stream.U8();
      } else {
        stream.Skip(2);
      }
    }
    stitches.PushBack(static_cast<int8_t>(a), static_cast<int8_t>(b), flags);
  }
  return colorChanges;
}

bool ReadJef(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty()) return false;
  design.Clear();
  ByteReader header(bytes, kThreadCountField);
  // A count the file cannot hold is cut to the entries that are there.
  const int64_t threadCount =
      std::min<int64_t>(header.S16LE(), static_cast<int64_t>(bytes.size() / kThreadEntrySize));
  ByteReader table(bytes, kThreadTable);
  for (int64_t i = 0; i < threadCount && table.Has(2); ++i) {
    ThreadColor thread;
    thread.chartIndex = table.S16LE();
    table.Skip(kThreadEntrySize - 2);
    JefPaletteColor(thread);
    design.threads.push_back(std::move(thread));
  }

  // Pairs stop short of the last two bytes, so the added zero byte never
  // starts or ends a pair; an offset past the end gives no stitches.
  const size_t streamOffset = ByteReader(bytes, kStreamOffsetField).U32LE();
  const size_t end = bytes.size() - std::min<size_t>(bytes.size(), 2);
  if (streamOffset < end) design.stitches.Reserve((end - streamOffset) / 2);
  ByteReader stream(bytes, std::min(streamOffset, bytes.size()));
  const size_t colorsSeen = ReadJefStitches(stream, end, design.stitches);

  const size_t used = colorsSeen + 1;
  if (design.threads.size() > used) design.threads.resize(used);
  while (design.threads.size() < used) {
    ThreadColor unknown;
    unknown.colorName = "Unknown";
    design.threads.push_back(std::move(unknown));
  }
  design.MergeJumps(false);
  design.StripLeadingMoves();
  design.Centre();
  return true;
}

int WriteJef(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.stitches.Empty() || design.threads.empty()) return -1;
  for (ThreadColor& thread : design.threads) JefNearestColor(thread);
  PrepareStitches(design);

  size_t jumps = 0;
  for (const StitchNode& node : design.stitches) jumps += node.IsJump() ? 1 : 0;
  const uint32_t threadCount = static_cast<uint32_t>(design.threads.size());
  // Three words of each thread cover the stream's opening jump, its end and
  // every colour change; a node takes one word and a jump escape one more.
  const size_t words = 3 * size_t{threadCount} + design.stitches.Size() + jumps;
  const size_t fileSize = kThreadTable + 8 * size_t{threadCount} + 2 * words;
  out.reserve(fileSize);

  ByteWriter writer(out);
  WriteHeader(design, threadCount, static_cast<uint32_t>(words), writer);
  for (const ThreadColor& thread : design.threads) writer.S32LE(thread.chartIndex);
  for (uint32_t i = 0; i < threadCount; ++i) writer.U32LE(kTypeCode);

  writer.U8(kJefEscape);
  writer.U8(kJefJump);
  writer.Fill(0, 2);
  for (const StitchNode& node : design.stitches) {
    if (node.IsJump()) {
      writer.U8(kJefEscape);
      writer.U8(kJefJump);
    }
    if (node.IsColorStop()) {
      writer.U8(kJefEscape);
      writer.U8(kJefColorChange);
      writer.Fill(0, 2);
      writer.U8(kJefEscape);
      writer.U8(kJefJump);
    }
    writer.U8(static_cast<uint8_t>(node.dx));
    writer.U8(static_cast<uint8_t>(node.dy));
  }
  writer.U8(kJefEscape);
  writer.U8(kJefEnd);
  // The sized area is zero to its end. More stops than threads overrun the
  // size; the stream then simply runs on and the word count stays as sized.
  if (out.size() < fileSize) out.resize(fileSize, 0);
  return 0;
}

}  // namespace fennick
