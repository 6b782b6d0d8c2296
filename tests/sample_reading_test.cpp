// Each real sample read through ReadDesignFile against its twin, the same
// design in another format: the threads it names, and where its needle goes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "core/format_table.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

struct Sample {
  const char* file;
  const char* twin;
  std::vector<std::string> colours;  // names; "#RRGGBB" where the file keeps colours of its own; "" unchecked
  bool endsAlike = true;             // the EXP reader ends every design with a step of one unit back
};

Design Read(const std::string& name) {
  Design design;
  EXPECT_EQ(ReadDesignFile(design, std::string(FENNICK_TEST_DATA) + "/" + name, LastFile::kLeave), 0) << name;
  return design;
}

std::string Colour(const ThreadColor& thread, const std::string& like) {
  if (like.empty()) return "";
  if (like[0] != '#') return thread.colorName;
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", thread.rgb & 0xFF, (thread.rgb >> 8) & 0xFF, (thread.rgb >> 16) & 0xFF);
  return text;
}

TEST(SampleReading, EveryReaderPutsTheNeedleWhereTheTwinDoes) {
  const std::vector<std::string> defaults = {"Black", "Blue", "Light Green", "Red"},
                                  pecNames = {"Ultramarine", "Cream Yellow", "Violet", "Sky Blue"},
                                  colourFile = {"#0000C8", "#FFF380", "#FF00FF", "#82CAFF"};  // geometric_objects.col
  const Sample samples[] = {
      {"geometric_objects.dst", "geometric_objects.dst", defaults},  // its own twin: colours and stops only
      {"geometric_objects.pec", "geometric_objects.dst", pecNames},
      {"geometric_objects.phc", "geometric_objects.dst", pecNames},
      {"geometric_objects.pes", "geometric_objects.dst", {"Prussian Blue", "Cream Yellow", "Royal Purple", "Light Blue"}},
      {"geometric_objects.jef", "geometric_objects.dst", {"Blue Ink", "Pale Yellow", "Peony Purple", "Bright Blue"}},
      {"geometric_objects.sew", "geometric_objects.dst", {"Blue Ink", "Mustard", "Crimson", "Bright Blue"}},
      {"geometric_objects.exp", "geometric_objects.dst", defaults, false},
      {"geometric_objects.emd", "geometric_objects.dst", colourFile},
      {"geometric_objects.vip", "geometric_objects.dst", colourFile},
      {"geometric_objects.hus", "geometric_objects.dst", {"#0000FF", "#FFFF99", "#FF00FF", "#339AFF"}},
      {"geometric_objects.pcs", "geometric_objects.dst", {"Prussian Blue", "Cream Yellow", "Magenta", "Light Blue"}},
      {"geometric_objects.shv", "geometric_objects.dst", {"Blue", "Dark Gray", "Purple", "Light Blue"}},
      {"geometric_objects.xxx", "geometric_objects.dst", {"", "", "", ""}},
      {"Star.phb", "star.pes", {"Vermillion", "White"}},
      {"Star.pcs", "star.pes", {"Red", "White"}},
      {"Star.shv", "star.pes", {"Dark Orange", "White"}},
      {"Star.vip", "star.pes", {"#E3311F", "#F7F3F7"}},
      {"Star.xxx", "star.pes", {"", ""}},
      {"shamrockin.emd", "shamrockin.pes", {"Moss Green"}},
  };
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.file);
    const Design design = Read(sample.file), twin = Read(sample.twin);
    ASSERT_EQ(design.threads.size(), sample.colours.size());
    for (size_t i = 0; i < sample.colours.size(); ++i) EXPECT_EQ(Colour(design.threads[i], sample.colours[i]), sample.colours[i]);
    EXPECT_EQ(test::CountStops(design) + 1, design.threads.size());
    ASSERT_FALSE(design.stitches.Empty() || design.stitches.Tail()->IsColorStop());
    EXPECT_EQ((std::array{design.minX, design.maxX, design.minY, design.maxY}),
              (std::array{twin.minX, twin.maxX, twin.minY, twin.maxY}));
    // Every stitch of the twin lies on a needle point of the file: any node's,
    // as readers that fold a landing stitch into its jump keep its point there.
    const auto twinStitches = test::NeedlePoints(twin), stitches = test::NeedlePoints(design);
    ASSERT_GT(std::min(twinStitches.size(), stitches.size()), 1000u);
    EXPECT_EQ(test::CountMissing(twinStitches, test::NeedlePoints(design, test::Landing::kAny)), 0u);
    // The other way round only a few: the DST twin jumps over a few runs that
    // the others sew in short stitches.
    EXPECT_LT(test::CountMissing(stitches, test::NeedlePoints(twin, test::Landing::kAny)), 20u);
    // The tie-off at the end: the same stitches, though they add no new points.
    const std::vector<test::Point> path = test::NeedlePath(design), twinPath = test::NeedlePath(twin);
    if (sample.endsAlike) {
      EXPECT_EQ(std::vector(path.end() - 4, path.end()), std::vector(twinPath.end() - 4, twinPath.end()));
    }
  }
}

}  // namespace
}  // namespace fennick
