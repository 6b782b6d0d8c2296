// fennick preferences: the preference sheet is a program of its own with
// windows, as the browser is.
#include "cli/commands.h"

namespace fennick::cli {

int RunPreferences(const Arguments& arguments) {
  if (!arguments.empty()) {
    ReportError("preferences", "expected no arguments");
    return 2;
  }
  return StartWindowProgram("preferences", "fennick-preferences", arguments);
}

}  // namespace fennick::cli
