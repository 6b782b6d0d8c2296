#include "core/preferences.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>

#include "tests/test_support.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class PreferencesTest : public ::testing::Test {
 protected:
  fs::path MainFile() const { return root_ / "config" / "selvane" / "Brindlemoor.reg"; }

  static void WriteFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
  }
  static std::string ReadFile(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  test::ScratchFolder folder_;
  const fs::path root_ = folder_.Path();
};

constexpr const char* kHeader =
    "WINE REGISTRY Version 2\n;; All keys relative to HKEY_CURRENT_USER\\Software\\Selvane\\Brindlemoor\n\n";

// Each reader against its stored name: the default first, then a stored value.
TEST_F(PreferencesTest, ReadersUseTheirDefaultsAndStoredNames) {
  struct Case {
    const char* section;
    const char* name;
    int32_t expectedDefault;
    std::function<int64_t()> read;
  };
  const std::vector<Case> cases = {
      {"Settings", "Baste combine", 1, [] { return GetBaste().combine; }},
      {"Settings", "Baste length", 6, [] { return GetBaste().length; }},
      {"Settings", "Baste cross", 1, [] { return GetBaste().cross; }},
      {"Settings", "Baste edge", 1, [] { return GetBaste().edge; }},
      {"Settings", "BMP Size", 400, [] { return GetBitmapSettings().size; }},
      {"Settings", "Make 3D", 1, [] { return GetBitmapSettings().make3D; }},
      {"Settings", "Outline", 0, [] { return GetBitmapSettings().outline; }},
      {"Settings", "Color Sort Threshold", 5, [] { return GetColorSortThreshold(); }},
      {"Settings", "English", 1, [] { return GetEnglish(); }},
      {"BkgColors", "selectedColorRGB", 0xFFFFFF, [] { return GetBackgroundColor(); }},
  };
  for (const Case& c : cases) EXPECT_EQ(c.read(), c.expectedDefault) << c.name;
  EXPECT_FALSE(fs::exists(root_ / "config")) << "a read created the store";

  const PreferenceStore store;
  // Distinct values, so that a reader taking its neighbour's name shows.
  for (size_t i = 0; i < cases.size(); ++i) {
    store.SetInt(cases[i].section, cases[i].name, static_cast<int32_t>(100 + i));
  }
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(cases[i].read(), static_cast<int64_t>(100 + i)) << cases[i].name;
  }

  fs::remove_all(root_ / "config");
  for (const Case& c : cases) EXPECT_EQ(c.read(), c.expectedDefault) << c.name << " after removal";
}

TEST_F(PreferencesTest, ValuesRoundTrip) {
  const PreferenceStore store;
  for (const int32_t value : {-1, 0, 0xFFFFFF, INT32_MIN, INT32_MAX}) {
    store.SetInt("Settings", "n", value);
    EXPECT_EQ(store.GetInt("Settings", "n", 42), value);
  }
  const std::string nonAscii = "Gr\xC3\xBC\xC3\x9F" "e \xFF";
  const std::string longest(254, 'x');
  for (const std::string& text :
       {""s, "say \"hi\" \\there\\"s, "a\nb\r\n"s, nonAscii, "ends in \\"s, longest}) {
    store.SetString("", "s", text);
    EXPECT_EQ(store.GetString("", "s", "default"), text);
  }
  // 255 bytes and the final zero do not fit the reader's buffer.
  store.SetString("", "s", std::string(255, 'x'));
  EXPECT_EQ(store.GetString("", "s", "default"), "default");
  // A value of the other type is no value for the reader.
  EXPECT_EQ(store.GetInt("", "s", 5), 5);
  EXPECT_EQ(store.GetString("Settings", "n", "d"), "d");
}

TEST_F(PreferencesTest, NamesIgnoreCaseAndKeepTheirStoredSpelling) {
  const PreferenceStore store;
  store.SetInt("Settings", "BMP Size", 9);
  EXPECT_EQ(GetBitmapSettings().size, 9);
  store.SetInt("SETTINGS", "BMP SIZE", 10);
  const auto values = store.Values("settings");
  ASSERT_EQ(values.size(), 1u);
  EXPECT_EQ(values[0].name, "BMP Size");
  EXPECT_TRUE(values[0].isNumber);
  EXPECT_EQ(values[0].number, 10u);
}

TEST_F(PreferencesTest, EachTreeWritesTheExportFormatToItsOwnFile) {
  PreferenceStore(PreferenceTree::kResize).SetInt("", "Sensitivity", 12);
  EXPECT_EQ(ReadFile(root_ / "config" / "selvane" / "QXTessimo.reg"),
            "WINE REGISTRY Version 2\n"
            ";; All keys relative to HKEY_CURRENT_USER\\Software\\Selvane\\QXTessimo\n\n"
            "\"Sensitivity\"=dword:0000000c\n\n");
  PreferenceStore(PreferenceTree::kProfile).SetString("Directories", "SaveAs", "/home/x");
  EXPECT_TRUE(fs::exists(root_ / "config" / "selvane" / "FennickAddin.reg"));
  EXPECT_FALSE(fs::exists(MainFile()));

  const PreferenceStore store;
  store.SetString("Settings", "Tools otf", "a\"b\\c");
  store.SetInt("Settings", "BMP Size", 255);
  store.SetInt("", "Top", -2);
  store.SetInt("Conversion", "pesw", 10);
  EXPECT_EQ(ReadFile(MainFile()), std::string(kHeader) +
                                      "\"Top\"=dword:fffffffe\n\n"
                                      "[Settings]\n"
                                      "\"Tools otf\"=\"a\\\"b\\\\c\"\n"
                                      "\"BMP Size\"=dword:000000ff\n\n"
                                      "[Conversion]\n"
                                      "\"pesw\"=dword:0000000a\n\n");
}

TEST_F(PreferencesTest, RewriteKeepsOrderAndLinesItDoesNotKnow) {
  WriteFile(MainFile(), std::string(kHeader) +
                            "[Settings]\r\n"
                            "\"b\"=dword:00000001\n"
                            "\"blob\"=hex:01,\\\n"
                            "  02,\\\n"
                            "  03\n"
                            "; a comment\n"
                            "\"A\"=\"x\"\n\n"
                            "[Other] 1700000000\n"
                            "\"q\"=hex(2):41,00\n");
  const PreferenceStore store;
  store.SetInt("Settings", "b", 2);
  store.SetInt("Settings", "new", 3);
  store.SetString("Third", "a", "y");
  EXPECT_EQ(ReadFile(MainFile()), std::string(kHeader) +
                                      "[Settings]\n"
                                      "\"b\"=dword:00000002\n"
                                      "\"blob\"=hex:01,\\\n"
                                      "  02,\\\n"
                                      "  03\n"
                                      "\"A\"=\"x\"\n"
                                      "\"new\"=dword:00000003\n\n"
                                      "[Other]\n"
                                      "\"q\"=hex(2):41,00\n\n"
                                      "[Third]\n"
                                      "\"a\"=\"y\"\n\n");
  EXPECT_EQ(store.GetInt("Settings", "blob", -1), -1);
  ASSERT_EQ(store.Values("Settings").size(), 3u) << "the hex value is not listed";
  EXPECT_EQ(store.Values("Settings")[1].name, "A");
}

TEST_F(PreferencesTest, DamagedFilesGiveDefaults) {
  const std::string good = std::string(kHeader) + "[Settings]\n\"Make 3D\"=dword:00000003\n";
  const std::vector<std::string> tails = {
      "\"BMP Size\"=dword:0000",  "\"BMP Size\"=dword:zz", "\"BMP Size\"=dword:123456789",
      "\"BMP Size\"=\"7",        "\"BMP Size\"=\"7\"junk", "\"BMP Si",
      "\"BMP Size\"",            "[Settings",               "\0\xFF\"\n[\n]\n@\n\"\"=\n\\"s,
  };
  for (size_t i = 0; i < tails.size(); ++i) {
    WriteFile(MainFile(), good + tails[i]);
    EXPECT_EQ(GetBitmapSettings().make3D, 3) << i;
    EXPECT_EQ(GetBitmapSettings().size, 400) << i;
  }
  // Every cut of a stored file gives the stored value or the default, never a
  // third value; garbage gives defaults and is rewritten on the next write.
  const PreferenceStore store;
  store.SetInt("Settings", "Baste edge", 0x3a);
  store.SetString("Settings", "Workspace", "/home/designs/");
  const std::string whole = ReadFile(MainFile());
  for (size_t length = 0; length <= whole.size(); ++length) {
    WriteFile(MainFile(), whole.substr(0, length));
    const int32_t edge = store.GetInt("Settings", "Baste edge", -1);
    EXPECT_TRUE(edge == 0x3a || edge == -1) << "cut at " << length << " gave " << edge;
    const std::string workspace = store.GetString("Settings", "Workspace", "none");
    EXPECT_TRUE(workspace == "/home/designs/" || workspace == "none") << "cut at " << length;
  }
  std::string garbage(4096, 0);
  for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i * 131 + (i >> 8));
  WriteFile(MainFile(), garbage);
  EXPECT_EQ(store.GetInt("Settings", "Baste edge", -1), -1);
  store.SetInt("Settings", "Baste edge", 5);
  EXPECT_EQ(store.GetInt("Settings", "Baste edge", -1), 5);
  WriteFile(MainFile(), "");
  EXPECT_EQ(GetBitmapSettings().make3D, 1);
  fs::remove(MainFile());
  fs::create_directory(MainFile());
  EXPECT_EQ(GetBitmapSettings().make3D, 1);
  PreferenceStore().SetInt("Settings", "Baste edge", 4);  // must not throw or replace the folder
  EXPECT_TRUE(fs::is_directory(MainFile()));
}

TEST_F(PreferencesTest, ReadConversionOverlaysStoredValuesOnTheBuiltInRow) {
  ConversionSettings record;
  const std::vector<std::string> extensions = {"pes", "sew", "jef", "hus", "pcs", "dst", "xxx", "exp", "vip"};
  for (int code = 0; code < 9; ++code) {
    EXPECT_EQ(ReadConversion(extensions[static_cast<size_t>(code)], record), 0);
    EXPECT_EQ(record.formatCode, code);
    EXPECT_EQ(record, BuiltInConversion(code)) << extensions[static_cast<size_t>(code)];
  }

  const PreferenceStore store;
  struct Stored {
    const char* name;
    int32_t ConversionSettings::*word;
  };
  const std::vector<Stored> stored = {
      {"phcw", &ConversionSettings::hoopWidth},      {"phch", &ConversionSettings::hoopHeight},
      {"phcsc", &ConversionSettings::splitColors},   {"phcnc", &ConversionSettings::colorLimit},
      {"phcss", &ConversionSettings::splitStitches}, {"phcns", &ConversionSettings::stitchLimit},
      {"phcr", &ConversionSettings::rotate},         {"phcsh", &ConversionSettings::shrink},
      {"phcshpct", &ConversionSettings::shrinkPercent}, {"phcboth", &ConversionSettings::bothOrientations},
      {"pes5", &ConversionSettings::pes5},           {"pestrim", &ConversionSettings::ensureTrims},
  };
  ConversionSettings expected = BuiltInConversion(0);
  for (size_t i = 0; i < stored.size(); ++i) {
    const auto value = static_cast<int32_t>(1000 + i);
    store.SetInt("Conversion", stored[i].name, value);
    expected.*stored[i].word = value;
  }
  ReadConversion("phc", record);
  EXPECT_EQ(record, expected);
  ReadConversion("abc", record);
  EXPECT_EQ(record.hoopWidth, 300) << "another extension reads its own names";
  EXPECT_EQ(record.pes5, 1010);
}

TEST_F(PreferencesTest, ConcurrentWritersLoseNothing) {
  constexpr int kWriters = 4;
  constexpr int kValuesEach = 25;
  const auto name = [](int writer, int i) { return "w" + std::to_string(writer) + "v" + std::to_string(i); };
  std::vector<pid_t> children;
  for (int writer = 0; writer < kWriters; ++writer) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      const PreferenceStore store;
      for (int i = 0; i < kValuesEach; ++i) store.SetInt("Race", name(writer, i), i);
      _exit(0);
    }
    children.push_back(pid);
  }
  for (const pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const PreferenceStore store;
  EXPECT_EQ(store.Values("Race").size(), static_cast<size_t>(kWriters * kValuesEach));
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int i = 0; i < kValuesEach; ++i) EXPECT_EQ(store.GetInt("Race", name(writer, i), -1), i);
  }
  // Only the file and its lock remain: no temporary is left behind.
  EXPECT_EQ(test::FolderNames(MainFile().parent_path()),
            (std::vector<std::string>{"Brindlemoor.reg", "Brindlemoor.reg.lock"}));
}

}  // namespace
}  // namespace fennick
