// A design built from the input (see moves_design.h), resized by the engine as
// a host asks for it: the first byte picks the factors, a rotation and whether
// the clean-ups' limits are in force.
#include <cstdint>
#include <utility>

#include "core/global_memory.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/moves_design.h"
#include "resize/resize_engine.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  Design design;
  if (!fuzz::DesignFromMoves({data, size}, design)) return 0;
  static constexpr float kFactors[] = {1.5f, 0.7f, 1.2f, 0.8f, 2.5f, 0.3f, -1.5f, 1.0f};
  const uint8_t pick = data[0];
  const float xFactor = kFactors[pick & 7];
  const float yFactor = (pick & 0x20) != 0 ? kFactors[(pick >> 3) & 3] : xFactor;
  ResizeEngine engine;
  ResizeSettings settings = kDefaultResizeSettings;
  if ((pick & 0x40) != 0) settings.ApplyMinFill = settings.ApplyMax = settings.ApplyMinSatin = settings.ApplyMaxSL = 0;
  engine.ApplySettings(settings);
  engine.LoadDesign(std::move(design));
  const GlobalHandle block = engine.Resize((pick & 0x80) != 0 ? 30.0f : 0.0f, xFactor, yFactor);
  fuzz::CheckWellFormed(engine.working, "resize");
  GlobalFree(block);
  return 0;
}
