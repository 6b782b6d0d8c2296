#include <iostream>
#include <sstream>

#include "cli/commands.h"

namespace fennick::cli {
int RunDump(const Arguments& arguments) {
  if (arguments.size() != 1) {
    ReportError("dump", "name exactly one design file");
    return 2;
  }
  const std::string& path = arguments[0];
  Design design;
  if (!LoadDesign(path, design)) return 1;

  std::ostringstream stitches, blockStarts;
  long long x = 0, y = 0, stitchCount = 0, jumpCount = 0, stopCount = 0;
  blockStarts << 0;
  for (const StitchNode& node : design.stitches) {
    x += node.dx;
    y += node.dy;
    if (node.IsColorStop()) {
      ++stopCount;
      blockStarts << "," << stitchCount;
    }
    if (node.IsJump()) ++jumpCount;
    if (node.flags == 0) {
      stitches << (stitchCount == 0 ? "" : ",") << '[' << x << ',' << y << ']';
      ++stitchCount;
    }
  }
  std::ostringstream colors, names;
  for (size_t i = 0; i <= static_cast<size_t>(stopCount); ++i) {
    const char* separator = i == 0 ? "" : ",";
    if (i < design.threads.size()) {
      colors << separator << '"' << HexColor(design.threads[i].rgb) << '"';
      names << separator << JsonString(design.threads[i].colorName);
    } else {
      colors << separator << "null";
      names << separator << "null";
    }
  }
  std::cout << "{\"schema\":\"emb-dump/1\",\"tool\":\"fennick\",\"file\":" << JsonString(path)
            << ",\"format\":" << JsonString(LowerExtension(path)) << ",\"y_axis\":\"up\",\"unit\":\"0.1mm\""
            << ",\n\"stitches\":[" << stitches.str() << "]"
            << ",\n\"block_starts\":[" << blockStarts.str() << "]"
            << ",\n\"block_colors\":[" << colors.str() << "]"
            << ",\n\"block_names\":[" << names.str() << "]"
            << ",\n\"has_colors\":" << (design.defaultColors ? "false" : "true")
            << ",\n\"bounds\":{\"min_x\":" << design.minX << ",\"min_y\":" << design.minY
            << ",\"max_x\":" << design.maxX << ",\"max_y\":" << design.maxY << "}"
            << ",\n\"counts\":{\"STITCH\":" << stitchCount << ",\"JUMP\":" << jumpCount
            << ",\"COLOR_CHANGE\":" << stopCount << "}}\n";
  return 0;
}

}  // namespace fennick::cli
