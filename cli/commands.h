// The commands of the fennick program and what they share.
#pragma once

#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "core/design.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/user_interface.h"
#include "tools/bitmap_file.h"

namespace fennick::cli {

using Arguments = std::vector<std::string>;

struct Command {
  const char* name;
  const char* usage;  // first line of --help
  const char* help;   // the rest of --help
  int (*run)(const Arguments& arguments);
};

int RunInfo(const Arguments& arguments);
int RunDump(const Arguments& arguments);
int RunConvert(const Arguments& arguments);
int RunFormats(const Arguments& arguments);
int RunSettings(const Arguments& arguments);
int RunDemo(const Arguments& arguments);
int RunNotes(const Arguments& arguments);
int RunRender(const Arguments& arguments);
int RunZip(const Arguments& arguments);
int RunColors(const Arguments& arguments);
int RunColorSort(const Arguments& arguments);
int RunBaste(const Arguments& arguments);
int RunReduce(const Arguments& arguments);
int RunHueSort(const Arguments& arguments);
int RunResize(const Arguments& arguments);
int RunBrowse(const Arguments& arguments);
int RunPreferences(const Arguments& arguments);
int RunFit(const Arguments& arguments);
int RunHostCall(const Arguments& arguments);

// What the command line changes in the stored conversion settings; -1 keeps them.
struct ConvertOverrides {
  int32_t hoopWidth = -1, hoopHeight = -1;  // millimetres
  int32_t rotate = -1;
  int32_t shrink = -1;
  int32_t stitchLimit = -1;  // 0: no split by stitches
  int32_t colorLimit = -1;   // 0: no split by colours
  int32_t pes5 = -1;
};

// OUT's conversion settings: the stored ones of the format its extension
// names, with `overrides`; also made the settings of the last Save As.
// Returns 0, or 2 after one line naming `subject` when no writer takes it.
int SaveAsSettings(const std::string& subject, std::string extension, const ConvertOverrides& overrides,
                   ConversionSettings& settings);
// The single form of convert for `command`: IN, OUT and convert's options in
// `arguments`, turned into OUT's conversion settings. Returns 0, or the exit
// status after one line naming the fault.
int ParseSingleSave(const std::string& command, const Arguments& arguments, std::string& input, std::string& output,
                    ConversionSettings& settings);
// Saves the design as `output` through the save pipeline, printing each file
// written, or the reason and a hint for the hoop. Returns the exit status.
int SaveAs(Design&& design, const std::string& output, const ConversionSettings& settings);

// The many-file form of convert: every design of `inputs` (files, folders
// searched recursively, ZIP files, "Zip:" members) saved as `extension` into
// `folder` with `settings`, on every core. Returns the exit status.
int ConvertBatch(const std::vector<std::string>& inputs, const std::string& extension, const std::string& folder,
                 const ConversionSettings& settings);

// Reads a design through ReadDesignFile; on failure prints one line naming the
// file and the cause and returns false.
bool LoadDesign(const std::string& path, Design& design);
// LoadDesign without the printing: "" when the design was read, else the cause.
std::string ReadDesignOrCause(const std::string& path, Design& design, LastFile lastFile);
// After a save that wrote nothing: when the design does not fit the hoop of
// `settings`, a line that names the options and settings that change it; else "".
std::string HoopHint(Design& design, const ConversionSettings& settings, FormatCode format);
// Writes a file atomically; on failure prints one line and returns false.
bool SaveFile(const std::string& path, const std::vector<uint8_t>& bytes);
// Renders the design into OUT, a .png or a .bmp by its extension; on failure
// prints one line and returns false.
bool SavePicture(Design& design, BitmapOptions options, const std::string& path);
// One line on standard error: "fennick: <subject>: <cause>".
void ReportError(const std::string& subject, const std::string& cause);
// Runs `program` with `arguments` in place of this process: the one beside
// this program, else the one on the PATH. Returns only when it could not be
// started: 1 after one line naming `command`.
int StartWindowProgram(const std::string& command, const std::string& program, const Arguments& arguments);
// Takes a flag out of `arguments`; true when it was there.
bool TakeFlag(Arguments& arguments, const std::string& flag);
// Takes `option` and its number out of `arguments`. Returns 0 when it is
// absent or read (`value` then holds it), else 2 after one line.
int TakeNumber(const std::string& command, Arguments& arguments, const std::string& option, int32_t low,
               int32_t high, int32_t& value);
// The same for a decimal number, such as a percentage or an angle.
int TakeDecimal(const std::string& command, Arguments& arguments, const std::string& option, double& value);

// "WIDTHxHEIGHT" in millimetres, both above 0.
bool ParseHoop(const std::string& text, int32_t& width, int32_t& height);
// A whole number of 0 or more, the whole text.
bool ParseCount(const std::string& text, int32_t& value);
// The lower-case extension of a path.
std::string LowerExtension(const std::string& path);
// A JSON string literal of `text`, quotes included.
std::string JsonString(const std::string& text);
// "#rrggbb" of a 0x00BBGGRR colour.
std::string HexColor(uint32_t rgb);

// Reads IN, lets `change` work on the design and say what it did, and saves
// OUT. A change that gives no text has said why it failed; nothing is saved.
template <typename Change>
int RunTool(const std::string& command, const Arguments& arguments, Change change) {
  std::string input, output;
  ConversionSettings settings;
  if (const int status = ParseSingleSave(command, arguments, input, output, settings); status != 0) return status;
  Design design;
  if (!LoadDesign(input, design)) return 1;
  std::optional<std::string> changed;
  {
    QuietUserInterface quiet;  // the tools' own message boxes say what the line says
    changed = change(design);
  }
  if (!changed) return 1;
  std::cout << input << ": " << *changed << "\n";
  return SaveAs(std::move(design), output, settings);
}

}  // namespace fennick::cli
