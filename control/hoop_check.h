// The hoop test a save through the host makes before it writes: the design
// must fit the design page's hoop, or at least the format's largest one, in
// which case the user decides.
#pragma once

#include <string>

#include "control/host_automation.h"
#include "core/design.h"
#include "core/preferences.h"

namespace fennick {

// The stored conversion settings of the extension's format with the host's
// hoop for the format (still in tenths of a millimetre) and its conversion
// choices laid over them.
ConversionSettings HostConversion(HostAutomation& host, const std::string& extension);

// Asks the host for the page's hoop and tries a copy of the design against
// it, then against `record`'s hoop, whose size is turned into millimetres on
// the way. Fitting neither is told under "Save Error"; fitting only the
// format's hoop asks the user, Yes and No. True when the save may go on.
bool ConfirmHoopForSave(HostAutomation& host, const Design& design, ConversionSettings& record);

}  // namespace fennick
