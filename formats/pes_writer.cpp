// WritePesFile and BuildHeaderThreads: the plain writer (versions 1, 2 and 4,
// palette colours) and the version 5 and 6 writer (real thread colours).
#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "formats/long_moves.h"
#include "formats/pec.h"
#include "formats/pes.h"
#include "formats/pes_labels.h"
#include "threads/palettes.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

constexpr int32_t kLongestMove = 500;  // stitch units; longer moves are cut into jumps
constexpr int32_t kBoxOrigin = 1000;   // the object block's box stands around (1000, 1000)
constexpr uint16_t kSegmentSeparator = 0x8003;
constexpr size_t kColorTableRoom = 1024;  // bytes the colour tables may take
constexpr size_t kTrailerBlock = 128;

// Hoop and version code. `turn` is the quarter turn the stitches take in the file.
struct Hoop {
  int code;
  int32_t width;  // millimetres
  int32_t height;
  int turn;
};

Hoop PickPlainHoop(int32_t w, int32_t h) {
  if (w <= 1000 && h <= 1000) return {1, 100, 100, 0};
  if (h <= 1800 && w <= 1300) return {1, 130, 180, 0};
  if (w <= 1800 && h <= 1300) return {2, 180, 130, 1};
  if (h <= 2600 && w <= 1600) return {4, 160, 260, 0};
  return {4, 260, 160, 1};  // also a design that fits no hoop
}

Hoop PickRealColorHoop(int32_t w, int32_t h) {
  if (w <= 1000 && h <= 1000) return {1, 100, 100, 0};
  if (h <= 1800 && w <= 1300) return {2, 130, 180, 0};
  if (w <= 1800 && h <= 1300) return {2, 180, 130, 1};
  if (h <= 2600 && w <= 1600) return {4, 160, 260, 0};
  if (w <= 2600 && h <= 1600) return {4, 260, 160, 1};
  if (h <= 3000 && w <= 1800) return {7, 180, 300, 0};
  if (w <= 3000 && h <= 1800) return {7, 300, 180, 1};
  if (h <= 2000 && w <= 3000) return {5, 300, 200, 0};
  return {5, 200, 300, -1};  // also a design that fits no hoop
}

int32_t Width(const Design& design) { return Wrap32(int64_t{design.maxX} - design.minX); }
int32_t Height(const Design& design) { return Wrap32(int64_t{design.maxY} - design.minY); }

// Moves the box onto (0, 0) through the first node alone, with the odd unit
// of a width on the plus side of x and of a height on the minus side of y.
// The bounds must be current.
void CentreThroughFirstNode(Design& design) {
  StitchNode* first = design.stitches.Head();
  const int32_t cx = Wrap32((int64_t{design.maxX} + design.minX) / 2);
  const int32_t cy = Wrap32((int64_t{design.maxY} + design.minY) / 2);
  first->dx = Wrap32(int64_t{first->dx} - cx);
  first->dy = Wrap32(int64_t{first->dy} - cy);
  design.maxX = Wrap32(int64_t{design.maxX} - cx);
  design.minX = Wrap32(int64_t{design.minX} - cx);
  design.maxY = Wrap32(int64_t{design.maxY} - cy);
  design.minY = Wrap32(int64_t{design.minY} - cy);
  if (design.maxX < std::llabs(design.minX)) {
    first->dx = Wrap32(int64_t{first->dx} + 1);
    ++design.maxX;
    ++design.minX;
  }
  if (std::llabs(design.minY) < design.maxY) {
    first->dy = Wrap32(int64_t{first->dy} - 1);
    --design.maxY;
    --design.minY;
  }
}

// Any axis beyond 500 is cut to 500; the cut node and its rest become jumps,
// and the rest is cut again if need be.
void CutLongMoves(Design& design) {
  for (StitchNode* node = design.stitches.Head(); node != nullptr; node = node->Next()) {
    CutLongMove(design.stitches, node, kLongestMove, STITCH_JUMP);
  }
}

// Every colour change becomes a jump, or folds into the jump behind it; no
// jump leads into a change, and none ends the design.
void PrepareRealColorStops(Design& design) {
  StitchList& stitches = design.stitches;
  StitchNode* head = stitches.Head();
  while (head->IsJump() && head->Next() != nullptr && head->Next()->IsJump()) {
    StitchNode* next = head->Next();
    head->dx = Wrap32(int64_t{head->dx} + next->dx);
    head->dy = Wrap32(int64_t{head->dy} + next->dy);
    head->flags |= next->flags & STITCH_COLORSTOP;
    stitches.Remove(next);
  }
  for (StitchNode* node = head->Next(); node != nullptr;) {
    StitchNode* next = node->Next();
    if (!node->IsColorStop() || next == nullptr) {
      node = next;
      continue;
    }
    if (node->Prev()->IsJump()) stitches.InsertBefore(node, 0, 0, 0);
    if (!next->IsJump()) {
      node->flags |= STITCH_JUMP;
      node = next;  // which may be a change of its own, after an empty colour
    } else {
      next->dx = Wrap32(int64_t{next->dx} + node->dx);
      next->dy = Wrap32(int64_t{next->dy} + node->dy);
      next->flags |= STITCH_COLORSTOP;
      stitches.Remove(node);
      node = next->Next();
    }
  }
  while (stitches.Size() > 1 && stitches.Tail()->IsJump()) stitches.Remove(stitches.Tail());
}

void PutFloat(ByteWriter& writer, float value) { writer.U32LE(std::bit_cast<uint32_t>(value)); }

// CEmbOne and the start of CSewSeg. Returns the offset of `segs`.
size_t WriteObjectBlock(ByteWriter& writer, const Design& design, int32_t x0, int32_t y0, bool withBox) {
  const int32_t w = Width(design), h = Height(design);
  const int32_t halfW = w / 2, halfH = h / 2;
  writer.U16LE(0xFFFF);
  writer.U16LE(0);
  writer.U16LE(7);
  writer.Text("CEmbOne");
  for (int copy = 0; copy < 2; ++copy) {
    const int32_t left = kBoxOrigin - halfW, top = kBoxOrigin - halfH;
    for (const int32_t word : {left, top, left + w, top + h}) writer.S16LE(static_cast<int16_t>(withBox ? word : 0));
  }
  PutFloat(writer, 1.0f);
  PutFloat(writer, 0.0f);
  PutFloat(writer, 0.0f);
  PutFloat(writer, 1.0f);
  PutFloat(writer, static_cast<float>(x0 + kBoxOrigin));
  PutFloat(writer, static_cast<float>(kBoxOrigin - y0));
  writer.U16LE(1);
  writer.S16LE(static_cast<int16_t>(-(halfW + x0)));
  writer.S16LE(static_cast<int16_t>(halfH + y0));
  writer.S16LE(static_cast<int16_t>(w));
  writer.S16LE(static_cast<int16_t>(h));
  writer.Fill(0, 8);
  const size_t segments = writer.Size();
  writer.U16LE(0);  // segs, patched when known
  writer.U16LE(0xFFFF);
  writer.U16LE(0);
  writer.U16LE(7);
  writer.Text("CSewSeg");
  return segments;
}

// The hoop in mm, whether it lies wide, and the fixed words that follow it in
// the version 2 and 4 headers.
void WriteHoopFields(ByteWriter& writer, const Hoop& hoop) {
  writer.U16LE(static_cast<uint16_t>(hoop.width));
  writer.U16LE(static_cast<uint16_t>(hoop.height));
  writer.U16LE(hoop.width > hoop.height ? 1 : 0);
  writer.U16LE(7);
  writer.U16LE(19);
  writer.Fill(0, 6);
  writer.U16LE(25);
  writer.U16LE(1);
}

void WritePlainHeader(ByteWriter& writer, const Hoop& hoop, bool large) {
  if (hoop.code == 1) {
    writer.Text("#PES0001");
    writer.U32LE(0);
    writer.U16LE(large ? 1 : 0);
    writer.U16LE(1);
    writer.U16LE(1);
    return;
  }
  if (hoop.code == 2) {
    writer.Text("#PES0020");
    writer.U32LE(0);
    WriteHoopFields(writer, hoop);
    writer.U16LE(0);
    writer.U16LE(1);
    return;
  }
  writer.Text("#PES0040");
  writer.U32LE(0);
  writer.U16LE(1);
  writer.Text("01");
  writer.Fill(0, 5);  // five empty strings
  writer.U16LE(0);
  WriteHoopFields(writer, hoop);
  writer.Fill(0, 6);
  writer.U16LE(1);
}

void WriteString(ByteWriter& writer, const std::string& text) {
  const size_t length = std::min<size_t>(text.size(), 255);
  writer.U8(static_cast<uint8_t>(length));
  writer.Text(text.substr(0, length));
}

std::string PropertyValue(const Design& design, std::string_view label) {
  for (const DesignProperty& property : design.properties) {
    if (EqualsIgnoringCase(property.label, label)) return property.value;
  }
  return "";
}

void WriteRealColorHeader(ByteWriter& writer, const Design& design, const Hoop& hoop) {
  const bool version6 = hoop.code == 7;
  const bool version55 = (hoop.width == 200 && hoop.height == 300) || (hoop.width == 300 && hoop.height == 200);
  const bool version56 = hoop.width == 130 && hoop.height == 50;
  writer.Text(version6 ? "#PES0060" : version55 ? "#PES0055" : version56 ? "#PES0056" : "#PES0050");
  writer.U32LE(0);
  writer.U16LE(1);
  writer.Text(version6 ? "02" : (version55 || version56) ? "10" : "01");
  for (const char* label : {"File Name", "Category", "Author", "Search Keys", "Comment"}) {
    WriteString(writer, PropertyValue(design, label));
  }
  writer.U16LE(0);
  if (version6) writer.U16LE(0);
  const int32_t hoopWidth = design.hoopWidth != 0 ? design.hoopWidth : version6 ? 180 : 160;
  const int32_t hoopHeight = design.hoopHeight != 0 ? design.hoopHeight : version6 ? 300 : 260;
  writer.U16LE(static_cast<uint16_t>(hoopWidth));
  writer.U16LE(static_cast<uint16_t>(hoopHeight));
  writer.U16LE(0);
  if (version6) {
    for (const int32_t word : {230, 330, hoopWidth, hoopHeight, 100}) writer.U16LE(static_cast<uint16_t>(word));
  }
  for (const uint16_t word : {7, 19, 0, 0, 0, 25, 1, 0}) writer.U16LE(word);
  writer.U32LE(0x80000000);
  writer.U16LE(0x3F);
  writer.Fill(0, 6);
  writer.U32LE(0x80000000);
  writer.U16LE(0x3F);
  writer.Fill(0, 13);
  writer.U16LE(static_cast<uint16_t>(design.fileThreads.size()));
  for (const ThreadColor& record : design.fileThreads) {
    WriteString(writer, record.catalogNumber);
    writer.U8(static_cast<uint8_t>(record.rgb));
    writer.U8(static_cast<uint8_t>(record.rgb >> 8));
    writer.U8(static_cast<uint8_t>(record.rgb >> 16));
    writer.U8(0);
    writer.S32LE(record.threadKind);
    WriteString(writer, record.description);
    WriteString(writer, record.brand);
    WriteString(writer, record.chart);
  }
}

// The stitches again as absolute segments from the first node's place, y
// negated. A segment starts at a colour change and wherever the jump state
// changes; with `changeIsJump` a change counts as a jump. Returns the segment
// count and fills `colorStarts` with the segment counter each colour starts at.
uint16_t WriteSegments(std::vector<uint8_t>& out, const Design& design, bool changeIsJump,
                       std::span<const uint16_t> segmentColors, std::vector<uint16_t>& colorStarts) {
  ByteWriter writer(out);
  const size_t colors = segmentColors.size();
  colorStarts.assign(colors, 0);
  auto jumpState = [&](const StitchNode& node) { return node.IsJump() || (changeIsJump && node.IsColorStop()); };

  uint16_t segments = 0;
  size_t countOffset = 0;
  uint16_t points = 0;
  int32_t x = 0, y = 0;
  auto startSegment = [&](bool jump, size_t thread) {
    if (segments > 0) {
      ByteWriter(out).PatchU16LE(countOffset, points);
      writer.U16LE(kSegmentSeparator);
    }
    ++segments;
    writer.U16LE(jump ? 1 : 0);
    writer.U16LE(segmentColors.empty() ? 0 : segmentColors[std::min(thread, colors - 1)]);
    countOffset = writer.Size();
    writer.U16LE(0);
    points = 0;
  };
  auto addPoint = [&] {
    writer.S16LE(static_cast<int16_t>(x));
    writer.S16LE(static_cast<int16_t>(-y));
    ++points;
  };

  const StitchNode* first = design.stitches.Head();
  // The counter of colour starts runs one ahead when the design opens with a jump.
  int counter = first->IsJump() ? 1 : 0;
  size_t stored = 0;
  size_t thread = 0;
  bool previousJump = first->IsJump();
  bool previousSegmentJump = jumpState(*first);
  startSegment(previousSegmentJump, 0);
  addPoint();  // the first node stands at (0, 0)
  for (const StitchNode* node = first->Next(); node != nullptr; node = node->Next()) {
    const bool jump = node->IsJump();
    const bool jumpChanged = jump != previousJump;
    if (jumpChanged) ++counter;
    if (node->IsColorStop()) {
      if (!jumpChanged && !changeIsJump) ++counter;
      if (stored + 1 < colors) colorStarts[++stored] = static_cast<uint16_t>(counter);
      ++thread;
    }
    previousJump = jump;
    const bool segmentJump = jumpState(*node);
    if (node->IsColorStop() || segmentJump != previousSegmentJump) {
      startSegment(segmentJump, thread);
      addPoint();  // each segment begins where the one before ended
    }
    previousSegmentJump = segmentJump;
    x = Wrap32(int64_t{x} + node->dx);
    y = Wrap32(int64_t{y} + node->dy);
    addPoint();
  }
  ByteWriter(out).PatchU16LE(countOffset, points);
  return segments;
}

void WriteColorTable(ByteWriter& writer, std::span<const uint16_t> starts, std::span<const uint16_t> colors,
                     bool realColors) {
  const size_t entrySize = realColors ? 12 : 4;
  const size_t fixed = realColors ? 10 : 6;
  const size_t count = std::min(starts.size(), (kColorTableRoom - fixed) / entrySize);
  writer.U16LE(static_cast<uint16_t>(count));
  for (size_t i = 0; i < count; ++i) {
    writer.U16LE(starts[i]);
    if (realColors) {
      writer.U8(static_cast<uint8_t>(colors[i]));
      writer.U8(0);
    } else {
      writer.U16LE(colors[i]);
    }
  }
  if (!realColors) {
    writer.U32LE(0);
    return;
  }
  writer.Fill(0, 12);
  for (size_t i = 0; i < count; ++i) {
    writer.U8(static_cast<uint8_t>(i));
    writer.Fill(0, i + 1 < count ? 7 : 3);  // the last entry is cut to 4 bytes
  }
}

std::vector<uint8_t> PaletteIndices(const Design& design, bool allowExtended) {
  std::vector<uint8_t> indices;
  indices.reserve(design.threads.size());
  for (const ThreadColor& thread : design.threads) {
    const Channels c = SplitColor(thread.rgb);
    indices.push_back(static_cast<uint8_t>(PecNearestColor(c.r, c.g, c.b, design.formatVersion != 0, allowExtended)));
  }
  return indices;
}

// Turns the design from the fit's turn back upright, picks the hoop by the
// upright size and turns the design as that hoop asks; leaves the bounds
// current. The bounds a design arrives with are measured anew. Where quarter
// turns carry them exactly, the two turns are made as one, and none at all
// when the hoop asks for the fit's own turn.
template <typename PickHoop>
Hoop TurnToHoop(Design& design, PickHoop pickHoop) {
  design.ComputeBounds();
  if (!design.BoundsTurnExactly()) {
    design.RotateQuarterMeasured(-design.fitRotation, false);
    const Hoop hoop = pickHoop(Width(design), Height(design));
    design.RotateQuarterMeasured(hoop.turn, true);
    return hoop;
  }
  const bool across = design.fitRotation != 0;
  const Hoop hoop = pickHoop(across ? Height(design) : Width(design), across ? Width(design) : Height(design));
  const int32_t quarters = hoop.turn - design.fitRotation;
  for (int32_t i = 0; i < std::abs(quarters); ++i) design.RotateQuarterMeasured(quarters > 0 ? 1 : -1, true);
  return hoop;
}

// The PES part takes about 4 bytes a node (a segment point) beside the PEC
// block: room for both, so that a large design's bytes are not moved to grow.
void ReserveOutput(std::vector<uint8_t>& out, const Design& design, size_t pecSize) {
  constexpr size_t kHeadersAndTables = 4096;
  out.reserve(out.size() + pecSize + 4 * design.stitches.Size() + 16 * design.threads.size() + kHeadersAndTables);
}

std::string LabelStem(const Design& design) { return DesignPath(design.name).GetStem(); }

int WritePlain(Design& design, std::vector<uint8_t>& out) {
  const Hoop hoop = TurnToHoop(design, PickPlainHoop);
  if (hoop.turn != 0) design.hoopRotation = hoop.turn;
  // Every piece of a cut move lands within the box of that move, so the
  // bounds that TurnToHoop left still stand.
  CutLongMoves(design);
  design.stitches.Head()->flags &= ~STITCH_JUMP;
  CentreThroughFirstNode(design);

  const std::vector<uint8_t> indices = PaletteIndices(design, hoop.code == 4);
  std::vector<uint8_t> pec;
  const size_t thumbnails = AppendPecBlock(pec, design, {LabelStem(design), indices, false, false});
  design.RotateQuarterMeasured(-hoop.turn, true);

  const StitchNode& first = *design.stitches.Head();
  const int32_t w = Width(design), h = Height(design);
  const int32_t x0 = first.dx - w / 2;
  const int32_t y0 = first.dy + h / 2 - (hoop.turn != 0 ? h : 0);
  ReserveOutput(out, design, pec.size());
  ByteWriter writer(out);
  WritePlainHeader(writer, hoop, w > 1000 || h > 1000);
  const size_t segsOffset = WriteObjectBlock(writer, design, x0, y0, true);
  const std::vector<uint16_t> colors(indices.begin(), indices.end());
  std::vector<uint16_t> starts;
  ByteWriter(out).PatchU16LE(segsOffset, WriteSegments(out, design, false, colors, starts));
  WriteColorTable(writer, starts, colors, false);
  if (hoop.code == 4) writer.U32LE(0);
  writer.PatchU32LE(8, static_cast<uint32_t>(out.size()));

  RenderPecThumbnails(design, std::span<uint8_t>(pec).subspan(thumbnails));
  writer.Bytes(pec);
  if (hoop.code == 4) {
    const size_t colorCount = design.threads.size();
    const size_t size = (colorCount + 2 + kTrailerBlock - 1) / kTrailerBlock * kTrailerBlock;
    const size_t start = out.size();
    writer.U8(static_cast<uint8_t>(std::min<size_t>(colorCount - 1, 255)));
    for (const ThreadColor& thread : design.threads) writer.U8(static_cast<uint8_t>(thread.chartIndex));
    writer.Fill(0x20, start + size - out.size());
  }
  return 0;
}

int WriteRealColors(Design& design, std::vector<uint8_t>& out) {
  PrepareRealColorStops(design);
  const Hoop hoop = TurnToHoop(design, PickRealColorHoop);
  design.hoopWidth = hoop.width;
  design.hoopHeight = hoop.height;
  const std::vector<int> headerIndices = BuildHeaderThreads(design);
  // Threads of one colour and chart share a number.
  int32_t nextNumber = 0;
  for (size_t i = 0; i < design.threads.size(); ++i) {
    ThreadColor& thread = design.threads[i];
    const auto earlier = std::find_if(design.threads.begin(), design.threads.begin() + static_cast<ptrdiff_t>(i),
                                      [&](const ThreadColor& t) { return t.rgb == thread.rgb && t.chart == thread.chart; });
    thread.chartIndex = earlier != design.threads.begin() + static_cast<ptrdiff_t>(i) ? earlier->chartIndex : nextNumber++;
  }
  design.hoopRotation = hoop.turn;
  CentreThroughFirstNode(design);

  const int32_t w = Width(design), h = Height(design);
  StitchNode* head = design.stitches.Head();
  head->dx = Wrap32(int64_t{head->dx} + w / 2);
  head->dy = Wrap32(int64_t{head->dy} - h / 2);
  head->flags = (head->flags | STITCH_JUMP) & ~STITCH_COLORSTOP;
  // Every piece of a split move lands within the box of that move.
  design.SplitLongStitches(kLongestMove, 0, true);

  const std::vector<uint8_t> indices = PaletteIndices(design, true);
  std::vector<uint8_t> pec;
  const size_t thumbnails = AppendPecBlock(pec, design, {LabelStem(design), indices, true, true});
  // The whole design moved to the corner with its head: so did its box.
  design.maxX = Wrap32(int64_t{design.maxX} + w / 2);
  design.minX = Wrap32(int64_t{design.minX} + w / 2);
  design.maxY = Wrap32(int64_t{design.maxY} - h / 2);
  design.minY = Wrap32(int64_t{design.minY} - h / 2);
  design.RotateQuarterMeasured(-hoop.turn, true);

  const StitchNode& first = *design.stitches.Head();
  const int32_t halfW = Width(design) / 2, halfH = Height(design) / 2;
  const int32_t x0 = hoop.turn != 0 ? first.dx : first.dx - halfW;
  const int32_t y0 = hoop.turn != 0 ? first.dy : first.dy + halfH;
  ReserveOutput(out, design, pec.size());
  ByteWriter writer(out);
  WriteRealColorHeader(writer, design, hoop);
  const size_t segsOffset = WriteObjectBlock(writer, design, x0, y0, false);
  const std::vector<uint16_t> colors(headerIndices.begin(), headerIndices.end());
  std::vector<uint16_t> starts;
  ByteWriter(out).PatchU16LE(segsOffset, WriteSegments(out, design, true, colors, starts));
  WriteColorTable(writer, starts, colors, true);
  writer.PatchU32LE(8, static_cast<uint32_t>(out.size()));

  design.CentreOnCurrentBounds();  // the pictures are fitted around (0, 0)
  RenderPecThumbnails(design, std::span<uint8_t>(pec).subspan(thumbnails));
  writer.Bytes(pec);

  const size_t start = out.size();
  const size_t listed = std::min(indices.size(), kTrailerBlock - 1);
  writer.U8(static_cast<uint8_t>(indices.size() - 1));
  writer.Bytes(std::span<const uint8_t>(indices).first(listed));
  writer.Fill(0x20, start + kTrailerBlock - out.size());
  for (const ThreadColor& thread : design.threads) writer.Bytes(DrawPesLabel(thread));
  for (const ThreadColor& thread : design.threads) {
    writer.U8(static_cast<uint8_t>(thread.rgb));
    writer.U8(static_cast<uint8_t>(thread.rgb >> 8));
    writer.U8(static_cast<uint8_t>(thread.rgb >> 16));
  }
  return 0;
}

// Header thread mapping.

constexpr std::array<const char*, 3> kAppliqueNames{"Applique Mat.", "Applique Pos.", "Applique"};
constexpr std::array<const char*, 3> kAppliqueNumbers{"100", "101", "102"};
constexpr int32_t kPaletteKind = 10;
constexpr int32_t kCountryKind = 11;
constexpr int32_t kChartKind = 1;

struct ChartBrand {
  int32_t chartIndex;
  const char* chart;
  const char* brand;
  int32_t kind;
};
constexpr std::array<ChartBrand, 8> kChartBrands{{
    {0x400, "MA Rayon", "MA Rayon", kChartKind},
    {0x700, "MA Polyneon", "MA Polyneon", kChartKind},
    {0x1100, "Sulky", "SU Rayon", kChartKind},
    {0x1500, "RA Poly", "RA Polyester", kChartKind},
    {0x1600, "RA Rayon", "RA Rayon", kChartKind},
    {0x1700, "Isacord", "ISACORD", kChartKind},
    {0x1800, "GU Dekor", "GU Dekor", kChartKind},
    {0x1200, "Flesh Tone", "Flesh Tone(EMBROIDERY)", kPaletteKind},
}};

int NearestPaletteIndex(uint32_t rgb) {
  const Channels c = SplitColor(rgb);
  return PecNearestColor(c.r, c.g, c.b, false, false);
}

// Catalogue number and description of the nearest standard palette entry.
void NameByPalette(ThreadColor& thread, int index) {
  thread.description = std::to_string(index);
  thread.catalogNumber = std::string(PecStandardNumber(index));
}

// A Country record, like a palette one, keeps in its description the palette
// position that readers name its colour by. That is the thread's own: the
// description a read record gave it, or the code of its chart entry (the
// position of the same colour name). Without one, the nearest palette entry.
int CountryPosition(const ThreadColor& thread, const std::string& ownNumber) {
  int position = 0;
  const auto [end, error] = std::from_chars(ownNumber.data(), ownNumber.data() + ownNumber.size(), position);
  const bool whole = error == std::errc() && end == ownNumber.data() + ownNumber.size();
  return whole && !PecStandardNumber(position).empty() ? position : NearestPaletteIndex(thread.rgb);
}

void TakeChartEntry(ThreadColor& thread, std::string_view chart) {
  int32_t distance = 0;
  const ThreadColor& entry = NearestChartThread(thread.rgb, ChartByName(chart), distance);
  thread.rgb = entry.rgb;
  thread.catalogNumber = entry.catalogNumber;
  thread.description = entry.description;
  thread.colorName = entry.colorName;
}

std::string SourceChart(const Design& design) {
  const int code = design.sourceFormat != 0 ? design.sourceFormat % 100
                                            : FormatFromExtension(DesignPath(design.name).GetExtension());
  switch (code) {
    case kFormatEmd: return "EMD";
    case kFormatJef: return "JEF";
    case kFormatSew: return "SEW";
    case kFormatShv: return "SHV(VIP)";
    case kFormatVip: return "VIP(VIP)";
    case kFormatXxx: return "XXX(XXX)";
    default: return "";
  }
}

void MapHeaderThread(ThreadColor& thread, const Design& design) {
  if (design.formatVersion == 0) {
    thread.chartIndex = -1;
    thread.chart = SourceChart(design);
  } else if (thread.brand.empty() && thread.chart.empty() && thread.chartIndex < 0x100) {
    thread.chartIndex = 0x100;
  }
  const bool unbranded = thread.brand.empty();
  if (thread.chartIndex == 0x200) {
    if (unbranded) TakeChartEntry(thread, "Country");
    NameByPalette(thread, CountryPosition(thread, unbranded ? thread.catalogNumber : thread.description));
    thread.brand = "COUNTRY";
    thread.threadKind = kCountryKind;
    return;
  }
  for (const ChartBrand& chart : kChartBrands) {
    if (chart.chartIndex != thread.chartIndex) continue;
    if (unbranded) TakeChartEntry(thread, chart.chart);
    thread.brand = chart.brand;
    thread.threadKind = chart.kind;
    return;
  }
  const uint32_t wanted = thread.rgb;
  const int index = NearestPaletteIndex(wanted);
  uint8_t r, g, b;
  thread.rgb = PecColorRgb(index, r, g, b);
  NameByPalette(thread, index);
  thread.brand = "EMBROIDERY";
  thread.threadKind = kPaletteKind;
  if (thread.chartIndex == 0x100) return;
  int32_t distance = 0;
  const ThreadColor& sulky = NearestChartThread(wanted, ChartByName("Sulky"), distance);
  const Channels target = SplitColor(wanted);
  if (ColorDistance(SplitColor(sulky.rgb), target) < ColorDistance(SplitColor(thread.rgb), target)) {
    thread.rgb = sulky.rgb;
    thread.catalogNumber = sulky.catalogNumber;
    thread.description = sulky.description;
    thread.brand = "SU Rayon";
    thread.threadKind = kChartKind;
  }
}

}  // namespace

std::vector<int> BuildHeaderThreads(Design& design) {
  design.fileThreads.clear();
  std::vector<int> positions;
  positions.reserve(design.threads.size());
  for (ThreadColor& thread : design.threads) {
    bool applique = false;
    for (size_t i = 0; i < kAppliqueNames.size(); ++i) {
      if (thread.colorName != kAppliqueNames[i]) continue;
      thread.catalogNumber = kAppliqueNumbers[i];
      thread.description.clear();
      thread.brand.clear();
      thread.chart.clear();
      thread.chartIndex = 0;
      thread.threadKind = kPaletteKind;
      applique = true;
    }
    // An applique part keeps its empty brand: that is how a reader knows it.
    if (!applique) MapHeaderThread(thread, design);
    const auto record = std::find_if(design.fileThreads.begin(), design.fileThreads.end(),
                                     [&](const ThreadColor& r) { return r.rgb == thread.rgb; });
    positions.push_back(static_cast<int>(record - design.fileThreads.begin()));
    if (record == design.fileThreads.end()) design.fileThreads.push_back(thread);
  }
  return positions;
}

int WritePesFile(Design& design, std::vector<uint8_t>& out, const PesWriteOptions& options) {
  out.clear();
  if (design.stitches.Empty()) return -1;
  if (design.threads.empty()) return 0;
  if (design.threads.size() > kMaxPecColors) {
    // The count would wrap and a machine would sew the wrong colours.
    ReportToUser(design.name + ": Could not create PES file: it has more than 256 colours.");
    return -1;
  }
  // options.ensureTrims deliberately has no effect on the bytes.
  const int result = options.pes5 ? WriteRealColors(design, out) : WritePlain(design, out);
  if (result == 0 && options.pes5 && options.trailingPad) ByteWriter(out).U16LE(0);
  return result;
}

}  // namespace fennick
