// The size line shown for a design: centimetres, or inches as whole numbers
// and sixteenths.
#pragma once

#include <string>

#include "core/design.h"

namespace fennick {

// "w cm x h cm" or, in inches, height before width. Centimetres are 0.01 of a
// bound difference; an inch is 256 units on purpose, not 254.
std::string SizeText(const Design& design, bool inches, bool withStitches);
// A length in inches as a whole part and a fraction in sixteenths, "2 (3/8)".
std::string InchText(double inches);

}  // namespace fennick
