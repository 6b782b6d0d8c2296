#include "tools/reduce_needles.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "core/preferences.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

using Pane = ReduceNeedlesModel::Pane;

constexpr uint32_t kRed = ColorRef(255, 0, 0);
constexpr uint32_t kGreen = ColorRef(0, 255, 0);
constexpr uint32_t kBlue = ColorRef(0, 0, 255);
constexpr uint32_t Grey(uint8_t value) { return ColorRef(value, value, value); }

struct Thread {
  const char* name;
  uint32_t rgb;
  int32_t threadLength;
};

// One stitch a thread, with a stop between each two.
Design DesignOf(const std::vector<Thread>& threads) {
  std::vector<uint32_t> colors;
  for (const Thread& spec : threads) colors.push_back(spec.rgb);
  Design design = test::StitchPerColour(colors);
  for (size_t i = 0; i < threads.size(); ++i) {
    design.threads[i].colorName = threads[i].name, design.threads[i].threadLength = threads[i].threadLength;
  }
  return design;
}

TEST(ColorPoint, HueAndSaturationMakeTheConeValueTheHeight) {
  struct Case {
    uint32_t rgb;
    ColorPoint point;
  };
  const Case cases[] = {
      {Grey(0), {0, 0, 0}},
      {Grey(128), {0, 0, 128}},
      {kRed, {510, 0, 255}},
      {kGreen, {-255, 442, 255}},
      {kBlue, {-255, -442, 255}},
      {ColorRef(255, 0, 4), {510, -9, 255}},     // hue 359
      {ColorRef(200, 100, 100), {254, 0, 200}},  // saturation 127.5 is cut
  };
  for (const Case& c : cases) {
    const ColorPoint point = ColorPoint::FromRgb(c.rgb);
    EXPECT_EQ(std::tie(point.x, point.y, point.z), std::tie(c.point.x, c.point.y, c.point.z)) << std::hex << c.rgb;
  }
  const auto distance = [](uint32_t a, uint32_t b) {
    return ColorPointDistance(ColorPoint::FromRgb(a), ColorPoint::FromRgb(b));
  };
  EXPECT_DOUBLE_EQ(distance(Grey(0), Grey(255)), 255.0);  // greys differ by value alone
  EXPECT_DOUBLE_EQ(distance(kRed, ColorRef(255, 0, 4)), 9.0);  // the cone closes at 0 and 360
  EXPECT_DOUBLE_EQ(distance(kRed, ColorRef(0, 255, 255)), 1020.0);
}

TEST(ReduceNeedles, MergesTheClosestColoursIntoTheHeavier) {
  struct Case {
    const char* what;
    std::vector<Thread> threads;
    int maxNeedles;
    int removed;
    std::vector<std::string> names;  // afterwards
    std::vector<int32_t> lengths;
  };
  const Case cases[] = {
      {"below 1", {{"A", kRed, 1}, {"B", kBlue, 2}}, 0, 0, {"A", "B"}, {1, 2}},
      {"as many threads as needles", {{"A", kRed, 1}, {"B", kBlue, 2}}, 2, 0, {"A", "B"}, {1, 2}},
      {"equal rgb is one needle: the later takes the first's record",
       {{"One", kRed, 100}, {"Two", kRed, 50}}, 1, 0, {"One", "One"}, {100, 100}},
      {"one needle: every stop takes the survivor, which gathered all weight",
       {{"Red", kRed, 100}, {"Green", kGreen, 200}, {"Blue", kBlue, 300}}, 1, 2,
       {"Green", "Green", "Green"}, {600, 600, 600}},
      {"weight passes at every closer pair, not only the closest",
       {{"A", ColorRef(255, 0, 0), 100}, {"B", ColorRef(200, 0, 0), 300}, {"C", ColorRef(250, 0, 0), 50}}, 2, 1,
       {"A", "B", "A"}, {150, 400, 150}},
      {"equal distances: the first pair; equal weights: the later goes",
       {{"A", Grey(100), 0}, {"B", Grey(110), 0}, {"C", Grey(120), 0}}, 2, 1, {"A", "A", "C"}, {0, 0, 0}},
      {"greys by value", {{"Black", Grey(0), 0}, {"White", Grey(255), 0}, {"Mid", Grey(100), 0}}, 2, 1,
       {"Black", "White", "Black"}, {0, 0, 0}},
      {"hue 359 next to hue 0",
       {{"Red", kRed, 100}, {"Rose", ColorRef(255, 0, 4), 50}, {"Cyan", ColorRef(0, 255, 255), 10}}, 2, 1,
       {"Red", "Red", "Cyan"}, {150, 150, 10}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Design design = DesignOf(c.threads);
    const std::vector<test::Node> nodes = test::Nodes(design);
    EXPECT_EQ(ReduceNeedles(design, c.maxNeedles), c.removed);
    std::vector<int32_t> lengths;
    for (const ThreadColor& thread : design.threads) lengths.push_back(thread.threadLength);
    EXPECT_EQ(test::Names(design.threads), c.names);
    EXPECT_EQ(lengths, c.lengths);
    EXPECT_EQ(test::Nodes(design), nodes);  // the stops remain
  }
}

TEST(ReduceNeedles, AssignsTheWholeRecordAndCountsDistinctColours) {
  Design design = DesignOf({{"Red", kRed, 900}, {"Dark red", ColorRef(250, 0, 0), 100}, {"Red again", kRed, 5}});
  ThreadColor& kept = design.threads[0];
  kept.brand = "Sulky Rayon", kept.catalogNumber = "1147", kept.chart = "chart", kept.stitchCount = 42, kept.chartIndex = 7;
  EXPECT_EQ(CountDistinctColors(design), 2);
  EXPECT_EQ(ReduceNeedles(design, 1), 1);
  // Statistics come along unrecomputed; the weight is the merged one.
  const auto expected = std::make_tuple("Red", "Sulky Rayon", "1147", "chart", 42, 7, 1000);
  for (const ThreadColor& thread : design.threads) {
    EXPECT_EQ(std::tie(thread.colorName, thread.brand, thread.catalogNumber, thread.chart, thread.stitchCount,
                       thread.chartIndex, thread.threadLength),
              expected);
  }
  EXPECT_EQ(CountDistinctColors(design), 1);
}

class ReduceNeedlesModelTest : public ::testing::Test {
 protected:
  // Red: 1 stitch of 2600; Blue: 2 of 1300; Green: 1 of 2600. Each thread
  // measures 7500 + 1.5 x 2600 = 11400 units, 1.14 m or 1.2467 yd.
  static Design ThreeColours() {
    Design design = test::DesignOf({{1000, 2400, 0},
                                    {0, 0, STITCH_COLORSTOP},
                                    {500, 1200, 0},
                                    {500, 1200, 0},
                                    {0, 0, STITCH_COLORSTOP},
                                    {1000, 2400, 0}},
                                   {kRed, kBlue, kGreen});
    const char* names[] = {"Red", "Blue", "Green"};
    for (size_t i = 0; i < 3; ++i) design.threads[i].colorName = names[i];
    return design;
  }
  test::ScratchFolder folder_;
  ReduceNeedlesModel model_;
};

TEST_F(ReduceNeedlesModelTest, EditIsCorrectedAndReducesOnlyOnANewNumber) {
  EXPECT_FALSE(model_.SetEditText("2"));  // not open yet
  model_.Open(ThreeColours());
  EXPECT_EQ(model_.EditText(), "3");
  EXPECT_EQ(model_.SpinTop(), 3);
  EXPECT_FALSE(model_.Accept().has_value());
  struct Step {
    const char* text;
    bool changed;
    const char* shown;
    int removed;
  };
  const Step steps[] = {{"2", true, "2", 1},  {"2", false, "2", 1},   {"7", true, "3", 0},  {"0", true, "1", 2},
                        {"-5", false, "1", 2}, {"2x", true, "2", 1}, {"abc", true, "1", 2}};
  for (const Step& step : steps) {
    SCOPED_TRACE(step.text);
    EXPECT_EQ(model_.SetEditText(step.text), step.changed);
    EXPECT_EQ(model_.EditText(), step.shown);
    EXPECT_EQ(model_.RemovedCount(), step.removed);
  }
  ASSERT_TRUE(model_.Accept().has_value());
  EXPECT_EQ(CountDistinctColors(*model_.Accept()), 1);
  EXPECT_EQ(CountDistinctColors(model_.Original()), 3);

  // Over 100 colours the spin reaches further than the edit takes.
  model_.Open(test::StitchPerColour(test::CountingColours(101)));
  EXPECT_EQ(model_.EditText(), "101");
  EXPECT_TRUE(model_.SetEditText("101"));
  EXPECT_EQ(model_.EditText(), "100");
  EXPECT_EQ(model_.RemovedCount(), 1);
}

TEST_F(ReduceNeedlesModelTest, ListsInMetresOrYards) {
  model_.Open(ThreeColours());  // "English" is 1 until stored otherwise
  using Lines = std::vector<std::string>;
  EXPECT_EQ(model_.ListLines(Pane::kOriginal),
            (Lines{"1: Red,  1 st.  1.2 yd.", "2: Blue,  2 st.  1.2 yd.", "3: Green,  1 st.  1.2 yd."}));
  PreferenceStore().SetInt("Settings", "English", 0);
  model_.Open(ThreeColours());
  EXPECT_EQ(model_.ListLines(Pane::kModified),
            (Lines{"1: Red,  1 st.  1.1 m.", "2: Blue,  2 st.  1.1 m.", "3: Green,  1 st.  1.1 m."}));
  // Red gathers the weight of both others: 3 x 11400.
  model_.SetEditText("1");
  EXPECT_EQ(model_.ListLines(Pane::kModified),
            (Lines{"1: Red,  1 st.  3.4 m.", "2: Red,  1 st.  3.4 m.", "3: Red,  1 st.  3.4 m."}));
  EXPECT_EQ(model_.ListLines(Pane::kOriginal)[1], "2: Blue,  2 st.  1.1 m.");
}

}  // namespace
}  // namespace fennick
