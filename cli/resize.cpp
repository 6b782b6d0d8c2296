// Resizing from the command line: the resize engine with the settings of the
// resize preferences, each open to an option, or a plain scale to compare.
#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "cli/commands.h"
#include "resize/resize_engine.h"

namespace fennick::cli {
namespace {

// The engine's settings: the stored ones, then the options. A limit given on
// the command line is put in force; --no-... takes one out.
int TakeEngineSettings(const std::string& command, Arguments& arguments, ResizeSettings& settings) {
  settings = StoredResizeSettings();
  struct Limit {
    const char* option;
    int32_t low, high;
    int32_t ResizeSettings::*value;
    int32_t ResizeSettings::*apply;
  };
  static constexpr Limit kLimits[] = {
      {"--min-fill", 0, 30, &ResizeSettings::MinFill, &ResizeSettings::ApplyMinFill},
      {"--min-satin", 0, 10, &ResizeSettings::MinSatin, &ResizeSettings::ApplyMinSatin},
      {"--max-fill", 25, 250, &ResizeSettings::MaxSL, &ResizeSettings::ApplyMax},
      {"--max-satin", 25, 250, &ResizeSettings::MaxSatinSL, &ResizeSettings::ApplyMaxSL},
  };
  for (const Limit& limit : kLimits) {
    int32_t value = -1;
    if (const int status = TakeNumber(command, arguments, limit.option, limit.low, limit.high, value); status != 0) {
      return status;
    }
    if (value >= 0) {
      settings.*limit.value = value;
      settings.*limit.apply = 1;
    }
    if (TakeFlag(arguments, std::string("--no-") + (limit.option + 2))) settings.*limit.apply = 0;
  }
  int32_t sensitivity = -1;
  if (const int status = TakeNumber(command, arguments, "--sensitivity", 6, 16, sensitivity); status != 0) return status;
  if (sensitivity >= 0) settings.Sensitivity = sensitivity - 6;
  return 0;
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

std::string Percent(double factor) { return Number(factor * 100) + " %"; }

std::string Millimetres(const Design& design) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1f x %.1f mm", (design.maxX - design.minX) * 0.1,
                (design.maxY - design.minY) * 0.1);
  return text;
}

// Runs the engine, or with `plain` the plain transform alone, and says what it made.
std::string ResizeDesign(Design& design, const ResizeSettings& settings, bool plain, double rotation, double fx,
                         double fy) {
  const int64_t before = design.DisplayedStitchCount();
  ResizeEngine engine;
  engine.ApplySettings(settings);
  if (plain) {
    engine.working = std::move(design);
    if (rotation == 0) {
      engine.ScaleStitches(fx, fy);
    } else {
      RotateAndScale(engine.working, rotation, fx, fy);
    }
  } else {
    engine.LoadDesign(std::move(design));
    engine.ResizeWorking(static_cast<float>(rotation), static_cast<float>(fx), static_cast<float>(fy));
  }
  design = std::move(engine.working);
  design.ComputeBounds();  // merges may have taken an outermost point
  std::string line = (plain ? "scaled to " : "resized to ") + Percent(fx);
  if (fy != fx) line += " x " + Percent(fy);
  if (rotation != 0) line += ", turned " + Number(rotation) + " degrees";
  return line + ", " + Millimetres(design) + ", " + std::to_string(before) + " -> " +
         std::to_string(design.DisplayedStitchCount()) + " stitches";
}

}  // namespace

int RunResize(const Arguments& arguments) {
  Arguments rest = arguments;
  ResizeSettings settings;
  if (const int status = TakeEngineSettings("resize", rest, settings); status != 0) return status;
  const bool plain = TakeFlag(rest, "--plain");
  // Percentages; an axis left out keeps its size.
  constexpr double kUnset = -1e300;
  double scale = kUnset, scaleX = kUnset, scaleY = kUnset, rotation = 0;
  for (const auto& [option, value] : {std::pair{"--scale", &scale}, {"--scale-x", &scaleX}, {"--scale-y", &scaleY},
                                      {"--rotate", &rotation}}) {
    if (const int status = TakeDecimal("resize", rest, option, *value); status != 0) return status;
  }
  if (scale != kUnset) scaleX = scaleY = scale;
  if (scaleX == kUnset && scaleY == kUnset && rotation == 0) {
    ReportError("resize", "give the new size as --scale PCT, or --scale-x PCT and --scale-y PCT, or a turn as --rotate DEG");
    return 2;
  }
  if (scaleX == kUnset) scaleX = 100;
  if (scaleY == kUnset) scaleY = 100;
  if (scaleX == 0 || scaleY == 0) {
    ReportError("resize", "a size of 0 % leaves nothing to sew");
    return 2;
  }
  return RunTool("resize", rest, [&](Design& design) {
    return ResizeDesign(design, settings, plain, rotation, scaleX / 100, scaleY / 100);
  });
}

int RunFit(const Arguments& arguments) {
  Arguments rest = arguments;
  ResizeSettings settings;
  if (const int status = TakeEngineSettings("fit", rest, settings); status != 0) return status;
  const bool plain = TakeFlag(rest, "--plain");
  const bool stretch = TakeFlag(rest, "--stretch");
  int32_t width = 0, height = 0;
  const auto hoop = std::find(rest.begin(), rest.end(), "--hoop");
  const std::string size = hoop != rest.end() && hoop + 1 != rest.end() ? *(hoop + 1) : "";
  if (!ParseHoop(size, width, height) || width < 2 || height < 2 || width > 10000 || height > 10000) {
    ReportError("fit", "--hoop WxH names the hoop in whole millimetres, each from 2 to 10000");
    return 2;
  }
  rest.erase(hoop, hoop + 2);
  return RunTool("fit", rest, [&](Design& design) -> std::optional<std::string> {
    design.ComputeBounds();
    const int64_t designWidth = int64_t{design.maxX} - design.minX, designHeight = int64_t{design.maxY} - design.minY;
    if (designWidth == 0 || designHeight == 0) {
      ReportError(design.name, "has no width or no height to fit to a hoop");
      return std::nullopt;
    }
    // Each side of the hoop less 1 mm, in stitch units, in single precision
    // as the Fit Hoop command works it out.
    float fx = static_cast<float>((width - 1) * 10) / static_cast<float>(designWidth);
    float fy = static_cast<float>((height - 1) * 10) / static_cast<float>(designHeight);
    if (!stretch) fx = fy = std::min(fx, fy);
    return ResizeDesign(design, settings, plain, 0, fx, fy);
  });
}

}  // namespace fennick::cli
