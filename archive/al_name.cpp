#include "archive/al_name.h"

#include <algorithm>

namespace fennick {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

void ALName::Set(std::string name) {
  oldName_ = std::move(name_);
  name_ = std::move(name);
}

bool ALName::Matches(std::string_view other) const {
  if (case_ == AL_EXACT_CASE) return name_ == other;
  return std::ranges::equal(name_, other, [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string ALName::WithExtension(std::string_view extension) const {
  const size_t slash = name_.find_last_of('/');
  const size_t dot = name_.find_last_of('.');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  std::string result = name_.substr(0, hasExtension ? dot : name_.size());
  result += extension;
  return result;
}

}  // namespace fennick
