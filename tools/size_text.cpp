#include "tools/size_text.h"

#include <cmath>
#include <cstdlib>

#include "core/text.h"

namespace fennick {
namespace {

constexpr double kCentimetresPerUnit = 0.01;
constexpr double kInchesPerUnit = 0.00390625;  // 1/256 on purpose

}  // namespace

std::string InchText(double inches) {
  static const char* const kSixteenths[16] = {"(0)",   "(1/16)", "(1/8)",   "(3/16)", "(1/4)", "(5/16)",
                                              "(3/8)", "(7/16)", "(1/2)",   "(9/16)", "(5/8)", "(11/16)",
                                              "(3/4)", "(13/16)", "(7/8)", "(15/16)"};
  // Rounded away from the fraction: the whole part of -1.5 is -1, of 1.5 is 1.
  double whole = inches <= 0 ? std::ceil(inches) : std::floor(inches);
  const double fraction = inches - whole;
  if (whole == 0) whole = 0;  // no "-0"; the sign is put first below
  std::string text = FormatText("%-2.0f", whole);
  if (whole == 0 && fraction < 0) text = "-" + text;
  const int sixteenth = static_cast<int>(std::fabs(fraction) * 16);
  if (sixteenth != 0 || whole == 0) text += kSixteenths[sixteenth & 15];
  return text;
}

std::string SizeText(const Design& design, bool inches, bool withStitches) {
  const double width = static_cast<double>(std::llabs(int64_t{design.maxX} - design.minX));
  const double height = static_cast<double>(std::llabs(int64_t{design.maxY} - design.minY));
  const long long stitches = design.DisplayedStitchCount();
  if (!inches) {
    const double w = width * kCentimetresPerUnit, h = height * kCentimetresPerUnit;
    return withStitches ? FormatText("%-4.2f cm x %-4.2f cm : %lld Stitches", w, h, stitches)
                        : FormatText("%-4.2f cm x %-4.2f cm", w, h);
  }
  const std::string w = InchText(width * kInchesPerUnit), h = InchText(height * kInchesPerUnit);
  return withStitches ? FormatText("%s\" x %s\" : %lld Stitches", h.c_str(), w.c_str(), stitches)
                      : FormatText("%s\" x %s\"", h.c_str(), w.c_str());
}

}  // namespace fennick
