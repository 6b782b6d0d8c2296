#include <iostream>

#include "cli/commands.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "tools/save_pipeline.h"

namespace fennick::cli {
namespace {

// What convert writes for a target of this format.
std::string WriteText(const FormatEntry& format) {
  if (format.code == kFormatTxt) return "notes";
  const FormatCode saved = SavedFormat(format.code);
  if (saved != format.code) return "as " + FormatExtension(saved);
  return format.write != nullptr ? "yes" : "no";
}

std::string LimitText(int32_t splitWord, int32_t limit) {
  return splitWord != 0 ? std::to_string(limit) : "off";
}

}  // namespace

int RunFormats(const Arguments& arguments) {
  if (!arguments.empty()) {
    ReportError("formats", "takes no arguments");
    return 2;
  }
  std::cout << FormatText("%-6s %-4s %-6s %-11s %-12s %s\n", "format", "read", "write", "hoop (mm)", "stitch limit",
                          "colour limit");
  for (const FormatEntry& format : FormatTable()) {
    std::string hoop = "-", stitches = "-", colours = "-";
    // The nine writable formats have a built-in conversion row; the others none of their own.
    if (format.code >= kFormatPes && format.code <= kFormatVip) {
      const ConversionSettings& row = BuiltInConversion(format.code);
      hoop = std::to_string(row.hoopWidth) + " x " + std::to_string(row.hoopHeight);
      stitches = LimitText(row.splitStitches, row.stitchLimit);
      colours = LimitText(row.splitColors, row.colorLimit);
    }
    std::cout << FormatText("%-6s %-4s %-6s %-11s %-12s %s\n", format.extension, format.read != nullptr ? "yes" : "no",
                            WriteText(format).c_str(), hoop.c_str(), stitches.c_str(), colours.c_str());
  }
  return 0;
}

}  // namespace fennick::cli
