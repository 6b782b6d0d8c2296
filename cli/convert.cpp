#include <iostream>
#include <utility>

#include "cli/commands.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "tools/save_pipeline.h"

namespace fennick::cli {
namespace {

// The many-file form: --to EXT and --out DIR; both empty for the single one.
struct BatchTarget {
  std::string extension;
  std::string folder;
};

// Returns 0, or the exit status of a bad argument after its one line.
int ParseArguments(const std::string& command, const Arguments& arguments, std::vector<std::string>& names,
                   ConvertOverrides& overrides, BatchTarget& batch) {
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool hasValue = i + 1 < arguments.size();
    if ((argument == "--to" || argument == "--out") && hasValue) {
      (argument == "--to" ? batch.extension : batch.folder) = arguments[++i];
    } else if (argument == "--pes5" || argument == "--no-pes5") {
      overrides.pes5 = argument == "--pes5" ? 1 : 0;
    } else if (argument == "--rotate" || argument == "--no-rotate") {
      overrides.rotate = argument == "--rotate" ? 1 : 0;
    } else if (argument == "--hoop" && hasValue) {
      if (!ParseHoop(arguments[++i], overrides.hoopWidth, overrides.hoopHeight)) {
        ReportError(command, "--hoop takes WIDTHxHEIGHT in millimetres, not \"" + arguments[i] + "\"");
        return 2;
      }
    } else if ((argument == "--shrink" || argument == "--split-stitches" || argument == "--split-colors") &&
               hasValue) {
      int32_t& target = argument == "--shrink"           ? overrides.shrink
                        : argument == "--split-stitches" ? overrides.stitchLimit
                                                         : overrides.colorLimit;
      if (!ParseCount(arguments[++i], target)) {
        ReportError(command, argument + " takes a whole number of 0 or more, not \"" + arguments[i] + "\"");
        return 2;
      }
    } else if (argument.rfind("--", 0) == 0) {
      ReportError(command, "unknown argument \"" + argument + "\"");
      return 2;
    } else {
      names.push_back(argument);
    }
  }
  if (!batch.extension.empty() || !batch.folder.empty()) {
    if (command != "convert") {
      ReportError(command, "--to and --out belong to convert; " + command + " writes one file");
      return 2;
    }
    if (batch.extension.empty() || batch.folder.empty() || names.empty()) {
      ReportError(command, "--to EXT and --out DIR convert the designs named after them");
      return 2;
    }
    return 0;
  }
  if (names.size() != 2) {
    ReportError(command, "name the design to read and the file to write");
    return 2;
  }
  return 0;
}

void Apply(const ConvertOverrides& overrides, ConversionSettings& settings) {
  if (overrides.hoopWidth > 0) {
    settings.hoopWidth = overrides.hoopWidth;
    settings.hoopHeight = overrides.hoopHeight;
  }
  if (overrides.rotate != -1) settings.rotate = overrides.rotate;
  if (overrides.shrink != -1) settings.shrink = overrides.shrink;
  if (overrides.stitchLimit != -1) {
    settings.splitStitches = overrides.stitchLimit != 0 ? 1 : 0;
    if (overrides.stitchLimit != 0) settings.stitchLimit = overrides.stitchLimit;
  }
  if (overrides.colorLimit != -1) {
    settings.splitColors = overrides.colorLimit != 0 ? 1 : 0;
    if (overrides.colorLimit != 0) settings.colorLimit = overrides.colorLimit;
  }
  if (overrides.pes5 != -1) settings.pes5 = overrides.pes5;
}

// The format a target extension is saved in, or unknown when nothing writes it.
FormatCode WrittenFormat(FormatCode target) {
  if (target == kFormatTxt) return kFormatTxt;
  const FormatCode saved = SavedFormat(target);
  const FormatEntry* format = FindFormat(saved);
  return format != nullptr && format->write != nullptr ? saved : kFormatUnknown;
}

}  // namespace

// The settings of a save as `extension`: the stored row with the overrides.
// This is the Save As: its settings are the ones the PES writer follows, set
// once, before any design of a batch is read.
int SaveAsSettings(const std::string& subject, std::string extension, const ConvertOverrides& overrides,
                   ConversionSettings& settings) {
  if (!extension.empty() && extension[0] == '.') extension.erase(0, 1);
  const FormatCode format = WrittenFormat(FormatFromExtension(extension));
  if (format == kFormatUnknown) {
    ReportError(subject, "no writer for the extension \"." + extension + "\"");
    return 2;
  }
  ReadConversion(AsciiLower(FormatExtension(format == kFormatTxt ? kFormatPes : format)), settings);
  Apply(overrides, settings);
  SetSaveAsConversion(settings);
  return 0;
}

int ParseSingleSave(const std::string& command, const Arguments& arguments, std::string& input, std::string& output,
                    ConversionSettings& settings) {
  std::vector<std::string> names;
  ConvertOverrides overrides;
  BatchTarget batch;
  if (const int status = ParseArguments(command, arguments, names, overrides, batch); status != 0) return status;
  input = names[0];
  output = names[1];
  return SaveAsSettings(output, LowerExtension(output), overrides, settings);
}

int SaveAs(Design&& design, const std::string& output, const ConversionSettings& settings) {
  // The target's name gives the label that formats such as DST carry. The
  // pipeline reports its own failures under "Save Error".
  design.name = output;
  std::vector<DesignPath> written;
  // A named output file is replaced, as every command here does.
  // Written in place: a design the hoop fit refuses is left as it was, for the hint.
  if (SaveDesign(std::move(design), &written, 1, &settings) == 0) {
    const FormatCode format = WrittenFormat(FormatFromExtension(LowerExtension(output)));
    if (const std::string hint = HoopHint(design, settings, format); !hint.empty()) ReportError(output, hint);
    return 1;
  }
  for (const DesignPath& path : written) std::cout << path.ToString() << "\n";
  return 0;
}

int RunConvert(const Arguments& arguments) {
  std::vector<std::string> names;
  ConvertOverrides overrides;
  BatchTarget batch;
  if (const int status = ParseArguments("convert", arguments, names, overrides, batch); status != 0) return status;
  if (batch.extension.empty()) {
    ConversionSettings settings;
    if (const int status = SaveAsSettings(names[1], LowerExtension(names[1]), overrides, settings); status != 0) {
      return status;
    }
    Design design;
    if (!LoadDesign(names[0], design)) return 1;
    return SaveAs(std::move(design), names[1], settings);
  }
  ConversionSettings settings;
  if (const int status = SaveAsSettings("--to", AsciiLower(batch.extension), overrides, settings); status != 0) {
    return status;
  }
  return ConvertBatch(names, AsciiLower(batch.extension), batch.folder, settings);
}

}  // namespace fennick::cli
