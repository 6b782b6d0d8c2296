#include "threads/thread_charts.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace fennick {
namespace {

// Colours written as in the charts' table: 0xRRGGBB.
constexpr uint32_t Hex(uint32_t rrggbb) { return ColorRef(rrggbb >> 16, (rrggbb >> 8) & 0xFF, rrggbb & 0xFF); }

// Every chart's first and last rows are fixed; every row carries its chart's index and kind.
TEST(ThreadCharts, SizesAndFixedFirstAndLastRowsOfEveryChart) {
  struct Case {
    const char* chart;  // "" for the reference chart
    size_t count;       // the rows of the chart's CSV
    int32_t chartIndex, threadKind;
    const char* first;
    uint32_t firstRgb;
    const char* last;
    uint32_t lastRgb;
  };
  const std::vector<Case> cases = {
      {"Alcazar Rayon", 2, 9, 0, "Alcazar Rayon 488", 0xFAFD9E, "Alcazar Rayon 451", 0x9BB3E9},
      {"Isacord Poly", 304, 8, 0, "Isacord Poly 0015", 0xFFFFFF, "Isacord Poly 0020", 0x171C15},
      {"Isafil rayon", 288, 3, 0, "Isafil Rayon 0270", 0xF9F6C0, "Isafil Rayon 0020", 0x0E151C},
      {"Madeira Poly", 340, 7, 0, "Madeira Poly 1623", 0xFFED00, "Madeira Poly 1803", 0xEEEBDF},
      {"Madeira Rayon", 357, 1, 0, "Madeira Rayon 1022", 0xFFF989, "Madeira Rayon 1071", 0xFAFAEB},
      {"R-A Poly", 239, 5, 0, "R-A Poly 5543", 0xFBD7D8, "R-A Poly 5635", 0xFBE8D3},
      {"R-A Rayon", 373, 4, 0, "R-A Rayon 2243", 0xEBCCDB, "R-A Rayon 2343", 0xFFFEFC},
      {"Stickma Poly", 130, 6, 0, "Stickma Poly 61187", 0xFFDE00, "Stickma Poly 61071", 0xFFF5F5},
      {"Sulky Rayon", 302, 2, 0, "Sulky Rayon 1001", 0xFEFEFE, "Sulky Rayon 1180", 0x8D837A},
      {"", 302, 1, 0, "Sulky Rayon 1061", 0xE2E0C5, "Sulky Rayon 1234", 0x59565E},
      {"Embroidery", 64, 1, 10, "Embroidery Black", 0x000000, "Embroidery Applique", 0xFFC8C8},
      {"Sulky", 283, 0x1100, 1, "Sulky Rayon 502 Cornsilk", 0xEFC810, "Sulky Rayon 1561 Deep Hyacinth", 0xB58CC7},
      {"Flesh Tone", 2, 0x1200, 1, "Flesh Tone 077 BASE LIGHT", 0xFEE6B6, "Flesh Tone 185 HIGHLIGHT COCO", 0x81321A},
      {"MA Rayon", 357, 0x400, 1, "Madeira Rayon 1000 Black", 0x000000, "Madeira Rayon 1397 Evergreen", 0x00281F},
      {"MA Polyneon", 349, 0x700, 1, "Madeira Poly 1610 Celestial Blue", 0xB8C3CB, "Madeira Poly 1999 Dark Brown", 0x320000},
      // The last RA Poly row is only called dark blue; its colour is the data's.
      {"RA Poly", 452, 0x1500, 1, "RA Poly 9026 Pink Cascade", 0xF9DDD6, "RA Poly 5909 TH Navy", 0x000040},
      {"RA Rayon", 419, 0x1600, 1, "RA Rayon 2243 Light Pink", 0xEFCCCE, "RA Rayon 2343 Eggshell", 0xF0E8D6},
      {"Isacord", 315, 0x1700, 1, "Isacord 0017 White", 0xF8FFFF, "Isacord 1306 Red", 0xFF0000},
      {"GU Dekor", 200, 0x1800, 1, "Guterman Dekor 1000 Midnight Blue", 0x0A0903, "Guterman Dekor 8220 Evergreen", 0x0F321F},
      {"Country", 61, 0x200, 11, "Country 20 Black", 0x000000, "Country 39 Gray", 0x6F6754},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.first);
    const ThreadChart chart = *c.chart != 0 ? ChartByName(c.chart) : ReferenceChart();
    ASSERT_EQ(chart.size(), c.count);
    EXPECT_EQ(std::tie(chart.front().colorName, chart.front().rgb), std::make_tuple(c.first, Hex(c.firstRgb)));
    EXPECT_EQ(std::tie(chart.back().colorName, chart.back().rgb), std::make_tuple(c.last, Hex(c.lastRgb)));
    for (const ThreadColor& row : chart) {
      EXPECT_EQ(std::tie(row.chartIndex, row.threadKind), std::tie(c.chartIndex, c.threadKind)) << row.colorName;
      // Display rows fill only the name, colour and number.
      EXPECT_TRUE(c.threadKind != 0 || (row.brand + row.description + row.catalogNumber).empty()) << row.colorName;
    }
  }
}

TEST(ThreadCharts, EntryFieldsByKind) {
  // Embroidery rows have no catalogue number, so no second blank either.
  const ThreadColor& embroidery = ChartByName("Embroidery")[1];
  EXPECT_EQ(embroidery.brand, "Embroidery");
  EXPECT_EQ(embroidery.catalogNumber, "");
  EXPECT_EQ(embroidery.description, "White");
  EXPECT_EQ(embroidery.colorName, "Embroidery White");
  // Country numbers are machine palette positions: White stands at 29.
  const ThreadColor& country = ChartByName("Country")[1];
  EXPECT_EQ(country.catalogNumber, "29");
  EXPECT_EQ(country.description, "White");
  EXPECT_EQ(country.rgb, Hex(0xF0F0F0));
}

TEST(ThreadCharts, ByNumberAndByName) {
  const std::vector<std::pair<int, const char*>> numbers = {
      {1, "Madeira Rayon"}, {2, "Sulky Rayon"},  {3, "Isafil rayon"}, {4, "R-A Rayon"},    {5, "R-A Poly"},
      {6, "Stickma Poly"},  {7, "Madeira Poly"}, {8, "Isacord Poly"}, {9, "Alcazar Rayon"}, {0, "Sulky Rayon"},
      {10, "Sulky Rayon"},  {-1, "Sulky Rayon"},
  };
  for (const auto& [number, name] : numbers) {
    EXPECT_EQ(ChartByNumber(number).data(), ChartByName(name).data()) << number;
  }
  for (const char* unknown : {"Isafil Rayon", "sulky", "Sulky Rayon, short", ""}) {
    EXPECT_TRUE(ChartByName(unknown).empty()) << unknown;
  }
}

TEST(ThreadCharts, NearestChartName) {
  struct Case {
    uint32_t rgb;
    int number;
    const char* name;
    uint32_t nearest;
  };
  const std::vector<Case> cases = {
      {0xFEFEFE, 10, "Sulky Rayon 1001", 0xFEFEFE},  // charts by number as ChartByNumber finds them
      {0xFFF989, 1, "Madeira Rayon 1022", 0xFFF989},
      // Exact colours that later rows share: the first row wins.
      {0xCC4333, 4, "R-A Rayon 2419", 0xCC4333},
      {0xFF6600, 2, "Sulky Rayon 1078", 0xFF6600},
      // Blue is 600 from 488 and 356 from 451.
      {0x0000FF, 9, "Alcazar Rayon 451", 0x9BB3E9},
      // 122 from both rows: a tie keeps the first.
      {0xCBD8C4, 9, "Alcazar Rayon 488", 0xFAFD9E},
  };
  for (const Case& c : cases) {
    uint32_t nearest = 0;
    EXPECT_EQ(NearestChartName(Hex(c.rgb), c.number, &nearest), c.name) << std::hex << c.rgb << " in " << c.number;
    EXPECT_EQ(nearest, Hex(c.nearest)) << c.name;
  }
  EXPECT_EQ(NearestChartName(Hex(0x9BB3E9), 9), "Alcazar Rayon 451");  // the colour out is optional
}

TEST(ThreadCharts, ChartThreadByCode) {
  struct Case {
    int number;
    const char* text;
    const char* name;  // "" for a blank thread
    uint32_t rgb;
  };
  const std::vector<Case> cases = {
      {8, "Isacord Poly 0015", "Isacord Poly 0015", 0xFFFFFF},
      {4, "2343", "R-A Rayon 2343", 0xFFFEFC},
      {6, "Stickma Poly 61071", "Stickma Poly 61071", 0xFFF5F5},
      {9, "R-A Rayon 2243", "", 0},  // only "243" is searched
      {9, "5488", "Alcazar Rayon 488", 0xFAFD9E},
      {9, "RAYON", "Alcazar Rayon 488", 0xFAFD9E},  // "yon", in any case
      {0, "0015", "", 0},
      {10, "1001", "", 0},  // though ChartByNumber(10) is Sulky Rayon
  };
  for (const Case& c : cases) {
    const ThreadColor thread = ChartThreadByCode(c.number, c.text);
    EXPECT_EQ(thread.colorName, c.name) << c.number << " " << c.text;
    EXPECT_EQ(thread.rgb, Hex(c.rgb)) << c.number << " " << c.text;
    EXPECT_EQ(thread.chartIndex, *c.name ? c.number : 0) << c.number << " " << c.text;
  }
}

ThreadColor Colour(uint32_t rrggbb) {
  ThreadColor thread;
  thread.rgb = Hex(rrggbb);
  return thread;
}

TEST(ThreadCharts, ConeDistance) {
  // Cone points (value, x, y): black (0, 0, 0); red (255, 510, 0); green at
  // 120 degrees (255, -255, 442).
  struct Case {
    uint32_t from, to;
    int32_t distance;
  };
  const std::vector<Case> cases = {
      {0x000000, 0xFF0000, 570},  // sqrt(255^2 + 510^2) = 570.2
      {0xFF0000, 0x00FF00, 884},  // sqrt(765^2 + 442^2) = 883.51
      {0x000000, 0x646464, 100},  // a grey lies on the axis
      // Saturation 64/128*255 = 127.5 is cut: (128, 254, 0), sqrt(80900) = 284.4.
      {0x000000, 0x804040, 284},
      // Hue 30.1 is cut to 30: (255, 442, 255), sqrt(325414) = 570.45.
      {0x000000, 0xFF8000, 570},
      // Hue -30.1 + 360 is cut to 329: (255, 437, -263), y rounded away from
      // zero; from red sqrt(73^2 + 263^2) = 272.9.
      {0xFF0000, 0xFF0080, 273},
  };
  for (const Case& c : cases) {
    const std::vector<ThreadColor> chart = {Colour(c.to)};
    int32_t distance = -1;
    EXPECT_EQ(&NearestChartThread(Hex(c.from), chart, distance), chart.data());
    EXPECT_EQ(distance, c.distance) << std::hex << c.from << " to " << c.to;
  }
}

TEST(ThreadCharts, NearestChartThreadWalk) {
  const std::vector<ThreadColor> chart = {Colour(0x646464), Colour(0x000000), Colour(0xFF0000)};
  int32_t distance = -1;
  // Black matches row 1 exactly and ends the walk there.
  EXPECT_EQ(&NearestChartThread(Hex(0x000000), chart, distance), &chart[1]);
  EXPECT_EQ(distance, 0);
  // Grey 70: row 0 is nearest at 30, but the distance out is that of red, the
  // last row walked: sqrt(185^2 + 510^2) = 542.52.
  EXPECT_EQ(&NearestChartThread(Hex(0x464646), chart, distance), &chart[0]);
  EXPECT_EQ(distance, 543);
  // Equal rows that are not exact: the first stays.
  const std::vector<ThreadColor> twins = {Colour(0x646464), Colour(0x646464)};
  EXPECT_EQ(&NearestChartThread(Hex(0x000000), twins, distance), &twins[0]);
  distance = 7;
  EXPECT_EQ(NearestChartThread(0, ThreadChart{}, distance).colorName, "");
  EXPECT_EQ(distance, 7);
}

}  // namespace
}  // namespace fennick
