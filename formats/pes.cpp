#include "formats/pes.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "core/byte_cursor.h"
#include "core/text.h"
#include "formats/pec.h"
#include "threads/palettes.h"

namespace fennick {
namespace {

constexpr size_t kShortestFile = 512;
constexpr size_t kPecOffsetField = 8;  // PES only; the writer stores 4 bytes, the reader takes 3
constexpr size_t kPecFileBlock = 8;    // a PEC file's block follows its 8-byte signature
constexpr size_t kBlockCountField = 12;
constexpr size_t kHoopFieldVersion20 = 12;
constexpr size_t kHoopFieldVersion25 = 16;
constexpr uint8_t kHeaderStrings = 16;
constexpr int32_t kPieceShift = 600;  // stitch units between the pieces of a multi-block file
constexpr uint8_t kPropertyKind = 0x28;
// Bytes of a block besides L and the colour thumbnails: 512 of header and the composite.
constexpr size_t kBlockOverhead = 512 + kPecThumbnailSize;
// From the end of a block's stitches to its real colours: the thumbnails, the
// 128-byte colour list and one 144-byte label bitmap per thread.
constexpr size_t kRealColorsBase = 868;
constexpr size_t kLabelBitmapSize = 144;

constexpr std::array<const char*, 5> kHeaderLabels{"File Name", "Category", "Author", "Search Keys", "Comment"};

struct BrandEntry {
  const char* inFile;
  int group;
  const char* brand;
  int32_t chartIndex;
};
constexpr std::array<BrandEntry, 11> kBrands{{
    {"EMBROIDERY", 1, "Embroidery", 0x100},
    {"COUNTRY", 2, "Country", 0x200},
    {"Option Color", 3, "PES v.4 Color", 0x100},
    {"Flesh Tone(EMBROIDERY)", 4, "Flesh Tone", 0x1200},
    {"SU RAYON", 5, "Sulky Rayon", 0x1100},
    {"MA RAYON", 6, "Madeira Rayon", 0x400},
    {"MA Polyneon", 7, "Madeira Poly", 0x700},
    {"RA RAYON", 8, "RA Rayon", 0x1600},
    {"RA Polyester", 9, "RA Poly", 0x1500},
    {"ISACORD", 10, "Isacord", 0x1700},
    {"GU Dekor", 11, "Guterman Dekor", 0x1800},
}};
// Brands whose colour name is the palette name of the record's number.
constexpr int kLastPaletteGroup = 3;
constexpr int kCountryGroup = 2;

constexpr std::array<const char*, 3> kAppliqueNames{"Applique Mat.", "Applique Pos.", "Applique"};
constexpr std::array<const char*, 3> kAppliqueNumbers{"100", "101", "102"};
constexpr int kFirstApplique = 62;  // PecPalette index of "Applique Mat."
constexpr int32_t kAppliqueKind = 10;

// The number that leading blanks, a sign and digits give, as far as digits go; 0 without any.
int LeadingNumber(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  int value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = std::min(value * 10 + (text[i] - '0'), 100'000'000);
  }
  return negative ? -value : value;
}

std::string Text(std::span<const uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

std::string ReadString(ByteReader& reader) { return Text(reader.Bytes(reader.U8())); }

// The header strings are walked with a one-byte cursor: every step wraps
// modulo 256, so strings long enough carry it back to the start of the file.
// Deliberately kept. Files hold at least 512 bytes, so it never leaves them.
class WrappingCursor {
 public:
  WrappingCursor(std::span<const uint8_t> bytes, uint8_t position) : bytes_(bytes), position_(position) {}
  uint8_t Position() const { return position_; }
  uint8_t Peek() const { return position_ < bytes_.size() ? bytes_[position_] : 0; }
  uint8_t U8() {
    const uint8_t value = Peek();
    ++position_;
    return value;
  }
  int16_t S16() {
    const uint8_t low = U8();
    return static_cast<int16_t>(low | U8() << 8);
  }
  void Skip(int count) { position_ = static_cast<uint8_t>(position_ + count); }
  std::string String() {
    std::string text(U8(), '\0');
    for (char& c : text) c = static_cast<char>(U8());
    return text;
  }

 private:
  std::span<const uint8_t> bytes_;
  uint8_t position_;
};

// Only the first four bytes of a header string are kept, on purpose.
uint32_t FirstFourBytes(const std::string& text) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4 && i < text.size(); ++i)
    number |= static_cast<uint32_t>(static_cast<uint8_t>(text[i])) << (8 * i);
  return number;
}

// hoopRotation and the turn of a version 40 and later header's hoop.
int HoopRotation(int32_t width, int32_t height) {
  if (width == 200 && height == 300) return 1;
  if ((width == 300 && height == 200) || (width == 130 && height == 50)) return 0;
  return width > height ? -1 : 0;
}

// The reader turns a design it has just centred: its bounds are current.
void Turn(Design& design, int direction) {
  design.hoopRotation = direction;
  design.RotateQuarterMeasured(direction, true);
}

const BrandEntry* FindBrand(const std::string& brand) {
  const auto* entry = std::find_if(kBrands.begin(), kBrands.end(),
                                   [&](const BrandEntry& b) { return EqualsIgnoringCase(b.inFile, brand); });
  return entry != kBrands.end() ? entry : nullptr;
}

void AppendWord(std::string& text, const std::string& word) {
  if (word.empty()) return;
  if (!text.empty()) text += ' ';
  text += word;
}

void NameHeaderThread(ThreadColor& thread, const std::string& brandInFile) {
  const BrandEntry* entry = FindBrand(brandInFile);
  thread.brand = entry != nullptr ? entry->brand : brandInFile;
  if (entry != nullptr) thread.chartIndex = entry->chartIndex;
  if (brandInFile.empty() && thread.chart.empty()) {
    for (size_t i = 0; i < kAppliqueNumbers.size(); ++i) {
      if (thread.catalogNumber != kAppliqueNumbers[i]) continue;
      thread.chartIndex = kFirstApplique + static_cast<int>(i);
      thread.colorName = PecColorName(thread.chartIndex);
    }
  } else if (entry != nullptr && entry->group <= kLastPaletteGroup) {
    const std::string name(PecColorName(LeadingNumber(thread.description)));
    thread.colorName = entry->group == kCountryGroup ? thread.brand + " " + name : name;
    return;
  }
  if (!brandInFile.empty()) thread.colorName = thread.brand;
  AppendWord(thread.colorName, thread.catalogNumber);
  AppendWord(thread.colorName, thread.description);
}

}  // namespace

void ReadHeaderThreads(Design& design, std::span<const uint8_t> bytes, size_t listOffset) {
  design.fileThreads.clear();
  ByteReader reader(bytes, listOffset);
  // The two bytes are added, not combined, so a count of 256 reads as 1. Deliberately kept.
  const int low = reader.U8();
  const int count = low + reader.U8();
  for (int i = 0; i < count; ++i) {
    ThreadColor thread;
    thread.catalogNumber = ReadString(reader);
    const uint8_t r = reader.U8();
    const uint8_t g = reader.U8();
    const uint8_t b = reader.U8();
    thread.rgb = ColorRef(r, g, b);
    reader.Skip(1);
    thread.threadKind = reader.S8();
    reader.Skip(3);
    thread.description = ReadString(reader);
    const std::string brandInFile = ReadString(reader);
    thread.chart = ReadString(reader);
    if (!reader.Ok()) break;  // a record cut short by the end of the file
    NameHeaderThread(thread, brandInFile);
    design.fileThreads.push_back(std::move(thread));
  }
}

void ReadRealColors(Design& design, std::span<const uint8_t> bytes, size_t offset) {
  if (design.formatVersion < 50 || design.fileThreads.empty()) return;
  ByteReader reader(bytes, offset);
  for (size_t i = 0; i < design.threads.size(); ++i) {
    const uint8_t r = reader.U8();
    const uint8_t g = reader.U8();
    const uint8_t b = reader.U8();
    if (!reader.Ok()) return;
    const uint32_t rgb = ColorRef(r, g, b);
    // A list that doesn't begin with the first record's colour is not trusted at all.
    if (i == 0 && rgb != design.fileThreads.front().rgb) return;
    design.threads[i].rgb = rgb;
  }
}

void MatchHeaderThreads(Design& design) {
  for (ThreadColor& thread : design.threads) {
    const auto record = std::find_if(design.fileThreads.begin(), design.fileThreads.end(),
                                     [&](const ThreadColor& r) { return r.rgb == thread.rgb; });
    if (record != design.fileThreads.end()) {
      thread.description = record->description;
      thread.brand = record->brand;
      thread.catalogNumber = record->catalogNumber;
      thread.chart = record->chart;
      thread.colorName = record->colorName;
      thread.chartIndex = record->chartIndex;
      thread.threadKind = record->threadKind;
      continue;
    }
    for (size_t i = 0; i < kAppliqueNames.size(); ++i) {
      if (!EqualsIgnoringCase(thread.colorName, kAppliqueNames[i])) continue;
      thread.chartIndex = kFirstApplique + static_cast<int>(i);
      thread.catalogNumber = kAppliqueNumbers[i];
      thread.brand = "EMBROIDERY";
      thread.threadKind = kAppliqueKind;
    }
  }
}

bool ReadPesFile(Design& design, std::span<const uint8_t> bytes) {
  if (bytes.size() < kShortestFile) return false;
  design.Clear();
  ByteReader reader(bytes);
  const std::string signature = Text(reader.Bytes(4));
  const bool isPes = signature == "#PES";
  if (!isPes && signature != "#PEC") return false;
  // "#PES0040" is 40; a number is taken as far as digits go.
  const int version = LeadingNumber(Text(reader.Bytes(4)));
  size_t offset = kPecFileBlock;
  if (isPes) {
    reader.Seek(kPecOffsetField);
    offset = reader.U24LE();
  }
  reader.Seek(kBlockCountField);
  const int blockCount = version >= 25 ? reader.U8() : 1;

  int32_t sumX = 0, sumY = 0;
  int32_t closingX = 0, closingY = 0;
  int previousPiece = -1;
  StitchNode* previousTail = nullptr;
  PecBlockInfo block;
  bool sewn = false;  // some block gave a node besides its closing one
  for (int i = 0; i < blockCount; ++i) {
    if (offset >= bytes.size()) return false;
    const size_t nodesBefore = design.stitches.Size();
    block = ReadPecBlock(design, bytes, offset, sumX, sumY);
    // Also a later block whose L reaches past the end: the file fails as a whole.
    if (!block.whole) return false;
    ByteReader pieceReader(bytes, offset + kPecPiecePosition);
    const uint8_t pieceByte = pieceReader.U8();
    const int piece = pieceReader.Ok() ? pieceByte : -1;
    // The closing node's move leads back to the block's start; the next block
    // starts from there. A block without stitches in a design still empty has
    // no closing node.
    int32_t blockClosingX = 0, blockClosingY = 0;
    if (block.closed) {
      StitchNode* closing = design.stitches.Tail();
      blockClosingX = closing->dx;
      blockClosingY = closing->dy;
      design.stitches.Remove(closing);
    }
    sewn = sewn || design.stitches.Size() > nodesBefore;
    if (blockCount > 1) {
      design.stitches.PushBack(0, 0, STITCH_COLORSTOP);
      StitchNode* first = previousTail != nullptr ? previousTail->Next() : design.stitches.Head();
      int64_t dy = int64_t{first->dy} + closingY;
      if (piece == 0) dy += kPieceShift;
      if (piece == 2) dy -= kPieceShift;
      if (previousPiece == 0) dy -= kPieceShift;
      if (previousPiece == 2) dy += kPieceShift;
      first->dx = Wrap32(int64_t{first->dx} + closingX);
      first->dy = Wrap32(dy);
      offset += block.stitchLength + kPecThumbnailSize * static_cast<size_t>(block.colorCount) + kBlockOverhead;
    }
    closingX = blockClosingX;
    closingY = blockClosingY;
    previousTail = design.stitches.Tail();
    previousPiece = piece;
  }
  // No blocks, or none with stitches: an empty design, but for the joins' stops.
  if (!sewn) design.stitches.Clear();
  design.MergeJumps(true);
  design.CentreOnCurrentBounds();
  // The statistics are left to ReadDesignFile, which counts after the turn.

  design.formatVersion = version;
  design.hoopRotation = 0;
  if (isPes && (version == 20 || (version >= 25 && version <= 39))) {
    reader.Seek(version == 20 ? kHoopFieldVersion20 : kHoopFieldVersion25);
    design.hoopWidth = reader.S16LE();
    design.hoopHeight = reader.S16LE();
    if (design.hoopWidth > design.hoopHeight) Turn(design, -1);
  }
  if (!isPes || version < 40) return true;

  WrappingCursor cursor(bytes, kHeaderStrings);
  for (const char* label : kHeaderLabels) {
    const std::string text = cursor.String();
    // Only the first four bytes of the text are kept, as a number.
    if (!text.empty()) design.properties.push_back({label, kPropertyKind, "", FirstFourBytes(text), {}});
  }
  cursor.Skip(version >= 60 ? 4 : 2);
  design.hoopWidth = cursor.S16();
  design.hoopHeight = cursor.S16();
  if (const int rotation = HoopRotation(design.hoopWidth, design.hoopHeight); rotation != 0) Turn(design, rotation);
  if (version < 50) return true;

  cursor.Skip(2 + (version >= 60 ? 10 : 0) + 16);
  // A file this system writes has a zero here.
  const uint8_t listOffset = static_cast<uint8_t>(cursor.Peek() + cursor.Position() + 31);
  ReadHeaderThreads(design, bytes, listOffset);
  // Looked for behind a single block; with several, the offset has already
  // moved past the last one and the list is looked for too far on. Kept so.
  const size_t realColors = offset + block.stitchLength + kLabelBitmapSize * design.threads.size() +
                            kPecThumbnailSize * static_cast<size_t>(block.colorCount) + kRealColorsBase;
  if (realColors < bytes.size()) ReadRealColors(design, bytes, realColors);
  MatchHeaderThreads(design);
  return true;
}

}  // namespace fennick
