#include "formats/pec.h"

#include <algorithm>
#include <array>

#include "threads/palettes.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr uint8_t kLongForm = 0x80;
constexpr uint8_t kJumpForm = 0x90;  // 0x90 and 0xA0 both read as a jump
constexpr uint8_t kTrimForm = 0xA0;
constexpr uint8_t kEndMark = 0xFF;

// Block layout, offsets from the block's first byte.
constexpr size_t kLabelLength = 8;     // characters of the file stem that are kept
constexpr size_t kLabelFieldEnd = 19;  // the label's blanks run up to here
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

// Thumbnails: 48 by 38 pixels, 1 bit each, least significant bit leftmost.
constexpr int kThumbnailWidth = 48;
constexpr int kThumbnailHeight = 38;
constexpr int kThumbnailRowBytes = 6;
// The canvas is three times the thumbnail's size, sampled every third pixel.
constexpr int kCanvasScale = 3;
// Drawn pixels are 0x00RRGGBB, so a background with its top byte set can't be
// mistaken for one, whatever the thread's colour.
constexpr uint32_t kCanvasBackground = 0xFF000000;

size_t BitIndex(int x, int y) { return static_cast<size_t>(kThumbnailRowBytes * y + x / 8); }
bool IsSet(std::span<const uint8_t> image, int x, int y) { return (image[BitIndex(x, y)] >> (x % 8)) & 1; }
void Set(std::span<uint8_t> image, int x, int y) { image[BitIndex(x, y)] |= static_cast<uint8_t>(1 << (x % 8)); }
void Unset(std::span<uint8_t> image, int x, int y) { image[BitIndex(x, y)] &= static_cast<uint8_t>(~(1 << (x % 8))); }

void DrawFrame(std::span<uint8_t> image) {
  constexpr std::array<uint8_t, kThumbnailRowBytes> kEdge = {0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F};  // x 4 to 43
  std::copy(kEdge.begin(), kEdge.end(), image.begin() + static_cast<ptrdiff_t>(BitIndex(0, 1)));
  std::copy(kEdge.begin(), kEdge.end(), image.begin() + static_cast<ptrdiff_t>(BitIndex(0, 36)));
  for (int y = 4; y <= 33; ++y) {
    Set(image, 1, y);
    Set(image, 46, y);
  }
  constexpr int kCorners[8][2] = {{3, 2}, {44, 2}, {2, 3}, {45, 3}, {2, 34}, {45, 34}, {3, 35}, {44, 35}};
  for (const auto& corner : kCorners) Set(image, corner[0], corner[1]);
}

// Every colour's thumbnail keeps its solid shape; the composite gets its
// outline: pixels set with all eight neighbours set are left out.
void OrOutline(std::span<const uint8_t> image, std::span<uint8_t> composite) {
  std::array<uint8_t, kPecThumbnailSize> outline;
  std::copy_n(image.begin(), kPecThumbnailSize, outline.begin());
  for (int y = 3; y <= 34; ++y) {
    for (int x = 3; x <= 44; ++x) {
      bool inside = true;
      for (int dy = -1; dy <= 1 && inside; ++dy) {
        for (int dx = -1; dx <= 1 && inside; ++dx) inside = IsSet(image, x + dx, y + dy);
      }
      if (inside) Unset(outline, x, y);
    }
  }
  for (size_t i = 0; i < kPecThumbnailSize; ++i) composite[i] |= outline[i];
}

void SetUpThumbnailRenderer(DesignRenderer& renderer, Design& design) {
  renderer.design = &design;
  renderer.showJumps = false;
  renderer.shaded = false;
  renderer.showMarkers = false;
  renderer.thick = false;  // one-pixel lines
  renderer.flipY = true;   // the thumbnail's rows run from the top
}

// Every third pixel of every third row: set where the canvas was drawn on.
// Row 0 is left clear on purpose. It can only catch the line a colour's first
// stitch draws from the pen waiting in the corner, and its first byte follows
// the stitches' end mark: readers that stop at FF 00 alone would read on.
void SampleCanvas(const StitchBitmap& canvas, std::span<uint8_t> out) {
  const size_t width = static_cast<size_t>(canvas.width);
  for (int y = 1; y < kThumbnailHeight; ++y) {
    for (int x = 0; x < kThumbnailWidth; ++x) {
      const size_t pixel = static_cast<size_t>(kCanvasScale * y) * width + static_cast<size_t>(kCanvasScale * x);
      if (canvas.pixels[pixel] != canvas.background) Set(out, x, y);
    }
  }
}

int RenderThumbnail(DesignRenderer& renderer, int colorIndex, std::span<uint8_t> out) {
  std::fill_n(out.begin(), kPecThumbnailSize, uint8_t{0});
  StitchBitmap& canvas = renderer.bitmap;
  if (canvas.Create(kThumbnailWidth * kCanvasScale, kThumbnailHeight * kCanvasScale) != 0 || !canvas.valid) return 0;
  canvas.background = kCanvasBackground;
  renderer.Render(colorIndex);
  SampleCanvas(canvas, out);
  return static_cast<int>(kPecThumbnailSize);
}

// The frame into the composite and each colour's thumbnail behind it, then
// the colours' outlines into the composite. Returns the bytes finished.
int FinishThumbnails(std::span<uint8_t> images, size_t colorCount) {
  const size_t count = std::min(colorCount + 1, images.size() / kPecThumbnailSize);
  for (size_t i = 0; i < count; ++i) DrawFrame(images.subspan(i * kPecThumbnailSize, kPecThumbnailSize));
  for (size_t i = 1; i < count; ++i) OrOutline(images.subspan(i * kPecThumbnailSize, kPecThumbnailSize), images);
  return static_cast<int>(count * kPecThumbnailSize);
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
  info.stitchLength = reader.U24LE();
  if (!reader.Ok() || bytes.size() < blockOffset + info.stitchLength) return info;
  info.whole = true;

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
  sumX = Wrap32(x);
  sumY = Wrap32(y);
  if (StitchNode* tail = design.stitches.Tail()) {
    if (tail->IsJump()) {
      tail->dx = Wrap32(int64_t{tail->dx} - sumX);
      tail->dy = Wrap32(int64_t{tail->dy} - sumY);
    } else {
      design.stitches.PushBack(Wrap32(-int64_t{sumX}), Wrap32(-int64_t{sumY}), STITCH_JUMP);
    }
    sumX = sumY = 0;
    info.closed = true;
  }
  return info;
}

size_t AppendPecBlock(std::vector<uint8_t>& out, const Design& design, const PecBlockSettings& settings) {
  const size_t block = out.size();
  const size_t colors = settings.colorIndices.size();
  const int32_t width = design.maxX - design.minX;
  const int32_t height = design.maxY - design.minY;

  // Most nodes take 2 to 4 bytes of stream; L is patched in once it is written.
  out.reserve(block + kStitchesOffset + 4 * design.stitches.Size() + 1 + kPecThumbnailSize * (colors + 1));
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
  const size_t lengthField = out.size();
  writer.U16LE(0);  // L, unsigned 24-bit
  writer.U8(0);
  writer.U8(0x31);
  writer.U8(0xFF);
  writer.U8(0xF0);
  writer.U16LE(static_cast<uint16_t>(width));
  writer.U16LE(static_cast<uint16_t>(height));
  writer.U16LE(0x01E0);
  writer.U16LE(0x01B0);
  // The stream begins at the top left corner of the design's box.
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
        node.dx = Wrap32(int64_t{node.dx} + width / 2);
        node.dy = Wrap32(int64_t{node.dy} - height / 2);
      }
      first = false;
    }
    if (node.flags & STITCH_COLORSTOP) ++changeCount;
    EncodePecStitch(out, node, changeCount);
    if (changeCount == 0) changeCount = 1;
  }
  out.push_back(kEndMark);
  const auto stitchLength = static_cast<uint32_t>(out.size() - block - kStitchesOffset) + kStitchHeaderLength;
  writer.PatchU16LE(lengthField, static_cast<uint16_t>(stitchLength));
  out[lengthField + 2] = static_cast<uint8_t>(stitchLength >> 16);

  const size_t thumbnails = out.size();
  writer.Fill(0, kPecThumbnailSize * (colors + 1));
  return thumbnails;
}

int RenderPecThumbnail(Design& design, int colorIndex, std::span<uint8_t> out) {
  if (colorIndex == -1) return FinishThumbnails(out, design.threads.size());
  if (out.size() < kPecThumbnailSize) return 0;
  DesignRenderer renderer;
  SetUpThumbnailRenderer(renderer, design);
  return RenderThumbnail(renderer, colorIndex, out);
}

void RenderPecThumbnails(Design& design, std::span<uint8_t> area) {
  if (area.size() < kPecThumbnailSize) return;
  const std::vector<ThreadColor>& threads = design.threads;
  const size_t colors = std::min(threads.size(), area.size() / kPecThumbnailSize - 1);
  std::vector<StitchBitmap> canvases(colors);
  for (StitchBitmap& canvas : canvases) {
    if (canvas.Create(kThumbnailWidth * kCanvasScale, kThumbnailHeight * kCanvasScale) != 0 || !canvas.valid) return;
    canvas.background = kCanvasBackground;
  }
  RenderBlocksApart(design, canvases, colors, true, STITCH_DRAWN);
  for (size_t i = 0; i < colors; ++i) {
    std::span<uint8_t> out = area.subspan((i + 1) * kPecThumbnailSize, kPecThumbnailSize);
    std::fill(out.begin(), out.end(), uint8_t{0});
    SampleCanvas(canvases[i], out);
  }
  std::fill_n(area.begin(), kPecThumbnailSize, uint8_t{0});
  FinishThumbnails(area, colors);
}

}  // namespace fennick
