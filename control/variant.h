// The values that cross the control's dispatch boundary: empty, a 32-bit
// integer (a long of the interface, handles included), a float or a string.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace fennick {

class Variant {
 public:
  Variant() = default;
  Variant(int32_t number) : value_(number) {}  // NOLINT: a long converts as the interface passes it
  Variant(float number) : value_(number) {}    // NOLINT
  Variant(std::string text) : value_(std::move(text)) {}  // NOLINT
  Variant(const char* text) : value_(std::string(text)) {}  // NOLINT

  bool IsEmpty() const { return std::holds_alternative<std::monostate>(value_); }
  bool IsInt() const { return std::holds_alternative<int32_t>(value_); }
  bool IsFloat() const { return std::holds_alternative<float>(value_); }
  bool IsString() const { return std::holds_alternative<std::string>(value_); }
  // Conversions as an automation call coerces its arguments: a float goes to
  // the nearest integer (halves to even), a string is read as a number, and
  // what cannot convert gives 0.
  int32_t AsInt() const;
  float AsFloat() const;
  // A number gives its decimal text; nothing gives "".
  std::string AsString() const;
  bool operator==(const Variant&) const = default;

 private:
  std::variant<std::monostate, int32_t, float, std::string> value_;
};

using DispatchArguments = std::vector<Variant>;

}  // namespace fennick
