#include "formats/sew.h"

#include <algorithm>
#include <array>

#include "core/byte_cursor.h"
#include "core/user_interface.h"
#include "formats/jef.h"
#include "formats/long_moves.h"
#include "threads/palettes.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr size_t kStreamOffset = 7544;
constexpr size_t kCountsOffset = 50;
constexpr size_t kMaxThreads = 12;
// Where the written design sits relative to its centre: 17.5 mm right, 10 mm down.
constexpr int32_t kShiftX = 175;
constexpr int32_t kShiftY = -100;

// A picture block: row length in bytes and height, then the rows, most
// significant bit leftmost.
struct PictureSlot {
  int32_t width;
  int32_t height;
  size_t offset;  // of colour 0
  size_t step;    // from one colour to the next; 0 for the shared block
};
constexpr PictureSlot kWhole{48, 32, 74, 0};
constexpr PictureSlot kSmall{24, 22, 268, 68};
constexpr PictureSlot kLarge{64, 48, 1084, 386};
constexpr int32_t kOutlineWidth = 120;
constexpr int32_t kOutlineHeight = 80;
constexpr size_t kOutlineOffset = 6102;
constexpr size_t kOutlineBytes = 1200;

// No pen colour has a high byte, so no stitch pixel can equal this background.
constexpr uint32_t kUndrawn = 0xFF000000;

size_t RowBytes(int32_t width) { return static_cast<size_t>(width + 7) / 8; }

struct PictureSize {
  int32_t width;
  int32_t height;
};

// Every colour alone at each of the sizes, all in one walk, as picture blocks
// indexed [size][colour]: thin flat lines without jumps, rows from the top of
// the design down.
std::vector<std::vector<std::vector<uint8_t>>> DrawPictures(Design& design, size_t colors,
                                                            std::span<const PictureSize> sizes) {
  std::vector<std::vector<std::vector<uint8_t>>> blocks;
  std::vector<StitchBitmap> canvases(sizes.size() * colors);
  for (size_t s = 0; s < sizes.size(); ++s) {
    const size_t rowBytes = RowBytes(sizes[s].width);
    std::vector<uint8_t> empty(2 + rowBytes * static_cast<size_t>(sizes[s].height), 0);
    empty[0] = static_cast<uint8_t>(rowBytes);
    empty[1] = static_cast<uint8_t>(sizes[s].height);
    blocks.emplace_back(colors, empty);
    for (size_t i = 0; i < colors; ++i) {
      StitchBitmap& canvas = canvases[s * colors + i];
      if (canvas.Create(sizes[s].width, sizes[s].height) != 0) return blocks;
      canvas.background = kUndrawn;
    }
  }
  // The design keeps only its own flags: no marks.
  RenderBlocksApart(design, canvases, colors, true, 0);
  for (size_t c = 0; c < canvases.size(); ++c) {
    const StitchBitmap& canvas = canvases[c];
    std::vector<uint8_t>& block = blocks[c / colors][c % colors];
    const size_t rowBytes = block[0];
    for (int32_t y = 0; y < canvas.height; ++y) {
      for (int32_t x = 0; x < canvas.width; ++x) {
        if (canvas.pixels[static_cast<size_t>(y * canvas.width + x)] == kUndrawn) continue;
        block[2 + static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x / 8)] |=
            static_cast<uint8_t>(0x80 >> (x % 8));
      }
    }
  }
  return blocks;
}

void OrInto(std::vector<uint8_t>& out, size_t offset, std::span<const uint8_t> bits) {
  const size_t count = std::min(bits.size(), out.size() > offset ? out.size() - offset : 0);
  for (size_t i = 0; i < count; ++i) out[offset + i] |= bits[i];
}

// The edge of colour `color`'s 120 by 80 picture: set pixels whose eight
// neighbours are all set are cleared. Deliberately kept: the clearing
// addresses bits from the low end of the byte, and only rows 1 to 77 are
// looked at.
std::vector<uint8_t> Outline(const std::vector<uint8_t>& drawn) {
  std::vector<uint8_t> outline = drawn;
  const size_t rowBytes = RowBytes(kOutlineWidth);
  auto set = [&](int32_t x, int32_t y) {
    return (drawn[2 + static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x / 8)] & (0x80 >> (x % 8))) != 0;
  };
  for (int32_t y = 1; y <= 77; ++y) {
    for (int32_t x = 1; x <= 118; ++x) {
      bool inside = true;
      for (int32_t ny = y - 1; ny <= y + 1 && inside; ++ny) {
        for (int32_t nx = x - 1; nx <= x + 1 && inside; ++nx) inside = set(nx, ny);
      }
      if (inside) {
        outline[2 + static_cast<size_t>(y) * rowBytes + static_cast<size_t>(x / 8)] &=
            static_cast<uint8_t>(~(1u << (x % 8)));
      }
    }
  }
  return outline;
}

}  // namespace

bool ReadSew(Design& design, std::span<const uint8_t> bytes) {
  design.Clear();
  if (bytes.empty()) return false;
  ByteReader reader(bytes);
  const int16_t count = reader.S16LE();
  for (int16_t i = 0; i < count && reader.Has(2); ++i) {
    ThreadColor& thread = design.threads.emplace_back();
    thread.chartIndex = reader.S16LE();
    JefPaletteColor(thread);
  }

  const size_t size = bytes.size();
  // The buffer's size counts the added zero byte.
  if (size >= kStreamOffset + 3) {
    const size_t end = size - 2;
    design.stitches.Reserve((end - kStreamOffset) / 2);
    reader.Seek(kStreamOffset);
    ReadJefStitches(reader, end, design.stitches);
  }
  design.MergeJumps(false);
  design.StripLeadingMoves();
  return true;
}

int WriteSew(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.stitches.Empty() || design.threads.empty()) return -1;
  if (design.threads.size() > kMaxThreads) {
    ReportFormatLimit(design.name, "SEW", kMaxThreads, "colours", design.threads.size(), "--split-colors", kMaxThreads);
    return -1;
  }
  const size_t threadCount = design.threads.size();

  design.Centre();
  if (StitchNode* head = design.stitches.Head(); head->IsJump()) {
    head->dx += kShiftX;
    head->dy += kShiftY;
  } else {
    design.stitches.PushFront(0, 0, 0);
    design.stitches.PushFront(kShiftX, kShiftY, STITCH_JUMP);
  }
  for (ThreadColor& thread : design.threads) JefNearestColor(thread);
  ChainLongMoves(design, kByteMoveLimit, false);

  // One pass writes the stream and counts the nodes per colour; the header
  // that holds the counts is filled in after. A stop is counted with the
  // colour it starts, and the last colour is given one more.
  out.assign(kStreamOffset, 0);
  out.reserve(kStreamOffset + 3 * design.stitches.Size() + 2);
  ByteWriter writer(out);
  std::vector<size_t> counts(threadCount, 0);
  size_t color = 0, jumps = 0;
  for (const StitchNode& node : design.stitches) {
    if (node.IsJump()) {
      ++jumps;
      writer.U8(kJefEscape);
      writer.U8(kJefJump);
    }
    if (node.IsColorStop()) {
      ++color;
      writer.U8(kJefEscape);
      writer.U8(kJefColorChange);
    }
    writer.U8(static_cast<uint8_t>(node.dx));
    writer.U8(static_cast<uint8_t>(node.dy));
    if (color >= counts.size()) counts.resize(color + 1, 0);
    ++counts[color];
  }
  ++counts[color];
  writer.U8(kJefEscape);
  writer.U8(kJefEnd);
  const size_t fileSize = 2 * (threadCount + design.stitches.Size() + jumps) + kStreamOffset;
  if (out.size() < fileSize) writer.Fill(0, fileSize - out.size());

  writer.PatchU16LE(0, static_cast<uint16_t>(threadCount));
  for (size_t i = 0; i < threadCount; ++i) {
    writer.PatchU16LE(2 + 2 * i, static_cast<uint16_t>(design.threads[i].chartIndex));
  }
  for (size_t i = 0; i < threadCount && counts[i] != 0; ++i) {
    writer.PatchU16LE(kCountsOffset + 2 * i, static_cast<uint16_t>(counts[i]));
  }

  // The pictures use the bounds of the centring above, as the move to the
  // machine's start point is not part of them.
  const PictureSize sizes[] = {{kSmall.width, kSmall.height},
                               {kLarge.width, kLarge.height},
                               {kWhole.width, kWhole.height},
                               {kOutlineWidth, kOutlineHeight}};
  const auto pictures = DrawPictures(design, threadCount, sizes);
  if (pictures.size() == std::size(sizes)) {
    for (size_t i = 0; i < threadCount; ++i) {
      if (counts[i] != 0) {
        OrInto(out, kSmall.offset + kSmall.step * i, pictures[0][i]);
        OrInto(out, kLarge.offset + kLarge.step * i, pictures[1][i]);
        OrInto(out, kWhole.offset, pictures[2][i]);
      }
      const std::vector<uint8_t> outline = Outline(pictures[3][i]);
      OrInto(out, kOutlineOffset, std::span<const uint8_t>(outline).first(kOutlineBytes));
    }
  }
  return 0;
}

}  // namespace fennick
