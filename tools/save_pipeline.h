// The way a design leaves for its files: the hoop fit (turn, shrink), the
// split into pieces a machine can take, and the writing of each piece.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/design.h"
#include "core/format_table.h"
#include "core/design_path.h"
#include "core/preferences.h"

namespace fennick {

// Centres the design and tries it against the hoop of `settings`
// (millimetres), turning it a quarter or shrinking it where the settings allow
// and it helps. Returns 0 when it fits, and the design is then the fitted one;
// 1 otherwise, with the design as it was.
int FitDesignToHoop(Design& design, const ConversionSettings& settings);

// Cuts off what does not fit `stitchLimit` nodes and `colorLimit` colours (0:
// no limit) and returns it as a new design that starts with a jump from the
// origin; `design` keeps the first part. An empty result means no split.
Design SplitDesign(Design& design, int32_t stitchLimit, int32_t colorLimit);

// The format a design named with this format's extension is saved in: PEC,
// PHC, PHB and PHD as PES, SHV as VIP, every other as itself.
FormatCode SavedFormat(FormatCode code);

// The hoop, in millimetres, that a design of this name is saved against: the
// stored conversion settings of the format it is saved in (PES for a name
// without a writable format).
struct HoopSize {
  int32_t width = 0;
  int32_t height = 0;
};
HoopSize HoopForName(const std::string& name);

// Writes the design to the file its `name` names, in the format of that
// extension: PEC, PHC, PHB and PHD are written as PES, SHV as VIP, and TXT
// writes the design's notes. Fits it to the hoop (the design is the fitted one
// afterwards) and splits it into "rose.pes", "rose 2.pes", ... as `settings`
// say; without settings the stored ones of the format apply. `flag` 0 takes a
// free variant of an existing name; any other value overwrites. Each written
// file is appended to `outputList` when one is given. Returns the number of
// files written, 0 when none was; failures are shown under "Save Error".
int SaveDesign(Design& design, std::vector<DesignPath>* outputList, int flag,
               const ConversionSettings* settings);
// The same for a caller that is done with the design: it is written in place,
// without a copy, and is left as the writers leave it. A design refused by the
// hoop fit is left unchanged.
int SaveDesign(Design&& design, std::vector<DesignPath>* outputList, int flag, const ConversionSettings* settings);

}  // namespace fennick
