// Reduce Needles: lowers the number of distinct colours of a design to what a
// multi-needle machine holds by merging near colours; every colour stop stays
// and takes the nearest colour that remains. Also the window-free model of its
// dialog, which shows the design before and after.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/design.h"

namespace fennick {

// A colour's place in the tool's colour cone: x and y from hue and
// saturation, with a radius of twice the saturation, and z the value.
struct ColorPoint {
  int32_t x = 0;
  int32_t y = 0;
  int32_t z = 0;

  static ColorPoint FromRgb(uint32_t rgb);  // 0x00BBGGRR
};

// Hue and saturation weigh double against value.
double ColorPointDistance(const ColorPoint& a, const ColorPoint& b);

// The number of different `rgb` values among the design's threads.
int CountDistinctColors(const Design& design);

// Merges colours until at most `maxNeedles` distinct ones are left and gives
// every thread the whole record of the nearest one left. Returns the number
// of colours removed; 0, with the design unchanged, when `maxNeedles` is below
// 1 or not below the thread count. Statistics are not recomputed.
int ReduceNeedles(Design& design, int maxNeedles);

// The dialog's state: the design as it came (Original) and reduced
// (Modified), the needle maximum in the edit and spin control, the two lists
// of threads and their two previews.
class ReduceNeedlesModel {
 public:
  enum class Pane { kOriginal, kModified };  // left and right

  // Takes a copy of `design`, measures its threads and starts with no colour
  // removed and the maximum at its number of distinct colours.
  void Open(const Design& design);

  // The edit's text changed: its number is corrected into 1 to the spin top
  // (and at most 100), and the reduction runs again when the number is a new
  // one. Returns true when it ran. Ignored until the dialog is open.
  bool SetEditText(const std::string& text);
  // What the edit shows: the corrected number.
  std::string EditText() const;

  const Design& Original() const { return original_; }
  const Design& Modified() const { return modified_; }
  int MaxNeedles() const { return maxNeedles_; }
  int SpinTop() const { return spinTop_; }  // the spin range is 1 to this
  int RemovedCount() const { return removed_; }

  // A pane's lines, "1: Red,  120 st.  1.3 m." (or yards, by the "English"
  // preference as it stood when the lines were filled).
  const std::vector<std::string>& ListLines(Pane pane) const;
  // The two small buttons above the lists (1101 left, 1103 right) show or
  // hide one list each; both start shown.
  bool ListShown(Pane pane) const;
  void ToggleList(Pane pane);

  // Whether a pane's preview must be drawn again, until the view says it has been.
  bool PreviewStale(Pane pane) const;
  void PreviewDrawn(Pane pane);

  // What OK gives the caller: the Modified design when a colour was removed,
  // else nothing, and the host's design stays as it is.
  std::optional<Design> Accept() const;

 private:
  void FillLists();

  Design original_;
  Design modified_;
  int removed_ = 0;
  int maxNeedles_ = 0;
  int spinTop_ = 0;
  bool open_ = false;
  std::vector<std::string> lines_[2];
  bool listShown_[2] = {true, true};
  bool previewStale_[2] = {true, true};
};

}  // namespace fennick
