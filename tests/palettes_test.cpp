#include "threads/palettes.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

namespace fennick {
namespace {

constexpr uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b) { return r | g << 8 | b << 16; }

ThreadColor Thread(uint32_t rgb, int32_t chartIndex, const std::string& name) {
  ThreadColor thread;
  thread.rgb = rgb;
  thread.chartIndex = chartIndex;
  thread.colorName = name;
  return thread;
}

TEST(PecPalette, RowsNamesAndNumbers) {
  struct Row {
    int index;
    const char* name;
    uint8_t r, g, b;
    const char* number;
  };
  // Rows read off the palette table by hand; 95 and above are outside it.
  const std::vector<Row> rows = {
      {0, "Composite", 0, 0, 0, ""},
      {1, "Prussian Blue", 14, 31, 124, "007"},
      {20, "Black", 0, 0, 0, "900"},
      {51, "Dark Fuschia", 199, 1, 86, "107"},
      {62, "Applique Mat.", 255, 200, 100, ""},
      {65, "Not Defined", 225, 225, 225, ""},
      {94, "Flesh Pink 2", 255, 170, 255, ""},
      {95, "Unknown", 225, 225, 225, ""},
      {-1, "Unknown", 225, 225, 225, ""},
  };
  for (const Row& row : rows) {
    uint8_t r = 1, g = 1, b = 1;
    EXPECT_EQ(PecColorRgb(row.index, r, g, b), Rgb(row.r, row.g, row.b)) << row.index;
    EXPECT_EQ(Rgb(r, g, b), Rgb(row.r, row.g, row.b)) << row.index;
    EXPECT_EQ(PecColorName(row.index), row.name) << row.index;
    EXPECT_EQ(PecStandardNumber(row.index), row.number) << row.index;
  }
}

TEST(PecPalette, NearestColour) {
  struct Case {
    uint8_t r, g, b;
    bool applique, extended;
    int expected;
  };
  const std::vector<Case> cases = {
      {237, 23, 31, false, false, 5},  // exact
      {0, 0, 0, false, false, 20},     // 0 is black too but comes later, and only with extended
      {0, 0, 0, true, true, 20},
      // 63 from both Pink 43 and Deep Rose 25: 43 is searched first.
      {248, 110, 163, false, false, 43},
      // Applique Mat. exactly; without the flag Pumpkin at 1 + 21 + 33.
      {255, 200, 100, false, false, 33},
      {255, 200, 100, true, false, 62},
      // The grey of "Not Defined": Flesh Pink at 28 + 8 + 3 without either flag.
      {225, 225, 225, false, false, 57},
      {225, 225, 225, true, false, 65},
      {225, 225, 225, false, true, 65},
      // Blue 2 of the extended entries; otherwise Prussian Blue at 14 + 31 + 131.
      {0, 0, 255, false, false, 1},
      {0, 0, 255, false, true, 67},
      {255, 170, 255, true, true, 94},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(PecNearestColor(c.r, c.g, c.b, c.applique, c.extended), c.expected)
        << int{c.r} << "," << int{c.g} << "," << int{c.b} << " applique " << c.applique << " extended " << c.extended;
  }
}

TEST(JefAndPcsPalettes, ColourFromIndexOrThreadLeftAlone) {
  enum Palette { kJef, kPcs };
  struct Case {
    Palette palette;
    int32_t index;
    uint32_t rgb;
    const char* name;
  };
  const uint32_t kept = Rgb(1, 2, 3);
  const std::vector<Case> cases = {
      {kJef, 1, Rgb(0, 0, 0), "Black"},
      {kJef, 10, Rgb(255, 0, 0), "Red"},
      {kJef, 79, Rgb(192, 192, 192), "Other Color"},
      {kJef, 0, kept, "Kept"},
      {kJef, 80, kept, "Kept"},
      {kPcs, 0, Rgb(0, 0, 0), "Black"},
      {kPcs, 15, Rgb(255, 255, 255), "White"},
      {kPcs, 16, kept, "Kept"},
      {kPcs, -1, kept, "Kept"},
  };
  for (const Case& c : cases) {
    ThreadColor thread = Thread(kept, c.index, "Kept");
    c.palette == kJef ? JefPaletteColor(thread) : PcsPaletteColor(thread, c.index);
    EXPECT_EQ(thread.rgb, c.rgb) << c.palette << " " << c.index;
    EXPECT_EQ(thread.colorName, c.name) << c.palette << " " << c.index;
    EXPECT_EQ(thread.chartIndex, c.index) << c.palette << " " << c.index;
  }
}

TEST(JefPalette, NearestIndexSetsOnlyChartIndex) {
  struct Case {
    uint32_t rgb;
    int32_t expected;
  };
  const std::vector<Case> cases = {
      {Rgb(128, 128, 128), 54},  // Salmon at 28 + 19 + 4; Red is 383 away
      {Rgb(192, 192, 192), 21},  // "Other Color" is exact but never chosen: Pale Sky at 47
      {Rgb(0, 24, 8), 1},        // 32 from Black 1 and Dark Green 46: the lower index wins
  };
  for (const Case& c : cases) {
    ThreadColor thread = Thread(c.rgb, 99, "Kept");
    JefNearestColor(thread);
    EXPECT_EQ(thread.chartIndex, c.expected) << std::hex << c.rgb;
    EXPECT_EQ(thread.rgb, c.rgb);
    EXPECT_EQ(thread.colorName, "Kept");
  }
}

TEST(PcsPalette, NearestIndexInFileTable) {
  // The default colour table of a PCS header: red, green, blue, pad.
  std::vector<uint8_t> table = {0,   0,   0,   0, 0,   0,   128, 0, 0,   0,   255, 0, 0,   128, 128, 0,
                                0,   255, 255, 0, 128, 0,   128, 0, 255, 0,   255, 0, 128, 0,   0,   0,
                                255, 0,   0,   0, 0,   128, 0,   0, 0,   255, 0,   0, 128, 128, 0,   0,
                                255, 255, 0,   0, 128, 128, 128, 0, 192, 192, 192, 0, 255, 255, 255, 0};
  EXPECT_EQ(PcsNearestIndex(table, 0, 0, 100), 1);
  EXPECT_EQ(PcsNearestIndex(table, 0, 0, 64), 0);   // 64 from 0 and from 1: the first wins
  EXPECT_EQ(PcsNearestIndex(table, 0, 0, 192), 2);  // 63 beats 64
  // A 17th entry is beyond the table even when it matches exactly.
  table.insert(table.end(), {0, 0, 90, 0});
  EXPECT_EQ(PcsNearestIndex(table, 0, 0, 90), 1);
  // Nothing is nearer than the start distance of 765: index 0 stands.
  const std::vector<uint8_t> white(64, 255);
  EXPECT_EQ(PcsNearestIndex(white, 0, 0, 0), 0);
  // A cut table compares only its whole entries.
  EXPECT_EQ(PcsNearestIndex(std::span(table).first(11), 255, 255, 255), 1);
}

TEST(PcsPalette, NameColorsExactPcsMatchElsePecName) {
  struct Case {
    uint32_t rgb;
    const char* name;
  };
  const std::vector<Case> cases = {
      {Rgb(0, 0, 128), "Dark Blue"},
      {Rgb(128, 128, 128), "Medium Gray"},
      {Rgb(192, 192, 192), "Light Gray"},
      {Rgb(255, 0, 255), "Magenta"},
      // One step off Dark Blue: Prussian Blue at 14 + 31 + 3.
      {Rgb(0, 0, 127), "Prussian Blue"},
      // Built from the table's values but no PCS colour: Brass at 6 + 40 + 0.
      {Rgb(192, 192, 0), "Brass"},
      // The applique and extended entries stay out, so not "Not Defined".
      {Rgb(225, 225, 225), "Flesh Pink"},
  };
  Design design;
  for (const Case& c : cases) design.threads.push_back(Thread(c.rgb, 3, ""));
  NamePcsColors(design);
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(design.threads[i].colorName, cases[i].name) << i;
    EXPECT_EQ(design.threads[i].rgb, cases[i].rgb) << i;
    EXPECT_EQ(design.threads[i].chartIndex, 3) << i;
  }
}

}  // namespace
}  // namespace fennick
