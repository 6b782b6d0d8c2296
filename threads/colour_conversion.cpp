#include "threads/colour_conversion.h"

#include <array>
#include <unordered_set>
#include <vector>

#include "core/design_path.h"
#include "core/embroidery_file.h"
#include "core/text.h"
#include "threads/palettes.h"
#include "tools/hue_sort.h"

namespace fennick {
namespace {

// The default-palette indices in the order the HUS colour list shows them.
constexpr std::array<int, 29> kDefaultPaletteOrder = {0,  21, 6, 22, 12, 17, 4,  18, 25, 10, 26, 15, 3, 16, 23,
                                                      9,  24, 27, 11, 28, 19, 5, 20, 14, 8,  2,  13, 1, 7};
constexpr int kPcsColorCount = 16;
constexpr int kJefFirst = 1;
constexpr int kJefLast = 79;

// The PEC colours in the order of the machine's colour list, by name.
constexpr std::string_view kPecListNames[] = {
    "Black",         "Red",          "White",          "Pink",          "Deep Rose",       "Flesh Pink",
    "Dark Fuschia",  "Vermillion",   "Carmine",        "Royal Purple",  "Magenta",         "Salmon Pink",
    "Amber Red",     "Lemon Yellow", "Yellow",         "Harvest Gold",  "Orange",          "Pumpkin",
    "Tangerine",     "Cream Brown",  "Cream Yellow",   "Khaki",         "Deep Gold",       "Brass",
    "Linen",         "Dark Brown",   "Reddish Brown",  "Clay Brown",    "Beige",           "Warm Gray",
    "Russet Brown",  "Light Brown",  "Seacrest",       "Mint Green",    "Leaf Green",      "Olive Green",
    "Dark Olive",    "Teal Green",   "Emerald Green",  "Deep Green",    "Fresh Green",     "Lime Green",
    "Moss Green",    "Blue",         "Ultramarine",    "Light Blue",    "Sky Blue",        "Electric Blue",
    "Peacock Blue",  "Prussian Blue", "Cornflower Blue", "Light Lilac", "Lilac",           "Violet",
    "Purple",        "Lavender",     "Wisteria Violet", "Pewter",       "Dark Gray",       "Silver",
    "Gray",          "Applique Mat.", "Applique Pos.", "Applique",      "Not Defined",     "Composite",
};
constexpr int kPecPaletteSize = 95;

constexpr std::string_view kVipCharts[] = {"Alcazar Rayon", "Isacord Poly", "Isafil rayon",
                                           "Madeira Poly",  "Madeira Rayon", "R-A Poly",
                                           "R-A Rayon",     "Stickma Poly",  "Sulky Rayon"};
constexpr std::string_view kPesCharts[] = {"Embroidery", "Flesh Tone", "Sulky Rayon", "MA Rayon", "MA Polyneon",
                                           "RA Rayon",   "RA Poly",    "Isacord",     "GU Dekor"};
constexpr std::string_view kMatchCharts[] = {"Sulky", "MA Rayon", "RA Poly", "Isacord"};

// The display chart a VIP thread without a chart of its own is written with.
constexpr int kVipDefaultChart = 1;

// Looser than the nearest-thread search, so that the second and third rows
// spread further round the hue circle.
constexpr double kMatchRadiusPerSaturation = 1.5;
constexpr float kNoMatch = 100000.0f;
constexpr double kPercentPerDistance = 0.22573364;

enum class ColorTable { kNone, kDefaultPalette, kPcs, kPec, kJef, kReference, kVip };

struct TableRow {
  std::string_view extension;
  ColorTable table;
};

// The colour list each format shows.
constexpr TableRow kColorTables[] = {
    {"hus", ColorTable::kDefaultPalette}, {"dst", ColorTable::kDefaultPalette}, {"exp", ColorTable::kDefaultPalette},
    {"shv", ColorTable::kDefaultPalette}, {"pcs", ColorTable::kPcs},            {"pec", ColorTable::kPec},
    {"pes", ColorTable::kPec},            {"phc", ColorTable::kPec},            {"phb", ColorTable::kPec},
    {"phd", ColorTable::kPec},            {"emd", ColorTable::kPec},            {"sew", ColorTable::kJef},
    {"jef", ColorTable::kJef},            {"xxx", ColorTable::kReference},      {"vip", ColorTable::kVip},
};

// What ConvertThreadsForFormat maps onto; "dst", "exp" and every format not
// listed keep the colours they are given.
constexpr TableRow kConversions[] = {
    {"hus", ColorTable::kDefaultPalette}, {"jef", ColorTable::kJef}, {"pcs", ColorTable::kPcs},
    {"pes", ColorTable::kPec},            {"vip", ColorTable::kVip}, {"xxx", ColorTable::kReference},
};

template <size_t count>
ColorTable TableOf(const TableRow (&rows)[count], std::string_view extension) {
  for (const TableRow& row : rows) {
    if (EqualsIgnoringCase(row.extension, extension)) return row.table;
  }
  return ColorTable::kNone;
}

int PecIndexByName(std::string_view name) {
  for (int index = 0; index < kPecPaletteSize; ++index) {
    if (PecColorName(index) == name) return index;
  }
  return -1;
}

// The PCS palette as a PCS file stores its colour table: red, green, blue, pad.
const std::array<uint8_t, 4 * kPcsColorCount>& PcsColorTable() {
  static const std::array<uint8_t, 4 * kPcsColorCount> table = [] {
    std::array<uint8_t, 4 * kPcsColorCount> bytes{};
    for (int index = 0; index < kPcsColorCount; ++index) {
      ThreadColor thread;
      PcsPaletteColor(thread, index);
      const Channels c = SplitColor(thread.rgb);
      bytes[4 * index] = c.r;
      bytes[4 * index + 1] = c.g;
      bytes[4 * index + 2] = c.b;
    }
    return bytes;
  }();
  return table;
}

ThreadColor PcsColor(int index) {
  ThreadColor thread;
  PcsPaletteColor(thread, index);
  thread.chartIndex = index;
  return thread;
}

ThreadColor DefaultPaletteEntry(int index) {
  ThreadColor thread = DefaultPaletteColor(index);
  thread.chartIndex = index;
  return thread;
}

ThreadColor PecColor(int index) {
  ThreadColor thread;
  thread.chartIndex = index;
  PecPaletteColor(thread);
  return thread;
}

void ConvertThread(ThreadColor& thread, ColorTable table) {
  const Channels c = SplitColor(thread.rgb);
  switch (table) {
    case ColorTable::kDefaultPalette:
      thread = DefaultPaletteEntry(HusNearestColor(c.r, c.g, c.b));
      break;
    case ColorTable::kJef:
      JefNearestColor(thread);
      JefPaletteColor(thread);
      break;
    case ColorTable::kPcs:
      thread = PcsColor(PcsNearestIndex(PcsColorTable(), c.r, c.g, c.b));
      break;
    case ColorTable::kPec:
      thread.chartIndex = PecNearestColor(c.r, c.g, c.b, false, false);
      PecPaletteColor(thread);
      break;
    case ColorTable::kVip: {
      uint32_t nearest = thread.rgb;
      NearestChartName(thread.rgb, thread.chartIndex == 0 ? kVipDefaultChart : thread.chartIndex, &nearest);
      thread.rgb = nearest;
      break;
    }
    case ColorTable::kReference:
      if (const ThreadColor* row = NearestChartRow(ReferenceChart(), thread.rgb)) thread = *row;
      break;
    case ColorTable::kNone:
      break;
  }
}

// Appends a heading that carries only the chart's title, then the chart's
// rows in hue order. An empty chart adds nothing.
void AppendChart(Design& design, std::string_view title) {
  const ThreadChart chart = ChartByName(title);
  if (chart.empty()) return;
  std::vector<ThreadColor> rows(chart.begin(), chart.end());
  HueSortThreads(rows);
  ThreadColor& heading = design.threads.emplace_back();
  heading.brand = title;
  design.threads.insert(design.threads.end(), std::make_move_iterator(rows.begin()),
                        std::make_move_iterator(rows.end()));
}

std::string LowerExtensionOf(const std::string& path) { return AsciiLower(DesignPath(path).GetExtension()); }

}  // namespace

int ConvertThreadsForFormat(Design& design, std::string_view extension) {
  const ColorTable table = TableOf(kConversions, extension);
  if (table == ColorTable::kNone) return 0;
  for (ThreadColor& thread : design.threads) ConvertThread(thread, table);
  return 0;
}

void BuildFormatColorDesign(Design& design) {
  design.threads.clear();
  std::vector<ThreadColor>& threads = design.threads;
  switch (TableOf(kColorTables, LowerExtensionOf(design.name))) {
    case ColorTable::kDefaultPalette:
      for (const int index : kDefaultPaletteOrder) threads.push_back(DefaultPaletteEntry(index));
      break;
    case ColorTable::kPcs:
      for (int index = 0; index < kPcsColorCount; ++index) threads.push_back(PcsColor(index));
      break;
    case ColorTable::kPec:
      for (const std::string_view name : kPecListNames) threads.push_back(PecColor(PecIndexByName(name)));
      break;
    case ColorTable::kJef:
      for (int index = kJefFirst; index <= kJefLast; ++index) {
        ThreadColor& thread = threads.emplace_back();
        thread.chartIndex = index;
        JefPaletteColor(thread);
      }
      break;
    case ColorTable::kReference: {
      const ThreadChart chart = ReferenceChart();
      threads.assign(chart.begin(), chart.end());
      break;
    }
    case ColorTable::kVip: {
      const ThreadChart chart = ChartByNumber(kVipDefaultChart);
      threads.assign(chart.begin(), chart.end());
      break;
    }
    case ColorTable::kNone:
      break;
  }
}

GlobalHandle GetFormatColors(const std::string& path, const ConversionSettings& /*settings*/) {
  Design design;
  design.name = path;
  switch (TableOf(kColorTables, LowerExtensionOf(path))) {
    case ColorTable::kVip:
      for (const std::string_view title : kVipCharts) AppendChart(design, title);
      break;
    case ColorTable::kPec:
      for (const std::string_view title : kPesCharts) AppendChart(design, title);
      break;
    default:
      break;
  }
  if (design.threads.empty()) BuildFormatColorDesign(design);
  return BuildEmbroideryFile(design);
}

void BestThreeMatches(const ThreadColor& thread, Design& scratch, ThreadChart chart) {
  const ConePoint target = PlaceInCone(thread.rgb, kMatchRadiusPerSaturation);
  std::array<float, 3> distance = {kNoMatch, kNoMatch, kNoMatch};
  std::array<int, 3> row = {-1, -1, -1};
  for (size_t i = 0; i < chart.size(); ++i) {
    const float d = ConeDistance(target, PlaceInCone(chart[i].rgb, kMatchRadiusPerSaturation));
    const int index = static_cast<int>(i);
    if (d < distance[0]) {
      distance = {d, distance[0], distance[1]};
      row = {index, row[0], row[1]};
    } else if (d < distance[1] && d > distance[2]) {
      // Deliberately kept: only the distance moves to the third slot, and a
      // row between the first two with the third not below it goes to the
      // third slot below.
      distance[2] = distance[1];
      distance[1] = d;
      row[1] = index;
    } else if (d < distance[2]) {
      distance[2] = d;
      row[2] = index;
    }
  }
  for (size_t slot = 0; slot < 3; ++slot) {
    if (row[slot] < 0) continue;
    ThreadColor& match = scratch.threads.emplace_back(chart[static_cast<size_t>(row[slot])]);
    match.matchPercent = 100 - RoundHalfAway(distance[slot] * kPercentPerDistance);
  }
}

std::string BuildMatchText(const Design& design) {
  std::string text;
  std::unordered_set<uint32_t> seen;
  Design scratch;
  for (const ThreadColor& thread : design.threads) {
    if (!seen.insert(thread.rgb).second) continue;
    text += "\r\n" + thread.colorName + " Matches:\r\n";
    for (const std::string_view chartName : kMatchCharts) {
      scratch.threads.clear();
      BestThreeMatches(thread, scratch, ChartByName(chartName));
      for (size_t i = 0; i < scratch.threads.size(); ++i) {
        if (i > 0) text += " - ";
        text += FormatText("%s (%i%%)", scratch.threads[i].colorName.c_str(),
                           static_cast<int>(scratch.threads[i].matchPercent));
      }
      text += "\r\n";
    }
  }
  return text;
}

}  // namespace fennick
