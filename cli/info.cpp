#include <cstdio>
#include <iostream>

#include "cli/commands.h"
#include "core/format_table.h"
#include "tools/size_text.h"

namespace fennick::cli {

int RunInfo(const Arguments& arguments) {
  if (arguments.empty()) {
    ReportError("info", "name at least one design file");
    return 2;
  }
  int failures = 0;
  for (const std::string& path : arguments) {
    Design design;
    if (!LoadDesign(path, design)) {
      ++failures;
      continue;
    }
    std::cout << path << "\n"
              << "  format:   " << FormatExtension(FormatFromExtension(LowerExtension(path))) << "\n"
              << "  size:     " << SizeText(design, false, false) << "  (" << SizeText(design, true, false)
              << ")\n"
              << "  stitches: " << design.DisplayedStitchCount() << "\n"
              << "  colours:  " << design.threads.size() << (design.defaultColors ? " (default palette)" : "")
              << "\n";
    for (size_t i = 0; i < design.threads.size(); ++i) {
      const ThreadColor& thread = design.threads[i];
      char line[160];
      std::snprintf(line, sizeof line, "  %3zu  %s  %7d st.  %6.1f m  ", i + 1, HexColor(thread.rgb).c_str(),
                    thread.stitchCount, thread.threadLength * 0.0001);
      std::cout << line << thread.colorName << "\n";
    }
  }
  return failures == 0 ? 0 : 1;
}

}  // namespace fennick::cli
