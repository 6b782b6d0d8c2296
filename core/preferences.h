// The preference store: the three trees of settings (Main, Profile, Resize)
// and the two tool keys, each kept as a text file in the registry's export
// format under $XDG_CONFIG_HOME/selvane/. Values are read at the moment of
// use, never cached; a missing value gives the caller's default, which is
// never written back. Writes are atomic (temporary file and rename, under an
// advisory lock), so several processes can share the files.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace fennick {

enum class PreferenceTree {
  kMain,          // Software\Selvane\Brindlemoor: Brindlemoor.reg
  kProfile,       // Software\Selvane\FennickAddin: FennickAddin.reg
  kResize,        // Software\Selvane\QXTessimo: QXTessimo.reg
  kUserTools,     // Software\Selvane\Brindlemoor Tools: "Brindlemoor Tools.reg"
  kMachineTools,  // Software\Selvane\FennickAddin Tools, machine-wide, read only
};

// One value of a key as it stands in the file.
struct PreferenceValue {
  std::string name;
  bool isNumber = false;
  uint32_t number = 0;
  std::string text;
};

// A short-lived view of one tree; it holds no values between calls.
class PreferenceStore {
 public:
  explicit PreferenceStore(PreferenceTree tree = PreferenceTree::kMain) : tree_(tree) {}

  // `section` names a sub-key ("Settings", "Conversion"); an empty section is
  // the tree's own key. Names compare without regard to case.
  int32_t GetInt(const std::string& section, const std::string& name, int32_t defaultValue) const;
  // Strings of 255 bytes or more do not fit the reader's buffer and give the default.
  std::string GetString(const std::string& section, const std::string& name,
                        const std::string& defaultValue) const;
  // Writes fail silently, as every write of the store does.
  void SetInt(const std::string& section, const std::string& name, int32_t value) const;
  void SetString(const std::string& section, const std::string& name, const std::string& value) const;
  // The values of a key in file order, which is their enumeration order.
  std::vector<PreferenceValue> Values(const std::string& section) const;

  // The file that holds the tree; the machine tool key's is the first
  // directory of $XDG_CONFIG_DIRS that has one.
  std::filesystem::path FilePath() const;

 private:
  PreferenceTree tree_;
};

// A format's conversion choices: fourteen 32-bit words in this order.
struct ConversionSettings {
  int32_t formatCode = -1;
  int32_t splitStitches = 0;  // non-zero: split by stitch count
  int32_t splitColors = 0;    // non-zero: split by colour stops
  int32_t stitchLimit = 0;
  int32_t colorLimit = 0;
  int32_t hoopWidth = 0;  // millimetres
  int32_t hoopHeight = 0;
  int32_t rotate = 0;
  int32_t shrink = 0;
  int32_t shrinkPercent = 0;
  int32_t bothOrientations = 0;
  int32_t pes5 = 0;
  int32_t ensureTrims = 0;
  int32_t settingsFlag = 0;
  bool operator==(const ConversionSettings&) const = default;
};

// A format's value of section "Conversion": its name is the lower-case
// extension followed by the suffix.
struct ConversionValue {
  const char* suffix;
  int32_t ConversionSettings::*word;
};
// The ten per-format values, in the order ReadConversion reads them.
inline constexpr std::array<ConversionValue, 10> kConversionValues{{
    {"w", &ConversionSettings::hoopWidth},
    {"h", &ConversionSettings::hoopHeight},
    {"sc", &ConversionSettings::splitColors},
    {"nc", &ConversionSettings::colorLimit},
    {"ss", &ConversionSettings::splitStitches},
    {"ns", &ConversionSettings::stitchLimit},
    {"r", &ConversionSettings::rotate},
    {"sh", &ConversionSettings::shrink},
    {"shpct", &ConversionSettings::shrinkPercent},
    {"both", &ConversionSettings::bothOrientations},
}};

// The built-in row of a format code 0 to 8; any other code gets the PES row.
const ConversionSettings& BuiltInConversion(int formatCode);
// Starts from the built-in row of the extension's format (PES for any format
// outside 1 to 8) and overlays the stored "Conversion" values named after the
// extension. Always returns 0.
int ReadConversion(const std::string& extension, ConversionSettings& record);

// The settings of the last Save As, which the PES writer follows (pes5,
// ensureTrims). Process-wide and safe from any thread; until one is set,
// SaveAsConversion gives ReadConversion("pes") as it stands at the call.
void SetSaveAsConversion(const ConversionSettings& record);
ConversionSettings SaveAsConversion();

// The one-line readers of section "Settings" and friends, with their defaults.
struct BasteSettings {
  int32_t combine = 1;
  int32_t length = 6;  // millimetres
  int32_t cross = 1;
  int32_t edge = 1;  // millimetres
};
BasteSettings GetBaste();

struct ToolSettings {
  int32_t keep = 0;
  int32_t selected = 0;
  int32_t report = 1;
  std::string format = "PES";
};
ToolSettings GetToolSettings();

struct BitmapSettings {
  int32_t size = 400;  // pixels
  int32_t make3D = 1;
  int32_t outline = 0;
};
BitmapSettings GetBitmapSettings();

// Returns the "workspace" flag and fills `directory` with the workspace folder.
int32_t GetWorkspace(std::string& directory);
int32_t GetColorSortThreshold();
uint32_t GetBackgroundColor();
int32_t GetEnglish();

}  // namespace fennick
