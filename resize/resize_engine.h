// The resize engine: resizes, rotates and fits a whole design, re-stitching
// its satin columns and fills so that they keep their density, then cleans up
// stitches that came out too short or too long. One engine serves one
// operation: construct, set the settings, load, resize, read `working`.
#pragma once

#include <cstdint>
#include <vector>

#include "core/design.h"
#include "core/global_memory.h"
#include "resize/classify.h"

namespace fennick {

// The nine tuning values in the order a host hands them over, with the
// Sensitivity slider's value less 6 (the engine adds its own 6). Lengths in
// stitch units of 0.1 mm.
struct ResizeSettings {
  int32_t MinFill = 0;
  int32_t MaxSL = 0;
  int32_t MinSatin = 0;
  int32_t MaxSatinSL = 0;
  int32_t ApplyMinFill = 0;
  int32_t ApplyMax = 0;
  int32_t ApplyMinSatin = 0;
  int32_t ApplyMaxSL = 0;
  int32_t Sensitivity = 0;
};

// The preference page's defaults, as a host hands them over.
inline constexpr ResizeSettings kDefaultResizeSettings{3, 60, 3, 60, 1, 1, 1, 1, 11 - 6};

// The settings kept in the resize tree of the preference store, each key's
// default in its absence, passed on as a host passes them.
ResizeSettings StoredResizeSettings();

class ResizeEngine {
 public:
  // Takes a host's values; Sensitivity gets the engine's 6 back.
  void ApplySettings(const ResizeSettings& settings);

  // Reads a block into `source` and frees it; `working` gets a copy. A null
  // handle does nothing.
  void Load(GlobalHandle blob);
  void LoadDesign(const Design& design);
  // The same without the first copy, for a caller done with its design.
  void LoadDesign(Design&& design);
  // Resizes `working` and returns a new block of it.
  GlobalHandle Resize(float rotation, float xFactor, float yFactor);
  // The work of Resize, leaving the result in `working`. A factor of 0 leaves
  // the design as loaded; rotation is in degrees, counter-clockwise.
  void ResizeWorking(float rotation, float xFactor, float yFactor);
  // Scales `working` with the error carried forward, each move cut to 16 bits.
  void ScaleStitches(double xFactor, double yFactor);
  // The clean-ups after a scale, in the order they run.
  void MergeShortRegionStitches();
  void MergeShortPlainStitches();
  void SplitLongRegionStitches();
  // Resizes `design` to fill width by height millimetres less 1 mm each. With
  // `keep` 0 the axes cross on purpose: the height's factor goes to x.
  void FitToHoop(int32_t width, int32_t height, int32_t keep, Design& design);

  // Units of 0.1 mm; each Apply flag puts its limit in force.
  int32_t MinSatin = 0;
  int32_t MaxSatinSL = 0;
  int32_t MinFill = 0;  // fill and plain stitches alike
  int32_t MaxSL = 0;
  int32_t ApplyMinSatin = 0;
  int32_t ApplyMaxSL = 0;
  int32_t ApplyMinFill = 0;
  int32_t ApplyMax = 0;
  int32_t Sensitivity = 0;  // 6 to 16; anything else counts as 11

  Design source;
  Design working;
  std::vector<StitchRun> runs;
  std::vector<StitchRegion> regions;
};

// The plain transform of a rotated resize: every point scaled by the factors
// about the design's start, then turned counter-clockwise by `degrees`, each
// rounded to whole units, the moves cut to 16 bits; the bounds are measured anew.
void RotateAndScale(Design& design, double degrees, double xFactor, double yFactor);

}  // namespace fennick
