#include "control/variant.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace fennick {
namespace {

double Number(const std::string& text) {
  double value = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && stop == text.data() + text.size() ? value : 0;
}

int32_t ToInt(double value) {
  const double rounded = std::nearbyint(value);  // halves to even, as automation rounds
  return rounded >= -2147483648.0 && rounded <= 2147483647.0 ? static_cast<int32_t>(rounded) : 0;
}

}  // namespace

int32_t Variant::AsInt() const {
  if (const auto* number = std::get_if<int32_t>(&value_)) return *number;
  if (const auto* number = std::get_if<float>(&value_)) return ToInt(*number);
  if (const auto* text = std::get_if<std::string>(&value_)) return ToInt(Number(*text));
  return 0;
}

float Variant::AsFloat() const {
  if (const auto* number = std::get_if<int32_t>(&value_)) return static_cast<float>(*number);
  if (const auto* number = std::get_if<float>(&value_)) return *number;
  if (const auto* text = std::get_if<std::string>(&value_)) return static_cast<float>(Number(*text));
  return 0;
}

std::string Variant::AsString() const {
  if (const auto* number = std::get_if<int32_t>(&value_)) return std::to_string(*number);
  if (const auto* number = std::get_if<float>(&value_)) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(*number));
    return text;
  }
  if (const auto* text = std::get_if<std::string>(&value_)) return *text;
  return "";
}

}  // namespace fennick
