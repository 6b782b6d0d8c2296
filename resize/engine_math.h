// The resize engine's arithmetic: its degree factors and the cuts and
// roundings its results depend on, stitch for stitch.
#pragma once

#include <cmath>
#include <cstdint>

namespace fennick {

// Two factors from radians to degrees: turn marks use the first, runs the
// second (180 over single-precision pi), rebuilt ends the third. Each stays as
// it is; an exact right angle can fall either way between them.
inline constexpr double kTurnDegrees = 57.29577951471995;
inline constexpr double kRunDegrees = 57.29577791868204;
inline constexpr double kRebuiltDegrees = 57.29577951308232;
inline constexpr double kRadiansPerDegree = 0.017453292519943295;

// Cuts towards zero as the processor does: a value outside 32 bits, or not a
// number, gives the "integer indefinite" 0x80000000 instead of undefined behaviour.
inline int32_t CutToInt(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(value);
}

// Cut towards zero, then kept to 16 bits with sign: beyond ±32767 units a
// coordinate wraps, as no format takes a design that large.
inline int16_t Cut16(double value) { return static_cast<int16_t>(CutToInt(value)); }

// Half away from zero, then cut.
inline int32_t RoundAway(double value) { return CutToInt(value >= 0 ? value + 0.5 : value - 0.5); }
inline int16_t Round16(double value) { return static_cast<int16_t>(RoundAway(value)); }

// atan2 in degrees by `factor`, brought to 0 to below 360.
inline double FullCircleDegrees(double y, double x, double factor) {
  const double degrees = std::atan2(y, x) * factor;
  return degrees < 0 ? degrees + 360 : degrees;
}

}  // namespace fennick
