// The control library as a host in any language uses it: through its C header alone.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fennick/fennickaddin.h"

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
constexpr char kClassId[] = "{68F3B8D7-C90D-4681-8547-CEBB969143B4}";

// Each test has a fresh home, preference and data folder.
class AddinC : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "fennick-c-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    setenv("HOME", pattern.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    control_ = FennickCreateControl();
  }
  void TearDown() override {
    FennickDestroyControl(control_);
    FennickRevokeHost();
    FennickSetUserInterface(nullptr);
    fs::remove_all(folder_);
  }
  // The result of a method, 0 when the call itself failed.
  int32_t Call(int32_t id, std::vector<FennickVariant> arguments) {
    FennickVariant result{};
    const int32_t status =
        FennickInvoke(control_, id, arguments.data(), static_cast<int32_t>(arguments.size()), &result, 0);
    EXPECT_EQ(status, 0) << id;
    return result.i4;
  }
  fs::path folder_;
  FennickControl* control_ = nullptr;
};

FennickVariant Long(int32_t value) { return {FENNICK_VT_I4, value, 0, nullptr}; }
FennickVariant Float(float value) { return {FENNICK_VT_R4, 0, value, nullptr}; }
uint32_t Handle(int32_t value) { return static_cast<uint32_t>(value); }

std::string FileText(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_F(AddinC, TheClassIdIsCopiedAndCutToTheBuffer) {
  const std::string id = kClassId;
  for (const int length : {1, 6, 38, 39, 64}) {
    std::vector<char> buffer(static_cast<size_t>(length), 'x');
    DllGetActiveXCLSID(buffer.data(), length);
    EXPECT_EQ(std::string(buffer.data()), id.substr(0, static_cast<size_t>(length) - 1)) << length;
  }
}

TEST_F(AddinC, TheModuleMakesControlsAndRegistersItself) {
  EXPECT_EQ(DllCanUnloadNow(), 0);  // the fixture's control lives
  FennickDestroyControl(control_);
  EXPECT_NE(DllCanUnloadNow(), 0);
  FennickClassFactory factory{};
  EXPECT_EQ(DllGetClassObject("{CD21DD56-82C0-44CC-A03D-18BCEEBF6D65}", &factory), static_cast<int32_t>(0x80040111));
  ASSERT_EQ(DllGetClassObject(kClassId, &factory), 0);
  control_ = factory.CreateInstance();
  ASSERT_NE(control_, nullptr);
  EXPECT_EQ(DllCanUnloadNow(), 0);

  const fs::path entry = folder_ / "data" / "fennick" / "controls" / (std::string(kClassId) + ".ini");
  EXPECT_EQ(DllRegisterServer(), 0);
  EXPECT_NE(FileText(entry).find("fennickaddin"), std::string::npos) << "the library's own path";
  EXPECT_EQ(DllUnregisterServer(), 0);
  EXPECT_FALSE(fs::exists(entry));
}

TEST_F(AddinC, CommandsHaveTheirTextsAndNeedTheWindow) {
  char text[64];
  ASSERT_EQ(FennickCommandText(FENNICK_CMD_REDUCE_NEEDLES, 0, text, sizeof text), 1);
  EXPECT_STREQ(text, "Reduce Needles");
  ASSERT_EQ(FennickCommandText(FENNICK_CMD_REDUCE_NEEDLES, 1, text, 8), 1);
  EXPECT_STREQ(text, "Reduce ") << "the tip, cut to the buffer";
  EXPECT_EQ(FennickCommandText(32787, 0, text, sizeof text), 0);
  EXPECT_EQ(FennickCreateToolBar(control_, nullptr), nullptr) << "no QApplication runs here";
  EXPECT_EQ(FennickSendCommand(control_, FENNICK_CMD_NEW), 0);
}

TEST_F(AddinC, InvokeTakesAndGivesVariants) {
  FennickVariant result{};
  ASSERT_EQ(FennickInvoke(control_, 3, nullptr, 0, &result, 0), 0);
  ASSERT_EQ(result.type, FENNICK_VT_BSTR);
  EXPECT_STREQ(result.text, "FennickAddin");
  FennickVariantClear(&result);
  EXPECT_EQ(result.type, FENNICK_VT_EMPTY);
  EXPECT_EQ(result.text, nullptr);
  const FennickVariant wide = Long(500);
  struct Row {
    int32_t id, put, status, type, value;
  };
  const Row rows[] = {{1, 1, 0, FENNICK_VT_EMPTY, 0},
                      {1, 0, 0, FENNICK_VT_I4, 195},
                      {4, 0, 0, FENNICK_VT_I4, 59419},
                      {13, 0, 0, FENNICK_VT_I4, 1},
                      {14, 0, 0, FENNICK_VT_EMPTY, 0},
                      {0, 0, static_cast<int32_t>(0x80020003), FENNICK_VT_EMPTY, 0},
                      {18, 0, static_cast<int32_t>(0x80020003), FENNICK_VT_EMPTY, 0}};
  for (const Row& row : rows) {
    EXPECT_EQ(FennickInvoke(control_, row.id, &wide, row.put, &result, row.put), row.status) << row.id;
    EXPECT_EQ(result.type, row.type) << row.id;
    EXPECT_EQ(result.i4, row.value) << row.id;
  }
  EXPECT_EQ(FennickInvoke(nullptr, 3, nullptr, 0, &result, 0), static_cast<int32_t>(0x80004003));

  const uint32_t text = Handle(Call(9, {}));
  const std::string formats = "dst\r\nexp\r\nhus\r\njef\r\npes\r\npcs\r\nsew\r\nvip\r\nxxx\r\n";
  ASSERT_EQ(FennickGlobalSize(text), formats.size() + 1);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(FennickGlobalLock(text))), formats);
  EXPECT_EQ(FennickGlobalUnlock(text), 0);
  EXPECT_EQ(FennickGlobalFree(text), 0u);
  EXPECT_EQ(FennickGlobalFree(text), text);
  EXPECT_EQ(FennickGlobalSize(text), 0u);
  EXPECT_EQ(FennickGlobalLock(text), nullptr);
  const uint32_t block = FennickGlobalAlloc(FENNICK_GMEM_MOVEABLE | FENNICK_GMEM_ZEROINIT, 16);
  EXPECT_EQ(FennickGlobalSize(block), 16u);
  EXPECT_EQ(FennickGlobalFree(block), 0u);
}

// What the host and the user were asked, in order, and how they answer.
struct Session {
  Texts calls, picks, messages;
  std::string saveName;
  int32_t pageHoop = 3000;  // tenths of a millimetre
  int32_t answer = FENNICK_IDYES;
};
Session& Of(void* context) { return *static_cast<Session*>(context); }

FennickHostCallbacks HostOf(Session& session) {
  FennickHostCallbacks host{};
  host.context = &session;
  host.GetHoopSize = [](void* c, int32_t* width, int32_t* height) {
    Of(c).calls.push_back("GetHoopSize");
    *width = *height = Of(c).pageHoop;
  };
  host.GetFormatHoop = [](void* c, const char* extension, int32_t* width, int32_t* height) {
    Of(c).calls.push_back(std::string("GetFormatHoop ") + extension);
    *width = *height = 3000;
  };
  host.GetConversion = [](void* c, const char* extension, int32_t*) {
    Of(c).calls.push_back(std::string("GetConversion ") + extension);
  };
  host.GetResizeSettings = [](void* c, int32_t*) { Of(c).calls.push_back("GetResizeSettings"); };
  return host;
}

FennickUserInterfaceCallbacks UserOf(Session& session) {
  FennickUserInterfaceCallbacks ui{};
  ui.context = &session;
  ui.ShowMessage = [](void* c, const char* text, const char* caption, int32_t buttons) {
    Of(c).messages.push_back(std::string(caption) + " " + std::to_string(buttons) + ": " + text);
    return Of(c).answer;
  };
  ui.ChooseDesigns = [](void* c, char* buffer, int32_t) {
    for (const std::string& path : Of(c).picks) buffer = std::strcpy(buffer, path.c_str()) + path.size() + 1;
    *buffer = '\0';
    return static_cast<int32_t>(Of(c).picks.size());
  };
  ui.ChooseSaveName = [](void* c, const char* filter, int32_t index, const char* title, const char* folder,
                         char* buffer, int32_t size) {
    Of(c).calls.push_back(std::string(filter).substr(0, 24) + std::to_string(index) + " " + title + " [" + folder +
                          "]");
    std::snprintf(buffer, static_cast<size_t>(size), "%s", Of(c).saveName.c_str());
    return static_cast<int32_t>(!Of(c).saveName.empty());
  };
  return ui;
}

TEST_F(AddinC, AHostOfCallbacksDrivesImportSaveAsAndResize) {
  Session session;
  const FennickUserInterfaceCallbacks ui = UserOf(session);
  FennickSetUserInterface(&ui);
  for (const char* name : {"geometric_objects.dst", "star.pes", "geometric_objects.jef"}) {
    session.picks.push_back(std::string(FENNICK_TEST_DATA) + "/" + name);
  }
  const uint32_t list = Handle(Call(5, {}));
  ASSERT_EQ(FennickGlobalSize(list), 16u);
  int32_t words[4];
  std::memcpy(words, FennickGlobalLock(list), sizeof words);
  FennickGlobalUnlock(list);
  FennickGlobalFree(list);
  EXPECT_EQ(words[0], 3);
  for (int i = 1; i <= 3; ++i) EXPECT_GT(FennickGlobalSize(Handle(words[i])), 0u) << i;

  session.saveName = (folder_ / "copy.pes").string();
  EXPECT_EQ(Call(11, {Long(words[1])}), 0);  // no host: the block stays
  ASSERT_GT(FennickGlobalSize(Handle(words[1])), 0u);
  const FennickHostCallbacks host = HostOf(session);
  FennickRegisterHost(&host);
  const uint32_t saved = Handle(Call(11, {Long(words[1])}));
  EXPECT_NE(saved, 0u);
  EXPECT_EQ(FennickGlobalSize(Handle(words[1])), 0u);
  EXPECT_TRUE(fs::exists(session.saveName));
  EXPECT_EQ(session.calls, (Texts{"DST files (*.dst)|*.dst|1 geometric_objects []", "GetFormatHoop pes",
                                  "GetConversion pes", "GetHoopSize"}));
  EXPECT_EQ(FennickGlobalFree(saved), 0u);

  // Too large for the page's hoop: asked, and No saves nothing.
  session.pageHoop = 10;
  session.answer = FENNICK_IDNO;
  session.saveName = (folder_ / "star.pes").string();
  EXPECT_EQ(Call(11, {Long(words[2])}), 0);
  EXPECT_FALSE(fs::exists(session.saveName));
  ASSERT_EQ(session.messages.size(), 1u);
  EXPECT_EQ(session.messages[0].substr(0, 70),
            "Save Error 4: This design is too large for the current hoop, but it ca");

  session.calls.clear();
  const uint32_t resized = Handle(Call(15, {Long(words[3]), Float(0), Float(1.5F), Float(1.5F)}));
  EXPECT_GT(FennickGlobalSize(resized), 0u);
  EXPECT_EQ(FennickGlobalSize(Handle(words[3])), 0u);
  EXPECT_EQ(session.calls, Texts{"GetResizeSettings"});
  EXPECT_EQ(FennickGlobalFree(resized), 0u);
}

}  // namespace
