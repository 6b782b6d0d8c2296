#include "control/tool_bar.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "control/addin_app.h"
#include "control/page_host.h"
#include "core/preferences.h"
#include "tests/test_support.h"
#include "tools/bitmap_file.h"

namespace fennick {

// Failures show the start's fields.
void PrintTo(const ToolStart& start, std::ostream* out) {
  *out << '{' << start.verb << ", " << start.file << ", " << start.parameters << ", " << start.directory << '}';
}

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using ToolKey = std::vector<std::pair<std::string, std::string>>;
using Starts = std::vector<ToolStart>;

// A page host that can also have no design at all.
struct PageHost : DesignPageHost {
  bool GetDesign(int32_t& hDesign) override {
    if (!noDesign) return DesignPageHost::GetDesign(hDesign);
    hDesign = 0;
    return false;
  }
  bool noDesign = false;
};

// The tool key, the tool programs, the host, and a bar (four own images) that
// records what it starts.
class ToolBar : public testing::Test {
 protected:
  ToolBar() { TheApp().protocolNumber = 10; }
  ~ToolBar() override { TheApp().protocolNumber = previousNumber; }

  // A program in the tools folder, with or without its picture; its path.
  std::string Tool(const std::string& file, bool picture = true) {
    fs::create_directories(dir);
    scratch.Write("tools/" + file, test::ToBytes("#!/bin/sh\n"));
    StitchBitmap image;
    image.Create(kToolImageWidth, kToolImageHeight);
    DesignPath bmp(dir + file);
    bmp.ChangeExtension("bmp");
    if (picture) scratch.Write("tools/" + bmp.GetFileName(), BmpFileImage(image));
    return dir + file;
  }
  void WriteToolKey(const ToolKey& values) {
    std::string text = "WINE REGISTRY Version 2\n\n";
    for (const auto& [name, data] : values) text += '"' + name + "\"=\"" + data + "\"\n";
    fs::create_directories(scratch.Path() / "etc1/selvane");
    scratch.Write("etc1/selvane/FennickAddin Tools.reg", test::ToBytes(text));
  }
  // Six stitches in one colour, on the page under `name`.
  void PageDesign(const std::string& name, int32_t step = 50) {
    std::vector<test::Node> nodes{{0, 0, STITCH_JUMP}};
    for (int i = 0; i < 6; ++i) nodes.emplace_back(i % 2 == 0 ? step : -step, step / 5, 0);
    host.page = test::DesignOf(nodes, {0x2020E0});
    host.page.name = name;
  }

  test::ScratchFolder scratch;
  const std::string dir = scratch.File("tools/");
  test::Messages user;
  Starts starts;
  std::unique_ptr<ToolBarModel> bar = std::make_unique<ToolBarModel>(195, 4, [this](const ToolStart& start) {
    starts.push_back(start);
    return true;
  });
  PageHost host;
  const int32_t previousNumber = TheApp().protocolNumber;
};

// Any leading number is a kind, and only its first character goes.
TEST(ToolKind, OneCharacterGoesWhateverTheKind) {
  std::string entry = "12/t/a";
  EXPECT_EQ(TakeToolKind(entry), 12);
  EXPECT_EQ(entry, "2/t/a");
}

TEST_F(ToolBar, FindsToolsAndBuildsOneButtonPerPicture) {
  const std::string longName(180, 'x');
  WriteToolKey({{"Alpha", Tool("alpha.exe")},
                {"Brindlemoor Pockette II", Tool("pocket.exe")},
                {"Host", "1" + Tool("BRINDLEMOOR.EXE")},
                {"Broken", Tool("broken.exe", false)},
                {"Empty", ""},
                {"Beta", "1" + Tool("beta.exe")},
                {"Card", "2" + Tool("card.exe")},
                {"Long", Tool(longName + ".exe", false)}});
  bar->LoadTools();
  EXPECT_EQ(bar->toolList, (Texts{dir + "alpha.exe", dir + "broken.exe", "", "1" + dir + "beta.exe",
                                  "2" + dir + "card.exe", dir + longName + ".exe"}));
  // Neither the missing picture nor the empty entry takes a command number.
  EXPECT_EQ(bar->Buttons(), (std::vector<ToolButton>{{32787, 4, 0}, {32788, 5, 1}, {32789, 6, 2}}));
  EXPECT_EQ(bar->Images().size(), 3u);
  EXPECT_TRUE(bar->HasSeparator());
  EXPECT_EQ(bar->Width(), 195 + 16 + 3 * 36);

  // Tips follow the command's place in toolList, as the starts do.
  const std::vector<std::pair<int32_t, std::string>> tips = {
      {32787, "Launch alpha"}, {32788, "Launch broken"}, {32791, "Launch card"},
      {32792, ("Launch " + longName).substr(0, 80)}, {32793, "Launch Tool"}, {32807, ""}};
  for (const auto& [command, tip] : tips) EXPECT_EQ(bar->ToolTipText(command), tip) << command;
  EXPECT_EQ(bar->ToolTipText(32792, true), ("Launch " + longName).substr(0, 160));
}

TEST_F(ToolBar, NoButtonMeansNoSeparatorAndNoWidth) {
  const std::vector<ToolKey> keys = {{}, {{"Host", Tool("Brindlemoor.exe")}}, {{"Bare", Tool("bare", false)}}};
  for (size_t i = 0; i <= keys.size(); ++i) {
    if (i > 0) WriteToolKey(keys[i - 1]);  // the first time without any key
    ToolBarModel empty;
    empty.LoadTools();
    EXPECT_FALSE(empty.HasSeparator()) << i;
    EXPECT_TRUE(empty.Buttons().empty()) << i;
    EXPECT_EQ(empty.Width(), 195) << i;
  }
}

TEST_F(ToolBar, StartsProtocolToolsAndPlainPrograms) {
  const std::string alpha = Tool("alpha.exe"), beta = Tool("beta.exe");
  WriteToolKey({{"Alpha", alpha}, {"Broken", Tool("broken.exe", false)}, {"Beta", "1" + beta}});
  bar->LoadTools();
  PageDesign("/designs/rose.pes");
  for (const int32_t command : {32787, 32788, 32789, 32790}) bar->LaunchTool(command);  // 32788 shows beta
  EXPECT_EQ(starts, (Starts{{"Open", alpha, "10", dir},
                            {"Open", dir + "broken.exe", "10", dir},
                            {"Open", beta, "", ""}}));
  EXPECT_EQ(host.calls, (Texts{"GetDesign", "GetDesignExtension", "GetDesign", "GetDesignExtension",
                              "GetDesignExtension"}));

  // Only the protocol tool needs a design.
  starts.clear();
  host.page = test::DesignOf({}, {0x2020E0});
  bar->LaunchTool(32787);
  bar->LaunchTool(32789);
  host.noDesign = true;
  bar->LaunchTool(32787);
  EXPECT_EQ(user.lines,
            (Texts{"The design in the current window has no stitches.", "The current design page is empty."}));
  EXPECT_EQ(user.captions, (Texts{"No Stitches in Design", "No Design"}));
  EXPECT_EQ(starts, (Starts{{"Open", beta, "", ""}}));
}

TEST_F(ToolBar, CardToolGetsTheSavedFilesAndTheyGoWithTheBar) {
  const std::string card = Tool("card.exe");
  WriteToolKey({{"Card", "2" + Tool("pockette.exe")}});
  PreferenceStore().SetInt("Conversion", "dstss", 1);  // split after four stitches
  PreferenceStore().SetInt("Conversion", "dstns", 4);
  PageDesign("/designs/rose.dst");
  bar->LoadTools();
  bar->LaunchTool(32787);  // no card tool under the user's key
  EXPECT_TRUE(starts.empty());

  PreferenceStore(PreferenceTree::kUserTools).SetString("", "Brindlemoor Pockette II", "2" + card);
  bar->LaunchTool(32787);
  EXPECT_EQ(starts, (Starts{{"Open", card, "filelist.tmp", dir}}));
  EXPECT_EQ(scratch.Read("tools/filelist.tmp"), test::ToBytes("rose.dst\nrose 2.dst\n"));
  ASSERT_EQ(bar->toolTempFiles.size(), 2u);
  EXPECT_EQ(bar->toolTempFiles[1].FullName(), dir + "rose 2.dst");

  // Too large for any hoop of the format: told, nothing more written or started.
  PageDesign("/designs/big.dst", 5000);
  bar->LaunchTool(32787);
  EXPECT_EQ(user.captions, Texts{"Save Error"});
  EXPECT_EQ(starts.size(), 1u);
  EXPECT_FALSE(fs::exists(dir + "big.dst"));

  ASSERT_TRUE(fs::exists(dir + "rose.dst") && fs::exists(dir + "rose 2.dst"));
  bar.reset();
  EXPECT_FALSE(fs::exists(dir + "rose.dst") || fs::exists(dir + "rose 2.dst"));
  EXPECT_TRUE(fs::exists(dir + "filelist.tmp"));
}

}  // namespace
}  // namespace fennick
