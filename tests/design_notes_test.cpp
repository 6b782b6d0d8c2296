#include "tools/design_notes.h"

#include <gtest/gtest.h>

#include "core/preferences.h"
#include "threads/colour_conversion.h"
#include "tools/size_text.h"

#include "tests/test_support.h"

namespace fennick {
namespace {

TEST(InchText, WholePartsAndSixteenths) {
  const struct {
    double inches;
    const char* text;
  } cases[] = {
      {1.0, "1 "},  // "%-2.0f" pads a single digit; with no fraction nothing follows
      {2.375, "2 (3/8)"},
      {0.5, "0 (1/2)"},
      {0.0, "0 (0)"},   // a zero whole part always shows its fraction
      {-0.25, "-0 (1/4)"},  // the sign goes first when the whole part is 0
      {-1.5, "-1(1/2)"},    // rounded towards zero: -1 and a half
      {12.0625, "12(1/16)"},
      {3.99, "3 (15/16)"},
  };
  for (const auto& c : cases) EXPECT_EQ(InchText(c.inches), c.text) << c.inches;
}

TEST(DesignNotes, NameSizeDateThenOneParagraphPerThread) {
  Design design;
  design.name = "/designs/rose.pes";
  design.maxX = 256, design.maxY = 512;
  test::SetNodes(design, {{1, 0, 0}, {0, 0, STITCH_COLORSTOP}, {1, 1, 0}});
  design.threads.resize(2);
  design.threads[0].colorName = "Red", design.threads[0].stitchCount = 1;
  design.threads[0].threadLength = 10000;  // one metre; 1.0936 yd
  design.threads[1].colorName = "Sky Blue", design.threads[1].stitchCount = 2;
  design.threads[1].threadLength = 1449;  // 0.1449 m; 0.1585 yd
  EXPECT_EQ(DesignNotes(design, false, "11/21/26", "MATCHES"),
            "/designs/rose.pes\r\n2.56 cm x 5.12 cm : 2 Stitches\r\n11/21/26\r\n\r\n"
            "1: Red, 1 st. 1.0 m.\r\n\r\n2: Sky Blue, 2 st. 0.1 m.\r\n\r\n\r\nMATCHES");
  EXPECT_EQ(DesignNotes(design, true, "01/02/03", ""),
            "/designs/rose.pes\r\n2 \" x 1 \" : 2 Stitches\r\n01/02/03\r\n\r\n"
            "1: Red, 1 st. 1.1 yd.\r\n\r\n2: Sky Blue, 2 st. 0.2 yd.\r\n\r\n\r\n");
  design.threads.clear();
  EXPECT_EQ(DesignNotes(design, false, "11/21/26", ""),
            "/designs/rose.pes\r\n2.56 cm x 5.12 cm : 4 Stitches\r\n11/21/26\r\n\r\n\r\n");
}

TEST(DesignNotes, OneCallFormFollowsThePreferenceAndEndsWithTheMatches) {
  const test::ScratchFolder folder;
  Design design;
  design.name = "rose.pes";
  design.maxX = 256;
  test::SetNodes(design, {{1, 0, 0}});
  design.threads = {ThreadColor{}};
  design.threads[0].colorName = "Red", design.threads[0].rgb = 0x0000FF, design.threads[0].threadLength = 10000;
  const std::string matches = BuildMatchText(design);
  ASSERT_NE(matches.find("Red Matches:"), std::string::npos);
  const std::string english = DesignNotes(design);  // "English" is on until set otherwise
  EXPECT_NE(english.find("1: Red, 0 st. 1.1 yd.\r\n"), std::string::npos) << english;
  EXPECT_EQ(english.substr(english.size() - matches.size()), matches);
  PreferenceStore().SetInt("Settings", "English", 0);
  EXPECT_NE(DesignNotes(design).find("1: Red, 0 st. 1.0 m.\r\n"), std::string::npos);
}

TEST(DesignNotes, ShortDateIsMonthDayYear) {
  std::tm date{};
  date.tm_year = 2026 - 1900;
  date.tm_mon = 0;
  date.tm_mday = 5;
  date.tm_hour = 12;
  EXPECT_EQ(ShortDateText(std::mktime(&date)), "01/05/26");
}

}  // namespace
}  // namespace fennick
