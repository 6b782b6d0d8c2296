#include "threads/thread_charts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <vector>

#include "core/text.h"

namespace fennick {
namespace {

struct ChartRow {
  std::string_view code;
  std::string_view name;
  uint8_t r, g, b;
};

// The machine palette in the machine's order; `standardNumber` is not a
// catalogue number of this chart, which keeps the name as its description.
struct EmbroideryRow {
  std::string_view standardNumber;
  std::string_view name;
  uint8_t r, g, b;
  int paletteIndex;
};

// `code` is the machine palette position of the same colour name; `cardCode`
// is the number on the brand's own card, kept for reference only.
struct CountryRow {
  std::string_view code;
  std::string_view name;
  uint8_t r, g, b;
  std::string_view cardCode;
};

constexpr ChartRow kAlcazarRayonRows[] = {
#include "threads/charts/display_alcazar_rayon.inc"
};
constexpr ChartRow kIsacordPolyRows[] = {
#include "threads/charts/display_isacord_poly.inc"
};
constexpr ChartRow kIsafilRayonRows[] = {
#include "threads/charts/display_isafil_rayon.inc"
};
constexpr ChartRow kMadeiraPolyRows[] = {
#include "threads/charts/display_madeira_poly.inc"
};
constexpr ChartRow kMadeiraRayonRows[] = {
#include "threads/charts/display_madeira_rayon.inc"
};
constexpr ChartRow kRaPolyDisplayRows[] = {
#include "threads/charts/display_ra_poly.inc"
};
constexpr ChartRow kRaRayonDisplayRows[] = {
#include "threads/charts/display_ra_rayon.inc"
};
constexpr ChartRow kStickmaPolyRows[] = {
#include "threads/charts/display_stickma_poly.inc"
};
constexpr ChartRow kSulkyRayonRows[] = {
#include "threads/charts/display_sulky_rayon.inc"
};
constexpr ChartRow kSulkyRayonShortRows[] = {
#include "threads/charts/display_sulky_rayon_short.inc"
};
constexpr EmbroideryRow kEmbroideryRows[] = {
#include "threads/charts/brand_embroidery.inc"
};
constexpr ChartRow kFleshToneRows[] = {
#include "threads/charts/brand_flesh_tone.inc"
};
constexpr ChartRow kMaRayonRows[] = {
#include "threads/charts/brand_ma_rayon.inc"
};
constexpr ChartRow kMaPolyneonRows[] = {
#include "threads/charts/brand_ma_polyneon.inc"
};
constexpr ChartRow kRaRayonRows[] = {
#include "threads/charts/brand_ra_rayon.inc"
};
constexpr ChartRow kRaPolyRows[] = {
#include "threads/charts/brand_ra_poly.inc"
};
constexpr ChartRow kIsacordRows[] = {
#include "threads/charts/brand_isacord.inc"
};
constexpr ChartRow kGuDekorRows[] = {
#include "threads/charts/brand_gu_dekor.inc"
};
constexpr ChartRow kSulkyRows[] = {
#include "threads/charts/brand_sulky.inc"
};
constexpr CountryRow kCountryRows[] = {
#include "threads/charts/brand_country.inc"
};

enum ChartId {
  kAlcazarRayon,
  kIsacordPoly,
  kIsafilRayon,
  kMadeiraPoly,
  kMadeiraRayon,
  kRaPolyDisplay,
  kRaRayonDisplay,
  kStickmaPoly,
  kSulkyRayon,
  kSulkyRayonShort,
  kEmbroidery,
  kFleshTone,
  kMaRayon,
  kMaPolyneon,
  kRaRayon,
  kRaPoly,
  kIsacord,
  kGuDekor,
  kSulky,
  kCountry,
  kChartCount,
};

// `colorName` is the brand, a blank and the code. A code search looks at the
// last `codeDigits` characters of its text; a few Sulky Rayon codes are shorter.
struct DisplayChart {
  ChartId id;
  std::string_view brand;
  int number;
  size_t codeDigits;
  std::span<const ChartRow> rows;
};

constexpr DisplayChart kDisplayCharts[] = {
    {kAlcazarRayon, "Alcazar Rayon", 9, 3, kAlcazarRayonRows},
    {kIsacordPoly, "Isacord Poly", 8, 4, kIsacordPolyRows},
    {kIsafilRayon, "Isafil Rayon", 3, 4, kIsafilRayonRows},
    {kMadeiraPoly, "Madeira Poly", 7, 4, kMadeiraPolyRows},
    {kMadeiraRayon, "Madeira Rayon", 1, 4, kMadeiraRayonRows},
    {kRaPolyDisplay, "R-A Poly", 5, 4, kRaPolyDisplayRows},
    {kRaRayonDisplay, "R-A Rayon", 4, 4, kRaRayonDisplayRows},
    {kStickmaPoly, "Stickma Poly", 6, 5, kStickmaPolyRows},
    {kSulkyRayon, "Sulky Rayon", 2, 4, kSulkyRayonRows},
    {kSulkyRayonShort, "Sulky Rayon", 1, 4, kSulkyRayonShortRows},
};

struct BrandChart {
  ChartId id;
  std::string_view brand;
  int32_t chartIndex;
  int32_t threadKind;
  std::span<const ChartRow> rows;
};

// Embroidery and Country have rows of their own shape and are built apart.
// The brands are the names these ranges get when read from a file.
constexpr BrandChart kBrandCharts[] = {
    {kSulky, "Sulky Rayon", 0x1100, 1, kSulkyRows},
    {kFleshTone, "Flesh Tone", 0x1200, 1, kFleshToneRows},
    {kMaRayon, "Madeira Rayon", 0x400, 1, kMaRayonRows},
    {kMaPolyneon, "Madeira Poly", 0x700, 1, kMaPolyneonRows},
    {kRaPoly, "RA Poly", 0x1500, 1, kRaPolyRows},
    {kRaRayon, "RA Rayon", 0x1600, 1, kRaRayonRows},
    {kIsacord, "Isacord", 0x1700, 1, kIsacordRows},
    {kGuDekor, "Guterman Dekor", 0x1800, 1, kGuDekorRows},
};
constexpr std::string_view kEmbroideryBrand = "Embroidery";
constexpr int32_t kEmbroideryChartIndex = 1;
constexpr int32_t kEmbroideryThreadKind = 10;
constexpr std::string_view kCountryBrand = "Country";
constexpr int32_t kCountryChartIndex = 0x200;
constexpr int32_t kCountryThreadKind = 11;

struct NamedChart {
  std::string_view name;
  ChartId id;
};

// The names conversion uses; "Isafil rayon" keeps its small r on purpose.
constexpr NamedChart kChartNames[] = {
    {"Alcazar Rayon", kAlcazarRayon}, {"Isacord Poly", kIsacordPoly},   {"Isafil rayon", kIsafilRayon},
    {"Madeira Poly", kMadeiraPoly},   {"Madeira Rayon", kMadeiraRayon}, {"R-A Poly", kRaPolyDisplay},
    {"R-A Rayon", kRaRayonDisplay},   {"Stickma Poly", kStickmaPoly},   {"Sulky Rayon", kSulkyRayon},
    {"Embroidery", kEmbroidery},      {"Flesh Tone", kFleshTone},       {"MA Rayon", kMaRayon},
    {"MA Polyneon", kMaPolyneon},     {"RA Rayon", kRaRayon},           {"RA Poly", kRaPoly},
    {"Isacord", kIsacord},            {"GU Dekor", kGuDekor},           {"Sulky", kSulky},
    {"Country", kCountry},
};

// Display charts by number, 0 to 9; numbers outside fall back to Sulky Rayon too.
constexpr std::array<ChartId, 10> kChartByNumber = {
    kSulkyRayon,    kMadeiraRayon, kSulkyRayon,  kIsafilRayon, kRaRayonDisplay,
    kRaPolyDisplay, kStickmaPoly,  kMadeiraPoly, kIsacordPoly, kAlcazarRayon,
};

constexpr size_t kLongestCode = 5;

constexpr bool CodesHaveTheirDigits() {
  for (const DisplayChart& chart : kDisplayCharts) {
    if (chart.rows.empty() || chart.codeDigits > kLongestCode) return false;
    for (const ChartRow& row : chart.rows) {
      if (row.code.empty() || row.code.size() > chart.codeDigits) return false;
    }
  }
  return true;
}
static_assert(CodesHaveTheirDigits(), "a display chart CSV holds an empty or overlong code, or no rows");

// The display charts come first among the ids, in the same order as kDisplayCharts.
constexpr bool DisplayChartsInIdOrder() {
  for (size_t i = 0; i < std::size(kDisplayCharts); ++i) {
    if (kDisplayCharts[i].id != static_cast<ChartId>(i)) return false;
  }
  return true;
}
static_assert(DisplayChartsInIdOrder());

constexpr const DisplayChart& DisplayChartByNumber(int number) {
  const bool listed = number >= 0 && number < static_cast<int>(kChartByNumber.size());
  return kDisplayCharts[listed ? kChartByNumber[number] : kSulkyRayon];
}

// Each non-empty part after a blank, with no blank in front of the first.
std::string JoinNonEmpty(std::initializer_list<std::string_view> parts) {
  std::string joined;
  for (const std::string_view part : parts) {
    if (part.empty()) continue;
    if (!joined.empty()) joined += ' ';
    joined += part;
  }
  return joined;
}

ThreadColor BrandEntry(std::string_view brand, std::string_view description, std::string_view catalogNumber,
                       uint32_t rgb, int32_t chartIndex, int32_t threadKind) {
  ThreadColor thread;
  thread.brand = brand;
  thread.description = description;
  thread.catalogNumber = catalogNumber;
  thread.rgb = rgb;
  thread.chartIndex = chartIndex;
  thread.threadKind = threadKind;
  thread.colorName = JoinNonEmpty({brand, catalogNumber, description});
  return thread;
}

using ChartSet = std::array<std::vector<ThreadColor>, kChartCount>;

ChartSet BuildCharts() {
  ChartSet charts;
  for (const DisplayChart& chart : kDisplayCharts) {
    std::vector<ThreadColor>& entries = charts[chart.id];
    entries.reserve(chart.rows.size());
    for (const ChartRow& row : chart.rows) {
      ThreadColor& thread = entries.emplace_back();
      thread.colorName = JoinNonEmpty({chart.brand, row.code});
      thread.rgb = ColorRef(row.r, row.g, row.b);
      thread.chartIndex = chart.number;
    }
  }
  for (const BrandChart& chart : kBrandCharts) {
    std::vector<ThreadColor>& entries = charts[chart.id];
    entries.reserve(chart.rows.size());
    for (const ChartRow& row : chart.rows) {
      entries.push_back(BrandEntry(chart.brand, row.name, row.code, ColorRef(row.r, row.g, row.b), chart.chartIndex,
                                   chart.threadKind));
    }
  }
  for (const EmbroideryRow& row : kEmbroideryRows) {
    charts[kEmbroidery].push_back(BrandEntry(kEmbroideryBrand, row.name, {}, ColorRef(row.r, row.g, row.b),
                                             kEmbroideryChartIndex, kEmbroideryThreadKind));
  }
  for (const CountryRow& row : kCountryRows) {
    charts[kCountry].push_back(BrandEntry(kCountryBrand, row.name, row.code, ColorRef(row.r, row.g, row.b),
                                          kCountryChartIndex, kCountryThreadKind));
  }
  return charts;
}

// Built on first use (thread-safe static initialisation) and never changed after.
const ChartSet& Charts() {
  static const ChartSet charts = BuildCharts();
  return charts;
}

ThreadChart ChartById(ChartId id) { return Charts()[id]; }

// Case-blind containment; `lowerNeedle` is already in lower case.
bool ContainsLowered(std::string_view text, std::string_view lowerNeedle) {
  if (lowerNeedle.size() > text.size()) return false;
  for (size_t start = 0; start + lowerNeedle.size() <= text.size(); ++start) {
    size_t i = 0;
    while (i < lowerNeedle.size() && AsciiLower(text[start + i]) == lowerNeedle[i]) ++i;
    if (i == lowerNeedle.size()) return true;
  }
  return false;
}

const ThreadColor kBlankThread{};
constexpr double kNearestRadiusPerSaturation = 2.0;

}  // namespace

int32_t RoundHalfAway(double value) { return static_cast<int32_t>(value >= 0.0 ? value + 0.5 : value - 0.5); }

ConePoint PlaceInCone(uint32_t rgb, double radiusPerSaturation) {
  constexpr double kRadiansPerDegree = 0.017453292519943295;
  const auto [r, g, b] = SplitColor(rgb);
  const int32_t v = std::max({r, g, b});
  const int32_t delta = v - std::min({r, g, b});
  if (delta == 0) return {v, 0, 0};
  const int32_t saturation = static_cast<int32_t>(static_cast<double>(delta) / v * 255.0);
  double hue;
  if (r == v) {  // red first, then green, decides ties
    hue = static_cast<double>(g - b) / delta;
  } else if (g == v) {
    hue = static_cast<double>(b - r) / delta + 2.0;
  } else {
    hue = static_cast<double>(r - g) / delta + 4.0;
  }
  hue *= 60.0;
  if (hue < 0.0) hue += 360.0;
  if (hue == 360.0) hue = 0.0;
  const double angle = static_cast<int32_t>(hue) * kRadiansPerDegree;
  const double radius = radiusPerSaturation * saturation;
  return {v, RoundHalfAway(std::cos(angle) * radius), RoundHalfAway(std::sin(angle) * radius)};
}

float ConeDistance(const ConePoint& a, const ConePoint& b) {
  const int32_t dv = a.v - b.v;
  const int32_t dx = a.x - b.x;
  const int32_t dy = a.y - b.y;
  return std::sqrt(static_cast<float>(dv * dv + dx * dx + dy * dy));
}

ThreadChart ChartByNumber(int number) { return ChartById(DisplayChartByNumber(number).id); }

ThreadChart ChartByName(std::string_view name) {
  for (const NamedChart& chart : kChartNames) {
    if (chart.name == name) return ChartById(chart.id);
  }
  return {};
}

ThreadChart ReferenceChart() { return ChartById(kSulkyRayonShort); }

const ThreadColor* NearestChartRow(ThreadChart chart, uint32_t rgb) {
  const Channels wanted = SplitColor(rgb);
  const ThreadColor* best = nullptr;
  int bestDistance = 10000;  // above any sum of differences, so row 0 is always a candidate
  for (const ThreadColor& row : chart) {
    const int distance = ColorDistance(wanted, SplitColor(row.rgb));
    if (distance < bestDistance) {
      bestDistance = distance;
      best = &row;
      if (distance == 0) break;
    }
  }
  return best;
}

const std::string& NearestChartName(uint32_t rgb, int number, uint32_t* nearestRgb) {
  // Every display chart has rows.
  const ThreadColor* best = NearestChartRow(ChartByNumber(number), rgb);
  if (nearestRgb != nullptr) *nearestRgb = best->rgb;
  return best->colorName;
}

ThreadColor ChartThreadByCode(int number, std::string_view text) {
  if (number < 1 || number > 9) return {};
  const DisplayChart& source = DisplayChartByNumber(number);
  if (text.size() > source.codeDigits) text.remove_prefix(text.size() - source.codeDigits);
  std::array<char, kLongestCode> lowered{};
  for (size_t i = 0; i < text.size(); ++i) lowered[i] = AsciiLower(text[i]);
  const std::string_view code(lowered.data(), text.size());
  for (const ThreadColor& row : ChartById(source.id)) {
    if (ContainsLowered(row.colorName, code)) return row;
  }
  return {};
}

const ThreadColor& NearestChartThread(uint32_t rgb, ThreadChart chart, int32_t& distance) {
  if (chart.empty()) return kBlankThread;
  const ConePoint target = PlaceInCone(rgb, kNearestRadiusPerSaturation);
  const ThreadColor* best = &chart.front();
  float bestDistance = 10000.0f;
  for (const ThreadColor& row : chart) {
    const float rowDistance = ConeDistance(target, PlaceInCone(row.rgb, kNearestRadiusPerSaturation));
    // Deliberately the distance of the last row walked, not of the best one.
    distance = RoundHalfAway(rowDistance);
    if (rowDistance < bestDistance) {
      bestDistance = rowDistance;
      best = &row;
    }
    if (rowDistance == 0.0f) break;
  }
  return *best;
}

}  // namespace fennick
