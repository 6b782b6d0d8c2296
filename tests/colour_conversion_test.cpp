#include "threads/colour_conversion.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "core/embroidery_file.h"
#include "tests/test_support.h"
#include "threads/thread_charts.h"
#include "tools/hue_sort.h"

namespace fennick {
namespace {

constexpr uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b) { return r | g << 8 | b << 16; }

ThreadColor Thread(uint32_t rgb, const std::string& name = "Mine", int32_t chartIndex = 0) {
  ThreadColor thread;
  thread.rgb = rgb;
  thread.colorName = name;
  thread.chartIndex = chartIndex;
  return thread;
}

Design WithThreads(std::vector<ThreadColor> threads) {
  Design design;
  design.threads = std::move(threads);
  return design;
}

TEST(ConvertThreadsForFormat, EachFormatMapsToItsOwnColours) {
  const ThreadColor madeira = ChartByNumber(1).front();  // "Madeira Rayon 1022", 255 249 137
  const ThreadColor reference = ReferenceChart().front();
  struct Case {
    const char* extension;
    ThreadColor in;
    uint32_t rgb;
    const char* name;
    int32_t chartIndex;
  };
  const std::vector<Case> cases = {
      // Nothing to map: colours, names and indices stay.
      {"dst", Thread(Rgb(1, 2, 3), "Mine", 7), Rgb(1, 2, 3), "Mine", 7},
      // Default palette entry 1 "Blue", with its index.
      {"HUS", Thread(Rgb(2, 1, 250)), Rgb(0, 0, 255), "Blue", 1},
      // JEF 10 "Red" at a distance of 15; 79 "Other Color" never wins.
      {"jef", Thread(Rgb(250, 5, 5)), Rgb(255, 0, 0), "Red", 10},
      // PCS 14 "Light Gray" (distance 24) over 15 "White".
      {"pcs", Thread(Rgb(200, 200, 200)), Rgb(192, 192, 192), "Light Gray", 14},
      // PEC 5 "Red" (237, 23, 31) at a distance of 7.
      {"pes", Thread(Rgb(240, 20, 30)), Rgb(237, 23, 31), "Red", 5},
      // Chart 0 counts as Madeira Rayon; only rgb changes.
      {"vip", Thread(Rgb(255, 249, 136)), madeira.rgb, "Mine", 0},
      {"xxx", Thread(reference.rgb + 1), reference.rgb, reference.colorName.c_str(), reference.chartIndex},
  };
  for (const Case& c : cases) {
    Design design = WithThreads({c.in});
    EXPECT_EQ(ConvertThreadsForFormat(design, c.extension), 0);
    const ThreadColor& out = design.threads.at(0);
    EXPECT_EQ(out.rgb, c.rgb) << c.extension;
    EXPECT_EQ(out.colorName, c.name) << c.extension;
    EXPECT_EQ(out.chartIndex, c.chartIndex) << c.extension;
  }
}

TEST(ConePlacement, RadiusFollowsTheFactor) {
  const struct {
    uint32_t rgb;
    double factor;
    ConePoint point;
  } cases[] = {
      {Rgb(255, 0, 0), 1.5, {255, 383, 0}},  // 382.5 rounds away from zero
      {Rgb(0, 255, 0), 1.5, {255, -191, 331}},  // 120 degrees
      {Rgb(90, 90, 90), 1.5, {90, 0, 0}},
  };
  for (const auto& c : cases) {
    const ConePoint point = PlaceInCone(c.rgb, c.factor);
    EXPECT_EQ(point.v, c.point.v) << c.rgb;
    EXPECT_EQ(point.x, c.point.x) << c.rgb;
    EXPECT_EQ(point.y, c.point.y) << c.rgb;
  }
}

TEST(BestThreeMatches, SlotsFollowTheirOwnRuleAndAreNotSorted) {
  // Greys sit on the axis, so a row's distance from grey 100 is its value less 100.
  std::vector<ThreadColor> rows;
  for (const uint32_t v : {110u, 105u, 107u, 106u, 108u}) rows.push_back(Thread(Rgb(v, v, v), std::to_string(v)));
  Design scratch;
  BestThreeMatches(Thread(Rgb(100, 100, 100)), scratch, rows);
  // 10 fills slot 1, 5 pushes it to slot 2; 7 and then 6 land in slot 3 although
  // below slot 2; 8 lies between slots 3 and 2: it takes slot 2, and slot 3
  // takes slot 2's distance of 10 but keeps row 106.
  ASSERT_EQ(scratch.threads.size(), 3u);
  const struct {
    const char* name;
    int percent;
  } expected[] = {{"105", 99}, {"108", 98}, {"106", 98}};  // 100 - round(d * 0.2257): 5, 8, 10
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(scratch.threads[i].colorName, expected[i].name) << i;
    EXPECT_EQ(scratch.threads[i].matchPercent, expected[i].percent) << i;
  }

  scratch.threads.clear();
  BestThreeMatches(Thread(Rgb(100, 100, 100)), scratch, ThreadChart{});
  EXPECT_TRUE(scratch.threads.empty());
  BestThreeMatches(Thread(Rgb(100, 100, 100)), scratch, ThreadChart(rows).first(1));
  ASSERT_EQ(scratch.threads.size(), 1u);  // empty slots add nothing
  EXPECT_EQ(scratch.threads[0].colorName, "110");
}

TEST(BuildMatchText, OneParagraphPerColour) {
  const ThreadColor& cornsilk = ChartByName("Sulky").front();  // "Sulky Rayon 502 Cornsilk"
  const Design design = WithThreads({Thread(cornsilk.rgb, "First"), Thread(Rgb(0, 0, 200), "Second"),
                                     Thread(cornsilk.rgb, "Again")});
  const std::string text = BuildMatchText(design);
  EXPECT_EQ(text.rfind("\r\nFirst Matches:\r\nSulky Rayon 502 Cornsilk (100%) - ", 0), 0u) << text;
  EXPECT_NE(text.find("\r\nSecond Matches:\r\n"), std::string::npos);
  EXPECT_EQ(text.find("Again"), std::string::npos);
  // Two headings and four chart lines under each, none ending in a separator.
  size_t lines = 0;
  for (size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + 2)) ++lines;
  EXPECT_EQ(lines, 2u * (2 + 4));
  EXPECT_EQ(text.find(" - \r\n"), std::string::npos);
  EXPECT_EQ(BuildMatchText(Design{}), "");
}

TEST(BuildFormatColorDesign, TablesInTheFormatsOrder) {
  struct Spot {
    size_t position;
    const char* name;
    uint32_t rgb;
  };
  const struct {
    const char* path;
    size_t count;
    std::vector<Spot> spots;
  } cases[] = {
      {"a.DST", 29, {{1, "Dark Gray", Rgb(60, 60, 60)}, {28, "Light Blue", Rgb(51, 154, 255)}}},
      {"a.shv", 29, {{2, "Gray", Rgb(127, 127, 127)}}},
      {"a.pcs", 16, {{15, "White", Rgb(255, 255, 255)}}},
      {"a.pes", 66, {{1, "Red", Rgb(237, 23, 31)}, {64, "Not Defined", Rgb(225, 225, 225)}, {65, "Composite", 0}}},
      {"a.emd", 66, {{49, "Prussian Blue", Rgb(14, 31, 124)}}},
      {"a.sew", 79, {{78, "Other Color", Rgb(192, 192, 192)}}},
      {"a.jef", 79, {{9, "Red", Rgb(255, 0, 0)}}},
      {"a.xxx", ReferenceChart().size(), {{0, "Sulky Rayon 1061", Rgb(226, 224, 197)}}},
      {"a.vip", ChartByNumber(1).size(), {{0, "Madeira Rayon 1022", Rgb(255, 249, 137)}}},
  };
  for (const auto& c : cases) {
    Design design = WithThreads({Thread(1)});
    design.name = c.path;
    BuildFormatColorDesign(design);
    ASSERT_EQ(design.threads.size(), c.count) << c.path;
    for (const Spot& spot : c.spots) {
      EXPECT_EQ(design.threads[spot.position].colorName, spot.name) << c.path << " " << spot.position;
      EXPECT_EQ(design.threads[spot.position].rgb, spot.rgb) << c.path << " " << spot.position;
    }
  }
}

TEST(GetFormatColors, BlocksDecodeWithTheirChartHeadings) {
  const struct {
    const char* path;
    std::vector<std::string> titles;
  } cases[] = {
      {"x.vip", {"Alcazar Rayon", "Isacord Poly", "Isafil rayon", "Madeira Poly", "Madeira Rayon", "R-A Poly",
                 "R-A Rayon", "Stickma Poly", "Sulky Rayon"}},
      {"x.PHC", {"Embroidery", "Flesh Tone", "Sulky Rayon", "MA Rayon", "MA Polyneon", "RA Rayon", "RA Poly",
                 "Isacord", "GU Dekor"}},
  };
  for (const auto& c : cases) {
    const GlobalHandle block = GetFormatColors(c.path, ConversionSettings{});
    ASSERT_NE(block, 0u) << c.path;
    Design design;
    ParseEmbroideryFile(design, block);
    GlobalFree(block);
    std::vector<std::string> titles;
    size_t rows = 0;
    size_t expectedRows = 0;
    for (const ThreadColor& thread : design.threads) {
      if (thread.colorName.empty()) {
        titles.push_back(thread.brand);
        expectedRows += ChartByName(thread.brand).size();
        continue;
      }
      ++rows;
      // Rows stay within their chart; the block keeps 29 characters of a name.
      const ThreadChart chart = ChartByName(titles.back());
      bool found = false;
      for (const ThreadColor& row : chart) {
        found = found || (row.colorName.substr(0, 29) == thread.colorName && row.rgb == thread.rgb);
      }
      EXPECT_TRUE(found) << titles.back() << ": " << thread.colorName;
    }
    EXPECT_EQ(titles, c.titles) << c.path;
    EXPECT_EQ(rows, expectedRows) << c.path;
  }
}

TEST(HueSortThreads, ChainsFromTheLowestSectorInAVectorOrAnArray) {
  // Sectors: red 1, dark red 1, grey -1, blue 9, rose 1.
  std::vector<ThreadColor> threads = {Thread(Rgb(255, 0, 0), "red"), Thread(Rgb(128, 0, 0), "dark red"),
                                      Thread(Rgb(128, 128, 128), "grey"), Thread(Rgb(0, 0, 255), "blue"),
                                      Thread(Rgb(255, 60, 60), "rose")};
  std::vector<ThreadColor> array = threads;
  HueSortThreads(threads);
  // Grey seeds the chain and goes to the tail; from it rose is nearest (2000 +
  // 9 * 0.13), then within sector 1 the brightest next; from dark red, grey
  // (2000 - 256 * 0.13) beats blue (8000 - 127 * 0.13) and is drawn back in.
  const std::vector<std::string> order = test::Names(threads);
  EXPECT_EQ(order, (std::vector<std::string>{"rose", "red", "dark red", "grey", "blue"}));
  SortThreadArray(array.data(), array.size());  // a plain array: the same order, written back
  for (size_t i = 0; i < array.size(); ++i) EXPECT_EQ(array[i].colorName, order[i]) << i;

  std::vector<ThreadColor> two = {Thread(Rgb(0, 0, 255), "blue"), Thread(Rgb(255, 0, 0), "red")};
  HueSortThreads(two);
  EXPECT_EQ(two[0].colorName, "blue");
}

}  // namespace
}  // namespace fennick
