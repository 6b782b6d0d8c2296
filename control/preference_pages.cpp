#include "control/preference_pages.h"

#include <algorithm>
#include <cctype>
#include <limits>

#include "core/text.h"

namespace fennick {
namespace {

constexpr char kSettings[] = "Settings";
constexpr char kConversion[] = "Conversion";

// The text an edit shows after a change: the typed text, or `replacement`
// when the value it reads as is out of bounds.
const std::string& Corrected(std::string& text, int32_t low, int32_t high, int32_t belowLow, int32_t aboveHigh) {
  const int32_t value = EditNumber(text);
  if (value < low) {
    text = std::to_string(belowLow);
  } else if (value > high) {
    text = std::to_string(aboveHigh);
  }
  return text;
}

int32_t Bit(bool on) { return on ? 1 : 0; }

}  // namespace

int32_t EditNumber(const std::string& text) {
  size_t at = 0;
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (negative) ++at;
  int64_t value = 0;
  constexpr int64_t kLimit = int64_t{std::numeric_limits<int32_t>::max()} + 1;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = std::min(value * 10 + (text[at] - '0'), kLimit);
  }
  if (negative) value = -value;
  return static_cast<int32_t>(
      std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

// ---------------------------------------------------------------------------
// Color Sort

void SPropColorSort::Initialise() {
  loaded_ = GetColorSortThreshold();
  Cancel();
}

void SPropColorSort::Apply() {
  loaded_ = EditNumber(threshold_);
  PreferenceStore().SetInt(kSettings, "Color Sort Threshold", loaded_);
  modified_ = false;
}

void SPropColorSort::Cancel() {
  threshold_ = std::to_string(loaded_);
  modified_ = false;
}

const std::string& SPropColorSort::OnThresholdChange(const std::string& text) {
  threshold_ = text;
  modified_ = true;
  return Corrected(threshold_, 0, 100, 0, 100);
}

void SPropColorSort::UseDefault() {
  threshold_ = std::to_string(kDefault);
  modified_ = true;
}

// ---------------------------------------------------------------------------
// Baste

void SPropBaste::Initialise() {
  loaded_ = GetBaste();
  Cancel();
}

void SPropBaste::Show(const BasteSettings& values) {
  combine_ = values.combine;
  cross_ = values.cross;
  length_ = std::to_string(values.length);
  // A slider holds its position to its range.
  edge_ = std::clamp(values.edge, kEdgeLow, kEdgeHigh);
}

void SPropBaste::Apply() {
  loaded_ = {combine_, EditNumber(length_), cross_, edge_};
  const PreferenceStore store;
  store.SetInt(kSettings, "Baste length", loaded_.length);
  store.SetInt(kSettings, "Baste combine", loaded_.combine);
  store.SetInt(kSettings, "Baste cross", loaded_.cross);
  store.SetInt(kSettings, "Baste edge", loaded_.edge);
  modified_ = false;
}

void SPropBaste::Cancel() {
  Show(loaded_);
  modified_ = false;
}

std::string SPropBaste::EdgeReadout() const { return FormatText(kEdgeReadout.label, edge_); }

void SPropBaste::SetCombine(bool on) {
  combine_ = Bit(on);
  modified_ = true;
}

void SPropBaste::SetCross(bool on) {
  cross_ = Bit(on);
  modified_ = true;
}

// An emptied edit reads as 0 and so becomes "1" at once: the page tests the
// value at every change, not when the user is done typing.
const std::string& SPropBaste::OnLengthChange(const std::string& text) {
  length_ = text;
  modified_ = true;
  return Corrected(length_, kLengthLow, kLengthHigh, kLengthLow, kLengthHigh);
}

void SPropBaste::OnEdgeMoved(int32_t position) {
  edge_ = std::clamp(position, kEdgeLow, kEdgeHigh);
  modified_ = true;
}

void SPropBaste::UseDefault() {
  Show(BasteSettings{});
  modified_ = true;
}

// ---------------------------------------------------------------------------
// Bitmap size

void SPropBMP::Initialise() {
  loaded_ = GetBitmapSettings();
  Cancel();
}

void SPropBMP::Show(const BitmapSettings& values) {
  size_ = std::to_string(values.size);
  make3D_ = values.make3D;
  outline_ = values.outline;
}

void SPropBMP::Apply() {
  loaded_ = {std::clamp(EditNumber(size_), kSizeLow, kSizeHigh), make3D_, outline_};
  size_ = std::to_string(loaded_.size);
  const PreferenceStore store;
  store.SetInt(kSettings, "BMP Size", loaded_.size);
  store.SetInt(kSettings, "Make 3D", loaded_.make3D);
  store.SetInt(kSettings, "Outline", loaded_.outline);
  modified_ = false;
}

void SPropBMP::Cancel() {
  Show(loaded_);
  modified_ = false;
}

// The bounds of a change (0 and 9999) are wider than those of apply, and
// their replacements are not bounds: that is the page's rule.
const std::string& SPropBMP::OnSizeChange(const std::string& text) {
  size_ = text;
  modified_ = true;
  return Corrected(size_, 0, 9999, 150, 2000);
}

void SPropBMP::SetMake3D(bool on) {
  make3D_ = Bit(on);
  modified_ = true;
}

void SPropBMP::SetOutline(bool on) {
  outline_ = Bit(on);
  modified_ = true;
}

void SPropBMP::UseDefault() {
  size_ = std::to_string(BitmapSettings{}.size);
  make3D_ = 1;
  modified_ = true;
}

// ---------------------------------------------------------------------------
// Conversion

namespace {

// The page's defaults in the order of kConversionValues: w h sc nc ss ns r sh shpct both.
constexpr std::array<std::array<int32_t, 10>, 9> kPageDefaults{{
    {300, 200, 1, 99, 0, 0, 1, 1, 10, 1},      // pes
    {126, 90, 1, 12, 1, 60000, 1, 1, 10, 0},   // sew
    {140, 200, 1, 78, 1, 64000, 1, 1, 10, 0},  // jef
    {150, 240, 0, 36, 0, 0, 1, 1, 10, 1},      // hus
    {110, 112, 1, 16, 1, 28000, 1, 1, 10, 0},  // pcs
    {300, 300, 0, 0, 0, 0, 0, 0, 0, 0},        // dst
    {140, 240, 1, 15, 1, 30000, 1, 1, 10, 0},  // xxx
    {300, 300, 0, 0, 0, 0, 0, 0, 0, 0},        // exp
    {150, 360, 0, 60, 0, 0, 0, 1, 10, 1},      // vip
}};
constexpr int32_t kPes5Default = 1, kEnsureTrimsDefault = 1, kSelectionDefault = 0;

size_t ControlIndex(int32_t id) {
  for (size_t i = 0; i < kConversionControls.size(); ++i) {
    if (kConversionControls[i].id == id) return i;
  }
  return kConversionControls.size();
}

bool IsPesChoice(int32_t id) { return id == SPropConversion::kPes5 || id == SPropConversion::kEnsureTrims; }

}  // namespace

ConversionSettings SPropConversion::DefaultSet(int32_t selection) {
  const size_t index = static_cast<size_t>(std::clamp(selection, 0, 8));
  ConversionSettings set;
  set.formatCode = kConversionFormats[index].code;
  for (size_t i = 0; i < kConversionValues.size(); ++i) set.*kConversionValues[i].word = kPageDefaults[index][i];
  set.pes5 = kPes5Default;
  set.ensureTrims = kEnsureTrimsDefault;
  return set;
}

// The page reads every value with its own default, not through
// ReadConversion: a value absent from the store shows the page's default
// (hus "sc" 0, not the built-in row's 1), and Apply then writes what was shown.
void SPropConversion::Initialise() {
  const PreferenceStore store;
  const int32_t pes5 = store.GetInt(kConversion, "pes5", kPes5Default);
  const int32_t ensureTrims = store.GetInt(kConversion, "pestrim", kEnsureTrimsDefault);
  for (size_t format = 0; format < kConversionFormats.size(); ++format) {
    ConversionSettings& set = loaded_[format];
    set = DefaultSet(static_cast<int32_t>(format));
    const std::string extension = kConversionFormats[format].extension;
    for (const ConversionValue& stored : kConversionValues) {
      set.*stored.word = store.GetInt(kConversion, extension + stored.suffix, set.*stored.word);
    }
    set.pes5 = pes5;
    set.ensureTrims = ensureTrims;
  }
  loadedSelection_ = store.GetInt(kConversion, "selection", kSelectionDefault);
  // A selection no radio button has shows the first.
  if (loadedSelection_ < 0 || loadedSelection_ > 8) loadedSelection_ = kSelectionDefault;
  Cancel();
}

void SPropConversion::Apply() {
  sets_[static_cast<size_t>(selection_)] = KeepShown();
  const PreferenceStore store;
  store.SetInt(kConversion, "selection", selection_);
  for (size_t format = 0; format < kConversionFormats.size(); ++format) {
    const std::string extension = kConversionFormats[format].extension;
    for (const ConversionValue& stored : kConversionValues) {
      store.SetInt(kConversion, extension + stored.suffix, sets_[format].*stored.word);
    }
  }
  store.SetInt(kConversion, "pes5", sets_[0].pes5);
  store.SetInt(kConversion, "pestrim", sets_[0].ensureTrims);
  loaded_ = sets_;
  loadedSelection_ = selection_;
  modified_ = false;
}

void SPropConversion::Cancel() {
  sets_ = loaded_;
  selection_ = loadedSelection_;
  ShowSet(sets_[static_cast<size_t>(selection_)]);
  modified_ = false;
}

void SPropConversion::ShowSet(const ConversionSettings& set) {
  for (size_t i = 0; i < kConversionControls.size(); ++i) {
    const ConversionControl& control = kConversionControls[i];
    // The PES choices are one pair for all formats, kept with PES.
    const int32_t value = IsPesChoice(control.id) ? sets_[0].*control.word : set.*control.word;
    if (control.isEdit) {
      shown_.text[i] = std::to_string(value);
    } else {
      shown_.checked[i] = value;
    }
  }
}

ConversionSettings SPropConversion::KeepShown() const {
  ConversionSettings set = sets_[static_cast<size_t>(selection_)];
  for (size_t i = 0; i < kConversionControls.size(); ++i) {
    const ConversionControl& control = kConversionControls[i];
    if (IsPesChoice(control.id) && selection_ != 0) continue;
    set.*control.word = control.isEdit ? EditNumber(shown_.text[i]) : shown_.checked[i];
  }
  return set;
}

void SPropConversion::Select(int32_t selection) {
  if (selection < 0 || selection > 8) return;
  sets_[static_cast<size_t>(selection_)] = KeepShown();
  selection_ = selection;
  ShowSet(sets_[static_cast<size_t>(selection_)]);
  modified_ = true;
}

const std::string& SPropConversion::Text(int32_t id) const {
  static const std::string kNone;
  const size_t index = ControlIndex(id);
  return index < kConversionControls.size() ? shown_.text[index] : kNone;
}

bool SPropConversion::Checked(int32_t id) const {
  const size_t index = ControlIndex(id);
  return index < kConversionControls.size() && shown_.checked[index] != 0;
}

// Only the enabling check counts: a shown set may hold rotate on while both
// orientations are on (the PES defaults do), and that stays as it is until
// the user touches the orientation check.
bool SPropConversion::Enabled(int32_t id) const {
  if (id == kRotate) return !Checked(kBothOrientations);
  const size_t index = ControlIndex(id);
  if (index == kConversionControls.size() || kConversionControls[index].enabledBy == 0) return true;
  return Checked(kConversionControls[index].enabledBy);
}

bool SPropConversion::Visible(int32_t id) const { return !IsPesChoice(id) || selection_ == 0; }

const std::string& SPropConversion::OnEditChange(int32_t id, const std::string& text) {
  const size_t index = ControlIndex(id);
  if (index == kConversionControls.size() || !kConversionControls[index].isEdit) return Text(id);
  const ConversionControl& control = kConversionControls[index];
  shown_.text[index] = text;
  modified_ = true;
  return Corrected(shown_.text[index], control.low, control.high, control.low, control.high);
}

void SPropConversion::OnCheck(int32_t id, bool on) {
  const size_t index = ControlIndex(id);
  if (index == kConversionControls.size() || kConversionControls[index].isEdit) return;
  shown_.checked[index] = Bit(on);
  if (id == kBothOrientations) shown_.checked[ControlIndex(kRotate)] = Bit(!on);
  modified_ = true;
}

void SPropConversion::UseDefault() {
  if (selection_ == 0) {
    sets_[0].pes5 = 1;
    sets_[0].ensureTrims = 1;
  }
  ShowSet(DefaultSet(selection_));
  modified_ = true;
}

ConversionSettings SPropConversion::Set(int32_t selection) const {
  const size_t index = static_cast<size_t>(std::clamp(selection, 0, 8));
  ConversionSettings set = index == static_cast<size_t>(selection_) ? KeepShown() : sets_[index];
  const ConversionSettings pes = selection_ == 0 ? KeepShown() : sets_[0];
  set.pes5 = pes.pes5;
  set.ensureTrims = pes.ensureTrims;
  return set;
}

// ---------------------------------------------------------------------------
// Tessimo

namespace {

constexpr char kTieOffValue[] = "TieOff";
constexpr char kMaxSmallValue[] = "MaxSmall";

size_t SliderIndex(int32_t id) {
  for (size_t i = 0; i < kTessimoSliders.size(); ++i) {
    if (kTessimoSliders[i].id == id) return i;
  }
  return kTessimoSliders.size();
}

size_t CheckIndex(int32_t id) {
  for (size_t i = 0; i < kTessimoSliders.size(); ++i) {
    if (kTessimoSliders[i].check != 0 && kTessimoSliders[i].check == id) return i;
  }
  return kTessimoSliders.size();
}

}  // namespace

SPropTessimo::Values SPropTessimo::Defaults() {
  Values values;
  for (size_t i = 0; i < kTessimoSliders.size(); ++i) {
    values.positions[i] = kTessimoSliders[i].defaultValue;
    values.applies[i] = kTessimoSliders[i].check != 0 ? 1 : 0;
  }
  return values;
}

void SPropTessimo::Initialise() {
  const PreferenceStore store(PreferenceTree::kResize);
  loaded_ = Defaults();
  for (size_t i = 0; i < kTessimoSliders.size(); ++i) {
    const TessimoSlider& slider = kTessimoSliders[i];
    // A slider holds its position to its range.
    loaded_.positions[i] = std::clamp(store.GetInt("", slider.value, slider.defaultValue), slider.low, slider.high);
    if (slider.checkValue != nullptr) loaded_.applies[i] = store.GetInt("", slider.checkValue, loaded_.applies[i]);
  }
  loaded_.tieOff = store.GetInt("", kTieOffValue, loaded_.tieOff);
  loaded_.maxSmall = std::clamp(store.GetInt("", kMaxSmallValue, loaded_.maxSmall), kMaxSmallLow, kMaxSmallHigh);
  Cancel();
}

void SPropTessimo::Apply() {
  const PreferenceStore store(PreferenceTree::kResize);
  for (size_t i = 0; i < kTessimoSliders.size(); ++i) {
    const TessimoSlider& slider = kTessimoSliders[i];
    store.SetInt("", slider.value, shown_.positions[i]);
    if (slider.checkValue != nullptr) store.SetInt("", slider.checkValue, shown_.applies[i]);
  }
  store.SetInt("", kTieOffValue, shown_.tieOff);
  store.SetInt("", kMaxSmallValue, shown_.maxSmall);
  loaded_ = shown_;
  modified_ = false;
}

void SPropTessimo::Cancel() {
  shown_ = loaded_;
  modified_ = false;
}

int32_t SPropTessimo::Position(int32_t slider) const {
  const size_t index = SliderIndex(slider);
  return index < kTessimoSliders.size() ? shown_.positions[index] : 0;
}

std::string SPropTessimo::Readout(int32_t slider) const {
  if (slider == kSensitivity || SliderIndex(slider) == kTessimoSliders.size()) return {};
  return FormatText("%2.1f mm", Position(slider) * 0.1);
}

bool SPropTessimo::Checked(int32_t check) const {
  if (check == kTieOff.id) return shown_.tieOff != 0;
  const size_t index = CheckIndex(check);
  return index < kTessimoSliders.size() && shown_.applies[index] != 0;
}

void SPropTessimo::OnSliderMoved(int32_t slider, int32_t position) {
  const size_t index = SliderIndex(slider);
  if (index == kTessimoSliders.size()) return;
  shown_.positions[index] = std::clamp(position, kTessimoSliders[index].low, kTessimoSliders[index].high);
  modified_ = true;
}

void SPropTessimo::OnCheck(int32_t check, bool on) {
  if (check == kTieOff.id) {
    shown_.tieOff = Bit(on);
  } else if (const size_t index = CheckIndex(check); index < kTessimoSliders.size()) {
    shown_.applies[index] = Bit(on);
  } else {
    return;
  }
  modified_ = true;
}

void SPropTessimo::OnMaxSmallChange(int32_t value) {
  shown_.maxSmall = std::clamp(value, kMaxSmallLow, kMaxSmallHigh);
  modified_ = true;
}

void SPropTessimo::UseDefaultSettings() {
  shown_ = Defaults();
  modified_ = true;
}

// ---------------------------------------------------------------------------
// The sheet

void PreferenceSheet::Initialise() {
  for (PreferencePage* page : Shown()) page->Initialise();
}

void PreferenceSheet::Apply() {
  for (PreferencePage* page : Shown()) page->Apply();
  bitmap.ClearModified();
}

void PreferenceSheet::Cancel() {
  for (PreferencePage* page : Shown()) page->Cancel();
  bitmap.ClearModified();
}

bool PreferenceSheet::AnyModified() const {
  const auto pages = Shown();
  return std::any_of(pages.begin(), pages.end(), [](const PreferencePage* page) { return page->Modified(); });
}

}  // namespace fennick
