#include "cli/commands.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"

namespace fennick::cli {

int RunConvert(const Arguments& arguments) {
  std::vector<std::string> names;
  int pes5 = -1;  // -1: as stored
  for (const std::string& argument : arguments) {
    if (argument == "--pes5" || argument == "--no-pes5") {
      pes5 = argument == "--pes5" ? 1 : 0;
    } else if (argument.rfind("--", 0) == 0) {
      ReportError("convert", "unknown argument \"" + argument + "\"");
      return 2;
    } else {
      names.push_back(argument);
    }
  }
  if (names.size() != 2) {
    ReportError("convert", "name the design to read and the file to write");
    return 2;
  }
  const std::string& input = names[0];
  const std::string& output = names[1];
  const FormatCode target = FormatFromExtension(LowerExtension(output));
  const FormatEntry* format = FindFormat(target);
  if (format == nullptr || format->write == nullptr) {
    ReportError(output, "no writer for the extension \"." + LowerExtension(output) + "\"");
    return 2;
  }
  Design design;
  if (!LoadDesign(input, design)) return 1;
  // This command is the Save As: its settings are the ones the PES writer follows.
  ConversionSettings settings;
  ReadConversion(AsciiLower(format->extension), settings);
  if (pes5 != -1) settings.pes5 = pes5;
  SetSaveAsConversion(settings);
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
