// The preference sheet's pages without a window. Each page keeps the store's
// values as read when it was initialised (what Cancel puts back) beside the
// values its controls show, in the form the controls exchange them: an edit's
// text, a check's state, a slider's position. The change handlers correct a
// value in place, as the page does while the user types; Apply writes the
// store, Cancel writes nothing. The labels and control ids are here so that
// a view shows every text as the page has it.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/format_table.h"
#include "core/preferences.h"

namespace fennick {

// A control of a page and the text it carries or that stands before it.
struct PageControl {
  int32_t id;
  const char* label;
};

inline constexpr char kUseDefaultLabel[] = "Use Default";
inline constexpr char kUseDefaultSettingsLabel[] = "Use Default Settings";

// What an edit's text reads as: spaces skipped, an optional minus sign, then
// the digits up to the first other character, held to 32 bits. An empty edit
// reads as 0.
int32_t EditNumber(const std::string& text);

class PreferencePage {
 public:
  virtual ~PreferencePage() = default;
  // Loads the store's values into the loaded and the shown values.
  virtual void Initialise() = 0;
  // Writes the shown values; they become the loaded ones.
  virtual void Apply() = 0;
  // Shows the loaded values again and writes nothing.
  virtual void Cancel() = 0;
  // Set by the user's changes, left on Apply and Cancel. (The resize page
  // calls its own mark `changed`; it is this one.)
  bool Modified() const { return modified_; }
  void ClearModified() { modified_ = false; }

 protected:
  bool modified_ = false;
};

class SPropColorSort : public PreferencePage {
 public:
  static constexpr int32_t kDialog = 161;
  static constexpr const char* kTitle = "Color Sort";
  static constexpr const char* kPrompt = "Enter the maximum allowable color overlap per layer. (%)";
  static constexpr int32_t kDefault = 5;  // percent

  void Initialise() override;
  void Apply() override;
  void Cancel() override;

  const std::string& Threshold() const { return threshold_; }
  // Held to 0 to 100; returns the text the edit shows after the change.
  const std::string& OnThresholdChange(const std::string& text);
  void UseDefault();

 private:
  int32_t loaded_ = kDefault;
  std::string threshold_ = "5";
};

class SPropBaste : public PreferencePage {
 public:
  static constexpr int32_t kDialog = 172;
  static constexpr const char* kTitle = "Baste";
  static constexpr PageControl kCombine{1019, "Combine baste and copy of design"};
  static constexpr PageControl kCross{1060, "Add crosshairs to baste"};
  static constexpr PageControl kLength{1020, "Enter the stitch length for the baste. (1-100mm)"};
  static constexpr PageControl kEdge{1078, "Baste past outer edge of design: (0 = edge)"};
  static constexpr PageControl kEdgeReadout{1079, "%i mm"};
  static constexpr int32_t kLengthLow = 1, kLengthHigh = 100;  // millimetres
  static constexpr int32_t kEdgeLow = 0, kEdgeHigh = 10;       // millimetres

  void Initialise() override;
  void Apply() override;
  void Cancel() override;

  bool Combine() const { return combine_ != 0; }
  bool Cross() const { return cross_ != 0; }
  const std::string& Length() const { return length_; }
  int32_t Edge() const { return edge_; }
  std::string EdgeReadout() const;

  void SetCombine(bool on);
  void SetCross(bool on);
  // Held to 1 to 100 at every change; returns the text the edit shows.
  const std::string& OnLengthChange(const std::string& text);
  void OnEdgeMoved(int32_t position);
  void UseDefault();

 private:
  void Show(const BasteSettings& values);
  BasteSettings loaded_;
  int32_t combine_ = 1, cross_ = 1, edge_ = 1;
  std::string length_ = "6";
};

class SPropBMP : public PreferencePage {
 public:
  static constexpr int32_t kDialog = 170;
  static constexpr const char* kTitle = "Bitmap Size";
  static constexpr PageControl kSize{
      1001,
      "Please enter the size that you would like bitmap files to be created. The shape is square, therefore the "
      "size is for either edge. Maximum size is 1024 pixels."};
  static constexpr PageControl kMake3D{1049, "I want 3D images"};
  static constexpr PageControl kOutline{1076, "Outline"};
  static constexpr int32_t kSizeLow = 32, kSizeHigh = 1024;  // pixels, forced on apply

  void Initialise() override;
  // Forces the size into 32 to 1024 (the edit shows it) before writing.
  void Apply() override;
  void Cancel() override;

  const std::string& Size() const { return size_; }
  bool Make3D() const { return make3D_ != 0; }
  bool Outline() const { return outline_ != 0; }

  // Below 0 the text becomes 150, above 9999 it becomes 2000.
  const std::string& OnSizeChange(const std::string& text);
  void SetMake3D(bool on);
  void SetOutline(bool on);
  // 400 and the 3D look; the outline keeps its state.
  void UseDefault();

 private:
  void Show(const BitmapSettings& values);
  BitmapSettings loaded_;
  std::string size_ = "400";
  int32_t make3D_ = 1, outline_ = 0;
};

// The formats of the conversion page in the order of its radio buttons,
// which is the order of the stored "selection".
struct ConversionFormat {
  int32_t radio;
  const char* label;
  const char* extension;
  FormatCode code;
};
inline constexpr std::array<ConversionFormat, 9> kConversionFormats{{
    {1013, ".PES", "pes", kFormatPes},
    {1016, ".SEW", "sew", kFormatSew},
    {1077, ".JEF", "jef", kFormatJef},
    {1014, ".HUS", "hus", kFormatHus},
    {1012, ".PCS", "pcs", kFormatPcs},
    {1015, ".DST", "dst", kFormatDst},
    {1078, ".XXX", "xxx", kFormatXxx},
    {1079, ".EXP", "exp", kFormatExp},
    {1080, ".VIP", "vip", kFormatVip},
}};

// A control of the conversion page and the word of the shown format's
// settings that it holds. An edit's label stands before it; the texts after
// the split edits are kConversionColorsLabel and kConversionStitchesLabel.
struct ConversionControl {
  int32_t id;
  const char* label;
  int32_t ConversionSettings::*word;
  bool isEdit;
  int32_t low, high;  // an edit's bounds
  int32_t enabledBy;  // the check that enables the edit, or 0
};
inline constexpr char kConversionSplitLabel[] = "Split after";
inline constexpr char kConversionColorsLabel[] = "colors";
inline constexpr char kConversionStitchesLabel[] = "stitches";
inline constexpr char kConversionHoopUnit[] = "mm";
inline constexpr std::array<ConversionControl, 12> kConversionControls{{
    {1033, "Largest Hoop:", &ConversionSettings::hoopWidth, true, 0, 1000, 0},
    {1034, "x", &ConversionSettings::hoopHeight, true, 0, 1000, 0},
    {1037, kConversionSplitLabel, &ConversionSettings::splitColors, false, 0, 0, 0},
    {1035, "", &ConversionSettings::colorLimit, true, 0, 100, 1037},
    {1038, kConversionSplitLabel, &ConversionSettings::splitStitches, false, 0, 0, 0},
    {1036, "", &ConversionSettings::stitchLimit, true, 0, 1000000, 1038},
    {1042, "Software supports both hoop orientations", &ConversionSettings::bothOrientations, false, 0, 0, 0},
    {1040, "Rotate design to attempt fit. ", &ConversionSettings::rotate, false, 0, 0, 0},
    {1027, "Shrink to fit", &ConversionSettings::shrink, false, 0, 0, 0},
    {1041, "Maximum %", &ConversionSettings::shrinkPercent, true, 0, 100, 1027},
    // One value for all formats; shown only while .PES is selected.
    {1094, "Convert using PES version 5 with real thread colors.", &ConversionSettings::pes5, false, 0, 0, 0},
    {1095, "Ensure trims and tie-offs.", &ConversionSettings::ensureTrims, false, 0, 0, 0},
}};

class SPropConversion : public PreferencePage {
 public:
  static constexpr int32_t kDialog = 175;
  static constexpr const char* kTitle = "Conversion";
  static constexpr int32_t kBothOrientations = 1042, kRotate = 1040, kPes5 = 1094, kEnsureTrims = 1095;

  // The page's own defaults: what it shows for a value absent from the store
  // and what "Use Default" sets. They differ on purpose from the built-in
  // rows that a conversion starts from.
  static ConversionSettings DefaultSet(int32_t selection);

  void Initialise() override;
  // Writes "selection" and every value of all nine formats, the ones not
  // visited too.
  void Apply() override;
  void Cancel() override;

  int32_t Selection() const { return selection_; }
  // A radio button: keeps the shown controls in the set of the format that
  // was showing, then shows the set of `selection` (0 to 8).
  void Select(int32_t selection);

  const std::string& Text(int32_t id) const;  // an edit's
  bool Checked(int32_t id) const;
  bool Enabled(int32_t id) const;
  bool Visible(int32_t id) const;
  // An out-of-bounds value puts the bound into the text; returns the text.
  const std::string& OnEditChange(int32_t id, const std::string& text);
  void OnCheck(int32_t id, bool on);
  // The current format's row of the page's defaults, and for PES the two
  // PES choices on.
  void UseDefault();

  // A format's settings as they stand, the shown controls' edits included.
  ConversionSettings Set(int32_t selection) const;

 private:
  struct Shown {
    std::array<std::string, kConversionControls.size()> text;
    std::array<int32_t, kConversionControls.size()> checked{};
  };
  void ShowSet(const ConversionSettings& set);
  ConversionSettings KeepShown() const;
  std::array<ConversionSettings, 9> loaded_{}, sets_{};
  int32_t loadedSelection_ = 0, selection_ = 0;
  Shown shown_;
};

// A slider of the resize page and its "Apply" check; the length sliders are
// in tenths of a millimetre and have a read-out.
struct TessimoSlider {
  int32_t id;
  const char* label;
  int32_t low, high;
  const char* value;  // name in the resize tree
  int32_t defaultValue;
  int32_t check;           // 0 for none
  const char* checkValue;  // nullptr for none
};
inline constexpr std::array<TessimoSlider, 6> kTessimoSliders{{
    {1042, "Minimum Non-Fill Stitch Length", 0, 30, "MinNonFill", 3, 1017, "ApplyMinNone"},
    {1027, "Minimum Fill Stitch Length", 0, 30, "MinFill", 3, 1026, "ApplyMinFill"},
    {1031, "Minimum Satin Fill Stitch Length", 0, 10, "MinSatin", 3, 1030, "ApplyMinSatin"},
    {1016, "Fill Sensitivity:", 6, 16, "Sensitivity", 11, 0, nullptr},
    {1010, "Maximum Fill Stitch Length:", 25, 250, "MaxSL", 60, 1009, "ApplyMax"},
    {1034, "Maximum Satin Stitch Length:", 25, 250, "MaxSatinSL", 60, 1033, "ApplyMaxSL"},
}};

class SPropTessimo : public PreferencePage {
 public:
  static constexpr int32_t kDialog = 135;
  static constexpr const char* kTitle = "Tessimo";
  static constexpr int32_t kSensitivity = 1016;
  static constexpr const char* kApplyLabel = "Apply";
  static constexpr const char* kLowLabel = "Low";
  static constexpr const char* kHighLabel = "High";
  static constexpr PageControl kTieOff{1059, "Allow Tie-Off after jumps:"};
  static constexpr PageControl kMaxSmall{1097, "stitches maximum."};
  static constexpr int32_t kMaxSmallLow = 1, kMaxSmallHigh = 6, kMaxSmallDefault = 4;

  void Initialise() override;
  // Writes all thirteen values of the resize tree.
  void Apply() override;
  void Cancel() override;

  int32_t Position(int32_t slider) const;
  // "%2.1f mm" of the position in tenths of a millimetre; "" for the
  // sensitivity, whose ends are "Low" and "High".
  std::string Readout(int32_t slider) const;
  bool Checked(int32_t check) const;  // an "Apply" check or the tie-off
  int32_t MaxSmall() const { return shown_.maxSmall; }

  void OnSliderMoved(int32_t slider, int32_t position);
  void OnCheck(int32_t check, bool on);
  void OnMaxSmallChange(int32_t value);
  void UseDefaultSettings();

 private:
  struct Values {
    std::array<int32_t, kTessimoSliders.size()> positions{};
    std::array<int32_t, kTessimoSliders.size()> applies{};
    int32_t tieOff = 1;
    int32_t maxSmall = kMaxSmallDefault;
  };
  static Values Defaults();
  Values loaded_ = Defaults(), shown_ = Defaults();
};

// The sheet's pages, made in this order and destroyed in reverse. The bitmap
// page is made with the sheet but the sheet does not show it, so it is
// neither loaded nor applied here.
class PreferenceSheet {
 public:
  static constexpr int32_t kApplyCommand = 12321;

  SPropColorSort colorSort;
  SPropBaste baste;
  SPropBMP bitmap;
  SPropConversion conversion;
  SPropTessimo tessimo;

  // The pages the sheet shows, in the order of its tabs.
  std::array<PreferencePage*, 4> Shown() { return {&colorSort, &baste, &conversion, &tessimo}; }
  std::array<const PreferencePage*, 4> Shown() const { return {&colorSort, &baste, &conversion, &tessimo}; }

  void Initialise();
  // Command 12321 and OK: every shown page writes, and no page stays modified.
  void Apply();
  // Every shown page puts its loaded values back; nothing is written.
  void Cancel();
  bool AnyModified() const;
};

}  // namespace fennick
