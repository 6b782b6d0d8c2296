#include "formats/pcs.h"

#include <algorithm>
#include <array>
#include <string>

#include "core/byte_cursor.h"
#include "core/user_interface.h"
#include "threads/palettes.h"

namespace fennick {
namespace {

constexpr size_t kRecordSize = 9;
constexpr size_t kColorCountOffset = 2;
constexpr size_t kColorTableOffset = 4;
constexpr size_t kTableColors = 16;
constexpr size_t kMaxNodes = 32767;  // the reader takes the count as signed 16 bits
constexpr size_t kSuggestedSplit = 32000;
constexpr uint8_t kFileMark = 0x32;
constexpr uint8_t kLargeHoop = 3;
constexpr uint8_t kSmallHoop = 2;
constexpr int32_t kSmallHoopLimit = 800;  // stitch units, in either axis
constexpr uint8_t kFlagMask = 0x03;
constexpr uint8_t kColorChange = 3;
constexpr uint8_t kEndPosition = 4;  // the first and the last position record
// One stitch unit is 153.5 file units.
constexpr int64_t kFileUnits = 1535;
constexpr int64_t kStitchUnits = 10;

struct Start {
  int32_t x, y;
};
constexpr Start kLargeHoopStart{92100, 88262};
constexpr Start kSmallHoopStart{61400, 61400};

// The writer's table where the design gives no colour, red, green, blue.
constexpr std::array<std::array<uint8_t, 3>, kTableColors> kDefaultTable{{
    {0, 0, 0}, {0, 0, 128}, {0, 0, 255}, {0, 128, 128}, {0, 255, 255}, {128, 0, 128},
    {255, 0, 255}, {128, 0, 0}, {255, 0, 0}, {0, 128, 0}, {0, 255, 0}, {128, 128, 0},
    {255, 255, 0}, {128, 128, 128}, {192, 192, 192}, {255, 255, 255},
}};

int32_t ToStitchUnits(int32_t fileValue) {
  return static_cast<int32_t>(int64_t{fileValue} * kStitchUnits / kFileUnits);
}

int64_t ToFileUnits(int64_t stitchUnits) { return stitchUnits * kFileUnits / kStitchUnits; }

uint8_t Channel(uint32_t rgb, int shift) { return static_cast<uint8_t>(rgb >> shift); }

uint32_t Rgb(uint32_t colorRef) { return colorRef & 0xFFFFFF; }

}  // namespace

bool ReadPcs(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty()) return false;
  // ReclassifyJumps needs the name's extension, so it outlives the clearing.
  std::string name = std::move(design.name);
  design.Clear();
  design.name = std::move(name);

  ByteReader reader(bytes, kColorCountOffset);
  const size_t colorCount = reader.U8();
  std::vector<ThreadColor> colors;
  reader.Seek(kColorTableOffset);
  for (size_t index = 0; index < colorCount && reader.Has(4); ++index) {
    ThreadColor color;
    const uint8_t r = reader.U8(), g = reader.U8(), b = reader.U8();
    reader.Skip(1);
    color.rgb = ColorRef(r, g, b);
    color.chartIndex = static_cast<int32_t>(index);
    colors.push_back(std::move(color));
  }

  reader.Seek(kColorTableOffset + 4 * colorCount);
  const int32_t recordCount = reader.S16LE();
  if (reader.Ok() && recordCount > 0) {
    design.stitches.Reserve(std::min<size_t>(static_cast<size_t>(recordCount), bytes.size() / kRecordSize));
    reader.Seek(kColorTableOffset + 4 * colorCount + 2);
    int32_t counter = 0;
    int32_t lastX = 0, lastY = 0;
    while (counter < recordCount && bytes.size() > kRecordSize && reader.Offset() < bytes.size() - kRecordSize) {
      const size_t recordStart = reader.Offset();
      int32_t x = reader.S32LE();
      int32_t y = reader.S32LE();
      const uint8_t flag = reader.U8() & kFlagMask;
      // Only stitch records count, deliberately: writers leave the colour
      // records out of the count, and counting them drops the last stitches.
      const bool colorRecord = flag == kColorChange;
      bool colorMark = false;
      if (colorRecord) {
        const size_t index = bytes[recordStart];
        if (index < colors.size()) {
          design.threads.push_back(colors[index]);
          colorMark = true;
        }
      }
      if (colorRecord || (x == 0 && y == 0)) {
        // The following record's position, its flag unread; a file that ends
        // inside it ends here.
        x = reader.S32LE();
        y = reader.S32LE();
        reader.Skip(1);
        if (!reader.Ok()) break;
        if (!colorRecord) ++counter;  // the (0, 0) record is a stitch record
      }
      const int32_t stitchX = ToStitchUnits(x), stitchY = ToStitchUnits(y);
      design.stitches.PushBack(static_cast<int32_t>(static_cast<uint32_t>(stitchX) - static_cast<uint32_t>(lastX)),
                               static_cast<int32_t>(static_cast<uint32_t>(stitchY) - static_cast<uint32_t>(lastY)),
                               colorMark ? STITCH_COLORSTOP : 0);
      lastX = stitchX;
      lastY = stitchY;
      ++counter;
    }
  }

  if (StitchNode* head = design.stitches.Head()) {
    NamePcsColors(design);
    head->flags = (head->flags | STITCH_JUMP) & ~STITCH_COLORSTOP;
    design.ReclassifyJumps();
    design.NormalizeColorStops();
    design.Centre();
  }
  return true;
}

int WritePcs(Design& design, std::vector<uint8_t>& out) {
  out.clear();
  if (design.stitches.Empty()) return -1;
  if (design.stitches.Size() > kMaxNodes) {
    ReportFormatLimit(design.name, "PCS", kMaxNodes, "stitches", design.stitches.Size(), "--split-stitches",
                      kSuggestedSplit);
    return -1;
  }
  const size_t threadCount = design.threads.size();
  const size_t nodeCount = design.stitches.Size();
  // The file's size, whatever the records need; its unused end stays zero.
  const size_t fileSize = kRecordSize * (threadCount + nodeCount + 8);
  out.reserve(fileSize);
  ByteWriter writer(out);

  const int64_t width = int64_t{design.maxX} - design.minX;
  const int64_t height = int64_t{design.maxY} - design.minY;
  const bool large = width > kSmallHoopLimit || height > kSmallHoopLimit;
  writer.U8(kFileMark);
  writer.U8(large ? kLargeHoop : kSmallHoop);
  writer.U8(static_cast<uint8_t>(kTableColors));
  writer.U8(0);
  // The design's distinct colours, in order of first use, so that no colour
  // is lost while the design has sixteen or fewer; the defaults fill the rest.
  std::vector<uint32_t> slotColors;
  for (const ThreadColor& thread : design.threads) {
    const uint32_t rgb = Rgb(thread.rgb);
    if (slotColors.size() < kTableColors && std::find(slotColors.begin(), slotColors.end(), rgb) == slotColors.end()) {
      slotColors.push_back(rgb);
    }
  }
  std::array<std::array<uint8_t, 4>, kTableColors> table{};
  for (size_t i = 0; i < kTableColors; ++i) {
    if (i < slotColors.size()) {
      table[i] = {Channel(slotColors[i], 0), Channel(slotColors[i], 8), Channel(slotColors[i], 16), 0};
    } else {
      table[i] = {kDefaultTable[i][0], kDefaultTable[i][1], kDefaultTable[i][2], 0};
    }
    writer.Bytes(table[i]);
  }
  // Only the low half survives: the first record overwrites the high half.
  writer.U16LE(static_cast<uint16_t>(nodeCount));

  design.stitches.Tail()->flags |= STITCH_JUMP;
  design.stitches.Head()->flags |= STITCH_COLORSTOP;
  const std::span<const uint8_t> tableBytes(table[0].data(), 4 * kTableColors);
  const Start start = large ? kLargeHoopStart : kSmallHoopStart;
  int64_t sumX = 0, sumY = 0;  // stitch units from the start
  size_t colorCounter = 0;
  const StitchNode* tail = design.stitches.Tail();
  bool first = true;
  for (const StitchNode& node : design.stitches) {
    if (node.IsColorStop()) {
      // Each change names the slot of its own colour: the nearest is the exact
      // one while the table holds it. A change without a thread keeps the
      // running number, and past the table the slot nearest to black.
      uint8_t index = static_cast<uint8_t>(colorCounter);
      if (colorCounter < threadCount || colorCounter >= kTableColors) {
        const uint32_t rgb = colorCounter < threadCount ? design.threads[colorCounter].rgb : 0;
        index = static_cast<uint8_t>(PcsNearestIndex(tableBytes, Channel(rgb, 0), Channel(rgb, 8), Channel(rgb, 16)));
      }
      ++colorCounter;
      writer.U8(index);
      writer.Fill(0, 7);
      writer.U8(kColorChange);
    }
    // Each position is cut from the running sum, not built from cut moves,
    // whose errors would add up over a design.
    sumX += node.dx;
    sumY += node.dy;
    writer.U32LE(static_cast<uint32_t>(start.x + ToFileUnits(sumX)));
    writer.U32LE(static_cast<uint32_t>(start.y + ToFileUnits(sumY)));
    writer.U8(first || &node == tail ? kEndPosition : 0);
    first = false;
  }
  if (out.size() < fileSize) out.resize(fileSize, 0);
  return 0;
}

}  // namespace fennick
