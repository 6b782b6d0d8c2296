// Text rules shared by the system: ASCII case of names and extensions, the
// same in every locale, and printf-style formatting of the texts it shows.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace fennick {

inline char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

inline std::string AsciiLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = AsciiLower(c);
  return lower;
}

inline std::string AsciiUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = AsciiUpper(c);
  return upper;
}

inline bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

// Orders by lower case, byte by byte, as the system's case-blind sorts do.
inline bool LessIgnoringCase(std::string_view a, std::string_view b) {
  const size_t common = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < common; ++i) {
    const auto x = static_cast<unsigned char>(AsciiLower(a[i])), y = static_cast<unsigned char>(AsciiLower(b[i]));
    if (x != y) return x < y;
  }
  return a.size() < b.size();
}

// printf-style formatting into a string; the formats are the system's own.
template <typename... Args>
std::string FormatText(const char* format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = std::snprintf(nullptr, 0, format, args...);
  if (length <= 0) return {};
  std::string text(static_cast<size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format, args...);
#pragma GCC diagnostic pop
  text.resize(static_cast<size_t>(length));
  return text;
}

}  // namespace fennick
