#include "cli/commands.h"
#include "core/design_path.h"
#include "core/format_table.h"

namespace fennick::cli {

int RunConvert(const Arguments& arguments) {
  if (arguments.size() != 2) {
    ReportError("convert", "name the design to read and the file to write");
    return 2;
  }
  const std::string& input = arguments[0];
  const std::string& output = arguments[1];
  const FormatCode target = FormatFromExtension(LowerExtension(output));
  const FormatEntry* format = FindFormat(target);
  if (format == nullptr || format->write == nullptr) {
    ReportError(output, "no writer for the extension \"." + LowerExtension(output) + "\"");
    return 2;
  }
  Design design;
  if (!LoadDesign(input, design)) return 1;
  // The target's name gives the label that formats such as DST carry.
  design.name = output;
  std::vector<uint8_t> bytes;
  if (WriteDesignFile(design, bytes, target) == 0) {
    ReportError(output, std::string("the design could not be written as ") + format->extension);
    return 1;
  }
  return SaveFile(output, bytes) ? 0 : 1;
}

}  // namespace fennick::cli
