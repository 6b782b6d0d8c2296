#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "control/addin_app.h"
#include "control/addin_ctrl.h"
#include "control/host_automation.h"
#include "control/page_host.h"
#include "control/registration.h"
#include "core/embroidery_file.h"
#include "core/format_table.h"
#include "tests/test_support.h"
#include "threads/colour_conversion.h"

namespace fennick {

// Failures show a variant as its value.
void PrintTo(const Variant& value, std::ostream* out) {
  *out << (value.IsEmpty() ? "(empty)" : value.IsString() ? '"' + value.AsString() + '"' : value.AsString());
}

namespace {

using test::ScriptedUser;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Args = DispatchArguments;


std::string Sample(const std::string& name) { return std::string(FENNICK_TEST_DATA) + "/" + name; }

// A `side` unit square outline, a corner per colour; side 0 has threads and no stitch.
Design Square(int32_t side, size_t colours, const std::string& name = "square.dst") {
  std::vector<test::Node> nodes{{-side / 2, -side / 2, STITCH_JUMP}};
  for (size_t i = 0; i < colours; ++i) {
    if (i > 0) nodes.emplace_back(0, 0, STITCH_COLORSTOP);
    const int32_t step = i % 2 == 0 ? side : -side;
    nodes.insert(nodes.end(), {{step, 0, 0}, {0, step, 0}});
  }
  std::vector<uint32_t> colors{0x2020E0, 0x20E020, 0xE02020};
  colors.resize(colours);
  Design design = test::DesignOf(side != 0 ? nodes : std::vector<test::Node>{}, colors);
  design.name = name;
  design.ComputeBounds();
  return design;
}

GlobalHandle Block(Design design) { return BuildEmbroideryFile(design); }
Design Decode(GlobalHandle handle) {
  Design design;
  ParseEmbroideryFile(design, handle);
  return design;
}
GlobalHandle Word(GlobalHandle list, size_t at) {
  const std::vector<uint8_t> bytes = GlobalCopyOut(list);
  return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | GlobalHandle{bytes[at + 3]} << 24;
}

// A scratch home and a scripted user for each test; the Save As settings, which
// the PES writers read process-wide, are put back afterwards.
class AddinControl : public testing::Test {
 protected:
  ~AddinControl() override { TheApp().SetLastConversion(previous); }
  test::ScratchFolder scratch;
  ScriptedUser user;
  CFennickAddinCtrl control;
  const ConversionSettings previous = TheApp().lastConversion();
};

TEST_F(AddinControl, MethodsByIdTakeTheirHandleAndGiveOnlyTheirResult) {
  user.answer = MessageAnswer::kNo;
  struct Case {
    const char* what;
    bool host;
    int32_t side;
    size_t colours;
    int32_t id;
    Args before, after;  // the arguments around the handle
    const char* saveName;
    bool taken, returns;
  };
  const Case cases[] = {
      {"FitHoop", false, 3000, 2, 7, {1000.4F, "1000", 1}, {}, nullptr, true, true},
      {"FitHoop cx 0", false, 3000, 2, 7, {0, 1000, 1}, {}, nullptr, false, false},
      {"FitHoop no stitch", false, 0, 1, 7, {1000, 1000, 1}, {}, nullptr, true, false},
      {"Save", true, 800, 1, 10, {}, {}, nullptr, true, true},
      {"Save no host", false, 800, 1, 10, {}, {}, nullptr, false, false},
      {"Save answered No", true, 1500, 1, 10, {}, {}, nullptr, true, false},
      {"Save too large", true, 4000, 1, 10, {}, {}, nullptr, true, false},
      {"SaveAs", true, 800, 1, 11, {}, {}, "as.pes", true, true},
      {"SaveAs cancelled", true, 800, 1, 11, {}, {}, nullptr, true, false},
      {"SaveAs no host", false, 800, 1, 11, {}, {}, "as.pes", false, false},
      {"SortColorListByHue", false, 800, 3, 12, {}, {}, nullptr, true, true},
      {"SortColorListByHue of 2", false, 800, 2, 12, {}, {}, nullptr, true, false},
      {"ColorSort", false, 800, 2, 17, {}, {}, nullptr, true, true},
      {"ColorSort no stitch", false, 0, 1, 17, {}, {}, nullptr, true, false},
      {"TEReSize", true, 800, 1, 15, {}, {0, 1.5F, "1.5"}, nullptr, true, true},
      {"TEReSize no host", false, 800, 1, 15, {}, {0, 1.5F, 1.5F}, nullptr, false, false},
  };
  for (const Case& c : cases) {
    std::optional<DesignPageHost> host;
    if (c.host) host.emplace();
    user.saveName = c.saveName != nullptr ? std::optional(scratch.File(c.saveName)) : std::nullopt;
    const GlobalHandle handle = Block(Square(c.side, c.colours, scratch.File("square.dst")));
    Args arguments = c.before;
    arguments.push_back(static_cast<int32_t>(handle));
    arguments.insert(arguments.end(), c.after.begin(), c.after.end());
    const size_t before = GlobalBlockCount();
    const GlobalHandle result = control.Invoke(c.id, arguments).AsInt();
    EXPECT_EQ(result != 0, c.returns) << c.what;
    EXPECT_EQ(GlobalBlockCount(), before - (c.taken ? 1 : 0) + (c.returns ? 1 : 0)) << c.what;
    EXPECT_EQ(GlobalFree(handle), c.taken ? handle : 0) << c.what;
    EXPECT_EQ(GlobalFree(result), 0u) << c.what;
  }
}

TEST_F(AddinControl, SaveFitsThePageHoopOrAsksToUseTheFormats) {
  DesignPageHost host;
  const std::string tooLarge =
      "This design is too large for even the largest hoop for this format.\n\nPlease increase your hoop size.";
  const std::string ask =
      "This design is too large for the current hoop, but it can be saved in the current format.\n\n"
      "Would you like to continue with saving it?";
  struct Case {
    int32_t side, pageHoop;  // units, tenths of a millimetre; the DST hoop is 300 mm
    MessageAnswer answer;
    Texts lines;
    std::vector<MessageButtons> buttons;
    bool saves;
  };
  const Case cases[] = {
      {800, 1000, MessageAnswer::kNo, {}, {}, true},
      {1500, 2000, MessageAnswer::kNo, {}, {}, true},
      {1500, 1000, MessageAnswer::kYes, {ask}, {MessageButtons::kYesNo}, true},
      {1500, 1000, MessageAnswer::kNo, {ask}, {MessageButtons::kYesNo}, false},
      {4000, 1000, MessageAnswer::kYes, {tooLarge}, {MessageButtons::kOk}, false},
  };
  const std::string name = scratch.File("rose.dst");
  for (const Case& c : cases) {
    fs::remove(name);
    host.calls.clear();
    host.hoopWidth = host.hoopHeight = c.pageHoop;
    user.lines.clear();
    user.buttons.clear();
    user.answer = c.answer;
    const GlobalHandle result = control.Save(Block(Square(c.side, 1, name)));
    const std::string what = std::to_string(c.side) + " in " + std::to_string(c.pageHoop);
    EXPECT_EQ(host.calls, (Texts{"GetFormatHoop", "GetConversion", "GetHoopSize"})) << what;
    EXPECT_EQ(user.lines, c.lines) << what;
    EXPECT_EQ(user.captions, Texts(c.lines.size(), "Save Error")) << what;
    EXPECT_EQ(user.buttons, c.buttons) << what;
    EXPECT_EQ(fs::exists(name), c.saves) << what;
    EXPECT_EQ(Decode(result).name, c.saves ? name : "") << what;
    GlobalFree(result);
    user.captions.clear();
  }
}

TEST_F(AddinControl, SaveAsOffersTheWritableFormatsAndKeepsTheFolder) {
  DesignPageHost host;
  fs::create_directory(scratch.Path() / "out");
  user.saveName = scratch.File("out/copy.jef");
  const Design design = Square(800, 2, scratch.File("rose.dst"));
  const GlobalHandle result = control.SaveAs(Block(design));
  ASSERT_EQ(user.requests.size(), 1u);
  EXPECT_EQ(user.requests[0].filter,
            "DST files (*.dst)|*.dst|EXP files (*.exp)|*.exp|HUS files (*.hus)|*.hus|JEF files (*.jef)|*.jef|"
            "PES files (*.pes)|*.pes|PCS files (*.pcs)|*.pcs|SEW files (*.sew)|*.sew|VIP files (*.vip)|*.vip|"
            "XXX files (*.xxx)|*.xxx|");
  EXPECT_EQ(user.requests[0].filterIndex, 1);
  EXPECT_EQ(user.requests[0].fileTitle, "rose");
  EXPECT_EQ(user.requests[0].folder, "");
  EXPECT_EQ(host.calls, (Texts{"GetFormatHoop", "GetConversion", "GetHoopSize"}));
  EXPECT_TRUE(fs::exists(*user.saveName));
  EXPECT_EQ(TheApp().lastConversion().formatCode, kFormatJef);
  EXPECT_EQ(PreferenceStore(PreferenceTree::kProfile).GetString("Directories", "SaveAs", ""), scratch.File("out/"));
  Design mapped = design;  // the block that comes back has the chosen name and format's colours
  ConvertThreadsForFormat(mapped, "jef");
  ASSERT_NE(test::Rgbs(mapped.threads), test::Rgbs(design.threads));
  EXPECT_EQ(Decode(result).name, *user.saveName);
  EXPECT_EQ(test::Rgbs(Decode(result).threads), test::Rgbs(mapped.threads));
  GlobalFree(result);

  // A name without extension takes the host's; the dialog opens in the kept folder.
  host.calls.clear();
  host.saveExtension = "jef";
  user.saveName.reset();
  EXPECT_EQ(control.SaveAs(Block(Square(800, 1, scratch.File("plain")))), 0);
  ASSERT_EQ(user.requests.size(), 2u);
  EXPECT_EQ(host.calls, Texts{"GetSaveExtension"});
  EXPECT_EQ(user.requests[1].filterIndex, 4);
  EXPECT_EQ(user.requests[1].fileTitle, "plain");
  EXPECT_EQ(user.requests[1].folder, scratch.File("out/"));
}

TEST_F(AddinControl, ImportListsThePickedDesignsMappedOnlyToAnotherFormat) {
  EXPECT_EQ(control.FileImport(), 0);  // the browser closed
  user.picks = {Sample("geometric_objects.dst"), Sample("missing.pes"), Sample("geometric_objects.pcs")};
  // Each picked design's block, its colours mapped to `targets` (the missing file's is empty).
  const auto expectList = [&](GlobalHandle list, const Texts& targets, const std::string& what) {
    ASSERT_EQ(GlobalSize(list), 4 + 4 * user.picks.size()) << what;
    EXPECT_EQ(Word(list, 0), 3u) << what;
    for (size_t i = 0; i < user.picks.size(); ++i) {
      Design expected;
      ReadDesignFile(expected, user.picks[i]);
      ConvertThreadsForFormat(expected, targets[i]);
      EXPECT_EQ(GlobalCopyOut(Word(list, 4 + 4 * i)), EncodeEmbroideryFile(expected)) << what << " " << i;
      GlobalFree(Word(list, 4 + 4 * i));
    }
    GlobalFree(list);
  };
  expectList(control.FileImport(), {"", "", ""}, "untyped");
  EXPECT_EQ(control.FileImportTyped("jef"), 0);  // no host
  DesignPageHost host;
  struct Case {
    const char *ext, *designExtension, *importExtension;
    Texts targets;
  };
  const Case cases[] = {{"pcs", "", "", {"pcs", "", ""}},
                        {"PCS", "jef", "", {"pcs", "", ""}},
                        {".pcs", "", "", {"pcs", "", ""}},
                        {"", "jef", "pcs", {"jef", "", "jef"}},
                        {"", "", "pcs", {"pcs", "", ""}},
                        {"", "", "", {"", "", ""}}};
  for (const Case& c : cases) {
    host.designExtension = c.designExtension;
    host.importExtension = c.importExtension;
    expectList(control.FileImportTyped(c.ext), c.targets, std::string("typed ") + c.ext + c.designExtension);
  }
  for (const size_t i : {0, 2}) {  // mapping changes both samples, so the rows tell mapped from kept
    Design own, mapped;
    ReadDesignFile(own, user.picks[i]);
    mapped = own;
    ConvertThreadsForFormat(mapped, "pcs");
    EXPECT_NE(EncodeEmbroideryFile(own), EncodeEmbroideryFile(mapped)) << i;
  }
}

TEST_F(AddinControl, InvokeGivesPropertiesAndTheMethodsById) {
  EXPECT_EQ(control.Invoke(1, {}), Variant(195));
  control.SetToolBarSize(267, 41);
  EXPECT_EQ(control.Invoke(1, {500}, true), Variant());
  // Ids 0 to 18 without arguments or a host: the methods that need either give 0.
  const Args expected{{}, 267, 41, "FennickAddin", 59419, 0, 0, 0, 0, {}, 0, 0, 0, 1, {}, 0, {}, 0, {}};
  for (int32_t id = 0; id < 19; ++id) {
    if (id == 9) continue;  // a block of text
    EXPECT_EQ(control.Invoke(id, {}), expected[id]) << id;
  }
  EXPECT_EQ(user.sheets, Texts{"Fennick Preferences"});
  DesignPageHost host;
  const GlobalHandle colours = control.Invoke(8, {"jef"}).AsInt();
  EXPECT_GT(Decode(colours).threads.size(), 50u);
  GlobalFree(colours);
}

TEST_F(AddinControl, InvokeHostReachesEveryHostMethodAndWritesOutArguments) {
  DesignPageHost host;
  host.page = Square(800, 1, "page.pes");
  host.hoopWidth = 1230;
  host.hoopHeight = 4560;
  host.designExtension = "sew";
  host.importExtension = "pcs";
  host.saveExtension = "xxx";
  Args arguments;
  EXPECT_EQ(InvokeHost(host, 3, arguments), Variant(1));
  const GlobalHandle handle = arguments.at(0).AsInt();
  host.page = Design();
  EXPECT_EQ(InvokeHost(host, 4, arguments), Variant(1));  // the page takes the block
  EXPECT_EQ(host.page.name, "page.pes");
  EXPECT_EQ(GlobalSize(handle), 0u);
  struct Row {
    int32_t id;
    Args in;
    Variant result;
    Args out;
  };
  const Row rows[] = {{2, {}, {}, {}},
                      {5, {}, 1, {}},
                      {8, {}, "sew", {}},  // the new page has no name
                      {9, {}, "pcs", {}},
                      {10, {}, "xxx", {}},
                      {6, {}, {}, {1230, 4560}},
                      {7, {"jef"}, {}, {"jef", 1400, 2000}},
                      {11, {"jef"}, {}, {"jef", 1, 78, 1, 64000, 0, 1, 1, 10, 1, 4, 0}},
                      {13, {7}, {}, {7}}};
  for (const Row& row : rows) {
    arguments = row.in;
    EXPECT_EQ(InvokeHost(host, row.id, arguments), row.result) << row.id;
    EXPECT_EQ(arguments, row.out) << row.id;
  }
  arguments = {};
  InvokeHost(host, 12, arguments);
  ASSERT_EQ(arguments.size(), 9u);
  EXPECT_EQ(arguments[8], Variant(StoredResizeSettings().Sensitivity));
  EXPECT_EQ(host.calls,
            (Texts{"GetDesign", "PutDesign", "PrepareImport", "NewDesign", "GetDesignExtension", "GetImportExtension",
                   "GetSaveExtension", "GetHoopSize", "GetFormatHoop", "GetConversion", "GetResizeSettings"}));
}

TEST_F(AddinControl, TheModuleStartsEndsAndRegisters) {
  CFennickAddinApp app;
  app.busy = 3;
  EXPECT_TRUE(app.InitInstance());
  EXPECT_EQ((std::vector<int32_t>{app.protocolNumber, app.busy, app.ansiFontHeight, app.systemFontHeight}),
            (std::vector<int32_t>{10, 0, 21, 34}));
  EXPECT_EQ(app.filteredMessages.front(), 32204u);  // "QXCall"
  EXPECT_EQ(app.filteredMessages.back(), 32208u);   // "QXPlugInStop"
  scratch.Write("kept.pes", {1});
  scratch.Write("picked.dst", {1});
  app.keptDesigns = {DesignPath(scratch.File("kept.pes"))};
  app.selectedFiles = {DesignPath(scratch.File("picked.dst"))};
  InMemoryTransport transport;
  app.SetTransport(&transport);
  app.ExitInstance();
  EXPECT_FALSE(fs::exists(scratch.File("kept.pes")) || fs::exists(scratch.File("picked.dst")));
  EXPECT_EQ(transport.sent, (std::vector<InMemoryTransport::Sent>{{"QXPlugInStop", 0, 0}}));

  const char* old = std::getenv("XDG_DATA_HOME");
  const std::optional<std::string> saved = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
  setenv("XDG_DATA_HOME", scratch.File("data").c_str(), 1);
  const fs::path folder = scratch.Path() / "data/fennick/controls";
  EXPECT_EQ(RegisterControl("/opt/fennick/libfennickaddin.so"), 0);
  const std::set<std::string> files{std::string(kTypeLibraryId) + ".ini", std::string(kControlClassId) + ".ini",
                                    std::string(kPropertyPageClassId) + ".ini"};
  EXPECT_EQ(test::FolderNames(folder), Texts(files.begin(), files.end()));
  const std::vector<uint8_t> file = scratch.Read("data/fennick/controls/" + std::string(kControlClassId) + ".ini");
  const std::string text(file.begin(), file.end());
  EXPECT_NE(text.find("ProgID=FENNICKADDIN.FennickAddinCtrl.1\nTypeName=FennickAddin Control\n"), std::string::npos);
  EXPECT_NE(text.find("Library=/opt/fennick/libfennickaddin.so\n"), std::string::npos) << text;
  EXPECT_EQ(UnregisterControl(), 0);
  EXPECT_TRUE(fs::is_empty(folder));
  EXPECT_EQ(UnregisterControl(), 0);  // already gone
  scratch.Write("file", {1});         // a data folder that cannot hold folders
  setenv("XDG_DATA_HOME", scratch.File("file").c_str(), 1);
  EXPECT_EQ(RegisterControl("x"), SELFREG_E_TYPELIB);
  if (saved) {
    setenv("XDG_DATA_HOME", saved->c_str(), 1);
  } else {
    unsetenv("XDG_DATA_HOME");
  }
}

}  // namespace
}  // namespace fennick
