#include <cstdio>

#include "cli/commands.h"
#include "tools/design_notes.h"

namespace fennick::cli {

int RunNotes(const Arguments& arguments) {
  if (arguments.empty() || arguments.size() > 2) {
    ReportError("notes", "expected IN [OUT.txt]");
    return 2;
  }
  Design design;
  if (!LoadDesign(arguments[0], design)) return 1;
  const std::string text = DesignNotes(design);
  if (arguments.size() == 1) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
  }
  return SaveFile(arguments[1], std::vector<uint8_t>(text.begin(), text.end())) ? 0 : 1;
}

}  // namespace fennick::cli
