#include "formats/shv.h"

#include <cstdio>
#include <string>

#include "core/byte_cursor.h"
#include "threads/thread_charts.h"

namespace fennick {
namespace {

constexpr size_t kTitleLength = 86;
constexpr size_t kTitle = 87;
constexpr size_t kMinimumHeader = 8;  // beyond the title
constexpr uint8_t kLargePicture = 255;
constexpr size_t kColorTableSkip = 23;
constexpr size_t kColorRecord = 14;
constexpr size_t kColorRecordMinimum = 5;
constexpr size_t kStitchDataBack = 4;
constexpr uint8_t kEscape = 0x80;
constexpr uint8_t kLongMove = 0x01;

int32_t ShortMove(uint8_t value) { return value > 128 ? value - 256 : value; }
int32_t LongMove(uint16_t value) { return value > 32768 ? value - 65536 : value; }

// The offset behind the picture, or SIZE_MAX when it cannot be found.
size_t SkipPicture(std::span<const uint8_t> bytes, size_t p) {
  ByteReader reader(bytes, p);
  const uint8_t a = reader.U8();
  uint8_t b = reader.U8();
  if (!reader.Ok()) return SIZE_MAX;
  if (a == kLargePicture && b == kLargePicture) {
    reader.Seek(p + 3);
    const uint64_t width = reader.U16BE();
    const uint64_t height = reader.U16BE();
    if (!reader.Ok()) return SIZE_MAX;
    return p + 5 + (height / 2 + height % 2) * width + 10;
  }
  const uint64_t evenB = b + (b % 2);
  return p + (a * evenB) / 2 + 6;
}

}  // namespace

bool ReadShv(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty() || design.name.empty()) return false;
  std::string name = std::move(design.name);
  design.Clear();
  design.name = std::move(name);
  if (bytes.size() < kTitle) return false;
  const size_t titleLength = bytes[kTitleLength];
  if (bytes.size() < kTitle + titleLength + kMinimumHeader) return false;
  size_t p = SkipPicture(bytes, kTitle + titleLength);
  if (p > bytes.size()) return false;

  const size_t colorCount = ByteReader(bytes, p).U8();
  p += kColorTableSkip;
  for (size_t i = 0; i < colorCount && p < bytes.size() && bytes.size() - p >= kColorRecordMinimum; ++i) {
    ByteReader reader(bytes, p - 2);
    const int32_t stitchCount = reader.U16BE();
    const int paletteIndex = reader.U8();
    const int chartNumber = reader.U8();
    uint8_t code[4];
    for (uint8_t& byte : code) byte = reader.U8();  // 0 past the end
    ThreadColor thread = DefaultPaletteColor(paletteIndex);
    thread.stitchCount = stitchCount;
    thread.chartIndex = chartNumber;
    char codeText[9];
    std::snprintf(codeText, sizeof codeText, "%02x%02x%02x%02x", code[0], code[1], code[2], code[3]);
    thread.catalogNumber = codeText;
    const ThreadColor chartThread = ChartThreadByCode(chartNumber, codeText);
    if (!chartThread.colorName.empty()) {
      thread.colorName = chartThread.colorName;
      thread.rgb = chartThread.rgb;
    }
    design.threads.push_back(std::move(thread));
    p += kColorRecord;
  }
  p -= kStitchDataBack;

  ByteReader reader(bytes, p);  // past the end: at the end, and no moves
  for (size_t t = 0; t < design.threads.size(); ++t) {
    const int32_t stitchCount = design.threads[t].stitchCount;
    for (int32_t counter = 0; counter < stitchCount && !reader.AtEnd();) {
      uint32_t flags = 0;
      while (reader.Has(1) && bytes[reader.Offset()] == kEscape) {
        reader.Skip(1);
        if (reader.U8() == kLongMove) flags |= STITCH_JUMP;
        ++counter;
      }
      int32_t x, y;
      if (flags & STITCH_JUMP) {
        x = LongMove(reader.U16BE());
        y = LongMove(reader.U16BE());
        counter += 2;
      } else {
        x = ShortMove(reader.U8());
        y = ShortMove(reader.U8());
        ++counter;
      }
      if (!reader.Ok()) break;  // a move cut off by the end of the file
      design.stitches.PushBack(x, -y, flags);
    }
    if (t + 1 < design.threads.size()) design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
  }

  design.ReclassifyJumps();
  design.Centre();
  return true;
}

}  // namespace fennick
