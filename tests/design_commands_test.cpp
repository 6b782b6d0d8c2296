#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "control/addin_app.h"
#include "control/design_commands.h"
#include "control/page_host.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "tests/test_support.h"
#include "tools/reduce_needles.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using test::ScriptedUser;

std::string Sample(const std::string& name) { return std::string(FENNICK_TEST_DATA) + "/" + name; }

Design ReadSampleFile(const std::string& name) {
  Design design;
  ReadDesignFile(design, Sample(name), LastFile::kLeave);
  return design;
}

class DesignCommandsTest : public testing::Test {
 protected:
  void TearDown() override { TheApp().keptDesigns.clear(); }
  test::ScratchFolder scratch;
  ScriptedUser user;
};

TEST_F(DesignCommandsTest, WithoutHostOrDesignNothingHappensAndNothingShows) {
  const std::vector<int32_t> fetching = {kCommandSave, kCommandAutoBaste, kCommandColorSort, kCommandNotes,
                                         kCommandBitmap, kCommandReduceNeedles, kCommandFitHoop};
  user.needles = 1;
  for (const int32_t id : fetching) EXPECT_TRUE(RunDesignCommand(id));
  EXPECT_TRUE(RunDesignCommand(kCommandNew));  // no host: nothing to ask
  {
    DesignPageHost host;
    for (const int32_t id : fetching) {
      host.calls.clear();
      RunDesignCommand(id);
      EXPECT_EQ(host.calls, Texts{"GetDesign"}) << id;
    }
  }
  EXPECT_TRUE(user.lines.empty());
  EXPECT_TRUE(user.requests.empty());
  EXPECT_TRUE(user.opened.empty());
  EXPECT_TRUE(TheApp().keptDesigns.empty());
  EXPECT_FALSE(RunDesignCommand(32787));  // a tool button's, not a design command
}

TEST_F(DesignCommandsTest, ToolsWorkOnThePageAndGiveItBack) {
  DesignPageHost host;
  host.page = ReadSampleFile("geometric_objects.pes");
  const size_t stitches = host.page.stitches.Size();
  const size_t threads = host.page.threads.size();
  ASSERT_GT(CountDistinctColors(host.page), 3);

  RunDesignCommand(kCommandAutoBaste);
  EXPECT_GT(host.page.stitches.Size(), stitches);  // the baste runs round the copy
  EXPECT_EQ(host.calls, (Texts{"GetDesign", "GetDesignExtension", "PutDesign"}));

  host.page = ReadSampleFile("geometric_objects.pes");
  RunDesignCommand(kCommandColorSort);
  EXPECT_FALSE(host.page.stitches.Empty());
  EXPECT_LE(host.page.threads.size(), threads);

  // Reduce Needles: the dialog's OK gives the page two needles and every stop.
  host.page = ReadSampleFile("geometric_objects.pes");
  host.calls.clear();
  RunDesignCommand(kCommandReduceNeedles);  // Cancel: the page stays
  EXPECT_EQ(host.calls, (Texts{"GetDesign", "GetDesignExtension"}));
  user.needles = 2;
  RunDesignCommand(kCommandReduceNeedles);
  EXPECT_EQ(CountDistinctColors(host.page), 2);
  EXPECT_EQ(host.page.threads.size(), threads);
}

TEST_F(DesignCommandsTest, FitHoopUsesThePageHoopElseTheFormatsStoredOne) {
  DesignPageHost host;
  const auto fitted = [&](int32_t width, int32_t height) {
    host.page = ReadSampleFile("geometric_objects.pes");
    host.hoopWidth = width;
    host.hoopHeight = height;
    RunDesignCommand(kCommandFitHoop);
    return std::pair(host.page.maxX - host.page.minX, host.page.maxY - host.page.minY);
  };
  const Design original = ReadSampleFile("geometric_objects.pes");
  const double aspect = double(original.maxX - original.minX) / (original.maxY - original.minY);

  auto [width, height] = fitted(400, 300);  // tenths of a millimetre
  EXPECT_LE(width, 400);
  EXPECT_LE(height, 300);
  EXPECT_NEAR(double(width) / height, aspect, 0.05);

  PreferenceStore().SetInt("Conversion", "pesw", 25);
  PreferenceStore().SetInt("Conversion", "pesh", 60);
  std::tie(width, height) = fitted(0, 3000);
  EXPECT_LE(width, 250);
  EXPECT_GT(width, 200);
}

TEST_F(DesignCommandsTest, NotesAndBitmapGoToTheWorkspaceElseBesideTheDesign) {
  DesignPageHost host;
  host.page = ReadSampleFile("geometric_objects.pes");
  host.page.name.clear();
  const std::string workspace = scratch.File("temps");
  PreferenceStore().SetString("Workspace", "directory", workspace);
  fs::create_directory(workspace);

  RunDesignCommand(kCommandNotes);
  RunDesignCommand(kCommandBitmap);
  const Texts inWorkspace = {workspace + "/Untitled.Txt", workspace + "/Untitled.bmp"};
  EXPECT_EQ(user.opened, inWorkspace);
  ASSERT_EQ(TheApp().keptDesigns.size(), 2u);
  EXPECT_EQ(TheApp().keptDesigns[1].FullName(), inWorkspace[1]);
  EXPECT_EQ(scratch.Read("temps/Untitled.bmp").at(0), 'B');
  const std::vector<uint8_t> notes = scratch.Read("temps/Untitled.Txt");
  EXPECT_NE(std::string(notes.begin(), notes.end()).find("\r\n"), std::string::npos);

  // A workspace that is no folder: the design's own folder, and the file is no temporary.
  fs::remove_all(workspace);
  fs::create_directory(scratch.File("designs"));
  host.page.name = scratch.File("designs/rose.pes");
  RunDesignCommand(kCommandNotes);
  EXPECT_EQ(user.opened.back(), scratch.File("designs/rose.Txt"));
  EXPECT_EQ(TheApp().keptDesigns.size(), 2u);
}

TEST_F(DesignCommandsTest, SaveShowsTheSaveDialogAndWritesNothing) {
  DesignPageHost host;
  host.page = ReadSampleFile("geometric_objects.jef");
  host.page.name = scratch.File("rose.jef");
  user.saveName = scratch.File("chosen.jef");
  RunDesignCommand(kCommandSave);
  ASSERT_EQ(user.requests.size(), 1u);
  EXPECT_EQ(user.requests[0].fileTitle, "rose");
  EXPECT_NE(user.requests[0].filter.find("JEF files (*.jef)|*.jef|"), std::string::npos);
  EXPECT_FALSE(fs::exists(scratch.File("chosen.jef")));
  EXPECT_FALSE(fs::exists(scratch.File("rose.jef")));
}

TEST_F(DesignCommandsTest, OpenNewAndPreferencesReachTheHostAndTheSheet) {
  DesignPageHost host;
  user.picks = {Sample("geometric_objects.dst"), Sample("missing.pes")};
  RunDesignCommand(kCommandOpen);
  EXPECT_EQ(host.calls, (Texts{"PrepareImport", "PutDesign"}));  // the unreadable one passed over
  EXPECT_GT(host.page.stitches.Size(), 0u);
  RunDesignCommand(kCommandNew);
  EXPECT_TRUE(host.page.stitches.Empty());
  RunDesignCommand(kCommandPreferences);
  EXPECT_EQ(user.sheets, Texts{"Fennick Properties"});
}

TEST(DesignCommandTexts, TipsAreTheTextAfterTheLineFeed) {
  ASSERT_EQ(DesignCommands().size(), 10u);
  std::set<int32_t> ids;
  for (const DesignCommand& command : DesignCommands()) ids.insert(command.id);
  EXPECT_EQ(ids.size(), 10u);
  EXPECT_EQ(TipText(FindDesignCommand(kCommandOpen)->resource), " Open design");
  EXPECT_EQ(StatusText(FindDesignCommand(kCommandBitmap)->resource), "Save the design preview as a bitmap.");
  EXPECT_EQ(TipText(FindDesignCommand(kCommandFitHoop)->resource), "Fit Hoop");
  EXPECT_EQ(FindDesignCommand(32787), nullptr);
}

}  // namespace
}  // namespace fennick
