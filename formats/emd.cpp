#include "formats/emd.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "threads/palettes.h"

namespace fennick {
namespace {

constexpr size_t kHeaderSize = 50;
constexpr uint8_t kEscape = 0x80;
constexpr uint8_t kEnd = 0xFD;
constexpr uint8_t kColorChange = 0x2A;
constexpr uint8_t kJump = 0x80;
constexpr uint8_t kEmptyJumpFirst = 0x90;
constexpr uint8_t kEmptyJumpLast = 0x92;

// Leading blanks, a sign and digits, as the colour files write numbers;
// anything else ends the number. Kept in range instead of overflowing.
int64_t LeadingNumber(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  int64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = std::min<int64_t>(value * 10 + (text[i] - '0'), INT32_MAX);
  }
  return negative ? -value : value;
}

// Past the next ',' of `text`; false when there is none.
bool PastComma(std::string_view& text) {
  const size_t comma = text.find(',');
  if (comma == std::string_view::npos) return false;
  text.remove_prefix(comma + 1);
  return true;
}

// Lines "label,red,green,blue\r\n" after a first line with their count.
void ApplyColorFile(Design& design, std::string_view text) {
  text = text.substr(0, text.find('\0'));
  const int64_t listed = LeadingNumber(text);
  const size_t count = static_cast<size_t>(std::clamp<int64_t>(listed, 0, static_cast<int64_t>(design.threads.size())));
  size_t lineEnd = text.find('\n');
  for (size_t i = 0; i < count && lineEnd != std::string_view::npos; ++i) {
    text.remove_prefix(lineEnd + 1);
    lineEnd = text.find('\n');
    std::string_view line = text.substr(0, lineEnd);
    // The character before the line feed is the carriage return.
    if (lineEnd != std::string_view::npos && !line.empty()) line.remove_suffix(1);
    if (!PastComma(line)) return;  // the label
    const int64_t red = LeadingNumber(line);
    if (!PastComma(line)) return;
    const int64_t green = LeadingNumber(line);
    if (!PastComma(line)) return;
    const int64_t blue = LeadingNumber(line);
    ThreadColor& thread = design.threads[i];
    const auto r = static_cast<uint8_t>(red), g = static_cast<uint8_t>(green), b = static_cast<uint8_t>(blue);
    thread.rgb = ColorRef(r, g, b);
    thread.colorName = PecColorName(PecNearestColor(r, g, b, false, false));
  }
}

}  // namespace

bool ReadEmd(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.empty()) return false;
  design.threads.clear();
  design.stitches.Clear();
  design.properties.clear();
  design.notes.clear();
  design.hoopRotation = 0;
  design.fitRotation = 0;

  size_t colorCount = 1;
  if (bytes.size() > kHeaderSize + 2) design.stitches.Reserve((bytes.size() - kHeaderSize) / 2);
  ByteReader reader(bytes, kHeaderSize);
  while (bytes.size() > 2 && reader.Offset() < bytes.size() - 2) {
    const uint8_t first = reader.U8();
    const uint8_t second = reader.U8();
    if (first != kEscape) {
      design.stitches.PushBack(static_cast<int8_t>(first), static_cast<int8_t>(second), 0);
    } else if (second == kEnd) {
      break;
    } else if (second == kColorChange) {
      design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
      ++colorCount;
    } else if (second == kJump) {
      const int8_t dx = reader.S8();
      const int8_t dy = reader.S8();
      if (!reader.Ok()) break;
      design.stitches.PushBack(dx, dy, STITCH_JUMP);
    } else if (second >= kEmptyJumpFirst && second <= kEmptyJumpLast) {
      design.stitches.PushBack(0, 0, STITCH_JUMP);
    }
    // Deliberately skipped: 0x80 with any other second byte has no meaning.
  }
  design.MergeJumps(false);
  design.ReclassifyJumps();
  design.Centre();

  // The first colour has no stop of its own, and the palette does not wrap.
  for (size_t i = 0; i < colorCount; ++i) design.threads.push_back(DefaultPaletteColor(static_cast<int>(i)));
  design.defaultColors = true;

  DesignPath colorPath(design.name);
  colorPath.ChangeExtension("col");
  std::vector<uint8_t> colorFile;
  if (!design.name.empty() && ReadDesignBytes(colorPath.ToString(), colorFile) == 0) {
    ApplyColorFile(design, std::string(colorFile.begin(), colorFile.end()));
    design.defaultColors = false;
  }
  return true;
}

}  // namespace fennick
