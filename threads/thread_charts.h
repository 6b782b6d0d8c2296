// The twenty thread charts of named brands, generated from threads/charts/*.csv
// and built once on first use, and the look-ups that name or match a colour.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "core/design.h"

namespace fennick {

// A chart's rows in the order of the brand's colour card; ties go to the first row.
using ThreadChart = std::span<const ThreadColor>;

// Display charts by number: 1 Madeira Rayon, 3 Isafil Rayon, 4 R-A Rayon,
// 5 R-A Poly, 6 Stickma Poly, 7 Madeira Poly, 8 Isacord Poly, 9 Alcazar Rayon;
// every other number Sulky Rayon.
ThreadChart ChartByNumber(int number);

// The charts conversion chooses from, by their exact names: "Alcazar Rayon",
// "Isacord Poly", "Isafil rayon" (small r), "Madeira Poly", "Madeira Rayon",
// "R-A Poly", "R-A Rayon", "Stickma Poly", "Sulky Rayon", "Embroidery",
// "Flesh Tone", "MA Rayon", "MA Polyneon", "RA Rayon", "RA Poly", "Isacord",
// "GU Dekor", "Sulky", "Country". Any other name gives an empty chart.
ThreadChart ChartByName(std::string_view name);

// The short Sulky Rayon chart that XXX colours are matched against.
ThreadChart ReferenceChart();

// The first row nearest to `rgb` by the sum of channel differences, an exact
// match ending the walk; nullptr only for an empty chart.
const ThreadColor* NearestChartRow(ThreadChart chart, uint32_t rgb);

// The `colorName` of the display chart row nearest to `rgb` by the sum of
// channel differences; `nearestRgb`, when given, takes that row's colour.
const std::string& NearestChartName(uint32_t rgb, int number, uint32_t* nearestRgb = nullptr);

// The first row of display chart `number` (1 to 9) whose `colorName` holds, in
// any case, the last digits of `text`: 3 for Alcazar Rayon, 5 for Stickma
// Poly, 4 for the others. Any other number, or no such row, gives a blank thread.
ThreadColor ChartThreadByCode(int number, std::string_view text);

// A colour's place in the hue cone: value on the axis, the hue in whole
// degrees as the angle and `radiusPerSaturation` times the saturation (0 to
// 255) as the radius, x and y rounded half away from zero.
struct ConePoint {
  int32_t v, x, y;
};
ConePoint PlaceInCone(uint32_t rgb, double radiusPerSaturation);
// The distance of two placed colours; the squares are summed as whole numbers
// and the root is taken in single precision.
float ConeDistance(const ConePoint& a, const ConePoint& b);
// Halves away from zero, then cut towards zero.
int32_t RoundHalfAway(double value);

// The row of `chart` nearest to `rgb` in the hue cone (value, and hue at a
// radius of twice the saturation). `distance` takes the rounded distance of
// the last row walked, which is the best row's only when an exact match ended
// the walk. An empty chart gives a blank thread and leaves `distance` alone.
const ThreadColor& NearestChartThread(uint32_t rgb, ThreadChart chart, int32_t& distance);

}  // namespace fennick
