#include "control/preference_pages.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <tuple>

#include "resize/resize_engine.h"
#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

std::string FileText(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

class PreferencePagesTest : public testing::Test {
 protected:
  PreferencePagesTest() { sheet.Initialise(); }
  test::ScratchFolder folder;
  PreferenceSheet sheet;
};

// Each edit's text after one change: kept, or replaced where its value is out of bounds.
TEST_F(PreferencePagesTest, EditsAreCorrectedAtEachChange) {
  SPropColorSort& colorSort = sheet.colorSort;
  SPropBaste& baste = sheet.baste;
  SPropBMP& bitmap = sheet.bitmap;
  SPropConversion& conversion = sheet.conversion;
  struct Case {
    const char* edit;
    std::function<std::string(const std::string&)> change;
    std::vector<std::pair<std::string, std::string>> typedShown;
  };
  const auto inConversion = [&](int32_t id) {
    return [&conversion, id](const std::string& text) { return conversion.OnEditChange(id, text); };
  };
  const std::vector<Case> cases = {
      {"colour overlap", [&](const std::string& t) { return colorSort.OnThresholdChange(t); },
       {{"-1", "0"}, {"101", "100"}, {"100", "100"}, {"", ""}, {"7", "7"}}},
      // An empty edit reads as 0, below the length's 1; text in range stays as typed.
      {"baste length", [&](const std::string& t) { return baste.OnLengthChange(t); },
       {{"101", "100"}, {"0", "1"}, {"", "1"}, {"-4", "1"}, {"99999999999", "100"}, {"12mm", "12mm"}}},
      // The replacements are not the bounds.
      {"bitmap size", [&](const std::string& t) { return bitmap.OnSizeChange(t); },
       {{"-1", "150"}, {"10000", "2000"}, {"9999", "9999"}, {"", ""}, {"5", "5"}}},
      {"hoop width", inConversion(1033), {{"1001", "1000"}, {"-1", "0"}, {"1000", "1000"}}},
      {"hoop height", inConversion(1034), {{"1001", "1000"}, {"0", "0"}}},
      {"colour limit", inConversion(1035), {{"101", "100"}, {"100", "100"}}},
      {"stitch limit", inConversion(1036), {{"1000001", "1000000"}, {"1000000", "1000000"}}},
      {"shrink percent", inConversion(1041), {{"101", "100"}, {"-5", "0"}}},
  };
  for (const Case& c : cases) {
    for (const auto& [typed, shown] : c.typedShown) EXPECT_EQ(c.change(typed), shown) << c.edit << " typed " << typed;
  }
  EXPECT_TRUE(colorSort.Modified() && baste.Modified() && bitmap.Modified() && conversion.Modified());
}

TEST_F(PreferencePagesTest, EmptyStoreShowsThePagesDefaults) {
  EXPECT_EQ(sheet.colorSort.Threshold(), "5");
  EXPECT_TRUE(sheet.baste.Combine() && sheet.baste.Cross());
  EXPECT_EQ(sheet.baste.Length(), "6");
  EXPECT_EQ(sheet.baste.EdgeReadout(), "1 mm");
  EXPECT_EQ(sheet.conversion.Selection(), 0);
  EXPECT_TRUE(sheet.conversion.Checked(1094) && sheet.conversion.Checked(1095));
  // The page's row, not the built-in one a conversion starts from.
  const ConversionSettings hus = sheet.conversion.Set(3);
  EXPECT_EQ(hus.splitColors, 0);
  EXPECT_EQ(hus.colorLimit, 36);
  EXPECT_EQ(BuiltInConversion(kFormatHus).splitColors, 1);
  EXPECT_EQ(sheet.tessimo.Readout(1042), "0.3 mm");
  EXPECT_EQ(sheet.tessimo.Readout(1010), "6.0 mm");
  EXPECT_EQ(sheet.tessimo.Position(1016), 11);
  EXPECT_EQ(sheet.tessimo.MaxSmall(), 4);
  EXPECT_FALSE(sheet.AnyModified());
  EXPECT_FALSE(fs::exists(folder.Path() / "config")) << "loading wrote the store";

  SPropBMP& bitmap = sheet.bitmap;
  bitmap.Initialise();
  EXPECT_EQ(bitmap.Size(), "400");
  EXPECT_TRUE(bitmap.Make3D());
  EXPECT_FALSE(bitmap.Outline());
}

TEST_F(PreferencePagesTest, UseDefaultButtonsMarkTheirPage) {
  sheet.baste.OnLengthChange("40");
  sheet.baste.OnEdgeMoved(9);
  sheet.baste.SetCross(false);
  sheet.baste.Apply();
  sheet.baste.UseDefault();
  EXPECT_TRUE(sheet.baste.Modified());
  EXPECT_EQ(sheet.baste.Length(), "6");
  EXPECT_EQ(sheet.baste.Edge(), 1);
  EXPECT_TRUE(sheet.baste.Cross());

  sheet.bitmap.SetOutline(true);
  sheet.bitmap.SetMake3D(false);
  sheet.bitmap.OnSizeChange("900");
  sheet.bitmap.UseDefault();
  EXPECT_EQ(sheet.bitmap.Size(), "400");
  EXPECT_TRUE(sheet.bitmap.Make3D());
  EXPECT_TRUE(sheet.bitmap.Outline()) << "the outline keeps its state";

  sheet.tessimo.OnSliderMoved(1031, 50);
  EXPECT_EQ(sheet.tessimo.Position(1031), 10) << "a slider holds its range";
  sheet.tessimo.OnCheck(1033, false);
  sheet.tessimo.OnMaxSmallChange(6);
  sheet.tessimo.UseDefaultSettings();
  EXPECT_EQ(sheet.tessimo.Position(1031), 3);
  EXPECT_TRUE(sheet.tessimo.Checked(1033));
  EXPECT_EQ(sheet.tessimo.MaxSmall(), 4);
  EXPECT_TRUE(sheet.tessimo.Modified());

  // For PES the two PES choices come back on; for another format they stay.
  SPropConversion& conversion = sheet.conversion;
  conversion.OnCheck(1094, false);
  conversion.Select(5);
  conversion.OnEditChange(1033, "10");
  conversion.UseDefault();
  EXPECT_EQ(conversion.Text(1033), "300");
  EXPECT_EQ(conversion.Set(5).pes5, 0);
  conversion.Select(0);
  conversion.UseDefault();
  EXPECT_TRUE(conversion.Checked(1094));
}

TEST_F(PreferencePagesTest, ConversionControlsFollowTheirChecks) {
  SPropConversion& conversion = sheet.conversion;
  conversion.Select(1);  // SEW: both orientations off, rotate on
  EXPECT_TRUE(conversion.Enabled(1040));
  conversion.OnCheck(1042, true);
  EXPECT_FALSE(conversion.Checked(1040));
  EXPECT_FALSE(conversion.Enabled(1040));
  conversion.OnCheck(1042, false);
  EXPECT_TRUE(conversion.Checked(1040));
  EXPECT_TRUE(conversion.Enabled(1040));

  for (const auto& [check, edit] : {std::pair{1037, 1035}, {1038, 1036}, {1027, 1041}}) {
    conversion.OnCheck(check, false);
    EXPECT_FALSE(conversion.Enabled(edit)) << edit;
    conversion.OnCheck(check, true);
    EXPECT_TRUE(conversion.Enabled(edit)) << edit;
  }
  EXPECT_FALSE(conversion.Visible(1094) || conversion.Visible(1095));
  conversion.Select(0);
  EXPECT_TRUE(conversion.Visible(1094) && conversion.Visible(1095));
}

// Stored values show on the page; edits of formats not showing wait for Apply.
TEST_F(PreferencePagesTest, SwitchingFormatsKeepsEveryEditUntilApply) {
  const PreferenceStore store;
  store.SetInt("Conversion", "hussc", 1);
  store.SetInt("Conversion", "selection", 9);  // no such radio
  SPropConversion& conversion = sheet.conversion;
  conversion.Initialise();
  EXPECT_EQ(conversion.Selection(), 0);
  EXPECT_EQ(conversion.Set(3).splitColors, 1);

  conversion.Select(1);
  conversion.OnEditChange(1033, "200");
  conversion.Select(5);
  conversion.OnCheck(1037, true);
  conversion.OnEditChange(1035, "7");
  conversion.Select(0);
  conversion.OnCheck(1094, false);
  conversion.Select(1);
  EXPECT_EQ(conversion.Text(1033), "200");
  EXPECT_EQ(store.GetInt("Conversion", "sewh", -1), -1) << "written before Apply";

  conversion.Apply();
  ConversionSettings sew, dst, pes;
  ReadConversion("sew", sew);
  ReadConversion("dst", dst);
  ReadConversion("pes", pes);
  EXPECT_EQ(sew.hoopWidth, 200);
  EXPECT_EQ(dst.splitColors, 1);
  EXPECT_EQ(dst.colorLimit, 7);
  EXPECT_EQ(pes.pes5, 0);
  EXPECT_EQ(sew.pes5, 0) << "one value for all formats";
  EXPECT_EQ(store.GetInt("Conversion", "selection", -1), 1);
}

// From an empty store, Apply writes the page's defaults of all nine formats.
TEST_F(PreferencePagesTest, ApplyWritesEveryValueOfAllNineFormats) {
  sheet.conversion.Select(8);
  sheet.conversion.Apply();
  // w h sc nc ss ns r sh shpct both
  const std::vector<std::pair<std::string, std::vector<int32_t>>> rows = {
      {"pes", {300, 200, 1, 99, 0, 0, 1, 1, 10, 1}},     {"sew", {126, 90, 1, 12, 1, 60000, 1, 1, 10, 0}},
      {"jef", {140, 200, 1, 78, 1, 64000, 1, 1, 10, 0}}, {"hus", {150, 240, 0, 36, 0, 0, 1, 1, 10, 1}},
      {"pcs", {110, 112, 1, 16, 1, 28000, 1, 1, 10, 0}}, {"dst", {300, 300, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"xxx", {140, 240, 1, 15, 1, 30000, 1, 1, 10, 0}}, {"exp", {300, 300, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"vip", {150, 360, 0, 60, 0, 0, 0, 1, 10, 1}},
  };
  for (const auto& [extension, expected] : rows) {
    ConversionSettings record;
    ReadConversion(extension, record);
    const std::vector<int32_t> read = {record.hoopWidth, record.hoopHeight, record.splitColors, record.colorLimit,
                                       record.splitStitches, record.stitchLimit, record.rotate, record.shrink,
                                       record.shrinkPercent, record.bothOrientations};
    EXPECT_EQ(read, expected) << extension;
    EXPECT_EQ(record.pes5, 1) << extension;
    EXPECT_EQ(record.ensureTrims, 1) << extension;
  }
  EXPECT_EQ(PreferenceStore().Values("Conversion").size(), 1u + 9 * 10 + 2);
  EXPECT_EQ(PreferenceStore().GetInt("Conversion", "selection", -1), 8);
}

TEST_F(PreferencePagesTest, TessimoApplyWritesTheThirteenValues) {
  SPropTessimo& tessimo = sheet.tessimo;
  tessimo.OnSliderMoved(1010, 250);
  EXPECT_EQ(tessimo.Readout(1010), "25.0 mm");
  tessimo.OnSliderMoved(1016, 6);
  tessimo.OnCheck(1026, false);
  tessimo.OnCheck(1059, false);
  EXPECT_TRUE(tessimo.Modified());
  tessimo.Apply();
  EXPECT_FALSE(tessimo.Modified());

  std::map<std::string, uint32_t> stored;
  for (const PreferenceValue& value : PreferenceStore(PreferenceTree::kResize).Values("")) stored[value.name] = value.number;
  const std::map<std::string, uint32_t> expected = {
      {"MinNonFill", 3},   {"ApplyMinNone", 1}, {"MinFill", 3},      {"ApplyMinFill", 0}, {"MinSatin", 3},
      {"ApplyMinSatin", 1}, {"Sensitivity", 6}, {"MaxSL", 250},      {"ApplyMax", 1},     {"MaxSatinSL", 60},
      {"ApplyMaxSL", 1},   {"TieOff", 0},       {"MaxSmall", 4},
  };
  EXPECT_EQ(stored, expected);
  EXPECT_EQ(StoredResizeSettings().Sensitivity, 0) << "the engine takes the slider less 6";
}

TEST_F(PreferencePagesTest, SmallPagesWriteWhatTheyShow) {
  sheet.colorSort.OnThresholdChange("42");
  sheet.baste.OnLengthChange("25");
  sheet.baste.OnEdgeMoved(0);
  sheet.baste.SetCombine(false);
  sheet.Apply();
  EXPECT_FALSE(sheet.AnyModified());
  EXPECT_EQ(GetColorSortThreshold(), 42);
  const BasteSettings baste = GetBaste();
  EXPECT_EQ(std::tuple(baste.combine, baste.length, baste.cross, baste.edge), std::tuple(0, 25, 1, 0));
  EXPECT_EQ(PreferenceStore().GetInt("Settings", "BMP Size", -1), -1) << "the sheet applied the page it does not show";

  // The size is forced into 32 to 1024 on apply; an empty edit reads as 0.
  for (const auto& [typed, written] : {std::pair{"", 32}, {"31", 32}, {"2000", 1024}, {"1024", 1024}, {"500", 500}}) {
    sheet.bitmap.OnSizeChange(typed);
    sheet.bitmap.Apply();
    EXPECT_EQ(GetBitmapSettings().size, written) << "typed " << typed;
    EXPECT_EQ(sheet.bitmap.Size(), std::to_string(written));
  }
}

TEST_F(PreferencePagesTest, CancelPutsTheLoadedValuesBackAndWritesNothing) {
  PreferenceStore().SetInt("Settings", "Baste length", 9);
  PreferenceStore(PreferenceTree::kResize).SetInt("", "MaxSL", 80);
  sheet.Initialise();
  const fs::path main = PreferenceStore().FilePath(), resize = PreferenceStore(PreferenceTree::kResize).FilePath();
  const std::string mainBefore = FileText(main), resizeBefore = FileText(resize);

  sheet.colorSort.OnThresholdChange("60");
  sheet.baste.OnLengthChange("30");
  sheet.conversion.Select(2);
  sheet.conversion.OnEditChange(1034, "10");
  sheet.tessimo.OnSliderMoved(1010, 30);
  sheet.Cancel();

  EXPECT_EQ(FileText(main), mainBefore);
  EXPECT_EQ(FileText(resize), resizeBefore);
  EXPECT_FALSE(sheet.AnyModified());
  EXPECT_EQ(sheet.colorSort.Threshold(), "5");
  EXPECT_EQ(sheet.baste.Length(), "9");
  EXPECT_EQ(sheet.conversion.Selection(), 0);
  EXPECT_EQ(sheet.conversion.Set(2).hoopHeight, 200);
  EXPECT_EQ(sheet.tessimo.Position(1010), 80);
}

}  // namespace
}  // namespace fennick
