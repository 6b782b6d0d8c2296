// The pack's entries in the machine tool key, the file the tool bar reads its
// buttons from: one value per operation, naming its program.
#pragma once

#include <string>

namespace fennick {

// Adds (or with `add` false removes) the pack's values in the key file under
// `keyFolder` (its "selvane" folder; empty for the first folder of
// $XDG_CONFIG_DIRS, else /etc/xdg), with its programs in `toolFolder`. Other
// values of the file stay as they are. False, with the cause, when the file
// cannot be written.
bool RegisterTools(const std::string& keyFolder, const std::string& toolFolder, bool add, std::string& error);

}  // namespace fennick
