// Auto-Baste: a rectangle of long running stitches round a design, to hold
// fabric and stabiliser together, with optional crosshair ticks at the middle
// of each side, sewn before a copy of the design or alone.
#pragma once

#include "core/design.h"
#include "core/preferences.h"

namespace fennick {

// Bastes with the four "Baste" preferences as they stand.
void AutoBaste(Design& design);
// Bastes with `settings` as given (length and edge in millimetres). The
// design is centred afterwards; one without stitches is left alone.
void AutoBaste(Design& design, const BasteSettings& settings);

}  // namespace fennick
