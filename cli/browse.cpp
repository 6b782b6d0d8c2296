// fennick browse: the browser is a program of its own with windows, so that
// this one starts without loading the window libraries.
#include "cli/commands.h"

namespace fennick::cli {

int RunBrowse(const Arguments& arguments) {
  if (arguments.size() > 1) {
    ReportError("browse", "expected at most one FOLDER");
    return 2;
  }
  return StartWindowProgram("browse", "fennick-browse", arguments);
}

}  // namespace fennick::cli
