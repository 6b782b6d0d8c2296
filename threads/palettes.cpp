#include "threads/palettes.h"

#include <array>
#include <iterator>

#include "core/byte_cursor.h"

namespace fennick {
namespace {

struct PecEntry {
  int index;
  std::string_view name;
  uint8_t r, g, b;
  std::string_view number;
};

struct PaletteEntry {
  int index;
  std::string_view name;
  uint8_t r, g, b;
};

constexpr PecEntry kPecPalette[] = {
#include "threads/pec_palette.inc"
};
constexpr PaletteEntry kJefPalette[] = {
#include "threads/jef_palette.inc"
};
constexpr PaletteEntry kPcsPalette[] = {
#include "threads/pcs_palette.inc"
};

// Rows must stand in index order so that an index is a position.
template <typename Entry, size_t count>
constexpr bool IndexedFrom(const Entry (&table)[count], int first) {
  for (size_t i = 0; i < count; ++i) {
    if (table[i].index != first + static_cast<int>(i)) return false;
  }
  return true;
}
static_assert(std::size(kPecPalette) == 95 && IndexedFrom(kPecPalette, 0), "pec_palette.csv: indices 0 to 94");
static_assert(std::size(kJefPalette) == 79 && IndexedFrom(kJefPalette, 1), "jef_palette.csv: indices 1 to 79");
static_assert(std::size(kPcsPalette) == 16 && IndexedFrom(kPcsPalette, 0), "pcs_palette.csv: indices 0 to 15");

constexpr PecEntry kPecUnknown{-1, "Unknown", 225, 225, 225, ""};

// The standard entries in search order, deliberately not index order: a colour
// halfway between two entries takes the one listed first.
constexpr std::array<uint8_t, 61> kPecSearchOrder = {20, 5,  29, 43, 25, 57, 51, 28, 48, 22, 7,  27, 49, 60, 13, 58,
                                                     12, 33, 52, 18, 34, 35, 11, 15, 42, 24, 6,  36, 47, 40, 17, 26,
                                                     31, 10, 37, 50, 41, 3,  54, 44, 61, 14, 56, 2,  21, 53, 32, 59,
                                                     38, 1,  4,  8,  9,  30, 55, 45, 46, 19, 23, 16, 39};
constexpr bool SearchesEachStandardEntryOnce() {
  std::array<bool, 62> seen{};
  for (const uint8_t index : kPecSearchOrder) {
    if (index < 1 || index > 61 || seen[index]) return false;
    seen[index] = true;
  }
  return true;
}
static_assert(SearchesEachStandardEntryOnce());
constexpr std::array<uint8_t, 4> kPecApplique = {62, 63, 64, 65};
constexpr int kPecFirstExtended = 66;
constexpr int kPecLast = 94;
constexpr int kJefLastSearched = 78;  // 79 "Other Color" is never a match

// Above any sum of three channel differences, so the first candidate always wins.
constexpr int kFarthest = 765;

// Keeps a candidate only when strictly nearer, so the order of trying decides ties.
struct Nearest {
  Channels target;
  int index;
  int distance = kFarthest;

  void Try(int candidate, uint8_t r, uint8_t g, uint8_t b) {
    const int d = ColorDistance(target, {r, g, b});
    if (d < distance) {
      distance = d;
      index = candidate;
    }
  }
  void TryPec(int candidate) {
    const PecEntry& entry = kPecPalette[candidate];
    Try(candidate, entry.r, entry.g, entry.b);
  }
};

const PecEntry& PecEntryAt(int index) {
  return index >= 0 && index < static_cast<int>(std::size(kPecPalette)) ? kPecPalette[index] : kPecUnknown;
}

void SetColor(ThreadColor& thread, const PaletteEntry& entry) {
  thread.rgb = ColorRef(entry.r, entry.g, entry.b);
  thread.colorName = entry.name;
}

}  // namespace

uint32_t PecColorRgb(int index, uint8_t& r, uint8_t& g, uint8_t& b) {
  const PecEntry& entry = PecEntryAt(index);
  r = entry.r;
  g = entry.g;
  b = entry.b;
  return ColorRef(r, g, b);
}

std::string_view PecColorName(int index) { return PecEntryAt(index).name; }

void PecPaletteColor(ThreadColor& thread) {
  const PecEntry& entry = PecEntryAt(thread.chartIndex);
  thread.rgb = ColorRef(entry.r, entry.g, entry.b);
  thread.colorName = entry.name;
}

std::string_view PecStandardNumber(int index) { return PecEntryAt(index).number; }

int PecNearestColor(uint8_t r, uint8_t g, uint8_t b, bool allowApplique, bool allowExtended) {
  Nearest nearest{{r, g, b}, 0};
  for (const uint8_t index : kPecSearchOrder) nearest.TryPec(index);
  if (allowApplique) {
    for (const uint8_t index : kPecApplique) nearest.TryPec(index);
  }
  if (allowExtended) {
    // 65 comes twice; the repeat is harmless, as it can never be strictly nearer.
    nearest.TryPec(0);
    nearest.TryPec(65);
    for (int index = kPecFirstExtended; index <= kPecLast; ++index) nearest.TryPec(index);
  }
  return nearest.index;
}

void JefPaletteColor(ThreadColor& thread) {
  if (thread.chartIndex < 1 || thread.chartIndex > static_cast<int32_t>(std::size(kJefPalette))) return;
  SetColor(thread, kJefPalette[thread.chartIndex - 1]);
}

void JefNearestColor(ThreadColor& thread) {
  Nearest nearest{SplitColor(thread.rgb), 1};
  for (int index = 1; index <= kJefLastSearched; ++index) {
    const PaletteEntry& entry = kJefPalette[index - 1];
    nearest.Try(index, entry.r, entry.g, entry.b);
  }
  thread.chartIndex = nearest.index;
}

void PcsPaletteColor(ThreadColor& thread, int index) {
  if (index < 0 || index >= static_cast<int>(std::size(kPcsPalette))) return;
  SetColor(thread, kPcsPalette[index]);
}

int PcsNearestIndex(std::span<const uint8_t> entries, uint8_t r, uint8_t g, uint8_t b) {
  constexpr int kEntries = 16;
  ByteReader reader(entries);
  Nearest nearest{{r, g, b}, 0};
  for (int index = 0; index < kEntries && reader.Has(4); ++index) {
    const uint8_t entryR = reader.U8();
    const uint8_t entryG = reader.U8();
    const uint8_t entryB = reader.U8();
    reader.Skip(1);  // pad
    nearest.Try(index, entryR, entryG, entryB);
  }
  return nearest.index;
}

void NamePcsColors(Design& design) {
  for (ThreadColor& thread : design.threads) {
    const Channels c = SplitColor(thread.rgb);
    thread.colorName = PecColorName(PecNearestColor(c.r, c.g, c.b, false, false));
    // Only an exact PCS colour renames; a near one keeps the palette name.
    for (const PaletteEntry& entry : kPcsPalette) {
      if (entry.r == c.r && entry.g == c.g && entry.b == c.b) {
        thread.colorName = entry.name;
        break;
      }
    }
  }
}

}  // namespace fennick
